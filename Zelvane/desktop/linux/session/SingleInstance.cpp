#include "desktop/linux/session/SingleInstance.h"

#include "desktop/linux/session/BusNames.h"
#include "settings/Localization.h"

#include <QDBusMessage>
#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <QThread>

namespace zelvane {

namespace {

using std::chrono::milliseconds;

constexpr milliseconds betweenLooks{25};

enum class Told {
    yes,
    /// It has gone meanwhile, or is not there yet.
    notThere,
    /// It is there and does not answer.
    silent,
};

Told tell(const QDBusConnection& bus, const QString& name, milliseconds limit)
{
    QDBusMessage call = QDBusMessage::createMethodCall(name, busObjectPath(), controlInterface(),
                                                       QStringLiteral("Activate"));
    // One that starts or ends is to be waited for; a third one would only be in the way.
    call.setAutoStartService(false);
    QElapsedTimer taken;
    taken.start();
    const QDBusMessage reply = bus.call(call, QDBus::Block, int(limit.count()));
    if (reply.type() == QDBusMessage::ReplyMessage) {
        return Told::yes;
    }
    // The error is the same for one that ended over the call; but that takes no time.
    return milliseconds(taken.elapsed()) > limit / 2 ? Told::silent : Told::notThere;
}

QString cannotBeTold(const InstanceLock& lock, const QDBusConnection& bus)
{
    const auto process = lock.holder();
    if (!bus.isConnected()) {
        return localizedText(QStringLiteral(
            "Zelvane Desk is running already. Without a session bus it can't be told that it was "
            "started again."));
    }
    if (!process) {
        return localizedText(QStringLiteral(
            "Zelvane Desk is running already, but does not answer. End it and start it again."));
    }
    return localizedFormat(
        QStringLiteral("Zelvane Desk is running already as process %@, but does not answer. End "
                       "that process and start Zelvane Desk again."),
        {QString::number(*process)});
}

} // namespace

std::expected<StartOutcome, QString> startOrHandOver(InstanceLock& lock, const QDBusConnection& bus,
                                                     const QString& name, StartLimits limits)
{
    const QDeadlineTimer deadline(limits.change);
    while (true) {
        if (lock.claim()) {
            return StartOutcome::first;
        }
        if (bus.isConnected()) {
            const Told told = tell(bus, name, limits.answer);
            if (told == Told::yes) {
                return StartOutcome::handedOver;
            }
            if (told == Told::silent) {
                return std::unexpected(cannotBeTold(lock, bus));
            }
        }
        if (deadline.hasExpired()) {
            return std::unexpected(cannotBeTold(lock, bus));
        }
        QThread::msleep(static_cast<unsigned long>(betweenLooks.count()));
    }
}

} // namespace zelvane
