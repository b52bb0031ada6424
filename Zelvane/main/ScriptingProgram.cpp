#include "main/ScriptingProgram.h"

#include "cli/DefaultsCommand.h"
#include "cli/TranslateCommand.h"
#include "foundation/SystemClock.h"
#include "foundation/UnixSignals.h"
#include "main/Platform.h"
#include "main/UserStore.h"
#include "online/NetworkHttpTransport.h"
#include "settings/Localization.h"
#include "settings/SystemLanguage.h"

#include <QCoreApplication>
#include <QFile>
#include <QNetworkProxyFactory>

namespace zelvane {

namespace {

/// The process's own three streams, unbuffered on the way out.
class StandardStreams
{
public:
    StandardStreams()
    {
        m_input.open(stdin, QIODevice::ReadOnly);
        m_output.open(stdout, QIODevice::WriteOnly);
        m_error.open(stderr, QIODevice::WriteOnly | QIODevice::Unbuffered);
    }

    [[nodiscard]] CommandStreams streams() { return {m_input, m_output, m_error}; }

    /// False if what was printed did not get through: a full disk, a closed pipe.
    [[nodiscard]] bool flush() { return m_output.flush(); }

private:
    QFile m_input;
    QFile m_output;
    QFile m_error;
};

/// Stands in for the user's secrets in a call that brings its own key, so that no keyring is asked.
class NoSecrets final : public SecretBackend
{
public:
    [[nodiscard]] Found find(const QString&) override { return {SecretStatus::notFound, {}}; }
    SecretStatus add(const QString&, const QByteArray&) override
    {
        return SecretStatus::otherFailure;
    }
    SecretStatus remove(const QString&) override { return SecretStatus::notFound; }
};

ExitStatus misused(const CommandStreams& streams, const QString& sentence)
{
    streams.complain(sentence + QStringLiteral(" (see zelvane-desk help translate)"));
    return ExitStatus::wrongUsage;
}

ExitStatus runDefaults(const CommandLine& line, UserStore& store, const CommandStreams& streams)
{
    const ExitStatus status = runDefaultsCommand(line.arguments, store.defaults(), streams);
    // What stands in the way has been told by the store itself.
    return store.defaults().flush() ? status : ExitStatus::failure;
}

/// Starts the translation on the running event loop and ends the loop with its status.
QCoro::Task<void> translateThenQuit(TranslateOptions options, QString text,
                                    const AppSettings* settings, TranslationDispatch* dispatch,
                                    TranslationTrace* trace, const Clock* clock,
                                    CommandStreams streams, std::stop_token stop)
{
    const ExitStatus status = co_await runTranslateCommand(options, text, *settings, *dispatch,
                                                           *trace, *clock, streams, stop);
    QCoreApplication::exit(int(status));
}

ExitStatus runTranslate(const CommandLine& line, const QString& key, UserStore& store,
                        const CommandStreams& streams)
{
    const auto options = parseTranslateOptions(line.arguments);
    if (!options) {
        return misused(streams, options.error());
    }
    if (options->help) {
        streams.print(helpText(CommandLine::Command::translate));
        return ExitStatus::success;
    }
    const auto text =
        options->text ? std::expected<QString, QString>(*options->text) : readText(streams.input);
    if (!text) {
        streams.complain(text.error());
        return ExitStatus::failure;
    }

    OverlayUserDefaults overlay(&store.defaults());
    applyOptions(*options, overlay);
    const std::unique_ptr<SecretBackend> secretBackend =
        key.isEmpty() ? openSecretStore() : std::make_unique<NoSecrets>();
    SecretStore secrets(overlay, *secretBackend);
    AppSettings settings(overlay, secrets, systemLanguage(currentSystemLocale()).name);
    if (!key.isEmpty()) {
        settings.setApiKey(key);
    }
    QNetworkProxyFactory::setUseSystemConfiguration(true);
    SystemClock clock;
    TranslationTrace trace(clock);
    NetworkHttpTransport transport(clock);
    ChatCompletionsClient chat(transport, trace);
    TranslationDispatch dispatch(settings, overlay, trace, {&chat, nullptr, {}, nullptr});

    std::stop_source stop;
    const UnixSignals signalsToStop([&stop](int) { stop.request_stop(); });
    QMetaObject::invokeMethod(
        qApp,
        [&] {
            translateThenQuit(*options, *text, &settings, &dispatch, &trace, &clock, streams,
                              stop.get_token());
        },
        Qt::QueuedConnection);
    return ExitStatus(QCoreApplication::exec());
}

} // namespace

int runScriptingProgram(const CommandLine& line, const QString& key, int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    UserStore store(line.profile);
    installLocalization(&store.defaults());
    StandardStreams standard;
    const ExitStatus status = line.command == CommandLine::Command::defaults
                                  ? runDefaults(line, store, standard.streams())
                                  : runTranslate(line, key, store, standard.streams());
    if (!standard.flush() && status == ExitStatus::success) {
        standard.streams().complain(QStringLiteral("standard output could not be written"));
        return int(ExitStatus::failure);
    }
    return int(status);
}

} // namespace zelvane
