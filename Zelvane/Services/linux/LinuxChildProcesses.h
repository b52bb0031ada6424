#pragma once

#include "Services/ChildProcess.h"

#include <QObject>
#include <QThread>

#include <stop_token>

namespace zelvane {

class Nursery;

/// Children under Linux. A thread of its own starts them, reads their output and waits for their
/// end; it starts with the first child.
///
/// The kernel kills a child when the thread that started it ends, be it with this object or because
/// the program was killed.
class LinuxChildProcesses final : public ChildProcessLauncher
{
public:
    LinuxChildProcesses() = default;
    /// Kills the children that still run. Their process objects may be destroyed later.
    ~LinuxChildProcesses() override;

    [[nodiscard]] QCoro::Task<std::unique_ptr<ChildProcess>>
    launch(ChildProcessCommand command, ChildProcess::Listener listener) override;

private:
    void startThread();

    std::stop_source m_end;
    quint64 m_lastId = 0;
    /// Receives, on this object's thread, what the other one reports.
    QObject m_mailbox;
    QThread m_thread;
    Nursery* m_nursery = nullptr; ///< lives on m_thread and goes with it
};

} // namespace zelvane
