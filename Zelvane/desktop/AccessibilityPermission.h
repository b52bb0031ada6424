#pragma once

#include "desktop/SettingsWindow.h"
#include "foundation/Clock.h"
#include "foundation/TaskScope.h"
#include "settings/UserDefaults.h"

#include <chrono>
#include <optional>

namespace zelvane {

/// The platform's answers about this program's right to post keys and to watch input. Main thread.
class AccessibilityPlatform
{
public:
    AccessibilityPlatform() = default;
    virtual ~AccessibilityPlatform() = default;
    Q_DISABLE_COPY_MOVE(AccessibilityPlatform)

    /// Whether the system says that this program may.
    [[nodiscard]] virtual bool isProcessTrusted() const = 0;
    /// Whether it really can: makes a listener for input and removes it again.
    [[nodiscard]] virtual bool probeEventTap() = 0;
    /// Asks the user for the permission, in whatever way the platform has.
    virtual void showPrompt() = 0;
    /// Starts a new instance of this program and then ends this one, even if the start failed.
    virtual void relaunch() = 0;
};

/// Decides whether posted keys take effect, and asks for the permission at sensible times without
/// asking twice. Main thread.
class AccessibilityPermission
{
public:
    enum class State {
        granted,
        denied,
        /// The system says yes while it still blocks the program.
        stale,
    };

    /// All must outlive this object.
    AccessibilityPermission(AccessibilityPlatform& platform, SettingsWindow& settings,
                            UserDefaults& defaults, Clock& clock);
    Q_DISABLE_COPY_MOVE(AccessibilityPermission)

    [[nodiscard]] bool isEffectivelyTrusted() const;
    [[nodiscard]] State currentState() const;

    /// Shows the system's prompt, at most once in 2.5 seconds.
    void requestPrompt();
    /// Arms the prompt, unless one has been armed since the last of the two paths below.
    void schedulePrompt();
    /// At a launch after the introduction was seen: opens the settings and arms the prompt if the
    /// permission is missing.
    void promptOnLaunchIfNeeded();
    /// The same at the end of the introduction, with the section about the permission in view.
    void promptFromOnboarding();

    /// Starts a new instance of the program and ends this one.
    void relaunch();

    /// Whether settings must show the section about the permission, and leave the prompt alone.
    [[nodiscard]] bool focusAccessibilitySection() const { return m_focusAccessibilitySection; }
    void clearFocusAccessibilitySection() { m_focusAccessibilitySection = false; }

    /// Whether the introduction is on the screen. No armed prompt comes meanwhile.
    void setOnboardingVisible(bool visible) { m_onboardingVisible = visible; }

private:
    void promptInSettings(std::optional<SettingsWindow::PendingSection> section,
                          std::chrono::milliseconds settle, std::chrono::milliseconds delay);
    void firePrompt();
    void later(std::chrono::milliseconds delay, void (AccessibilityPermission::*step)());

    AccessibilityPlatform& m_platform;
    SettingsWindow& m_settings;
    UserDefaults& m_defaults;
    Clock& m_clock;

    std::chrono::milliseconds m_promptDelay{450};
    /// Stays set after the prompt, so that settings that appear again arm no second one.
    bool m_promptScheduled = false;
    std::optional<std::chrono::nanoseconds> m_lastPromptAt;
    bool m_focusAccessibilitySection = false;
    bool m_onboardingVisible = false;
    TaskScope m_tasks;
};

} // namespace zelvane
