#pragma once

#include <QObject>
#include <QProperty>

namespace zelvane::gallery {

/// The controller's state as the tray shows it, without the controller.
class StandIn final : public QObject
{
public:
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(StandIn, QString, status, QStringLiteral("Ready"))
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(StandIn, bool, isBusy, false)
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(StandIn, bool, trayAvailable, false)
};

} // namespace zelvane::gallery
