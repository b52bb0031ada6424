#pragma once

#include <QCoroTask>

namespace zelvane {

/// The keys that the program presses for the user, as virtual key codes.
enum class CommandKey : quint32 {
    copy = 8,  ///< C
    paste = 9, ///< V
};

enum class PostResult {
    posted,
    /// The window in which the copy was made is gone, so that the keys would hit another program.
    targetGone,
};

/// Presses the platform's copy and paste shortcuts in the program that has the keyboard focus.
class KeystrokePoster
{
public:
    KeystrokePoster() = default;
    virtual ~KeystrokePoster() = default;
    Q_DISABLE_COPY_MOVE(KeystrokePoster)

    /// Posts key-down and key-up of `key` with exactly the command modifier (Control on Linux),
    /// whatever the user holds down. Main thread; waits of the adapter do not block it and are
    /// bounded. There is no telling whether the foreign program acts on the keys.
    [[nodiscard]] virtual QCoro::Task<PostResult> postCommandKey(CommandKey key) = 0;
};

} // namespace zelvane
