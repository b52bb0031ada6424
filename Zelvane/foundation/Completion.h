#pragma once

#include <QCoroTask>

#include <coroutine>
#include <exception>
#include <memory>
#include <optional>
#include <utility>
#include <variant>

namespace zelvane {

/// Turns an event that arrives by callback into something a coroutine can await, once.
///
/// Copies share one state. The first `succeed` or `fail` decides the outcome; later ones are
/// ignored, so that an answer, a time-out and a cancellation may race for it. All calls and the
/// await happen on one thread. The awaiting coroutine resumes inside the deciding call: nothing of
/// the caller may be assumed to exist after it.
template <typename T>
class Completion
{
    struct Nothing
    {
    };
    using Value = std::conditional_t<std::is_void_v<T>, Nothing, T>;

    struct State
    {
        std::variant<std::monostate, Value, std::exception_ptr> outcome;
        std::coroutine_handle<> waiter;

        [[nodiscard]] bool decided() const { return outcome.index() != 0; }

        void resume()
        {
            if (auto handle = std::exchange(waiter, nullptr)) {
                handle.resume();
            }
        }
    };

public:
    [[nodiscard]] bool isDecided() const { return m_state->decided(); }

    /// Ends the wait with a value (none for `Completion<void>`).
    template <typename... Args>
    void succeed(Args&&... args) const
    {
        if (m_state->decided()) {
            return;
        }
        const auto state = m_state; // resuming may destroy the last other copy
        state->outcome.template emplace<1>(std::forward<Args>(args)...);
        state->resume();
    }

    /// Ends the wait with an exception.
    template <typename E>
    void fail(E error) const
    {
        failWith(std::make_exception_ptr(std::move(error)));
    }

    void failWith(std::exception_ptr error) const
    {
        if (m_state->decided()) {
            return;
        }
        const auto state = m_state;
        state->outcome.template emplace<2>(std::move(error));
        state->resume();
    }

    /// The outcome. To be awaited at most once.
    QCoro::Task<T> result() const
    {
        const auto state = m_state;
        co_await Awaiter{state.get()};
        if (auto* error = std::get_if<2>(&state->outcome)) {
            std::rethrow_exception(*error);
        }
        if constexpr (!std::is_void_v<T>) {
            co_return std::move(std::get<1>(state->outcome));
        }
    }

private:
    struct Awaiter
    {
        State* state;

        [[nodiscard]] bool await_ready() const noexcept { return state->decided(); }
        void await_suspend(std::coroutine_handle<> handle) const noexcept
        {
            state->waiter = handle;
        }
        void await_resume() const noexcept {}
    };

    std::shared_ptr<State> m_state = std::make_shared<State>();
};

} // namespace zelvane
