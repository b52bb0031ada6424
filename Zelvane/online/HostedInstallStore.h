#pragma once

#include "online/MachineIdentity.h"
#include "settings/SecretStore.h"
#include "settings/UserDefaults.h"

#include <QString>

namespace zelvane {

/// What stays of this installation's registration with the hosted service: the install id in the
/// settings, the token in the secret store.
///
/// Every call may block as long as the secret store does. Callable from any thread, but from one at
/// a time.
class HostedInstallStore
{
public:
    /// All must outlive this object.
    HostedInstallStore(UserDefaults& defaults, SecretStore& secrets,
                       const MachineIdentity& machine);

    /// The install id, a new one if there is none.
    [[nodiscard]] QString installId();

    /// The token, empty if there is none.
    [[nodiscard]] QString token();

    /// Empty clears. False if the secret store did not take it.
    bool storeToken(const QString& token);

    /// Forgets id and token.
    void reset();

    /// Clears what older versions left in the secret store, and moves the id that they kept there.
    void clearRetired();

    /// Tells the service one machine from another: hexadecimal digits, the same at every start.
    [[nodiscard]] QString deviceFingerprint();

private:
    void moveOldInstallId();
    /// The token that an older version kept in the settings, if it couldn't be moved.
    [[nodiscard]] QString moveOldToken();
    void clearSecret(const QString& account);

    UserDefaults& m_defaults;
    SecretStore& m_secrets;
    const MachineIdentity& m_machine;
};

} // namespace zelvane
