#include "desktop/FocusInspector.h"

#include <gtest/gtest.h>

namespace zelvane::test {
namespace {

FocusedElement element(std::optional<bool> editable, bool selectedText, bool value,
                       const QString& role)
{
    return {editable, selectedText, value, role};
}

TEST(StaticElement, noFocusedElementCountsAsEditable)
{
    EXPECT_FALSE(isStatic(std::nullopt));
}

TEST(StaticElement, anEditableElementIsNotStaticWhateverItsRole)
{
    EXPECT_FALSE(isStatic(element(true, false, false, QStringLiteral("AXStaticText"))));
}

TEST(StaticElement, aSettableSelectionIsNotStatic)
{
    EXPECT_FALSE(isStatic(element(false, true, false, QStringLiteral("AXStaticText"))));
}

TEST(StaticElement, aSettableValueIsNotStaticEvenIfItSaysReadOnly)
{
    EXPECT_FALSE(isStatic(element(false, false, true, QStringLiteral("AXTextField"))));
}

TEST(StaticElement, anElementThatSaysReadOnlyIsStatic)
{
    EXPECT_TRUE(isStatic(element(false, false, false, QStringLiteral("AXTextArea"))));
}

TEST(StaticElement, anUnknownRoleWithoutTheAttributeIsNotStatic)
{
    EXPECT_FALSE(isStatic(element(std::nullopt, false, false, QStringLiteral("AXGroup"))));
    EXPECT_FALSE(isStatic(element(std::nullopt, false, false, QString())));
}

class StaticRole : public ::testing::TestWithParam<const char*>
{
};

TEST_P(StaticRole, isStaticWithoutTheAttribute)
{
    EXPECT_TRUE(isStatic(element(std::nullopt, false, false, QString::fromLatin1(GetParam()))));
}

INSTANTIATE_TEST_SUITE_P(Roles, StaticRole,
                         ::testing::Values("AXStaticText", "AXHeading", "AXImage", "AXLink",
                                           "AXMenuItem", "AXMenuButton", "AXCheckBox",
                                           "AXRadioButton"));

} // namespace
} // namespace zelvane::test
