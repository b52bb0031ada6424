#include "ui/linux/BlurRequests.h"

#include <QGuiApplication>

#include <cmath>
#include <cstdlib>
#include <memory>
#include <vector>

namespace zelvane {

BlurRequests::BlurRequests(const XcbSession& session, std::function<void(bool)> onChange)
    : m_session(session)
    , m_property(internAtom(session, "_KDE_NET_WM_BLUR_BEHIND_REGION"))
    , m_onChange(std::move(onChange))
{
    // Qt has asked for the changes of the root window's properties.
    qApp->installNativeEventFilter(this);
    m_onChange(isAnnounced());
}

BlurRequests::~BlurRequests()
{
    if (qApp) {
        qApp->removeNativeEventFilter(this);
    }
}

void BlurRequests::blurBehind(QWindow& window, const QRegion& region) const
{
    const auto id = xcb_window_t(window.winId());
    if (region.isEmpty()) {
        xcb_delete_property(m_session.connection, id, m_property);
        return;
    }
    const double scale = window.devicePixelRatio();
    std::vector<uint32_t> rectangles;
    for (const QRect& rect : region) {
        for (const int length : {rect.x(), rect.y(), rect.width(), rect.height()}) {
            rectangles.push_back(uint32_t(std::lround(length * scale)));
        }
    }
    xcb_change_property(m_session.connection, XCB_PROP_MODE_REPLACE, id, m_property,
                        XCB_ATOM_CARDINAL, 32, uint32_t(rectangles.size()), rectangles.data());
    xcb_flush(m_session.connection);
}

bool BlurRequests::nativeEventFilter(const QByteArray& eventType, void* message, qintptr*)
{
    const auto* event = static_cast<const xcb_generic_event_t*>(message);
    if (eventType != "xcb_generic_event_t" ||
        (event->response_type & 0x7f) != XCB_PROPERTY_NOTIFY) {
        return false;
    }
    const auto* change = static_cast<const xcb_property_notify_event_t*>(message);
    if (change->window == m_session.screen->root && change->atom == m_property) {
        m_onChange(change->state == XCB_PROPERTY_NEW_VALUE);
    }
    return false;
}

bool BlurRequests::isAnnounced() const
{
    struct Free
    {
        void operator()(void* reply) const { std::free(reply); }
    };
    const std::unique_ptr<xcb_get_property_reply_t, Free> reply(
        xcb_get_property_reply(m_session.connection,
                               xcb_get_property(m_session.connection, 0, m_session.screen->root,
                                                m_property, XCB_GET_PROPERTY_TYPE_ANY, 0, 0),
                               nullptr));
    return reply && reply->type != XCB_ATOM_NONE;
}

} // namespace zelvane
