#include "support/DesktopSession.h"

#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QFile>

#include <csignal>
#include <stdexcept>

namespace zelvane::test {
namespace {

using namespace std::chrono_literals;

const auto sleepProgram = QStringLiteral("sleep");

bool isAlive(qint64 process)
{
    return ::kill(pid_t(process), 0) == 0;
}

QByteArray variable(const DesktopSession& desktop, const QString& name)
{
    return desktop.run(QStringLiteral("printenv"), {name}).output.trimmed();
}

TEST(DesktopSession, programsEndWithTheSessionEvenIfTheyAreFrozen)
{
    qint64 program = 0;
    QElapsedTimer time;
    {
        DesktopSession desktop({.windowManager = false});
        QProcess& frozen = desktop.start(sleepProgram, {QStringLiteral("60")});
        program = frozen.processId();
        DesktopSession::freeze(frozen);
        time.start();
    }
    EXPECT_LT(time.elapsed(), 3000);
    EXPECT_FALSE(isAlive(program));
}

TEST(DesktopSession, twoSessionsHaveDisplaysAndFoldersOfTheirOwn)
{
    const DesktopSession first({.windowManager = false});
    const DesktopSession second({.windowManager = false});
    EXPECT_NE(first.display(), second.display());
    EXPECT_NE(first.home(), second.home());
    EXPECT_EQ(variable(first, QStringLiteral("DISPLAY")), first.display());
    EXPECT_EQ(variable(first, QStringLiteral("HOME")), first.home().toUtf8());
}

TEST(DesktopSession, theUsersOwnSessionDoesNotShineThrough)
{
    qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nowhere");
    qputenv("WAYLAND_DISPLAY", "wayland-9");
    const DesktopSession desktop({.windowManager = false});
    qunsetenv("DBUS_SESSION_BUS_ADDRESS");
    qunsetenv("WAYLAND_DISPLAY");
    EXPECT_EQ(variable(desktop, QStringLiteral("DBUS_SESSION_BUS_ADDRESS")), "");
    EXPECT_EQ(variable(desktop, QStringLiteral("WAYLAND_DISPLAY")), "");
}

TEST(DesktopSession, whatAProgramPrintsAndReturnsComesBack)
{
    const DesktopSession desktop({.windowManager = false});
    const auto outcome = desktop.run(
        QStringLiteral("sh"),
        {QStringLiteral("-c"), QStringLiteral("cat; echo trouble >&2; exit 3")}, "input");
    EXPECT_EQ(outcome.exitCode, 3);
    EXPECT_EQ(outcome.output, "input");
    EXPECT_EQ(outcome.errors, "trouble\n");
}

TEST(DesktopSession, whatDoesNotStartOrEndIsAFailure)
{
    DesktopSession desktop({.windowManager = false});
    EXPECT_THROW(desktop.start(QStringLiteral("no-such-program")), std::runtime_error);
    EXPECT_THROW((void)desktop.run(QStringLiteral("no-such-program")), std::runtime_error);
    EXPECT_THROW((void)desktop.run(sleepProgram, {QStringLiteral("60")}, {}, 100ms),
                 std::runtime_error);
    EXPECT_THROW(desktop.xdotool({QStringLiteral("no-such-command")}), std::runtime_error);
}

TEST(DesktopSession, aServerThatCannotStartIsAFailure)
{
    EXPECT_THROW(DesktopSession({.windowManager = false,
                                 .serverArguments = {QStringLiteral("-no-such-option")}}),
                 std::runtime_error);
}

TEST(DesktopSession, theWholeDesktopComesUp)
{
    const DesktopSession desktop({.sessionBus = true, .accessibilityBus = true});
    const auto name = desktop.run(QStringLiteral("xdotool"), {QStringLiteral("get_num_desktops")});
    EXPECT_EQ(name.exitCode, 0); // only a window manager knows
    EXPECT_TRUE(desktop.sessionBusAddress().startsWith(QStringLiteral("unix:")));
    EXPECT_EQ(variable(desktop, QStringLiteral("DBUS_SESSION_BUS_ADDRESS")),
              desktop.sessionBusAddress().toLatin1());
}

TEST(DesktopSession, aScreenshotIsAPicture)
{
    const DesktopSession desktop({.windowManager = false});
    const QString path = desktop.home() + QStringLiteral("/shot.png");
    desktop.screenshot(path);
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.read(8), QByteArray("\x89PNG\r\n\x1a\n", 8));
}

} // namespace
} // namespace zelvane::test
