#include "ui/linux/SettingsPortal.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

namespace zelvane {

namespace {

QString service()
{
    return QStringLiteral("org.freedesktop.portal.Desktop");
}

QString path()
{
    return QStringLiteral("/org/freedesktop/portal/desktop");
}

QString interface()
{
    return QStringLiteral("org.freedesktop.portal.Settings");
}

} // namespace

SettingsPortal::SettingsPortal(const QDBusConnection& bus)
    : m_bus(bus)
{
    // D-Bus finds the types of the slot by their names.
    qRegisterMetaType<QDBusVariant>();
    if (m_bus.isConnected()) {
        m_bus.connect(service(), path(), interface(), QStringLiteral("SettingChanged"), this,
                      SLOT(settingChanged(QString, QString, QDBusVariant)));
    }
}

void SettingsPortal::watch(const QString& group, const QString& key,
                           std::function<void(const QVariant&)> onValue)
{
    const Setting setting{group, key};
    m_watchers.insert_or_assign(setting, std::move(onValue));
    if (!m_bus.isConnected()) {
        return;
    }
    QDBusMessage read =
        QDBusMessage::createMethodCall(service(), path(), interface(), QStringLiteral("Read"));
    read << group << key;
    auto* call = new QDBusPendingCallWatcher(m_bus.asyncCall(read), this);
    connect(call, &QDBusPendingCallWatcher::finished, this, [this, setting, call] {
        const QDBusPendingReply<QDBusVariant> reply = *call;
        if (reply.isValid()) {
            deliver(setting, reply.value().variant());
        }
        call->deleteLater();
    });
}

void SettingsPortal::settingChanged(const QString& group, const QString& key,
                                    const QDBusVariant& value)
{
    deliver({group, key}, value.variant());
}

void SettingsPortal::deliver(const Setting& setting, QVariant value)
{
    // The portal wraps what it reads once more than what it announces.
    while (value.metaType() == QMetaType::fromType<QDBusVariant>()) {
        value = value.value<QDBusVariant>().variant();
    }
    if (const auto watcher = m_watchers.find(setting); watcher != m_watchers.end()) {
        watcher->second(value);
    }
}

} // namespace zelvane
