#include "online/HostedConfigCache.h"

#include <gtest/gtest.h>

#include <thread>

namespace zelvane::test {
namespace {

const QString key = QStringLiteral("zv.cloudflare.config.prod");
const ZelvaneClientConfig builtIn{QStringLiteral("gemini-3.1-flash-lite"), 0,
                                  QStringLiteral("gemini")};
const ZelvaneClientConfig given{QStringLiteral("m-2"), 7, QStringLiteral("mistral")};

TEST(HostedConfigCache, beginsWithWhatIsBuiltInWhichIsNoRecord)
{
    OverlayUserDefaults defaults;
    const HostedConfigCache cache(defaults);
    EXPECT_EQ(cache.current(), builtIn);
    EXPECT_EQ(cache.known(), std::nullopt);
    EXPECT_TRUE(defaults.keys().isEmpty());
}

TEST(HostedConfigCache, readsWhatAnEarlierRunStored)
{
    OverlayUserDefaults defaults;
    defaults.setValue(key, QByteArray(R"({"version":7,"model":"m-2","provider":"mistral"})"));
    const HostedConfigCache cache(defaults);
    EXPECT_EQ(cache.current(), given);
    EXPECT_EQ(cache.known(), given);
}

TEST(HostedConfigCache, readsOnce)
{
    OverlayUserDefaults defaults;
    HostedConfigCache cache(defaults);
    std::ignore = cache.store(given);
    defaults.remove(key);
    EXPECT_EQ(cache.known(), given);
}

TEST(HostedConfigCache, writesOnlyWhatHasChanged)
{
    OverlayUserDefaults defaults;
    HostedConfigCache cache(defaults);
    EXPECT_TRUE(cache.store(given));
    EXPECT_EQ(defaults.data(key),
              QByteArray(R"({"model":"m-2","provider":"mistral","version":7})"));
    const QByteArray otherSpelling = R"({"version":7, "model":"m-2","provider":"mistral"})";
    defaults.setValue(key, otherSpelling);
    EXPECT_FALSE(cache.store(given));
    EXPECT_EQ(defaults.data(key), otherSpelling);
    for (const ZelvaneClientConfig& other :
         {ZelvaneClientConfig{QStringLiteral("m-2"), 8, QStringLiteral("mistral")},
          ZelvaneClientConfig{QStringLiteral("m-3"), 8, QStringLiteral("mistral")},
          ZelvaneClientConfig{QStringLiteral("m-3"), 8, QStringLiteral("gemini")}}) {
        EXPECT_TRUE(cache.store(other));
        EXPECT_EQ(cache.current(), other);
        EXPECT_EQ(HostedConfigCache(defaults).current(), other);
    }
}

TEST(HostedConfigCache, takesADamagedRecordForNone)
{
    OverlayUserDefaults defaults;
    for (const QByteArray damaged :
         {"", "{}", "[]", "garbage", R"({"version":"7","model":"m","provider":"p"})",
          R"({"version":7,"model":1,"provider":"p"})", R"({"version":7,"model":"m"})"}) {
        defaults.setValue(key, damaged);
        EXPECT_EQ(HostedConfigCache(defaults).known(), std::nullopt) << damaged.toStdString();
    }
    defaults.setValue(key, QStringLiteral(R"({"version":7,"model":"m","provider":"p"})"));
    EXPECT_EQ(HostedConfigCache(defaults).known(), std::nullopt);
}

TEST(HostedConfigCache, isWholeForReadersOnOtherThreads)
{
    OverlayUserDefaults defaults;
    HostedConfigCache cache(defaults);
    std::ignore = cache.store(builtIn);
    bool isWhole = true;
    {
        const std::jthread reader([&](const std::stop_token& stop) {
            while (!stop.stop_requested()) {
                const ZelvaneClientConfig seen = cache.current();
                isWhole = isWhole && (seen == builtIn || seen == given);
            }
        });
        for (int i = 0; i < 2000; ++i) {
            std::ignore = cache.store(i % 2 == 0 ? given : builtIn);
        }
    }
    EXPECT_TRUE(isWhole);
}

} // namespace
} // namespace zelvane::test
