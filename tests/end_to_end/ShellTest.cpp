// How the program lives in the session: what it does where keys can't be pressed and where there is
// no tray, how it starts again, and how it ends.

#include "end_to_end/GreedyProgram.h"
#include "end_to_end/ZelvaneSession.h"
#include "support/Await.h"
#include "support/TestRunner.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QDBusConnection>
#include <QElapsedTimer>
#include <QFile>

#include <csignal>

namespace zelvane::test {
namespace {

using namespace std::chrono_literals;
using ::testing::HasSubstr;
using ::testing::Not;

const QString settingsTitle = QStringLiteral("^Settings$");

/// A panel of today's desktops: programs register their icons with it over the bus.
class TrayHost final : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierWatcher")
    Q_PROPERTY(bool IsStatusNotifierHostRegistered READ isThere)

public:
    explicit TrayHost(const QString& address)
        : m_bus(QDBusConnection::connectToBus(address, QStringLiteral("tray")))
    {
        m_bus.registerObject(QStringLiteral("/StatusNotifierWatcher"), this,
                             QDBusConnection::ExportAllContents);
    }
    ~TrayHost() override { QDBusConnection::disconnectFromBus(QStringLiteral("tray")); }

    void come() { EXPECT_TRUE(m_bus.registerService(serviceName())); }
    void go() { EXPECT_TRUE(m_bus.unregisterService(serviceName())); }
    [[nodiscard]] bool isThere() const { return true; }

    /// The icons that programs have registered so far.
    QStringList icons;

public Q_SLOTS:
    void RegisterStatusNotifierItem(const QString& icon) { icons << icon; }

private:
    [[nodiscard]] static QString serviceName()
    {
        return QStringLiteral("org.kde.StatusNotifierWatcher");
    }

    QDBusConnection m_bus;
};

DesktopSession::Options withoutTestExtension()
{
    DesktopSession::Options options = ZelvaneSession::wholeDesktop();
    options.serverArguments = {QStringLiteral("-extension"), QStringLiteral("XTEST")};
    return options;
}

bool endsByItself(ZelvaneSession& session)
{
    return waitUntil([&] { return session.process().state() == QProcess::NotRunning; });
}

/// How long the program takes to end after SIGTERM, well or not, in milliseconds.
qint64 timeToEnd(ZelvaneSession& session)
{
    QElapsedTimer timer;
    timer.start();
    session.process().terminate();
    EXPECT_TRUE(endsByItself(session));
    return timer.elapsed();
}

std::string fileOfProcess(const QString& process, const char* name)
{
    QFile file(QStringLiteral("/proc/%1/%2").arg(process, QString::fromLatin1(name)));
    return file.open(QIODevice::ReadOnly) ? file.readAll().replace('\0', '\n').toStdString()
                                          : std::string();
}

/// The process that shows a window.
QString processOf(ZelvaneSession& session, const QString& window)
{
    const auto found =
        session.desktop.run(QStringLiteral("xdotool"), {QStringLiteral("getwindowpid"), window});
    return QString::fromLatin1(found.output).trimmed();
}

/// Whether a window of the program shows in the list of running programs.
bool skipsTaskbar(ZelvaneSession& session, const QString& window)
{
    const auto state = session.desktop.run(
        QStringLiteral("xprop"), {QStringLiteral("-id"), window, QStringLiteral("_NET_WM_STATE")});
    return state.output.contains("_NET_WM_STATE_SKIP_TASKBAR");
}

TEST(Shell, withoutTheTestExtensionItSaysWhatIsMissingAndLivesOn)
{
    DesktopSession::Options options = withoutTestExtension();
    options.windowManager = false; // it could not be operated without
    ZelvaneSession session(options);
    // Otherwise it gets the signal twice, and the second one ends it at once.
    const QString once = QStringLiteral("--foreground");
    const auto outcome = session.desktop.run(
        QStringLiteral("timeout"), {once, QStringLiteral("--preserve-status"), QStringLiteral("3"),
                                    QStringLiteral(ZELVANE_PROGRAM), QStringLiteral("--profile"),
                                    session.desktop.home() + QStringLiteral("/profile")});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_TRUE(outcome.errors.contains("zelvane-desk: The X server lacks the extension XTEST"));
}

TEST(Shell, whereKeysTakeNoEffectSettingsOpenAndARelaunchKeepsTheKeyOfTheRun)
{
    ZelvaneSession session;
    const QString script = session.desktop.writeFile(QStringLiteral("greedy.py"), greedyProgram);
    QProcess& greedy = session.desktop.start(QStringLiteral("/usr/bin/python3"), {script});
    ASSERT_TRUE(waitUntil([&] { return greedy.canReadLine(); }));
    session.start();
    const QString page = session.waitForWindow(settingsTitle);
    EXPECT_FALSE(skipsTaskbar(session, page));
    const QString first = processOf(session, page);
    EXPECT_EQ(first, QString::number(session.process().processId()));

    // A translation that is refused offers the relaunch, as the settings do.
    session.key(ZelvaneSession::toGerman);
    session.waitForWindow(QStringLiteral("^Translation failed$"));
    session.press(QStringLiteral("Relaunch Zelvane Desk"));
    ASSERT_TRUE(endsByItself(session));
    EXPECT_EQ(session.process().exitCode(), 0);

    const QString second = processOf(session, session.waitForWindow(settingsTitle));
    EXPECT_NE(second, first);
    EXPECT_THAT(fileOfProcess(second, "environ"), HasSubstr("ZELVANE_API_KEY=end-to-end-key"));
    EXPECT_THAT(fileOfProcess(second, "cmdline"), HasSubstr("--profile"));
    EXPECT_THAT(fileOfProcess(second, "cmdline"), Not(HasSubstr("end-to-end-key")));
    ASSERT_EQ(::kill(second.toInt(), SIGTERM), 0);
    session.waitUntilGone(settingsTitle);
}

TEST(Shell, whereKeysCannotBePressedSettingsOpenAtTheStart)
{
    ZelvaneSession session(withoutTestExtension());
    session.start();
    session.waitForWindow(settingsTitle);
    session.quit();
}

TEST(Shell, aQuietStartOpensNothing)
{
    ZelvaneSession session(withoutTestExtension());
    session.start({QStringLiteral("--quiet")});
    waitUntil([] { return false; }, 1500ms);
    EXPECT_FALSE(session.windowIsVisible(settingsTitle));
    session.quit();
}

TEST(Shell, startsWithTheSessionIfTheUserWantsThat)
{
    ZelvaneSession session;
    session.setDefault(QStringLiteral("zv.startAtLogin"), true);
    session.start();
    QFile entry(session.desktop.environment().value(QStringLiteral("XDG_CONFIG_HOME")) +
                QStringLiteral("/autostart/org.zelvane.desk.desktop"));
    ASSERT_TRUE(waitUntil([&] { return entry.exists(); }));
    ASSERT_TRUE(entry.open(QIODevice::ReadOnly));
    const std::string content = entry.readAll().toStdString();
    EXPECT_THAT(content, HasSubstr("\nExec=" ZELVANE_PROGRAM " --quiet --profile "));
    EXPECT_THAT(content, Not(HasSubstr("end-to-end-key")));
}

TEST(Shell, theIconComesWithALatePanelAndComesBackWithIt)
{
    ZelvaneSession session;
    TrayHost host(session.desktop.sessionBusAddress());
    session.start();
    EXPECT_TRUE(host.icons.isEmpty());
    host.come();
    ASSERT_TRUE(waitUntil([&] { return host.icons.size() == 1; }));
    host.go();
    host.come();
    EXPECT_TRUE(waitUntil([&] { return host.icons.size() >= 2; }));
    session.quit();
}

TEST(Shell, withoutATrayItSaysSoOnce)
{
    allowThisTest(20s); // the program gives a tray five seconds
    ZelvaneSession session;
    QProcess& program = session.desktop.start(
        QStringLiteral("sh"),
        {QStringLiteral("-c"), QStringLiteral("exec \"$0\" --profile \"$1\" 2>&1"),
         QStringLiteral(ZELVANE_PROGRAM), session.desktop.home() + QStringLiteral("/profile")});
    // Nobody shows messages on this desktop.
    QByteArray said;
    EXPECT_TRUE(waitUntil([&] {
        said += program.readAllStandardOutput();
        return said.contains("zelvane-desk: No place for the tray icon");
    }));
}

TEST(Shell, aTranslationUnderWayEndsWithTheProgramAndGivesTheClipboardBack)
{
    ZelvaneSession session;
    session.setClipboard("the user's own");
    session.provider.setHandler([](const RecordedRequest&) { return Answer(); });
    session.start();
    session.openEditor("hello world");
    session.key(ZelvaneSession::toGerman);
    ASSERT_TRUE(waitUntil([&] { return session.askedTexts().size() == 1; }));
    EXPECT_LT(timeToEnd(session), 3000);
    EXPECT_EQ(session.process().exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(session.process().exitCode(), 0);
    EXPECT_EQ(session.unchangedEditorText(), "hello world");
}

TEST(Shell, anOpenWindowHoldsNothingUp)
{
    ZelvaneSession session;
    session.start();
    session.openReader(QStringLiteral("hello reader"));
    session.selectAll();
    session.key(ZelvaneSession::toGerman);
    session.waitForWindow(QStringLiteral("^Translation$"));
    EXPECT_LT(timeToEnd(session), 3000);
    EXPECT_EQ(session.process().exitCode(), 0);
}

TEST(Shell, endsWithTheBusOfItsSession)
{
    ZelvaneSession session;
    session.start();
    // Qt itself fails if the bus goes while it is still asking who owns which name.
    ASSERT_TRUE(session.answers());
    session.desktop.killBus();
    ASSERT_TRUE(endsByItself(session));
    EXPECT_EQ(session.process().exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(session.process().exitCode(), 0);
}

TEST(Shell, endsWithinThreeSecondsEvenIfItsMainThreadHangs)
{
    allowThisTest(20s);
    ZelvaneSession session;
    session.start();
    // A frozen X server answers no request: the probe of the permission waits for it.
    QProcess& server = session.desktop.server();
    DesktopSession::freeze(server);
    ASSERT_TRUE(waitUntil([&] { return !session.answers(); }));
    EXPECT_LT(timeToEnd(session), 3500);
    DesktopSession::thaw(server);
}

TEST(Shell, afterItWasKilledInTheMiddleItStartsAndTranslatesAsEver)
{
    ZelvaneSession session;
    session.provider.setHandler([](const RecordedRequest&) { return Answer(); });
    session.start();
    session.openEditor("hello world");
    session.key(ZelvaneSession::toGerman);
    ASSERT_TRUE(waitUntil([&] { return session.askedTexts().size() == 1; }));
    session.process().kill();
    ASSERT_TRUE(endsByItself(session));

    session.answerWith("Hallo Welt");
    session.start();
    session.selectAll();
    session.key(ZelvaneSession::toGerman);
    session.waitForReport();
    EXPECT_EQ(session.editorText(), "Hallo Welt");
}

} // namespace
} // namespace zelvane::test

#include "ShellTest.moc"
