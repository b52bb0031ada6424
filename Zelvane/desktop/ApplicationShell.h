#pragma once

#include "desktop/AccessibilityPermission.h"
#include "desktop/SettingsWindow.h"

#include <functional>
#include <optional>

namespace zelvane {

/// What stands around the controller: the order of the launch, and the answer to a user who starts
/// the program while it runs. Main thread.
class ApplicationShell
{
public:
    /// What a launch does besides what the shell does itself. None may wait; each is called once.
    struct LaunchSteps
    {
        /// Makes the item in the tray.
        std::function<void()> makeMenuBar;
        std::function<void()> startHostedSynchronisation;
        /// Deletes the folders of models that the program no longer has.
        std::function<void()> deleteRetiredModels;
        /// Ends the warm-up and the server of each of the smart engines.
        std::function<void()> stopSmartEngines;
        std::function<void()> stopLocalEngines;
    };

    /// The windows that a reopening looks for; none while the window hasn't been made.
    struct OtherWindows
    {
        std::function<std::optional<ApplicationWindow::Id>()> onboarding;
        std::function<std::optional<ApplicationWindow::Id>()> manual;
    };

    /// All must outlive this object.
    ApplicationShell(ApplicationWindows& windows, ActivationPolicy& policy,
                     SettingsWindow& settings, AccessibilityPermission& permission,
                     LaunchSteps steps, OtherWindows others);
    Q_DISABLE_COPY_MOVE(ApplicationShell)

    void didFinishLaunching();

    /// Never: the program lives in the tray.
    [[nodiscard]] static bool shouldTerminateAfterLastWindowClosed() { return false; }

    /// The user has started the program again. Brings the window that is most likely meant to the
    /// front, if one is open. Always false: nothing else is to be opened.
    bool shouldHandleReopen();

    /// To be called when the content of the settings window has gone from the screen.
    void settingsDisappeared();

private:
    /// The window, if it is on the screen.
    [[nodiscard]] std::optional<ApplicationWindow::Id>
    visible(const std::function<std::optional<ApplicationWindow::Id>()>& window) const;

    ApplicationWindows& m_windows;
    ActivationPolicy& m_policy;
    SettingsWindow& m_settings;
    AccessibilityPermission& m_permission;
    LaunchSteps m_steps;
    OtherWindows m_others;
};

} // namespace zelvane
