#pragma once

#include <QFont>
#include <QString>

namespace zelvane {

/// The height of `text`, wrapped to `width` as text areas wrap it, in device-independent pixels.
///
/// Measuring ends as soon as the height passes `limit`, so that a text of any length costs no more
/// than what a window can show of it. An empty text is one line high.
[[nodiscard]] double wrappedTextHeight(const QString& text, const QFont& font, double width,
                                       double limit);

} // namespace zelvane
