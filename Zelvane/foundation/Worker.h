#pragma once

#include "foundation/Completion.h"
#include "foundation/DescribedError.h"

#include <QObject>
#include <QThreadPool>

#include <concepts>
#include <functional>
#include <stop_token>
#include <type_traits>

namespace zelvane {

/// Runs calls that block, such as those of a secret store, on a thread of its own, one after the
/// other in the order in which they were handed in. The thread ends when it has long been idle.
///
/// Used on the thread that made it, which must run an event loop.
class Worker
{
public:
    Worker();
    /// Ends all waits with `CancellationError` and blocks until the calls handed in have run.
    ~Worker();
    Q_DISABLE_COPY_MOVE(Worker)

    /// Yields what `call` returns, or throws what it throws. `call` runs in any case: a stop ends
    /// only the wait for it, so that what it has begun to store gets stored.
    template <std::invocable Call>
    [[nodiscard]] QCoro::Task<std::invoke_result_t<Call>> run(Call call, std::stop_token stop)
    {
        using Result = std::invoke_result_t<Call>;
        const Completion<Result> outcome;
        start([this, outcome, work = std::move(call)] {
            try {
                if constexpr (std::is_void_v<Result>) {
                    work();
                    report([outcome] { outcome.succeed(); });
                } else {
                    report([outcome, result = work()] { outcome.succeed(result); });
                }
            } catch (...) {
                report([outcome, error = std::current_exception()] { outcome.failWith(error); });
            }
        });
        const auto cancel = [outcome] { outcome.fail(CancellationError()); };
        const std::stop_callback onStop(stop, cancel);
        const std::stop_callback onEnd(m_end.get_token(), cancel);
        co_return co_await outcome.result();
    }

private:
    void start(std::function<void()> call);
    /// From the worker's thread: has `effect` run on this object's thread, if it is still there.
    void report(std::function<void()> effect);

    QObject m_mailbox;
    std::stop_source m_end;
    QThreadPool m_thread;
};

} // namespace zelvane
