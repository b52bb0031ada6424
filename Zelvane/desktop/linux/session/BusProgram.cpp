#include "desktop/linux/session/BusProgram.h"

#include "desktop/linux/session/BusNames.h"
#include "desktop/linux/session/InstanceLock.h"
#include "foundation/Completion.h"

#include <QDBusArgument>
#include <QDBusError>
#include <QDBusPendingCallWatcher>
#include <QFileInfo>

#include <utility>

namespace zelvane {

namespace {

/// For the bus itself to answer.
constexpr std::chrono::seconds patienceWithBus{1};

RunningProgramError notRunning()
{
    return RunningProgramError(
        QStringLiteral("Zelvane Desk isn't running; zelvane-desk without a command starts it"));
}

RunningProgramError failureOf(const QDBusMessage& reply)
{
    const QDBusError error(reply);
    if (error.name().startsWith(busError::prefix())) {
        return RunningProgramError(error.message());
    }
    if (error.name().startsWith(QStringLiteral("org.freedesktop.DBus.Error.Spawn."))) {
        return RunningProgramError(QStringLiteral("Zelvane Desk could not be started: ") +
                                   error.message());
    }
    if (error.name() == QStringLiteral("org.freedesktop.DBus.Error.NameHasNoOwner")) {
        return notRunning();
    }
    switch (error.type()) {
    case QDBusError::ServiceUnknown:
        return notRunning();
    case QDBusError::NoReply:
    case QDBusError::Timeout:
    case QDBusError::TimedOut:
        return RunningProgramError(QStringLiteral("Zelvane Desk does not answer"));
    case QDBusError::Disconnected:
        return RunningProgramError(QStringLiteral("the session bus has gone"));
    default:
        return RunningProgramError(QStringLiteral("Zelvane Desk did not understand: ") +
                                   error.message());
    }
}

} // namespace

bool sessionBusIsAtHand(const QString& instance)
{
    const QString runtime = qEnvironmentVariable("XDG_RUNTIME_DIR");
    return !qEnvironmentVariableIsEmpty("DBUS_SESSION_BUS_ADDRESS") ||
           (!runtime.isEmpty() && QFileInfo::exists(runtime + QStringLiteral("/bus"))) ||
           InstanceLock(InstanceLock::usualFolder(), instance).isHeldByAnother();
}

BusProgram::BusProgram(const QDBusConnection& bus, QString instance, BusLimits limits)
    : m_bus(bus)
    , m_instance(std::move(instance))
    , m_limits(limits)
{
}

QCoro::Task<QString> BusProgram::translate(QString entry, QString text, std::stop_token stop)
{
    QDBusMessage call = makeCall(servicesInterface(), entry.first(1).toUpper() + entry.sliced(1));
    call << text;
    const QDBusMessage reply = co_await send(call, m_limits.translation, stop);
    co_return reply.arguments().value(0).toString();
}

QCoro::Task<void> BusProgram::triggerPair(QString which, std::stop_token stop)
{
    QDBusMessage call = makeCall(controlInterface(), QStringLiteral("TriggerPair"));
    call << which;
    co_await send(call, m_limits.other, stop);
}

QCoro::Task<void> BusProgram::showTranslationWindow(std::stop_token stop)
{
    const QDBusMessage call = makeCall(controlInterface(), QStringLiteral("ShowTranslationWindow"));
    co_await send(call, m_limits.other, stop);
}

QCoro::Task<void> BusProgram::showSettings(std::stop_token stop)
{
    const QDBusMessage call = makeCall(controlInterface(), QStringLiteral("ShowSettings"));
    co_await send(call, m_limits.other, stop);
}

QCoro::Task<RunningProgram::Status> BusProgram::status(std::stop_token stop)
{
    QDBusMessage call = makeCall(controlInterface(), QStringLiteral("Status"));
    // Who asks how it is doesn't want it started.
    call.setAutoStartService(false);
    const QDBusMessage reply = co_await send(call, m_limits.other, stop);
    const auto facts = qdbus_cast<QVariantMap>(reply.arguments().value(0));
    co_return Status{facts.value(QStringLiteral("Status")).toString(),
                     facts.value(QStringLiteral("Busy")).toBool(),
                     facts.value(QStringLiteral("LastError")).toString(),
                     facts.value(QStringLiteral("Version")).toString(),
                     facts.value(QStringLiteral("Pairs")).toStringList(),
                     facts.value(QStringLiteral("PairIDs")).toStringList()};
}

QDBusMessage BusProgram::makeCall(const QString& interface, const QString& method) const
{
    return QDBusMessage::createMethodCall(m_instance, busObjectPath(), interface, method);
}

QCoro::Task<QDBusMessage> BusProgram::send(QDBusMessage call, std::chrono::milliseconds limit,
                                           std::stop_token stop)
{
    if (!m_bus.isConnected()) {
        throw RunningProgramError(
            QStringLiteral("there is no session bus, so Zelvane Desk can't be reached"));
    }
    const QDBusMessage reply = co_await ask(std::move(call), limit, stop);
    if (reply.type() != QDBusMessage::ReplyMessage) {
        // Qt's thread for the bus tells of a failure twice. The process may end with the first
        // time, and must not take away what the second one is made of.
        QDBusMessage ping = QDBusMessage::createMethodCall(
            QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
            QStringLiteral("org.freedesktop.DBus.Peer"), QStringLiteral("Ping"));
        co_await ask(std::move(ping), patienceWithBus, stop);
        throw failureOf(reply);
    }
    co_return reply;
}

QCoro::Task<QDBusMessage> BusProgram::ask(QDBusMessage call, std::chrono::milliseconds limit,
                                          std::stop_token stop)
{
    const Completion<QDBusMessage> answer;
    auto* watcher =
        new QDBusPendingCallWatcher(m_bus.asyncCall(call, int(limit.count())), &m_calls);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, watcher, [answer, watcher] {
        watcher->deleteLater();
        answer.succeed(watcher->reply());
    });
    const std::stop_callback onStop(stop, [answer] { answer.fail(CancellationError()); });
    co_return co_await answer.result();
}

} // namespace zelvane
