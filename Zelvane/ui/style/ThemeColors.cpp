#include "ui/style/ThemeColors.h"

#include <cmath>

namespace zelvane {

namespace {

/// `rgb` as 0xRRGGBB.
QColor opaque(QRgb rgb)
{
    return QColor::fromRgb(rgb);
}

QColor withAlpha(QColor color, double alpha)
{
    color.setAlphaF(static_cast<float>(alpha));
    return color;
}

QColor black(double alpha)
{
    return withAlpha(Qt::black, alpha);
}

QColor white(double alpha)
{
    return withAlpha(Qt::white, alpha);
}

double linearChannel(double value)
{
    return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
}

double luminance(const QColor& color)
{
    return 0.2126 * linearChannel(double(color.redF())) +
           0.7152 * linearChannel(double(color.greenF())) +
           0.0722 * linearChannel(double(color.blueF()));
}

ThemeColors lightColors()
{
    ThemeColors c;
    c.window = opaque(0xf6f6f8);
    c.windowBorder = black(0.14);
    c.windowRim = white(0.6);
    c.text = opaque(0x1b1b1f);
    c.secondaryText = opaque(0x5c5c66);
    c.tertiaryText = opaque(0x70707a);
    c.hairline = black(0.09);
    c.well = opaque(0xffffff);
    c.wellBorder = black(0.09);
    c.card = opaque(0xffffff);
    c.cardBorder = black(0.07);
    c.control = opaque(0xffffff);
    c.controlHovered = opaque(0xf1f1f4);
    c.controlPressed = opaque(0xe6e6eb);
    c.controlBorder = black(0.15);
    c.disabledText = opaque(0xa5a5ad);
    c.rowHovered = black(0.05);
    c.scrollHandle = black(0.28);
    c.track = opaque(0xd3d3da);
    c.knob = opaque(0xffffff);
    c.scrim = black(0.22);
    c.success = opaque(0x18794e);
    c.warning = opaque(0xd9750b);
    c.warningText = opaque(0x9a5200);
    c.danger = opaque(0xc62f2b);
    return c;
}

ThemeColors darkColors()
{
    ThemeColors c;
    c.window = opaque(0x26262a);
    c.windowBorder = black(0.6);
    c.windowRim = white(0.11);
    c.text = opaque(0xf2f2f5);
    c.secondaryText = opaque(0xaeaeb8);
    c.tertiaryText = opaque(0x92929c);
    c.hairline = white(0.1);
    c.well = opaque(0x1b1b1e);
    c.wellBorder = white(0.08);
    c.card = opaque(0x2e2e33);
    c.cardBorder = white(0.07);
    c.control = opaque(0x3a3a40);
    c.controlHovered = opaque(0x45454c);
    c.controlPressed = opaque(0x323237);
    c.controlBorder = white(0.1);
    c.disabledText = opaque(0x6c6c75);
    c.rowHovered = white(0.07);
    c.scrollHandle = white(0.32);
    c.track = opaque(0x484850);
    c.knob = opaque(0xf4f4f6);
    c.scrim = black(0.45);
    c.success = opaque(0x5fd39a);
    c.warning = opaque(0xf7b731);
    c.warningText = opaque(0xf7b731);
    c.danger = opaque(0xff8279);
    return c;
}

/// `color`, as much darker or lighter as it takes to be read as a text on both grounds.
QColor readable(QColor color, const ThemeColors& c, bool dark)
{
    constexpr double enough = 4.5;
    const auto legible = [&] {
        return contrastRatio(color, c.window) >= enough && contrastRatio(color, c.card) >= enough;
    };
    for (int step = 0; step < 20 && !legible(); ++step) {
        color = blended(dark ? white(0.12) : black(0.12), color);
    }
    return color;
}

void applyAccent(ThemeColors& c, const QColor& accent, bool dark)
{
    c.accent = accent;
    // Darker in both schemes: white stays readable on it.
    c.accentHovered = accent.darker(108);
    c.accentPressed = accent.darker(122);
    const QColor ink(0x1b, 0x1b, 0x1f);
    // White suits a mid-tone better than the bare numbers say, so ink must win clearly.
    c.onAccent = contrastRatio(ink, accent) > 1.8 * contrastRatio(Qt::white, accent)
                     ? ink
                     : QColor(Qt::white);
    // A ring must stand out from the window, whatever accent the user chose.
    c.focusRing = contrastRatio(accent, c.window) >= 3 ? accent : c.text;
    c.link = readable(accent, c, dark);
    c.textSelection = withAlpha(accent, dark ? 0.45 : 0.25);
    c.rowSelected = withAlpha(accent, dark ? 0.35 : 0.16);
}

void raiseContrast(ThemeColors& c)
{
    c.secondaryText = c.text;
    c.tertiaryText = c.text;
    c.track = blended(withAlpha(c.text, 0.55), c.window);
    for (QColor* line :
         {&c.windowBorder, &c.hairline, &c.wellBorder, &c.cardBorder, &c.controlBorder}) {
        *line = withAlpha(c.text, 0.65);
    }
}

} // namespace

ThemeColors themeColors(const ColorChoice& choice)
{
    const bool dark = choice.scheme == ColorScheme::dark;
    ThemeColors colors = dark ? darkColors() : lightColors();
    const QColor ownAccent = opaque(dark ? 0x436cf2 : 0x3564e6);
    applyAccent(colors, choice.accent.value_or(ownAccent), dark);
    if (choice.highContrast) {
        raiseContrast(colors);
    }
    return colors;
}

double contrastRatio(const QColor& a, const QColor& b)
{
    const double first = luminance(a);
    const double second = luminance(b);
    return (std::max(first, second) + 0.05) / (std::min(first, second) + 0.05);
}

QColor blended(const QColor& top, const QColor& below)
{
    const float alpha = top.alphaF();
    const auto mix = [alpha](float over, float under) {
        return over * alpha + under * (1 - alpha);
    };
    return QColor::fromRgbF(mix(top.redF(), below.redF()), mix(top.greenF(), below.greenF()),
                            mix(top.blueF(), below.blueF()));
}

QPalette toPalette(const ThemeColors& colors)
{
    const QColor window = withAlpha(colors.window, 1);
    QPalette palette;
    palette.setColor(QPalette::Window, window);
    palette.setColor(QPalette::WindowText, colors.text);
    palette.setColor(QPalette::Base, colors.well);
    palette.setColor(QPalette::AlternateBase, window);
    palette.setColor(QPalette::Text, colors.text);
    palette.setColor(QPalette::PlaceholderText, colors.tertiaryText);
    palette.setColor(QPalette::Button, colors.control);
    palette.setColor(QPalette::ButtonText, colors.text);
    palette.setColor(QPalette::BrightText, colors.warning);
    palette.setColor(QPalette::ToolTipBase, colors.control);
    palette.setColor(QPalette::ToolTipText, colors.text);
    palette.setColor(QPalette::Highlight, colors.accent);
    palette.setColor(QPalette::HighlightedText, colors.onAccent);
    palette.setColor(QPalette::Link, colors.accent);
    palette.setColor(QPalette::Light, window.lighter(120));
    palette.setColor(QPalette::Midlight, window.lighter(110));
    palette.setColor(QPalette::Mid, window.darker(120));
    palette.setColor(QPalette::Dark, window.darker(150));
    palette.setColor(QPalette::Shadow, Qt::black);
    for (const QPalette::ColorRole role :
         {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
        palette.setColor(QPalette::Disabled, role, colors.disabledText);
    }
    return palette;
}

} // namespace zelvane
