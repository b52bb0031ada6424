#pragma once

#include <QCoroTask>
#include <QDateTime>

#include <chrono>
#include <functional>
#include <memory>
#include <stop_token>

namespace zelvane {

/// A callback that is due later. Destroying it cancels the callback; one that has run stays inert.
class Timer
{
public:
    Timer() = default;
    virtual ~Timer() = default;
    Q_DISABLE_COPY_MOVE(Timer)
};

/// Time, behind a seam: tests run the program's waits on a clock of their own that jumps.
class Clock
{
public:
    Clock() = default;
    virtual ~Clock() = default;
    Q_DISABLE_COPY_MOVE(Clock)

    /// Time since an arbitrary moment, never going back. Callable from any thread.
    [[nodiscard]] virtual std::chrono::nanoseconds monotonicNow() const = 0;

    /// The calendar time in UTC. Callable from any thread.
    [[nodiscard]] virtual QDateTime now() const = 0;

    /// Runs `callback` once, `delay` from now, on the calling thread, which must run an event loop.
    [[nodiscard]] virtual std::unique_ptr<Timer> callLater(std::chrono::milliseconds delay,
                                                           std::function<void()> callback) = 0;

    /// Runs `callback` every `interval` on the calling thread until the timer is destroyed. The
    /// system may move each call by up to `tolerance` to save wake-ups.
    [[nodiscard]] virtual std::unique_ptr<Timer> callEvery(std::chrono::milliseconds interval,
                                                           std::chrono::milliseconds tolerance,
                                                           std::function<void()> callback) = 0;

    /// Waits without blocking the thread. Ends with `CancellationError` as soon as `stop` is asked
    /// for, from this thread, and at once if it already was.
    QCoro::Task<void> sleep(std::chrono::milliseconds duration, std::stop_token stop = {});
};

} // namespace zelvane
