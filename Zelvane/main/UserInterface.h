#pragma once

#include "desktop/AlertPresenter.h"
#include "desktop/AppModel.h"
#include "desktop/AppModelWindows.h"
#include "foundation/Clock.h"
#include "settings/AppSettings.h"
#include "settings/UserDefaults.h"

#include <QString>

#include <memory>

namespace zelvane {

/// The program's windows, with this platform's adapters behind them.
class UserInterface final : public AppModelWindows
{
public:
    /// A QApplication must exist. All must outlive this object.
    UserInterface(UserDefaults& defaults, const AppSettings& settings);
    ~UserInterface() override;

    [[nodiscard]] AlertPresenter& alerts();

    void presentTranslationResult(const QString& original, const QString& translated,
                                  const QString& diagnostics) override;
    void showManualTranslationWindow() override;
    void showOnboarding() override;
    void promptOnLaunchIfNeeded() override;

private:
    friend class TrayItem;

    struct Parts;
    std::unique_ptr<Parts> m_parts;
};

/// The program's item in the tray, which appears as soon as there is one.
class TrayItem
{
public:
    /// All must outlive this object.
    TrayItem(UserInterface& interface, const AppSettings& settings, AppModel& model, Clock& clock);
    ~TrayItem();
    Q_DISABLE_COPY_MOVE(TrayItem)

private:
    struct Parts;
    std::unique_ptr<Parts> m_parts;
};

} // namespace zelvane
