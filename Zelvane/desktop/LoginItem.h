#pragma once

#include <QCoroTask>

namespace zelvane {

/// The desktop's record that starts the program with the session. Main thread; no call blocks it.
class LoginItem
{
public:
    enum class State {
        absent,
        on,
        /// It is there, and the user has switched it off by the desktop's own means.
        off,
    };

    LoginItem() = default;
    virtual ~LoginItem() = default;
    Q_DISABLE_COPY_MOVE(LoginItem)

    /// The record as it is, after setting right what names a program file that is no longer there.
    [[nodiscard]] virtual QCoro::Task<State> look() = 0;

    /// Makes the record say so; what the user has added to it stays. False if it could not be
    /// stored.
    [[nodiscard]] virtual QCoro::Task<bool> set(bool on) = 0;
};

} // namespace zelvane
