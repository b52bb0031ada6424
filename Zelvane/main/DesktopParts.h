#pragma once

#include "desktop/AccessibilityPermission.h"
#include "desktop/AppModel.h"
#include "desktop/ApplicationShell.h"
#include "desktop/HotKeyManager.h"
#include "desktop/OptionClickMenuManager.h"
#include "desktop/ProgramControl.h"
#include "desktop/SelectionTranslation.h"
#include "desktop/ServicesProvider.h"
#include "desktop/SettingsWindow.h"
#include "desktop/StartAtLogin.h"
#include "desktop/TrayAbsence.h"
#include "main/Platform.h"
#include "main/ProgramCore.h"
#include "main/SettingsScene.h"
#include "main/UserInterface.h"

namespace zelvane {

/// The controller with all that it stands on in the desktop session, in the order in which it is
/// made.
class DesktopParts
{
public:
    /// How the program was started.
    enum class Start {
        byUser,
        /// With the session: no window opens that nobody asked for.
        quiet,
    };

    /// A QApplication must exist. Both must outlive this object. `loginCommand` starts this program
    /// with the session.
    DesktopParts(ProgramCore& core, Desktop& desktop, Start start, const QStringList& loginCommand);
    ~DesktopParts();

    /// Begins the program's work, in its order.
    void launch();

    /// Shows the page that says what this session lets the program do.
    void showPermission();

    [[nodiscard]] AppModel& model() { return m_model; }
    [[nodiscard]] ApplicationShell& shell() { return m_shell; }
    [[nodiscard]] ServicesProvider& services() { return m_services; }
    [[nodiscard]] ProgramControl& control() { return m_control; }

private:
    void tellOfActivation();
    void watchTray();
    [[nodiscard]] ApplicationShell::LaunchSteps launchSteps();
    [[nodiscard]] ProgramControl::Actions controlActions();
    [[nodiscard]] MenuBarActions menuBarActions();
    [[nodiscard]] OnboardingWindow::Links onboardingLinks();

    ProgramCore& m_core;
    Start m_start;
    bool m_opensSettingsAfterwards = false; ///< after the introduction
    UserInterface m_interface;
    SettingsWindow m_settingsWindow;
    AccessibilityPermission m_permission;
    SelectionTranslation m_selection;
    HotKeyManager m_hotKeys;
    OptionClickMenuManager m_optionMenu;
    AppModel m_model;
    std::unique_ptr<TrayItem> m_tray;
    ApplicationShell m_shell;
    SettingsScene m_settingsScene;
    std::unique_ptr<TrayAbsence> m_trayAbsence;
    ServicesProvider m_services;
    ProgramControl m_control;
    std::unique_ptr<LoginItem> m_loginItem;
    StartAtLogin m_startAtLogin;
};

} // namespace zelvane
