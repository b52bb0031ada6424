#pragma once

#include "desktop/linux/XcbConnection.h"

#include <QObject>
#include <QSocketNotifier>

#include <chrono>
#include <deque>
#include <functional>

namespace zelvane {

/// Hands the events of a connection to a function, from the event loop of the thread that made this
/// object. A lost server is told once and watched no longer.
class XcbEvents final : public QObject
{
    Q_OBJECT

public:
    using Handler = std::function<void(const xcb_generic_event_t&)>;

    /// `connection` must outlive this object.
    XcbEvents(XcbConnection& connection, Handler handler, std::function<void()> onLost);

    /// Handles the events that are there without waiting for more.
    void drain();

    /// Blocks until an event matches, and keeps that one from the handler; the others are handled
    /// later, in their order. Null if none comes in time or the server is lost.
    [[nodiscard]] XcbOwned<xcb_generic_event_t>
    waitFor(const std::function<bool(const xcb_generic_event_t&)>& matches,
            std::chrono::milliseconds limit);

private:
    [[nodiscard]] XcbOwned<xcb_generic_event_t> next();
    void noticeLoss();

    XcbConnection& m_connection;
    Handler m_handler;
    std::function<void()> m_onLost;
    QSocketNotifier m_notifier;
    std::deque<XcbOwned<xcb_generic_event_t>> m_setAside;
    bool m_isDraining = false;
    bool m_lost = false;
};

/// The kind of an event, without the bit that marks it as sent by another program.
[[nodiscard]] inline quint8 eventKind(const xcb_generic_event_t& event)
{
    return event.response_type & 0x7f;
}

/// The event as what its kind says that it is.
template <typename T>
[[nodiscard]] const T& eventAs(const xcb_generic_event_t& event)
{
    return reinterpret_cast<const T&>(event);
}

} // namespace zelvane
