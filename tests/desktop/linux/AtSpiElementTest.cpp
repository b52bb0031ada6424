#include "desktop/linux/atspi/AtSpiElement.h"

#include "desktop/linux/atspi/AtSpiStates.h"

#include <gtest/gtest.h>

namespace zelvane {

void PrintTo(const AtSpiElement& element, std::ostream* out)
{
    *out << element.role << ", editable: "
         << (!element.editable   ? "unknown"
             : *element.editable ? "yes"
                                 : "no");
}

} // namespace zelvane

namespace zelvane::test {
namespace {

std::uint64_t states(std::initializer_list<AtspiStateType> list)
{
    std::uint64_t set = 0;
    for (const AtspiStateType state : list) {
        set |= std::uint64_t{1} << static_cast<unsigned>(state);
    }
    return set;
}

AtSpiElement element(std::optional<bool> editable, std::string_view role)
{
    return {editable, role};
}

const std::uint64_t plain = states({ATSPI_STATE_FOCUSED, ATSPI_STATE_SHOWING});
const std::uint64_t editable = plain | states({ATSPI_STATE_EDITABLE});
const std::uint64_t readOnly = plain | states({ATSPI_STATE_READ_ONLY});
const std::uint64_t multiLine = states({ATSPI_STATE_MULTI_LINE});

TEST(AtSpiStates, reachBeyondTheFirstWord)
{
    EXPECT_EQ(readOnly >> 43U, 1U);
    EXPECT_TRUE(hasState(readOnly, ATSPI_STATE_READ_ONLY));
    EXPECT_FALSE(hasState(plain, ATSPI_STATE_READ_ONLY));
}

TEST(AtSpiElement, whatCallsItselfEditableIsEditableWhateverItIs)
{
    EXPECT_EQ(describeElement(ATSPI_ROLE_TEXT, editable), element(true, "AXTextField"));
    EXPECT_EQ(describeElement(ATSPI_ROLE_TEXT, editable | multiLine), element(true, "AXTextArea"));
    EXPECT_EQ(describeElement(ATSPI_ROLE_HEADING, editable), element(true, "AXHeading"));
    EXPECT_EQ(describeElement(ATSPI_ROLE_PARAGRAPH, editable), element(true, "AXTextArea"));
    EXPECT_EQ(describeElement(ATSPI_ROLE_TABLE_CELL, editable), element(true, "AXCell"));
    EXPECT_EQ(describeElement(ATSPI_ROLE_COMBO_BOX, editable), element(true, "AXComboBox"));
    EXPECT_EQ(describeElement(ATSPI_ROLE_SECTION, editable), element(true, "AXGroup"));
    EXPECT_EQ(describeElement(ATSPI_ROLE_UNKNOWN, editable), element(true, ""));
}

TEST(AtSpiElement, readOnlyGoesBeforeEditable)
{
    EXPECT_EQ(describeElement(ATSPI_ROLE_TEXT, editable | readOnly), element(false, "AXTextField"));
    EXPECT_EQ(describeElement(ATSPI_ROLE_SECTION, readOnly), element(false, "AXGroup"));
}

TEST(AtSpiElement, textThatDoesNotCallItselfEditableIsNot)
{
    EXPECT_EQ(describeElement(ATSPI_ROLE_TEXT, plain | multiLine), element(false, "AXTextArea"));
    EXPECT_EQ(describeElement(ATSPI_ROLE_ENTRY, plain), element(false, "AXTextField"));
    EXPECT_EQ(describeElement(ATSPI_ROLE_PASSWORD_TEXT, plain), element(false, "AXTextField"));
    EXPECT_EQ(describeElement(ATSPI_ROLE_LABEL, plain), element(false, "AXStaticText"));
    EXPECT_EQ(describeElement(ATSPI_ROLE_STATIC, plain), element(false, "AXStaticText"));
    EXPECT_EQ(describeElement(ATSPI_ROLE_HEADING, plain), element(false, "AXHeading"));
    EXPECT_EQ(describeElement(ATSPI_ROLE_PARAGRAPH, plain), element(false, "AXGroup"));
    EXPECT_EQ(describeElement(ATSPI_ROLE_DOCUMENT_WEB, plain), element(false, "AXWebArea"));
    EXPECT_EQ(describeElement(ATSPI_ROLE_DOCUMENT_FRAME, plain), element(false, "AXTextArea"));
}

TEST(AtSpiElement, whatTakesTextWithoutAWordAboutItIsUnknown)
{
    EXPECT_EQ(describeElement(ATSPI_ROLE_TERMINAL, plain), element(std::nullopt, "AXTextArea"));
    EXPECT_EQ(describeElement(ATSPI_ROLE_TERMINAL, readOnly), element(std::nullopt, "AXTextArea"));
    EXPECT_EQ(describeElement(ATSPI_ROLE_TABLE_CELL, plain), element(std::nullopt, "AXCell"));
    EXPECT_EQ(describeElement(ATSPI_ROLE_DOCUMENT_SPREADSHEET, plain),
              element(std::nullopt, "AXTable"));
    EXPECT_EQ(describeElement(ATSPI_ROLE_SPIN_BUTTON, plain),
              element(std::nullopt, "AXIncrementor"));
    EXPECT_EQ(describeElement(ATSPI_ROLE_COMBO_BOX, plain), element(std::nullopt, "AXPopUpButton"));
    EXPECT_EQ(describeElement(ATSPI_ROLE_CANVAS, plain), element(std::nullopt, "AXGroup"));
    EXPECT_EQ(describeElement(ATSPI_ROLE_FRAME, plain), element(std::nullopt, "AXWindow"));
    EXPECT_EQ(describeElement(ATSPI_ROLE_UNKNOWN, plain), element(std::nullopt, ""));
    EXPECT_EQ(describeElement(ATSPI_ROLE_INVALID, 0), element(std::nullopt, ""));
}

TEST(AtSpiElement, rolesOfALaterProtocolAreUnknown)
{
    EXPECT_EQ(describeElement(9999, plain), element(std::nullopt, ""));
}

struct ControlCase
{
    AtspiRole role;
    std::string_view expected;
};

class AtSpiControl : public ::testing::TestWithParam<ControlCase>
{
};

TEST_P(AtSpiControl, hasItsRoleAndSaysNothingOfEditing)
{
    EXPECT_EQ(describeElement(GetParam().role, plain), element(std::nullopt, GetParam().expected));
}

INSTANTIATE_TEST_SUITE_P(Roles, AtSpiControl,
                         ::testing::Values(ControlCase{ATSPI_ROLE_PUSH_BUTTON, "AXButton"},
                                           ControlCase{ATSPI_ROLE_PUSH_BUTTON_MENU, "AXMenuButton"},
                                           ControlCase{ATSPI_ROLE_CHECK_BOX, "AXCheckBox"},
                                           ControlCase{ATSPI_ROLE_TOGGLE_BUTTON, "AXCheckBox"},
                                           ControlCase{ATSPI_ROLE_RADIO_BUTTON, "AXRadioButton"},
                                           ControlCase{ATSPI_ROLE_PAGE_TAB, "AXRadioButton"},
                                           ControlCase{ATSPI_ROLE_MENU_ITEM, "AXMenuItem"},
                                           ControlCase{ATSPI_ROLE_CHECK_MENU_ITEM, "AXMenuItem"},
                                           ControlCase{ATSPI_ROLE_RADIO_MENU_ITEM, "AXMenuItem"},
                                           ControlCase{ATSPI_ROLE_LINK, "AXLink"},
                                           ControlCase{ATSPI_ROLE_IMAGE, "AXImage"},
                                           ControlCase{ATSPI_ROLE_ICON, "AXImage"},
                                           ControlCase{ATSPI_ROLE_SLIDER, "AXSlider"},
                                           ControlCase{ATSPI_ROLE_LIST, "AXList"},
                                           ControlCase{ATSPI_ROLE_LIST_BOX, "AXList"},
                                           ControlCase{ATSPI_ROLE_LIST_ITEM, "AXRow"},
                                           ControlCase{ATSPI_ROLE_TREE, "AXOutline"},
                                           ControlCase{ATSPI_ROLE_TREE_TABLE, "AXOutline"},
                                           ControlCase{ATSPI_ROLE_TABLE, "AXTable"}));

} // namespace
} // namespace zelvane::test
