#include "Services/LlamaServer.h"

#include "FakeLocalServer.h"
#include "FakeProcessTable.h"
#include "Services/EngineError.h"
#include "pipeline/TranslationError.h"
#include "support/Await.h"
#include "support/FakeChildProcesses.h"
#include "support/VirtualClock.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QRegularExpression>

namespace zelvane::test {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Code = TranslationError::Code;

/// Whether a task failed since the server was stopped.
bool isBusy(const std::shared_ptr<Outcome>& outcome)
{
    const auto error = outcome->as<TranslationError>();
    return error && error->code() == Code::offlineEngineBusy;
}

class LlamaServerTest : public ::testing::Test
{
protected:
    LlamaServer::Parts parts()
    {
        return {children, transport, clock, sweep, [this] {
                    ++accesses;
                    return ServerAccess{static_cast<quint16>(50000 + accesses),
                                        QStringLiteral("key%1").arg(accesses)};
                }};
    }
    std::shared_ptr<Outcome> ensure(GpuLayers layers = GpuLayers::all, std::stop_token stop = {})
    {
        return watch(server->ensure(layers, stop));
    }
    std::shared_ptr<Outcome> complete(std::stop_token stop = {})
    {
        return watch(server->completion({{QStringLiteral("model"), QStringLiteral("m")}}, stop));
    }
    /// A server that answers.
    void serve()
    {
        transport.health = 503;
        const auto started = ensure();
        transport.health = 200;
        clock.advance(250ms);
        ASSERT_TRUE(started->isSuccess());
        transport.requests.clear();
    }
    FakeChildProcesses::Child& child(std::size_t index) { return *children.children.at(index); }
    [[nodiscard]] std::size_t launches() const { return children.children.size(); }

    VirtualClock clock;
    FakeLocalServer transport;
    FakeChildProcesses children;
    FakeProcessTable processes;
    StraySweep sweep{processes, clock};
    int accesses = 0;
    std::unique_ptr<LlamaServer> server = std::make_unique<LlamaServer>(
        LlamaServerFiles{QStringLiteral("/e/runtime/b/llama-server"),
                         QStringLiteral("/e/runtime/b"), QStringLiteral("/e/model/m.gguf")},
        parts());
};

TEST_F(LlamaServerTest, StartsTheServerWithTheseArgumentsInThisOrder)
{
    const auto started = ensure();
    ASSERT_EQ(launches(), 1U);
    const ChildProcessCommand& command = child(0).command;
    EXPECT_EQ(command.executable, QStringLiteral("/e/runtime/b/llama-server"));
    EXPECT_EQ(command.arguments,
              (QStringList{
                  QStringLiteral("-m"), QStringLiteral("/e/model/m.gguf"), QStringLiteral("--host"),
                  QStringLiteral("127.0.0.1"), QStringLiteral("--port"), QStringLiteral("50001"),
                  QStringLiteral("-ngl"), QStringLiteral("99"), QStringLiteral("-c"),
                  QStringLiteral("12288"), QStringLiteral("-np"), QStringLiteral("4"),
                  QStringLiteral("--jinja"), QStringLiteral("--api-key"), QStringLiteral("key1")}));
    EXPECT_EQ(command.workingDirectory, QStringLiteral("/e/runtime/b"));
    EXPECT_EQ(command.environment.value(QStringLiteral("LD_LIBRARY_PATH")),
              QStringLiteral("/e/runtime/b"));
    EXPECT_EQ(command.environment.value(QStringLiteral("PATH")), qEnvironmentVariable("PATH"));
    EXPECT_EQ(command.standardError, ChildProcessCommand::StandardError::withOutput);
    EXPECT_FALSE(started->hasEnded);
}

TEST_F(LlamaServerTest, PortAndKeyAreNewEachTimeAndInTheirRange)
{
    QSet<QString> keys;
    int lowest = 65535;
    int highest = 0;
    for (int i = 0; i < 20000; ++i) {
        const ServerAccess access = randomServerAccess();
        keys.insert(access.key);
        lowest = std::min<int>(lowest, access.port);
        highest = std::max<int>(highest, access.port);
        static const QRegularExpression hexadecimal(QStringLiteral("^[0-9a-fA-F]{32}$"));
        ASSERT_TRUE(hexadecimal.match(access.key).hasMatch()) << access.key.toStdString();
    }
    EXPECT_EQ(keys.size(), 20000);
    EXPECT_GE(lowest, 49152);
    EXPECT_LE(highest, 60000);
    EXPECT_LT(lowest, 49252);
    EXPECT_GT(highest, 59900);
}

TEST_F(LlamaServerTest, AsksForTheHealthFourTimesASecondUntilItIsGood)
{
    const auto started = ensure();
    EXPECT_EQ(transport.requests.size(), 1U);
    clock.advance(249ms);
    EXPECT_EQ(transport.requests.size(), 1U);
    transport.health = 503;
    clock.advance(1ms);
    EXPECT_EQ(transport.requests.size(), 2U);
    EXPECT_FALSE(started->hasEnded);
    transport.health = 204;
    clock.advance(250ms);
    EXPECT_TRUE(started->isSuccess());
    clock.advance(10s);
    EXPECT_EQ(transport.requests.size(), 3U);

    const HttpRequest& health = transport.requests.front();
    EXPECT_EQ(health.method, "GET");
    EXPECT_EQ(health.url, QUrl(QStringLiteral("http://127.0.0.1:50001/health")));
    EXPECT_EQ(health.headers,
              (QList<QPair<QByteArray, QByteArray>>{{"Authorization", "Bearer key1"}}));
    EXPECT_EQ(health.timeout, 1s);
    EXPECT_EQ(health.totalTimeout, 1s);
}

TEST_F(LlamaServerTest, AHealthyAnswerBeforeOursCanHaveLoadedIsSomebodyElses)
{
    transport.health = 200; // from the first moment
    const auto started = ensure(GpuLayers::none);
    EXPECT_FALSE(started->hasEnded);
    child(0).print("couldn't bind HTTP server socket\n");
    child(0).end({ChildProcessEnd::Kind::exited, 1});
    clock.advance(250ms);
    const auto error = started->as<EngineError>();
    ASSERT_TRUE(error);
    EXPECT_EQ(error->description(), QStringLiteral("couldn't bind HTTP server socket"));
}

TEST_F(LlamaServerTest, AServerThatIsHealthyAtOnceIsBelievedAtTheSecondTime)
{
    transport.health = 200;
    const auto started = ensure();
    clock.advance(250ms);
    EXPECT_TRUE(started->isSuccess());
}

TEST_F(LlamaServerTest, AHealthyServerIsLeftAloneAndItsIdleTimeBeginsAnew)
{
    serve();
    clock.advance(400s);
    EXPECT_TRUE(ensure()->isSuccess());
    EXPECT_EQ(transport.requests.size(), 1U);
    EXPECT_EQ(launches(), 1U);
    clock.advance(599s);
    EXPECT_TRUE(server->isRunning());
    clock.advance(1s);
    EXPECT_FALSE(server->isRunning());
}

TEST_F(LlamaServerTest, AServerThatNoLongerAnswersIsReplaced)
{
    serve();
    transport.health = 0;
    const auto started = ensure();
    EXPECT_EQ(child(0).calls, QStringList{QStringLiteral("terminate")});
    ASSERT_EQ(launches(), 2U);
    EXPECT_EQ(server->access(), (ServerAccess{50002, QStringLiteral("key2")}));
    transport.health = 200;
    clock.advance(250ms);
    EXPECT_TRUE(started->isSuccess());
}

TEST_F(LlamaServerTest, ACrashedServerIsReplacedWithANewPortAndANewKey)
{
    serve();
    child(0).end({ChildProcessEnd::Kind::signalled, 11});
    EXPECT_FALSE(server->isRunning());
    // What asks there until then fails at the port, rather than being told that nothing runs.
    EXPECT_EQ(server->access(), (ServerAccess{50001, QStringLiteral("key1")}));
    const auto started = ensure();
    EXPECT_EQ(launches(), 2U);
    EXPECT_EQ(server->access(), (ServerAccess{50002, QStringLiteral("key2")}));
    clock.advance(250ms);
    EXPECT_TRUE(started->isSuccess());
}

TEST_F(LlamaServerTest, SweepsBeforeEachStart)
{
    processes.table = "812 /e/runtime/b/llama-server -m x\n";
    ensure();
    EXPECT_EQ(processes.listings, 1);
    EXPECT_THAT(processes.calls, ElementsAre(QStringLiteral("terminate 812")));
}

TEST_F(LlamaServerTest, ASweepLeavesTheOwnServerAlone)
{
    serve();
    processes.table = QByteArray::number(*server->pid()) + " /e/runtime/b/llama-server -m x\n";
    await(server->sweepStrays({}));
    EXPECT_THAT(processes.calls, IsEmpty());
}

TEST_F(LlamaServerTest, AServerThatCannotLoadOnTheGraphicsCardIsTriedOnTheProcessor)
{
    const auto started = ensure();
    child(0).end({ChildProcessEnd::Kind::exited, 1});
    clock.advance(250ms);
    ASSERT_EQ(launches(), 2U);
    EXPECT_EQ(child(1).command.arguments.at(7), QStringLiteral("0"));
    EXPECT_EQ(child(1).command.arguments.at(5), QStringLiteral("50002"));
    transport.health = 200;
    clock.advance(500ms);
    EXPECT_TRUE(started->isSuccess());
}

TEST_F(LlamaServerTest, AServerThatCannotLoadAtAllFailsWithItsLastWords)
{
    const auto started = ensure();
    child(0).print("out of video memory\n");
    child(0).end({ChildProcessEnd::Kind::exited, 1});
    clock.advance(250ms);
    child(1).print("\n main: exiting due to model loading error \n");
    child(1).end({ChildProcessEnd::Kind::exited, 1});
    clock.advance(250ms);
    const auto error = started->as<EngineError>();
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code(), 20);
    EXPECT_EQ(error->domain(), QStringLiteral("Qwen"));
    EXPECT_EQ(error->description(), QStringLiteral("main: exiting due to model loading error"));
    EXPECT_EQ(launches(), 2U);
    EXPECT_EQ(server->log(), QStringLiteral("\n main: exiting due to model loading error \n"));
}

TEST_F(LlamaServerTest, AServerThatEndsWithoutAWordFailsWithASentence)
{
    const auto started = ensure(GpuLayers::none);
    child(0).print(" \n");
    child(0).end();
    clock.advance(250ms);
    const auto error = started->as<EngineError>();
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code(), 20);
    EXPECT_EQ(error->description(), QStringLiteral("Smart Offline engine stopped."));
    EXPECT_EQ(launches(), 1U);
}

TEST_F(LlamaServerTest, AServerThatNeverAnswersIsGivenTwoMinutesOnEither)
{
    const auto started = ensure();
    clock.advance(2min - 1ms);
    EXPECT_EQ(launches(), 1U);
    EXPECT_EQ(transport.requests.size(), 480U);
    clock.advance(1ms);
    ASSERT_EQ(launches(), 2U);
    EXPECT_EQ(child(0).calls, QStringList{QStringLiteral("terminate")});
    clock.advance(2min - 1ms);
    EXPECT_FALSE(started->hasEnded);
    clock.advance(1ms);
    const auto error = started->as<EngineError>();
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code(), 21);
    EXPECT_EQ(error->description(), QStringLiteral("Smart Offline engine took too long to load."));
    EXPECT_EQ(transport.requests.size(), 960U);
    EXPECT_EQ(child(1).calls, QStringList{QStringLiteral("terminate")});
    EXPECT_FALSE(server->access());
}

TEST_F(LlamaServerTest, AFailedLaunchIsNotRepeatedAndLeavesPortAndKeySet)
{
    children.launchFails = true;
    const auto started = ensure();
    EXPECT_TRUE(started->as<ChildLaunchError>());
    EXPECT_EQ(launches(), 0U);
    EXPECT_EQ(accesses, 1);
    EXPECT_TRUE(server->access());
    EXPECT_FALSE(server->isRunning());
}

TEST_F(LlamaServerTest, AllWhoWantTheServerWaitForTheSameStart)
{
    const auto first = ensure();
    const auto second = ensure();
    EXPECT_EQ(launches(), 1U);
    transport.health = 200;
    clock.advance(250ms);
    EXPECT_TRUE(first->isSuccess());
    EXPECT_TRUE(second->isSuccess());
    EXPECT_EQ(child(0).calls, QStringList());
}

TEST_F(LlamaServerTest, AStartGoesOnWhenNobodyWaitsForItAnyMore)
{
    std::stop_source stop;
    const auto first = ensure(GpuLayers::all, stop.get_token());
    stop.request_stop();
    EXPECT_TRUE(first->as<CancellationError>());
    transport.health = 200;
    clock.advance(250ms);
    EXPECT_TRUE(server->isRunning());
    EXPECT_TRUE(ensure()->isSuccess());
    EXPECT_EQ(launches(), 1U);
    // Nor is it forgotten.
    clock.advance(600s);
    EXPECT_FALSE(server->isRunning());
}

TEST_F(LlamaServerTest, StopAsksPolitelyAndKillsAfterTwoSeconds)
{
    serve();
    server->stop();
    EXPECT_FALSE(server->isRunning());
    EXPECT_FALSE(server->access());
    EXPECT_EQ(child(0).calls, QStringList{QStringLiteral("terminate")});
    clock.advance(1999ms);
    EXPECT_EQ(child(0).calls.size(), 1);
    clock.advance(1ms);
    EXPECT_EQ(child(0).calls.mid(1), QStringList{QStringLiteral("gone")}); // which kills
}

TEST_F(LlamaServerTest, StopKeepsTheLogUntilTheNextLaunch)
{
    serve();
    child(0).print("loaded\n");
    server->stop();
    child(0).print("bye\n");
    EXPECT_EQ(server->log(), QStringLiteral("loaded\n"));
    transport.health = 0;
    ensure();
    EXPECT_EQ(server->log(), QString());
}

TEST_F(LlamaServerTest, StopWithoutAServerDoesNothing)
{
    server->stop();
    EXPECT_EQ(launches(), 0U);
    EXPECT_EQ(clock.pendingTimers(), 0);
}

TEST_F(LlamaServerTest, AStopEndsAStartThatIsUnderWay)
{
    const auto started = ensure();
    server->stop();
    EXPECT_TRUE(isBusy(started));
    EXPECT_EQ(child(0).calls, QStringList{QStringLiteral("terminate")});
    clock.advance(10min);
    EXPECT_EQ(launches(), 1U);
    EXPECT_EQ(clock.pendingTimers(), 0);
}

TEST_F(LlamaServerTest, AStartRightAfterAStopIsANewOne)
{
    const auto first = ensure();
    server->stop();
    const auto second = ensure();
    EXPECT_EQ(launches(), 2U);
    child(0).end(); // late
    transport.health = 200;
    clock.advance(250ms);
    EXPECT_TRUE(second->isSuccess());
    EXPECT_TRUE(server->isRunning());
    EXPECT_EQ(server->pid(), child(1).pid);
}

TEST_F(LlamaServerTest, AServerGoesWithItsObject)
{
    const auto started = ensure();
    server.reset();
    EXPECT_TRUE(started->hasEnded);
    EXPECT_EQ(child(0).calls, (QStringList{QStringLiteral("terminate"), QStringLiteral("gone")}));
    EXPECT_EQ(clock.pendingTimers(), 0);
}

TEST_F(LlamaServerTest, IdleTimeEndsWithTheServerAndNothingIsSetAnyMore)
{
    serve();
    clock.advance(600s);
    EXPECT_FALSE(server->access());
    EXPECT_FALSE(server->isRunning());
    EXPECT_TRUE(isBusy(complete()));
}

TEST_F(LlamaServerTest, ACompletionIsPostedWithTheKeyAndBringsTheBodyOfTheAnswer)
{
    serve();
    auto call = server->completion({{QStringLiteral("model"), QStringLiteral("m")}}, {});
    ASSERT_EQ(transport.requests.size(), 1U);
    const HttpRequest& request = transport.requests.front();
    EXPECT_EQ(request.method, "POST");
    EXPECT_EQ(request.url, QUrl(QStringLiteral("http://127.0.0.1:50001/v1/chat/completions")));
    EXPECT_EQ(request.headers,
              (QList<QPair<QByteArray, QByteArray>>{{"Authorization", "Bearer key1"},
                                                    {"Content-Type", "application/json"}}));
    EXPECT_EQ(request.body, R"({"model":"m"})");
    EXPECT_EQ(request.timeout, 180s);
    transport.answers.front().succeed(HttpResponse{200, {}, "{}"});
    EXPECT_EQ(await(std::move(call)), "{}");
}

TEST_F(LlamaServerTest, EachAnswerPutsTheIdleStopOff)
{
    serve();
    clock.advance(300s);
    const auto call = complete();
    clock.advance(200s);
    transport.answers.front().succeed(HttpResponse{200, {}, "{}"});
    clock.advance(599s);
    EXPECT_TRUE(server->isRunning());
    clock.advance(1s);
    EXPECT_FALSE(server->isRunning());
}

TEST_F(LlamaServerTest, ARefusalIsShownWithoutTheKey)
{
    serve();
    const auto call = complete();
    transport.answers.front().succeed(HttpResponse{503, {}, "Loading model"});
    const auto error = call->as<TranslationError>();
    ASSERT_TRUE(error);
    EXPECT_EQ(error->description(), QStringLiteral("API error 503: Loading model"));
}

TEST_F(LlamaServerTest, AFailureOfTheExchangeIsPassedOn)
{
    serve();
    const auto call = complete();
    transport.answers.front().fail(
        TransportError(TransportError::Kind::connection, QStringLiteral("closed")));
    EXPECT_EQ(call->as<TransportError>()->description(), QStringLiteral("closed"));
}

TEST_F(LlamaServerTest, WithoutAServerACompletionIsRefused)
{
    EXPECT_TRUE(isBusy(complete()));
    EXPECT_TRUE(transport.requests.empty());
}

TEST_F(LlamaServerTest, ExchangesAreCutBeforeTheServerIsAskedToEnd)
{
    serve();
    QStringList events;
    const auto cut = [](QCoro::Task<QByteArray> task, QStringList& log,
                        FakeChildProcesses::Child& asked) -> QCoro::Task<void> {
        try {
            co_await task;
        } catch (const TranslationError&) {
            log += QStringLiteral("cut after %1 calls").arg(asked.calls.size());
        }
    };
    cut(server->completion({}, {}), events, child(0));
    server->stop();
    EXPECT_THAT(events, ElementsAre(QStringLiteral("cut after 0 calls")));
    EXPECT_EQ(child(0).calls, QStringList{QStringLiteral("terminate")});
}

TEST_F(LlamaServerTest, ACompletionThatIsCutMayAskAgainAndIsRefused)
{
    serve();
    std::shared_ptr<Outcome> again;
    const auto call = [](LlamaServer& asked,
                         std::shared_ptr<Outcome>& second) -> QCoro::Task<void> {
        try {
            co_await asked.completion({}, {});
        } catch (const TranslationError&) {
            second = watch(asked.completion({}, {}));
        }
    };
    call(*server, again);
    server->stop();
    ASSERT_TRUE(again);
    EXPECT_TRUE(isBusy(again));
    EXPECT_EQ(transport.answers.size(), 1U);
}

TEST_F(LlamaServerTest, AStoppedCompletionEndsItsExchange)
{
    serve();
    std::stop_source stop;
    const auto call = complete(stop.get_token());
    stop.request_stop();
    EXPECT_TRUE(call->as<CancellationError>());
    EXPECT_TRUE(transport.answers.front().isDecided());
    EXPECT_TRUE(server->isRunning());
}

TEST_F(LlamaServerTest, OutputAfterTheServerHasGoneIsNobodys)
{
    serve();
    const auto print = child(0).listener.output;
    server.reset();
    print("late");
}

} // namespace
} // namespace zelvane::test
