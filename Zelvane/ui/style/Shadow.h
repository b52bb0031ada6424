#pragma once

#include <QMargins>
#include <QPainter>
#include <QRectF>

namespace zelvane {

/// The room that the shadow of a panel needs on each side of it.
[[nodiscard]] QMargins shadowMargins();

/// Paints the soft black shadow of a panel with rounded corners, around and under `panel`.
void paintShadow(QPainter& painter, const QRect& panel, double cornerRadius);

} // namespace zelvane
