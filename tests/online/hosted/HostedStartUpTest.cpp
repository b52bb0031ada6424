#include "online/HostedStartUp.h"

#include "online/hosted/HostedFixture.h"

#include <gmock/gmock.h>

namespace zelvane::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

const QByteArray config = R"({"config":{"version":7,"model":"m-2","provider":"mistral"}})";
const QByteArray quota =
    R"({"quota":{"dayUsed":1,"dayLimit":200,"dayRemaining":199,"minuteUsed":2,)"
    R"("minuteLimit":20,"minuteRemaining":18,"dayBucket":"2026-01-02"}})";

class StartUp : public ::testing::Test
{
protected:
    StartUp()
    {
        install.defaults.setValue(QStringLiteral("zv.provider"), QStringLiteral("Zelvane"));
        install.defaults.setValue(QStringLiteral("zv.cloudflareWorkerURL"),
                                  QStringLiteral("https://worker.example"));
        install.defaults.setValue(QStringLiteral("zv.installId"), QStringLiteral("ID-0"));
        std::ignore = install.secrets.write(QStringLiteral("token-0"),
                                            QStringLiteral("zv.cloudflare.installToken"));
    }

    void run()
    {
        settings.emplace(install.defaults, install.secrets, QStringLiteral("English (US)"));
        HostedStartUp startUp(service, *settings);
        startUp.start();
        EXPECT_TRUE(waitUntil([&] { return !startUp.isRunning(); }));
    }

    [[nodiscard]] QStringList paths() const
    {
        QStringList found;
        for (const HttpRequest& request : transport.requests()) {
            found += request.url.path();
        }
        return found;
    }

    Install install;
    FakeHttpTransport transport;
    HostedService service{transport, install.defaults, install.secrets, install.machine, {}};
    std::optional<AppSettings> settings;
};

TEST_F(StartUp, bringsTheConfigurationAndTheQuota)
{
    transport.answer(200, config);
    transport.answer(200, quota);
    run();
    EXPECT_THAT(paths(), ElementsAre(QStringLiteral("/v1/bootstrap"), QStringLiteral("/v1/quota")));
    EXPECT_EQ(transport.requests().front().url.host(), QStringLiteral("worker.example"));
    EXPECT_EQ(service.currentConfig().model, QStringLiteral("m-2"));
    EXPECT_EQ(service.cachedQuota()->dayUsed, 1);
    EXPECT_EQ(settings->model(), QStringLiteral("m-2"));
    EXPECT_EQ(install.defaults.string(QStringLiteral("zv.model.Zelvane")), QStringLiteral("m-2"));
}

TEST_F(StartUp, leavesTheModelOfAnotherEngineAlone)
{
    install.defaults.setValue(QStringLiteral("zv.provider"), QStringLiteral("Smart Offline"));
    transport.answer(200, config);
    transport.answer(200, quota);
    run();
    EXPECT_EQ(service.currentConfig().model, QStringLiteral("m-2"));
    EXPECT_NE(settings->model(), QStringLiteral("m-2"));
    EXPECT_EQ(install.defaults.value(QStringLiteral("zv.model.Zelvane")), std::nullopt);
}

TEST_F(StartUp, clearsWhatOlderVersionsStored)
{
    for (const char* account : {"zv.cloudflareAccessToken", "zv.cloudflare.apiKey.prod",
                                "zv.cloudflare.apiKey.dev", "zv.installId"}) {
        ASSERT_TRUE(install.secrets.write(QStringLiteral("old"), QString::fromLatin1(account)));
    }
    transport.answer(200, config);
    transport.answer(200, quota);
    run();
    EXPECT_THAT(install.backend.items.keys(),
                ElementsAre(QStringLiteral("zv.cloudflare.installToken")));
    EXPECT_EQ(install.id(), QStringLiteral("ID-0"));
}

TEST_F(StartUp, keepsQuietAboutEveryFailure)
{
    transport.fail(TransportError(TransportError::Kind::connection, QStringLiteral("offline")));
    transport.fail(TransportError(TransportError::Kind::connection, QStringLiteral("offline")));
    run();
    EXPECT_THAT(paths(), ElementsAre(QStringLiteral("/v1/bootstrap"), QStringLiteral("/v1/quota")));
    EXPECT_EQ(settings->model(), QStringLiteral("gemini-3.1-flash-lite"));
    EXPECT_EQ(service.currentConfig().model, QStringLiteral("gemini-3.1-flash-lite"));
}

TEST_F(StartUp, bringsTheQuotaEvenIfTheConfigurationFails)
{
    transport.answer(200, "<html>");
    transport.answer(200, quota);
    run();
    EXPECT_EQ(service.cachedQuota()->dayUsed, 1);
}

TEST_F(StartUp, keepsTheConfigurationEvenIfTheQuotaFails)
{
    transport.answer(200, config);
    transport.answer(403, R"({"error":"install_banned"})");
    run();
    EXPECT_EQ(settings->model(), QStringLiteral("m-2"));
    EXPECT_EQ(service.cachedQuota(), std::nullopt);
}

TEST_F(StartUp, keepsQuietAboutAnAddressThatIsNone)
{
    install.defaults.setValue(QStringLiteral("zv.cloudflareWorkerURL"), QStringLiteral("nonsense"));
    run();
    EXPECT_THAT(paths(), IsEmpty());
}

TEST_F(StartUp, endsWithItsOwner)
{
    settings.emplace(install.defaults, install.secrets, QStringLiteral("English (US)"));
    {
        HostedStartUp startUp(service, *settings);
        startUp.start();
        EXPECT_TRUE(startUp.isRunning());
    }
    QCoreApplication::processEvents();
    EXPECT_THAT(paths(), IsEmpty());
}

} // namespace
} // namespace zelvane::test
