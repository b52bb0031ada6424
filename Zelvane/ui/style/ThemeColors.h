#pragma once

#include "ui/style/DesktopAppearance.h"

#include <QColor>
#include <QPalette>

#include <optional>

namespace zelvane {

/// Every colour of the interface, for one scheme.
struct ThemeColors
{
    QColor window;       ///< behind everything
    QColor windowBorder; ///< the hairline around a window
    QColor windowRim;    ///< the thin light line inside that hairline
    QColor text;
    QColor secondaryText; ///< readable, but less important
    QColor tertiaryText;  ///< placeholders
    QColor hairline;      ///< between rows
    QColor well;          ///< behind a text
    QColor wellBorder;
    QColor card; ///< behind the rows of a form
    QColor cardBorder;
    QColor control;
    QColor controlHovered;
    QColor controlPressed;
    QColor controlBorder;
    QColor disabledText;
    QColor accent;
    QColor accentHovered;
    QColor accentPressed;
    QColor onAccent; ///< text on the accent
    QColor link;     ///< the accent as the colour of a text
    QColor focusRing;
    QColor textSelection; ///< behind selected text, whose own colour stays
    QColor rowHovered;
    QColor rowSelected;
    QColor scrollHandle;
    QColor track; ///< a switch that is off, the part of a progress bar that is yet to come
    QColor knob;  ///< what slides in a track
    QColor scrim; ///< over a window while a sheet has it
    QColor success;
    QColor warning;     ///< of symbols
    QColor warningText; ///< of texts
    QColor danger;

    friend bool operator==(const ThemeColors&, const ThemeColors&) = default;
};

/// What of `DesktopAppearance` decides the colours.
struct ColorChoice
{
    ColorScheme scheme = ColorScheme::light;
    std::optional<QColor> accent = std::nullopt;
    bool highContrast = false;
};

[[nodiscard]] ThemeColors themeColors(const ColorChoice& choice);

/// The contrast of two opaque colours as WCAG 2 defines it, 1 to 21.
[[nodiscard]] double contrastRatio(const QColor& a, const QColor& b);

/// `top` painted over the opaque `below`.
[[nodiscard]] QColor blended(const QColor& top, const QColor& below);

/// The same colours for the controls that Qt draws itself: menus and tool tips.
[[nodiscard]] QPalette toPalette(const ThemeColors& colors);

} // namespace zelvane
