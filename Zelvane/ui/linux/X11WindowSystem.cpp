#include "ui/linux/X11WindowSystem.h"

#include <QGuiApplication>

#include <xcb/xfixes.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace zelvane {

namespace {

/// The part of a window that takes clicks, in the numbering of the Shape extension.
constexpr xcb_shape_kind_t inputShape = 2;

/// Who asks for a window to be activated: a pager, that is to say the user.
constexpr uint32_t sourceUser = 2;

constexpr uint32_t stateRemove = 0;
constexpr uint32_t stateAdd = 1;

struct Free
{
    void operator()(void* reply) const { std::free(reply); }
};

std::vector<uint32_t> property32(const XcbSession& session, xcb_window_t window, xcb_atom_t name,
                                 xcb_atom_t type)
{
    const std::unique_ptr<xcb_get_property_reply_t, Free> reply(xcb_get_property_reply(
        session.connection, xcb_get_property(session.connection, 0, window, name, type, 0, 1024),
        nullptr));
    if (!reply || reply->format != 32) {
        return {};
    }
    const auto* values = static_cast<const uint32_t*>(xcb_get_property_value(reply.get()));
    return {values, values + xcb_get_property_value_length(reply.get()) / 4};
}

} // namespace

X11WindowSystem::X11WindowSystem(const XcbSession& session)
    : m_session(session)
    , m_activeWindow(internAtom(session, "_NET_ACTIVE_WINDOW"))
    , m_frameExtents(internAtom(session, "_GTK_FRAME_EXTENTS"))
    , m_state(internAtom(session, "_NET_WM_STATE"))
    , m_skipStates{internAtom(session, "_NET_WM_STATE_SKIP_TASKBAR"),
                   internAtom(session, "_NET_WM_STATE_SKIP_PAGER")}
{
    // The extension answers no request before it has been asked for its version.
    std::free(xcb_xfixes_query_version_reply(
        session.connection, xcb_xfixes_query_version(session.connection, 5, 0), nullptr));
}

void X11WindowSystem::describe(QWindow& window, const PanelHints& hints)
{
    skipTaskbar(window, hints.skipsTaskbar);
    setShadow(window, hints.shadow);
    xcb_flush(m_session.connection);
}

void X11WindowSystem::setSkipsTaskbar(QWindow& window, bool skips)
{
    skipTaskbar(window, skips);
    xcb_flush(m_session.connection);
}

void X11WindowSystem::skipTaskbar(const QWindow& window, bool skips)
{
    const auto id = xcb_window_t(window.winId());
    if (window.isVisible()) {
        // The window manager owns the states of a window that shows, and takes requests.
        askRoot(id, m_state,
                {skips ? stateAdd : stateRemove, m_skipStates[0], m_skipStates[1], 1, 0});
        return;
    }
    std::vector<uint32_t> states = property32(m_session, id, m_state, XCB_ATOM_ATOM);
    for (const xcb_atom_t skip : m_skipStates) {
        std::erase(states, skip);
        if (skips) {
            states.push_back(skip);
        }
    }
    xcb_change_property(m_session.connection, XCB_PROP_MODE_REPLACE, id, m_state, XCB_ATOM_ATOM, 32,
                        uint32_t(states.size()), states.data());
}

void X11WindowSystem::setShadow(const QWindow& window, const QMargins& shadow)
{
    const auto id = xcb_window_t(window.winId());
    const double scale = window.devicePixelRatio();
    const auto pixels = [scale](int length) { return int(length * scale + 0.5); };
    const std::array<uint32_t, 4> extents{
        uint32_t(pixels(shadow.left())), uint32_t(pixels(shadow.right())),
        uint32_t(pixels(shadow.top())), uint32_t(pixels(shadow.bottom()))};
    xcb_change_property(m_session.connection, XCB_PROP_MODE_REPLACE, id, m_frameExtents,
                        XCB_ATOM_CARDINAL, 32, uint32_t(extents.size()), extents.data());

    // A click on the shadow belongs to the window that it falls on.
    xcb_connection_t* connection = m_session.connection;
    if (shadow.isNull()) {
        xcb_xfixes_set_window_shape_region(connection, id, inputShape, 0, 0, XCB_NONE);
        return;
    }
    const xcb_rectangle_t panel{
        int16_t(pixels(shadow.left())), int16_t(pixels(shadow.top())),
        uint16_t(std::max(1, pixels(window.width() - shadow.left() - shadow.right()))),
        uint16_t(std::max(1, pixels(window.height() - shadow.top() - shadow.bottom())))};
    const xcb_xfixes_region_t region = xcb_generate_id(connection);
    xcb_xfixes_create_region(connection, region, 1, &panel);
    xcb_xfixes_set_window_shape_region(connection, id, inputShape, 0, 0, region);
    xcb_xfixes_destroy_region(connection, region);
}

void X11WindowSystem::activate(QWindow& window)
{
    window.raise();
    requestActivation(xcb_window_t(window.winId()));
}

WindowSystem::Window X11WindowSystem::foreignActiveWindow() const
{
    const std::vector<uint32_t> active =
        property32(m_session, m_session.screen->root, m_activeWindow, XCB_ATOM_WINDOW);
    if (active.empty()) {
        return 0;
    }
    const auto isActive = [&](const QWindow* own) {
        return own->handle() && own->winId() == active[0];
    };
    return std::ranges::any_of(QGuiApplication::allWindows(), isActive) ? 0 : active[0];
}

void X11WindowSystem::activateForeign(Window window)
{
    requestActivation(xcb_window_t(window));
}

void X11WindowSystem::requestActivation(xcb_window_t window)
{
    askRoot(window, m_activeWindow, {sourceUser, XCB_CURRENT_TIME, 0, 0, 0});
    xcb_flush(m_session.connection);
}

void X11WindowSystem::askRoot(xcb_window_t window, xcb_atom_t message,
                              const std::array<uint32_t, 5>& data)
{
    xcb_client_message_event_t event{};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = window;
    event.type = message;
    std::ranges::copy(data, event.data.data32);
    xcb_send_event(m_session.connection, 0, m_session.screen->root,
                   XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                   reinterpret_cast<const char*>(&event));
}

std::unique_ptr<WindowSystem> sessionWindowSystem()
{
    if (const auto session = currentXcbSession()) {
        return std::make_unique<X11WindowSystem>(*session);
    }
    return std::make_unique<PlainWindowSystem>();
}

} // namespace zelvane
