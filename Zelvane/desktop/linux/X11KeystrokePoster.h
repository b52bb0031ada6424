#pragma once

#include "desktop/KeystrokePoster.h"
#include "desktop/linux/ClipboardExchange.h"
#include "desktop/linux/X11Session.h"
#include "desktop/linux/X11Windows.h"
#include "foundation/Clock.h"

#include <QObject>

#include <optional>

namespace zelvane {

/// Presses copy and paste by the extension XTEST, in the window where the copy was made.
class X11KeystrokePoster final : public QObject, public KeystrokePoster
{
    Q_OBJECT

public:
    /// How long the user may hold the key of a hotkey before it is released for them.
    static constexpr std::chrono::milliseconds hotKeyLimit{2000};
    /// How long a window may take to come back to the front.
    static constexpr std::chrono::milliseconds activationLimit{300};

    /// All must outlive this object.
    X11KeystrokePoster(X11Session& session, ClipboardExchange& exchange, Clock& clock);

    [[nodiscard]] QCoro::Task<PostResult> postCommandKey(CommandKey key) override;

private:
    /// The keys to hold and to press for a command.
    struct Stroke
    {
        xcb_keycode_t modifier;
        xcb_keycode_t key;
    };

    /// Waits until `condition` holds. Yields whether it did within the limit; false as well if this
    /// object went in the meantime.
    [[nodiscard]] QCoro::Task<bool> poll(std::function<bool()> condition,
                                         std::chrono::milliseconds limit);
    [[nodiscard]] QCoro::Task<bool> bringTargetToFront();
    [[nodiscard]] bool targetIsInFront();

    [[nodiscard]] bool hotKeyIsDown();
    void releaseModifiers();
    void giveKeyboardBack();
    void press(CommandKey key);
    [[nodiscard]] Stroke strokeFor(CommandKey key);
    void fake(quint8 kind, xcb_keycode_t key);

    X11Session& m_session;
    ClipboardExchange& m_exchange;
    Clock& m_clock;
    X11Windows m_windows;
    /// The window in which the last copy was made.
    std::optional<xcb_window_t> m_target;
};

} // namespace zelvane
