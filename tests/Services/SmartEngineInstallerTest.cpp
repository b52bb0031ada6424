#include "InstallerFixture.h"
#include "Services/EngineRecord.h"
#include "Services/InstallLock.h"
#include "support/FakeChildProcesses.h"
#include "support/FakeHttpTransport.h"
#include "support/VirtualClock.h"

namespace zelvane::test {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

using engine_status::Failed;
using engine_status::Installing;
using engine_status::NotInstalled;
using engine_status::Ready;

const QString unpacking = QStringLiteral("Unpacking llama.cpp…");
const QString downloading = QStringLiteral("Downloading LMT-60 model…");

QCoro::Task<void> follow(QCoro::Task<void> task, std::shared_ptr<bool> ended)
{
    co_await task;
    *ended = true;
}

/// Installs a model of six bytes, with a tar and a server that the test plays.
class SmartEngineInstallerTest : public ::testing::Test
{
protected:
    SmartEngineInstallerTest()
    {
        writeFile(archive, "archive");
        transport.holdDownloads();
        makeInstaller(tinyModel());
    }

    void makeInstaller(const SmartOfflineVariantFacts& facts)
    {
        files = EngineFiles(root, facts);
        installer = std::make_unique<SmartEngineInstaller>(
            files, SmartEngineInstaller::Parts{
                       state,
                       transport,
                       children,
                       clock,
                       defaults,
                       {QStringLiteral("/nowhere"), folder.filePath(QStringLiteral("resources"))},
                       [this] { ++serverStops; },
                       [this] { ++installed; }});
    }

    /// Begins an installation; true once it has ended.
    std::shared_ptr<bool> start(const std::stop_token& stop = {})
    {
        const auto ended = std::make_shared<bool>(false);
        follow(installer->install(stop), ended);
        return ended;
    }
    static void waitFor(const std::shared_ptr<bool>& ended)
    {
        ASSERT_TRUE(waitUntil([&] { return *ended; }));
    }

    FakeChildProcesses::Child& tar(std::size_t number = 1)
    {
        EXPECT_TRUE(waitUntil([&] { return children.children.size() >= number; }));
        return *children.children.at(number - 1);
    }
    /// Lets tar do its work.
    void unpack(std::size_t number = 1)
    {
        FakeChildProcesses::Child& child = tar(number);
        writeFile(files.server(), "#!/bin/sh\n");
        child.end();
    }
    HeldDownload download(std::size_t number = 1)
    {
        EXPECT_TRUE(waitUntil([&] { return transport.heldDownloads().size() >= number; }));
        return transport.heldDownloads().at(number - 1);
    }
    void deliver(const QByteArray& model, std::size_t number = 1)
    {
        const HeldDownload held = download(number);
        writeFile(held.destination, model);
        held.outcome.succeed(HttpResponse{200, {}, {}});
    }

    [[nodiscard]] QStringList log() const
    {
        return state.installLog.value().split(u'\n', Qt::SkipEmptyParts);
    }

    QTemporaryDir folder;
    QString root = folder.filePath(QStringLiteral("data/org.zelvane.desk"));
    QString archive = folder.filePath(QStringLiteral("resources/")) + runtimeArchiveName();
    EngineFiles files{root, tinyModel()};
    EngineState state;
    FakeHttpTransport transport;
    FakeChildProcesses children;
    VirtualClock clock;
    OverlayUserDefaults defaults;
    int serverStops = 0;
    int installed = 0;
    std::unique_ptr<SmartEngineInstaller> installer;
};

TEST_F(SmartEngineInstallerTest, unpacksTheRuntimeDownloadsTheModelAndWritesTheRecordLast)
{
    const auto ended = start();
    EXPECT_EQ(state.status.value(), installing(unpacking, 0.04));
    EXPECT_EQ(serverStops, 1);

    const FakeChildProcesses::Child& child = tar();
    EXPECT_EQ(child.command.executable, QStringLiteral("/usr/bin/tar"));
    EXPECT_THAT(child.command.arguments, ElementsAre(QStringLiteral("-xzf"), archive,
                                                     QStringLiteral("-C"), files.runtime()));
    EXPECT_EQ(child.command.workingDirectory, files.folder());
    EXPECT_TRUE(QFileInfo(files.runtime()).isDir());
    unpack();

    const HeldDownload held = download();
    EXPECT_EQ(state.status.value(), installing(downloading, 0.1));
    EXPECT_EQ(held.request.method, "GET");
    EXPECT_EQ(held.request.url.toString(),
              QStringLiteral("https://huggingface.co/") + files.facts().repository +
                  QStringLiteral("/resolve/main/LMT-60-4B.Q4_K_M.gguf?download=true"));
    EXPECT_EQ(held.request.timeout, 120s);
    EXPECT_EQ(held.request.totalTimeout, 86400s);
    EXPECT_EQ(held.destination, files.partialModel());
    EXPECT_FALSE(QFileInfo::exists(files.record()));
    EXPECT_FALSE(*ended);
    deliver("GGUF:)");
    waitFor(ended);

    EXPECT_EQ(state.status.value(), EngineStatus(Ready{}));
    EXPECT_EQ(state.downloadProgress.value(), std::nullopt);
    EXPECT_EQ(state.diskUsageBytes.value(), folderSize(files.folder()));
    EXPECT_TRUE(files.isComplete());
    EXPECT_EQ(readAll(files.record()), encodeEngineRecord(files.facts()));
    EXPECT_EQ(readAll(files.model()), "GGUF:)");
    EXPECT_EQ(QFile::permissions(files.server()) & QFile::Permissions(0x7777),
              QFile::Permissions(0x7755));
    EXPECT_THAT(filesBelow(files.folder()),
                ElementsAre(QStringLiteral("READY"), QStringLiteral("model"),
                            QStringLiteral("model/LMT-60-4B.Q4_K_M.gguf"),
                            QStringLiteral("runtime"), QStringLiteral("runtime/llama-b10437"),
                            QStringLiteral("runtime/llama-b10437/llama-server")));
    EXPECT_THAT(log(), ElementsAre(QStringLiteral("Unpacking ") + runtimeArchiveName() + u'…',
                                   QStringLiteral("llama.cpp ready at ") + files.server(),
                                   QStringLiteral("Downloading ") + held.request.url.toString(),
                                   QStringLiteral("Downloaded 0 MB")));
    EXPECT_EQ(installed, 1);
    EXPECT_EQ(clock.pendingTimers(), 0);
}

TEST_F(SmartEngineInstallerTest, reusesAGoodRuntimeAndModel)
{
    writeEngine(files);
    waitFor(start());
    EXPECT_EQ(state.status.value(), EngineStatus(Ready{}));
    EXPECT_THAT(log(), ElementsAre(QStringLiteral("Reusing llama.cpp b10437"),
                                   QStringLiteral("Reusing LMT-60-4B.Q4_K_M.gguf")));
    EXPECT_THAT(children.children, IsEmpty());
    EXPECT_THAT(transport.requests(), IsEmpty());
    EXPECT_TRUE(files.isComplete());
    EXPECT_EQ(installed, 1);
}

TEST_F(SmartEngineInstallerTest, writesANewRecordOverABrokenOne)
{
    writeEngine(files);
    writeFile(files.record(), R"({"engine_revision":0)");
    waitFor(start());
    EXPECT_TRUE(files.isComplete());
}

TEST_F(SmartEngineInstallerTest, downloadsAModelAnewThatIsOneByteShort)
{
    writeEngine(files);
    writeFile(files.model(), "12345");
    writeFile(files.record(), R"({"engine_revision":1})");
    const auto ended = start();
    download();
    EXPECT_FALSE(QFileInfo::exists(files.model()));
    EXPECT_FALSE(QFileInfo::exists(files.record()));
    deliver("GGUF:)");
    waitFor(ended);
    EXPECT_TRUE(files.isComplete());
}

TEST_F(SmartEngineInstallerTest, beginsADownloadAnewThatWasInterrupted)
{
    writeEngine(files);
    QFile::remove(files.model());
    writeFile(files.partialModel(), "GGU");
    const auto ended = start();
    const HeldDownload held = download();
    EXPECT_FALSE(QFileInfo::exists(files.partialModel()));
    for (const auto& [name, value] : held.request.headers) {
        EXPECT_NE(name.toLower(), "range");
    }
    deliver("GGUF:)");
    waitFor(ended);
    EXPECT_TRUE(files.isComplete());
}

TEST_F(SmartEngineInstallerTest, unpacksARuntimeAnewWhoseUnpackingWasInterrupted)
{
    writeEngine(files);
    writeFile(files.record(), R"({"engine_revision":1})");
    writeFile(files.unpackingMark(), "");
    writeFile(files.serverFolder() + QStringLiteral("/half.so"), "half");
    const auto ended = start();
    tar();
    EXPECT_FALSE(QFileInfo::exists(files.serverFolder()));
    EXPECT_FALSE(QFileInfo::exists(files.record()));
    unpack();
    waitFor(ended);
    EXPECT_TRUE(files.isComplete());
}

TEST_F(SmartEngineInstallerTest, doesNothingWhileItInstalls)
{
    const auto first = start();
    waitFor(start());
    EXPECT_FALSE(*first);
    EXPECT_EQ(serverStops, 1);
    unpack();
    waitFor(start());
    deliver("GGUF:)");
    waitFor(first);
    EXPECT_EQ(state.status.value(), EngineStatus(Ready{}));
    EXPECT_EQ(children.children.size(), 1);
    EXPECT_EQ(installed, 1);
}

TEST_F(SmartEngineInstallerTest, takesTheModelFromAMirror)
{
    writeEngine(files);
    QFile::remove(files.model());
    defaults.setValue(QStringLiteral("zv.endpoint.modelFiles"),
                      QStringLiteral("http://127.0.0.1:8080"));
    const auto ended = start();
    EXPECT_TRUE(download().request.url.toString().startsWith(
        QStringLiteral("http://127.0.0.1:8080/") + files.facts().repository));
    deliver("GGUF:)");
    waitFor(ended);
}

TEST_F(SmartEngineInstallerTest, failsWithAMirrorThatIsNoAddress)
{
    writeEngine(files);
    QFile::remove(files.model());
    defaults.setValue(QStringLiteral("zv.endpoint.modelFiles"),
                      QStringLiteral("http://mirror.example"));
    waitFor(start());
    EXPECT_TRUE(state.is<Failed>());
    EXPECT_THAT(transport.requests(), IsEmpty());
}

// Progress

TEST_F(SmartEngineInstallerTest, showsSpeedAndTimeLeft)
{
    SmartOfflineVariantFacts facts = tinyModel();
    facts.expectedModelBytes = 1000;
    makeInstaller(facts);
    writeEngine(files);
    const auto ended = start();
    const HeldDownload held = download();
    EXPECT_EQ(state.downloadProgress.value(), std::nullopt);

    held.progress({0, 1000});
    EXPECT_EQ(state.downloadProgress.value(),
              (EngineDownloadProgress{0, 1000, 0, 1000, std::nullopt, 1, 0}));
    EXPECT_EQ(state.status.value(), installing(downloading, 0.1));

    clock.advance(4900ms);
    held.progress({201, 1000});
    EXPECT_EQ(state.downloadProgress.value(),
              (EngineDownloadProgress{201, 1000, 50, 799, 15, 4, 0}));
    EXPECT_EQ(state.status.value(), installing(downloading, 0.1 + 0.85 * 201 / 1000));

    held.progress({1000, 1000});
    EXPECT_EQ(state.status.value(), installing(downloading, 0.95));
    deliver(QByteArray(1000, 'x'));
    waitFor(ended);
    EXPECT_EQ(state.downloadProgress.value(), std::nullopt);
}

TEST_F(SmartEngineInstallerTest, expectsTheSizeOfTheModelFromAServerThatTellsNone)
{
    SmartOfflineVariantFacts facts = tinyModel();
    facts.expectedModelBytes = 1000;
    makeInstaller(facts);
    writeEngine(files);
    const auto ended = start();
    for (const auto unknown : {std::optional<qint64>(), std::optional<qint64>(0)}) {
        download().progress({500, unknown});
        EXPECT_EQ(state.downloadProgress.value()->totalBytes, 1000);
        EXPECT_EQ(state.downloadProgress.value()->remainingBytes, 500);
        EXPECT_EQ(state.status.value(), installing(downloading, 0.1 + 0.85 * 0.5));
    }
    installer->cancelInstall();
    waitFor(ended);
}

TEST_F(SmartEngineInstallerTest, staysBelowTheEndWithMoreBytesThanExpectedAndFailsInTheEnd)
{
    writeEngine(files);
    QFile::remove(files.model());
    const auto ended = start();
    download().progress({9, std::nullopt});
    EXPECT_EQ(state.downloadProgress.value()->remainingBytes, 0);
    EXPECT_EQ(state.status.value(), installing(downloading, 0.95));
    deliver("GGUF:) :)");
    waitFor(ended);
    const QString text =
        QStringLiteral("lmt-60-4b-q4-k-m download size mismatch: expected 6, got 9.");
    EXPECT_EQ(state.status.value(), failed(text));
    EXPECT_EQ(log().last(), QStringLiteral("FAILED: ") + text);
    EXPECT_FALSE(QFileInfo::exists(files.partialModel()));
    EXPECT_FALSE(QFileInfo::exists(files.model()));
    EXPECT_TRUE(files.hasServer());
    EXPECT_EQ(installed, 0);
}

// Failures

TEST_F(SmartEngineInstallerTest, failsWithoutAnArchive)
{
    QFile::remove(archive);
    waitFor(start());
    EXPECT_EQ(state.status.value(),
              failed(QStringLiteral("Bundled llama.cpp was not found in the app.")));
    EXPECT_THAT(log(),
                ElementsAre(QStringLiteral("FAILED: Bundled llama.cpp was not found in the app.")));
}

TEST_F(SmartEngineInstallerTest, showsTheLastLineOfWhatTarComplainsOf)
{
    const auto ended = start();
    tar().print("tar: one\ntar: two\n");
    tar().print("tar: three\n\n");
    tar().end({ChildProcessEnd::Kind::exited, 2});
    waitFor(ended);
    EXPECT_EQ(state.status.value(), failed(QStringLiteral("tar: three")));
    EXPECT_THAT(state.installLog.value().toStdString(),
                HasSubstr("tar: one\ntar: two\ntar: three\nFAILED: tar: one\n"));
}

TEST_F(SmartEngineInstallerTest, failsWithASilentTar)
{
    const auto ended = start();
    tar().end({ChildProcessEnd::Kind::exited, 1});
    waitFor(ended);
    EXPECT_EQ(state.status.value(), failed(QStringLiteral("Install failed.")));
}

TEST_F(SmartEngineInstallerTest, takesOutputOfTarThatIsNotUtf8ForNone)
{
    const auto ended = start();
    tar().print("tar: \xff\xfe\n");
    tar().end({ChildProcessEnd::Kind::signalled, 9});
    waitFor(ended);
    EXPECT_EQ(state.status.value(), failed(QStringLiteral("Install failed.")));
}

TEST_F(SmartEngineInstallerTest, failsWithoutTar)
{
    children.launchFails = true;
    waitFor(start());
    EXPECT_EQ(state.status.value(),
              failed(QStringLiteral("tar could not be started: it is a fake")));
}

TEST_F(SmartEngineInstallerTest, failsIfTheArchiveHasNoServer)
{
    const auto ended = start();
    tar().end();
    waitFor(ended);
    EXPECT_EQ(state.status.value(),
              failed(QStringLiteral("Bundled llama.cpp could not be unpacked.")));
    EXPECT_FALSE(files.hasServer());
}

TEST_F(SmartEngineInstallerTest, failsWithTheReasonOfTheNetworkAndKeepsTheRuntime)
{
    const auto ended = start();
    unpack();
    download().outcome.fail(
        TransportError(TransportError::Kind::timeout, QStringLiteral("too slow")));
    waitFor(ended);
    EXPECT_EQ(state.status.value(), failed(QStringLiteral("too slow")));
    EXPECT_EQ(state.downloadProgress.value(), std::nullopt);
    EXPECT_TRUE(files.hasServer());

    const auto again = start();
    EXPECT_EQ(state.installLog.value(), QString());
    deliver("GGUF:)", 2);
    waitFor(again);
    EXPECT_EQ(state.status.value(), EngineStatus(Ready{}));
    EXPECT_EQ(log().first(), QStringLiteral("Reusing llama.cpp b10437"));
    EXPECT_EQ(children.children.size(), 1);
}

TEST_F(SmartEngineInstallerTest, failsWithTheStatusOfTheServer)
{
    writeEngine(files);
    QFile::remove(files.model());
    const auto ended = start();
    download().outcome.succeed(HttpResponse{404, {}, "Entry not found"});
    waitFor(ended);
    EXPECT_EQ(state.status.value(), failed(QStringLiteral("API error 404: Entry not found")));
}

TEST_F(SmartEngineInstallerTest, asksForNothingThatTheDiskCannotHold)
{
    SmartOfflineVariantFacts facts = tinyModel();
    facts.expectedModelBytes = qint64(1) << 60;
    makeInstaller(facts);
    writeEngine(files);
    waitFor(start());
    ASSERT_TRUE(state.is<Failed>());
    EXPECT_THAT(std::get<Failed>(state.status.value()).text.toStdString(),
                ::testing::MatchesRegex("There is not enough space on the disk: "
                                        "1152921504.61 GB are needed, [0-9.]+ [GM]B are free."));
    EXPECT_THAT(transport.requests(), IsEmpty());
}

TEST_F(SmartEngineInstallerTest, failsWhereItMayNotWrite)
{
    writeFile(files.folder(), "a file in the way");
    waitFor(start());
    ASSERT_TRUE(state.is<Failed>());
    EXPECT_THAT(std::get<Failed>(state.status.value()).text.toStdString(),
                HasSubstr(files.folder().toStdString()));
}

// Cancellation

TEST_F(SmartEngineInstallerTest, leavesNothingWhenItIsCancelledWhileItUnpacks)
{
    const auto ended = start();
    FakeChildProcesses::Child& child = tar();
    installer->cancelInstall();
    EXPECT_EQ(state.status.value(), EngineStatus(NotInstalled{}));
    EXPECT_EQ(state.diskUsageBytes.value(), 0);
    EXPECT_FALSE(QFileInfo::exists(files.folder()));
    EXPECT_EQ(serverStops, 2);
    EXPECT_THAT(child.calls, ElementsAre(QStringLiteral("terminate")));
    EXPECT_FALSE(*ended);

    // Tar still writes, and ends badly.
    writeFile(files.server(), "late");
    child.end({ChildProcessEnd::Kind::signalled, 15});
    waitFor(ended);
    EXPECT_FALSE(QFileInfo::exists(files.folder()));
    EXPECT_THAT(log(), ElementsAre(QStringLiteral("Unpacking ") + runtimeArchiveName() + u'…',
                                   QStringLiteral("Install cancelled."),
                                   QStringLiteral("Install cancelled.")));
    EXPECT_EQ(state.status.value(), EngineStatus(NotInstalled{}));
    EXPECT_EQ(installed, 0);
}

TEST_F(SmartEngineInstallerTest, killsATarThatWouldNotEnd)
{
    const auto ended = start();
    FakeChildProcesses::Child& child = tar();
    installer->cancelInstall();
    clock.advance(2s);
    EXPECT_THAT(child.calls, ElementsAre(QStringLiteral("terminate"), QStringLiteral("kill")));
    child.end({ChildProcessEnd::Kind::signalled, 9});
    waitFor(ended);
}

TEST_F(SmartEngineInstallerTest, leavesNothingWhenItIsCancelledWhileItDownloads)
{
    const auto ended = start();
    unpack();
    download().progress({3, 6});
    installer->cancelInstall();
    EXPECT_EQ(state.downloadProgress.value(), std::nullopt);
    waitFor(ended);
    EXPECT_EQ(state.status.value(), EngineStatus(NotInstalled{}));
    EXPECT_EQ(state.diskUsageBytes.value(), 0);
    EXPECT_TRUE(waitUntil(
        [&] { return filesBelow(root) == QStringList{QStringLiteral(".lmt60-4b.lock")}; }));
    EXPECT_EQ(state.downloadProgress.value(), std::nullopt);
}

TEST_F(SmartEngineInstallerTest, cancelsOnlyOnce)
{
    const auto ended = start();
    unpack();
    download();
    installer->cancelInstall();
    waitFor(ended);
    const QString before = state.installLog.value();
    installer->cancelInstall();
    EXPECT_EQ(state.installLog.value(), before);
    EXPECT_EQ(serverStops, 2);
}

TEST_F(SmartEngineInstallerTest, cancelsNothingThatDoesNotInstall)
{
    writeEngine(files);
    waitFor(start());
    installer->cancelInstall();
    EXPECT_EQ(state.status.value(), EngineStatus(Ready{}));
    EXPECT_TRUE(files.isComplete());
}

TEST_F(SmartEngineInstallerTest, isCancelledByTheTokenOfItsTask)
{
    std::stop_source stop;
    const auto ended = start(stop.get_token());
    unpack();
    download();
    stop.request_stop();
    waitFor(ended);
    EXPECT_EQ(state.status.value(), EngineStatus(NotInstalled{}));
    EXPECT_EQ(log().last(), QStringLiteral("Install cancelled."));
    EXPECT_EQ(log().count(QStringLiteral("Install cancelled.")), 1);
    EXPECT_FALSE(QFileInfo::exists(files.folder()));
}

TEST_F(SmartEngineInstallerTest, canBeCancelledAtItsVeryBeginning)
{
    writeEngine(files);
    const auto ended = start();
    installer->cancelInstall();
    waitFor(ended);
    EXPECT_EQ(state.status.value(), EngineStatus(NotInstalled{}));
    EXPECT_FALSE(QFileInfo::exists(files.folder()));
}

TEST_F(SmartEngineInstallerTest, canBeginAgainBeforeACancelledInstallationHasEnded)
{
    const auto first = start();
    FakeChildProcesses::Child& child = tar();
    installer->cancelInstall();
    const auto second = start();
    EXPECT_TRUE(state.is<Installing>());
    EXPECT_EQ(children.children.size(), 1);

    child.end({ChildProcessEnd::Kind::signalled, 15});
    waitFor(first);
    EXPECT_EQ(state.status.value(), installing(unpacking, 0.04));
    unpack(2);
    deliver("GGUF:)");
    waitFor(second);
    EXPECT_EQ(state.status.value(), EngineStatus(Ready{}));
    EXPECT_TRUE(files.isComplete());
}

TEST_F(SmartEngineInstallerTest, outlivesMuchBackAndForth)
{
    std::vector<std::shared_ptr<bool>> runs;
    for (int i = 0; i < 5; ++i) {
        runs.push_back(start());
        installer->cancelInstall();
    }
    runs.push_back(start());
    unpack();
    deliver("GGUF:)");
    for (const auto& run : runs) {
        waitFor(run);
    }
    EXPECT_EQ(state.status.value(), EngineStatus(Ready{}));
    EXPECT_TRUE(files.isComplete());
}

TEST_F(SmartEngineInstallerTest, endsQuietlyWithItsInstaller)
{
    const auto ended = start();
    unpack();
    download().progress({3, 6});
    installer.reset();
    EXPECT_TRUE(*ended);
    EXPECT_TRUE(state.is<Installing>());
    EXPECT_TRUE(files.hasServer());
    EXPECT_EQ(installed, 0);
}

TEST_F(SmartEngineInstallerTest, endsQuietlyWhileItUnpacks)
{
    const auto ended = start();
    FakeChildProcesses::Child& child = tar();
    installer.reset();
    EXPECT_THAT(child.calls, ElementsAre(QStringLiteral("terminate")));
    child.end({ChildProcessEnd::Kind::signalled, 15});
    waitFor(ended);
    EXPECT_TRUE(state.is<Installing>());
}

// Deletion

TEST_F(SmartEngineInstallerTest, deletesTheEngineWithoutAWord)
{
    writeEngine(files);
    waitFor(start());
    const QString log = state.installLog.value();
    installer->deleteEngine();
    EXPECT_EQ(state.status.value(), EngineStatus(NotInstalled{}));
    EXPECT_EQ(state.diskUsageBytes.value(), 0);
    EXPECT_FALSE(QFileInfo::exists(files.folder()));
    EXPECT_EQ(state.installLog.value(), log);
    EXPECT_EQ(serverStops, 2);
    EXPECT_TRUE(waitUntil(
        [&] { return filesBelow(root) == QStringList{QStringLiteral(".lmt60-4b.lock")}; }));
}

TEST_F(SmartEngineInstallerTest, deletesDuringADownload)
{
    const auto ended = start();
    unpack();
    download();
    installer->deleteEngine();
    EXPECT_FALSE(QFileInfo::exists(files.folder()));
    EXPECT_EQ(state.status.value(), EngineStatus(NotInstalled{}));
    waitFor(ended);
    EXPECT_FALSE(QFileInfo::exists(files.folder()));
    EXPECT_EQ(state.status.value(), EngineStatus(NotInstalled{}));
}

TEST_F(SmartEngineInstallerTest, deletesWhatIsNotThere)
{
    installer->deleteEngine();
    EXPECT_EQ(state.status.value(), EngineStatus(NotInstalled{}));
    EXPECT_EQ(state.installLog.value(), QString());
}

TEST_F(SmartEngineInstallerTest, removesTheRemainsOfAnInterruptedRemoval)
{
    const QString remains = root + QStringLiteral("/.lmt60-4b.removed-1/model/x.gguf");
    writeFile(remains, "x");
    writeFile(root + QStringLiteral("/.hymt2-7b.removed-1/x"), "of another engine");
    makeInstaller(tinyModel());
    EXPECT_TRUE(waitUntil([&] {
        return filesBelow(root) == QStringList{QStringLiteral(".hymt2-7b.removed-1"),
                                               QStringLiteral(".hymt2-7b.removed-1/x")};
    }));
}

// Other processes

TEST_F(SmartEngineInstallerTest, leavesAnInstallationOfAnotherProcessAlone)
{
    writeFile(files.partialModel(), "being downloaded elsewhere");
    const auto lock = InstallLock::acquire(InstallLock::path(root, QStringLiteral("lmt60-4b")));
    ASSERT_TRUE(lock);
    waitFor(start());
    EXPECT_EQ(state.status.value(),
              failed(QStringLiteral("This engine is being installed by another process.")));
    EXPECT_TRUE(QFileInfo::exists(files.partialModel()));

    const auto cancelled = start();
    installer->cancelInstall();
    waitFor(cancelled);
    EXPECT_EQ(state.status.value(), EngineStatus(NotInstalled{}));
    EXPECT_TRUE(QFileInfo::exists(files.partialModel()));
}

TEST_F(SmartEngineInstallerTest, isCancelledAtTheRequestOfAnotherProcess)
{
    const QString lock = InstallLock::path(root, QStringLiteral("lmt60-4b"));
    EXPECT_FALSE(InstallLock::requestCancel(lock));
    const auto ended = start();
    unpack();
    download();
    EXPECT_TRUE(InstallLock::isHeld(lock));
    EXPECT_TRUE(readAll(lock).startsWith(QByteArray::number(QCoreApplication::applicationPid())));
    EXPECT_TRUE(InstallLock::requestCancel(lock));
    waitFor(ended);
    EXPECT_EQ(state.status.value(), EngineStatus(NotInstalled{}));
    EXPECT_FALSE(QFileInfo::exists(files.folder()));
    EXPECT_FALSE(InstallLock::isHeld(lock));

    // The request is answered; it doesn't end the next one.
    const auto again = start();
    unpack(2);
    deliver("GGUF:)", 2);
    waitFor(again);
    EXPECT_EQ(state.status.value(), EngineStatus(Ready{}));
}

TEST_F(SmartEngineInstallerTest, deletesUnderAnInstallationOfAnotherProcessAfterAskingItToEnd)
{
    const QString path = InstallLock::path(root, QStringLiteral("lmt60-4b"));
    writeFile(files.partialModel(), "being downloaded elsewhere");
    const auto lock = InstallLock::acquire(path);
    installer->deleteEngine();
    EXPECT_TRUE(InstallLock::isCancelRequested(path));
    EXPECT_FALSE(QFileInfo::exists(files.folder()));
}

TEST(SummaryOfAFailure, isItsLastLineThatIsNotBlank)
{
    EXPECT_EQ(summarizeFailure(QStringLiteral("one\ntwo\n  three \n\n \t\n")),
              QStringLiteral("three"));
    EXPECT_EQ(summarizeFailure(QStringLiteral("one\r\ntwo\r\n")), QStringLiteral("two"));
    EXPECT_EQ(summarizeFailure(QStringLiteral("one\u2028two")), QStringLiteral("two"));
    EXPECT_EQ(summarizeFailure(QStringLiteral(" only ")), QStringLiteral("only"));
    EXPECT_EQ(summarizeFailure(QStringLiteral(" \n ")), QStringLiteral(" \n "));
    EXPECT_EQ(summarizeFailure(QString()), QString());
}

TEST(SummaryOfAFailure, hasAtMost300CharactersOfALongLine)
{
    EXPECT_EQ(summarizeFailure(QString(300, u'a')), QString(300, u'a'));
    EXPECT_EQ(summarizeFailure(QString(301, u'a')), QString(300, u'a') + u'…');
    const QString family = QStringLiteral("👨‍👩‍👧");
    EXPECT_EQ(summarizeFailure(family.repeated(301)), family.repeated(300) + u'…');
}

} // namespace
} // namespace zelvane::test
