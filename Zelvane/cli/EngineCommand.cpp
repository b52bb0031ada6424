#include "cli/EngineCommand.h"

#include "Services/EngineRefresh.h"
#include "Services/InstallLock.h"
#include "Services/SmartEngineInstaller.h"
#include "Services/StraySweep.h"

#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace zelvane {

namespace {

constexpr std::chrono::milliseconds pollInterval{50};

/// One engine as the command sees it.
struct Engine
{
    SmartOfflineVariant variant;
    EngineFiles files;

    [[nodiscard]] QString lock() const
    {
        return InstallLock::path(files.root(), files.facts().folder);
    }
    [[nodiscard]] bool isThere() const { return QFileInfo::exists(files.folder()); }
    [[nodiscard]] QString state() const
    {
        if (InstallLock::isHeld(lock())) {
            return QStringLiteral("installing");
        }
        if (files.isComplete()) {
            return QStringLiteral("installed");
        }
        return isThere() ? QStringLiteral("incomplete") : QStringLiteral("not installed");
    }
};

Engine engineOf(SmartOfflineVariant variant, const EngineCommandParts& parts)
{
    return {variant, EngineFiles(parts.root, parts.facts(variant))};
}

QJsonObject asJson(const Engine& engine)
{
    const SmartOfflineVariantFacts& facts = engine.files.facts();
    return {{QStringLiteral("name"), shortName(engine.variant)},
            {QStringLiteral("engine"), rawValue(facts.provider)},
            {QStringLiteral("state"), engine.state()},
            {QStringLiteral("bytes"), folderSize(engine.files.folder())},
            {QStringLiteral("model"), facts.modelFile},
            {QStringLiteral("modelBytes"), facts.expectedModelBytes},
            {QStringLiteral("folder"), engine.files.folder()}};
}

void printJson(const CommandStreams& streams, const QJsonObject& object)
{
    streams.output.write(QJsonDocument(object).toJson(QJsonDocument::Compact) + '\n');
}

void printRow(const Engine& engine, const CommandStreams& streams)
{
    const QStringList columns{shortName(engine.variant), rawValue(engine.files.facts().provider),
                              engine.state(), QString::number(folderSize(engine.files.folder()))};
    streams.output.write(columns.join(u'\t').toUtf8() + '\n');
}

void print(const Engine& engine, bool json, const CommandStreams& streams)
{
    if (json) {
        printJson(streams, asJson(engine));
    } else {
        printRow(engine, streams);
    }
}

ExitStatus list(const EngineOptions& options, const EngineCommandParts& parts,
                const CommandStreams& streams)
{
    QJsonArray entries;
    for (const SmartOfflineVariant variant : smartOfflineVariants()) {
        const Engine engine = engineOf(variant, parts);
        if (options.json) {
            entries.append(asJson(engine));
        } else {
            printRow(engine, streams);
        }
    }
    if (options.json) {
        printJson(streams, {{QStringLiteral("engines"), entries}});
    }
    return ExitStatus::success;
}

ExitStatus status(const EngineOptions& options, const EngineCommandParts& parts,
                  const CommandStreams& streams)
{
    const Engine engine = engineOf(options.engine, parts);
    if (options.json) {
        printJson(streams, asJson(engine));
    } else {
        const QJsonObject facts = asJson(engine);
        for (const char* key :
             {"name", "engine", "state", "bytes", "model", "modelBytes", "folder"}) {
            const QString value = facts.value(QLatin1StringView(key)).toVariant().toString();
            streams.output.write(QByteArray(key) + '\t' + onOneLine(value.toUtf8()) + '\n');
        }
    }
    return engine.files.isComplete() ? ExitStatus::success : ExitStatus::failure;
}

SmartEngineInstaller::Parts installerParts(EngineState& state, const EngineCommandParts& parts)
{
    return {.state = state,
            .transport = parts.transport,
            .launcher = parts.launcher,
            .clock = parts.clock,
            .defaults = parts.defaults,
            .archiveFolders = parts.archiveFolders,
            .stopServer = [] {},
            .installed = [] {}};
}

/// Ends servers that use the files, of whatever process of this program. Theirs start again when
/// they are needed.
QCoro::Task<void> stopServers(Engine engine, EngineCommandParts parts, std::stop_token stop)
{
    StraySweep sweep(parts.processes, parts.clock);
    co_await sweep.sweepStrayServers(engine.files.server(), std::nullopt, stop);
}

QCoro::Task<ExitStatus> install(EngineOptions options, EngineCommandParts parts,
                                CommandStreams streams, EngineProgress::Style style,
                                std::stop_token stop)
{
    const Engine engine = engineOf(options.engine, parts);
    if (!engine.files.isComplete()) {
        co_await stopServers(engine, parts, stop);
    }
    EngineState state;
    SmartEngineInstaller installer(engine.files, installerParts(state, parts));
    {
        const EngineProgress progress(state, streams, style);
        co_await installer.install(stop);
    }
    const EngineStatus outcome = state.status;
    if (const auto* failed = std::get_if<engine_status::Failed>(&outcome)) {
        streams.complain(failed->text);
        co_return ExitStatus::failure;
    }
    if (std::holds_alternative<engine_status::NotInstalled>(outcome)) {
        co_return ExitStatus::interrupted;
    }
    print(engine, options.json, streams);
    co_return ExitStatus::success;
}

/// True once no process installs the engine any more. False if that takes too long.
QCoro::Task<bool> cancelElsewhere(QString lock, EngineCommandParts parts, std::stop_token stop)
{
    const auto deadline = parts.clock.monotonicNow() + cancelPatience;
    while (InstallLock::requestCancel(lock)) {
        if (parts.clock.monotonicNow() >= deadline) {
            co_return false;
        }
        co_await parts.clock.sleep(pollInterval, stop);
    }
    co_return true;
}

QCoro::Task<ExitStatus> cancel(EngineOptions options, EngineCommandParts parts,
                               CommandStreams streams, std::stop_token stop)
{
    const QString lock = engineOf(options.engine, parts).lock();
    if (!InstallLock::isHeld(lock)) {
        streams.complain(
            QStringLiteral("the engine %1 is not being installed").arg(shortName(options.engine)));
        co_return ExitStatus::failure;
    }
    if (!co_await cancelElsewhere(lock, parts, stop)) {
        streams.complain(QStringLiteral("the installation does not end"));
        co_return ExitStatus::failure;
    }
    co_return ExitStatus::success;
}

QCoro::Task<ExitStatus> remove(EngineOptions options, EngineCommandParts parts,
                               CommandStreams streams, std::stop_token stop)
{
    const Engine engine = engineOf(options.engine, parts);
    if (!engine.isThere()) {
        streams.complain(
            QStringLiteral("the engine %1 is not installed").arg(shortName(options.engine)));
        co_return ExitStatus::failure;
    }
    if (!co_await cancelElsewhere(engine.lock(), parts, stop)) {
        streams.complain(QStringLiteral("another process is installing the engine"));
        co_return ExitStatus::failure;
    }
    co_await stopServers(engine, parts, stop);
    {
        EngineState state;
        SmartEngineInstaller installer(engine.files, installerParts(state, parts));
        installer.deleteEngine();
    } // returns when the files are gone
    if (engine.isThere()) {
        streams.complain(QStringLiteral("a file of the engine could not be removed"));
        co_return ExitStatus::failure;
    }
    co_return ExitStatus::success;
}

} // namespace

QCoro::Task<ExitStatus> runEngineCommand(EngineOptions options, EngineCommandParts parts,
                                         CommandStreams streams, EngineProgress::Style style,
                                         std::stop_token stop)
{
    try {
        switch (options.verb) {
        case EngineOptions::Verb::list:
            co_return list(options, parts, streams);
        case EngineOptions::Verb::status:
            co_return status(options, parts, streams);
        case EngineOptions::Verb::install:
            co_return co_await install(options, parts, streams, style, stop);
        case EngineOptions::Verb::cancel:
            co_return co_await cancel(options, parts, streams, stop);
        case EngineOptions::Verb::remove:
            co_return co_await remove(options, parts, streams, stop);
        }
    } catch (const CancellationError&) {
        co_return ExitStatus::interrupted;
    }
    Q_UNREACHABLE();
}

} // namespace zelvane
