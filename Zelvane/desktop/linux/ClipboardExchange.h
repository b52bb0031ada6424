#pragma once

#include "foundation/Clock.h"
#include "foundation/Completion.h"

#include <QCoroTask>

#include <chrono>
#include <optional>
#include <vector>

#include <xcb/xcb.h>

namespace zelvane {

/// What the keystroke poster and the pasteboard must know of each other. Main thread.
///
/// Copy and paste are keys on one connection and a clipboard on another, and the server keeps no
/// order between the two.
class ClipboardExchange
{
public:
    using Moment = std::chrono::steady_clock::time_point;

    /// A paste whose keys have been pressed.
    struct Paste
    {
        /// The window that was in front; none if that is unknown.
        std::optional<xcb_window_t> target;
        Moment at;
    };

    /// From the pasteboard: its content changes from here on until `changeDone`.
    void changeBegun() { ++m_changes; }
    void changeDone();

    /// Waits until the clipboard is what the calls so far made of it, but not for long.
    [[nodiscard]] QCoro::Task<void> settled(Clock& clock);

    /// From the poster, before it presses the keys.
    void copyPosted() { m_copyAt = std::chrono::steady_clock::now(); }
    void pastePosted(std::optional<xcb_window_t> target);

    /// From the pasteboard: keys pressed before this moment had to do with another content.
    void contentReplaced();

    /// The keys pressed since the content was last replaced.
    [[nodiscard]] std::optional<Moment> copyAt() const { return m_copyAt; }
    [[nodiscard]] const std::optional<Paste>& paste() const { return m_paste; }

private:
    int m_changes = 0;
    std::vector<Completion<void>> m_waiters;
    std::optional<Moment> m_copyAt;
    std::optional<Paste> m_paste;
};

} // namespace zelvane
