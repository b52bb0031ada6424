#include "ui/linux/TrayWatcher.h"

#include "ui/linux/BusCall.h"

#include <QDBusVariant>

namespace zelvane {

namespace {

/// The service that keeps the tray of most desktops of today; the others embed windows.
QString trayService()
{
    return QStringLiteral("org.kde.StatusNotifierWatcher");
}

QString trayPath()
{
    return QStringLiteral("/StatusNotifierWatcher");
}

bool isTrue(const QDBusMessage& answer)
{
    return answer.type() == QDBusMessage::ReplyMessage && !answer.arguments().isEmpty() &&
           answer.arguments().first().value<QDBusVariant>().variant().toBool();
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
    connect(&m_services, &QDBusServiceWatcher::serviceOwnerChanged, this, &TrayWatcher::askForHost);
    for (const char* signal : {"StatusNotifierHostRegistered", "StatusNotifierHostUnregistered"}) {
        m_bus.connect(trayService(), trayPath(), trayService(), QString::fromLatin1(signal), this,
                      SLOT(askForHost()));
    }
    askForHost();
}

void TrayWatcher::askForHost()
{
    m_questions.cancelAll(); // what is on its way may be out of date
    m_questions.start([this](std::stop_token stop) { return findHost(std::move(stop)); });
}

/// The service alone shows nothing: it only knows the panel that does, which may come later.
QCoro::Task<void> TrayWatcher::findHost(std::stop_token stop)
{
    QDBusMessage ask = QDBusMessage::createMethodCall(
        trayService(), trayPath(), QStringLiteral("org.freedesktop.DBus.Properties"),
        QStringLiteral("Get"));
    ask.setAutoStartService(false);
    ask << trayService() << QStringLiteral("IsStatusNotifierHostRegistered");
    const QDBusMessage answer = co_await callBus(m_bus, ask);
    if (!stop.stop_requested()) {
        m_onBus = isTrue(answer);
        update();
    }
}

void TrayWatcher::update()
{
    m_available = m_onBus || m_onScreen;
}

} // namespace zelvane
