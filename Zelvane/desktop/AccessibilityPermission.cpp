#include "desktop/AccessibilityPermission.h"

#include "desktop/Logging.h"

namespace zelvane {

namespace {

constexpr std::chrono::milliseconds promptPause{2500};

} // namespace

AccessibilityPermission::AccessibilityPermission(AccessibilityPlatform& platform,
                                                 UserDefaults& defaults, const Clock& clock)
    : m_platform(platform)
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

void AccessibilityPermission::relaunch()
{
    m_defaults.setValue(QStringLiteral("Zelvane.promptAccessibilityOnLaunch"), true);
    m_platform.relaunch();
}

} // namespace zelvane
