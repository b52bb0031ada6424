#include "Services/SmartOfflineEngineManager.h"

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
using ::testing::ElementsAre;
using Code = TranslationError::Code;

class SmartOfflineEngine : public ::testing::Test
{
protected:
    void install()
    {
        writeEngine(files);
        ASSERT_TRUE(files.writeReadyRecord());
    }
    std::unique_ptr<SmartOfflineEngineManager> make()
    {
        return std::make_unique<SmartOfflineEngineManager>(
            SmartOfflineVariant::lmt60_4b, files,
            SmartOfflineEngineManager::Parts{
                .server = {children, transport, clock, sweep},
                .defaults = defaults,
                .archiveFolders = {root.filePath(QStringLiteral("archives"))},
                .isSelected = [this] { return isSelected; },
                .stopOthers = [this] { calls += QStringLiteral("others"); }});
    }
    QString log(const SmartOfflineEngineManager& manager) const
    {
        return manager.state().installLog.value();
    }
    std::size_t launches() const { return children.children.size(); }

    QTemporaryDir root;
    EngineFiles files{root.path(), tinyModel()};
    VirtualClock clock;
    FakeLocalServer transport;
    FakeChildProcesses children;
    FakeProcessTable processes;
    StraySweep sweep{processes, clock};
    OverlayUserDefaults defaults;
    bool isSelected = false;
    QStringList calls;
};

TEST_F(SmartOfflineEngine, LooksAtTheDiskAtItsCreation)
{
    EXPECT_EQ(make()->status(), EngineStatus(engine_status::NotInstalled{}));
    EXPECT_EQ(make()->displaySizeBytes(), 6);
    install();
    const auto manager = make();
    EXPECT_EQ(manager->status(), EngineStatus(engine_status::Ready{}));
    EXPECT_EQ(manager->variant(), SmartOfflineVariant::lmt60_4b);
    EXPECT_GT(manager->state().diskUsageBytes.value(), 16);
    EXPECT_EQ(manager->displaySizeBytes(), manager->state().diskUsageBytes.value());
    EXPECT_EQ(launches(), 0U);
    EXPECT_EQ(processes.listings, 0);
}

TEST_F(SmartOfflineEngine, TellsObserversOfEachChange)
{
    const auto manager = make();
    int changes = 0;
    const auto handler =
        QBindable<EngineStatus>(&manager->state().status).addNotifier([&] { ++changes; });
    manager->refreshStatus();
    EXPECT_EQ(changes, 0);
    install();
    manager->refreshStatus();
    EXPECT_EQ(changes, 1);
}

TEST_F(SmartOfflineEngine, ReadsTheRecordAfreshFromTheDisk)
{
    const auto manager = make();
    EXPECT_EQ(await(manager->recordedRevision({})), std::nullopt);
    install();
    EXPECT_EQ(await(manager->recordedRevision({})), 1);
    writeFile(files.record(), R"({"engine_revision": 4294967297})");
    EXPECT_EQ(await(manager->recordedRevision({})), std::nullopt);
    EXPECT_EQ(manager->status(), EngineStatus(engine_status::NotInstalled{}));
}

TEST_F(SmartOfflineEngine, StopsAllOthersBeforeItStartsItsServer)
{
    install();
    const auto manager = make();
    children.onLaunch = [this](auto&) { calls += QStringLiteral("launch"); };
    const auto started = watch(manager->ensureServer(GpuLayers::all, {}));
    EXPECT_THAT(calls, ElementsAre(QStringLiteral("others"), QStringLiteral("launch")));
    const ChildProcessCommand& command = children.children.front()->command;
    EXPECT_EQ(command.executable, files.server());
    EXPECT_EQ(command.workingDirectory, files.serverFolder());
    EXPECT_EQ(command.arguments.at(1), files.model());
}

TEST_F(SmartOfflineEngine, StopsAllOthersEvenIfItsServerRuns)
{
    install();
    const auto manager = make();
    transport.health = 200;
    const auto started = watch(manager->ensureServer(GpuLayers::all, {}));
    clock.advance(250ms);
    ASSERT_TRUE(started->isSuccess());
    EXPECT_TRUE(watch(manager->ensureServer(GpuLayers::all, {}))->isSuccess());
    EXPECT_EQ(calls.size(), 2);
    EXPECT_EQ(launches(), 1U);
}

TEST_F(SmartOfflineEngine, SendsWhatTheModelWasTrainedToReadAndYieldsItsWords)
{
    install();
    const auto manager = make();
    transport.health = 200;
    watch(manager->ensureServer(GpuLayers::all, {}));
    clock.advance(250ms);
    auto call = manager->requestCompletion({SmartOfflineVariant::lmt60_4b,
                                            {QStringLiteral("Hello")},
                                            QStringLiteral("English"),
                                            QStringLiteral("German"),
                                            {},
                                            {}},
                                           Attempt::retry, {});
    const QByteArray body = transport.requests.back().body;
    EXPECT_THAT(body.toStdString(), ::testing::HasSubstr(R"("model":"lmt-60-4b")"));
    EXPECT_THAT(body.toStdString(), ::testing::HasSubstr(R"("temperature":0.3)"));
    transport.answers.back().succeed(
        HttpResponse{200, {}, R"({"choices":[{"message":{"content":" Hallo\n"}}]})"});
    EXPECT_EQ(await(std::move(call)), QStringLiteral(" Hallo\n"));
}

TEST_F(SmartOfflineEngine, AnAnswerWithoutWordsIsABadResponse)
{
    install();
    const auto manager = make();
    transport.health = 200;
    watch(manager->ensureServer(GpuLayers::all, {}));
    clock.advance(250ms);
    const auto call = watch(manager->requestCompletion(
        {SmartOfflineVariant::lmt60_4b, {QStringLiteral("Hello")}, {}, {}, {}, {}}, Attempt::first,
        {}));
    transport.answers.back().succeed(
        HttpResponse{200, {}, R"({"choices":[{"message":{"content":""}}]})"});
    EXPECT_EQ(call->as<TranslationError>()->code(), Code::badResponse);
}

TEST_F(SmartOfflineEngine, TranslatesAText)
{
    install();
    const auto manager = make();
    transport.health = 200;
    auto call = manager->translator().translateOffline(QStringLiteral("Hello"), {},
                                                       QStringLiteral("German"), {}, {}, {});
    clock.advance(250ms);
    ASSERT_EQ(transport.answers.size(), 1U);
    transport.answers.back().succeed(
        HttpResponse{200, {}, R"({"choices":[{"message":{"content":"Hallo"}}]})"});
    EXPECT_EQ(await(std::move(call)), QStringLiteral("Hallo"));
}

TEST_F(SmartOfflineEngine, DoesNotTranslateWhatIsNotInstalled)
{
    const auto manager = make();
    const auto call = watch(manager->translator().translateOffline(
        QStringLiteral("Hello"), {}, QStringLiteral("German"), {}, {}, {}));
    EXPECT_EQ(call->as<TranslationError>()->code(), Code::offlineEngineMissing);
    EXPECT_EQ(launches(), 0U);
}

TEST_F(SmartOfflineEngine, AWarmUpLoadsTheModelAndSendsNothingElse)
{
    const auto manager = make();
    install(); // since
    manager->scheduleWarmUp();
    EXPECT_EQ(manager->status(), EngineStatus(engine_status::Ready{}));
    transport.health = 200;
    clock.advance(250ms);
    EXPECT_TRUE(manager->server().isRunning());
    EXPECT_TRUE(transport.answers.empty());
    EXPECT_EQ(log(*manager), QString());
}

TEST_F(SmartOfflineEngine, AWarmUpOfAnEngineThatIsNotThereDoesNothing)
{
    const auto manager = make();
    manager->scheduleWarmUp();
    EXPECT_EQ(launches(), 0U);
    EXPECT_THAT(calls, ElementsAre());
}

TEST_F(SmartOfflineEngine, AFailedWarmUpIsNotedAndChangesNoStatus)
{
    install();
    children.launchFails = true;
    const auto manager = make();
    manager->scheduleWarmUp();
    EXPECT_EQ(log(*manager), QStringLiteral("Warm-up skipped: llama-server could not be started: "
                                            "it is a fake\n"));
    EXPECT_EQ(manager->status(), EngineStatus(engine_status::Ready{}));
}

TEST_F(SmartOfflineEngine, ACancelledWarmUpIsSilent)
{
    install();
    const auto manager = make();
    manager->scheduleWarmUp();
    EXPECT_EQ(launches(), 1U);
    manager->cancelWarmUp();
    manager->stopServer();
    clock.advance(10min);
    EXPECT_EQ(log(*manager), QString());
    EXPECT_EQ(launches(), 1U);
}

TEST_F(SmartOfflineEngine, ASecondWarmUpGoesOnWithTheLoadOfTheFirst)
{
    install();
    const auto manager = make();
    manager->scheduleWarmUp();
    manager->scheduleWarmUp();
    EXPECT_EQ(launches(), 1U);
    transport.health = 200;
    clock.advance(250ms);
    EXPECT_TRUE(manager->server().isRunning());
    EXPECT_EQ(log(*manager), QString());
}

TEST_F(SmartOfflineEngine, ATranslationWaitsForTheWarmUp)
{
    install();
    const auto manager = make();
    manager->scheduleWarmUp();
    const auto call = watch(manager->ensureServer(GpuLayers::all, {}));
    manager->cancelWarmUp();
    transport.health = 200;
    clock.advance(250ms);
    EXPECT_TRUE(call->isSuccess());
    EXPECT_EQ(launches(), 1U);
}

TEST_F(SmartOfflineEngine, ACrashIsNeverAStatus)
{
    install();
    const auto manager = make();
    manager->scheduleWarmUp();
    transport.health = 200;
    clock.advance(250ms);
    children.children.front()->end({ChildProcessEnd::Kind::signalled, 9});
    EXPECT_EQ(manager->status(), EngineStatus(engine_status::Ready{}));
    EXPECT_FALSE(manager->server().isRunning());
}

TEST_F(SmartOfflineEngine, SweepsWhatAnEarlierRunLeft)
{
    processes.table = "812 " + files.server().toUtf8() + "\n";
    const auto manager = make();
    manager->sweepStrays();
    EXPECT_THAT(processes.calls, ElementsAre(QStringLiteral("terminate 812")));
}

TEST_F(SmartOfflineEngine, IsWarmedUpOnceItIsInstalledIfTheUserWorksWithIt)
{
    writeEngine(files); // all but the record
    isSelected = true;
    const auto manager = make();
    EXPECT_EQ(manager->status(), EngineStatus(engine_status::NotInstalled{}));
    await(manager->install());
    EXPECT_EQ(manager->status(), EngineStatus(engine_status::Ready{}));
    EXPECT_EQ(launches(), 1U);
}

TEST_F(SmartOfflineEngine, IsNotWarmedUpForAUserOfAnother)
{
    writeEngine(files);
    const auto manager = make();
    await(manager->install());
    EXPECT_EQ(manager->status(), EngineStatus(engine_status::Ready{}));
    EXPECT_EQ(launches(), 0U);
}

TEST_F(SmartOfflineEngine, ADeletedEngineHasNoServer)
{
    install();
    const auto manager = make();
    manager->scheduleWarmUp();
    transport.health = 200;
    clock.advance(250ms);
    ASSERT_TRUE(manager->server().isRunning());
    manager->deleteEngine();
    EXPECT_FALSE(manager->server().isRunning());
    EXPECT_EQ(manager->status(), EngineStatus(engine_status::NotInstalled{}));
    EXPECT_EQ(manager->state().diskUsageBytes.value(), 0);
    EXPECT_FALSE(QFile::exists(files.folder()));
}

TEST_F(SmartOfflineEngine, AFailedInstallationRecoversWithTheFiles)
{
    const auto manager = make();
    await(manager->install()); // there is no archive
    EXPECT_EQ(manager->status(), EngineStatus(engine_status::Failed{QStringLiteral(
                                     "Bundled llama.cpp was not found in the app.")}));
    manager->refreshStatus();
    EXPECT_TRUE(manager->state().is<engine_status::Failed>());
    install();
    QFile::remove(files.unpackingMark());
    manager->refreshStatus();
    EXPECT_EQ(manager->status(), EngineStatus(engine_status::Ready{}));
    ASSERT_TRUE(QFile::resize(files.model(), 5));
    manager->refreshStatus();
    EXPECT_EQ(manager->status(), EngineStatus(engine_status::NotInstalled{}));
}

TEST_F(SmartOfflineEngine, MayGoInTheMiddleOfAWarmUp)
{
    install();
    auto manager = make();
    manager->scheduleWarmUp();
    const auto call = watch(manager->ensureServer(GpuLayers::all, {}));
    manager.reset();
    EXPECT_TRUE(call->hasEnded);
    EXPECT_EQ(children.children.front()->calls.last(), QStringLiteral("gone"));
}

} // namespace
} // namespace zelvane::test
