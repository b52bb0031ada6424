#pragma once

#include <QColor>
#include <QPixmap>
#include <QString>
#include <QStringList>

namespace zelvane {

/// A symbol of the program's icon set in one colour. `name` is its file's name without the ending;
/// `size` is in device-independent pixels. Symbols are square. GUI thread only; kept after first
/// use.
[[nodiscard]] QPixmap symbolPixmap(const QString& name, const QColor& color, int size,
                                   double devicePixelRatio);

/// The names of all symbols, in alphabetical order.
[[nodiscard]] QStringList symbolNames();

/// A picture of the icon set in its own colours, as opaque as `opacity` says.
[[nodiscard]] QPixmap picturePixmap(const QString& name, int size, double devicePixelRatio,
                                    double opacity = 1);

} // namespace zelvane
