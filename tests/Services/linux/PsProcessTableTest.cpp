#include "Services/linux/PsProcessTable.h"

#include "Services/StraySweep.h"
#include "Services/linux/LinuxChildProcesses.h"
#include "foundation/SystemClock.h"
#include "support/Await.h"
#include "support/llama/EngineFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QProcess>
#include <QTcpServer>
#include <QTemporaryDir>

#include <csignal>

namespace zelvane::test {
namespace {

using ::testing::HasSubstr;

class RealProcesses : public ::testing::Test
{
protected:
    /// Starts the server of an engine as an earlier run of the program would have.
    void start(QProcess& process, const EngineFolder& folder)
    {
        QTcpServer probe;
        probe.listen(QHostAddress::LocalHost);
        const QString port = QString::number(probe.serverPort());
        probe.close();
        process.start(folder.server(),
                      {QStringLiteral("-m"), folder.model(), QStringLiteral("--port"), port});
        ASSERT_TRUE(process.waitForStarted());
        processes.push_back(&process);
    }
    /// Waits until the server's end can be an ordinary one.
    static void waitUntilLoaded(QProcess& process)
    {
        process.setReadChannel(QProcess::StandardError);
        QByteArray log;
        EXPECT_TRUE(waitUntil([&] {
            log += process.readAllStandardError();
            return log.contains("listening");
        }));
    }
    void sweep(const EngineFolder& folder, std::optional<qint32> exempt = std::nullopt)
    {
        await(strays.sweepStrayServers(folder.server(), exempt, {}));
    }
    static bool hasEnded(const QProcess& process)
    {
        return waitUntil([&] { return process.state() == QProcess::NotRunning; });
    }
    ~RealProcesses() override
    {
        for (QProcess* process : processes) {
            process->kill();
            process->waitForFinished();
        }
    }

    QTemporaryDir root;
    EngineFolder engine{root.path() + QStringLiteral("/Jürgen's data"), QStringLiteral("a"),
                        QStringLiteral("m.gguf"), 100};
    EngineFolder other{root.path(), QStringLiteral("b"), QStringLiteral("m.gguf"), 100};
    SystemClock clock;
    LinuxChildProcesses launcher;
    PsProcessTable table{launcher, clock};
    StraySweep strays{table, clock};
    QProcess first;
    QProcess second;
    QProcess foreign;
    std::vector<QProcess*> processes;
};

TEST_F(RealProcesses, AreListedWithTheirCommandLines)
{
    start(first, engine);
    const auto listing = await(table.listing({}));
    ASSERT_TRUE(listing);
    const QByteArray pid = QByteArray::number(first.processId());
    EXPECT_THAT(listing->toStdString(),
                HasSubstr(pid.toStdString() + " " + engine.server().toStdString() + " -m "));
}

TEST_F(RealProcesses, AreListedWholeWhateverTheWidthOfTheTerminal)
{
    qputenv("COLUMNS", "40");
    qputenv("LC_ALL", "C");
    start(first, engine);
    const auto listing = await(table.listing({}));
    qunsetenv("COLUMNS");
    qputenv("LC_ALL", "C.UTF-8");
    ASSERT_TRUE(listing);
    EXPECT_THAT(listing->toStdString(), HasSubstr(engine.server().toStdString()));
}

TEST_F(RealProcesses, ASweepEndsTheServersOfThisEngineAlone)
{
    start(first, engine);
    start(second, engine);
    start(foreign, other);
    waitUntilLoaded(first);
    waitUntilLoaded(foreign);
    sweep(engine, static_cast<qint32>(second.processId()));
    EXPECT_TRUE(hasEnded(first));
    EXPECT_EQ(engine.recorded("end").size(), 1);
    EXPECT_EQ(second.state(), QProcess::Running);
    EXPECT_EQ(foreign.state(), QProcess::Running);
}

TEST_F(RealProcesses, ASweepKillsWhatDoesNotEnd)
{
    engine.script(R"({"ignoresTerminate":true})");
    start(first, engine);
    waitUntilLoaded(first);
    sweep(engine);
    EXPECT_FALSE(waitUntil([&] { return first.state() == QProcess::NotRunning; },
                           std::chrono::milliseconds(1500)));
    EXPECT_TRUE(hasEnded(first));
    EXPECT_EQ(first.exitCode(), SIGKILL);
}

TEST_F(RealProcesses, AStoppedListingEnds)
{
    std::stop_source stop;
    auto listing = table.listing(stop.get_token());
    stop.request_stop();
    EXPECT_THROW(await(std::move(listing)), CancellationError);
}

TEST_F(RealProcesses, ProcessesThatAreNotThereAreNotRunning)
{
    start(first, engine);
    const auto pid = static_cast<qint32>(first.processId());
    EXPECT_TRUE(table.isRunning(pid));
    table.kill(pid);
    EXPECT_TRUE(hasEnded(first));
    EXPECT_FALSE(table.isRunning(pid));
    table.terminate(pid); // without effect
}

} // namespace
} // namespace zelvane::test
