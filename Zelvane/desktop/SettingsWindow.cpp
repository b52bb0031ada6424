#include "desktop/SettingsWindow.h"

#include <QDebug>
#include <QPointer>

#include <algorithm>
#include <utility>

namespace zelvane {

namespace {

using std::chrono::milliseconds;
using Kind = ActivationPolicy::Kind;

/// The desktop needs a moment to accept the program among the running ones before it lets it in
/// front, and the window another one to be there.
constexpr milliseconds policyWait{100};
constexpr milliseconds windowWait{200};

bool hasSettingsIdentifier(const ApplicationWindow& window)
{
    return window.identifier == SettingsWindow::olderIdentifier() ||
           window.identifier == SettingsWindow::identifier();
}

bool hasSettingsTitle(const ApplicationWindow& window)
{
    return window.title.contains(QStringLiteral("settings"), Qt::CaseInsensitive) ||
           window.title.contains(QStringLiteral("preferences"), Qt::CaseInsensitive);
}

} // namespace

QString SettingsWindow::identifier()
{
    return QStringLiteral("com.apple.SwiftUI.Settings");
}

QString SettingsWindow::olderIdentifier()
{
    return QStringLiteral("com_apple_SwiftUI_Settings_window");
}

SettingsWindow::SettingsWindow(ApplicationWindows& windows, ActivationPolicy& policy, Clock& clock,
                               std::function<bool()> openFirst)
    : m_windows(windows)
    , m_policy(policy)
    , m_clock(clock)
    , m_openFirst(std::move(openFirst))
{
}

void SettingsWindow::registerOpenAction(std::function<void()> action)
{
    m_openSettingsAction = std::move(action);
    if (std::exchange(m_presentAfterRegistration, false)) {
        present(m_requestedSection);
    }
}

void SettingsWindow::requestOpen(std::optional<PendingSection> section)
{
    m_requestedSection = section;
    if (m_openSettingsAction) {
        present(section);
    } else {
        m_presentAfterRegistration = true;
        openViaMenu();
    }
}

void SettingsWindow::present(std::optional<PendingSection> section)
{
    m_tasks.start([this, section](std::stop_token stop) {
        return presentWithAction(section, std::move(stop));
    });
}

QCoro::Task<void> SettingsWindow::presentWithAction(std::optional<PendingSection> section,
                                                    std::stop_token stop)
{
    m_pendingSection = section;
    m_settingsRequested = true;
    installCloseObserver();
    makeRegular();
    co_await m_clock.sleep(policyWait, stop);
    m_windows.activateApplication();
    if (m_openSettingsAction) {
        m_openSettingsAction();
    }
    co_await m_clock.sleep(windowWait, stop);
    if (!m_settingsRequested) {
        co_return; // the user has closed it meanwhile, and doesn't want it back
    }
    if (const auto window = findSettingsWindow()) {
        m_windows.makeKeyAndOrderFront(window->id);
        m_windows.orderFrontRegardless(window->id);
    }
}

void SettingsWindow::openViaMenu()
{
    m_settingsRequested = true;
    installCloseObserver();
    makeRegular();
    m_windows.activateApplication();
    if (!m_openFirst || !m_openFirst()) {
        qInfo("[Zelvane] could not open the Settings scene");
    }
}

std::optional<SettingsWindow::PendingSection> SettingsWindow::takePendingSection()
{
    return std::exchange(m_pendingSection, std::nullopt);
}

bool SettingsWindow::isSettingsWindow(const ApplicationWindow& window)
{
    return hasSettingsIdentifier(window) ||
           (window.isVisible && window.isTitled && hasSettingsTitle(window)) ||
           window.contentTypeName.contains(QStringLiteral("Settings"));
}

std::optional<ApplicationWindow> SettingsWindow::findSettingsWindow() const
{
    const QList<ApplicationWindow> windows = m_windows.windows();
    const auto found = std::ranges::find_if(windows, isSettingsWindow);
    return found == windows.end() ? std::nullopt : std::optional(*found);
}

bool SettingsWindow::bringSettingsToFront()
{
    const auto window = findSettingsWindow();
    if (!window || !window->isVisible) {
        return false;
    }
    m_settingsRequested = true;
    makeRegular();
    m_windows.makeKeyAndOrderFront(window->id);
    m_windows.orderFrontRegardless(window->id);
    return true;
}

void SettingsWindow::hideSettings()
{
    m_settingsRequested = false;
    for (const ApplicationWindow& window : m_windows.windows()) {
        if (hasSettingsIdentifier(window)) {
            m_windows.orderOut(window.id);
        }
    }
    updateActivationPolicy();
}

void SettingsWindow::contentDisappeared()
{
    m_settingsRequested = false;
    updateActivationPolicy();
}

void SettingsWindow::installPolicyObservers()
{
    if (std::exchange(m_watchesPolicy, true)) {
        return;
    }
    observe([this](std::optional<ApplicationWindow::Id> closing) { updateNowAndLater(closing); },
            [this] { updateNowAndLater(std::nullopt); });
    updateActivationPolicy();
}

void SettingsWindow::installCloseObserver()
{
    if (std::exchange(m_watchesClose, true)) {
        return;
    }
    observe([this](std::optional<ApplicationWindow::Id> closing) {
        const QList<ApplicationWindow> windows = m_windows.windows();
        const auto window = std::ranges::find_if(
            windows, [&](const ApplicationWindow& own) { return own.id == closing; });
        if (window != windows.end() && hasSettingsIdentifier(*window)) {
            m_settingsRequested = false;
            updateNowAndLater(closing);
        }
    });
}

void SettingsWindow::observe(
    const std::function<void(std::optional<ApplicationWindow::Id>)>& willClose,
    const std::function<void()>& becameKeyOrMain)
{
    // The windows that are open at the end go after this object, and tell of it.
    const QPointer owner(&m_queue);
    m_windows.addObserver({.becameKeyOrMain =
                               [owner, becameKeyOrMain] {
                                   if (owner) {
                                       becameKeyOrMain();
                                   }
                               },
                           .willClose =
                               [owner, willClose](std::optional<ApplicationWindow::Id> closing) {
                                   if (owner) {
                                       willClose(closing);
                                   }
                               }});
}

void SettingsWindow::updateNowAndLater(std::optional<ApplicationWindow::Id> closing)
{
    updateActivationPolicy(closing);
    // A window that closes counts as visible until it has closed.
    const auto update = [this] { updateActivationPolicy(); };
    QMetaObject::invokeMethod(&m_queue, update, Qt::QueuedConnection);
}

void SettingsWindow::makeRegular()
{
    if (m_policy.current() != Kind::regular) {
        m_policy.set(Kind::regular);
    }
}

void SettingsWindow::updateActivationPolicy(std::optional<ApplicationWindow::Id> closing)
{
    if (m_settingsRequested) {
        makeRegular();
        return;
    }
    if (const auto window = findSettingsWindow(); window && window->isVisible) {
        makeRegular();
        return;
    }
    const Kind kind = anyWindowPromotes(closing) ? Kind::regular : Kind::accessory;
    if (m_policy.current() != kind) {
        m_policy.set(kind);
    }
}

bool SettingsWindow::anyWindowPromotes(std::optional<ApplicationWindow::Id> closing) const
{
    return std::ranges::any_of(m_windows.windows(), [&](const ApplicationWindow& window) {
        if (!window.isVisible || window.id == closing) {
            return false;
        }
        // A panel whose flag is off is judged as any other window; panels have no title bar.
        return window.promotesDockIcon.value_or(false) ||
               (window.level < ApplicationWindow::floatingLevel && window.isTitled &&
                window.canBecomeMain);
    });
}

} // namespace zelvane
