#include "Services/SmartEngineInstaller.h"

#include "Services/ByteCount.h"
#include "Services/DiskWork.h"
#include "Services/EngineError.h"
#include "Services/EngineRefresh.h"
#include "Services/InstallLock.h"
#include "Services/RuntimeArchive.h"
#include "foundation/Text.h"
#include "pipeline/Endpoints.h"
#include "pipeline/TranslationError.h"
#include "settings/Localization.h"

#include <QFileInfo>
#include <QFileSystemWatcher>
#include <QRegularExpression>
#include <QScopedPointer>
#include <QStringDecoder>

#include <algorithm>
#include <optional>
#include <utility>

namespace zelvane {

namespace {

using engine_status::Failed;
using engine_status::Installing;
using engine_status::NotInstalled;
using engine_status::Ready;

constexpr double unpackingFraction = 0.04;
constexpr double downloadFraction = 0.1;
constexpr double downloadShare = 0.85;
constexpr double downloadedFraction = 0.95;

/// Of failures that reports of users know by their text.
constexpr int noCode = 0;

constexpr qsizetype maximalSummary = 300;
constexpr qsizetype maximalProcessOutput = qsizetype(1) << 20;

/// By how much a model may exceed its size before the download is given up, for the disk's sake.
constexpr qint64 toleratedExcess = qint64(1) << 30;

QString lastLine(const QString& text)
{
    static const QRegularExpression newline(QStringLiteral("[\\n-\\r\\x{85}\\x{2028}\\x{2029}]"));
    const QStringList lines = text.split(newline);
    for (auto line = lines.crbegin(); line != lines.crend(); ++line) {
        if (const QString trimmed = text::trimmed(*line); !trimmed.isEmpty()) {
            return trimmed;
        }
    }
    return text;
}

/// What a program printed, or nothing if it isn't UTF-8.
QString decoded(const QByteArray& output)
{
    QStringDecoder decoder(QStringDecoder::Utf8);
    const QString text = decoder.decode(output);
    return decoder.hasError() ? QString() : text;
}

void throwIfStopped(const std::stop_token& stop)
{
    if (stop.stop_requested()) {
        throw CancellationError();
    }
}

bool isCancellation(const std::exception_ptr& error)
{
    try {
        std::rethrow_exception(error);
    } catch (const CancellationError&) {
        return true;
    } catch (...) {
        return false;
    }
}

/// Fails if the disk can't hold the model that is to be downloaded, counting what goes before.
void checkSpaceForModel(const EngineFiles& files)
{
    if (files.hasWholeModel()) {
        return;
    }
    const qint64 needed = files.facts().expectedModelBytes;
    const qint64 available = freeBytes(files.folder()) + QFileInfo(files.model()).size() +
                             QFileInfo(files.partialModel()).size();
    if (available < needed) {
        const QLocale locale = interfaceLocale();
        throw EngineError(
            noCode, localizedFormat(
                        QStringLiteral(
                            "There is not enough space on the disk: %@ are needed, %@ are free."),
                        {byteCount(needed, locale), byteCount(available, locale)}));
    }
}

void checkSize(const QString& path, const SmartOfflineVariantFacts& facts)
{
    const qint64 size = QFileInfo(path).size();
    if (size == facts.expectedModelBytes) {
        return;
    }
    removeAll(path);
    throw EngineError(EngineError::sizeMismatch,
                      QStringLiteral("%1 download size mismatch: expected %2, got %3.")
                          .arg(facts.recordEngine)
                          .arg(facts.expectedModelBytes)
                          .arg(size));
}

/// An empty folder for the runtime, marked as not to be used yet.
void beginRuntime(const EngineFiles& files)
{
    removeAll(files.record());
    removeAll(files.runtime());
    makeFolder(files.runtime());
    writeMark(files.unpackingMark());
}

void finishRuntime(const EngineFiles& files)
{
    if (!QFileInfo::exists(files.server())) {
        throw EngineError(EngineError::unpackFailed,
                          LOCALIZATION_KEY("Bundled llama.cpp could not be unpacked."));
    }
    makeExecutable(files.server());
    syncAll(files.runtime());
    removeAll(files.unpackingMark());
}

} // namespace

QString summarizeFailure(const QString& text)
{
    const QString line = lastLine(text);
    const QString beginning = text::firstCharacters(line, maximalSummary);
    return beginning.size() < line.size() ? beginning + u'…' : beginning;
}

/// One installation from its beginning until nothing of it moves any more.
struct SmartEngineInstaller::Run
{
    std::stop_source stop;
    /// The one before, which may still be cleaning up.
    std::shared_ptr<Run> previous;
    Completion<void> ended;
    std::shared_ptr<InstallLock> lock;
    /// Of the lock's file, in which others ask for the end.
    QScopedPointer<QFileSystemWatcher, QScopedPointerDeleteLater> watcher;
};

SmartEngineInstaller::SmartEngineInstaller(EngineFiles files, Parts parts)
    : m_files(std::move(files))
    , m_parts(std::move(parts))
{
    for (const QString& remains : remainsOf(m_files.root(), m_files.facts().folder)) {
        removeLater(remains);
    }
}

SmartEngineInstaller::~SmartEngineInstaller()
{
    *m_isAlive = false;
    if (const auto run = m_latest.lock()) {
        run->stop.request_stop();
    }
}

SmartEngineInstaller::RunPointer SmartEngineInstaller::beginRun()
{
    auto run = std::make_shared<Run>();
    run->previous = m_latest.lock();
    m_latest = run;
    m_installTask = run;
    return run;
}

QCoro::Task<void> SmartEngineInstaller::install(std::stop_token stop)
{
    EngineState& state = m_parts.state;
    if (state.is<Installing>()) {
        co_return;
    }
    m_parts.stopServer();
    state.installLog = QString();
    state.downloadProgress = std::nullopt;
    state.status =
        Installing{localizedText(QStringLiteral("Unpacking llama.cpp…")), unpackingFraction};

    const auto isAlive = m_isAlive;
    const RunPointer run = beginRun();
    const std::stop_callback link(stop, [run] { run->stop.request_stop(); });
    std::exception_ptr failure;
    try {
        co_await installFiles(run);
    } catch (...) {
        failure = std::current_exception();
    }
    if (*isAlive && failure) {
        co_await takeLeave(run, failure);
    }
    run->watcher.reset();
    run->lock.reset();
    if (*isAlive && !failure) {
        finish(run);
    }
    if (*isAlive && isPresent(run)) {
        m_installTask.reset();
    }
    run->ended.succeed();
}

QCoro::Task<void> SmartEngineInstaller::installFiles(RunPointer run)
{
    const std::stop_token stop = run->stop.get_token();
    if (const RunPointer previous = std::exchange(run->previous, nullptr)) {
        co_await previous->ended.result();
    }
    throwIfStopped(stop);
    co_await lock(run);
    co_await onDisk(
        [files = m_files] {
            makeFolder(files.folder());
            checkSpaceForModel(files);
        },
        stop);
    co_await prepareRuntime(stop);
    co_await prepareModel(stop);
    co_await onDisk([files = m_files] { throwIfFailed(files.writeReadyRecord()); }, stop);
}

QCoro::Task<void> SmartEngineInstaller::lock(RunPointer run)
{
    const QString path = InstallLock::path(m_files.root(), m_files.facts().folder);
    // Not to be left halfway: whoever cancels has to know whether the lock is held.
    run->lock = co_await m_disk.run(
        [path, root = m_files.root()]() -> std::shared_ptr<InstallLock> {
            makeFolder(root);
            auto acquired = InstallLock::acquire(path);
            return acquired ? std::make_shared<InstallLock>(std::move(*acquired)) : nullptr;
        },
        {});
    throwIfStopped(run->stop.get_token());
    if (!run->lock) {
        throw EngineError(noCode,
                          LOCALIZATION_KEY("This engine is being installed by another process."));
    }
    run->watcher.reset(new QFileSystemWatcher({path}));
    QObject::connect(run->watcher.get(), &QFileSystemWatcher::fileChanged, run->watcher.get(),
                     [this, isAlive = m_isAlive, present = std::weak_ptr(run), path] {
                         if (*isAlive && isPresent(present.lock()) &&
                             InstallLock::isCancelRequested(path)) {
                             cancelInstall();
                         }
                     });
}

QCoro::Task<void> SmartEngineInstaller::prepareRuntime(std::stop_token stop)
{
    EngineState& state = m_parts.state;
    if (m_files.hasServer()) {
        state.appendInstallLog(QStringLiteral("Reusing llama.cpp b10437"));
        co_return;
    }
    co_await onDisk([files = m_files] { beginRuntime(files); }, stop);
    const QString archive = findRuntimeArchive(m_parts.archiveFolders);
    state.appendInstallLog(QStringLiteral("Unpacking %1…").arg(QFileInfo(archive).fileName()));
    const QStringList arguments{QStringLiteral("-xzf"), archive, QStringLiteral("-C"),
                                m_files.runtime()};
    co_await runProcess(QStringLiteral("/usr/bin/tar"), arguments, stop);
    co_await onDisk([files = m_files] { finishRuntime(files); }, stop);
    state.appendInstallLog(QStringLiteral("llama.cpp ready at ") + m_files.server());
}

QCoro::Task<void> SmartEngineInstaller::prepareModel(std::stop_token stop)
{
    co_await onDisk([folder = m_files.modelFolder()] { makeFolder(folder); }, stop);
    if (m_files.hasWholeModel()) {
        m_parts.state.appendInstallLog(QStringLiteral("Reusing ") + m_files.facts().modelFile);
        co_return;
    }
    co_await onDisk(
        [files = m_files] {
            removeAll(files.record());
            removeAll(files.model());
        },
        stop);
    co_await downloadModel(stop);
}

QCoro::Task<void> SmartEngineInstaller::downloadModel(std::stop_token stop)
{
    EngineState& state = m_parts.state;
    const SmartOfflineVariantFacts& facts = m_files.facts();
    state.status = Installing{localizedText(facts.downloadText), downloadFraction};
    const QString path =
        QStringLiteral("/%1/resolve/main/%2?download=true").arg(facts.repository, facts.modelFile);
    const QString address = modelFileUrl(path, m_parts.defaults);
    if (address.isEmpty()) {
        throw TranslationError(TranslationError::Code::invalidURL);
    }
    state.appendInstallLog(QStringLiteral("Downloading ") + address);
    co_await onDisk(
        [files = m_files] {
            removeAll(files.partialModel());
            checkSpaceForModel(files);
        },
        stop);

    QwenModelDownload download(m_parts.transport, m_parts.clock, m_files.partialModel(),
                               facts.expectedModelBytes + toleratedExcess,
                               [this, stop](const QwenModelDownload::Progress& progress) {
                                   if (!stop.stop_requested()) {
                                       showDownload(progress);
                                   }
                               });
    co_await download.start(QUrl(address), stop);
    throwIfStopped(stop);
    co_await onDisk(
        [files = m_files] {
            checkSize(files.partialModel(), files.facts());
            renameDurably(files.partialModel(), files.model());
        },
        stop);
    state.appendInstallLog(QStringLiteral("Downloaded ") +
                           byteCount(facts.expectedModelBytes, interfaceLocale()));
}

QCoro::Task<void> SmartEngineInstaller::runProcess(QString executable, QStringList arguments,
                                                   std::stop_token stop)
{
    ChildProcessCommand command;
    command.executable = std::move(executable);
    command.arguments = std::move(arguments);
    command.workingDirectory = m_files.folder();
    const ChildProcessOutcome outcome = co_await runChildProcess(
        m_parts.launcher, m_parts.clock, std::move(command), maximalProcessOutput, stop);
    throwIfStopped(stop);
    const QString output = decoded(outcome.output);
    m_parts.state.appendInstallLog(output);
    if (!outcome.end.isSuccess()) {
        throw EngineError(outcome.end.code,
                          output.isEmpty() ? LOCALIZATION_KEY("Install failed.") : output);
    }
}

QCoro::Task<void> SmartEngineInstaller::onDisk(std::function<void()> call, std::stop_token stop)
{
    co_await m_disk.run(std::move(call), stop);
    throwIfStopped(stop);
}

void SmartEngineInstaller::removeLater(const QString& path)
{
    m_removals.start(
        [this, path](std::stop_token) { return m_disk.run([path] { removeAll(path); }, {}); });
}

void SmartEngineInstaller::showDownload(const QwenModelDownload::Progress& progress)
{
    const SmartOfflineVariantFacts& facts = m_files.facts();
    const qint64 announced = progress.expectedBytes.value_or(0);
    const qint64 total = announced >= 1 ? announced : facts.expectedModelBytes;
    const qint64 remaining = std::max<qint64>(total - progress.writtenBytes, 0);
    const qint64 speed = progress.bytesPerSecond;
    m_parts.state.downloadProgress = EngineDownloadProgress{
        .downloadedBytes = progress.writtenBytes,
        .totalBytes = total,
        .bytesPerSecond = speed,
        .remainingBytes = remaining,
        .etaSeconds = speed >= 1 ? std::optional(remaining / speed) : std::nullopt,
        .elapsedSeconds = progress.elapsedSeconds,
        .idleSeconds = 0,
    };
    const double share = double(progress.writtenBytes) / double(total);
    m_parts.state.status =
        Installing{localizedText(facts.downloadText),
                   std::min(downloadFraction + downloadShare * share, downloadedFraction)};
}

void SmartEngineInstaller::finish(const RunPointer& run)
{
    if (!isPresent(run)) {
        return; // cancelled at the very last moment
    }
    EngineState& state = m_parts.state;
    state.downloadProgress = std::nullopt;
    refreshStatus(state, m_files);
    state.status = Ready{};
    m_parts.installed();
}

QCoro::Task<void> SmartEngineInstaller::takeLeave(RunPointer run, std::exception_ptr error)
{
    const auto isAlive = m_isAlive;
    const bool wasCancelled = co_await handleCancelledInstall(run, error);
    if (wasCancelled || !*isAlive || !isPresent(run)) {
        co_return;
    }
    EngineState& state = m_parts.state;
    const QString description = describe(error);
    state.downloadProgress = std::nullopt;
    state.appendInstallLog(QStringLiteral("FAILED: ") + description);
    state.status = Failed{summarizeFailure(description)};
}

QCoro::Task<bool> SmartEngineInstaller::handleCancelledInstall(RunPointer run,
                                                               std::exception_ptr error)
{
    const bool isAsked = m_installCancelledByUser || run->stop.stop_requested();
    if (!isAsked && !isCancellation(error)) {
        co_return false;
    }
    const auto isAlive = m_isAlive;
    if (run->lock) {
        try {
            co_await onDisk([folder = m_files.folder()] { removeAll(folder); }, {});
        } catch (const CancellationError&) {
            co_return true; // the program ends
        }
    }
    const bool isPresentRun = *isAlive && (isPresent(run) || !m_installTask);
    if (isPresentRun) {
        EngineState& state = m_parts.state;
        state.diskUsageBytes = 0;
        state.downloadProgress = std::nullopt;
        state.status = NotInstalled{};
        if (!m_installCancelledByUser) {
            state.appendInstallLog(QStringLiteral("Install cancelled."));
        }
        m_installCancelledByUser = false;
    }
    co_return true;
}

void SmartEngineInstaller::cancelInstall()
{
    EngineState& state = m_parts.state;
    if (!state.is<Installing>()) {
        return;
    }
    m_installCancelledByUser = true;
    const RunPointer run = m_installTask;
    forgetRun();
    state.downloadProgress = std::nullopt;
    m_parts.stopServer();
    if (run && run->lock) { // without it, what is there belongs to another process
        removeEngine();
    }
    state.appendInstallLog(QStringLiteral("Install cancelled."));
    state.status = NotInstalled{};
    m_installCancelledByUser = false;
}

void SmartEngineInstaller::deleteEngine()
{
    EngineState& state = m_parts.state;
    if (!m_installTask) {
        InstallLock::requestCancel(InstallLock::path(m_files.root(), m_files.facts().folder));
    }
    forgetRun();
    m_parts.stopServer();
    removeEngine();
    state.downloadProgress = std::nullopt;
    state.status = NotInstalled{};
}

void SmartEngineInstaller::forgetRun()
{
    if (const RunPointer run = std::exchange(m_installTask, nullptr)) {
        run->stop.request_stop();
    }
}

void SmartEngineInstaller::removeEngine()
{
    const QString folder = m_files.folder();
    const QString remains = takeAway(m_files.root(), m_files.facts().folder);
    removeLater(remains.isEmpty() ? folder : remains);
    m_parts.state.diskUsageBytes = 0;
}

} // namespace zelvane
