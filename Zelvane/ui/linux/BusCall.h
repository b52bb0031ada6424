#pragma once

#include <QCoroTask>
#include <QDBusConnection>
#include <QDBusMessage>

namespace zelvane {

/// The answer to `call`, or an error message: of the other side, or because it took longer than a
/// few seconds, or because there is no bus. Blocks nobody. Main thread.
[[nodiscard]] QCoro::Task<QDBusMessage> callBus(QDBusConnection bus, QDBusMessage call);

} // namespace zelvane
