#pragma once

#include <QString>

namespace zelvane {

/// The windows that the controller opens. Main thread; no call waits for the window.
class AppModelWindows
{
public:
    AppModelWindows() = default;
    virtual ~AppModelWindows() = default;
    Q_DISABLE_COPY_MOVE(AppModelWindows)

    /// Opens the result popup, in place of one that is open.
    virtual void presentTranslationResult(const QString& original, const QString& translated,
                                          const QString& diagnostics) = 0;
    virtual void showManualTranslationWindow() = 0;
    /// The first launch's introduction.
    virtual void showOnboarding() = 0;
    /// A later launch: asks for the permission if it is missing.
    virtual void promptOnLaunchIfNeeded() = 0;
};

} // namespace zelvane
