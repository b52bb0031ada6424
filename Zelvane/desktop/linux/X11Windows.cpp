#include "desktop/linux/X11Windows.h"

namespace zelvane {

X11Windows::X11Windows(XcbConnection& connection)
    : m_connection(connection)
{
}

bool X11Windows::isManaged()
{
    return !m_connection
                .property(m_connection.root(), m_connection.atom("_NET_SUPPORTING_WM_CHECK"),
                          XCB_ATOM_WINDOW)
                .isEmpty();
}

std::optional<xcb_window_t> X11Windows::active()
{
    const QList<quint32> told = m_connection.property(
        m_connection.root(), m_connection.atom("_NET_ACTIVE_WINDOW"), XCB_ATOM_WINDOW);
    if (told.isEmpty()) {
        return focus();
    }
    return told.first() == XCB_WINDOW_NONE ? std::nullopt : std::optional(told.first());
}

std::optional<xcb_window_t> X11Windows::focus()
{
    const XcbOwned<xcb_get_input_focus_reply_t> reply(xcb_get_input_focus_reply(
        m_connection.get(), xcb_get_input_focus(m_connection.get()), nullptr));
    if (!reply || reply->focus == XCB_INPUT_FOCUS_NONE ||
        reply->focus == XCB_INPUT_FOCUS_POINTER_ROOT || reply->focus == m_connection.root()) {
        return std::nullopt;
    }
    return reply->focus;
}

bool X11Windows::exists(xcb_window_t window)
{
    const XcbOwned<xcb_get_window_attributes_reply_t> attributes(xcb_get_window_attributes_reply(
        m_connection.get(), xcb_get_window_attributes(m_connection.get(), window), nullptr));
    if (!attributes) {
        return false;
    }
    // Some programs only hide a window that the user closes; the window manager forgets it then.
    const QList<quint32> managed = m_connection.property(
        m_connection.root(), m_connection.atom("_NET_CLIENT_LIST"), XCB_ATOM_WINDOW);
    return !isManaged() || managed.contains(window);
}

void X11Windows::activate(xcb_window_t window)
{
    if (!isManaged()) {
        xcb_set_input_focus(m_connection.get(), XCB_INPUT_FOCUS_PARENT, window, XCB_CURRENT_TIME);
        m_connection.flush();
        return;
    }
    // Speaking as the user's tool and not as a program that pushes itself forward.
    constexpr quint32 fromPager = 2;
    union {
        xcb_client_message_event_t message;
        char wire[32];
    } event{};
    event.message.response_type = XCB_CLIENT_MESSAGE;
    event.message.format = 32;
    event.message.window = window;
    event.message.type = m_connection.atom("_NET_ACTIVE_WINDOW");
    event.message.data.data32[0] = fromPager;
    event.message.data.data32[1] = XCB_CURRENT_TIME;
    xcb_send_event(m_connection.get(), 0, m_connection.root(),
                   XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                   event.wire);
    m_connection.flush();
}

bool X11Windows::hasKeyboard(xcb_window_t window)
{
    const auto focused = focus();
    return focused && m_connection.clientOf(*focused) == m_connection.clientOf(window);
}

} // namespace zelvane
