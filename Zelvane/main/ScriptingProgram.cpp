#include "main/ScriptingProgram.h"

#include "Services/EngineFiles.h"
#include "Services/RuntimeArchive.h"
#include "cli/ControlCommands.h"
#include "cli/DefaultsCommand.h"
#include "cli/EngineChoice.h"
#include "cli/EngineCommand.h"
#include "cli/GlossaryCommand.h"
#include "cli/ModelsCommand.h"
#include "cli/ServiceCommand.h"
#include "cli/TranslateCommand.h"
#include "foundation/SystemClock.h"
#include "foundation/UnixSignals.h"
#include "glossary/GlossaryManager.h"
#include "glossary/GlossaryNames.h"
#include "glossary/GlossaryStore.h"
#include "main/MachineEngines.h"
#include "main/OnlineEngines.h"
#include "main/Platform.h"
#include "main/UserStore.h"
#include "settings/Localization.h"
#include "settings/SystemLanguage.h"

#include <QCoreApplication>
#include <QFile>
#include <QNetworkProxyFactory>

#include <unistd.h>

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
    SecretStatus add(const QString&, const QByteArray&, SecretDialog) override
    {
        return SecretStatus::otherFailure;
    }
    SecretStatus remove(const QString&) override { return SecretStatus::notFound; }
};

/// What a command that uses an engine needs, in the order in which it is made.
class EngineSession
{
public:
    /// `overlay` holds the choices of this call over the settings in `store`; both must outlive
    /// this. `key` is the engine's for this call; empty if there is none but the stored
    /// one.
    EngineSession(UserStore& store, UserDefaults& overlay, const QString& key)
        : m_keptBackend(openSecretStore())
        , m_keptSecrets(store.defaults(), *m_keptBackend)
        , m_secretBackend(key.isEmpty() ? openSecretStore() : std::make_unique<NoSecrets>())
        , m_secrets(overlay, *m_secretBackend)
        , m_settings(overlay, m_secrets, systemLanguage(currentSystemLocale()).name)
        , m_trace(m_clock)
        , m_engines(m_clock, overlay, m_trace, {store.defaults(), m_keptSecrets})
        // A server that it finds may well be that of the program on the desktop.
        , m_machineEngines({store.locations(), m_engines.transport(), m_clock, overlay, m_settings,
                            OfflineEngines::AtCreation::nothing})
        , m_glossary(glossaryFolder(store.applicationSupport()))
        , m_dispatch(m_settings, overlay, m_trace,
                     m_machineEngines.among(m_engines.forDispatch(&m_glossary)))
    {
        if (!key.isEmpty()) {
            m_settings.setApiKey(key);
        }
    }

    [[nodiscard]] const Clock& clock() const { return m_clock; }
    [[nodiscard]] const AppSettings& settings() const { return m_settings; }
    [[nodiscard]] TranslationTrace& trace() { return m_trace; }
    [[nodiscard]] RemoteModels& models() { return m_engines.models(); }
    [[nodiscard]] TranslationDispatch& dispatch() { return m_dispatch; }

private:
    SystemClock m_clock;
    /// For the token of this installation, which serves later calls as well.
    std::unique_ptr<SecretBackend> m_keptBackend;
    SecretStore m_keptSecrets;
    std::unique_ptr<SecretBackend> m_secretBackend;
    SecretStore m_secrets;
    AppSettings m_settings;
    TranslationTrace m_trace;
    OnlineEngines m_engines;
    MachineEngines m_machineEngines;
    GlossaryStore m_glossary;
    TranslationDispatch m_dispatch;
};

ExitStatus misused(const CommandStreams& streams, const QString& sentence, const QString& command)
{
    streams.complain(sentence + QStringLiteral(" (see zelvane-desk help %1)").arg(command));
    return ExitStatus::wrongUsage;
}

ExitStatus runDefaults(const CommandLine& line, UserStore& store, const CommandStreams& streams)
{
    const ExitStatus status = runDefaultsCommand(line.arguments, store.defaults(), streams);
    // What stands in the way has been told by the store itself.
    return store.defaults().flush() ? status : ExitStatus::failure;
}

/// Ends the event loop with the status of `command`.
QCoro::Task<void> quitAfter(QCoro::Task<ExitStatus> command)
{
    const ExitStatus status = co_await command;
    QCoreApplication::exit(int(status));
}

/// Runs a command on the event loop to its end, which a signal to the process makes it hurry to.
ExitStatus runToItsEnd(const std::function<QCoro::Task<ExitStatus>(std::stop_token)>& command)
{
    std::stop_source stop;
    const UnixSignals signalsToStop([&stop](int) { stop.request_stop(); });
    QMetaObject::invokeMethod(
        qApp, [&] { quitAfter(command(stop.get_token())); }, Qt::QueuedConnection);
    return ExitStatus(QCoreApplication::exec());
}

/// The text of a call: an argument, or what stands on standard input.
std::expected<QString, QString> textOf(const std::optional<QString>& argument,
                                       const CommandStreams& streams)
{
    return argument ? std::expected<QString, QString>(*argument) : readText(streams.input);
}

ExitStatus failed(const CommandStreams& streams, const QString& sentence)
{
    streams.complain(sentence);
    return ExitStatus::failure;
}

ExitStatus runTranslate(const CommandLine& line, const QString& key, UserStore& store,
                        const CommandStreams& streams)
{
    const auto options = parseTranslateOptions(line.arguments);
    if (!options) {
        return misused(streams, options.error(), QStringLiteral("translate"));
    }
    if (options->help) {
        streams.print(helpText(CommandLine::Command::translate));
        return ExitStatus::success;
    }
    const auto text = textOf(options->text, streams);
    if (!text) {
        return failed(streams, text.error());
    }

    OverlayUserDefaults overlay(&store.defaults());
    applyOptions(*options, overlay);
    EngineSession session(store, overlay, key);
    return runToItsEnd([&](std::stop_token stop) {
        return runTranslateCommand(*options, *text, session.settings(), session.dispatch(),
                                   session.trace(), session.clock(), streams, std::move(stop));
    });
}

ExitStatus runModels(const CommandLine& line, const QString& key, UserStore& store,
                     const CommandStreams& streams)
{
    const auto options = parseModelsOptions(line.arguments);
    if (!options) {
        return misused(streams, options.error(), QStringLiteral("models"));
    }
    if (options->help) {
        streams.print(helpText(CommandLine::Command::models));
        return ExitStatus::success;
    }
    OverlayUserDefaults overlay(&store.defaults());
    if (options->engine) {
        chooseEngine(*options->engine, overlay);
    }
    EngineSession session(store, overlay, key);
    return runToItsEnd([&](std::stop_token stop) {
        return runModelsCommand(*options, session.settings(), session.models(), streams,
                                std::move(stop));
    });
}

ExitStatus lookIntoGlossary(const GlossaryOptions& options, const UserStore& store,
                            const CommandStreams& streams)
{
    const auto text = textOf(options.text, streams);
    if (!text) {
        return failed(streams, text.error());
    }
    GlossaryStore glossary(glossaryFolder(store.applicationSupport()));
    return runToItsEnd([&](std::stop_token stop) {
        return runGlossaryLookup(options, *text, glossary, streams, std::move(stop));
    });
}

ExitStatus workOnPackages(const GlossaryOptions& options, UserStore& store,
                          const CommandStreams& streams)
{
    QNetworkProxyFactory::setUseSystemConfiguration(true);
    SystemClock clock;
    NetworkHttpTransport transport(clock);
    GlossaryManager manager({store.defaults(), transport, clock, store.applicationSupport(),
                             glossarySystemLanguage(currentSystemLocale())});
    const auto style = ::isatty(STDERR_FILENO) == 1 ? GlossaryProgress::Style::oneLine
                                                    : GlossaryProgress::Style::plainLines;
    const ExitStatus status = runToItsEnd([&](std::stop_token stop) {
        return runGlossaryPackages(options, manager, streams, style, std::move(stop));
    });
    // What stands in the way has been told by the store itself.
    return store.defaults().flush() ? status : ExitStatus::failure;
}

ExitStatus runGlossary(const CommandLine& line, UserStore& store, const CommandStreams& streams)
{
    const auto options = parseGlossaryOptions(line.arguments);
    if (!options) {
        return misused(streams, options.error(), QStringLiteral("glossary"));
    }
    if (options->help) {
        streams.print(helpText(CommandLine::Command::glossary));
        return ExitStatus::success;
    }
    switch (options->verb) {
    case GlossaryOptions::Verb::languages:
        return runGlossaryLanguages(*options, streams);
    case GlossaryOptions::Verb::lookup:
        return lookIntoGlossary(*options, store, streams);
    default:
        return workOnPackages(*options, store, streams);
    }
}

ExitStatus runService(const CommandLine& line, const CommandStreams& streams)
{
    const auto options = parseServiceOptions(line.arguments);
    if (!options) {
        return misused(streams, options.error(), QStringLiteral("service"));
    }
    if (options->help) {
        streams.print(helpText(line.command));
        return ExitStatus::success;
    }
    const auto text = textOf(options->text, streams);
    if (!text) {
        return failed(streams, text.error());
    }
    const auto program = reachRunningProgram(line.profile);
    if (!program) {
        return failed(streams, program.error());
    }
    return runToItsEnd([&](std::stop_token stop) {
        return runServiceCommand(*options, *text, **program, streams, std::move(stop));
    });
}

ExitStatus runControl(const CommandLine& line, const QString& name, const CommandStreams& streams)
{
    const auto options = parseControlOptions(line.command, line.arguments);
    if (!options) {
        return misused(streams, options.error(), name);
    }
    if (options->action == ControlOptions::Action::help) {
        streams.print(helpText(line.command));
        return ExitStatus::success;
    }
    const auto program = reachRunningProgram(line.profile);
    if (!program) {
        return failed(streams, program.error());
    }
    return runToItsEnd([&](std::stop_token stop) {
        return runControlCommand(*options, **program, streams, std::move(stop));
    });
}

ExitStatus runEngine(const CommandLine& line, UserStore& store, const CommandStreams& streams)
{
    const auto options = parseEngineOptions(line.arguments);
    if (!options) {
        return misused(streams, options.error(), QStringLiteral("engine"));
    }
    if (options->help) {
        streams.print(helpText(CommandLine::Command::engine));
        return ExitStatus::success;
    }
    QNetworkProxyFactory::setUseSystemConfiguration(true);
    SystemClock clock;
    NetworkHttpTransport transport(clock);
    const auto children = openChildProcesses();
    const auto processes = openProcessTable(*children, clock);
    const auto style = ::isatty(STDERR_FILENO) == 1 ? EngineProgress::Style::oneLine
                                                    : EngineProgress::Style::plainLines;
    const EngineCommandParts parts{.root = engineRootDirectory(store.locations()),
                                   .transport = transport,
                                   .launcher = *children,
                                   .processes = *processes,
                                   .clock = clock,
                                   .defaults = store.defaults(),
                                   .archiveFolders = runtimeArchiveFolders()};
    return runToItsEnd([&](std::stop_token stop) {
        return runEngineCommand(*options, parts, streams, style, std::move(stop));
    });
}

ExitStatus runCommand(const CommandLine& line, const QString& key, UserStore& store,
                      const CommandStreams& streams)
{
    switch (line.command) {
    case CommandLine::Command::defaults:
        return runDefaults(line, store, streams);
    case CommandLine::Command::engine:
        return runEngine(line, store, streams);
    case CommandLine::Command::glossary:
        return runGlossary(line, store, streams);
    case CommandLine::Command::models:
        return runModels(line, key, store, streams);
    case CommandLine::Command::service:
        return runService(line, streams);
    case CommandLine::Command::trigger:
        return runControl(line, QStringLiteral("trigger"), streams);
    case CommandLine::Command::show:
        return runControl(line, QStringLiteral("show"), streams);
    case CommandLine::Command::status:
        return runControl(line, QStringLiteral("status"), streams);
    default:
        return runTranslate(line, key, store, streams);
    }
}

} // namespace

int runScriptingProgram(const CommandLine& line, const QString& key, int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    UserStore store(line.profile);
    installLocalization(&store.defaults());
    StandardStreams standard;
    const ExitStatus status = runCommand(line, key, store, standard.streams());
    if (!standard.flush() && status == ExitStatus::success) {
        standard.streams().complain(QStringLiteral("standard output could not be written"));
        return int(ExitStatus::failure);
    }
    return int(status);
}

} // namespace zelvane
