#pragma once

#include "desktop/AccessibilityPermission.h"
#include "desktop/AppModel.h"
#include "desktop/HotKeyManager.h"
#include "desktop/OptionClickMenu.h"
#include "desktop/SelectionTranslation.h"
#include "main/Platform.h"
#include "main/ProgramCore.h"
#include "main/UserInterface.h"

#include <memory>

namespace zelvane {

/// The controller with all that it stands on in the desktop session, in the order in which it is
/// made.
class DesktopParts
{
public:
    /// A QApplication must exist. Both must outlive this object.
    DesktopParts(ProgramCore& core, Desktop& desktop);
    ~DesktopParts();

    [[nodiscard]] AppModel& model() { return m_model; }

private:
    void tellOfActivation();

    AccessibilityPermission m_permission;
    SelectionTranslation m_selection;
    HotKeyManager m_hotKeys;
    std::unique_ptr<OptionClickMenu> m_optionMenu;
    UserInterface m_interface;
    AppModel m_model;
    TrayItem m_tray;
};

} // namespace zelvane
