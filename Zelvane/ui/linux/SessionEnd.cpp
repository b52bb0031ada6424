#include "ui/linux/SessionEnd.h"

#include <QCoreApplication>
#include <QEvent>

#include <utility>

namespace zelvane {

SessionEnd::SessionEnd(const QDBusConnection& sessionBus, const QDBusConnection& systemBus,
                       std::function<void()> onEnd)
    : m_onEnd(std::move(onEnd))
{
    qApp->installEventFilter(this);
    QDBusConnection session = sessionBus;
    if (session.isConnected()) {
        session.connect(QString(), QStringLiteral("/org/freedesktop/DBus/Local"),
                        QStringLiteral("org.freedesktop.DBus.Local"),
                        QStringLiteral("Disconnected"), this, SLOT(busLost()));
    }
    QDBusConnection system = systemBus;
    if (system.isConnected()) {
        system.connect(QStringLiteral("org.freedesktop.login1"),
                       QStringLiteral("/org/freedesktop/login1"),
                       QStringLiteral("org.freedesktop.login1.Manager"),
                       QStringLiteral("PrepareForShutdown"), this, SLOT(prepareForShutdown(bool)));
    }
}

void SessionEnd::busLost()
{
    m_onEnd();
}

void SessionEnd::prepareForShutdown(bool begins)
{
    if (begins) {
        m_onEnd();
    }
}

bool SessionEnd::eventFilter(QObject* watched, QEvent* event)
{
    if (watched != qApp || event->type() != QEvent::Quit) {
        return false;
    }
    m_onEnd();
    return true;
}

} // namespace zelvane
