#include "settings/SecretStore.h"

#include <QStringDecoder>

namespace zelvane {

namespace {

const QString presenceMigratedKey = QStringLiteral("zv.keychain.presenceMigrated");

QString presenceKey(const QString& account)
{
    return QStringLiteral("zv.keychain.has.") + account;
}

void setPresent(UserDefaults& defaults, const QString& account)
{
    defaults.setValue(presenceKey(account), true);
}

std::optional<QString> decodedText(const QByteArray& bytes)
{
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString text = decoder(bytes);
    if (text.isEmpty() || decoder.hasError()) {
        return std::nullopt;
    }
    return text;
}

} // namespace

SecretStore::SecretStore(UserDefaults& defaults, SecretBackend& backend)
    : m_defaults(defaults)
    , m_backend(backend)
{
}

bool SecretStore::mayHold(const QString& account) const
{
    return m_defaults.boolean(presenceKey(account)).value_or(false);
}

std::optional<QString> SecretStore::read(const QString& account)
{
    if (!mayHold(account)) {
        return std::nullopt;
    }
    const SecretBackend::Found found = m_backend.find(account);
    switch (found.status) {
    case SecretStatus::success:
        return decodedText(found.value);
    case SecretStatus::notFound:
    case SecretStatus::refused:
        // A user who refused once is not asked again.
        m_defaults.remove(presenceKey(account));
        return std::nullopt;
    case SecretStatus::duplicate:
    case SecretStatus::otherFailure:
        return std::nullopt;
    }
    return std::nullopt;
}

bool SecretStore::write(const QString& value, const QString& account, SecretDialog dialog)
{
    if (value.isEmpty()) {
        if (mayHold(account)) {
            m_backend.remove(account);
            m_defaults.remove(presenceKey(account));
        }
        return true;
    }
    // There is no update: what stood there before goes, flag or no flag.
    m_backend.remove(account);
    const SecretStatus status = m_backend.add(account, value.toUtf8(), dialog);
    if (status != SecretStatus::success && status != SecretStatus::duplicate) {
        return false;
    }
    setPresent(m_defaults, account);
    return true;
}

void SecretStore::migratePresence(AIProvider provider, bool useOwnAI)
{
    if (m_defaults.boolean(presenceMigratedKey).value_or(false)) {
        return;
    }
    m_defaults.setValue(presenceMigratedKey, true);
    if (useOwnAI) {
        for (const AIProvider candidate : allProviders) {
            if (isKeyProvider(candidate)) {
                setPresent(m_defaults, apiKeyAccount(candidate));
            }
        }
    } else if (needsKey(provider)) {
        setPresent(m_defaults, apiKeyAccount(provider));
    } else {
        return;
    }
    setPresent(m_defaults, legacyApiKeyAccount());
    const QString workerURL =
        m_defaults.string(QStringLiteral("zv.cloudflareWorkerURL")).value_or(QString());
    if (!workerURL.isEmpty()) {
        setPresent(m_defaults, cloudflareAccessTokenAccount());
    }
}

QString apiKeyAccount(AIProvider provider)
{
    return QStringLiteral("zv.apiKey.") + rawValue(provider);
}

QString legacyApiKeyAccount()
{
    return QStringLiteral("zv.apiKey");
}

QString cloudflareAccessTokenAccount()
{
    return QStringLiteral("zv.cloudflareAccessToken");
}

} // namespace zelvane
