#pragma once

#include "ui/style/Theme.h"

#include <QMargins>
#include <QPainter>
#include <QWidget>

#include <optional>

namespace zelvane {

/// The room around a floating panel that its window needs for the shadow: none where the desktop
/// can't show one.
[[nodiscard]] QMargins panelMargins(const Theme& theme);

/// Paints a floating panel into its window: a rounded surface with a soft shadow where the desktop
/// composes windows, a plain rectangle with a hairline border where it doesn't. The corners are
/// those of the tokens unless `cornerRadius` is given.
void paintPanelSurface(QPainter& painter, const QRect& panel, const Theme& theme,
                       std::optional<double> cornerRadius = std::nullopt);

/// Has the desktop blur what is behind such a panel, where it does so and the panel lets it
/// through. To be called when `window` is shown, has another size, and when the theme has changed.
void describePanelSurface(QWidget& window, const QRect& panel, const Theme& theme,
                          std::optional<double> cornerRadius = std::nullopt);

} // namespace zelvane
