#include "desktop/ApplicationShell.h"

#include <algorithm>
#include <utility>

namespace zelvane {

ApplicationShell::ApplicationShell(ApplicationWindows& windows, ActivationPolicy& policy,
                                   SettingsWindow& settings, AccessibilityPermission& permission,
                                   LaunchSteps steps, OtherWindows others)
    : m_windows(windows)
    , m_policy(policy)
    , m_settings(settings)
    , m_permission(permission)
    , m_steps(std::move(steps))
    , m_others(std::move(others))
{
}

void ApplicationShell::didFinishLaunching()
{
    m_policy.set(ActivationPolicy::Kind::accessory);
    m_settings.installPolicyObservers();
    m_steps.makeMenuBar();
    m_steps.startHostedSynchronisation();
    m_steps.deleteRetiredModels();
    m_steps.stopSmartEngines();
    m_steps.stopLocalEngines();
}

bool ApplicationShell::shouldHandleReopen()
{
    m_windows.activateApplication();
    if (const auto onboarding = visible(m_others.onboarding)) {
        m_windows.activateApplication();
        m_windows.makeKeyAndOrderFront(*onboarding);
    } else if (const auto manual = visible(m_others.manual)) {
        m_policy.set(ActivationPolicy::Kind::regular);
        m_windows.activateApplication();
        m_windows.makeKeyAndOrderFront(*manual);
        m_settings.updateActivationPolicy();
    } else {
        m_settings.bringSettingsToFront();
    }
    return false;
}

void ApplicationShell::settingsDisappeared()
{
    m_permission.clearFocusAccessibilitySection();
    m_settings.contentDisappeared();
}

std::optional<ApplicationWindow::Id>
ApplicationShell::visible(const std::function<std::optional<ApplicationWindow::Id>()>& window) const
{
    const auto id = window();
    const bool shows =
        id && std::ranges::any_of(m_windows.windows(), [&](const ApplicationWindow& own) {
            return own.id == *id && own.isVisible;
        });
    return shows ? id : std::nullopt;
}

} // namespace zelvane
