#pragma once

#include "settings/UserDefaults.h"

#include <QList>
#include <QPointF>
#include <QRectF>
#include <QSizeF>

#include <functional>
#include <optional>

namespace zelvane {

/// The windows whose places are remembered.
enum class WindowKind {
    manual,
    result,
};

/// The screens as they are at this moment. All rectangles are what windows may cover: without
/// panels and docks.
struct ScreenLayout
{
    /// In the system's order.
    std::function<QList<QRectF>()> visibleFrames;
    /// The screen on which the user works. None while screens come and go.
    std::function<std::optional<QRectF>()> mainFrame;
};

/// The screens of the running program.
[[nodiscard]] ScreenLayout systemScreens();

/// `origin` moved so that a window of this size can be seen and reached.
///
/// The screen is the first one that the window touches, else the main one. Where the window is
/// larger than the screen, its left and its bottom edge are the ones that stay in view. Without any
/// screen the origin comes back as it is.
[[nodiscard]] QPointF clampedOrigin(QPointF origin, QSizeF size, const ScreenLayout& screens);

/// Where the top left corner of a window of this size goes to be in the middle of `frame`.
[[nodiscard]] QPointF centredOrigin(QSizeF size, const QRectF& frame);

/// Remembers where the user left each window: the top left corner of the panel itself, without its
/// shadow. Main thread only.
class WindowOrigins
{
public:
    /// `defaults` must outlive this object.
    WindowOrigins(UserDefaults& defaults, ScreenLayout screens);

    /// The saved place, moved onto the screens of now; none if nothing is saved.
    [[nodiscard]] std::optional<QPointF> loadWindowOrigin(WindowKind kind, double width,
                                                          double height) const;
    void saveWindowOrigin(WindowKind kind, double x, double y);
    /// Forgets both windows' places.
    void resetWindowOrigins();

    /// Where a window of this size goes that has no place of its own.
    [[nodiscard]] QPointF centre(double width, double height) const;
    /// The largest size that fits on the screen where the user works; none without a screen.
    [[nodiscard]] std::optional<QSizeF> availableSize() const;

private:
    UserDefaults& m_defaults;
    ScreenLayout m_screens;
};

} // namespace zelvane
