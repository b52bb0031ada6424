#pragma once

#include <QByteArray>
#include <QCoroTask>

#include <optional>
#include <stop_token>

namespace zelvane {

/// The processes of the whole machine. Main thread.
class ProcessTable
{
public:
    ProcessTable() = default;
    virtual ~ProcessTable() = default;
    Q_DISABLE_COPY_MOVE(ProcessTable)

    /// One line for each process: its identifier, blanks, its command line. None if the table can't
    /// be had as a whole. Throws `CancellationError` only.
    [[nodiscard]] virtual QCoro::Task<std::optional<QByteArray>> listing(std::stop_token stop) = 0;

    [[nodiscard]] virtual bool isRunning(qint32 pid) const = 0;
    /// Asks a process to end.
    virtual void terminate(qint32 pid) = 0;
    /// Ends a process at once.
    virtual void kill(qint32 pid) = 0;
};

} // namespace zelvane
