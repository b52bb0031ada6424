#include "ui/style/ViewStyles.h"

#include "support/QtPrinters.h"

#include <gtest/gtest.h>

#include <QImage>

namespace zelvane::test {
namespace {

class ViewStylesTest : public ::testing::Test
{
protected:
    /// What `paint` leaves in the middle and at the corner of a white picture.
    struct Painted
    {
        QColor middle;
        QColor corner;
    };

    template <typename Paint>
    [[nodiscard]] static Painted painted(Paint paint)
    {
        QImage image(40, 40, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::white);
        QPainter painter(&image);
        paint(painter, QRectF(image.rect()));
        painter.end();
        return {image.pixelColor(20, 20), image.pixelColor(1, 1)};
    }

    StyleTweaker tokens;
    ThemeColors colors = themeColors({});
};

TEST_F(ViewStylesTest, rowShowsThePointerAndTheSelection)
{
    const auto row = [&](bool selected, bool hovering, double strength) {
        return painted([&](QPainter& painter, const QRectF& rect) {
                   TranslatorListRowButtonStyle{selected, hovering, tokens, false}.paint(
                       painter, rect, colors, strength);
               })
            .middle;
    };
    EXPECT_EQ(row(false, false, 1), QColor(Qt::white));
    EXPECT_EQ(row(false, true, 0), QColor(Qt::white));
    EXPECT_LT(row(false, true, 0.5).lightness(), 255);
    EXPECT_LT(row(false, true, 1).lightness(), row(false, true, 0.5).lightness());
    EXPECT_EQ(row(false, false, 0), row(false, true, 1));
    EXPECT_NE(row(true, false, 1), QColor(Qt::white));
    EXPECT_NE(row(true, true, 1), row(true, false, 1));
}

TEST_F(ViewStylesTest, rowChangesAtOnceWhereMotionIsUnwanted)
{
    EXPECT_EQ((TranslatorListRowButtonStyle{false, true, tokens, true}.hoverDuration().count()), 0);
    EXPECT_GT((TranslatorListRowButtonStyle{false, true, tokens, false}.hoverDuration().count()),
              0);
}

TEST_F(ViewStylesTest, cornersAreThoseOfTheTokens)
{
    const auto corner = [&] {
        return painted([&](QPainter& painter, const QRectF& rect) {
                   TranslatorListRowButtonStyle{true, false, tokens, false}.paint(painter, rect,
                                                                                  colors);
               })
            .corner;
    };
    EXPECT_EQ(corner(), QColor(Qt::white));
    tokens.setListRowRadius(0);
    EXPECT_NE(corner(), QColor(Qt::white));
}

TEST_F(ViewStylesTest, glassIsOpaqueUnderReducedTransparency)
{
    EXPECT_EQ((TranslatorFloatingGlassModifier{tokens, true}.fill(colors)), colors.window);
    const QColor glass = TranslatorFloatingGlassModifier{tokens, false}.fill(colors);
    EXPECT_LT(glass.alphaF(), 0.95F);
    EXPECT_GT(glass.alphaF(), 0.7F);
}

TEST_F(ViewStylesTest, textsOnGlassStayReadableOverBlackAndOverWhite)
{
    for (const ColorScheme scheme : {ColorScheme::light, ColorScheme::dark}) {
        const ThemeColors scheming = themeColors({.scheme = scheme});
        const QColor glass = TranslatorFloatingGlassModifier{tokens, false}.fill(scheming);
        for (const QColor& behind : {QColor(Qt::black), QColor(Qt::white)}) {
            EXPECT_GE(contrastRatio(scheming.text, blended(glass, behind)), 7);
            EXPECT_GE(contrastRatio(scheming.secondaryText, blended(glass, behind)), 4.5);
        }
    }
}

TEST_F(ViewStylesTest, panelAndWellTakeTheirRadiusFromTheTokensUnlessTheyAreGivenOne)
{
    tokens.setPanelRadius(17);
    tokens.setWellRadius(9);
    EXPECT_EQ((TranslatorFloatingGlassModifier{tokens, true}.radius()), 17);
    EXPECT_EQ((TranslatorFloatingGlassModifier{tokens, true, 4}.radius()), 4);
    EXPECT_EQ(TranslatorContentWellModifier{tokens}.radius(), 9);
    EXPECT_EQ((TranslatorContentWellModifier{tokens, 4}.radius()), 4);
}

} // namespace
} // namespace zelvane::test
