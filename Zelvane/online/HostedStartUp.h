#pragma once

#include "foundation/TaskScope.h"
#include "online/HostedService.h"
#include "settings/AppSettings.h"

namespace zelvane {

/// What the hosted service is asked when the program starts: its configuration and the quota.
///
/// Nobody hears of a failure: what is cached or built in serves as well. Main thread. Ends with
/// this object.
class HostedStartUp
{
public:
    /// Both must outlive this object.
    HostedStartUp(HostedService& service, AppSettings& settings);

    /// Begins the synchronisation, once for each start of the program.
    void start();

    [[nodiscard]] bool isRunning() const { return m_scope.runningTasks() > 0; }

private:
    [[nodiscard]] QCoro::Task<void> run(std::stop_token stop);
    [[nodiscard]] QCoro::Task<void> adoptConfig(std::stop_token stop);
    [[nodiscard]] QCoro::Task<void> refreshQuota(std::stop_token stop);

    HostedService& m_service;
    AppSettings& m_settings;
    TaskScope m_scope;
};

} // namespace zelvane
