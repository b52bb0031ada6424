// The program's own binary as the other programs of a session see it: over the session bus, from
// the command line, and at a second start.

#include "end_to_end/ZelvaneSession.h"
#include "support/Await.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QJsonDocument>

#include <csignal>

namespace zelvane::test {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

const QString menuTitle = QStringLiteral("^Zelvane Desk$");

class Session : public ::testing::Test
{
protected:
    static DesktopSession::Options withBus()
    {
        DesktopSession::Options options;
        options.sessionBus = true;
        return options;
    }

    /// Starts a command of the program in the session's profile.
    QProcess& begin(const QStringList& words)
    {
        return session.desktop.start(QStringLiteral(ZELVANE_PROGRAM), inProfile(words));
    }
    /// Runs a command while the provider goes on answering.
    DesktopSession::Outcome run(const QStringList& words, const QByteArray& input = {})
    {
        QProcess process;
        process.setProcessEnvironment(session.desktop.environment());
        process.start(QStringLiteral(ZELVANE_PROGRAM), inProfile(words));
        process.write(input);
        process.closeWriteChannel();
        EXPECT_TRUE(waitUntil([&] { return process.state() == QProcess::NotRunning; }));
        return {process.exitCode(), process.readAllStandardOutput(),
                process.readAllStandardError()};
    }
    [[nodiscard]] QStringList inProfile(const QStringList& words) const
    {
        return QStringList{QStringLiteral("--profile"),
                           session.desktop.home() + QStringLiteral("/profile")} +
               words;
    }
    /// How many processes of the program run in the session.
    [[nodiscard]] qsizetype processes() const
    {
        const auto found = session.desktop.run(
            QStringLiteral("pgrep"),
            {QStringLiteral("-f"), QStringLiteral("^") + QStringLiteral(ZELVANE_PROGRAM) +
                                       QStringLiteral(" --profile ") + session.desktop.home()});
        return found.output.count('\n');
    }

    ZelvaneSession session{withBus()};
};

TEST_F(Session, servicesTranslateFromAScript)
{
    session.start();
    auto outcome = run({QStringLiteral("service"), QStringLiteral("translatePair1"),
                        QStringLiteral("hello world")});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.output, "Hallo Welt\n");
    outcome = run({QStringLiteral("service"), QStringLiteral("translatePair2")}, "from a pipe\n");
    EXPECT_EQ(outcome.output, "Hallo Welt\n");
    EXPECT_THAT(session.askedTexts(),
                ElementsAre(QStringLiteral("hello world"), QStringLiteral("from a pipe")));
    outcome =
        run({QStringLiteral("service"), QStringLiteral("translatePair3"), QStringLiteral("hello")});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.errors, "zelvane-desk: Language pair slot 3 is not configured.\n");
    EXPECT_EQ(outcome.output, "");
}

TEST_F(Session, aServiceWithItsPopupShowsIt)
{
    session.start();
    const auto outcome = run({QStringLiteral("service"), QStringLiteral("translatePair1UI"),
                              QStringLiteral("hello world")});
    EXPECT_EQ(outcome.output, "Hallo Welt\n");
    session.waitForWindow(QStringLiteral("^Translation$"));
}

TEST_F(Session, servicesRunBesideEachOther)
{
    session.start();
    const QByteArray answer = R"({"choices":[{"message":{"content":"Hallo Welt"}}]})";
    session.provider.setHandler([answer](const RecordedRequest&) {
        return Answer().hold().send(httpMessage(200, answer));
    });
    QList<QProcess*> calls;
    for (int i = 0; i < 4; ++i) {
        calls << &begin({QStringLiteral("service"), QStringLiteral("translatePair1"),
                         QStringLiteral("text %1").arg(i)});
    }
    ASSERT_TRUE(waitUntil([&] { return session.provider.heldAnswers() == 4; }));
    // The program itself is free meanwhile.
    EXPECT_THAT(run({QStringLiteral("status")}).output.toStdString(), HasSubstr("\n1\t"));
    session.provider.release();
    for (QProcess* call : calls) {
        EXPECT_TRUE(waitUntil([&] { return call->state() == QProcess::NotRunning; }));
        EXPECT_EQ(call->readAllStandardOutput(), "Hallo Welt\n");
    }
}

TEST_F(Session, aTriggerReplacesTheSelection)
{
    session.start();
    session.openEditor("hello world");
    EXPECT_EQ(run({QStringLiteral("trigger"), QStringLiteral("1")}).exitCode, 0);
    session.waitForReport();
    EXPECT_EQ(session.editorText(), "Hallo Welt");
}

TEST_F(Session, aTriggerByIdentifierAndItsRefusals)
{
    session.start();
    const QByteArray status = run({QStringLiteral("status"), QStringLiteral("--json")}).output;
    const QString id =
        QJsonDocument::fromJson(status)[QStringLiteral("pairs")][1][QStringLiteral("id")]
            .toString();
    session.openEditor("hello world");
    EXPECT_EQ(run({QStringLiteral("trigger"), id}).exitCode, 0);
    session.waitForReport();
    EXPECT_EQ(session.editorText(), "Hallo Welt");
    const auto refused = run({QStringLiteral("trigger"), QStringLiteral("9")});
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_EQ(refused.errors, "zelvane-desk: Language pair slot 9 is not configured.\n");
    EXPECT_EQ(run({QStringLiteral("trigger")}).exitCode, 2);
}

TEST_F(Session, withoutTheProgramTheCommandsSaySo)
{
    for (const QStringList& words :
         {QStringList{QStringLiteral("status")},
          QStringList{QStringLiteral("trigger"), QStringLiteral("1")},
          QStringList{QStringLiteral("show"), QStringLiteral("settings")},
          QStringList{QStringLiteral("service"), QStringLiteral("translatePair1"),
                      QStringLiteral("hello")}}) {
        const auto outcome = run(words);
        EXPECT_EQ(outcome.exitCode, 1);
        EXPECT_EQ(outcome.errors.toStdString(),
                  "zelvane-desk: Zelvane Desk isn't running; zelvane-desk without a command "
                  "starts it\n");
    }
}

TEST_F(Session, anInterruptedServiceEndsAtOnce)
{
    session.start();
    session.provider.setHandler([](const RecordedRequest&) { return Answer().hold(); });
    QProcess& call = begin(
        {QStringLiteral("service"), QStringLiteral("translatePair1"), QStringLiteral("hello")});
    ASSERT_TRUE(waitUntil([&] { return session.provider.heldAnswers() == 1; }));
    ::kill(pid_t(call.processId()), SIGINT);
    EXPECT_TRUE(waitUntil([&] { return call.state() == QProcess::NotRunning; }, 2s));
    EXPECT_EQ(call.exitCode(), 130);
    EXPECT_EQ(run({QStringLiteral("status")}).exitCode, 0);
}

TEST_F(Session, aSecondStartHandsOverAndEndsWell)
{
    session.start();
    const auto second = run({});
    EXPECT_EQ(second.exitCode, 0);
    EXPECT_EQ(second.output + second.errors, "");
    EXPECT_EQ(processes(), 1);
    // No tray here: the panel that its icon would open is all there is to see.
    session.waitForWindow(menuTitle);
    session.key("Escape");
    session.waitUntilGone(menuTitle);
    EXPECT_THAT(run({QStringLiteral("status")}).output.toStdString(), HasSubstr("\n1\t"));
}

TEST_F(Session, ofTwoStartsAtTheSameMomentOneRuns)
{
    QProcess& one = begin({QStringLiteral("--report")});
    QProcess& other = begin({QStringLiteral("--report")});
    ASSERT_TRUE(waitUntil([&] {
        return one.state() == QProcess::NotRunning || other.state() == QProcess::NotRunning;
    }));
    QProcess& ended = one.state() == QProcess::NotRunning ? one : other;
    QProcess& running = &ended == &one ? other : one;
    EXPECT_EQ(ended.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(ended.exitCode(), 0);
    EXPECT_EQ(running.state(), QProcess::Running);
    EXPECT_EQ(run({QStringLiteral("status")}).exitCode, 0);
    EXPECT_EQ(processes(), 1);
}

TEST_F(Session, aFrozenFirstInstanceIsNamed)
{
    session.start();
    DesktopSession::freeze(session.process());
    QElapsedTimer taken;
    taken.start();
    const auto second = run({});
    EXPECT_LT(taken.elapsed(), 8000);
    EXPECT_EQ(second.exitCode, 1);
    EXPECT_THAT(second.errors.toStdString(),
                HasSubstr("is running already as process " +
                          std::to_string(session.process().processId())));
    DesktopSession::thaw(session.process());
    EXPECT_EQ(run({}).exitCode, 0);
}

TEST_F(Session, aStartWhileTheFirstOneEndsBecomesTheProgram)
{
    session.start();
    session.process().terminate();
    QProcess& next = begin({QStringLiteral("--report")});
    QByteArray printed;
    EXPECT_TRUE(waitUntil([&] {
        printed += next.readAllStandardOutput();
        return printed.contains("ready\n");
    }));
    EXPECT_EQ(processes(), 1);
}

TEST_F(Session, aKilledInstanceLeavesNothingInTheWay)
{
    session.start();
    DesktopSession::kill(session.process());
    session.start();
    EXPECT_EQ(run({QStringLiteral("status")}).exitCode, 0);
}

TEST_F(Session, profilesAreProgramsOfTheirOwn)
{
    session.start();
    const QString other = session.desktop.home() + QStringLiteral("/other");
    const QString program = QStringLiteral(ZELVANE_PROGRAM);
    // What it asks the hosted service at its start stays on this machine.
    session.desktop.run(program, {QStringLiteral("--profile"), other, QStringLiteral("defaults"),
                                  QStringLiteral("write"), QStringLiteral("zv.endpoint.Zelvane"),
                                  QStringLiteral("http://127.0.0.1:9")});
    QProcess& second = session.desktop.start(
        program, {QStringLiteral("--profile"), other, QStringLiteral("--report")});
    QByteArray printed;
    EXPECT_TRUE(waitUntil([&] {
        printed += second.readAllStandardOutput();
        return printed.contains("ready\n");
    }));
    EXPECT_EQ(processes(), 2);
    EXPECT_EQ(
        session.desktop.run(program, {QStringLiteral("--profile"), other, QStringLiteral("status")})
            .exitCode,
        0);
}

TEST_F(Session, theBusStartsTheProgramWhereItIsInstalled)
{
    // What installing it puts into the folder of the bus's services.
    const QString name = QStringLiteral("org.zelvane.desk");
    session.desktop.run(
        QStringLiteral("mkdir"),
        {QStringLiteral("-p"), session.desktop.home() + QStringLiteral("/share/dbus-1/services")});
    (void)session.desktop.writeFile(QStringLiteral("share/dbus-1/services/%1.service").arg(name),
                                    QByteArray("[D-BUS Service]\nName=org.zelvane.desk\nExec=") +
                                        ZELVANE_PROGRAM + "\n");
    session.desktop.run(QStringLiteral("dbus-send"),
                        {QStringLiteral("--session"), QStringLiteral("--dest=org.freedesktop.DBus"),
                         QStringLiteral("--print-reply"), QStringLiteral("/org/freedesktop/DBus"),
                         QStringLiteral("org.freedesktop.DBus.UpdateActivationEnvironment"),
                         QStringLiteral("dict:string:string:DISPLAY,") +
                             QString::fromLatin1(session.desktop.display())});
    session.desktop.run(QStringLiteral("dbus-send"),
                        {QStringLiteral("--session"), QStringLiteral("--dest=org.freedesktop.DBus"),
                         QStringLiteral("--print-reply"), QStringLiteral("/org/freedesktop/DBus"),
                         QStringLiteral("org.freedesktop.DBus.ReloadConfig")});
    const QString program = QStringLiteral(ZELVANE_PROGRAM);
    session.desktop.run(program, {QStringLiteral("defaults"), QStringLiteral("write"),
                                  QStringLiteral("zv.endpoint.Zelvane"),
                                  QStringLiteral("http://127.0.0.1:9")});
    EXPECT_EQ(session.desktop.run(program, {QStringLiteral("status")}).exitCode, 1);
    const auto shown = session.desktop.run(
        program, {QStringLiteral("show"), QStringLiteral("translation")}, {}, 9s);
    EXPECT_EQ(shown.exitCode, 0) << shown.errors.toStdString();
    EXPECT_EQ(session.desktop.run(program, {QStringLiteral("status")}).exitCode, 0);
}

TEST(SessionWithoutBus, twoInstancesNeverRun)
{
    DesktopSession::Options options;
    ZelvaneSession session(options);
    session.desktop.setVariable(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"),
                                QStringLiteral("unix:path=/nowhere"));
    session.start();
    const auto second = session.desktop.run(
        QStringLiteral(ZELVANE_PROGRAM),
        {QStringLiteral("--profile"), session.desktop.home() + QStringLiteral("/profile")}, {}, 9s);
    EXPECT_EQ(second.exitCode, 1);
    EXPECT_THAT(second.errors.toStdString(),
                HasSubstr("is running already. Without a session bus"));
    EXPECT_EQ(session.process().state(), QProcess::Running);
}

} // namespace
} // namespace zelvane::test
