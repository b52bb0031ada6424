#include "Services/OfflineEngines.h"

#include "EngineFixture.h"
#include "FakeLocalServer.h"
#include "FakeProcessTable.h"
#include "pipeline/TranslationError.h"
#include "support/Await.h"
#include "support/FakeChildProcesses.h"
#include "support/VirtualClock.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace zelvane::test {
namespace {

using namespace std::chrono_literals;
using enum SmartOfflineVariant;
using ::testing::ElementsAre;

class OfflineEnginesTest : public ::testing::Test
{
protected:
    OfflineEnginesTest() { transport.health = 200; }

    /// An installation whose model takes no room on the disk.
    void install(SmartOfflineVariant variant)
    {
        const EngineFiles files(root.path(), factsOf(variant));
        writeEngine(files);
        ASSERT_TRUE(QFile::resize(files.model(), files.facts().expectedModelBytes));
        ASSERT_TRUE(files.writeReadyRecord());
    }
    void serve(SmartOfflineVariant variant)
    {
        install(variant);
        const auto started = watch(engines.engine(variant).ensureServer(GpuLayers::all, {}));
        clock.advance(250ms);
        ASSERT_TRUE(started->isSuccess());
    }
    bool isRunning(SmartOfflineVariant variant)
    {
        return engines.engine(variant).server().isRunning();
    }

    QTemporaryDir root;
    VirtualClock clock;
    FakeLocalServer transport;
    FakeChildProcesses children;
    FakeProcessTable processes;
    StraySweep sweep{processes, clock};
    OfflineEngines::Parts parts(OfflineEngines::AtCreation atCreation)
    {
        return {.root = root.path(),
                .server = {children, transport, clock, sweep},
                .defaults = defaults,
                .archiveFolders = {},
                .selectedProvider = [] { return AIProvider::claude; },
                .atCreation = atCreation};
    }

    OverlayUserDefaults defaults;
    OfflineEngines engines{parts(OfflineEngines::AtCreation::nothing)};
};

TEST_F(OfflineEnginesTest, HasOneEngineForEachOfflineProvider)
{
    EXPECT_EQ(engines.engineOf(AIProvider::smartOffline), &engines.engine(hyMT2_7b));
    EXPECT_EQ(engines.engineOf(AIProvider::balancedOffline), &engines.engine(euroLLM_9b));
    EXPECT_EQ(engines.engineOf(AIProvider::fastOffline), &engines.engine(lmt60_4b));
    EXPECT_EQ(engines.engineOf(AIProvider::chatGPT), nullptr);
    EXPECT_EQ(engines.engine(lmt60_4b).files().folder(), root.path() + QStringLiteral("/lmt60-4b"));
}

TEST_F(OfflineEnginesTest, MakesAnEngineOnceAndSweepsThenIfItIsTo)
{
    OfflineEngines sweeping(parts(OfflineEngines::AtCreation::sweep));
    EXPECT_EQ(processes.listings, 0);
    (void)sweeping.engine(lmt60_4b);
    (void)sweeping.engine(lmt60_4b);
    EXPECT_EQ(processes.listings, 1);
    sweeping.stopAllOfflineEngines(); // makes the others
    EXPECT_EQ(processes.listings, 3);
}

TEST_F(OfflineEnginesTest, OnlyOneModelSitsInMemory)
{
    serve(lmt60_4b);
    serve(hyMT2_7b);
    EXPECT_FALSE(isRunning(lmt60_4b));
    EXPECT_TRUE(isRunning(hyMT2_7b));
    EXPECT_EQ(children.children.front()->calls.first(), QStringLiteral("terminate"));
}

TEST_F(OfflineEnginesTest, AnotherEnginesJobCancelsAWarmUpSilently)
{
    install(lmt60_4b);
    engines.providerPicked(AIProvider::fastOffline);
    EXPECT_EQ(children.children.size(), 1U);
    serve(hyMT2_7b);
    EXPECT_FALSE(isRunning(lmt60_4b));
    EXPECT_EQ(engines.engine(lmt60_4b).state().installLog.value(), QString());
}

TEST_F(OfflineEnginesTest, StopsAllButOne)
{
    serve(lmt60_4b);
    engines.stopAllOfflineEngines(lmt60_4b);
    EXPECT_TRUE(isRunning(lmt60_4b));
    engines.stopAllOfflineEngines(hyMT2_7b);
    EXPECT_FALSE(isRunning(lmt60_4b));
}

TEST_F(OfflineEnginesTest, ASwitchOfTheProviderStopsWhatIsNotIts)
{
    serve(lmt60_4b);
    engines.providerSwitched(AIProvider::fastOffline);
    EXPECT_TRUE(isRunning(lmt60_4b));
    engines.providerSwitched(AIProvider::chatGPT);
    EXPECT_FALSE(isRunning(lmt60_4b));
}

TEST_F(OfflineEnginesTest, PickingAProviderWarmsItsEngineUp)
{
    (void)engines.engine(lmt60_4b);
    install(lmt60_4b); // since
    engines.providerPicked(AIProvider::fastOffline);
    clock.advance(250ms);
    EXPECT_TRUE(isRunning(lmt60_4b));
    engines.providerPicked(AIProvider::claude);
    EXPECT_FALSE(isRunning(lmt60_4b));
}

TEST_F(OfflineEnginesTest, ShuttingDownWaitsUntilTheServerHasGone)
{
    serve(lmt60_4b);
    const auto shutDown = watch(engines.shutDown());
    EXPECT_EQ(children.children.front()->calls, QStringList{QStringLiteral("terminate")});
    clock.advance(100ms);
    EXPECT_FALSE(shutDown->hasEnded);
    children.children.front()->end();
    clock.advance(10ms);
    EXPECT_TRUE(shutDown->isSuccess());
}

TEST_F(OfflineEnginesTest, ShuttingDownKillsWhatDoesNotGo)
{
    serve(lmt60_4b);
    const auto shutDown = watch(engines.shutDown());
    clock.advance(1990ms);
    EXPECT_FALSE(shutDown->hasEnded);
    clock.advance(20ms);
    EXPECT_TRUE(shutDown->isSuccess());
    EXPECT_EQ(children.children.front()->calls.last(), QStringLiteral("gone"));
}

TEST_F(OfflineEnginesTest, ShuttingDownWithoutAServerTakesNoTimeAndMakesNoEngine)
{
    EXPECT_TRUE(watch(engines.shutDown())->isSuccess());
    EXPECT_EQ(clock.pendingTimers(), 0);
}

class WaitingChild final : public LocalEngineChild
{
public:
    explicit WaitingChild(QStringList& calls)
        : m_calls(calls)
    {
    }
    [[nodiscard]] bool isRunning() const override { return true; }
    void write(const QByteArray&) override { m_calls += QStringLiteral("write"); }
    void terminate() override { m_calls += QStringLiteral("terminate"); }

private:
    QStringList& m_calls;
};

TEST_F(OfflineEnginesTest, AChildOfTheEarlierKindGoesBeforeAModelIsLoaded)
{
    QStringList calls;
    auto& earlier = engines.localEngine(LocalEngineManager::Variant::large);
    earlier.hold(std::make_unique<WaitingChild>(calls));
    serve(lmt60_4b);
    EXPECT_THAT(calls, ElementsAre(QStringLiteral("write"), QStringLiteral("terminate")));
    earlier.hold(std::make_unique<WaitingChild>(calls));
    engines.stopLocalEngines();
    EXPECT_EQ(calls.size(), 4);
}

TEST_F(OfflineEnginesTest, TranslatesWithTheEngineOfTheRequest)
{
    install(euroLLM_9b);
    TranslationRequest request;
    request.provider = AIProvider::balancedOffline;
    request.text = QStringLiteral("Hello");
    request.targetLanguage = QStringLiteral("German");
    auto call = engines.translate(request, {});
    clock.advance(250ms);
    ASSERT_EQ(transport.answers.size(), 1U);
    EXPECT_THAT(transport.requests.back().body.toStdString(),
                ::testing::HasSubstr(R"("model":"eurollm-9b")"));
    transport.answers.back().succeed(
        HttpResponse{200, {}, R"({"choices":[{"message":{"content":"Hallo"}}]})"});
    EXPECT_EQ(await(std::move(call)), QStringLiteral("Hallo"));
}

TEST_F(OfflineEnginesTest, AnEngineThatIsNotInstalledSaysSo)
{
    TranslationRequest request;
    request.provider = AIProvider::smartOffline;
    request.text = QStringLiteral("Hello");
    const auto call = watch(engines.translate(request, {}));
    EXPECT_EQ(call->as<TranslationError>()->code(), TranslationError::Code::offlineEngineMissing);
}

} // namespace
} // namespace zelvane::test
