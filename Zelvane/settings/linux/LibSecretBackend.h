#pragma once

#include "settings/SecretBackend.h"

#include <QString>

#include <atomic>
#include <chrono>
#include <memory>
#include <mutex>

namespace zelvane {

/// Secrets in the desktop's Secret Service: attributes `service` ("Zelvane") and `account`, label
/// "Zelvane Desk".
///
/// A locked keyring, a missing service and one that doesn't answer within the limit are
/// `otherFailure`, so that nothing is taken for deleted that may still be there. Reading and
/// removing never raise a dialog. Adding to a locked keyring fails; if a dialog is allowed, the
/// desktop is asked to unlock it, so that the user's next attempt can succeed.
class LibSecretBackend final : public SecretBackend
{
public:
    explicit LibSecretBackend(std::chrono::milliseconds limit = std::chrono::seconds(2));

    [[nodiscard]] Found find(const QString& account) override;
    SecretStatus add(const QString& account, const QByteArray& value, SecretDialog dialog) override;
    SecretStatus remove(const QString& account) override;

private:
    /// Runs `call` on a thread of its own; yields `otherwise` if it doesn't end within the limit.
    template <typename Result, typename Call>
    Result bounded(Call call, Result otherwise);

    const std::chrono::milliseconds m_limit;
    std::timed_mutex m_turn; ///< one call at a time
    /// True while a call runs, even if nobody waits for it any more.
    std::shared_ptr<std::atomic_bool> m_isBusy = std::make_shared<std::atomic_bool>(false);
};

} // namespace zelvane
