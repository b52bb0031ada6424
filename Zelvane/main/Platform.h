#pragma once

#include "desktop/AccessibilityPermission.h"
#include "desktop/FocusInspector.h"
#include "desktop/HotKeyRegistrar.h"
#include "desktop/KeystrokePoster.h"
#include "desktop/MouseTap.h"
#include "desktop/Pasteboard.h"
#include "foundation/Clock.h"
#include "settings/SecretBackend.h"

#include <QString>

#include <expected>
#include <functional>
#include <memory>
#include <optional>

namespace zelvane {

/// The desktop that the program runs on, through this platform's adapters.
class Desktop
{
public:
    Desktop() = default;
    virtual ~Desktop() = default;
    Q_DISABLE_COPY_MOVE(Desktop)

    [[nodiscard]] virtual Pasteboard& pasteboard() = 0;
    [[nodiscard]] virtual KeystrokePoster& keystrokes() = 0;
    [[nodiscard]] virtual HotKeyRegistrar& hotKeys() = 0;
    [[nodiscard]] virtual FocusInspector& focus() = 0;
    [[nodiscard]] virtual MouseTap& mouseTap() = 0;
    [[nodiscard]] virtual AccessibilityPlatform& accessibility() = 0;

    /// What the desktop lacks, and what works all the same, in a sentence; none while nothing is
    /// known to be missing.
    [[nodiscard]] virtual std::optional<QString> shortcoming() const = 0;
};

/// The user's store of secrets.
[[nodiscard]] std::unique_ptr<SecretBackend> openSecretStore();

/// Why this session can't show windows, and what works all the same, in a sentence; none if it can.
/// To be asked before the application object is made, which ends the process in that case.
[[nodiscard]] std::optional<QString> whyNoWindows();

/// The session's desktop. The error is a sentence about what is missing and what still works.
/// `showPrompt` tells the user how to let the program press keys. `clock` must outlive the desktop.
[[nodiscard]] std::expected<std::unique_ptr<Desktop>, QString>
openDesktop(Clock& clock, std::function<void()> showPrompt);

} // namespace zelvane
