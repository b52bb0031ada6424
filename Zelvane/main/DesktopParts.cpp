#include "main/DesktopParts.h"

#include <QApplication>
#include <QWindow>

#include <algorithm>
#include <utility>

namespace zelvane {

DesktopParts::DesktopParts(ProgramCore& core, Desktop& desktop, Start start,
                           const QStringList& loginCommand)
    : m_core(core)
    , m_start(start)
    , m_interface(core.defaults(), core.settings(), core.dispatch(), core.trace(), core.clock())
    , m_settingsWindow(m_interface.windows(), m_interface.activationPolicy(), core.clock(),
                       [this] { return m_settingsScene.openFirst(); })
    , m_permission(desktop.accessibility(), m_settingsWindow, core.defaults(), core.clock())
    , m_selection({core.settings(), m_permission, desktop.pasteboard(), desktop.keystrokes(),
                   desktop.focus(), core.dispatch(), core.trace(), core.clock()})
    , m_hotKeys(desktop.hotKeys())
    , m_optionMenu({core.settings(), m_permission, desktop.mouseTap(), m_interface.optionMenu(),
                    core.clock()})
    , m_model({core.settings(), m_selection, m_hotKeys, m_optionMenu, m_permission,
               m_interface.alerts(), m_interface, core.clock()})
    , m_shell(m_interface.windows(), m_interface.activationPolicy(), m_settingsWindow, m_permission,
              launchSteps(),
              {[this] { return m_interface.onboardingWindow(); },
               [this] { return m_interface.manualWindow(); }})
    , m_settingsScene(m_interface,
                      {core, m_settingsWindow, m_model, m_hotKeys, m_optionMenu, desktop,
                       m_permission, [this] { m_shell.settingsDisappeared(); }})
    , m_services({core.settings(), core.dispatch(), core.trace(), m_interface})
    , m_control({core.settings(), m_model, m_interface}, controlActions())
    , m_loginItem(openLoginItem(loginCommand, core.worker()))
    , m_startAtLogin(core.settings(), *m_loginItem)
{
    if (start == Start::byUser) {
        m_interface.setPromptOnLaunch([this] { m_permission.promptOnLaunchIfNeeded(); });
    }
    m_interface.setShowsOnboarding(start == Start::byUser);
    m_interface.setOnboardingLinks(onboardingLinks());
    tellOfActivation();
}

DesktopParts::~DesktopParts() = default;

void DesktopParts::launch()
{
    m_shell.didFinishLaunching();
    watchTray();
}

void DesktopParts::watchTray()
{
    const bool quiet = m_start == Start::quiet;
    const auto openSettings = [this, quiet] {
        if (m_interface.onboardingWindow()) {
            m_opensSettingsAfterwards = true; // they would take the keyboard from it
        } else if (!quiet) {
            m_settingsWindow.requestOpen();
        }
    };
    m_trayAbsence = std::make_unique<TrayAbsence>(
        m_interface.trayAvailable(), m_core.defaults(), m_core.clock(),
        quiet ? TrayAbsence::patienceAtLogin : TrayAbsence::patience,
        TrayAbsence::Ways{m_interface.notifications(), complain, openSettings});
}

ApplicationShell::LaunchSteps DesktopParts::launchSteps()
{
    return {
        .makeMenuBar =
            [this] {
                m_tray = std::make_unique<TrayItem>(m_interface, m_core.settings(), m_model,
                                                    m_core.clock(), menuBarActions());
            },
        .startHostedSynchronisation = [this] { m_core.hostedStartUp().start(); },
        .deleteRetiredModels = [this] { m_core.deleteRetiredModels(); },
        .stopSmartEngines = [this] { m_core.offlineEngines().stopAllOfflineEngines(); },
        .stopLocalEngines = [this] { m_core.offlineEngines().stopLocalEngines(); },
    };
}

OnboardingWindow::Links DesktopParts::onboardingLinks()
{
    return {
        .becomeAccessory =
            [this] {
                ActivationPolicy& policy = m_interface.activationPolicy();
                if (policy.current() != ActivationPolicy::Kind::accessory) {
                    policy.set(ActivationPolicy::Kind::accessory);
                }
            },
        .hideSettings = [this] { m_settingsWindow.hideSettings(); },
        .updateActivationPolicy = [this] { m_settingsWindow.updateActivationPolicy(); },
        .visibilityChanged = [this](bool visible) { m_permission.setOnboardingVisible(visible); },
        .afterwards =
            [this] {
                if (std::exchange(m_opensSettingsAfterwards, false)) {
                    m_settingsWindow.requestOpen();
                }
                m_permission.promptFromOnboarding();
            },
    };
}

void DesktopParts::showPermission()
{
    m_settingsWindow.requestOpen(SettingsWindow::PendingSection::accessibility);
}

ProgramControl::Actions DesktopParts::controlActions()
{
    return {
        .reopen = [this] { m_shell.shouldHandleReopen(); },
        .anyWindowIsVisible =
            [this] {
                return std::ranges::any_of(m_interface.windows().windows(),
                                           &ApplicationWindow::isVisible);
            },
        .hasTrayIcon = [this] { return m_tray && m_tray->isInTray(); },
        .openPanel =
            [this] {
                if (m_tray) {
                    m_tray->openPanel();
                }
            },
        .showSettings = [this] { m_settingsWindow.requestOpen(); },
    };
}

MenuBarActions DesktopParts::menuBarActions()
{
    return {
        .appeared =
            [this] {
                m_model.startHotKeys();
                m_optionMenu.setWanted(m_core.settings().optionRightClickMenu());
                m_model.refreshOptionMenuStatus();
            },
        .manualTranslation = [this] { m_interface.showManualTranslationWindow(); },
        .settings =
            [this] {
                m_settingsWindow.installCloseObserver();
                m_settingsWindow.requestOpen();
            },
        .quit = [this] { m_core.stop().begin(); },
    };
}

void DesktopParts::tellOfActivation()
{
    QObject::connect(qApp, &QGuiApplication::applicationStateChanged, &m_model,
                     [this](Qt::ApplicationState state) {
                         if (state == Qt::ApplicationActive) {
                             m_model.activated();
                             m_optionMenu.activated();
                         }
                     });
    QObject::connect(qApp, &QGuiApplication::focusWindowChanged, &m_model,
                     [this](const QWindow* window) {
                         if (window) {
                             m_model.activated();
                         }
                     });
}

} // namespace zelvane
