#include "ui/linux/LinuxSessionInspector.h"

#include "ui/linux/BusCall.h"

#include <utility>

namespace zelvane {

namespace {

Availability availability(bool available)
{
    return available ? Availability::available : Availability::missing;
}

QDBusMessage callToBus(const QString& method)
{
    return QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.DBus"),
                                          QStringLiteral("/org/freedesktop/DBus"),
                                          QStringLiteral("org.freedesktop.DBus"), method);
}

QStringList namesIn(const QDBusMessage& answer)
{
    return answer.type() == QDBusMessage::ReplyMessage ? answer.arguments().value(0).toStringList()
                                                       : QStringList();
}

/// The services that run, and those that the bus would start.
QCoro::Task<QStringList> servicesOf(QDBusConnection bus)
{
    if (!bus.isConnected()) {
        co_return QStringList();
    }
    const QDBusMessage running = co_await callBus(bus, callToBus(QStringLiteral("ListNames")));
    const QDBusMessage startable =
        co_await callBus(bus, callToBus(QStringLiteral("ListActivatableNames")));
    const QStringList services = namesIn(running) + namesIn(startable);
    co_return services;
}

} // namespace

SessionKind sessionKind()
{
    const bool isWayland = qEnvironmentVariable("XDG_SESSION_TYPE") == QStringLiteral("wayland") ||
                           qEnvironmentVariableIsSet("WAYLAND_DISPLAY");
    return isWayland ? SessionKind::wayland : SessionKind::x11;
}

LinuxSessionInspector::LinuxSessionInspector(const QDBusConnection& bus, Known known)
    : m_bus(bus)
    , m_known(std::move(known))
{
}

QCoro::Task<SessionCapabilities> LinuxSessionInspector::inspect()
{
    SessionCapabilities found;
    found.kind = sessionKind();
    found.pressingKeys = availability(m_known.pressesKeys());
    found.watchingKeys = availability(m_known.watchesKeys());
    found.trayHost = availability(m_known.trayAvailable.value());
    const QStringList services = co_await servicesOf(m_bus);
    found.accessibilityBus = availability(services.contains(QStringLiteral("org.a11y.Bus")));
    found.secretStore = availability(services.contains(QStringLiteral("org.freedesktop.secrets")));
    const SessionCapabilities result = found;
    co_return result;
}

} // namespace zelvane
