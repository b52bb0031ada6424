#pragma once

#include "desktop/ActivationPolicy.h"
#include "desktop/AlertPresenter.h"
#include "desktop/AppModel.h"
#include "desktop/AppModelWindows.h"
#include "desktop/ApplicationWindows.h"
#include "desktop/Notifications.h"
#include "desktop/OptionMenuPresenter.h"
#include "foundation/Clock.h"
#include "pipeline/TranslationDispatch.h"
#include "pipeline/TranslationTrace.h"
#include "settings/AppSettings.h"
#include "settings/UserDefaults.h"
#include "ui/menubar/MenuBarActions.h"
#include "ui/onboarding/OnboardingWindow.h"

#include <QBindable>
#include <QString>

#include <functional>
#include <memory>
#include <optional>

namespace zelvane {

class Theme;

/// The program's windows, with this platform's adapters behind them.
class UserInterface final : public AppModelWindows
{
public:
    /// A QApplication must exist. All must outlive this object.
    UserInterface(UserDefaults& defaults, AppSettings& settings, TranslationDispatch& dispatch,
                  TranslationTrace& trace, Clock& clock);
    ~UserInterface() override;

    [[nodiscard]] AlertPresenter& alerts();
    [[nodiscard]] ApplicationWindows& windows();
    [[nodiscard]] ActivationPolicy& activationPolicy();
    [[nodiscard]] OptionMenuPresenter& optionMenu();
    /// Forgets where the user left the windows, and moves those that are open to the middle.
    void resetWindowLocations();
    /// The translation window while it is open.
    [[nodiscard]] std::optional<ApplicationWindow::Id> manualWindow() const;
    /// The introduction while it is open.
    [[nodiscard]] std::optional<ApplicationWindow::Id> onboardingWindow() const;
    [[nodiscard]] const Theme& theme() const;
    [[nodiscard]] Notifications& notifications();
    /// Whether the desktop has a place for tray icons.
    [[nodiscard]] QBindable<bool> trayAvailable() const;

    /// What the introduction does to the rest of the program. To be called before it is shown.
    void setOnboardingLinks(OnboardingWindow::Links links);
    /// What a launch after the introduction was seen does about the permission.
    void setPromptOnLaunch(std::function<void()> prompt) { m_promptOnLaunch = std::move(prompt); }

    /// Whether a launch may show the introduction at all; so it is until told otherwise.
    void setShowsOnboarding(bool shows) { m_showsOnboarding = shows; }

    void presentTranslationResult(const QString& original, const QString& translated,
                                  const QString& diagnostics) override;
    void showManualTranslationWindow() override;
    void showOnboarding() override;
    void promptOnLaunchIfNeeded() override;

private:
    friend class TrayItem;

    struct Parts;
    std::unique_ptr<Parts> m_parts;
    std::function<void()> m_promptOnLaunch = [] {};
    bool m_showsOnboarding = true;
};

/// The program's item in the tray, which appears as soon as there is one.
class TrayItem
{
public:
    /// All must outlive this object.
    TrayItem(UserInterface& interface, const AppSettings& settings, AppModel& model, Clock& clock,
             MenuBarActions actions);
    ~TrayItem();
    Q_DISABLE_COPY_MOVE(TrayItem)

    /// Whether there is a tray for the item to show in.
    [[nodiscard]] bool isInTray() const;
    /// Opens what a click on the item opens, at the pointer where there is no tray.
    void openPanel();

private:
    struct Parts;
    std::unique_ptr<Parts> m_parts;
};

} // namespace zelvane
