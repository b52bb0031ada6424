#include "desktop/linux/session/BusNames.h"
#include "desktop/linux/session/BusProgram.h"
#include "desktop/linux/session/ProgramOnBus.h"
#include "desktop/linux/session/SingleInstance.h"
#include "main/Platform.h"

namespace zelvane {

namespace {

class LockedInstance final : public OnlyInstance
{
public:
    explicit LockedInstance(const QString& name)
        : m_lock(InstanceLock::usualFolder(), name)
    {
    }

    [[nodiscard]] InstanceLock& lock() { return m_lock; }

private:
    InstanceLock m_lock;
};

class BusPresence final : public SessionPresence
{
public:
    BusPresence(const QString& name, ServicesProvider& services, ProgramControl& control)
        : m_program(QDBusConnection::sessionBus(), name,
                    {services, control, QStringLiteral(ZELVANE_VERSION)})
    {
    }

    [[nodiscard]] std::optional<QString> shortcoming() const override
    {
        return m_program.shortcoming();
    }

private:
    ProgramOnBus m_program;
};

} // namespace

std::expected<std::unique_ptr<OnlyInstance>, QString> becomeOnlyInstance(const QString& profile)
{
    const QString name = instanceName(profile);
    auto instance = std::make_unique<LockedInstance>(name);
    const auto outcome = startOrHandOver(instance->lock(), QDBusConnection::sessionBus(), name);
    if (!outcome) {
        return std::unexpected(outcome.error());
    }
    if (*outcome == StartOutcome::handedOver) {
        return nullptr;
    }
    return instance;
}

std::unique_ptr<SessionPresence> offerToSession(const QString& profile, ServicesProvider& services,
                                                ProgramControl& control)
{
    return std::make_unique<BusPresence>(instanceName(profile), services, control);
}

std::expected<std::unique_ptr<RunningProgram>, QString> reachRunningProgram(const QString& profile)
{
    const QString name = instanceName(profile);
    if (!sessionBusIsAtHand(name)) {
        return std::unexpected(
            QStringLiteral("there is no session bus, so Zelvane Desk can't be reached"));
    }
    return std::make_unique<BusProgram>(QDBusConnection::sessionBus(), name);
}

} // namespace zelvane
