#include "desktop/linux/X11AccessibilityPlatform.h"

#include <utility>

namespace zelvane {

namespace {

/// A chord that nobody presses: the last key code, which keyboards don't have, with all modifiers.
/// A grab of a key that people use would take it from them for a moment.
constexpr quint16 allModifiers = 0xff;

} // namespace

X11AccessibilityPlatform::X11AccessibilityPlatform(X11Session* session, Actions actions)
    : m_session(session)
    , m_actions(std::move(actions))
{
}

bool X11AccessibilityPlatform::isProcessTrusted() const
{
    return m_session && !m_session->isLost(); // a session has all extensions
}

bool X11AccessibilityPlatform::probeEventTap()
{
    if (!isProcessTrusted()) {
        return false;
    }
    XcbConnection& connection = m_session->connection();
    const xcb_keycode_t key = xcb_get_setup(connection.get())->max_keycode;
    const auto grab = xcb_grab_key_checked(connection.get(), 0, connection.root(), allModifiers,
                                           key, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
    const XcbOwned<xcb_generic_error_t> refused(xcb_request_check(connection.get(), grab));
    // Removing a grab that wasn't made is no error.
    xcb_ungrab_key(connection.get(), key, connection.root(), allModifiers);
    connection.flush();
    return !refused && !connection.isLost();
}

} // namespace zelvane
