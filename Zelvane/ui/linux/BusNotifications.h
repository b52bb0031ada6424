#pragma once

#include "desktop/Notifications.h"

#include <QDBusConnection>

namespace zelvane {

/// The notification service that desktops share.
class BusNotifications final : public Notifications
{
public:
    explicit BusNotifications(const QDBusConnection& bus);

    [[nodiscard]] QCoro::Task<bool> post(QString title, QString body) override;

private:
    QDBusConnection m_bus;
};

} // namespace zelvane
