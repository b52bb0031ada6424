#include "ui/settings/SettingsCategory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace zelvane::test {
namespace {

using ::testing::ElementsAre;

TEST(SettingsCategory, standInTheOrderOfTheSidebar)
{
    QStringList rows;
    for (const SettingsCategory category : allSettingsCategories) {
        rows += QStringLiteral("%1|%2|%3|%4")
                    .arg(rawValue(category), title(category), subtitle(category),
                         sidebarSymbol(category));
    }
    EXPECT_THAT(
        rows,
        ElementsAre(
            QStringLiteral("translation|Translation|Choose AI engines and models.|sparkles"),
            QStringLiteral(
                "languages|Languages|Language pairs, hotkeys, and glossary downloads.|globe"),
            QStringLiteral(
                "behavior|Behavior|Hotkeys, windows, and how translation is applied.|keyboard"),
            QStringLiteral("accessibility|Accessibility|Permissions needed to read and replace "
                           "selected text.|hand.raised"),
            QStringLiteral("general|About|Version, legal links, and this Mac's install "
                           "ID.|info.circle")));
}

} // namespace
} // namespace zelvane::test
