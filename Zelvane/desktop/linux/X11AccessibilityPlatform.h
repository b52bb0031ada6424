#pragma once

#include "desktop/AccessibilityPermission.h"
#include "desktop/linux/X11Session.h"

#include <functional>

namespace zelvane {

/// X asks nobody for a permission: a program that reaches the server with its extensions may press
/// keys and watch for them. Servers that keep programs apart show it when a listener is made.
class X11AccessibilityPlatform final : public AccessibilityPlatform
{
public:
    /// `session` is null if none could be opened, else it must outlive this object. `onPrompt`
    /// tells the user what is missing.
    X11AccessibilityPlatform(X11Session* session, std::function<void()> onPrompt);

    [[nodiscard]] bool isProcessTrusted() const override;
    [[nodiscard]] bool probeEventTap() override;
    void showPrompt() override;
    void relaunch() override;

private:
    [[nodiscard]] bool listenForKeys(bool listen);

    X11Session* m_session;
    std::function<void()> m_onPrompt;
};

} // namespace zelvane
