#include "Services/linux/LinuxChildProcesses.h"

#include "foundation/SystemClock.h"
#include "support/Await.h"
#include "support/Processes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace zelvane {
namespace {

using std::chrono::milliseconds;
using test::await;
using test::waitUntil;
using ::testing::HasSubstr;
using ::testing::Not;

constexpr qsizetype muchOutput = 1024 * 1024;

ChildProcessCommand shell(const QString& script, const QStringList& arguments = {})
{
    ChildProcessCommand command;
    command.executable = QStringLiteral("/bin/sh");
    command.arguments = QStringList{QStringLiteral("-c"), script, QStringLiteral("sh")} + arguments;
    return command;
}

bool isAlive(qint64 pid)
{
    return ::kill(static_cast<pid_t>(pid), 0) == 0;
}

class LinuxChildProcessesTest : public ::testing::Test
{
protected:
    std::unique_ptr<ChildProcess> launch(const ChildProcessCommand& command)
    {
        return await(launcher.launch(command, {[this](const QByteArray& bytes) { output += bytes; },
                                               [this](ChildProcessEnd how) { end = how; }}));
    }
    ChildProcessOutcome run(const ChildProcessCommand& command)
    {
        return await(runChildProcess(launcher, clock, command, muchOutput, {}));
    }
    /// Runs a script to its end; yields what it printed, as text.
    std::string printed(const QString& script, const QStringList& arguments = {})
    {
        return run(shell(script, arguments)).output.trimmed().toStdString();
    }

    SystemClock clock;
    LinuxChildProcesses launcher;
    QByteArray output;
    std::optional<ChildProcessEnd> end;
};

TEST_F(LinuxChildProcessesTest, RunsAProgramToItsEndWithBothOfItsOutputs)
{
    const auto outcome = run(shell(QStringLiteral("echo out; echo err >&2; exit 3")));
    EXPECT_EQ(outcome.output, QByteArray("out\nerr\n"));
    EXPECT_EQ(outcome.end, (ChildProcessEnd{ChildProcessEnd::Kind::exited, 3}));
    EXPECT_FALSE(outcome.end.isSuccess());
}

TEST_F(LinuxChildProcessesTest, DropsTheStandardErrorIfAskedTo)
{
    auto command = shell(QStringLiteral("echo out; echo err >&2"));
    command.standardError = ChildProcessCommand::StandardError::discarded;
    const auto outcome = run(command);
    EXPECT_EQ(outcome.output, QByteArray("out\n"));
    EXPECT_TRUE(outcome.end.isSuccess());
}

TEST_F(LinuxChildProcessesTest, TellsASignalFromAnExit)
{
    EXPECT_EQ(run(shell(QStringLiteral("kill -9 $$"))).end,
              (ChildProcessEnd{ChildProcessEnd::Kind::signalled, 9}));
}

TEST_F(LinuxChildProcessesTest, HandsOverArgumentsFolderAndEnvironmentAsTheyAre)
{
    const QTemporaryDir folder;
    auto command = shell(QStringLiteral("pwd; echo \"$1|$2\"; echo \"$MARK\""),
                         {QStringLiteral("a b"), QStringLiteral("*")});
    command.workingDirectory = folder.path();
    command.environment.insert(QStringLiteral("MARK"), QStringLiteral("ä=1"));
    EXPECT_EQ(QString::fromUtf8(run(command).output),
              QDir(folder.path()).canonicalPath() + QStringLiteral("\na b|*\nä=1\n"));
}

TEST_F(LinuxChildProcessesTest, SaysWhyAProgramCouldNotBeStarted)
{
    ChildProcessCommand command;
    command.executable = QStringLiteral("/nowhere/llama-server");
    try {
        (void)launch(command);
        FAIL() << "nothing was thrown";
    } catch (const ChildLaunchError& error) {
        EXPECT_EQ(error.description(),
                  QStringLiteral("llama-server could not be started: No such file or directory"));
    }
}

TEST_F(LinuxChildProcessesTest, AFileThatIsNoProgramIsAFailedStart)
{
    const QTemporaryDir folder;
    QFile file(folder.filePath(QStringLiteral("server")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("text");
    file.close();
    ChildProcessCommand command;
    command.executable = file.fileName();
    EXPECT_THROW((void)launch(command), ChildLaunchError);
}

TEST_F(LinuxChildProcessesTest, ReportsOutputWhileTheProgramRunsAndThenItsEnd)
{
    const auto child = launch(shell(QStringLiteral("echo up; exec sleep 60")));
    EXPECT_TRUE(waitUntil([&] { return output == "up\n"; }));
    EXPECT_TRUE(child->isRunning());
    EXPECT_TRUE(isAlive(child->pid()));
    child->terminate();
    ASSERT_TRUE(waitUntil([&] { return end.has_value(); }));
    EXPECT_EQ(end, (ChildProcessEnd{ChildProcessEnd::Kind::signalled, SIGTERM}));
    EXPECT_FALSE(child->isRunning());
    child->terminate(); // nobody else gets it
}

TEST_F(LinuxChildProcessesTest, KillsWhatDoesNotListen)
{
    const auto child =
        launch(shell(QStringLiteral("trap '' TERM; echo up; sleep 60 & wait; wait")));
    ASSERT_TRUE(waitUntil([&] { return output == "up\n"; }));
    child->terminate();
    EXPECT_FALSE(waitUntil([&] { return end.has_value(); }, milliseconds(100)));
    child->kill();
    ASSERT_TRUE(waitUntil([&] { return end.has_value(); }));
    EXPECT_EQ(end->code, SIGKILL);
}

TEST_F(LinuxChildProcessesTest, AProcessGoesWithItsObjectAndIsSilentFromThenOn)
{
    auto child = launch(shell(QStringLiteral("while :; do echo more; done")));
    ASSERT_TRUE(waitUntil([&] { return !output.isEmpty(); }));
    const qint32 pid = child->pid();
    child.reset();
    const qsizetype heard = output.size();
    EXPECT_TRUE(waitUntil([&] { return !isAlive(pid); }));
    EXPECT_EQ(output.size(), heard);
    EXPECT_FALSE(end.has_value());
}

TEST_F(LinuxChildProcessesTest, TheEndMayDestroyTheProcessObject)
{
    std::unique_ptr<ChildProcess> child;
    bool ended = false;
    child = await(launcher.launch(shell(QStringLiteral("exit 0")), {{}, [&](ChildProcessEnd) {
                                                                        child.reset();
                                                                        ended = true;
                                                                    }}));
    EXPECT_TRUE(waitUntil([&] { return ended; }));
}

TEST_F(LinuxChildProcessesTest, ReadsTheOutputWhileNobodyOnTheMainThreadTakesIt)
{
    const QTemporaryDir folder;
    const QString mark = folder.filePath(QStringLiteral("written"));
    // Sixteen times what a pipe holds, and a mark when all of it is written.
    const auto child = launch(shell(
        QStringLiteral("head -c 1048576 /dev/zero | tr '\\0' x; echo end; touch \"$1\""), {mark}));
    QDeadlineTimer deadline(milliseconds(8000));
    while (!QFile::exists(mark) && !deadline.hasExpired()) {
        ::usleep(5000); // without the event loop, on purpose
    }
    EXPECT_TRUE(QFile::exists(mark));
    ASSERT_TRUE(waitUntil([&] { return end.has_value(); }));
    // What nobody took was cut at its front.
    EXPECT_LE(output.size(), 256 * 1024);
    EXPECT_TRUE(output.endsWith("xxend\n"));
}

TEST_F(LinuxChildProcessesTest, KeepsTheLastPartOfALongOutput)
{
    const auto outcome =
        await(runChildProcess(launcher, clock, shell(QStringLiteral("echo 123456789")), 4, {}));
    EXPECT_EQ(outcome.output, QByteArray("789\n"));
    EXPECT_TRUE(outcome.isCut);
}

TEST_F(LinuxChildProcessesTest, KeepsAllOfAnOutputThatJustFits)
{
    const auto outcome =
        await(runChildProcess(launcher, clock, shell(QStringLiteral("echo 123")), 4, {}));
    EXPECT_EQ(outcome.output, QByteArray("123\n"));
    EXPECT_FALSE(outcome.isCut);
}

TEST_F(LinuxChildProcessesTest, AStoppedRunEndsWhenTheProgramHasGone)
{
    const QTemporaryDir folder;
    const QString mark = folder.filePath(QStringLiteral("late"));
    std::stop_source stop;
    // Asked to end, it takes a moment and writes a file.
    auto task = runChildProcess(
        launcher, clock,
        shell(QStringLiteral("trap 'sleep 0.1; touch \"$1\"; exit 0' TERM; sleep 60 & wait"),
              {mark}),
        muchOutput, stop.get_token());
    waitUntil([] { return false; }, milliseconds(100));
    stop.request_stop();
    EXPECT_THROW(await(std::move(task)), CancellationError);
    EXPECT_TRUE(QFile::exists(mark));
}

TEST_F(LinuxChildProcessesTest, AStopBeforeTheStartStartsNothing)
{
    const QTemporaryDir folder;
    const QString mark = folder.filePath(QStringLiteral("started"));
    std::stop_source stop;
    stop.request_stop();
    EXPECT_THROW(
        await(runChildProcess(launcher, clock, shell(QStringLiteral("touch \"$1\""), {mark}),
                              muchOutput, stop.get_token())),
        CancellationError);
    EXPECT_FALSE(QFile::exists(mark));
}

TEST_F(LinuxChildProcessesTest, LeadsAProcessGroupOfItsOwn)
{
    const auto child = launch(shell(QStringLiteral("exec sleep 60")));
    EXPECT_EQ(::getpgid(child->pid()), child->pid());
    EXPECT_NE(::getpgid(0), child->pid());
}

TEST_F(LinuxChildProcessesTest, InheritsNoDescriptorButItsThreeOwn)
{
    const int open = ::open("/dev/full", O_WRONLY); // without O_CLOEXEC
    ASSERT_GE(open, 3);
    // The fourth is the folder that is being listed.
    const std::string listing = printed(QStringLiteral("exec ls -l /proc/self/fd"));
    EXPECT_THAT(listing, Not(HasSubstr("/dev/full")));
    EXPECT_EQ(QByteArray::fromStdString(listing).count("->"), 4) << listing;
    ::close(open);
}

TEST_F(LinuxChildProcessesTest, GetsNoInputAndTheUsualSignals)
{
    EXPECT_EQ(printed(QStringLiteral("cat; readlink /proc/self/fd/0")), "/dev/null");
    // Neither ignored nor blocked: SIGTERM (15) and SIGPIPE (13).
    EXPECT_THAT(printed(QStringLiteral("grep -E '^Sig(Blk|Ign)' /proc/self/status")),
                ::testing::AllOf(HasSubstr("SigBlk:\t0000000000000000"),
                                 HasSubstr("SigIgn:\t0000000000000000")));
}

TEST_F(LinuxChildProcessesTest, ChildrenGoWithTheLauncher)
{
    auto own = std::make_unique<LinuxChildProcesses>();
    const auto child = await(own->launch(shell(QStringLiteral("exec sleep 60")), {}));
    const qint32 pid = child->pid();
    own.reset();
    EXPECT_FALSE(isAlive(pid));
    child->kill(); // too late, and harmless
}

TEST_F(LinuxChildProcessesTest, ALaunchUnderWayEndsWithTheLauncher)
{
    auto own = std::make_unique<LinuxChildProcesses>();
    auto task = own->launch(shell(QStringLiteral("exec sleep 60")), {});
    own.reset();
    EXPECT_THROW(await(std::move(task)), CancellationError);
}

TEST_F(LinuxChildProcessesTest, ManyChildrenRunSideBySide)
{
    std::vector<QCoro::Task<ChildProcessOutcome>> runs;
    for (int i = 0; i < 20; ++i) {
        runs.push_back(runChildProcess(launcher, clock,
                                       shell(QStringLiteral("echo $1"), {QString::number(i)}),
                                       muchOutput, {}));
    }
    for (int i = 0; i < 20; ++i) {
        EXPECT_EQ(await(std::move(runs.at(std::size_t(i)))).output, QByteArray::number(i) + '\n');
    }
}

TEST_F(LinuxChildProcessesTest, AChildGoesWithAProgramThatIsKilled)
{
    QProcess parent;
    parent.start(QStringLiteral(CHILD_PARENT), QStringList());
    ASSERT_TRUE(waitUntil([&] { return parent.canReadLine(); }));
    const qint64 child = parent.readLine().trimmed().toLongLong();
    ASSERT_GT(child, 1);
    ASSERT_TRUE(isAlive(child));
    parent.kill();
    ASSERT_TRUE(parent.waitForFinished());
    EXPECT_TRUE(waitUntil([&] { return !test::isProcessRunning(child); }));
}

} // namespace
} // namespace zelvane
