#pragma once

#include <QDBusConnection>
#include <QDBusVariant>
#include <QObject>
#include <QVariant>

#include <functional>
#include <map>

namespace zelvane {

/// The desktop's settings as its portal tells them to programs. Main thread; never blocks; silent
/// where there is no portal.
class SettingsPortal final : public QObject
{
    Q_OBJECT

public:
    explicit SettingsPortal(const QDBusConnection& bus);

    /// Calls `onValue` with the setting, if it exists, and with each later value of it.
    void watch(const QString& group, const QString& key,
               std::function<void(const QVariant&)> onValue);

private Q_SLOTS:
    // D-Bus finds this slot by its name.
    void settingChanged(const QString& group, const QString& key, const QDBusVariant& value);

private:
    using Setting = std::pair<QString, QString>;

    void deliver(const Setting& setting, QVariant value);

    QDBusConnection m_bus;
    std::map<Setting, std::function<void(const QVariant&)>> m_watchers;
};

} // namespace zelvane
