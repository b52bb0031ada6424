#include "ui/linux/BusNotifications.h"

#include "ui/linux/BusCall.h"

#include <QVariantMap>

namespace zelvane {

BusNotifications::BusNotifications(const QDBusConnection& bus)
    : m_bus(bus)
{
}

QCoro::Task<bool> BusNotifications::post(QString title, QString body)
{
    constexpr int desktopDecides = -1;
    QDBusMessage call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.Notifications"),
        QStringLiteral("/org/freedesktop/Notifications"),
        QStringLiteral("org.freedesktop.Notifications"), QStringLiteral("Notify"));
    const QString name = QStringLiteral("Zelvane Desk");
    const QString icon = QStringLiteral("org.zelvane.desk");
    // Services read the body as markup.
    call << name << quint32(0) << icon << title << body.toHtmlEscaped() << QStringList()
         << QVariantMap{{QStringLiteral("desktop-entry"), icon}} << desktopDecides;
    const QDBusMessage answer = co_await callBus(m_bus, call);
    co_return answer.type() == QDBusMessage::ReplyMessage;
}

} // namespace zelvane
