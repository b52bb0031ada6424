#pragma once

#include "desktop/linux/XcbConnection.h"

#include <optional>

namespace zelvane {

/// The windows of other programs, by the conventions between programs and window managers. Main
/// thread.
class X11Windows
{
public:
    /// `connection` must outlive this object.
    explicit X11Windows(XcbConnection& connection);

    /// The window that the user works in, none if there is none or nobody knows. Without a window
    /// manager it is the one that has the input focus.
    [[nodiscard]] std::optional<xcb_window_t> active();

    /// Whether the window is still there for the user, shown or as an icon.
    [[nodiscard]] bool exists(xcb_window_t window);

    /// Asks for the window to be brought to the front. That takes a moment and may be refused.
    void activate(xcb_window_t window);

    /// Whether keys that are pressed now go to the program of this window.
    [[nodiscard]] bool hasKeyboard(xcb_window_t window);

private:
    [[nodiscard]] bool isManaged();
    [[nodiscard]] std::optional<xcb_window_t> focus();

    XcbConnection& m_connection;
};

} // namespace zelvane
