#pragma once

#include "settings/SecretBackend.h"

#include <QMap>
#include <QStringList>

#include <optional>

namespace zelvane::test {

/// A secret store in memory that notes each call, and fails as a test asks.
class FakeSecretBackend final : public SecretBackend
{
public:
    [[nodiscard]] Found find(const QString& account) override
    {
        calls += QStringLiteral("find ") + account;
        if (findStatus != SecretStatus::success) {
            return {findStatus, {}};
        }
        if (!items.contains(account)) {
            return {SecretStatus::notFound, {}};
        }
        return {SecretStatus::success, items.value(account)};
    }
    SecretStatus add(const QString& account, const QByteArray& value, SecretDialog dialog) override
    {
        calls += QStringLiteral("add ") + account;
        lastDialog = dialog;
        if (addStatus == SecretStatus::success) {
            items.insert(account, value);
        }
        return addStatus;
    }
    SecretStatus remove(const QString& account) override
    {
        calls += QStringLiteral("remove ") + account;
        return items.remove(account) > 0 ? SecretStatus::success : SecretStatus::notFound;
    }

    QMap<QString, QByteArray> items;
    SecretStatus findStatus = SecretStatus::success;
    SecretStatus addStatus = SecretStatus::success;
    std::optional<SecretDialog> lastDialog; ///< of the last call that added
    QStringList calls;                      ///< "find <account>" and the like, in their order
};

} // namespace zelvane::test
