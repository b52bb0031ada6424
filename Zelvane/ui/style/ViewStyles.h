#pragma once

#include "ui/style/StyleTweaker.h"
#include "ui/style/ThemeColors.h"

#include <QPainter>
#include <QRectF>

#include <chrono>
#include <optional>

namespace zelvane {

/// The background of a row in a list.
struct TranslatorListRowButtonStyle
{
    bool isSelected;
    bool hovering;
    const StyleTweaker& tweaker;
    bool reduceMotion;

    /// How long the background takes to appear under the pointer, and to go.
    [[nodiscard]] std::chrono::milliseconds hoverDuration() const;
    /// `strength` is how far the change of `hovering` has come, 0 to 1.
    void paint(QPainter& painter, const QRectF& row, const ThemeColors& colors,
               double strength = 1) const;
};

/// The surface of a floating panel: translucent where what is behind it is blurred, opaque under
/// reduced transparency.
struct TranslatorFloatingGlassModifier
{
    const StyleTweaker& tweaker;
    bool reduceTransparency = false;
    /// The tokens' `panelRadius` without it.
    std::optional<double> cornerRadius = std::nullopt;

    [[nodiscard]] double radius() const { return cornerRadius.value_or(tweaker.panelRadius()); }
    [[nodiscard]] QColor fill(const ThemeColors& colors) const;
    /// The surface with its rim, and the hairline around it.
    void paint(QPainter& painter, const QRectF& panel, const ThemeColors& colors) const;
};

/// The inset background of a text area.
struct TranslatorContentWellModifier
{
    const StyleTweaker& tweaker;
    /// The tokens' `wellRadius` without it.
    std::optional<double> cornerRadius = std::nullopt;

    [[nodiscard]] double radius() const { return cornerRadius.value_or(tweaker.wellRadius()); }
    void paint(QPainter& painter, const QRectF& well, const ThemeColors& colors) const;
};

/// Fills a rounded rectangle and draws its border inside of it, one pixel wide.
void paintRounded(QPainter& painter, const QRectF& rect, double radius, const QColor& fill,
                  const QColor& border);

} // namespace zelvane
