// The settings with a worker: a secret store that takes its time holds nobody up.

#include "foundation/Worker.h"
#include "settings/AppSettings.h"
#include "support/Await.h"

#include <gtest/gtest.h>

#include <QSemaphore>

namespace zelvane::test {
namespace {

/// A store whose every call waits until the test lets it go on.
class SlowSecretBackend final : public SecretBackend
{
public:
    [[nodiscard]] Found find(const QString& account) override
    {
        asked.release();
        goOn.acquire();
        return {SecretStatus::success, "key of " + account.toUtf8()};
    }
    SecretStatus add(const QString&, const QByteArray& value, SecretDialog) override
    {
        asked.release();
        goOn.acquire();
        stored = value;
        return SecretStatus::success;
    }
    SecretStatus remove(const QString&) override { return SecretStatus::success; }

    QSemaphore asked;
    QSemaphore goOn;
    QByteArray stored;
};

class SlowSecrets : public ::testing::Test
{
protected:
    SlowSecrets()
    {
        defaults.setValue(QStringLiteral("zv.provider"), QStringLiteral("ChatGPT"));
        for (const char* provider : {"ChatGPT", "Mistral"}) {
            defaults.setValue(
                QStringLiteral("zv.keychain.has.zv.apiKey.") + QString::fromLatin1(provider), true);
        }
        defaults.setValue(QStringLiteral("zv.keychain.presenceMigrated"), true);
    }
    ~SlowSecrets() override
    {
        backend.goOn.release(100);
        settings.reset();
    }

    void load()
    {
        settings =
            std::make_unique<AppSettings>(defaults, secrets, QStringLiteral("German"), &worker);
    }

    [[nodiscard]] bool keyBecomes(const QString& key)
    {
        return waitUntil([&] { return settings->apiKey() == key; });
    }

    OverlayUserDefaults defaults;
    SlowSecretBackend backend;
    SecretStore secrets{defaults, backend};
    Worker worker;
    std::unique_ptr<AppSettings> settings;
};

TEST_F(SlowSecrets, areNotWaitedForByTheLoad)
{
    load();
    ASSERT_TRUE(backend.asked.tryAcquire(1, 5000));
    EXPECT_EQ(settings->provider(), AIProvider::chatGPT);
    EXPECT_EQ(settings->apiKey(), QString());
    backend.goOn.release();
    EXPECT_TRUE(keyBecomes(QStringLiteral("key of zv.apiKey.ChatGPT")));
    EXPECT_TRUE(await(settings->saveKey())); // it is known to be stored: nothing is asked again
    EXPECT_EQ(backend.asked.available(), 0);
}

TEST_F(SlowSecrets, areSavedWithoutHoldingUpTheCaller)
{
    load();
    backend.goOn.release();
    ASSERT_TRUE(keyBecomes(QStringLiteral("key of zv.apiKey.ChatGPT")));
    backend.asked.acquire(backend.asked.available());
    settings->setApiKey(QStringLiteral(" new "));
    QCoro::Task<bool> saving = settings->saveKey();
    ASSERT_TRUE(backend.asked.tryAcquire(1, 5000));
    EXPECT_EQ(backend.stored, QByteArray());
    backend.goOn.release();
    EXPECT_TRUE(await(std::move(saving)));
    EXPECT_EQ(backend.stored, QByteArray("new"));
}

TEST_F(SlowSecrets, thatWereClearedWhileTheyWereSavedAreSavedAgain)
{
    load();
    backend.goOn.release();
    ASSERT_TRUE(keyBecomes(QStringLiteral("key of zv.apiKey.ChatGPT")));
    backend.asked.acquire(backend.asked.available());
    settings->setApiKey(QStringLiteral("new"));
    QCoro::Task<bool> saving = settings->saveKey();
    ASSERT_TRUE(backend.asked.tryAcquire(1, 5000));
    settings->setApiKey(QString());
    settings->clearKey(AIProvider::chatGPT);
    backend.goOn.release();
    EXPECT_TRUE(await(std::move(saving)));

    settings->setApiKey(QStringLiteral("new"));
    QCoro::Task<bool> again = settings->saveKey();
    EXPECT_TRUE(backend.asked.tryAcquire(1, 1000));
    backend.goOn.release();
    EXPECT_TRUE(await(std::move(again)));
}

TEST_F(SlowSecrets, doNotReplaceAKeyThatWasTypedMeanwhile)
{
    load();
    ASSERT_TRUE(backend.asked.tryAcquire(1, 5000));
    settings->setApiKey(QStringLiteral("typed"));
    backend.goOn.release();
    EXPECT_FALSE(waitUntil([&] { return settings->apiKey() != QStringLiteral("typed"); },
                           std::chrono::milliseconds(50)));
}

TEST_F(SlowSecrets, ofAnotherProviderAreNeverTakenForThoseOfTheNewOne)
{
    load();
    ASSERT_TRUE(backend.asked.tryAcquire(1, 5000));
    settings->setProvider(AIProvider::mistral);
    QCoreApplication::sendPostedEvents();
    EXPECT_EQ(settings->apiKey(), QString());
    backend.goOn.release();
    ASSERT_TRUE(backend.asked.tryAcquire(1, 5000));
    QCoreApplication::sendPostedEvents();
    EXPECT_EQ(settings->apiKey(), QString());
    backend.goOn.release();
    EXPECT_TRUE(keyBecomes(QStringLiteral("key of zv.apiKey.Mistral")));
}

TEST_F(SlowSecrets, disturbNobodyAfterTheSettingsHaveGone)
{
    load();
    ASSERT_TRUE(backend.asked.tryAcquire(1, 5000));
    settings.reset();
    backend.goOn.release();
    QCoreApplication::processEvents();
}

} // namespace
} // namespace zelvane::test
