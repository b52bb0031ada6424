#include "online/HostedStartUp.h"

#include <tuple>

namespace zelvane {

namespace {

/// A step whose failure is nobody's concern.
QCoro::Task<void> silently(QCoro::Task<void> step)
{
    try {
        co_await step;
    } catch (const CancellationError&) {
        throw;
    } catch (const DescribedError&) {
        // The cached or built-in configuration keeps the engine working.
    }
}

} // namespace

HostedStartUp::HostedStartUp(HostedService& service, AppSettings& settings)
    : m_service(service)
    , m_settings(settings)
{
}

void HostedStartUp::start()
{
    m_scope.start([this](std::stop_token stop) { return run(std::move(stop)); });
}

QCoro::Task<void> HostedStartUp::run(std::stop_token stop)
{
    co_await m_service.clearRetired(stop);
    co_await silently(adoptConfig(stop));
    co_await silently(refreshQuota(stop));
}

QCoro::Task<void> HostedStartUp::adoptConfig(std::stop_token stop)
{
    const CloudflareSyncResult result =
        co_await m_service.syncConfig(m_settings.cloudflareWorkerURL(), stop);
    if (m_settings.provider() == AIProvider::zelvane) {
        m_settings.setModel(result.bootstrap.config.model);
    }
}

QCoro::Task<void> HostedStartUp::refreshQuota(std::stop_token stop)
{
    std::ignore = co_await m_service.refreshQuota(m_settings.cloudflareWorkerURL(), stop);
}

} // namespace zelvane
