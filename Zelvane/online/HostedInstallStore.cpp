#include "online/HostedInstallStore.h"

#include <QUuid>

#include <tuple>

namespace zelvane {

namespace {

/// A key of the settings, and the account of older versions.
const QString installIdKey = QStringLiteral("zv.installId");
/// An account, and the key of older versions in the settings.
const QString tokenAccount = QStringLiteral("zv.cloudflare.installToken");
const QString machineSeedKey = QStringLiteral("zv.cloudflare.machineSeed");

QString newUuid()
{
    return QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper();
}

} // namespace

HostedInstallStore::HostedInstallStore(UserDefaults& defaults, SecretStore& secrets,
                                       const MachineIdentity& machine)
    : m_defaults(defaults)
    , m_secrets(secrets)
    , m_machine(machine)
{
}

QString HostedInstallStore::installId()
{
    moveOldInstallId();
    QString id = m_defaults.string(installIdKey).value_or(QString());
    if (id.isEmpty()) {
        id = newUuid();
        m_defaults.setValue(installIdKey, id);
    }
    return id;
}

QString HostedInstallStore::token()
{
    const QString unstored = moveOldToken();
    return m_secrets.read(tokenAccount).value_or(unstored);
}

bool HostedInstallStore::storeToken(const QString& token)
{
    // The user has asked for a translation at most, so no dialog may come of it.
    return m_secrets.write(token, tokenAccount, SecretDialog::unwanted);
}

void HostedInstallStore::reset()
{
    m_defaults.remove(installIdKey);
    m_defaults.remove(tokenAccount);
    clearSecret(installIdKey);
    clearSecret(tokenAccount);
}

void HostedInstallStore::clearRetired()
{
    clearSecret(cloudflareAccessTokenAccount());
    clearSecret(QStringLiteral("zv.cloudflare.apiKey.prod"));
    clearSecret(QStringLiteral("zv.cloudflare.apiKey.dev"));
    moveOldInstallId();
}

QString HostedInstallStore::deviceFingerprint()
{
    const QByteArray machineId = m_machine.machineId();
    if (!machineId.isEmpty()) {
        return zelvane::deviceFingerprint(machineId);
    }
    // A machine without an id of its own is told by one that stays in the settings.
    QString seed = m_defaults.string(machineSeedKey).value_or(QString());
    if (seed.isEmpty()) {
        seed = newUuid();
        m_defaults.setValue(machineSeedKey, seed);
    }
    return zelvane::deviceFingerprint(seed.toUtf8());
}

void HostedInstallStore::moveOldInstallId()
{
    if (!m_secrets.mayHold(installIdKey)) {
        return;
    }
    if (m_defaults.string(installIdKey).value_or(QString()).isEmpty()) {
        if (const auto old = m_secrets.read(installIdKey)) {
            m_defaults.setValue(installIdKey, *old);
        }
    }
    clearSecret(installIdKey);
}

QString HostedInstallStore::moveOldToken()
{
    if (!m_defaults.value(tokenAccount)) {
        return {};
    }
    const QString old = m_defaults.string(tokenAccount).value_or(QString());
    m_defaults.remove(tokenAccount);
    const bool isWanted = !old.isEmpty() && !m_secrets.mayHold(tokenAccount);
    return isWanted && !storeToken(old) ? old : QString();
}

/// The secret store itself leaves an account alone whose presence flag is not set.
void HostedInstallStore::clearSecret(const QString& account)
{
    std::ignore = m_secrets.write(QString(), account);
}

} // namespace zelvane
