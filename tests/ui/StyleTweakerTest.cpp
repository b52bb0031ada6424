#include "ui/style/StyleTweaker.h"
#include "ui/style/Theme.h"

#include <gtest/gtest.h>

namespace zelvane::test {
namespace {

TEST(StyleTweaker, beginsWithTheDefaults)
{
    const StyleTweaker tokens;
    EXPECT_EQ(tokens.panelRadius(), 20);
    EXPECT_EQ(tokens.wellRadius(), 12);
    EXPECT_EQ(tokens.controlRadius(), 8);
    EXPECT_EQ(tokens.listRowRadius(), 8);
    EXPECT_EQ(tokens.tray().padding, 14);
    EXPECT_EQ(tokens.tray().width, 320);
    EXPECT_EQ(tokens.tray().contentSpacing, 12);
    EXPECT_EQ(tokens.settings().minWidth, 820);
    EXPECT_EQ(tokens.settings().minHeight, 580);
    EXPECT_EQ(tokens.sheets().padding, 20);
    EXPECT_EQ(tokens.sheets().minWidth, 420);
    EXPECT_EQ(tokens.sheets().resultWidth, 500);
    EXPECT_EQ(tokens.sheets().resultPadding, 20);
    EXPECT_EQ(tokens.sheets().pickerWidth, 240);
    EXPECT_EQ(tokens.sheets().pickerHeight, 300);
    EXPECT_EQ(tokens.typography().panelTitle, StyleFontRole::headline);
    EXPECT_EQ(tokens.typography().sheetTitle, StyleFontRole::title2);
    EXPECT_EQ(tokens.typography().resultTitle, StyleFontRole::title3);
    EXPECT_EQ(tokens.typography().sectionLabel, StyleFontRole::calloutSemibold);
    EXPECT_EQ(tokens.typography().bodyHint, StyleFontRole::callout);
    EXPECT_EQ(tokens.typography().pairDirection, StyleFontRole::calloutSemibold);
    EXPECT_EQ(tokens.typography().hotKeyLabel, StyleFontRole::body);
    EXPECT_EQ(tokens.spacing().xs, 4);
    EXPECT_EQ(tokens.spacing().sm, 8);
    EXPECT_EQ(tokens.spacing().md, 12);
    EXPECT_EQ(tokens.spacing().lg, 16);
    EXPECT_EQ(tokens.spacing().xl, 20);
    EXPECT_EQ(tokens.spacing().xxl, 24);
    EXPECT_EQ(tokens.spacing().footerSpacing, 8);
}

TEST(StyleTweaker, tellsOfEachChangeOnce)
{
    StyleTweaker tokens;
    int changes = 0;
    QObject::connect(&tokens, &StyleTweaker::changed, &tokens, [&] { ++changes; });
    tokens.setPanelRadius(12);
    EXPECT_EQ(changes, 1);
    tokens.setPanelRadius(12);
    EXPECT_EQ(changes, 1);
    SheetLayoutTokens sheets = tokens.sheets();
    sheets.resultWidth = 600;
    tokens.setSheets(sheets);
    EXPECT_EQ(changes, 2);
    tokens.setSheets(sheets);
    EXPECT_EQ(changes, 2);
}

TEST(StyleFontRole, hasTheNamesOfItsCasesInTheirOrder)
{
    QStringList names;
    for (const StyleFontRole role : allStyleFontRoles) {
        names += rawValue(role);
    }
    EXPECT_EQ(names.join(u' ').toStdString(),
              "headline title2 title3 body callout calloutSemibold caption captionSemibold "
              "bodySemibold monospacedCaption monospacedBody");
}

struct FontCase
{
    StyleFontRole role;
    double points;
    int weight;
};

class FontForRole : public ::testing::TestWithParam<FontCase>
{
};

TEST_P(FontForRole, hasTheSizeAndWeightOfItsRole)
{
    QFont system(QStringLiteral("Noto Sans"));
    system.setPointSizeF(10);
    QFont monospaced(QStringLiteral("DejaVu Sans Mono"));
    const QFont font = fontForRole(GetParam().role, system, monospaced);
    EXPECT_NEAR(font.pointSizeF(), GetParam().points, 0.001);
    EXPECT_EQ(int(font.weight()), GetParam().weight);
    const bool isMonospaced = rawValue(GetParam().role).startsWith(QStringLiteral("monospaced"));
    EXPECT_EQ(font.family(), isMonospaced ? monospaced.family() : system.family());
}

INSTANTIATE_TEST_SUITE_P(Roles, FontForRole,
                         ::testing::Values(FontCase{StyleFontRole::headline, 10, 600},
                                           FontCase{StyleFontRole::title2, 13.1, 700},
                                           FontCase{StyleFontRole::title3, 11.6, 600},
                                           FontCase{StyleFontRole::body, 10, 400},
                                           FontCase{StyleFontRole::callout, 9.3, 400},
                                           FontCase{StyleFontRole::calloutSemibold, 9.3, 600},
                                           FontCase{StyleFontRole::caption, 8.5, 400},
                                           FontCase{StyleFontRole::captionSemibold, 8.5, 600},
                                           FontCase{StyleFontRole::bodySemibold, 10, 600},
                                           FontCase{StyleFontRole::monospacedCaption, 8.5, 400},
                                           FontCase{StyleFontRole::monospacedBody, 10, 400}),
                         [](const auto& info) { return rawValue(info.param.role).toStdString(); });

TEST(FontForRoleInPixels, scalesAFontThatIsGivenInPixels)
{
    QFont system;
    system.setPixelSize(20);
    EXPECT_EQ(fontForRole(StyleFontRole::title3, system, system).pixelSize(), 23);
}

} // namespace
} // namespace zelvane::test
