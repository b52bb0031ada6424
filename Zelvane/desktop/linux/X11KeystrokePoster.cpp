#include "desktop/linux/X11KeystrokePoster.h"

#include <QPointer>

#include <xcb/xtest.h>

namespace zelvane {

namespace {

using std::chrono::milliseconds;

constexpr milliseconds pollInterval{5};

// Where the keys sit with the evdev rules, for a keyboard that bears none of the letters.
constexpr xcb_keycode_t placeOfC = 54;
constexpr xcb_keycode_t placeOfV = 55;
constexpr xcb_keycode_t placeOfControl = 37;

} // namespace

X11KeystrokePoster::X11KeystrokePoster(X11Session& session, ClipboardExchange& exchange,
                                       Clock& clock)
    : m_session(session)
    , m_exchange(exchange)
    , m_clock(clock)
    , m_windows(session.connection())
{
}

QCoro::Task<PostResult> X11KeystrokePoster::postCommandKey(CommandKey key)
{
    const QPointer<X11KeystrokePoster> self(this);
    // At once, while the hotkey's key is down: until then the keyboard is ours, and the program in
    // front doesn't see the modifiers go up, which some take for a wish to open their menu.
    releaseModifiers();
    // A key that is still down would go on typing into the document.
    co_await poll([this] { return !hotKeyIsDown(); }, hotKeyLimit);
    if (!self) {
        co_return PostResult::targetGone;
    }
    co_await m_exchange.settled(m_clock);
    if (!self) {
        co_return PostResult::targetGone;
    }
    if (key == CommandKey::copy) {
        m_target = m_windows.active();
        m_exchange.copyPosted();
    } else {
        const bool isInFront = co_await bringTargetToFront();
        if (!self || !isInFront) {
            co_return PostResult::targetGone;
        }
        m_exchange.pastePosted(m_target);
    }
    giveKeyboardBack();
    press(key);
    co_return m_session.isLost() ? PostResult::targetGone : PostResult::posted;
}

QCoro::Task<bool> X11KeystrokePoster::poll(std::function<bool()> condition, milliseconds limit)
{
    const QPointer<X11KeystrokePoster> self(this);
    Clock& clock = m_clock;
    const auto end = clock.monotonicNow() + limit;
    while (self && !condition()) {
        if (m_session.isLost() || clock.monotonicNow() >= end) {
            co_return false;
        }
        co_await clock.sleep(pollInterval);
    }
    co_return !self.isNull();
}

bool X11KeystrokePoster::targetIsInFront()
{
    return m_windows.active() == m_target && m_windows.hasKeyboard(*m_target);
}

QCoro::Task<bool> X11KeystrokePoster::bringTargetToFront()
{
    const QPointer<X11KeystrokePoster> self(this);
    if (!m_target || targetIsInFront()) {
        co_return !m_session.isLost();
    }
    if (!m_windows.exists(*m_target)) {
        co_return false;
    }
    m_windows.activate(*m_target);
    if (co_await poll([this] { return targetIsInFront(); }, activationLimit)) {
        co_return true;
    }
    // A window in front may leave the keyboard to one that another program has put into it.
    co_return self&& m_windows.active() == m_target;
}

bool X11KeystrokePoster::hotKeyIsDown()
{
    const auto key = m_session.heldHotKey();
    return key && m_session.keyboard().keysDown().contains(*key);
}

void X11KeystrokePoster::releaseModifiers()
{
    const Keyboard& keyboard = m_session.keyboard();
    for (const xcb_keycode_t key : keyboard.keysDown()) {
        if (keyboard.isHeldModifier(key)) {
            fake(XCB_KEY_RELEASE, key);
        }
    }
    m_session.connection().sync();
}

void X11KeystrokePoster::giveKeyboardBack()
{
    releaseModifiers();
    if (hotKeyIsDown()) {
        fake(XCB_KEY_RELEASE, *m_session.heldHotKey());
    }
    m_session.setHeldHotKey(std::nullopt);
    xcb_ungrab_keyboard(m_session.connection().get(), XCB_CURRENT_TIME);
}

void X11KeystrokePoster::press(CommandKey key)
{
    const Stroke stroke = strokeFor(key);
    fake(XCB_KEY_PRESS, stroke.modifier);
    fake(XCB_KEY_PRESS, stroke.key);
    fake(XCB_KEY_RELEASE, stroke.key);
    fake(XCB_KEY_RELEASE, stroke.modifier);
    m_session.connection().sync();
}

X11KeystrokePoster::Stroke X11KeystrokePoster::strokeFor(CommandKey key)
{
    const Keyboard& keyboard = m_session.keyboard();
    const bool isCopy = key == CommandKey::copy;
    const xcb_keycode_t control = keyboard.controlKey().value_or(placeOfControl);
    if (const auto letter = keyboard.keyForSymbol(isCopy ? XKB_KEY_c : XKB_KEY_v)) {
        return {control, *letter};
    }
    // Without Latin letters the older pair of shortcuts means the same to nearly every program.
    const auto insert = keyboard.keyForSymbol(XKB_KEY_Insert);
    if (insert && isCopy) {
        return {control, *insert};
    }
    if (const auto shift = keyboard.shiftKey(); insert && shift) {
        return {*shift, *insert};
    }
    return {control, isCopy ? placeOfC : placeOfV};
}

void X11KeystrokePoster::fake(quint8 kind, xcb_keycode_t key)
{
    xcb_test_fake_input(m_session.connection().get(), kind, key, XCB_CURRENT_TIME,
                        m_session.connection().root(), 0, 0, 0);
}

} // namespace zelvane
