#include "online/HostedInstallStore.h"

#include "online/hosted/HostedFixture.h"

#include <gmock/gmock.h>

#include <QRegularExpression>

namespace zelvane::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

const QString idKey = QStringLiteral("zv.installId");
const QString tokenKey = QStringLiteral("zv.cloudflare.installToken");

class InstallStore : public ::testing::Test
{
protected:
    void keepSecret(const QString& account, const QByteArray& value)
    {
        backend.items.insert(account, value);
        setFlag(account);
    }
    void setFlag(const QString& account)
    {
        defaults.setValue(QStringLiteral("zv.keychain.has.") + account, true);
    }
    [[nodiscard]] bool hasFlag(const QString& account) const
    {
        return defaults.value(QStringLiteral("zv.keychain.has.") + account).has_value();
    }

    OverlayUserDefaults defaults;
    FakeSecretBackend backend;
    SecretStore secrets{defaults, backend};
    FixedMachine machine;
    HostedInstallStore store{defaults, secrets, machine};
};

TEST_F(InstallStore, makesAnIdOnceAndKeepsItInTheSettings)
{
    const QString id = store.installId();
    static const QRegularExpression uuid(
        QStringLiteral("^[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}$"));
    EXPECT_TRUE(uuid.match(id).hasMatch()) << id.toStdString();
    EXPECT_EQ(store.installId(), id);
    EXPECT_EQ(defaults.string(idKey), id);
    EXPECT_THAT(backend.calls, IsEmpty());
}

TEST_F(InstallStore, takesWhateverIdIsStored)
{
    defaults.setValue(idKey, QStringLiteral("my-id"));
    EXPECT_EQ(store.installId(), QStringLiteral("my-id"));
}

TEST_F(InstallStore, replacesAnEmptyId)
{
    defaults.setValue(idKey, QString());
    EXPECT_EQ(store.installId().size(), 36);
}

TEST_F(InstallStore, movesTheIdOfOlderVersionsOutOfTheSecretStore)
{
    keepSecret(idKey, "old-id");
    EXPECT_EQ(store.installId(), QStringLiteral("old-id"));
    EXPECT_EQ(defaults.string(idKey), QStringLiteral("old-id"));
    EXPECT_THAT(backend.calls, ElementsAre(QStringLiteral("find zv.installId"),
                                           QStringLiteral("remove zv.installId")));
    EXPECT_FALSE(hasFlag(idKey));
}

TEST_F(InstallStore, clearsTheOldIdWithoutReadingItIfThereIsANewOne)
{
    keepSecret(idKey, "old-id");
    defaults.setValue(idKey, QStringLiteral("new-id"));
    EXPECT_EQ(store.installId(), QStringLiteral("new-id"));
    EXPECT_THAT(backend.calls, ElementsAre(QStringLiteral("remove zv.installId")));
}

TEST_F(InstallStore, hasNoTokenAtFirstAndAsksNobodyForIt)
{
    EXPECT_EQ(store.token(), QString());
    EXPECT_THAT(backend.calls, IsEmpty());
}

TEST_F(InstallStore, keepsTheTokenInTheSecretStoreAlone)
{
    EXPECT_TRUE(store.storeToken(QStringLiteral("token-1")));
    EXPECT_EQ(store.token(), QStringLiteral("token-1"));
    EXPECT_EQ(backend.items.value(tokenKey), "token-1");
    EXPECT_THAT(defaults.keys(),
                ElementsAre(QStringLiteral("zv.keychain.has.zv.cloudflare.installToken")));
}

TEST_F(InstallStore, raisesNoDialogForTheToken)
{
    EXPECT_TRUE(store.storeToken(QStringLiteral("token-1")));
    EXPECT_EQ(backend.lastDialog, SecretDialog::unwanted);
}

TEST_F(InstallStore, clearsTheTokenForAnEmptyOne)
{
    EXPECT_TRUE(store.storeToken(QStringLiteral("token-1")));
    EXPECT_TRUE(store.storeToken(QString()));
    EXPECT_EQ(store.token(), QString());
    EXPECT_THAT(backend.items, IsEmpty());
    EXPECT_FALSE(hasFlag(tokenKey));
}

TEST_F(InstallStore, movesTheTokenOfOlderVersionsIntoTheSecretStore)
{
    defaults.setValue(tokenKey, QStringLiteral("old-token"));
    EXPECT_EQ(store.token(), QStringLiteral("old-token"));
    EXPECT_EQ(backend.items.value(tokenKey), "old-token");
    EXPECT_EQ(defaults.value(tokenKey), std::nullopt);
}

TEST_F(InstallStore, dropsTheTokenOfOlderVersionsIfThereIsANewOne)
{
    keepSecret(tokenKey, "new-token");
    defaults.setValue(tokenKey, QStringLiteral("old-token"));
    EXPECT_EQ(store.token(), QStringLiteral("new-token"));
    EXPECT_EQ(defaults.value(tokenKey), std::nullopt);
    EXPECT_THAT(backend.calls, ElementsAre(QStringLiteral("find zv.cloudflare.installToken")));
}

TEST_F(InstallStore, dropsAnEmptyTokenOfOlderVersions)
{
    defaults.setValue(tokenKey, QString());
    EXPECT_EQ(store.token(), QString());
    EXPECT_EQ(defaults.value(tokenKey), std::nullopt);
    EXPECT_THAT(backend.calls, IsEmpty());
}

TEST_F(InstallStore, stillYieldsAnOldTokenThatCouldNotBeMoved)
{
    defaults.setValue(tokenKey, QStringLiteral("old-token"));
    backend.addStatus = SecretStatus::otherFailure;
    EXPECT_EQ(store.token(), QStringLiteral("old-token"));
    EXPECT_EQ(defaults.value(tokenKey), std::nullopt);
    EXPECT_EQ(store.token(), QString());
}

TEST_F(InstallStore, saysWhenTheSecretStoreTookNoToken)
{
    backend.addStatus = SecretStatus::otherFailure;
    EXPECT_FALSE(store.storeToken(QStringLiteral("token-1")));
    EXPECT_FALSE(hasFlag(tokenKey));
}

TEST_F(InstallStore, forgetsEverythingAtAReset)
{
    keepSecret(idKey, "old-id");
    keepSecret(tokenKey, "token-1");
    defaults.setValue(idKey, QStringLiteral("id"));
    defaults.setValue(tokenKey, QStringLiteral("old-token"));
    store.reset();
    EXPECT_THAT(defaults.keys(), IsEmpty());
    EXPECT_THAT(backend.items, IsEmpty());
}

TEST_F(InstallStore, asksTheSecretStoreForNothingAtAResetWithoutSecrets)
{
    defaults.setValue(idKey, QStringLiteral("id"));
    store.reset();
    EXPECT_THAT(defaults.keys(), IsEmpty());
    EXPECT_THAT(backend.calls, IsEmpty());
}

TEST_F(InstallStore, clearsTheSecretsOfOlderVersions)
{
    keepSecret(QStringLiteral("zv.cloudflareAccessToken"), "a");
    keepSecret(QStringLiteral("zv.cloudflare.apiKey.dev"), "b");
    backend.items.insert(QStringLiteral("zv.cloudflare.apiKey.prod"), "without a flag");
    keepSecret(idKey, "old-id");
    keepSecret(tokenKey, "token-1");
    store.clearRetired();
    EXPECT_THAT(backend.items.keys(), ElementsAre(QStringLiteral("zv.cloudflare.apiKey.prod"),
                                                  QStringLiteral("zv.cloudflare.installToken")));
    EXPECT_EQ(defaults.string(idKey), QStringLiteral("old-id"));
}

TEST_F(InstallStore, makesNoIdWhenItClearsTheSecretsOfOlderVersions)
{
    store.clearRetired();
    EXPECT_THAT(defaults.keys(), IsEmpty());
    EXPECT_THAT(backend.calls, IsEmpty());
}

TEST_F(InstallStore, tellsMachinesByTheirIds)
{
    const QString first = store.deviceFingerprint();
    EXPECT_EQ(first, deviceFingerprint("machine-1"));
    store.reset();
    EXPECT_EQ(store.deviceFingerprint(), first);
    EXPECT_THAT(defaults.keys(), IsEmpty());
}

TEST_F(InstallStore, tellsAMachineWithoutAnIdByOneThatStays)
{
    machine.id.clear();
    const QString first = store.deviceFingerprint();
    EXPECT_EQ(first.size(), 64);
    store.reset();
    EXPECT_EQ(store.deviceFingerprint(), first);
    OverlayUserDefaults others;
    HostedInstallStore other(others, secrets, machine);
    EXPECT_NE(other.deviceFingerprint(), first);
}

} // namespace
} // namespace zelvane::test
