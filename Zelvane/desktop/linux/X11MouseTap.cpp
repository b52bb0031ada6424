#include "desktop/linux/X11MouseTap.h"

#include "settings/KeyChord.h"
#include "settings/Localization.h"

#include <utility>
#include <vector>

namespace zelvane {

namespace {

constexpr xcb_button_t rightButton = XCB_BUTTON_INDEX_3;
constexpr quint16 buttonEvents = XCB_EVENT_MASK_BUTTON_PRESS | XCB_EVENT_MASK_BUTTON_RELEASE;

QList<xcb_window_t> rootsOf(xcb_connection_t* connection)
{
    QList<xcb_window_t> roots;
    if (!connection || xcb_connection_has_error(connection) != 0) {
        return roots;
    }
    auto screens = xcb_setup_roots_iterator(xcb_get_setup(connection));
    for (; screens.rem > 0; xcb_screen_next(&screens)) {
        roots += screens.data->root;
    }
    return roots;
}

} // namespace

X11MouseTap::X11MouseTap(X11Session& session, xcb_connection_t* grabs)
    : m_session(session)
    , m_grabs(grabs)
    , m_roots(rootsOf(grabs))
{
    connect(&m_session, &X11Session::keyboardChanged, this, &X11MouseTap::followKeyboard);
    connect(&m_session, &X11Session::lost, this, &X11MouseTap::tellOfLoss);
}

X11MouseTap::~X11MouseTap()
{
    lift();
}

bool X11MouseTap::create(Place wanted, Handler handler)
{
    // A grab on the root windows comes before all windows; there is no other place to try.
    if (wanted != Place::hardware || m_session.isLost() || !place()) {
        return false;
    }
    m_handler = std::move(handler);
    return true;
}

bool X11MouseTap::enable()
{
    return m_handler && !m_session.isLost() && place();
}

void X11MouseTap::remove()
{
    lift();
    m_handler = {};
}

bool X11MouseTap::handleEvent(const xcb_generic_event_t& event)
{
    const quint8 kind = eventKind(event);
    if (kind != XCB_BUTTON_PRESS && kind != XCB_BUTTON_RELEASE) {
        return false;
    }
    const auto& button = eventAs<xcb_button_press_event_t>(event);
    if (button.detail != rightButton || !isRoot(button.event)) {
        return false;
    }
    if (m_handler) {
        // Whatever the verdict is, the grab has already kept the click from the window below.
        (void)m_handler({kind == XCB_BUTTON_PRESS ? TapEvent::Type::rightMouseDown
                                                  : TapEvent::Type::rightMouseUp,
                         flagsOf(button.state), QPoint(button.root_x, button.root_y)});
    }
    return true;
}

std::optional<X11MouseTap::Grab> X11MouseTap::wantedGrab()
{
    const Keyboard& keyboard = m_session.keyboard();
    const auto option = keyboard.modifierMask(KeyChord::option);
    if (!option || *option == 0) {
        return std::nullopt; // without a modifier every right click would be taken
    }
    return Grab{*option, keyboard.lockCombinations()};
}

bool X11MouseTap::place()
{
    const auto grab = wantedGrab();
    if (m_grab && m_grab == grab) {
        return true;
    }
    lift();
    m_refusal.clear();
    if (!grab || m_roots.isEmpty() || !request(*grab)) {
        return false;
    }
    m_grab = grab;
    return true;
}

bool X11MouseTap::request(const Grab& grab)
{
    std::vector<xcb_void_cookie_t> requests;
    for (const xcb_window_t root : std::as_const(m_roots)) {
        for (const quint16 locks : grab.locks) {
            requests.push_back(xcb_grab_button_checked(
                m_grabs, 0, root, buttonEvents, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC,
                XCB_WINDOW_NONE, XCB_CURSOR_NONE, rightButton, quint16(grab.option | locks)));
        }
    }
    bool refused = xcb_connection_has_error(m_grabs) != 0;
    for (const xcb_void_cookie_t cookie : requests) {
        const XcbOwned<xcb_generic_error_t> error(xcb_request_check(m_grabs, cookie));
        if (error && error->error_code == XCB_ACCESS) {
            m_refusal =
                localizedText(LOCALIZATION_KEY("Alt + right click belongs to another program"));
        }
        refused = refused || error;
    }
    if (refused) {
        m_grab = grab;
        lift();
    }
    return !refused;
}

void X11MouseTap::lift()
{
    const auto grab = std::exchange(m_grab, std::nullopt);
    if (!grab) {
        return;
    }
    for (const xcb_window_t root : std::as_const(m_roots)) {
        for (const quint16 locks : grab->locks) {
            xcb_ungrab_button(m_grabs, rightButton, root, quint16(grab->option | locks));
        }
    }
    xcb_flush(m_grabs);
}

void X11MouseTap::followKeyboard()
{
    // The locks, or Alt itself, may sit on other modifiers than before.
    if (m_handler && !place()) {
        tellOfLoss();
    }
}

void X11MouseTap::tellOfLoss()
{
    if (m_handler) {
        (void)m_handler({TapEvent::Type::disabledByUserInput, 0, {}});
    }
}

quint32 X11MouseTap::flagsOf(quint16 state)
{
    const Keyboard& keyboard = m_session.keyboard();
    const std::pair<quint32, quint32> table[] = {{KeyChord::option, TapEvent::optionFlag},
                                                 {KeyChord::control, TapEvent::controlFlag},
                                                 {KeyChord::shift, TapEvent::shiftFlag},
                                                 {KeyChord::command, TapEvent::commandFlag}};
    quint32 flags = 0;
    for (const auto& [chordBit, flag] : table) {
        if (state & keyboard.modifierMask(chordBit).value_or(0)) {
            flags |= flag;
        }
    }
    return flags;
}

} // namespace zelvane
