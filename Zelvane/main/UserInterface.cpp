#include "main/UserInterface.h"

#include "main/Platform.h"
#include "pipeline/Prompts.h"
#include "ui/alert/AlertWindowPresenter.h"
#include "ui/components/Observe.h"
#include "ui/linux/BusNotifications.h"
#include "ui/linux/LinuxAppearance.h"
#include "ui/linux/TrayWatcher.h"
#include "ui/linux/X11WindowSystem.h"
#include "ui/linux/XcbSession.h"
#include "ui/manual/ManualTranslationWindow.h"
#include "ui/menubar/MenuBarController.h"
#include "ui/menubar/MenuBarModel.h"
#include "ui/optionmenu/OptionMenuPopup.h"
#include "ui/panel/ScreenWatch.h"
#include "ui/panel/WindowOrigins.h"
#include "ui/result/ResultPopup.h"
#include "ui/sheets/KeyCapture.h"
#include "ui/shell/WidgetActivationPolicy.h"
#include "ui/shell/WidgetWindows.h"
#include "ui/style/DesktopAppearance.h"
#include "ui/style/InterfaceStyle.h"
#include "ui/style/StyleTweaker.h"
#include "ui/style/Theme.h"

#include <QClipboard>
#include <QCoreApplication>
#include <QDBusConnection>
#include <QEvent>
#include <QGuiApplication>
#include <utility>

namespace zelvane {

namespace {

/// Translates what the user typed, always with the prompt of the settings. The references must
/// outlive the task.
QCoro::Task<QString> translateTyped(const AppSettings& settings, TranslationDispatch& dispatch,
                                    QString text, QString source, QString target,
                                    std::stop_token stop)
{
    const QString prompt = renderPrompt(settings.promptTemplate(), source, target);
    TranslationRequest request = dispatch.makeTranslationRequest(text, source, target, prompt);
    const QString translated = co_await dispatch.runRequest(std::move(request), stop);
    co_return translated;
}

} // namespace

struct UserInterface::Parts
{
    Parts(UserDefaults& defaults, AppSettings& settings, TranslationDispatch& dispatch,
          TranslationTrace& trace, Clock& clock)
        : linuxAppearance(appearance, QDBusConnection::sessionBus())
        , tray(QDBusConnection::sessionBus())
        , notifications(QDBusConnection::sessionBus())
        , theme(tokens, appearance)
        , windows(sessionWindowSystem())
        , widgets(*windows)
        , policy(widgets, *windows)
        , origins(defaults, systemScreens())
        , alerts(theme, *windows, origins)
        , optionMenu(fromServerPixels)
        , popup(theme, *windows, origins, settings)
        , manual(theme, *windows, origins, settings, trace,
                 {[&settings, &dispatch](QString text, QString source, QString target,
                                         std::stop_token stop) {
                      return translateTyped(settings, dispatch, std::move(text), std::move(source),
                                            std::move(target), std::move(stop));
                  },
                  [](const QString& text) { QGuiApplication::clipboard()->setText(text); }})
        , onboarding(theme, *windows, origins, settings, clock)
    {
        dressApplication(theme);
        installKeyTranslation(virtualCodeOfKeyEvent);
        observe(&appearance, settings.bindableAppLanguage(), [](AppLanguage) {
            // Every window that is open puts its texts anew.
            QCoreApplication::postEvent(qApp, new QEvent(QEvent::LanguageChange));
        });
    }

    StyleTweaker tokens;
    DesktopAppearance appearance;
    LinuxAppearance linuxAppearance;
    TrayWatcher tray;
    BusNotifications notifications;
    Theme theme;
    std::unique_ptr<WindowSystem> windows;
    WidgetWindows widgets;
    WidgetActivationPolicy policy;
    WindowOrigins origins;
    ScreenWatch screenWatch{systemScreens()};
    AlertWindowPresenter alerts;
    OptionMenuPopup optionMenu;
    ResultPopup popup;
    ManualTranslationWindow manual;
    OnboardingWindow onboarding;
};

UserInterface::UserInterface(UserDefaults& defaults, AppSettings& settings,
                             TranslationDispatch& dispatch, TranslationTrace& trace, Clock& clock)
    : m_parts(std::make_unique<Parts>(defaults, settings, dispatch, trace, clock))
{
}

UserInterface::~UserInterface() = default;

AlertPresenter& UserInterface::alerts()
{
    return m_parts->alerts;
}

ApplicationWindows& UserInterface::windows()
{
    return m_parts->widgets;
}

ActivationPolicy& UserInterface::activationPolicy()
{
    return m_parts->policy;
}

const Theme& UserInterface::theme() const
{
    return m_parts->theme;
}

Notifications& UserInterface::notifications()
{
    return m_parts->notifications;
}

QBindable<bool> UserInterface::trayAvailable() const
{
    return m_parts->tray.bindableAvailable();
}

OptionMenuPresenter& UserInterface::optionMenu()
{
    return m_parts->optionMenu;
}

void UserInterface::presentTranslationResult(const QString& original, const QString& translated,
                                             const QString& diagnostics)
{
    m_parts->popup.presentTranslationResult(original, translated, diagnostics);
}

void UserInterface::showManualTranslationWindow()
{
    m_parts->manual.showManualTranslationWindow();
}

void UserInterface::resetWindowLocations()
{
    m_parts->origins.resetWindowOrigins();
    m_parts->manual.resizeManualTranslationWindow();
    m_parts->popup.resizeTranslationResult();
}

std::optional<ApplicationWindow::Id> UserInterface::manualWindow() const
{
    TranslatorKeyablePanel* panel = m_parts->manual.panel();
    return panel ? std::optional(m_parts->widgets.idOf(*panel)) : std::nullopt;
}

std::optional<ApplicationWindow::Id> UserInterface::onboardingWindow() const
{
    TranslatorKeyablePanel* panel = m_parts->onboarding.panel();
    return panel ? std::optional(m_parts->widgets.idOf(*panel)) : std::nullopt;
}

void UserInterface::setOnboardingLinks(OnboardingWindow::Links links)
{
    m_parts->onboarding.setLinks(std::move(links));
}

void UserInterface::showOnboarding()
{
    if (m_showsOnboarding) {
        m_parts->onboarding.showOnboarding();
    }
}

void UserInterface::promptOnLaunchIfNeeded()
{
    m_promptOnLaunch();
}

struct TrayItem::Parts
{
    Parts(UserInterface::Parts& interface, const AppSettings& settings, AppModel& appModel,
          Clock& clock, MenuBarActions actions)
        : available(interface.tray.bindableAvailable())
        , model(settings, appModel.bindableStatus(), appModel.bindableIsBusy())
        , controller(model, interface.theme, clock, interface.tray.bindableAvailable(),
                     std::move(actions))
    {
    }

    QBindable<bool> available;
    MenuBarModel model;
    MenuBarController controller;
};

TrayItem::TrayItem(UserInterface& interface, const AppSettings& settings, AppModel& model,
                   Clock& clock, MenuBarActions actions)
    : m_parts(
          std::make_unique<Parts>(*interface.m_parts, settings, model, clock, std::move(actions)))
{
}

TrayItem::~TrayItem() = default;

bool TrayItem::isInTray() const
{
    return m_parts->available.value();
}

void TrayItem::openPanel()
{
    if (!m_parts->controller.panel()) {
        m_parts->controller.togglePanel();
    }
}

} // namespace zelvane
