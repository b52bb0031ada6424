#include "ui/permission/PermissionModel.h"

#include "settings/Localization.h"

#include <QPointer>

#include <utility>

namespace zelvane {

namespace {

using State = AccessibilityPermission::State;

/// People look at the page while they install what it asks for.
constexpr std::chrono::seconds refreshInterval{3};
constexpr std::chrono::seconds refreshTolerance{1};

QString stateText(Availability availability)
{
    switch (availability) {
    case Availability::unknown:
        return localizedText(QStringLiteral("Checking…"));
    case Availability::available:
        return localizedText(QStringLiteral("Available"));
    case Availability::missing:
        return localizedText(QStringLiteral("Missing"));
    }
    Q_UNREACHABLE();
}

/// The texts of a row, as keys.
struct RowTexts
{
    QString title;
    QString whenThere;
    QString whenMissing;
};

CapabilityRow row(const RowTexts& texts, Availability availability)
{
    const bool missing = availability == Availability::missing;
    return {localizedText(texts.title),
            localizedText(missing ? texts.whenMissing : texts.whenThere), stateText(availability),
            availability};
}

CapabilityRow sessionRow(SessionKind kind)
{
    // Under Wayland much is missing that this program is made for.
    CapabilityRow session =
        row({LOCALIZATION_KEY("Session"),
             LOCALIZATION_KEY("X11 lets Zelvane Desk press keys for you and watch for your "
                              "shortcuts."),
             LOCALIZATION_KEY("Wayland keeps programs apart: shortcuts and replacing text work "
                              "only in programs that run through X11.")},
            kind == SessionKind::x11 ? Availability::available : Availability::missing);
    session.state = kind == SessionKind::x11 ? QStringLiteral("X11") : QStringLiteral("Wayland");
    return session;
}

CapabilityRow watchingRow(Availability availability, State state)
{
    if (availability == Availability::available && state == State::stale) {
        return row({LOCALIZATION_KEY("Watching for shortcuts"), QString(),
                    LOCALIZATION_KEY("Another program keeps all keys to itself. Close it, then "
                                     "relaunch Zelvane Desk.")},
                   Availability::missing);
    }
    return row({LOCALIZATION_KEY("Watching for shortcuts"),
                LOCALIZATION_KEY("Your shortcuts reach Zelvane Desk from every program."),
                LOCALIZATION_KEY("There is no X server with XInput 2, so your shortcuts can't be "
                                 "noticed.")},
               availability);
}

} // namespace

PermissionModel::PermissionModel(QBindable<State> state, SessionInspector& inspector, Clock& clock,
                                 Actions actions)
    : m_state(state)
    , m_inspector(inspector)
    , m_clock(clock)
    , m_actions(std::move(actions))
    , m_stateChange(state.addNotifier([this] { Q_EMIT changed(); }))
{
}

PermissionModel::~PermissionModel() = default;

void PermissionModel::setShown(bool shown)
{
    m_timer.reset();
    if (shown) {
        refresh();
        m_timer = m_clock.callEvery(refreshInterval, refreshTolerance, [this] { refresh(); });
    }
}

void PermissionModel::refresh()
{
    if (m_tasks.runningTasks() == 0) {
        m_tasks.start([this](std::stop_token stop) { return look(std::move(stop)); });
    }
}

QCoro::Task<void> PermissionModel::look(std::stop_token stop)
{
    const SessionCapabilities found = co_await m_inspector.inspect();
    if (!stop.stop_requested() && found != m_capabilities) {
        m_capabilities = found;
        Q_EMIT changed();
    }
}

QString PermissionModel::headline() const
{
    return state() == State::granted ? localizedText(QStringLiteral("Permission granted"))
                                     : localizedText(QStringLiteral("Permission not granted"));
}

QString PermissionModel::explanation() const
{
    switch (state()) {
    case State::granted:
        return localizedText(QStringLiteral(
            "Zelvane Desk copies your selection and pastes the translation back for you."));
    case State::denied:
        return localizedText(QStringLiteral(
            "This session lets Zelvane Desk press no keys, so shortcuts can't read the selected "
            "text. The translation window works all the same."));
    case State::stale:
        return localizedText(QStringLiteral(
            "This session lets Zelvane Desk in but keeps its shortcuts from taking effect."));
    }
    Q_UNREACHABLE();
}

QList<CapabilityRow> PermissionModel::rows() const
{
    const SessionCapabilities& found = m_capabilities;
    return {
        sessionRow(found.kind),
        row({LOCALIZATION_KEY("Pressing keys"),
             LOCALIZATION_KEY("Selections are copied and translations pasted for you."),
             LOCALIZATION_KEY("There is no X server with the extension XTEST, so nothing can be "
                              "copied or pasted for you.")},
            found.pressingKeys),
        watchingRow(found.watchingKeys, state()),
        row({LOCALIZATION_KEY("Recognising text fields"),
             LOCALIZATION_KEY("Translations are pasted only where text can be changed."),
             LOCALIZATION_KEY("Install at-spi2-core and log in again. Until then translations are "
                              "pasted everywhere.")},
            found.accessibilityBus),
        row({LOCALIZATION_KEY("Tray icon"),
             LOCALIZATION_KEY("The desktop has a place for the icon."),
             LOCALIZATION_KEY("Add a system tray to your panel; GNOME needs the extension "
                              "AppIndicator. Until then start Zelvane Desk again to open its "
                              "panel.")},
            found.trayHost),
        row({LOCALIZATION_KEY("Keyring"),
             LOCALIZATION_KEY("Your API keys are kept safe by the desktop."),
             LOCALIZATION_KEY("Install GNOME Keyring, KWallet or KeePassXC. Until then API keys "
                              "can't be stored.")},
            found.secretStore),
    };
}

bool PermissionModel::offersCommand() const
{
    return m_capabilities.kind == SessionKind::wayland || state() == State::stale;
}

QString PermissionModel::command()
{
    return QStringLiteral("zelvane-desk trigger 1");
}

void PermissionModel::copyCommand()
{
    m_actions.copy(command());
    m_copied = true;
    Q_EMIT changed();
}

bool PermissionModel::offersRequest() const
{
    return state() != State::granted;
}

void PermissionModel::request()
{
    m_actions.request();
    refresh();
}

bool PermissionModel::offersRelaunch() const
{
    return state() != State::granted;
}

} // namespace zelvane
