#include "desktop/linux/X11MouseTap.h"

#include "settings/KeyChord.h"
#include "settings/Localization.h"

#include <utility>
#include <vector>

#include <xcb/xinput.h>

namespace zelvane {

namespace {

constexpr xcb_button_t rightButton = XCB_BUTTON_INDEX_3;
constexpr xcb_input_device_id_t pointers = XCB_INPUT_DEVICE_ALL_MASTER;
constexpr quint32 deviceEvents =
    XCB_INPUT_XI_EVENT_MASK_BUTTON_PRESS | XCB_INPUT_XI_EVENT_MASK_BUTTON_RELEASE;
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

/// The modifiers of a grab with each combination of the locks.
QList<quint32> combinationsOf(quint16 option, const QList<quint16>& locks)
{
    QList<quint32> combinations;
    for (const quint16 combination : locks) {
        combinations += quint32(option | combination);
    }
    return combinations;
}

QPoint wholePixels(xcb_input_fp1616_t x, xcb_input_fp1616_t y)
{
    return {x >> 16, y >> 16};
}

} // namespace

X11MouseTap::X11MouseTap(X11Session& session, xcb_connection_t* grabs)
    : m_session(session)
    , m_grabs(grabs)
    , m_roots(rootsOf(grabs))
{
    if (!m_roots.isEmpty()) {
        const auto* extension = xcb_get_extension_data(grabs, &xcb_input_id);
        m_inputExtension = extension && extension->present ? extension->major_opcode : 0;
    }
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
    const auto click = clickFrom(event);
    if (!click) {
        return false;
    }
    if (m_handler) {
        // Whatever the verdict is, the grab has already kept the click from the window below.
        (void)m_handler(
            {click->isPress ? TapEvent::Type::rightMouseDown : TapEvent::Type::rightMouseUp,
             flagsOf(click->modifiers), click->location});
    }
    return true;
}

std::optional<X11MouseTap::Click> X11MouseTap::clickFrom(const xcb_generic_event_t& event) const
{
    const quint8 kind = eventKind(event);
    if (kind == XCB_BUTTON_PRESS || kind == XCB_BUTTON_RELEASE) {
        const auto& button = eventAs<xcb_button_press_event_t>(event);
        if (button.detail == rightButton && isRoot(button.event)) {
            return Click{kind == XCB_BUTTON_PRESS, button.state,
                         QPoint(button.root_x, button.root_y)};
        }
    }
    if (kind != XCB_GE_GENERIC || m_inputExtension == 0) {
        return std::nullopt;
    }
    const auto& generic = eventAs<xcb_ge_generic_event_t>(event);
    if (generic.extension != m_inputExtension || (generic.event_type != XCB_INPUT_BUTTON_PRESS &&
                                                  generic.event_type != XCB_INPUT_BUTTON_RELEASE)) {
        return std::nullopt;
    }
    const auto& button = eventAs<xcb_input_button_press_event_t>(event);
    if (button.detail != rightButton || !isRoot(button.event)) {
        return std::nullopt;
    }
    return Click{generic.event_type == XCB_INPUT_BUTTON_PRESS, button.mods.effective,
                 wholePixels(button.root_x, button.root_y)};
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
    if (!grab || m_roots.isEmpty() || m_inputExtension == 0) {
        return false;
    }
    m_grab = grab;
    // The newer of two grabs of one program goes first: that of the devices, whose clicks the menu
    // can take over. The other one tells whether the click is free, and keeps it from being taken.
    if (!claim(*grab) || !grabDevices(*grab)) {
        lift();
        return false;
    }
    return true;
}

bool X11MouseTap::claim(const Grab& grab)
{
    std::vector<xcb_void_cookie_t> requests;
    for (const xcb_window_t root : std::as_const(m_roots)) {
        for (const quint32 modifiers : combinationsOf(grab.option, grab.locks)) {
            requests.push_back(xcb_grab_button_checked(
                m_grabs, 0, root, buttonEvents, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC,
                XCB_WINDOW_NONE, XCB_CURSOR_NONE, rightButton, quint16(modifiers)));
        }
    }
    bool refused = xcb_connection_has_error(m_grabs) != 0;
    for (const xcb_void_cookie_t request : requests) {
        const XcbOwned<xcb_generic_error_t> error(xcb_request_check(m_grabs, request));
        if (error && error->error_code == XCB_ACCESS) {
            m_refusal =
                localizedText(LOCALIZATION_KEY("Alt + right click belongs to another program"));
        }
        refused = refused || error;
    }
    return !refused;
}

bool X11MouseTap::grabDevices(const Grab& grab)
{
    const QList<quint32> modifiers = combinationsOf(grab.option, grab.locks);
    bool refused = false;
    for (const xcb_window_t root : std::as_const(m_roots)) {
        const auto request = xcb_input_xi_passive_grab_device(
            m_grabs, XCB_CURRENT_TIME, root, XCB_CURSOR_NONE, rightButton, pointers,
            quint16(modifiers.size()), 1, XCB_INPUT_GRAB_TYPE_BUTTON, XCB_INPUT_GRAB_MODE_22_ASYNC,
            XCB_INPUT_GRAB_MODE_22_ASYNC, XCB_INPUT_GRAB_OWNER_NO_OWNER, &deviceEvents,
            modifiers.constData());
        const XcbOwned<xcb_input_xi_passive_grab_device_reply_t> reply(
            xcb_input_xi_passive_grab_device_reply(m_grabs, request, nullptr));
        if (reply && reply->num_modifiers > 0) {
            m_refusal =
                localizedText(LOCALIZATION_KEY("Alt + right click belongs to another program"));
        }
        refused = refused || !reply || reply->num_modifiers > 0;
    }
    return !refused;
}

void X11MouseTap::lift()
{
    const auto grab = std::exchange(m_grab, std::nullopt);
    if (!grab) {
        return;
    }
    const QList<quint32> modifiers = combinationsOf(grab->option, grab->locks);
    for (const xcb_window_t root : std::as_const(m_roots)) {
        for (const quint32 combination : modifiers) {
            xcb_ungrab_button(m_grabs, rightButton, root, quint16(combination));
        }
        xcb_input_xi_passive_ungrab_device(m_grabs, root, rightButton, pointers,
                                           quint16(modifiers.size()), XCB_INPUT_GRAB_TYPE_BUTTON,
                                           modifiers.constData());
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

quint32 X11MouseTap::flagsOf(quint32 modifiers)
{
    const Keyboard& keyboard = m_session.keyboard();
    const std::pair<quint32, quint32> table[] = {{KeyChord::option, TapEvent::optionFlag},
                                                 {KeyChord::control, TapEvent::controlFlag},
                                                 {KeyChord::shift, TapEvent::shiftFlag},
                                                 {KeyChord::command, TapEvent::commandFlag}};
    quint32 flags = 0;
    for (const auto& [chordBit, flag] : table) {
        if ((modifiers & keyboard.modifierMask(chordBit).value_or(0)) != 0) {
            flags |= flag;
        }
    }
    return flags;
}

} // namespace zelvane
