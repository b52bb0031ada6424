// Stands in for the server of a local model: the same options, answers, delays and ends, and worse
// on demand. See LlamaScript.h for what can be demanded.

#include "support/llama/LlamaServer.h"

#include <QCoreApplication>
#include <QSocketNotifier>

#include <array>
#include <csignal>
#include <cstdio>
#include <sys/socket.h>
#include <unistd.h>

namespace {

std::array<int, 2> channel{-1, -1};

/// The first signal is handed to the event loop; a second one finds the process impatient.
void forward(int)
{
    static volatile std::sig_atomic_t wasAsked = 0;
    if (wasAsked != 0) {
        ::_exit(1);
    }
    wasAsked = 1;
    [[maybe_unused]] const ssize_t written = ::write(channel[0], "x", 1);
}

template <typename T>
T orRefuse(const std::expected<T, QString>& value)
{
    if (!value) {
        std::fprintf(stderr, "%s\n", qPrintable(value.error()));
        std::exit(1);
    }
    return *value;
}

} // namespace

int main(int argc, char** argv)
{
    using namespace zelvane::test;
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments().sliced(1);
    const auto script = orRefuse(LlamaScript::find(QString::fromLocal8Bit(argv[0])));
    const auto options = orRefuse(LlamaOptions::parse(arguments));
    LlamaServer server(options, script, arguments);

    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, channel.data()) != 0) {
        return 1;
    }
    QSocketNotifier notifier(channel[1], QSocketNotifier::Read);
    QObject::connect(&notifier, &QSocketNotifier::activated, &notifier, [&notifier, &server] {
        notifier.setEnabled(false);
        server.askToEnd();
    });
    QObject::connect(&server, &LlamaServer::loaded, &server, [] {
        std::signal(SIGTERM, forward); // while loading it just dies
        std::signal(SIGINT, forward);
    });
    server.start();
    return QCoreApplication::exec();
}
