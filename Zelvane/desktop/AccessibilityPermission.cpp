#include "desktop/AccessibilityPermission.h"

#include "desktop/Logging.h"

namespace zelvane {

namespace {

using std::chrono::milliseconds;

constexpr milliseconds promptPause{2500};

// The prompt comes when the settings window, which explains it, has had time to appear.
constexpr milliseconds launchSettle{150};
constexpr milliseconds launchDelay{550};
constexpr milliseconds onboardingSettle{250};
constexpr milliseconds onboardingDelay{1400};

const QString relaunchFlag = QStringLiteral("Zelvane.promptAccessibilityOnLaunch");

QCoro::Task<void> runLater(Clock& clock, milliseconds delay, std::function<void()> step,
                           std::stop_token stop)
{
    co_await clock.sleep(delay, stop);
    step();
}

} // namespace

AccessibilityPermission::AccessibilityPermission(AccessibilityPlatform& platform,
                                                 SettingsWindow& settings, UserDefaults& defaults,
                                                 Clock& clock)
    : m_platform(platform)
    , m_settings(settings)
    , m_defaults(defaults)
    , m_clock(clock)
{
}

bool AccessibilityPermission::isEffectivelyTrusted() const
{
    return m_platform.isProcessTrusted() && m_platform.probeEventTap();
}

AccessibilityPermission::State AccessibilityPermission::currentState() const
{
    if (!m_platform.isProcessTrusted()) {
        return State::denied;
    }
    return m_platform.probeEventTap() ? State::granted : State::stale;
}

void AccessibilityPermission::requestPrompt()
{
    const auto now = m_clock.monotonicNow();
    if (m_lastPromptAt && now - *m_lastPromptAt < promptPause) {
        qCInfo(accessibilityLog, "skipping duplicate Accessibility prompt");
        return;
    }
    m_lastPromptAt = now;
    m_platform.showPrompt();
}

void AccessibilityPermission::schedulePrompt()
{
    if (m_promptScheduled) {
        return;
    }
    if (isEffectivelyTrusted()) {
        m_focusAccessibilitySection = false;
        return;
    }
    if (m_onboardingVisible) {
        return;
    }
    m_promptScheduled = true;
    qCInfo(accessibilityLog, "scheduling Accessibility prompt in %fs",
           std::chrono::duration<double>(m_promptDelay).count());
    later(m_promptDelay, &AccessibilityPermission::firePrompt);
}

void AccessibilityPermission::firePrompt()
{
    if (isEffectivelyTrusted()) {
        m_focusAccessibilitySection = false;
        return;
    }
    if (m_onboardingVisible) {
        m_promptScheduled = false;
        return;
    }
    if (!m_platform.isProcessTrusted()) {
        requestPrompt();
        return;
    }
    // The system says yes: asking again would show nothing. The permission may just have come.
    if (m_platform.probeEventTap()) {
        m_focusAccessibilitySection = false;
    }
}

void AccessibilityPermission::promptOnLaunchIfNeeded()
{
    // A relaunch takes the same path as any other launch.
    if (m_defaults.value(relaunchFlag)) {
        m_defaults.remove(relaunchFlag);
    }
    if (!isEffectivelyTrusted()) {
        promptInSettings(std::nullopt, launchSettle, launchDelay);
    }
}

void AccessibilityPermission::promptFromOnboarding()
{
    if (!isEffectivelyTrusted()) {
        m_focusAccessibilitySection = true;
        promptInSettings(SettingsWindow::PendingSection::accessibility, onboardingSettle,
                         onboardingDelay);
    }
}

void AccessibilityPermission::promptInSettings(
    std::optional<SettingsWindow::PendingSection> section, milliseconds settle, milliseconds delay)
{
    m_promptDelay = delay;
    m_promptScheduled = false;
    m_settings.installCloseObserver();
    m_settings.requestOpen(section);
    later(settle, &AccessibilityPermission::schedulePrompt);
}

void AccessibilityPermission::later(milliseconds delay, void (AccessibilityPermission::*step)())
{
    const auto take = [this, step] { (this->*step)(); };
    m_tasks.start([this, delay, take](std::stop_token stop) {
        return runLater(m_clock, delay, take, std::move(stop));
    });
}

void AccessibilityPermission::relaunch()
{
    m_defaults.setValue(relaunchFlag, true);
    m_platform.relaunch();
}

} // namespace zelvane
