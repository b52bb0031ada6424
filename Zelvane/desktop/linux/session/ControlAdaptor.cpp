#include "desktop/linux/session/ControlAdaptor.h"

#include "desktop/linux/session/BusNames.h"

#include <utility>

namespace zelvane {

ControlAdaptor::ControlAdaptor(QObject* object, ProgramControl& control, const QDBusConnection& bus,
                               QString version)
    : QDBusAbstractAdaptor(object)
    , m_control(control)
    , m_bus(bus)
    , m_version(std::move(version))
{
}

void ControlAdaptor::Activate()
{
    m_control.activate();
}

void ControlAdaptor::TriggerPair(const QString& pair, const QDBusMessage& call)
{
    const auto outcome = m_control.triggerPair(pair);
    if (!outcome) {
        call.setDelayedReply(true);
        m_bus.send(call.createErrorReply(busError::noSuchPair(), outcome.error()));
    }
}

void ControlAdaptor::ShowTranslationWindow()
{
    m_control.showTranslationWindow();
}

void ControlAdaptor::ShowSettings()
{
    m_control.showSettings();
}

QVariantMap ControlAdaptor::Status()
{
    const ProgramControl::Status status = m_control.status();
    return {{QStringLiteral("Status"), status.status},
            {QStringLiteral("Busy"), status.isBusy},
            {QStringLiteral("LastError"), status.lastError},
            {QStringLiteral("Version"), m_version},
            {QStringLiteral("Pairs"), status.pairs},
            {QStringLiteral("PairIDs"), status.pairIDs}};
}

} // namespace zelvane
