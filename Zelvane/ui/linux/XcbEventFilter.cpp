#include "ui/linux/XcbEventFilter.h"

#include <QCoreApplication>

#include <utility>

namespace zelvane {

XcbEventFilter::XcbEventFilter(Handler handler)
    : m_handler(std::move(handler))
{
    QCoreApplication::instance()->installNativeEventFilter(this);
}

XcbEventFilter::~XcbEventFilter()
{
    if (auto* application = QCoreApplication::instance()) {
        application->removeNativeEventFilter(this);
    }
}

bool XcbEventFilter::nativeEventFilter(const QByteArray& eventType, void* message,
                                       qintptr* /*result*/)
{
    return eventType == "xcb_generic_event_t" &&
           m_handler(*static_cast<const xcb_generic_event_t*>(message));
}

} // namespace zelvane
