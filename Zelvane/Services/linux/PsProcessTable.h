#pragma once

#include "Services/ChildProcess.h"
#include "Services/ProcessTable.h"

namespace zelvane {

/// The processes as `ps` lists them.
class PsProcessTable final : public ProcessTable
{
public:
    /// Both must outlive this object and its listings.
    PsProcessTable(ChildProcessLauncher& launcher, Clock& clock);

    [[nodiscard]] QCoro::Task<std::optional<QByteArray>> listing(std::stop_token stop) override;
    [[nodiscard]] bool isRunning(qint32 pid) const override;
    void terminate(qint32 pid) override;
    void kill(qint32 pid) override;

private:
    ChildProcessLauncher& m_launcher;
    Clock& m_clock;
};

} // namespace zelvane
