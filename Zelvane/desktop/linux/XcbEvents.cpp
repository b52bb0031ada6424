#include "desktop/linux/XcbEvents.h"

#include <QAbstractEventDispatcher>
#include <QDeadlineTimer>
#include <QScopedValueRollback>

#include <poll.h>

namespace zelvane {

XcbEvents::XcbEvents(XcbConnection& connection, Handler handler, std::function<void()> onLost)
    : m_connection(connection)
    , m_handler(std::move(handler))
    , m_onLost(std::move(onLost))
    , m_notifier(xcb_get_file_descriptor(connection.get()), QSocketNotifier::Read)
{
    connect(&m_notifier, &QSocketNotifier::activated, this, &XcbEvents::drain);
    // Waiting for a reply reads the events before it off the socket, which then never becomes
    // readable for them.
    connect(QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::aboutToBlock, this,
            &XcbEvents::drain);
}

void XcbEvents::drain()
{
    if (m_isDraining) {
        return; // asked for by a handler; the events keep their order
    }
    const QScopedValueRollback draining(m_isDraining, true);
    while (const auto event = next()) {
        if (event->response_type != 0) { // 0 is an error of a request that nobody waits for
            m_handler(*event);
        }
    }
    noticeLoss();
    m_connection.flush();
}

XcbOwned<xcb_generic_event_t> XcbEvents::next()
{
    if (!m_setAside.empty()) {
        auto event = std::move(m_setAside.front());
        m_setAside.pop_front();
        return event;
    }
    return XcbOwned<xcb_generic_event_t>(xcb_poll_for_event(m_connection.get()));
}

XcbOwned<xcb_generic_event_t>
XcbEvents::waitFor(const std::function<bool(const xcb_generic_event_t&)>& matches,
                   std::chrono::milliseconds limit)
{
    const QDeadlineTimer deadline(limit);
    m_connection.flush();
    while (!m_connection.isLost()) {
        while (XcbOwned<xcb_generic_event_t> event{xcb_poll_for_event(m_connection.get())}) {
            if (matches(*event)) {
                return event;
            }
            m_setAside.push_back(std::move(event));
        }
        if (deadline.hasExpired()) {
            break;
        }
        pollfd descriptor{xcb_get_file_descriptor(m_connection.get()), POLLIN, 0};
        ::poll(&descriptor, 1, int(deadline.remainingTime()));
    }
    return nullptr;
}

void XcbEvents::noticeLoss()
{
    if (m_lost || !m_connection.isLost()) {
        return;
    }
    m_lost = true;
    // The descriptor of a lost connection is readable for ever.
    m_notifier.setEnabled(false);
    if (m_onLost) {
        m_onLost();
    }
}

} // namespace zelvane
