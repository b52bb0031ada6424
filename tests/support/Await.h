#pragma once

#include <QCoreApplication>
#include <QCoroTask>
#include <QDeadlineTimer>
#include <QEventLoop>
#include <QTimer>

#include <chrono>
#include <functional>
#include <optional>
#include <stdexcept>

namespace zelvane::test {

/// Runs the event loop until `condition` holds. False if it doesn't within `limit` of real time.
inline bool waitUntil(const std::function<bool()>& condition,
                      std::chrono::milliseconds limit = std::chrono::seconds(8))
{
    QDeadlineTimer deadline(limit);
    QTimer tick; // wakes the loop, which otherwise waits for an event
    tick.start(10);
    while (!condition()) {
        if (deadline.hasExpired()) {
            return false;
        }
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
    }
    return true;
}

/// Runs the event loop until `task` has ended; yields its value or throws its failure.
template <typename T>
T await(QCoro::Task<T> task, std::chrono::milliseconds limit = std::chrono::seconds(8))
{
    struct Outcome
    {
        bool ended = false;
        std::exception_ptr failure;
        std::conditional_t<std::is_void_v<T>, std::monostate, std::optional<T>> value;
    };
    const auto outcome = std::make_shared<Outcome>();
    [](QCoro::Task<T> awaited, std::shared_ptr<Outcome> result) -> QCoro::Task<void> {
        try {
            if constexpr (std::is_void_v<T>) {
                co_await awaited;
            } else {
                result->value = co_await awaited;
            }
        } catch (...) {
            result->failure = std::current_exception();
        }
        result->ended = true;
    }(std::move(task), outcome);
    if (!waitUntil([&] { return outcome->ended; }, limit)) {
        throw std::runtime_error("the task did not end in time");
    }
    if (outcome->failure) {
        std::rethrow_exception(outcome->failure);
    }
    if constexpr (!std::is_void_v<T>) {
        return std::move(*outcome->value);
    }
}

} // namespace zelvane::test
