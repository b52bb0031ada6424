#pragma once

#include "settings/AIProvider.h"
#include "settings/SecretBackend.h"
#include "settings/UserDefaults.h"

#include <optional>

namespace zelvane {

/// Secrets by account, behind presence flags in the settings: the platform's store, whose every
/// access may raise a dialog, is asked only if the flag says that there is something to fetch.
class SecretStore
{
public:
    /// Both must outlive this object.
    SecretStore(UserDefaults& defaults, SecretBackend& backend);

    /// Whether a secret was stored, as far as is known without asking the platform's store.
    [[nodiscard]] bool mayHold(const QString& account) const;

    /// The secret, or none if there is none, the store refuses, or it isn't UTF-8.
    [[nodiscard]] std::optional<QString> read(const QString& account);

    /// Stores `value`; the empty string deletes. False if the platform's store did not take it.
    [[nodiscard]] bool write(const QString& value, const QString& account,
                             SecretDialog dialog = SecretDialog::allowed);

    /// Sets the flags of accounts that an installation from before the flags may have used, once.
    void migratePresence(AIProvider provider, bool useOwnAI);

private:
    UserDefaults& m_defaults;
    SecretBackend& m_backend;
};

/// The account of a provider's key.
[[nodiscard]] QString apiKeyAccount(AIProvider provider);

/// The account of the one key of older versions.
[[nodiscard]] QString legacyApiKeyAccount();

/// The account of a token that older versions stored for the hosted service.
[[nodiscard]] QString cloudflareAccessTokenAccount();

} // namespace zelvane
