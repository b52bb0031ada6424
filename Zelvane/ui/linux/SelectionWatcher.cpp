#include "ui/linux/SelectionWatcher.h"

#include <QGuiApplication>

#include <xcb/xfixes.h>

#include <cstdlib>

namespace zelvane {

namespace {

constexpr uint32_t ownerChanges = XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER |
                                  XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_WINDOW_DESTROY |
                                  XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_CLIENT_CLOSE;

/// A window that never shows, to receive the events.
xcb_window_t makeHiddenWindow(const XcbSession& session)
{
    const xcb_window_t window = xcb_generate_id(session.connection);
    xcb_create_window(session.connection, XCB_COPY_FROM_PARENT, window, session.screen->root, 0, 0,
                      1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
    return window;
}

} // namespace

SelectionWatcher::SelectionWatcher(const XcbSession& session, const QByteArray& selection,
                                   std::function<void(bool)> onChange)
    : m_session(session)
    , m_selection(internAtom(session, selection))
    , m_window(makeHiddenWindow(session))
    , m_onChange(std::move(onChange))
{
    xcb_connection_t* connection = session.connection;
    std::free(xcb_xfixes_query_version_reply(connection, xcb_xfixes_query_version(connection, 5, 0),
                                             nullptr));
    const auto* extension = xcb_get_extension_data(connection, &xcb_xfixes_id);
    if (extension && extension->present) {
        m_eventType = uint8_t(extension->first_event + XCB_XFIXES_SELECTION_NOTIFY);
        xcb_xfixes_select_selection_input(connection, m_window, m_selection, ownerChanges);
        xcb_flush(connection);
        qApp->installNativeEventFilter(this);
    }
    m_onChange(selectionOwner(session, m_selection) != XCB_WINDOW_NONE);
}

SelectionWatcher::~SelectionWatcher()
{
    if (qApp) {
        qApp->removeNativeEventFilter(this);
        xcb_destroy_window(m_session.connection, m_window);
        xcb_flush(m_session.connection);
    }
}

bool SelectionWatcher::nativeEventFilter(const QByteArray& eventType, void* message, qintptr*)
{
    if (eventType != "xcb_generic_event_t") {
        return false;
    }
    const auto* event = static_cast<const xcb_generic_event_t*>(message);
    if ((event->response_type & 0x7f) != m_eventType) {
        return false;
    }
    const auto* change = static_cast<const xcb_xfixes_selection_notify_event_t*>(message);
    if (change->window == m_window && change->selection == m_selection) {
        m_onChange(change->owner != XCB_WINDOW_NONE);
    }
    return false;
}

} // namespace zelvane
