#include "main/DesktopProgram.h"

#include "desktop/AppModel.h"
#include "foundation/SystemClock.h"
#include "foundation/UnixSignals.h"
#include "foundation/Worker.h"
#include "main/OnlineEngines.h"
#include "main/Platform.h"
#include "main/UserInterface.h"
#include "main/UserStore.h"
#include "online/HostedStartUp.h"
#include "settings/Localization.h"
#include "settings/SystemLanguage.h"

#include <QApplication>
#include <QWindow>

#include <cstdio>

namespace zelvane {

namespace {

/// The menu at Option + right click is not part of this build: nothing listens, nothing is wrong.
class NoOptionClickMenu final : public OptionClickMenu
{
public:
    void setOnSelect(std::function<void(LanguagePair, TranslateOutputMode)>) override {}
    void setOnActivated(std::function<void()>) override {}
    void setWanted(bool) override {}
    void reconcile() override {}
    [[nodiscard]] bool isListening() const override { return false; }
    [[nodiscard]] QString lastError() const override { return {}; }
};

/// Everything of the program that lives as long as the desktop session uses it, in the order in
/// which it is made.
class DesktopProgram
{
public:
    DesktopProgram(UserStore& store, const QString& key, Clock& clock, Desktop& desktop)
        : m_secretBackend(openSecretStore())
        , m_secrets(store.defaults(), *m_secretBackend)
        , m_settings(store.defaults(), m_secrets, systemLanguage(currentSystemLocale()).name,
                     &m_worker)
        , m_trace(clock)
        , m_engines(clock, store.defaults(), m_trace, {store.defaults(), m_secrets})
        , m_dispatch(m_settings, store.defaults(), m_trace, m_engines.forDispatch())
        , m_permission(desktop.accessibility(), store.defaults(), clock)
        , m_selection({m_settings, m_permission, desktop.pasteboard(), desktop.keystrokes(),
                       desktop.focus(), m_dispatch, m_trace, clock})
        , m_hotKeys(desktop.hotKeys())
        , m_interface(store.defaults(), m_settings)
        , m_model({m_settings, m_selection, m_hotKeys, m_optionMenu, m_permission,
                   m_interface.alerts(), m_interface, clock})
        , m_tray(m_interface, m_settings, m_model, clock)
        , m_hostedStartUp(m_engines.hosted(), m_settings)
    {
        m_hostedStartUp.start();
        if (!key.isEmpty()) {
            m_settings.setApiKey(key);
        }
        QObject::connect(qApp, &QGuiApplication::applicationStateChanged, &m_model,
                         [this](Qt::ApplicationState state) {
                             if (state == Qt::ApplicationActive) {
                                 m_model.activated();
                             }
                         });
        QObject::connect(qApp, &QGuiApplication::focusWindowChanged, &m_model,
                         [this](const QWindow* window) {
                             if (window) {
                                 m_model.activated();
                             }
                         });
    }

    [[nodiscard]] AppModel& model() { return m_model; }

private:
    std::unique_ptr<SecretBackend> m_secretBackend;
    SecretStore m_secrets;
    /// For calls that may have to wait for another program, such as the keyring.
    Worker m_worker;
    AppSettings m_settings;
    TranslationTrace m_trace;
    OnlineEngines m_engines;
    TranslationDispatch m_dispatch;
    AccessibilityPermission m_permission;
    SelectionTranslation m_selection;
    HotKeyManager m_hotKeys;
    NoOptionClickMenu m_optionMenu;
    UserInterface m_interface;
    AppModel m_model;
    TrayItem m_tray;
    HostedStartUp m_hostedStartUp;
};

/// Tells on standard error what the desktop lacks, once that is known: what is missing at first may
/// just be starting.
class ShortcomingNotice
{
public:
    ShortcomingNotice(const Desktop& desktop, Clock& clock)
        : m_desktop(desktop)
        , m_timer(clock.callEvery(std::chrono::seconds(1), {}, [this] { look(); }))
    {
    }

private:
    void look()
    {
        constexpr int mostLooks = 10;
        const auto shortcoming = m_desktop.shortcoming();
        if (shortcoming) {
            complain(*shortcoming);
        }
        if (shortcoming || ++m_looks == mostLooks) {
            m_timer.reset();
        }
    }

    const Desktop& m_desktop;
    int m_looks = 0;
    std::unique_ptr<Timer> m_timer;
};

/// Prints what `--report` promises.
void reportOn(AppModel& model)
{
    const auto print = [](const QString& text) {
        std::fputs((text.toUtf8() + '\n').constData(), stdout);
        std::fflush(stdout);
    };
    QObject::connect(
        &model, &AppModel::hotKeysReloaded, &model, [print] { print(QStringLiteral("ready")); },
        Qt::SingleShotConnection);
    QObject::connect(&model, &AppModel::translationDelivered, &model, print);
}

} // namespace

int runDesktopProgram(const CommandLine& line, const QString& key, int argc, char** argv)
{
    SystemClock clock;
    UserStore store(line.profile);
    installLocalization(&store.defaults());
    // Before Qt, which ends the process by itself where there is no display.
    if (const auto reason = whyNoWindows()) {
        complain(*reason);
        return int(ExitStatus::failure);
    }
    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Zelvane Desk"));
    QApplication::setDesktopFileName(QStringLiteral("org.zelvane.desk"));
    QApplication::setQuitOnLastWindowClosed(false);

    const auto desktop = openDesktop(clock, [] {});
    if (!desktop) {
        complain(desktop.error());
        return int(ExitStatus::failure);
    }

    DesktopProgram program(store, key, clock, **desktop);
    if (line.report) {
        reportOn(program.model());
    }
    const ShortcomingNotice notice(**desktop, clock);
    const UnixSignals endInOrder([](int) { QApplication::quit(); });
    return QApplication::exec();
}

} // namespace zelvane
