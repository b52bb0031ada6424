#pragma once

#include "desktop/linux/Keyboard.h"
#include "desktop/linux/XcbConnection.h"
#include "desktop/linux/XcbEvents.h"

#include <QObject>

#include <expected>
#include <memory>
#include <optional>

namespace zelvane {

/// The X server as the adapters for keys share it: one connection, its events and the keyboard.
///
/// One connection because the server gives the keyboard to the program that registered the pressed
/// hotkey, and only over the same connection can it be given back. Main thread.
class X11Session final : public QObject
{
    Q_OBJECT

public:
    /// Connects to `display`, or to $DISPLAY if it is empty. The error is a sentence for the user.
    [[nodiscard]] static std::expected<std::unique_ptr<X11Session>, QString>
    open(const QByteArray& display = {});

    [[nodiscard]] XcbConnection& connection() { return *m_connection; }
    [[nodiscard]] bool isLost() const { return m_connection->isLost(); }

    /// The keyboard as it is now.
    [[nodiscard]] const Keyboard& keyboard();

    /// The key of a hotkey that the user has pressed and not yet released.
    [[nodiscard]] std::optional<xcb_keycode_t> heldHotKey() const { return m_heldHotKey; }
    void setHeldHotKey(std::optional<xcb_keycode_t> key) { m_heldHotKey = key; }

Q_SIGNALS:
    /// A key of a grab was pressed or released.
    void keyEvent(const xcb_key_press_event_t& event);
    /// Keys, layouts or modifiers have changed, or another layout is in use.
    void keyboardChanged();
    /// The server has gone; nothing comes any more.
    void lost();

private:
    explicit X11Session(std::unique_ptr<XcbConnection> connection);
    void watchKeyboard();
    void handle(const xcb_generic_event_t& event);
    void handleXkb(const xcb_generic_event_t& event);
    void noteMapChange();
    void reloadKeyboard();

    std::unique_ptr<XcbConnection> m_connection;
    Keyboard m_keyboard;
    XcbEvents m_events;
    std::optional<xcb_keycode_t> m_heldHotKey;
    bool m_mapIsStale = false;
};

} // namespace zelvane
