#pragma once

#include "foundation/Clock.h"
#include "settings/UserDefaults.h"

#include <chrono>
#include <functional>
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

/// Decides whether posted keys take effect, and asks for the permission without asking twice.
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
    AccessibilityPermission(AccessibilityPlatform& platform, UserDefaults& defaults,
                            const Clock& clock);

    [[nodiscard]] bool isEffectivelyTrusted() const;
    [[nodiscard]] State currentState() const;

    /// Shows the system's prompt, at most once in 2.5 seconds.
    void requestPrompt();

    void relaunch();

private:
    AccessibilityPlatform& m_platform;
    UserDefaults& m_defaults;
    const Clock& m_clock;
    std::optional<std::chrono::nanoseconds> m_lastPromptAt;
};

} // namespace zelvane
