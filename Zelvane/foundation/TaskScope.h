#pragma once

#include <QCoroTask>

#include <functional>
#include <memory>
#include <stop_token>

namespace zelvane {

/// Owns the tasks of one object: starts them, and asks them to stop when the object goes.
///
/// A task that outlives its scope runs on until its next wait, which then ends with
/// `CancellationError`; it must not touch the owner after that. A failure that a task lets out ends
/// the program in debug builds and is logged by its type in release builds: tasks deliver their own
/// failures.
class TaskScope
{
public:
    TaskScope() = default;
    ~TaskScope();
    Q_DISABLE_COPY_MOVE(TaskScope)

    /// Starts `task`, handing it the scope's stop token.
    void start(const std::function<QCoro::Task<void>(std::stop_token)>& task);

    /// Asks all running tasks to stop. New ones can be started afterwards.
    void cancelAll();

    [[nodiscard]] int runningTasks() const { return *m_running; }

private:
    std::stop_source m_stop;
    std::shared_ptr<int> m_running = std::make_shared<int>(0);
};

} // namespace zelvane
