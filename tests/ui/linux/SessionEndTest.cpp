// How the program hears of the end of its session, from a bus that the test ends.

#include "ui/linux/SessionEnd.h"

#include "support/Await.h"
#include "support/DesktopSession.h"

#include <gtest/gtest.h>

#include <QDBusMessage>
#include <QGuiApplication>

namespace zelvane::test {
namespace {

using namespace std::chrono_literals;

class EndOfSession : public ::testing::Test
{
protected:
    EndOfSession()
        : bus(QDBusConnection::connectToBus(session.sessionBusAddress(), QStringLiteral("program")))
        , system(
              QDBusConnection::connectToBus(session.sessionBusAddress(), QStringLiteral("system")))
    {
    }
    ~EndOfSession() override
    {
        for (const char* name : {"program", "system", "login"}) {
            QDBusConnection::disconnectFromBus(QString::fromLatin1(name));
        }
    }

    /// What the login service announces.
    void announce(bool begins)
    {
        QDBusConnection login =
            QDBusConnection::connectToBus(session.sessionBusAddress(), QStringLiteral("login"));
        login.registerService(QStringLiteral("org.freedesktop.login1"));
        QDBusMessage message = QDBusMessage::createSignal(
            QStringLiteral("/org/freedesktop/login1"),
            QStringLiteral("org.freedesktop.login1.Manager"), QStringLiteral("PrepareForShutdown"));
        message << begins;
        ASSERT_TRUE(login.send(message));
    }

    DesktopSession session{{.windowManager = false, .sessionBus = true}};
    QDBusConnection bus;
    QDBusConnection system;
    int ends = 0;
    SessionEnd end{bus, system, [this] { ++ends; }};
};

TEST_F(EndOfSession, isHeardOfWhenTheMachineGoesDown)
{
    announce(false);
    waitUntil([] { return false; }, 200ms);
    EXPECT_EQ(ends, 0);
    announce(true);
    EXPECT_TRUE(waitUntil([&] { return ends == 1; }));
}

TEST_F(EndOfSession, isHeardOfWhenItsBusGoes)
{
    EXPECT_EQ(ends, 0);
    session.killBus();
    EXPECT_TRUE(waitUntil([&] { return ends >= 1; }));
}

TEST_F(EndOfSession, isHeardOfWhenTheSessionManagerAsksTheProgramToQuit)
{
    QEvent quit(QEvent::Quit);
    EXPECT_TRUE(QCoreApplication::sendEvent(qApp, &quit));
    EXPECT_EQ(ends, 1);
}

TEST_F(EndOfSession, needsNoBus)
{
    const SessionEnd deaf(QDBusConnection(QStringLiteral("none")),
                          QDBusConnection(QStringLiteral("none")), [] { FAIL(); });
    waitUntil([] { return false; }, 50ms);
}

} // namespace
} // namespace zelvane::test
