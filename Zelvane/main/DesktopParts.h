#pragma once

#include "desktop/AccessibilityPermission.h"
#include "desktop/AppModel.h"
#include "desktop/ApplicationShell.h"
#include "desktop/HotKeyManager.h"
#include "desktop/OptionClickMenuManager.h"
#include "desktop/SelectionTranslation.h"
#include "desktop/SettingsWindow.h"
#include "main/Platform.h"
#include "main/ProgramCore.h"
#include "main/UserInterface.h"

namespace zelvane {

/// The controller with all that it stands on in the desktop session, in the order in which it is
/// made.
class DesktopParts
{
public:
    /// A QApplication must exist. Both must outlive this object.
    DesktopParts(ProgramCore& core, Desktop& desktop);
    ~DesktopParts();

    /// Begins the program's work, in its order.
    void launch() { m_shell.didFinishLaunching(); }

    /// Shows the page that says what this session lets the program do.
    void showPermission();

    [[nodiscard]] AppModel& model() { return m_model; }
    [[nodiscard]] ApplicationShell& shell() { return m_shell; }

private:
    void tellOfActivation();
    [[nodiscard]] ApplicationShell::LaunchSteps launchSteps();

    ProgramCore& m_core;
    UserInterface m_interface;
    SettingsWindow m_settingsWindow;
    AccessibilityPermission m_permission;
    SelectionTranslation m_selection;
    HotKeyManager m_hotKeys;
    OptionClickMenuManager m_optionMenu;
    AppModel m_model;
    std::unique_ptr<TrayItem> m_tray;
    ApplicationShell m_shell;
};

} // namespace zelvane
