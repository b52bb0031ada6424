#include "foundation/TaskScope.h"

#include "foundation/DescribedError.h"

#include <QDebug>

#include <typeinfo>

namespace zelvane {

namespace {

/// Counts the task for as long as its frame lives, whatever ends it.
class RunningTask
{
public:
    explicit RunningTask(std::shared_ptr<int> counter)
        : m_counter(std::move(counter))
    {
        ++*m_counter;
    }
    ~RunningTask() { --*m_counter; }
    Q_DISABLE_COPY_MOVE(RunningTask)

private:
    std::shared_ptr<int> m_counter;
};

QCoro::Task<void> guarded(std::function<QCoro::Task<void>(std::stop_token)> task,
                          std::stop_token stop, std::shared_ptr<int> counter)
{
    const RunningTask running(std::move(counter));
    try {
        co_await task(std::move(stop));
    } catch (const CancellationError&) {
        // The ordinary end of a task whose owner went away.
    } catch (const std::exception& error) {
        // The type alone: a description may hold the user's text.
        qCritical("A task let a failure out: %s", typeid(error).name());
        Q_ASSERT_X(false, "TaskScope", "a task must deliver its own failures");
    }
}

} // namespace

TaskScope::~TaskScope()
{
    cancelAll();
}

void TaskScope::start(const std::function<QCoro::Task<void>(std::stop_token)>& task)
{
    guarded(task, m_stop.get_token(), m_running);
}

void TaskScope::cancelAll()
{
    // Replaced first: what the cancelled tasks do in answer may start new ones.
    std::stop_source old = std::exchange(m_stop, std::stop_source());
    old.request_stop();
}

} // namespace zelvane
