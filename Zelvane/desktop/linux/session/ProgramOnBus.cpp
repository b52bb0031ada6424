#include "desktop/linux/session/ProgramOnBus.h"

#include "desktop/linux/session/BusNames.h"
#include "desktop/linux/session/ControlAdaptor.h"
#include "desktop/linux/session/ServicesAdaptor.h"
#include "settings/Localization.h"

#include <QDBusMessage>

namespace zelvane {

ProgramOnBus::ProgramOnBus(const QDBusConnection& bus, const QString& name, const Parts& parts)
    : m_bus(bus)
    , m_name(name)
    , m_object(std::make_unique<QObject>())
    , m_shortcoming(offer(parts))
{
}

ProgramOnBus::~ProgramOnBus()
{
    m_bus.unregisterObject(busObjectPath());
    // Without waiting for the answer: a call that waits while the bus goes away, which is one way
    // for the session to end, ends this process by an assertion of the D-Bus library.
    QDBusMessage release = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("ReleaseName"));
    release << m_name;
    m_bus.send(release);
}

std::optional<QString> ProgramOnBus::offer(const Parts& parts)
{
    if (!m_bus.isConnected()) {
        return localizedText(QStringLiteral(
            "There is no session bus, so other programs can't ask Zelvane Desk for translations, "
            "and keys of the desktop can't trigger it. Everything else works."));
    }
    // Both belong to the object.
    new ServicesAdaptor(m_object.get(), parts.services, m_bus);
    new ControlAdaptor(m_object.get(), parts.control, m_bus, parts.version);
    if (!m_bus.registerObject(busObjectPath(), m_object.get(), QDBusConnection::ExportAdaptors) ||
        !m_bus.registerService(m_name)) {
        return localizedFormat(
            QStringLiteral("Another program has taken the name %@ on the session bus, so other "
                           "programs can't ask Zelvane Desk for translations, and keys of the "
                           "desktop can't trigger it. Everything else works."),
            {m_name});
    }
    return std::nullopt;
}

} // namespace zelvane
