#pragma once

#include <QCoroTask>
#include <QString>

namespace zelvane {

/// Short messages that the desktop shows for a moment. Main thread.
class Notifications
{
public:
    Notifications() = default;
    virtual ~Notifications() = default;
    Q_DISABLE_COPY_MOVE(Notifications)

    /// Whether the desktop has taken the message. Never fails, and ends within seconds.
    [[nodiscard]] virtual QCoro::Task<bool> post(QString title, QString body) = 0;
};

} // namespace zelvane
