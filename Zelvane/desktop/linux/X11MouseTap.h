#pragma once

#include "desktop/MouseTap.h"
#include "desktop/linux/X11Session.h"

#include <QObject>

#include <optional>

namespace zelvane {

/// Alt + right click by passive grabs on all root windows, which cost nothing until it is clicked.
/// All other clicks go their way without passing through this program.
class X11MouseTap final : public QObject, public MouseTap
{
    Q_OBJECT

public:
    /// `session` tells of the keyboard and must outlive the tap.
    ///
    /// `grabs` is the connection over which the menu takes the pointer, so that the server hands
    /// the pointer from the click to the menu without letting the release through to the window
    /// below; null where the interface isn't on X11, and then the tap is refused. Its events must
    /// be handed to `handleEvent`.
    X11MouseTap(X11Session& session, xcb_connection_t* grabs);
    ~X11MouseTap() override;

    [[nodiscard]] bool create(Place place, Handler handler) override;
    [[nodiscard]] bool enable() override;
    void remove() override;
    [[nodiscard]] QString refusal() const override { return m_refusal; }

    /// True if the event belongs to the tap, and to nobody else.
    bool handleEvent(const xcb_generic_event_t& event);

private:
    /// The modifiers for which the button is taken.
    struct Grab
    {
        quint16 option = 0;
        QList<quint16> locks;

        friend bool operator==(const Grab&, const Grab&) = default;
    };

    /// A press or release of the right button that a grab has brought.
    struct Click
    {
        bool isPress = false;
        quint32 modifiers = 0;
        QPoint location;
    };

    [[nodiscard]] std::optional<Grab> wantedGrab();
    [[nodiscard]] bool place();
    void lift();
    [[nodiscard]] bool claim(const Grab& grab);
    [[nodiscard]] bool grabDevices(const Grab& grab);
    [[nodiscard]] std::optional<Click> clickFrom(const xcb_generic_event_t& event) const;
    void followKeyboard();
    void tellOfLoss();
    [[nodiscard]] quint32 flagsOf(quint32 modifiers);
    [[nodiscard]] bool isRoot(xcb_window_t window) const { return m_roots.contains(window); }

    X11Session& m_session;
    xcb_connection_t* m_grabs;
    QList<xcb_window_t> m_roots;
    /// The number of XInput 2 in the connection's events.
    quint8 m_inputExtension = 0;
    Handler m_handler;
    std::optional<Grab> m_grab;
    QString m_refusal;
};

} // namespace zelvane
