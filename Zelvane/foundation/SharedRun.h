#pragma once

#include "foundation/Completion.h"
#include "foundation/DescribedError.h"

#include <algorithm>
#include <functional>
#include <memory>
#include <optional>
#include <stop_token>
#include <vector>

namespace zelvane {

/// One run of a task for all who want its result while it runs, where a second run beside the first
/// would do harm: a registration, for instance.
///
/// Whoever stops waiting leaves the others alone; when nobody waits any more, the run is asked to
/// stop. All on one thread. The destructor ends the waits with what the stopped run fails with.
template <typename T>
class SharedRun
{
public:
    using Start = std::function<QCoro::Task<T>(std::stop_token)>;

    SharedRun() = default;
    ~SharedRun()
    {
        if (const auto run = std::exchange(m_current->run, nullptr)) {
            run->stop.request_stop();
        }
    }
    Q_DISABLE_COPY_MOVE(SharedRun)

    [[nodiscard]] bool isRunning() const { return m_current->run != nullptr; }

    /// The result of the run that is under way, or of a new one made by `start`. Throws what the
    /// run fails with, or `CancellationError` as soon as `stop` is asked for.
    [[nodiscard]] QCoro::Task<T> join(Start start, std::stop_token stop)
    {
        if (stop.stop_requested()) {
            throw CancellationError();
        }
        const bool isFirst = m_current->run == nullptr;
        if (isFirst) {
            m_current->run = std::make_shared<Run>();
        }
        const std::shared_ptr<Run> run = m_current->run;
        const auto waiter = std::make_shared<Completion<T>>();
        run->waiters.push_back(waiter);
        if (isFirst) {
            drive(std::move(start), run, m_current);
        }
        const std::stop_callback onStop(
            stop, [run, waiter, current = m_current] { leave(run, waiter, current); });
        co_return co_await waiter->result();
    }

private:
    using Waiter = std::shared_ptr<Completion<T>>;
    struct Run
    {
        std::stop_source stop;
        std::vector<Waiter> waiters;
    };
    /// Outlives this object while a run or a wait needs it.
    struct Current
    {
        std::shared_ptr<Run> run;
    };

    static QCoro::Task<void> drive(Start start, std::shared_ptr<Run> run,
                                   std::shared_ptr<Current> current)
    {
        std::optional<T> result;
        std::exception_ptr failure;
        try {
            result = co_await start(run->stop.get_token());
        } catch (...) {
            failure = std::current_exception();
        }
        if (current->run == run) {
            current->run = nullptr; // before anyone goes on, who may want a new one
        }
        const std::vector<Waiter> waiters = std::exchange(run->waiters, {});
        for (const Waiter& waiter : waiters) {
            failure ? waiter->failWith(failure) : waiter->succeed(*result);
        }
    }

    /// By value: what called this goes when the wait ends.
    static void leave(std::shared_ptr<Run> run, Waiter waiter, std::shared_ptr<Current> current)
    {
        std::erase(run->waiters, waiter);
        const bool isAbandoned = run->waiters.empty();
        if (isAbandoned && current->run == run) {
            current->run = nullptr;
        }
        waiter->fail(CancellationError());
        if (isAbandoned) {
            run->stop.request_stop();
        }
    }

    std::shared_ptr<Current> m_current = std::make_shared<Current>();
};

} // namespace zelvane
