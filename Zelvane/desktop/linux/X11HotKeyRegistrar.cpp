#include "desktop/linux/X11HotKeyRegistrar.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace zelvane {

namespace {

using std::chrono::steady_clock;

/// Longer than any wait before or between the repeated presses of a held key. A press after it is
/// a new one whose release went to another program.
constexpr std::chrono::seconds longestRepeatPause{1};

constexpr quint16 modifierBits = 0xff;

} // namespace

X11HotKeyRegistrar::X11HotKeyRegistrar(X11Session& session)
    : m_session(session)
{
    connect(&m_session, &X11Session::keyEvent, this, &X11HotKeyRegistrar::handleKey);
    connect(&m_session, &X11Session::keyboardChanged, this, &X11HotKeyRegistrar::followKeyboard);
}

X11HotKeyRegistrar::~X11HotKeyRegistrar()
{
    for (const auto& [reference, registration] : m_registrations) {
        if (registration.grab) {
            lift(*registration.grab);
        }
    }
}

bool X11HotKeyRegistrar::installHandler(std::function<void(HotKeyID)> onPressed)
{
    m_onPressed = std::move(onPressed);
    return !m_session.isLost();
}

std::optional<HotKeyRegistrar::Reference> X11HotKeyRegistrar::registerHotKey(const KeyChord& chord,
                                                                             HotKeyID id)
{
    const std::optional<Grab> grab = grabFor(chord);
    if (!grab || isTaken(*grab) || !place(*grab)) {
        return std::nullopt;
    }
    const Reference reference = m_nextReference++;
    m_registrations.emplace(reference, Registration{chord, id, grab});
    return reference;
}

void X11HotKeyRegistrar::unregisterHotKey(Reference reference)
{
    const auto node = m_registrations.extract(reference);
    if (!node.empty() && node.mapped().grab) {
        lift(*node.mapped().grab);
    }
}

std::optional<X11HotKeyRegistrar::Grab> X11HotKeyRegistrar::grabFor(const KeyChord& chord)
{
    const Keyboard& keyboard = m_session.keyboard();
    const auto key = keyboard.keyForVirtualCode(chord.keyCode);
    const auto modifiers = keyboard.modifierMask(chord.carbonModifiers);
    if (!key || !modifiers) {
        return std::nullopt;
    }
    return Grab{*key, *modifiers, keyboard.lockCombinations()};
}

bool X11HotKeyRegistrar::isTaken(const Grab& grab) const
{
    // The server refuses a chord to other programs only, and gives it to us any number of times.
    return std::ranges::any_of(m_registrations, [&](const auto& entry) {
        const auto& other = entry.second.grab;
        return other && other->key == grab.key && other->modifiers == grab.modifiers;
    });
}

bool X11HotKeyRegistrar::place(const Grab& grab)
{
    XcbConnection& connection = m_session.connection();
    std::vector<xcb_void_cookie_t> requests;
    for (const quint16 locks : grab.locks) {
        requests.push_back(xcb_grab_key_checked(connection.get(), 0, connection.root(),
                                                quint16(grab.modifiers | locks), grab.key,
                                                XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC));
    }
    bool refused = connection.isLost();
    for (const xcb_void_cookie_t request : requests) {
        const XcbOwned<xcb_generic_error_t> error(xcb_request_check(connection.get(), request));
        refused = refused || error;
    }
    if (refused) {
        lift(grab);
    }
    return !refused;
}

void X11HotKeyRegistrar::lift(const Grab& grab)
{
    XcbConnection& connection = m_session.connection();
    for (const quint16 locks : grab.locks) {
        xcb_ungrab_key(connection.get(), grab.key, connection.root(),
                       quint16(grab.modifiers | locks));
    }
    connection.flush();
}

void X11HotKeyRegistrar::followKeyboard()
{
    std::vector<std::pair<Registration*, std::optional<Grab>>> moved;
    for (auto& [reference, registration] : m_registrations) {
        auto grab = grabFor(registration.chord);
        if (grab != registration.grab || !grab) {
            moved.emplace_back(&registration, std::move(grab));
        }
    }
    // All old places are left before new ones are taken: two chords may have changed keys.
    for (const auto& [registration, grab] : moved) {
        if (registration->grab) {
            lift(*std::exchange(registration->grab, std::nullopt));
        }
    }
    for (const auto& [registration, grab] : moved) {
        if (grab && !isTaken(*grab) && place(*grab)) {
            registration->grab = grab;
        }
    }
}

void X11HotKeyRegistrar::handleKey(const xcb_key_press_event_t& event)
{
    const bool isPress =
        eventKind(reinterpret_cast<const xcb_generic_event_t&>(event)) == XCB_KEY_PRESS;
    if (!isPress) {
        m_keys[event.detail] = {steady_clock::now(), event.time, false};
        if (m_session.heldHotKey() == event.detail) {
            m_session.setHeldHotKey(std::nullopt);
        }
        return;
    }
    if (isAutoRepeat(event)) {
        return;
    }
    const auto modifiers = quint16(event.state & modifierBits & ~m_session.keyboard().lockMask());
    for (const auto& [reference, registration] : m_registrations) {
        const auto& grab = registration.grab;
        if (grab && grab->key == event.detail && grab->modifiers == modifiers) {
            m_session.setHeldHotKey(event.detail);
            deliver(reference);
            return;
        }
    }
}

bool X11HotKeyRegistrar::isAutoRepeat(const xcb_key_press_event_t& event)
{
    const LastSeen last = m_keys.value(event.detail);
    const auto now = steady_clock::now();
    m_keys[event.detail] = {now, 0, true};
    if (last.isDown) {
        return now - last.at < longestRepeatPause;
    }
    // A server that can't leave out the releases of repeated presses gives both the same time.
    return last.releasedAt != 0 && last.releasedAt == event.time;
}

void X11HotKeyRegistrar::deliver(Reference reference)
{
    // Later, from the event loop: the answer may register and unregister as it likes.
    QMetaObject::invokeMethod(
        this,
        [this, reference] {
            const auto registration = m_registrations.find(reference);
            if (registration != m_registrations.end() && m_onPressed) {
                const auto onPressed = m_onPressed;
                onPressed(registration->second.id);
            }
        },
        Qt::QueuedConnection);
}

} // namespace zelvane
