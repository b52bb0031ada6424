#pragma once

#include "ui/linux/XcbSession.h"

#include <QAbstractNativeEventFilter>

#include <functional>

namespace zelvane {

/// Tells whether some program holds a selection of the X server, and when that changes: this is how
/// the managers of a desktop announce themselves. Main thread only.
class SelectionWatcher final : public QAbstractNativeEventFilter
{
public:
    /// `onChange` gets the present state at once, before the constructor returns, and each later
    /// one.
    SelectionWatcher(const XcbSession& session, const QByteArray& selection,
                     std::function<void(bool)> onChange);
    ~SelectionWatcher() override;
    Q_DISABLE_COPY_MOVE(SelectionWatcher)

    bool nativeEventFilter(const QByteArray& eventType, void* message, qintptr* result) override;

private:
    XcbSession m_session;
    xcb_atom_t m_selection;
    xcb_window_t m_window;
    uint8_t m_eventType = 0;
    std::function<void(bool)> m_onChange;
};

} // namespace zelvane
