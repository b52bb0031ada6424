#include "ui/components/ControlPainting.h"

namespace zelvane {

namespace {

QColor controlFill(const QAbstractButton& button, const ThemeColors& colors, ControlKind kind)
{
    const bool prominent = kind == ControlKind::prominent && button.isEnabled();
    if (button.isDown()) {
        return prominent ? colors.accentPressed : colors.controlPressed;
    }
    if (button.underMouse() && button.isEnabled()) {
        return prominent ? colors.accentHovered : colors.controlHovered;
    }
    return prominent ? colors.accent : colors.control;
}

} // namespace

void paintRounded(QPainter& painter, const QRectF& rect, double radius, const QColor& fill,
                  const QColor& border)
{
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(fill);
    painter.drawRoundedRect(rect, radius, radius);
    if (border.alpha() > 0) {
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(border, 1));
        painter.drawRoundedRect(rect.adjusted(0.5, 0.5, -0.5, -0.5), radius - 0.5, radius - 0.5);
    }
}

void paintControl(QPainter& painter, const QAbstractButton& button, const Theme& theme,
                  ControlKind kind)
{
    const ThemeColors& colors = theme.colors();
    const bool prominent = kind == ControlKind::prominent && button.isEnabled();
    paintRounded(painter, button.rect(), theme.tokens().controlRadius(),
                 controlFill(button, colors, kind),
                 prominent ? QColor(Qt::transparent) : colors.controlBorder);
}

QColor controlTextColor(const QAbstractButton& button, const Theme& theme, ControlKind kind)
{
    if (!button.isEnabled()) {
        return theme.colors().disabledText;
    }
    return kind == ControlKind::prominent ? theme.colors().onAccent : theme.colors().text;
}

} // namespace zelvane
