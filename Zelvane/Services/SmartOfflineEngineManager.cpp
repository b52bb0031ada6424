#include "Services/SmartOfflineEngineManager.h"

#include "Services/CompletionRequest.h"
#include "Services/EngineRecord.h"
#include "Services/EngineRefresh.h"

#include <utility>

namespace zelvane {

SmartOfflineEngineManager::SmartOfflineEngineManager(SmartOfflineVariant variant, EngineFiles files,
                                                     const Parts& parts)
    : m_variant(variant)
    , m_files(std::move(files))
    , m_isSelected(parts.isSelected)
    , m_stopOthers(parts.stopOthers)
    , m_server({m_files.server(), m_files.serverFolder(), m_files.model()}, parts.server)
    , m_installer(m_files, installerParts(parts))
    , m_translator(*this)
{
    refreshStatus();
}

SmartEngineInstaller::Parts SmartOfflineEngineManager::installerParts(const Parts& parts)
{
    return {.state = m_state,
            .transport = parts.server.transport,
            .launcher = parts.server.launcher,
            .clock = parts.server.clock,
            .defaults = parts.defaults,
            .archiveFolders = parts.archiveFolders,
            .stopServer = [this] { stopServer(); },
            .installed =
                [this] {
                    if (m_isSelected()) {
                        scheduleWarmUp();
                    }
                }};
}

QCoro::Task<void> SmartOfflineEngineManager::install(std::stop_token stop)
{
    return m_installer.install(std::move(stop));
}

void SmartOfflineEngineManager::refreshStatus()
{
    zelvane::refreshStatus(m_state, m_files);
}

qint64 SmartOfflineEngineManager::displaySizeBytes() const
{
    if (m_state.is<engine_status::Ready>()) {
        return m_state.diskUsageBytes;
    }
    const auto progress = m_state.downloadProgress.value();
    if (m_state.is<engine_status::Installing>() && progress && progress->totalBytes) {
        return *progress->totalBytes;
    }
    return m_files.facts().expectedModelBytes;
}

void SmartOfflineEngineManager::sweepStrays()
{
    m_sweepTask.start(
        [this](std::stop_token stop) { return m_server.sweepStrays(std::move(stop)); });
}

void SmartOfflineEngineManager::scheduleWarmUp()
{
    m_warmUpTask.cancelAll();
    m_warmUpTask.start([this](std::stop_token stop) { return warmUp(std::move(stop)); });
}

void SmartOfflineEngineManager::cancelWarmUp()
{
    m_warmUpTask.cancelAll();
}

QCoro::Task<void> SmartOfflineEngineManager::warmUp(std::stop_token stop)
{
    refreshStatus();
    if (!m_state.is<engine_status::Ready>()) {
        co_return;
    }
    std::exception_ptr failure;
    try {
        co_await ensureServer(GpuLayers::all, stop);
    } catch (...) {
        failure = std::current_exception();
    }
    // Cancelled, it says nothing, and this object may have gone.
    if (failure && !stop.stop_requested()) {
        m_state.appendInstallLog(QStringLiteral("Warm-up skipped: ") + describe(failure));
    }
}

QCoro::Task<void> SmartOfflineEngineManager::ensureServer(GpuLayers layers, std::stop_token stop)
{
    m_stopOthers();
    co_await m_server.ensure(layers, std::move(stop));
}

QCoro::Task<std::optional<int>> SmartOfflineEngineManager::recordedRevision(std::stop_token)
{
    const auto revision = readEngineRevision(m_files.record());
    co_return revision&& std::in_range<int>(*revision) ? std::optional(static_cast<int>(*revision))
                                                       : std::nullopt;
}

QCoro::Task<QString> SmartOfflineEngineManager::requestCompletion(ModelJob job, Attempt attempt,
                                                                  std::stop_token stop)
{
    const QByteArray body = co_await m_server.completion(completionRequest(job, attempt), stop);
    co_return completionText(body);
}

} // namespace zelvane
