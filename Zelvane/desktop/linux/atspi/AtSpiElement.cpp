#include "desktop/linux/atspi/AtSpiElement.h"

#include "desktop/linux/atspi/AtSpiStates.h"

#include <atspi/atspi-constants.h>

namespace zelvane {

namespace {

/// The roles whose whole business is text, so that the state for "editable" can be believed also
/// where it is missing.
bool showsText(std::uint32_t role)
{
    switch (role) {
    case ATSPI_ROLE_TEXT:
    case ATSPI_ROLE_ENTRY:
    case ATSPI_ROLE_PASSWORD_TEXT:
    case ATSPI_ROLE_PARAGRAPH:
    case ATSPI_ROLE_BLOCK_QUOTE:
    case ATSPI_ROLE_ARTICLE:
    case ATSPI_ROLE_LABEL:
    case ATSPI_ROLE_STATIC:
    case ATSPI_ROLE_CAPTION:
    case ATSPI_ROLE_HEADING:
    case ATSPI_ROLE_HTML_CONTAINER:
    case ATSPI_ROLE_DOCUMENT_FRAME:
    case ATSPI_ROLE_DOCUMENT_TEXT:
    case ATSPI_ROLE_DOCUMENT_WEB:
    case ATSPI_ROLE_DOCUMENT_EMAIL:
        return true;
    default:
        return false;
    }
}

std::optional<bool> editability(std::uint32_t role, std::uint64_t states)
{
    if (role == ATSPI_ROLE_TERMINAL) {
        return std::nullopt; // its text is read-only, and yet it takes what is pasted
    }
    const bool isReadOnly = hasState(states, ATSPI_STATE_READ_ONLY);
    if (hasState(states, ATSPI_STATE_EDITABLE)) {
        return !isReadOnly;
    }
    return isReadOnly || showsText(role) ? std::optional(false) : std::nullopt;
}

std::string_view textRole(std::uint64_t states)
{
    return hasState(states, ATSPI_STATE_MULTI_LINE) ? "AXTextArea" : "AXTextField";
}

// One long table reads better than several short ones.
std::string_view appleRole(std::uint32_t role, std::uint64_t states)
{
    switch (role) {
    case ATSPI_ROLE_TEXT:
        return textRole(states);
    case ATSPI_ROLE_ENTRY:
    case ATSPI_ROLE_PASSWORD_TEXT:
    case ATSPI_ROLE_EDITBAR:
    case ATSPI_ROLE_AUTOCOMPLETE:
        return "AXTextField";
    case ATSPI_ROLE_TERMINAL:
        return "AXTextArea";
    case ATSPI_ROLE_LABEL:
    case ATSPI_ROLE_STATIC:
    case ATSPI_ROLE_CAPTION:
    case ATSPI_ROLE_ACCELERATOR_LABEL:
        return "AXStaticText";
    case ATSPI_ROLE_HEADING:
        return "AXHeading";
    case ATSPI_ROLE_IMAGE:
    case ATSPI_ROLE_ICON:
    case ATSPI_ROLE_DESKTOP_ICON:
    case ATSPI_ROLE_ANIMATION:
        return "AXImage";
    case ATSPI_ROLE_LINK:
        return "AXLink";
    case ATSPI_ROLE_MENU_ITEM:
    case ATSPI_ROLE_CHECK_MENU_ITEM:
    case ATSPI_ROLE_RADIO_MENU_ITEM:
    case ATSPI_ROLE_TEAROFF_MENU_ITEM:
        return "AXMenuItem";
    case ATSPI_ROLE_PUSH_BUTTON_MENU:
        return "AXMenuButton";
    case ATSPI_ROLE_CHECK_BOX:
    case ATSPI_ROLE_TOGGLE_BUTTON:
        return "AXCheckBox";
    case ATSPI_ROLE_RADIO_BUTTON:
    case ATSPI_ROLE_PAGE_TAB:
        return "AXRadioButton";
    case ATSPI_ROLE_PUSH_BUTTON:
        return "AXButton";
    case ATSPI_ROLE_COMBO_BOX:
        return hasState(states, ATSPI_STATE_EDITABLE) ? "AXComboBox" : "AXPopUpButton";
    case ATSPI_ROLE_SPIN_BUTTON:
        return "AXIncrementor";
    case ATSPI_ROLE_SLIDER:
    case ATSPI_ROLE_DIAL:
        return "AXSlider";
    case ATSPI_ROLE_SCROLL_BAR:
        return "AXScrollBar";
    case ATSPI_ROLE_TABLE:
    case ATSPI_ROLE_DOCUMENT_SPREADSHEET:
        return "AXTable";
    case ATSPI_ROLE_TABLE_CELL:
    case ATSPI_ROLE_COLUMN_HEADER:
    case ATSPI_ROLE_ROW_HEADER:
    case ATSPI_ROLE_TABLE_COLUMN_HEADER:
    case ATSPI_ROLE_TABLE_ROW_HEADER:
        return "AXCell";
    case ATSPI_ROLE_TREE:
    case ATSPI_ROLE_TREE_TABLE:
        return "AXOutline";
    case ATSPI_ROLE_LIST:
    case ATSPI_ROLE_LIST_BOX:
        return "AXList";
    case ATSPI_ROLE_LIST_ITEM:
    case ATSPI_ROLE_TREE_ITEM:
    case ATSPI_ROLE_TABLE_ROW:
        return "AXRow";
    case ATSPI_ROLE_HTML_CONTAINER:
    case ATSPI_ROLE_DOCUMENT_WEB:
    case ATSPI_ROLE_DOCUMENT_EMAIL:
        return "AXWebArea";
    case ATSPI_ROLE_DOCUMENT_FRAME:
    case ATSPI_ROLE_DOCUMENT_TEXT:
        return "AXTextArea";
    case ATSPI_ROLE_PARAGRAPH:
        return hasState(states, ATSPI_STATE_EDITABLE) ? "AXTextArea" : "AXGroup";
    case ATSPI_ROLE_MENU:
    case ATSPI_ROLE_POPUP_MENU:
        return "AXMenu";
    case ATSPI_ROLE_MENU_BAR:
        return "AXMenuBar";
    case ATSPI_ROLE_FRAME:
    case ATSPI_ROLE_WINDOW:
    case ATSPI_ROLE_DIALOG:
    case ATSPI_ROLE_ALERT:
    case ATSPI_ROLE_FILE_CHOOSER:
        return "AXWindow";
    case ATSPI_ROLE_APPLICATION:
        return "AXApplication";
    case ATSPI_ROLE_PANEL:
    case ATSPI_ROLE_FILLER:
    case ATSPI_ROLE_SECTION:
    case ATSPI_ROLE_GROUPING:
    case ATSPI_ROLE_FORM:
    case ATSPI_ROLE_ARTICLE:
    case ATSPI_ROLE_BLOCK_QUOTE:
    case ATSPI_ROLE_CANVAS:
    case ATSPI_ROLE_DRAWING_AREA:
        return "AXGroup";
    default:
        return {};
    }
}

} // namespace

AtSpiElement describeElement(std::uint32_t role, std::uint64_t states)
{
    return {.editable = editability(role, states), .role = appleRole(role, states)};
}

} // namespace zelvane
