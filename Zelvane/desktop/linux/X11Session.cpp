#include "desktop/linux/X11Session.h"

#include "desktop/linux/XkbProtocol.h"

#include <xcb/xtest.h>

namespace zelvane {

std::expected<std::unique_ptr<X11Session>, QString> X11Session::open(const QByteArray& display)
{
    auto connection =
        XcbConnection::open(display, {XExtension::xtest, XExtension::xinput2, XExtension::xkb});
    if (!connection) {
        return std::unexpected(connection.error());
    }
    return std::unique_ptr<X11Session>(new X11Session(std::move(*connection)));
}

X11Session::X11Session(std::unique_ptr<XcbConnection> connection)
    : m_connection(std::move(connection))
    , m_keyboard(*m_connection)
    , m_events(
          *m_connection, [this](const xcb_generic_event_t& event) { handle(event); },
          [this] { Q_EMIT lost(); })
{
    watchKeyboard();
    // A program that holds the server for a moment must not swallow our copy and paste.
    xcb_test_grab_control(m_connection->get(), 1);
    m_connection->flush();
}

const Keyboard& X11Session::keyboard()
{
    m_events.drain();
    reloadKeyboard();
    return m_keyboard;
}

void X11Session::watchKeyboard()
{
    constexpr quint16 mapParts =
        XCB_XKB_MAP_PART_KEY_TYPES | XCB_XKB_MAP_PART_KEY_SYMS | XCB_XKB_MAP_PART_MODIFIER_MAP;
    // Of the state only the layout: everything else would wake this program at each key press.
    xcb_xkb_select_events_details_t details{};
    details.affectState = XCB_XKB_STATE_PART_GROUP_STATE;
    details.stateDetails = XCB_XKB_STATE_PART_GROUP_STATE;
    details.affectNewKeyboard = XCB_XKB_NKN_DETAIL_KEYCODES | XCB_XKB_NKN_DETAIL_DEVICE_ID;
    details.newKeyboardDetails = details.affectNewKeyboard;
    xcb_xkb_select_events_aux(m_connection->get(), XCB_XKB_ID_USE_CORE_KBD,
                              XCB_XKB_EVENT_TYPE_NEW_KEYBOARD_NOTIFY |
                                  XCB_XKB_EVENT_TYPE_MAP_NOTIFY | XCB_XKB_EVENT_TYPE_STATE_NOTIFY,
                              0, 0, mapParts, mapParts, &details);

    // A key held down then gives presses without releases between them.
    constexpr quint32 detectable = XCB_XKB_PER_CLIENT_FLAG_DETECTABLE_AUTO_REPEAT;
    const auto cookie = xcb_xkb_per_client_flags(m_connection->get(), XCB_XKB_ID_USE_CORE_KBD,
                                                 detectable, detectable, 0, 0, 0);
    const XcbOwned<xcb_xkb_per_client_flags_reply_t> reply(
        xcb_xkb_per_client_flags_reply(m_connection->get(), cookie, nullptr));
}

void X11Session::handle(const xcb_generic_event_t& event)
{
    const quint8 kind = eventKind(event);
    if (kind == XCB_KEY_PRESS || kind == XCB_KEY_RELEASE) {
        Q_EMIT keyEvent(eventAs<xcb_key_press_event_t>(event));
    } else if (kind == XCB_MAPPING_NOTIFY) {
        if (eventAs<xcb_mapping_notify_event_t>(event).request != XCB_MAPPING_POINTER) {
            noteMapChange();
        }
    } else if (kind == m_connection->firstEvent(XExtension::xkb)) {
        handleXkb(event);
    }
}

void X11Session::handleXkb(const xcb_generic_event_t& event)
{
    // All events of the extension share one number; their own kind follows in the next byte.
    switch (event.pad0) {
    case XCB_XKB_NEW_KEYBOARD_NOTIFY:
    case XCB_XKB_MAP_NOTIFY:
        noteMapChange();
        break;
    case XCB_XKB_STATE_NOTIFY:
        m_keyboard.setGroup(eventAs<xcb_xkb_state_notify_event_t>(event).group);
        Q_EMIT keyboardChanged();
        break;
    default:
        break;
    }
}

void X11Session::noteMapChange()
{
    if (m_mapIsStale) {
        return;
    }
    // One change of the layout comes as a row of events; the map is read once, after the last.
    m_mapIsStale = true;
    QMetaObject::invokeMethod(this, &X11Session::reloadKeyboard, Qt::QueuedConnection);
}

void X11Session::reloadKeyboard()
{
    if (!m_mapIsStale) {
        return;
    }
    m_mapIsStale = false;
    if (m_keyboard.reload()) {
        Q_EMIT keyboardChanged();
    }
}

} // namespace zelvane
