#include "ui/linux/BusCall.h"

#include "foundation/Completion.h"

#include <QDBusPendingCallWatcher>

#include <memory>

namespace zelvane {

namespace {

constexpr int callLimit = 5000;

} // namespace

QCoro::Task<QDBusMessage> callBus(QDBusConnection bus, QDBusMessage call)
{
    const Completion<QDBusMessage> answer;
    // Nobody's child: whoever waits may go before the answer comes.
    auto* watcher = new QDBusPendingCallWatcher(bus.asyncCall(call, callLimit));
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, watcher, [watcher, answer] {
        watcher->deleteLater();
        answer.succeed(watcher->reply());
    });
    const QDBusMessage reply = co_await answer.result();
    co_return reply;
}

} // namespace zelvane
