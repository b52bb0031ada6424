#include "foundation/UnixSignals.h"

#include <QtGlobal>

#include <array>
#include <csignal>
#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace zelvane {

namespace {

constexpr std::array endingSignals{SIGINT, SIGTERM, SIGHUP};

/// The write end for the handler, which may do little more than write to a descriptor.
std::array<int, 2> channel{-1, -1};

/// What else is to be done at once; may be null.
void (*hook)() = nullptr;

void forward(int number)
{
    const int savedErrno = errno;
    // A second signal finds the system's own handler.
    for (const int ending : endingSignals) {
        std::signal(ending, SIG_DFL);
    }
    if (hook) {
        hook();
    }
    const auto byte = static_cast<unsigned char>(number);
    [[maybe_unused]] const ssize_t written = ::write(channel[0], &byte, 1);
    errno = savedErrno;
}

} // namespace

UnixSignals::UnixSignals(std::function<void(int)> onSignal, void (*atArrival)())
{
    hook = atArrival;
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, channel.data()) != 0) {
        qFatal("no socket pair for signals");
    }
    m_notifier = std::make_unique<QSocketNotifier>(channel[1], QSocketNotifier::Read);
    QObject::connect(m_notifier.get(), &QSocketNotifier::activated, m_notifier.get(),
                     [callback = std::move(onSignal)] {
                         unsigned char number = 0;
                         if (::read(channel[1], &number, 1) == 1) {
                             callback(number);
                         }
                     });
    for (const int number : endingSignals) {
        std::signal(number, forward);
    }
}

UnixSignals::~UnixSignals()
{
    for (const int number : endingSignals) {
        std::signal(number, SIG_DFL);
    }
    m_notifier.reset();
    ::close(channel[0]);
    ::close(channel[1]);
}

} // namespace zelvane
