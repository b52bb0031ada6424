#include "settings/SecretStore.h"

#include "support/FakeSecretBackend.h"

#include <gtest/gtest.h>

namespace zelvane::test {
namespace {

const QString account = QStringLiteral("zv.apiKey.ChatGPT");
const QString flag = QStringLiteral("zv.keychain.has.zv.apiKey.ChatGPT");

class SecretStoreTest : public ::testing::Test
{
protected:
    void storeBehindFlag(const QByteArray& value)
    {
        backend.items.insert(account, value);
        defaults.setValue(flag, true);
    }

    OverlayUserDefaults defaults;
    FakeSecretBackend backend;
    SecretStore store{defaults, backend};
};

TEST_F(SecretStoreTest, readsNothingAndAsksNobodyWithoutTheFlag)
{
    backend.items.insert(account, "sk-1");
    EXPECT_EQ(store.read(account), std::nullopt);
    defaults.setValue(flag, false);
    EXPECT_EQ(store.read(account), std::nullopt);
    defaults.setValue(flag, QStringLiteral("true"));
    EXPECT_EQ(store.read(account), std::nullopt);
    EXPECT_EQ(backend.calls, QStringList());
}

TEST_F(SecretStoreTest, readsASecretBehindItsFlag)
{
    storeBehindFlag("schlüssel");
    EXPECT_EQ(store.read(account), QStringLiteral("schlüssel"));
    EXPECT_EQ(backend.calls, QStringList{QStringLiteral("find zv.apiKey.ChatGPT")});
}

TEST_F(SecretStoreTest, forgetsTheFlagOfASecretThatIsGone)
{
    defaults.setValue(flag, true);
    EXPECT_EQ(store.read(account), std::nullopt);
    EXPECT_EQ(defaults.value(flag), std::nullopt);
}

TEST_F(SecretStoreTest, neverAsksAgainAfterARefusal)
{
    storeBehindFlag("sk-1");
    backend.findStatus = SecretStatus::refused;
    EXPECT_EQ(store.read(account), std::nullopt);
    EXPECT_EQ(defaults.value(flag), std::nullopt);
    backend.findStatus = SecretStatus::success;
    EXPECT_EQ(store.read(account), std::nullopt);
    EXPECT_EQ(backend.calls.size(), 1);
}

TEST_F(SecretStoreTest, keepsTheFlagWhenTheStoreFailsOrTheSecretIsUnreadable)
{
    storeBehindFlag("sk-1");
    backend.findStatus = SecretStatus::otherFailure;
    EXPECT_EQ(store.read(account), std::nullopt);
    backend.findStatus = SecretStatus::success;
    for (const QByteArray& unreadable :
         {QByteArray(), QByteArray("\xff\xfe"), QByteArray("a\xc3")}) {
        storeBehindFlag(unreadable);
        EXPECT_EQ(store.read(account), std::nullopt);
    }
    EXPECT_EQ(defaults.boolean(flag), true);
}

TEST_F(SecretStoreTest, deletesBeforeItAdds)
{
    backend.items.insert(account, "hidden, since it has no flag");
    EXPECT_TRUE(store.write(QStringLiteral("sk-2"), account));
    EXPECT_TRUE(store.write(QStringLiteral("sk-2"), account));
    const QStringList once{QStringLiteral("remove zv.apiKey.ChatGPT"),
                           QStringLiteral("add zv.apiKey.ChatGPT")};
    EXPECT_EQ(backend.calls, once + once);
    EXPECT_EQ(backend.items.value(account), QByteArray("sk-2"));
    EXPECT_EQ(defaults.boolean(flag), true);
}

TEST_F(SecretStoreTest, takesADuplicateForSuccess)
{
    backend.addStatus = SecretStatus::duplicate;
    EXPECT_TRUE(store.write(QStringLiteral("sk-2"), account));
    EXPECT_EQ(defaults.boolean(flag), true);
}

TEST_F(SecretStoreTest, leavesTheFlagAsItWasWhenAddingFails)
{
    for (const SecretStatus status :
         {SecretStatus::refused, SecretStatus::notFound, SecretStatus::otherFailure}) {
        backend.addStatus = status;
        defaults.remove(flag);
        EXPECT_FALSE(store.write(QStringLiteral("sk-2"), account));
        EXPECT_EQ(defaults.value(flag), std::nullopt);
        defaults.setValue(flag, true);
        EXPECT_FALSE(store.write(QStringLiteral("sk-2"), account));
        EXPECT_EQ(defaults.boolean(flag), true);
    }
}

TEST_F(SecretStoreTest, deletesWhenTheEmptyStringIsWritten)
{
    storeBehindFlag("sk-1");
    EXPECT_TRUE(store.write(QString(), account));
    EXPECT_TRUE(backend.items.isEmpty());
    EXPECT_EQ(defaults.value(flag), std::nullopt);
}

TEST_F(SecretStoreTest, askedToDeleteWhatWasNeverStoredItAsksNobody)
{
    EXPECT_TRUE(store.write(QString(), account));
    EXPECT_EQ(backend.calls, QStringList());
}

class PresenceMigration : public SecretStoreTest
{
protected:
    QStringList flags() const
    {
        QStringList accounts;
        for (const QString& key : defaults.keys()) {
            if (key.startsWith(QStringLiteral("zv.keychain.has."))) {
                EXPECT_EQ(defaults.boolean(key), true);
                accounts += key.sliced(16);
            }
        }
        return accounts;
    }
};

TEST_F(PresenceMigration, withOwnKeysPermitsAReadOfEachProvidersKey)
{
    store.migratePresence(AIProvider::zelvane, true);
    EXPECT_EQ(flags().join(u' '),
              QStringLiteral("zv.apiKey zv.apiKey.ChatGPT zv.apiKey.Claude zv.apiKey.DeepL "
                             "zv.apiKey.DeepSeek zv.apiKey.Gemini zv.apiKey.Grok "
                             "zv.apiKey.Mistral"));
    EXPECT_EQ(defaults.boolean(QStringLiteral("zv.keychain.presenceMigrated")), true);
    EXPECT_EQ(backend.calls, QStringList());
}

TEST_F(PresenceMigration, withoutOwnKeysPermitsTheCurrentProvidersKeyOnly)
{
    store.migratePresence(AIProvider::claude, false);
    EXPECT_EQ(flags().join(u' '), QStringLiteral("zv.apiKey zv.apiKey.Claude"));
}

TEST_F(PresenceMigration, setsNothingForAProviderThatNeedsNoKey)
{
    defaults.setValue(QStringLiteral("zv.cloudflareWorkerURL"), QStringLiteral("https://w"));
    store.migratePresence(AIProvider::smartOffline, false);
    EXPECT_EQ(flags(), QStringList());
    EXPECT_EQ(defaults.boolean(QStringLiteral("zv.keychain.presenceMigrated")), true);
}

TEST_F(PresenceMigration, permitsTheAccessTokenWhereAWorkerIsStored)
{
    defaults.setValue(QStringLiteral("zv.cloudflareWorkerURL"), QStringLiteral("https://w"));
    store.migratePresence(AIProvider::deepL, false);
    EXPECT_EQ(flags().join(u' '),
              QStringLiteral("zv.apiKey zv.apiKey.DeepL zv.cloudflareAccessToken"));
}

TEST_F(PresenceMigration, ignoresAnEmptyWorkerAddress)
{
    defaults.setValue(QStringLiteral("zv.cloudflareWorkerURL"), QString());
    store.migratePresence(AIProvider::deepL, false);
    EXPECT_EQ(flags().join(u' '), QStringLiteral("zv.apiKey zv.apiKey.DeepL"));
}

TEST_F(PresenceMigration, runsOnce)
{
    store.migratePresence(AIProvider::smartOffline, false);
    store.migratePresence(AIProvider::claude, true);
    EXPECT_EQ(flags(), QStringList());
}

} // namespace
} // namespace zelvane::test
