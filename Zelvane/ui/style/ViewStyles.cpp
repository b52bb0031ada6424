#include "ui/style/ViewStyles.h"

namespace zelvane {

namespace {

/// Of a surface behind which the desktop blurs. Texts on it keep their contrast.
constexpr float glassOpacity = 0.9F;

} // namespace

std::chrono::milliseconds TranslatorListRowButtonStyle::hoverDuration() const
{
    return std::chrono::milliseconds(reduceMotion ? 0 : 120);
}

void TranslatorListRowButtonStyle::paint(QPainter& painter, const QRectF& row,
                                         const ThemeColors& colors, double strength) const
{
    const double radius = tweaker.listRowRadius();
    if (isSelected) {
        paintRounded(painter, row, radius, colors.rowSelected, Qt::transparent);
    }
    QColor hover = colors.rowHovered;
    hover.setAlphaF(hover.alphaF() * float(hovering ? strength : 1 - strength));
    if (hover.alpha() > 0) {
        paintRounded(painter, row, radius, hover, Qt::transparent);
    }
}

QColor TranslatorFloatingGlassModifier::fill(const ThemeColors& colors) const
{
    QColor surface = colors.window;
    surface.setAlphaF(reduceTransparency ? 1 : glassOpacity);
    return surface;
}

void TranslatorFloatingGlassModifier::paint(QPainter& painter, const QRectF& panel,
                                            const ThemeColors& colors) const
{
    paintRounded(painter, panel, radius(), fill(colors), colors.windowRim);
    painter.setPen(QPen(colors.windowBorder, 1));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(panel.adjusted(-0.5, -0.5, 0.5, 0.5), radius() + 0.5, radius() + 0.5);
}

void TranslatorContentWellModifier::paint(QPainter& painter, const QRectF& well,
                                          const ThemeColors& colors) const
{
    paintRounded(painter, well, radius(), colors.well, colors.wellBorder);
}

void paintRounded(QPainter& painter, const QRectF& rect, double radius, const QColor& fill,
                  const QColor& border)
{
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(fill);
    painter.drawRoundedRect(rect, radius, radius);
    if (border.alpha() > 0) {
        const double inner = std::max(0.0, radius - 0.5);
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(border, 1));
        painter.drawRoundedRect(rect.adjusted(0.5, 0.5, -0.5, -0.5), inner, inner);
    }
}

} // namespace zelvane
