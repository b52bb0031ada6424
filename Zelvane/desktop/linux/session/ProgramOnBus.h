#pragma once

#include "desktop/ProgramControl.h"
#include "desktop/ServicesProvider.h"

#include <QDBusConnection>
#include <QObject>
#include <QString>

#include <memory>
#include <optional>

namespace zelvane {

/// The program as other programs find it on the session bus, as long as this object lives. A bus
/// that goes away takes the services along and nothing else.
class ProgramOnBus
{
public:
    /// What answers the calls. All must outlive this object.
    struct Parts
    {
        ServicesProvider& services;
        ProgramControl& control;
        QString version;
    };

    /// `name` is that of the instance. Offers the object first and the name last: who finds the
    /// name finds the object.
    ProgramOnBus(const QDBusConnection& bus, const QString& name, const Parts& parts);
    /// Gives the name up and ends the calls under way.
    ~ProgramOnBus();
    Q_DISABLE_COPY_MOVE(ProgramOnBus)

    /// What doesn't work, in a sentence; none if everything does.
    [[nodiscard]] std::optional<QString> shortcoming() const { return m_shortcoming; }

private:
    [[nodiscard]] std::optional<QString> offer(const Parts& parts);

    QDBusConnection m_bus;
    QString m_name;
    std::unique_ptr<QObject> m_object;
    std::optional<QString> m_shortcoming;
};

} // namespace zelvane
