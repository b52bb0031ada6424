#pragma once

#include <QAbstractNativeEventFilter>

#include <xcb/xcb.h>

#include <functional>

namespace zelvane {

/// Hands the events of the interface's own connection to a function before Qt sees them, as long as
/// this object lives. Main thread; a QGuiApplication must exist.
class XcbEventFilter final : public QAbstractNativeEventFilter
{
public:
    /// Called with each event; true keeps it from Qt.
    using Handler = std::function<bool(const xcb_generic_event_t&)>;

    explicit XcbEventFilter(Handler handler);
    ~XcbEventFilter() override;
    Q_DISABLE_COPY_MOVE(XcbEventFilter)

    bool nativeEventFilter(const QByteArray& eventType, void* message, qintptr* result) override;

private:
    Handler m_handler;
};

} // namespace zelvane
