#pragma once

#include "ui/style/Theme.h"

#include <QPainter>
#include <QPointer>
#include <QWidget>

namespace zelvane {

/// The property of a widget that tells how far the ring stays away from it, in pixels: for those
/// whose text begins at their very edge.
inline constexpr const char* focusOutsetProperty = "zelvaneFocusOutset";

/// How round the ring around `widget` is inside.
[[nodiscard]] double focusRadius(const QWidget& widget, const Theme& theme);

/// Paints the ring around `rect`, which has corners of `radius`.
void paintFocusRing(QPainter& painter, const QRectF& rect, double radius, const Theme& theme);

/// The ring around the widget that has the keyboard focus, for all widgets of one window.
///
/// It shows only while the user works by keyboard: after a click the pointer already tells where
/// the focus is. It lies over its parent and lets all events through.
class FocusRing final : public QWidget
{
    Q_OBJECT

public:
    /// Serves the descendants of `parent`, over which it lies. `theme` must outlive it.
    FocusRing(const Theme& theme, QWidget& parent);
    ~FocusRing() override;
    Q_DISABLE_COPY_MOVE(FocusRing)

    /// The widget that the ring is around; null while there is no ring to see.
    [[nodiscard]] QWidget* target() const { return m_target; }

    bool eventFilter(QObject* watched, QEvent* event) override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void follow(QWidget* focused);
    void place();

    const Theme& m_theme;
    QPointer<QWidget> m_target;
};

} // namespace zelvane
