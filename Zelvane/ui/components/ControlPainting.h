#pragma once

#include "ui/style/Theme.h"

#include <QAbstractButton>
#include <QPainter>

namespace zelvane {

/// How much a button asks to be pressed.
enum class ControlKind {
    bordered,
    prominent,
};

/// The property of a widget that tells the focus ring how round the widget is.
inline constexpr const char* focusRadiusProperty = "zelvaneFocusRadius";

/// Paints the body of a button in its present state, over the whole widget.
void paintControl(QPainter& painter, const QAbstractButton& button, const Theme& theme,
                  ControlKind kind);

/// The colour of a button's text and symbol in its present state.
[[nodiscard]] QColor controlTextColor(const QAbstractButton& button, const Theme& theme,
                                      ControlKind kind);

/// Fills a rounded rectangle and draws its border inside of it, one pixel wide.
void paintRounded(QPainter& painter, const QRectF& rect, double radius, const QColor& fill,
                  const QColor& border);

} // namespace zelvane
