#pragma once

#include <QByteArray>
#include <QString>

namespace zelvane {

/// How the platform's secret store answered.
enum class SecretStatus {
    success,
    notFound,
    refused,
    duplicate,
    otherFailure,
};

/// Whether a dialog may come of a call, now or in a while, for unlocking the store or making one.
enum class SecretDialog {
    allowed,  ///< the user has just asked for the secret to be stored
    unwanted, ///< the user knows nothing of it
};

/// The platform's store of secrets: one value per account under the program's service name.
///
/// Calls are synchronous and bounded in time; a locked or missing store answers with a status.
/// Callable from any thread.
class SecretBackend
{
public:
    struct Found
    {
        SecretStatus status = SecretStatus::otherFailure;
        QByteArray value;
    };

    SecretBackend() = default;
    virtual ~SecretBackend() = default;
    Q_DISABLE_COPY_MOVE(SecretBackend)

    [[nodiscard]] virtual Found find(const QString& account) = 0;
    virtual SecretStatus add(const QString& account, const QByteArray& value,
                             SecretDialog dialog) = 0;
    virtual SecretStatus remove(const QString& account) = 0;
};

} // namespace zelvane
