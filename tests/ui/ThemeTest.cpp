#include "ui/style/Theme.h"

#include <gtest/gtest.h>

namespace zelvane::test {
namespace {

class ReadableColors : public ::testing::TestWithParam<ColorScheme>
{
};

TEST_P(ReadableColors, textStandsOutFromWhatItIsOn)
{
    const ThemeColors colors = themeColors({.scheme = GetParam()});
    for (const QColor& ground : {colors.window, colors.well, colors.control, colors.card}) {
        EXPECT_GE(contrastRatio(colors.text, ground), 7);
        EXPECT_GE(contrastRatio(colors.secondaryText, ground), 4.5);
        EXPECT_GE(contrastRatio(colors.tertiaryText, ground), 3);
    }
    for (const QColor& ground : {colors.window, colors.well}) {
        EXPECT_GE(contrastRatio(colors.tertiaryText, ground), 4.5);
    }
    for (const QColor& ground : {colors.accent, colors.accentHovered, colors.accentPressed}) {
        EXPECT_GE(contrastRatio(colors.onAccent, ground), 4.5);
    }
    for (const QColor& ground : {colors.controlHovered, colors.controlPressed}) {
        EXPECT_GE(contrastRatio(colors.text, ground), 7);
    }
    for (const QColor& ground : {colors.window, colors.card}) {
        for (const QColor& text :
             {colors.success, colors.warningText, colors.danger, colors.link}) {
            EXPECT_GE(contrastRatio(text, ground), 4.5);
        }
    }
    EXPECT_GE(contrastRatio(colors.danger, colors.control), 4.5);
    EXPECT_GE(contrastRatio(colors.accent, colors.card), 3);
    EXPECT_GE(contrastRatio(colors.accent, colors.track), 2);
    EXPECT_GE(contrastRatio(colors.focusRing, colors.window), 3);
    EXPECT_GE(contrastRatio(colors.focusRing, colors.well), 3);
    EXPECT_GE(contrastRatio(colors.text, blended(colors.textSelection, colors.well)), 4.5);
}

TEST_P(ReadableColors, anyAccentOfTheUserStaysReadable)
{
    for (const char* name : {"#ffd60a", "#ff3b30", "#34c759", "#000000", "#ffffff", "#8e8e93"}) {
        const QColor accent(QString::fromLatin1(name));
        const ThemeColors colors = themeColors({.scheme = GetParam(), .accent = accent});
        EXPECT_EQ(colors.accent, accent);
        EXPECT_GE(contrastRatio(colors.onAccent, accent), 3) << name;
        EXPECT_GE(contrastRatio(colors.focusRing, colors.window), 3) << name;
        EXPECT_GE(contrastRatio(colors.link, colors.card), 4.5) << name;
    }
}

TEST_P(ReadableColors, highContrastLeavesNoPaleText)
{
    const ThemeColors colors = themeColors({.scheme = GetParam(), .highContrast = true});
    EXPECT_EQ(colors.secondaryText, colors.text);
    EXPECT_GE(contrastRatio(blended(colors.controlBorder, colors.window), colors.window), 3);
}

INSTANTIATE_TEST_SUITE_P(Schemes, ReadableColors,
                         ::testing::Values(ColorScheme::light, ColorScheme::dark),
                         [](const auto& info) {
                             return info.param == ColorScheme::dark ? "dark" : "light";
                         });

TEST(Contrast, isThatOfTheStandard)
{
    EXPECT_NEAR(contrastRatio(Qt::black, Qt::white), 21, 0.01);
    EXPECT_NEAR(contrastRatio(QColor(0x77, 0x77, 0x77), Qt::white), 4.48, 0.01);
}

TEST(Theme, panelsLetThroughOnlyWhatTheDesktopBlurs)
{
    StyleTweaker tokens;
    DesktopAppearance appearance;
    const Theme theme(tokens, appearance);
    EXPECT_TRUE(theme.opaquePanels());
    appearance.setCompositing(true);
    EXPECT_TRUE(theme.opaquePanels());
    appearance.setBlursBehind(true);
    EXPECT_FALSE(theme.opaquePanels());
    appearance.setReducedTransparency(true);
    EXPECT_TRUE(theme.opaquePanels());
    appearance.setReducedTransparency(false);
    appearance.setHighContrast(true);
    EXPECT_TRUE(theme.opaquePanels());
}

TEST(Theme, followsTheDesktopAtOnce)
{
    StyleTweaker tokens;
    DesktopAppearance appearance;
    Theme theme(tokens, appearance);
    int changes = 0;
    QObject::connect(&theme, &Theme::changed, &theme, [&] { ++changes; });

    appearance.setColorScheme(ColorScheme::dark);
    EXPECT_EQ(changes, 1);
    EXPECT_LT(theme.colors().window.lightness(), 60);

    appearance.setColorScheme(ColorScheme::light);
    EXPECT_GT(theme.colors().window.lightness(), 200);

    tokens.setWellRadius(3);
    EXPECT_EQ(changes, 3);
}

} // namespace
} // namespace zelvane::test
