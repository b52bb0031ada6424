#pragma once

#include "desktop/HotKeyRegistrar.h"
#include "desktop/linux/X11Session.h"

#include <QHash>
#include <QObject>

#include <chrono>
#include <map>

namespace zelvane {

/// Global shortcuts by passive grabs, which cost nothing while no shortcut is pressed.
class X11HotKeyRegistrar final : public QObject, public HotKeyRegistrar
{
    Q_OBJECT

public:
    /// `session` must outlive this object.
    explicit X11HotKeyRegistrar(X11Session& session);
    ~X11HotKeyRegistrar() override;

    [[nodiscard]] bool installHandler(std::function<void(HotKeyID)> onPressed) override;
    [[nodiscard]] std::optional<Reference> registerHotKey(const KeyChord& chord,
                                                          HotKeyID id) override;
    void unregisterHotKey(Reference reference) override;

private:
    /// What a chord is on the present keyboard.
    struct Grab
    {
        xcb_keycode_t key = 0;
        quint16 modifiers = 0;
        QList<quint16> locks;

        friend bool operator==(const Grab&, const Grab&) = default;
    };
    struct Registration
    {
        KeyChord chord;
        HotKeyID id;
        /// None while the keyboard has no such key or another program holds the chord.
        std::optional<Grab> grab;
    };
    struct LastSeen
    {
        std::chrono::steady_clock::time_point at;
        xcb_timestamp_t releasedAt = 0;
        bool isDown = false;
    };

    [[nodiscard]] std::optional<Grab> grabFor(const KeyChord& chord);
    [[nodiscard]] bool isTaken(const Grab& grab) const;
    [[nodiscard]] bool place(const Grab& grab);
    void lift(const Grab& grab);
    void followKeyboard();

    void handleKey(const xcb_key_press_event_t& event);
    [[nodiscard]] bool isAutoRepeat(const xcb_key_press_event_t& event);
    void deliver(Reference reference);

    X11Session& m_session;
    std::function<void(HotKeyID)> m_onPressed;
    Reference m_nextReference = 1;
    std::map<Reference, Registration> m_registrations;
    QHash<xcb_keycode_t, LastSeen> m_keys;
};

} // namespace zelvane
