#include "ui/linux/TrayWatcher.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

namespace zelvane {

namespace {

/// The service that keeps the tray of most desktops of today; the others embed windows.
QString trayService()
{
    return QStringLiteral("org.kde.StatusNotifierWatcher");
}

} // namespace

TrayWatcher::TrayWatcher(const QDBusConnection& bus)
    : m_bus(bus)
{
    watchBus();
    if (const auto session = currentXcbSession()) {
        const QByteArray selection =
            "_NET_SYSTEM_TRAY_S" + QByteArray::number(session->screenNumber);
        m_selection = std::make_unique<SelectionWatcher>(*session, selection, [this](bool runs) {
            m_onScreen = runs;
            update();
        });
    }
}

void TrayWatcher::watchBus()
{
    if (!m_bus.isConnected()) {
        return;
    }
    m_services.setConnection(m_bus);
    m_services.setWatchMode(QDBusServiceWatcher::WatchForOwnerChange);
    m_services.addWatchedService(trayService());
    connect(&m_services, &QDBusServiceWatcher::serviceOwnerChanged, this,
            [this](const QString&, const QString&, const QString& owner) {
                m_onBus = !owner.isEmpty();
                update();
            });

    QDBusMessage ask = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("NameHasOwner"));
    ask << trayService();
    auto* call = new QDBusPendingCallWatcher(m_bus.asyncCall(ask), this);
    connect(call, &QDBusPendingCallWatcher::finished, this, [this, call] {
        const QDBusPendingReply<bool> reply = *call;
        if (reply.isValid() && reply.value()) {
            m_onBus = true;
            update();
        }
        call->deleteLater();
    });
}

void TrayWatcher::update()
{
    m_available = m_onBus || m_onScreen;
}

} // namespace zelvane
