#pragma once

#include "ui/style/Theme.h"

#include <QWidget>

#include <functional>

namespace zelvane {

/// Runs `restyle` now, and again whenever tokens, colours or the system's font have changed, as
/// long as `widget` lives. `theme` must outlive the widget.
void keepStyled(QWidget& widget, const Theme& theme, std::function<void()> restyle);

/// Runs `translate` now, and again whenever the interface language has changed, as long as `widget`
/// lives.
void keepTranslated(QWidget& widget, std::function<void()> translate);

/// The property of a widget that tells the focus ring how round the widget is.
inline constexpr const char* focusRadiusProperty = "zelvaneFocusRadius";

/// What every control of the program shares: it repaints under the pointer and when the theme
/// changes, takes the keyboard, and has a focus ring with the corners of `radius`, which is asked
/// after each change of the theme.
void prepareControl(QWidget& widget, const Theme& theme, std::function<double()> radius);

/// The same, with the corners of the token `controlRadius`.
void prepareControl(QWidget& widget, const Theme& theme);

/// The height that `widget`, which has a layout, needs at this width, with all that has just been
/// changed in it.
[[nodiscard]] int fittingHeight(const QWidget& widget, int width);

/// The height of controls of one line, so that they line up beside one another.
[[nodiscard]] int controlHeight(const Theme& theme);

} // namespace zelvane
