#pragma once

#include "desktop/AccessibilityPermission.h"
#include "desktop/linux/X11Session.h"

#include <functional>

namespace zelvane {

/// X asks nobody for a permission: a program that reaches the server with its extensions may press
/// keys and watch for them. Servers that keep programs apart show it when a grab is made.
class X11AccessibilityPlatform final : public AccessibilityPlatform
{
public:
    struct Actions
    {
        /// Tells the user what is missing.
        std::function<void()> showPrompt;
        /// Starts the program anew when this one has ended, and ends it.
        std::function<void()> relaunch;
    };

    /// `session` is null if none could be opened, else it must outlive this object.
    X11AccessibilityPlatform(X11Session* session, Actions actions);

    [[nodiscard]] bool isProcessTrusted() const override;
    [[nodiscard]] bool probeEventTap() override;
    void showPrompt() override { m_actions.showPrompt(); }
    void relaunch() override { m_actions.relaunch(); }

private:
    X11Session* m_session;
    Actions m_actions;
};

} // namespace zelvane
