// Installations with a real tar, a real server and a real disk.

#include "Services/InstallerFixture.h"
#include "Services/linux/LinuxChildProcesses.h"
#include "foundation/SystemClock.h"
#include "http/NetworkHttpTransport.h"
#include "support/LoopbackHttpServer.h"
#include "support/VirtualClock.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QRandomGenerator>
#include <QStorageInfo>

#include <csignal>
#include <sys/resource.h>

namespace zelvane::test {
namespace {

using namespace std::chrono_literals;
using ::testing::HasSubstr;
using ::testing::StartsWith;

using engine_status::Failed;
using engine_status::NotInstalled;
using engine_status::Ready;

constexpr qint64 modelSize = 600'000;
constexpr int libraries = 12;

void runTool(const QString& program, const QStringList& arguments)
{
    QProcess tool;
    tool.start(program, arguments);
    ASSERT_TRUE(tool.waitForFinished() && tool.exitCode() == 0)
        << tool.readAllStandardError().toStdString();
}

/// An archive with a server that prints a word, libraries of a few hundred kilobytes each, and
/// links to them.
void makeArchive(const QString& path, const QString& work)
{
    const QString folder = work + QStringLiteral("/llama-b10437");
    for (int i = 0; i < libraries; ++i) {
        QByteArray library(200'000, Qt::Uninitialized);
        QRandomGenerator generator(quint32(i) + 1);
        generator.fillRange(reinterpret_cast<quint32*>(library.data()), library.size() / 4);
        const QString name = QStringLiteral("libpart%1.so.0").arg(i);
        writeFile(folder + u'/' + name, library);
        QFile::link(name, folder + QStringLiteral("/libpart%1.so").arg(i));
    }
    writeFile(folder + QStringLiteral("/llama-server"), "#!/bin/sh\necho served\n",
              QFile::ReadOwner | QFile::WriteOwner);
    QDir().mkpath(QFileInfo(path).path());
    runTool(QStringLiteral("/usr/bin/tar"), {QStringLiteral("-czf"), path, QStringLiteral("-C"),
                                             work, QStringLiteral("llama-b10437")});
}

/// Made once: packing takes a while.
const QString& archiveFolder()
{
    static const QTemporaryDir folder;
    static const QString made = [] {
        const QString resources = folder.filePath(QStringLiteral("resources"));
        makeArchive(resources + u'/' + runtimeArchiveName(),
                    folder.filePath(QStringLiteral("work")));
        return resources;
    }();
    return made;
}

/// How many files a whole runtime has, links included.
constexpr int runtimeFiles = 2 * libraries + 1;

class EngineInstallation : public ::testing::Test
{
protected:
    EngineInstallation()
    {
        facts.expectedModelBytes = modelSize;
        defaults.setValue(QStringLiteral("zv.endpoint.modelFiles"), server.url().toString());
        server.setHandler([](const RecordedRequest&) { return model(modelSize); });
    }

    static Answer model(qint64 size)
    {
        return Answer()
            .send("HTTP/1.1 200 OK\r\nContent-Length: " + QByteArray::number(size) + "\r\n\r\n")
            .flood(size);
    }

    void useRoot(const QString& path)
    {
        root = path;
        files = EngineFiles(root, facts);
        installer.reset();
        installer = std::make_unique<SmartEngineInstaller>(
            files, SmartEngineInstaller::Parts{
                       state, transport, children, clock, defaults, {archives}, [] {}, [] {}});
    }

    EngineStatus install()
    {
        if (!installer) {
            useRoot(root);
        }
        await(installer->install());
        return state.status;
    }
    [[nodiscard]] std::string failure()
    {
        const EngineStatus status = install();
        const auto* failed = std::get_if<Failed>(&status);
        return failed != nullptr ? failed->text.toStdString() : "no failure";
    }

    void expectWholeEngine() const
    {
        EXPECT_TRUE(files.isComplete());
        EXPECT_EQ(readAll(files.model()), QByteArray(modelSize, 'x'));
        EXPECT_EQ(QDir(files.serverFolder()).entryList(QDir::Files).size(), runtimeFiles);
        for (int i = 0; i < libraries; ++i) {
            const QFileInfo link(files.serverFolder() + QStringLiteral("/libpart%1.so").arg(i));
            EXPECT_TRUE(link.isSymLink());
            EXPECT_EQ(link.size(), 200'000);
        }
        QProcess process;
        process.start(files.server(), QStringList());
        EXPECT_TRUE(process.waitForFinished());
        EXPECT_EQ(process.readAllStandardOutput(), "served\n");
        EXPECT_FALSE(QFileInfo::exists(files.partialModel()));
    }

    QTemporaryDir folder;
    SmartOfflineVariantFacts facts = factsOf(SmartOfflineVariant::lmt60_4b);
    QString root = folder.filePath(QStringLiteral("data/org.zelvane.desk"));
    QString archives = archiveFolder();
    EngineFiles files{root, facts};
    EngineState state;
    SystemClock clock;
    LinuxChildProcesses children;
    NetworkHttpTransport transport{clock};
    OverlayUserDefaults defaults;
    LoopbackHttpServer server;
    std::unique_ptr<SmartEngineInstaller> installer;
};

TEST_F(EngineInstallation, bringsAWholeEngine)
{
    EXPECT_EQ(install(), EngineStatus(Ready{})) << state.installLog.value().toStdString();
    expectWholeEngine();
    EXPECT_THAT(state.installLog.value().toStdString(), HasSubstr("\nDownloaded 0.6 MB\n"));
    EXPECT_EQ(server.requests().front().target(),
              "/mradermacher/LMT-60-4B-GGUF/resolve/main/LMT-60-4B.Q4_K_M.gguf?download=true");
    EXPECT_EQ(filesBelow(root).filter(QStringLiteral(".removed")), QStringList());
}

TEST_F(EngineInstallation, followsTheFileHostToAnotherOne)
{
    LoopbackHttpServer other;
    other.setHandler([](const RecordedRequest&) { return model(modelSize); });
    server.setHandler([&](const RecordedRequest&) {
        return Answer().send(httpMessage(302, "", {{"Location", other.url().toEncoded()}}));
    });
    EXPECT_EQ(install(), EngineStatus(Ready{}));
    expectWholeEngine();
}

TEST_F(EngineInstallation, goesOnFromWhatAFailureLeft)
{
    server.enqueue(
        Answer().send("HTTP/1.1 200 OK\r\nContent-Length: 600000\r\n\r\n").flood(300'000).close());
    EXPECT_EQ(failure(), "The answer of 127.0.0.1 is incomplete.");
    EXPECT_FALSE(QFileInfo::exists(files.partialModel()));
    EXPECT_FALSE(files.isComplete());
    EXPECT_EQ(install(), EngineStatus(Ready{}));
    EXPECT_THAT(state.installLog.value().toStdString(), StartsWith("Reusing llama.cpp b10437\n"));
    expectWholeEngine();
}

TEST_F(EngineInstallation, tellsWhatTheServerRefuses)
{
    server.enqueue(Answer::json(404, "Entry not found"));
    EXPECT_EQ(failure(), "API error 404: Entry not found");
    server.enqueue(Answer().close());
    server.enqueue(Answer().close());
    EXPECT_EQ(failure(), "The connection to 127.0.0.1 ended without a valid answer.");
}

TEST_F(EngineInstallation, refusesAModelOfAnotherSize)
{
    for (const qint64 size : {modelSize - 1, modelSize + 1, qint64(0)}) {
        server.enqueue(model(size));
        EXPECT_EQ(failure(), "lmt-60-4b-q4-k-m download size mismatch: expected 600000, got " +
                                 std::to_string(size) + ".");
        EXPECT_FALSE(QFileInfo::exists(files.model()));
        EXPECT_FALSE(QFileInfo::exists(files.partialModel()));
    }
}

TEST_F(EngineInstallation, givesUpOnAServerThatHasStoppedSending)
{
    server.enqueue(
        Answer().send("HTTP/1.1 200 OK\r\nContent-Length: 600000\r\n\r\n").flood(300'000).hold());
    VirtualClock jumping;
    NetworkHttpTransport impatient(jumping);
    installer = std::make_unique<SmartEngineInstaller>(
        files, SmartEngineInstaller::Parts{
                   state, impatient, children, jumping, defaults, {archives}, [] {}, [] {}});
    auto task = installer->install();
    ASSERT_TRUE(waitUntil([&] {
        jumping.advance(200ms);
        return state.downloadProgress.value().has_value() &&
               state.downloadProgress.value()->downloadedBytes == 300'000;
    }));
    jumping.advance(119s);
    EXPECT_TRUE(state.is<engine_status::Installing>());
    jumping.advance(1s);
    await(std::move(task));
    EXPECT_EQ(state.status.value(), failed(QStringLiteral("127.0.0.1 did not answer in time.")));
    installer.reset();
}

TEST_F(EngineInstallation, showsWhatTarSaysOfABadArchive)
{
    archives = folder.filePath(QStringLiteral("bad"));
    QFile good(archiveFolder() + u'/' + runtimeArchiveName());
    ASSERT_TRUE(good.open(QIODevice::ReadOnly));
    writeFile(archives + u'/' + runtimeArchiveName(), good.read(1'000'000));
    EXPECT_THAT(failure(), HasSubstr("tar: "));
    EXPECT_THAT(state.installLog.value().toStdString(), HasSubstr("\nFAILED: "));
    EXPECT_FALSE(files.hasServer());

    archives = archiveFolder();
    useRoot(root);
    EXPECT_EQ(install(), EngineStatus(Ready{}));
    expectWholeEngine();
}

TEST_F(EngineInstallation, endsTarWhenItIsCancelled)
{
    useRoot(root);
    auto task = installer->install();
    ASSERT_TRUE(waitUntil([&] { return QFileInfo::exists(files.unpackingMark()); }));
    installer->cancelInstall();
    await(std::move(task));
    EXPECT_EQ(state.status.value(), EngineStatus(NotInstalled{}));
    EXPECT_FALSE(QFileInfo::exists(files.folder()));
    EXPECT_EQ(state.installLog.value().count(QStringLiteral("FAILED")), 0);
}

TEST_F(EngineInstallation, leavesNothingOfACancelledDownload)
{
    server.enqueue(
        Answer().send("HTTP/1.1 200 OK\r\nContent-Length: 600000\r\n\r\n").flood(300'000).hold());
    useRoot(root);
    auto task = installer->install();
    ASSERT_TRUE(waitUntil([&] { return QFileInfo(files.partialModel()).size() == 300'000; }));
    installer->cancelInstall();
    await(std::move(task));
    installer.reset(); // returns when the removal is done
    EXPECT_EQ(filesBelow(root), QStringList{QStringLiteral(".lmt60-4b.lock")});
    EXPECT_TRUE(waitUntil([&] { return server.openConnections() == 0; }));
}

// Full disks

/// Lets no file of this process and its children grow beyond a size.
class SizeLimit
{
public:
    explicit SizeLimit(rlim_t bytes)
        : m_signal(std::signal(SIGXFSZ, SIG_IGN))
    {
        ::getrlimit(RLIMIT_FSIZE, &m_before);
        rlimit limit = m_before;
        limit.rlim_cur = bytes;
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~SizeLimit()
    {
        ::setrlimit(RLIMIT_FSIZE, &m_before);
        std::signal(SIGXFSZ, m_signal);
    }
    Q_DISABLE_COPY_MOVE(SizeLimit)

private:
    rlimit m_before = {};
    void (*m_signal)(int);
};

TEST_F(EngineInstallation, failsWhenTheModelCannotBeWritten)
{
    {
        const SizeLimit limit(300'000);
        EXPECT_EQ(failure(), "The download could not be written to the disk.");
    }
    EXPECT_FALSE(QFileInfo::exists(files.partialModel()));
    EXPECT_EQ(install(), EngineStatus(Ready{}));
    expectWholeEngine();
}

TEST_F(EngineInstallation, failsWhenTheRuntimeCannotBeWritten)
{
    {
        const SizeLimit limit(100'000);
        EXPECT_NE(failure(), "no failure");
    }
    EXPECT_FALSE(files.hasServer());
    EXPECT_EQ(install(), EngineStatus(Ready{}));
    expectWholeEngine();
}

/// Runs one test of this program again where `ZELVANE_SMALL_DISK` is a disk of its own with
/// `megabytes`. False if this system lets nobody mount one.
bool rerunOnSmallDisk(const char* test, int megabytes)
{
    const QString script =
        QStringLiteral("mount -t tmpfs -o size=%1m none \"$1\" && ZELVANE_SMALL_DISK=\"$1\" exec "
                       "\"$2\" --gtest_filter=\"$3\"")
            .arg(megabytes);
    const QTemporaryDir mountPoint;
    QProcess probe;
    probe.start(QStringLiteral("unshare"),
                {QStringLiteral("-rm"), QStringLiteral("mount"), QStringLiteral("-t"),
                 QStringLiteral("tmpfs"), QStringLiteral("none"), mountPoint.path()});
    if (!probe.waitForFinished() || probe.exitCode() != 0) {
        return false;
    }
    QProcess again;
    again.setProcessChannelMode(QProcess::MergedChannels);
    again.start(QStringLiteral("unshare"),
                {QStringLiteral("-rm"), QStringLiteral("sh"), QStringLiteral("-c"), script,
                 QStringLiteral("sh"), mountPoint.path(), QCoreApplication::applicationFilePath(),
                 QString::fromUtf8(test)});
    EXPECT_TRUE(again.waitForFinished(9000));
    const QByteArray output = again.readAll();
    EXPECT_EQ(again.exitCode(), 0) << output.toStdString();
    EXPECT_TRUE(output.contains("[  PASSED  ] 1 test.")) << output.toStdString();
    return true;
}

TEST_F(EngineInstallation, failsOnADiskThatRunsFullDuringTheDownload)
{
    const QString disk = qEnvironmentVariable("ZELVANE_SMALL_DISK");
    if (disk.isEmpty()) {
        if (!rerunOnSmallDisk("EngineInstallation.failsOnADiskThatRunsFullDuringTheDownload", 4)) {
            GTEST_SKIP() << "needs the right to mount a disk";
        }
        return;
    }
    server.enqueue(Answer()
                       .send("HTTP/1.1 200 OK\r\nContent-Length: 600000\r\n\r\n")
                       .flood(300'000)
                       .hold()
                       .flood(300'000));
    useRoot(disk + QStringLiteral("/data"));
    auto task = installer->install();
    ASSERT_TRUE(waitUntil([&] { return QFileInfo(files.partialModel()).size() == 300'000; }));
    QFile filler(disk + QStringLiteral("/filler"));
    ASSERT_TRUE(filler.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
    while (filler.write(QByteArray(4096, 'f')) > 0) {
    }
    server.release();
    await(std::move(task));
    EXPECT_EQ(state.status.value(), failed(QStringLiteral("The disk is full.")));
    EXPECT_FALSE(QFileInfo::exists(files.partialModel()));
    filler.remove();
    EXPECT_EQ(install(), EngineStatus(Ready{}));
    expectWholeEngine();
}

TEST_F(EngineInstallation, failsOnADiskThatRunsFullWhileItUnpacks)
{
    const QString disk = qEnvironmentVariable("ZELVANE_SMALL_DISK");
    if (disk.isEmpty()) {
        if (!rerunOnSmallDisk("EngineInstallation.failsOnADiskThatRunsFullWhileItUnpacks", 1)) {
            GTEST_SKIP() << "needs the right to mount a disk";
        }
        return;
    }
    useRoot(disk + QStringLiteral("/data"));
    EXPECT_THAT(failure(), HasSubstr("tar: "));
    EXPECT_THAT(state.installLog.value().toStdString(), HasSubstr("No space left on device"));
    EXPECT_FALSE(files.hasServer());
}

TEST_F(EngineInstallation, asksForNothingThatASmallDiskCannotHold)
{
    const QString disk = qEnvironmentVariable("ZELVANE_SMALL_DISK");
    if (disk.isEmpty()) {
        if (!rerunOnSmallDisk("EngineInstallation.asksForNothingThatASmallDiskCannotHold", 3)) {
            GTEST_SKIP() << "needs the right to mount a disk";
        }
        return;
    }
    facts.expectedModelBytes = 5'000'000;
    useRoot(disk + QStringLiteral("/data"));
    EXPECT_EQ(failure(),
              "There is not enough space on the disk: 5 MB are needed, 3.1 MB are free.");
    EXPECT_TRUE(server.requests().empty());
    EXPECT_FALSE(QFileInfo::exists(files.runtime()));

    // What the download will take the place of counts as free.
    writeFile(files.partialModel(), QByteArray(2'000'000, 'p'));
    EXPECT_EQ(failure(),
              "There is not enough space on the disk: 5 MB are needed, 3.1 MB are free.");
}

// Processes

class EngineInstallProcess : public EngineInstallation
{
protected:
    std::unique_ptr<QProcess> start()
    {
        auto process = std::make_unique<QProcess>();
        process->setProcessChannelMode(QProcess::ForwardedChannels);
        process->start(QStringLiteral(ENGINE_INSTALL_PROBE),
                       {root, archives, server.url().toString(), QString::number(modelSize)});
        return process;
    }
    static void waitFor(QProcess& process)
    {
        ASSERT_TRUE(waitUntil([&] { return process.state() == QProcess::NotRunning; }));
    }
};

TEST_F(EngineInstallProcess, mayBeKilledAtAnyMoment)
{
    server.setHandler([](const RecordedRequest&) {
        return Answer()
            .send("HTTP/1.1 200 OK\r\nContent-Length: 600000\r\n\r\n")
            .flood(300'000)
            .pause(10ms)
            .flood(300'000);
    });
    useRoot(root);
    QElapsedTimer timer;
    timer.start();
    const auto whole = start();
    waitFor(*whole);
    const auto duration = int(timer.elapsed());
    ASSERT_EQ(whole->exitCode(), 0);
    expectWholeEngine();

    int interrupted = 0;
    for (int i = 0; i < 12; ++i) {
        QDir(files.folder()).removeRecursively();
        const auto process = start();
        const int moment = QRandomGenerator::global()->bounded(duration);
        QTimer::singleShot(moment, process.get(), [&process] { process->kill(); });
        waitFor(*process);
        SCOPED_TRACE("killed after " + std::to_string(moment) + " ms");
        state.status = NotInstalled{};
        if (files.isComplete()) {
            expectWholeEngine();
        } else {
            ++interrupted;
        }
        // The next start takes what is there for what it is.
        ASSERT_EQ(install(), EngineStatus(Ready{})) << state.installLog.value().toStdString();
        expectWholeEngine();
        EXPECT_EQ(filesBelow(root).filter(QStringLiteral(".removed")), QStringList());
    }
    EXPECT_GT(interrupted, 0);
}

TEST_F(EngineInstallProcess, installsAnEngineOnceAtATime)
{
    server.setHandler([](const RecordedRequest&) {
        return Answer()
            .send("HTTP/1.1 200 OK\r\nContent-Length: 600000\r\n\r\n")
            .flood(300'000)
            .hold()
            .flood(300'000);
    });
    useRoot(root);
    const auto first = start();
    ASSERT_TRUE(waitUntil([&] { return server.heldAnswers() == 1; }));
    EXPECT_EQ(failure(), "This engine is being installed by another process.");
    const auto second = start();
    waitFor(*second);
    EXPECT_EQ(second->exitCode(), 1);
    server.release();
    waitFor(*first);
    EXPECT_EQ(first->exitCode(), 0);
    expectWholeEngine();
    EXPECT_EQ(server.requests().size(), 1);
}

TEST_F(EngineInstallProcess, endsWhenAnotherProcessDeletesTheEngine)
{
    server.setHandler([](const RecordedRequest&) {
        return Answer()
            .send("HTTP/1.1 200 OK\r\nContent-Length: 600000\r\n\r\n")
            .flood(300'000)
            .hold();
    });
    useRoot(root);
    const auto process = start();
    ASSERT_TRUE(waitUntil([&] { return server.heldAnswers() == 1; }));
    installer->deleteEngine();
    EXPECT_FALSE(QFileInfo::exists(files.folder()));
    waitFor(*process);
    EXPECT_EQ(process->exitCode(), 1);
    installer.reset();
    EXPECT_EQ(filesBelow(root), QStringList{QStringLiteral(".lmt60-4b.lock")});
}

} // namespace
} // namespace zelvane::test
