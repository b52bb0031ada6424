#pragma once

#include <QByteArray>
#include <QPoint>

#include <xcb/xcb.h>

#include <optional>

namespace zelvane {

/// The connection to the X server that the interface itself uses. Main thread only.
struct XcbSession
{
    xcb_connection_t* connection = nullptr;
    xcb_screen_t* screen = nullptr;
    int screenNumber = 0;
};

/// None where the interface does not run on X11.
[[nodiscard]] std::optional<XcbSession> currentXcbSession();

/// The atom of this name, made if it doesn't exist.
[[nodiscard]] xcb_atom_t internAtom(const XcbSession& session, const QByteArray& name);

/// The window that owns a selection; 0 for none.
[[nodiscard]] xcb_window_t selectionOwner(const XcbSession& session, xcb_atom_t selection);

/// A place in the X server's pixels as windows know it: on a scaled screen their units are larger.
[[nodiscard]] QPoint fromServerPixels(QPoint pixels);

} // namespace zelvane
