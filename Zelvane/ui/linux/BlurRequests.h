#pragma once

#include "ui/linux/XcbSession.h"

#include <QAbstractNativeEventFilter>
#include <QRegion>
#include <QWindow>

#include <functional>

namespace zelvane {

/// Windows behind which the compositor blurs, by the convention that KWin set: it announces on the
/// root window that it does so, and windows name the region. Main thread only.
class BlurRequests final : public QAbstractNativeEventFilter
{
public:
    /// `onChange` gets whether the compositor blurs: at once, before the constructor returns, and
    /// whenever that changes.
    BlurRequests(const XcbSession& session, std::function<void(bool)> onChange);
    ~BlurRequests() override;
    Q_DISABLE_COPY_MOVE(BlurRequests)

    /// `region` is in the window's own coordinates; an empty one takes the request back.
    void blurBehind(QWindow& window, const QRegion& region) const;

    bool nativeEventFilter(const QByteArray& eventType, void* message, qintptr* result) override;

private:
    [[nodiscard]] bool isAnnounced() const;

    XcbSession m_session;
    xcb_atom_t m_property;
    std::function<void(bool)> m_onChange;
};

} // namespace zelvane
