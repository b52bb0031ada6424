#include "ui/components/ControlPainting.h"

namespace zelvane {

namespace {

ControlState stateOf(const QAbstractButton& button)
{
    return {.enabled = button.isEnabled(),
            .hovered = button.isEnabled() && button.underMouse(),
            .pressed = button.isDown()};
}

QColor plainFill(const ControlState& state, const ThemeColors& colors)
{
    QColor fill = colors.rowHovered;
    if (state.pressed) {
        fill.setAlphaF(std::min(1.0F, fill.alphaF() * 2));
        return fill;
    }
    return state.hovered ? fill : QColor(Qt::transparent);
}

QColor controlFill(const ControlState& state, const ThemeColors& colors, ControlKind kind)
{
    if (kind == ControlKind::plain) {
        return plainFill(state, colors);
    }
    const bool prominent = kind == ControlKind::prominent && state.enabled;
    if (state.pressed) {
        return prominent ? colors.accentPressed : colors.controlPressed;
    }
    if (state.hovered) {
        return prominent ? colors.accentHovered : colors.controlHovered;
    }
    return prominent ? colors.accent : colors.control;
}

QColor controlBorder(const ControlState& state, const ThemeColors& colors, ControlKind kind)
{
    const bool bare =
        kind == ControlKind::plain || (kind == ControlKind::prominent && state.enabled);
    return bare ? QColor(Qt::transparent) : colors.controlBorder;
}

} // namespace

void paintControl(QPainter& painter, const QRectF& rect, const ControlState& state,
                  const Theme& theme, ControlKind kind)
{
    paintRounded(painter, rect, theme.tokens().controlRadius(),
                 controlFill(state, theme.colors(), kind),
                 controlBorder(state, theme.colors(), kind));
}

void paintControl(QPainter& painter, const QAbstractButton& button, const Theme& theme,
                  ControlKind kind)
{
    paintControl(painter, button.rect(), stateOf(button), theme, kind);
}

QColor controlTextColor(const QAbstractButton& button, const Theme& theme, ControlKind kind)
{
    const ThemeColors& colors = theme.colors();
    if (!button.isEnabled()) {
        return colors.disabledText;
    }
    switch (kind) {
    case ControlKind::bordered:
        return colors.text;
    case ControlKind::prominent:
        return colors.onAccent;
    case ControlKind::plain:
        return colors.link;
    case ControlKind::destructive:
        return colors.danger;
    }
    Q_UNREACHABLE();
}

} // namespace zelvane
