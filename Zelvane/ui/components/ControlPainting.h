#pragma once

#include "ui/style/Theme.h"
#include "ui/style/ViewStyles.h"

#include <QAbstractButton>
#include <QPainter>

namespace zelvane {

/// How much a button asks to be pressed.
enum class ControlKind {
    bordered,
    /// The one that Return presses.
    prominent,
    /// No more than a text or a symbol until the pointer comes.
    plain,
    /// Removes something.
    destructive,
};

/// Paints the body of a button in its present state, over the whole widget.
void paintControl(QPainter& painter, const QAbstractButton& button, const Theme& theme,
                  ControlKind kind);

/// The colour of a button's text and symbol in its present state.
[[nodiscard]] QColor controlTextColor(const QAbstractButton& button, const Theme& theme,
                                      ControlKind kind);

/// The same for a control that isn't a button, or has a state of its own.
struct ControlState
{
    bool enabled = true;
    bool hovered = false;
    bool pressed = false;
};

void paintControl(QPainter& painter, const QRectF& rect, const ControlState& state,
                  const Theme& theme, ControlKind kind);

} // namespace zelvane
