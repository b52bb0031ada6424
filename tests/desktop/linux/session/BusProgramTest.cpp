#include "desktop/linux/session/BusProgram.h"

#include "desktop/linux/session/BusNames.h"
#include "desktop/linux/session/InstanceLock.h"
#include "desktop/linux/session/PrivateBus.h"
#include "support/Await.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QFile>
#include <QTemporaryDir>

namespace zelvane::test {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

/// A program on the bus that answers as the test says.
class ScriptedProgram final : public QDBusVirtualObject
{
public:
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override
    {
        calls << message.interface() + u'.' + message.member();
        arguments = message.arguments();
        if (answers) {
            connection.send(errorName.isEmpty() ? message.createReply(answer)
                                                : message.createErrorReply(errorName, errorText));
        }
        return true;
    }
    QString introspect(const QString&) const override { return {}; }

    QStringList calls;
    QVariantList arguments;
    QVariantList answer;
    QString errorName;
    QString errorText;
    bool answers = true;
};

class BusProgramTest : public ::testing::Test
{
protected:
    BusProgramTest()
    {
        EXPECT_TRUE(server.registerVirtualObject(busObjectPath(), &object));
        EXPECT_TRUE(server.registerService(instanceName({})));
    }

    template <typename T>
    QString failureOf(QCoro::Task<T> task)
    {
        try {
            (void)await(std::move(task));
        } catch (const RunningProgramError& error) {
            return error.description();
        }
        return QStringLiteral("no failure");
    }

    PrivateBus bus;
    QDBusConnection server = bus.connect();
    ScriptedProgram object;
    BusProgram program{bus.connect(), instanceName({}), {2s, 300ms}};
};

TEST_F(BusProgramTest, asksForATranslation)
{
    object.answer = {QStringLiteral("Hallo")};
    EXPECT_EQ(
        await(program.translate(QStringLiteral("translatePair3UI"), QStringLiteral("hello"), {})),
        QStringLiteral("Hallo"));
    EXPECT_THAT(object.calls,
                ElementsAre(QStringLiteral("org.zelvane.desk.Services.TranslatePair3UI")));
    EXPECT_THAT(object.arguments, ElementsAre(QVariant(QStringLiteral("hello"))));
}

TEST_F(BusProgramTest, asksForTheControls)
{
    await(program.triggerPair(QStringLiteral("2"), {}));
    EXPECT_THAT(object.arguments, ElementsAre(QVariant(QStringLiteral("2"))));
    await(program.showTranslationWindow({}));
    await(program.showSettings({}));
    EXPECT_THAT(object.calls,
                ElementsAre(QStringLiteral("org.zelvane.desk.Control.TriggerPair"),
                            QStringLiteral("org.zelvane.desk.Control.ShowTranslationWindow"),
                            QStringLiteral("org.zelvane.desk.Control.ShowSettings")));
}

TEST_F(BusProgramTest, readsTheStatus)
{
    object.answer = {QVariantMap{{QStringLiteral("Status"), QStringLiteral("Ready")},
                                 {QStringLiteral("Busy"), true},
                                 {QStringLiteral("LastError"), QStringLiteral("oh")},
                                 {QStringLiteral("Version"), QStringLiteral("1")},
                                 {QStringLiteral("Pairs"), QStringList{QStringLiteral("A → B")}},
                                 {QStringLiteral("PairIDs"), QStringList{QStringLiteral("x")}}}};
    const RunningProgram::Status status = await(program.status({}));
    EXPECT_EQ(status.status, QStringLiteral("Ready"));
    EXPECT_TRUE(status.isBusy);
    EXPECT_EQ(status.lastError, QStringLiteral("oh"));
    EXPECT_EQ(status.version, QStringLiteral("1"));
    EXPECT_THAT(status.pairs, ElementsAre(QStringLiteral("A → B")));
    EXPECT_THAT(status.pairIDs, ElementsAre(QStringLiteral("x")));
}

TEST_F(BusProgramTest, passesTheProgramsOwnSentencesOn)
{
    object.errorName = busError::failed();
    object.errorText = QStringLiteral("No text selected.");
    EXPECT_EQ(failureOf(program.translate(QStringLiteral("translatePair1"), QString(), {})),
              QStringLiteral("No text selected."));
}

TEST_F(BusProgramTest, saysThatTheProgramDoesNotAnswer)
{
    object.answers = false;
    EXPECT_EQ(failureOf(program.showSettings({})), QStringLiteral("Zelvane Desk does not answer"));
}

TEST_F(BusProgramTest, saysThatTheProgramDoesNotRun)
{
    ASSERT_TRUE(server.unregisterService(instanceName({})));
    EXPECT_THAT(failureOf(program.showSettings({})).toStdString(),
                HasSubstr("Zelvane Desk isn't running"));
    EXPECT_THAT(failureOf(program.status({})).toStdString(),
                HasSubstr("Zelvane Desk isn't running"));
}

TEST_F(BusProgramTest, saysThatSomethingElseHasTheName)
{
    object.errorName = QStringLiteral("org.freedesktop.DBus.Error.UnknownMethod");
    object.errorText = QStringLiteral("No such method");
    EXPECT_EQ(failureOf(program.showSettings({})),
              QStringLiteral("Zelvane Desk did not understand: No such method"));
}

TEST_F(BusProgramTest, saysThatTheBusHasGone)
{
    object.answers = false;
    auto waiting = program.translate(QStringLiteral("translatePair1"), QStringLiteral("a"), {});
    ASSERT_TRUE(waitUntil([&] { return !object.calls.isEmpty(); }));
    bus.kill();
    const QString failure = failureOf(std::move(waiting));
    EXPECT_TRUE(failure == QStringLiteral("the session bus has gone") ||
                failure == QStringLiteral("Zelvane Desk does not answer"))
        << failure.toStdString();
    EXPECT_THAT(failureOf(program.showSettings({})).toStdString(), HasSubstr("bus"));
}

TEST_F(BusProgramTest, aStopEndsTheWait)
{
    object.answers = false;
    std::stop_source stop;
    auto waiting =
        program.translate(QStringLiteral("translatePair1"), QStringLiteral("a"), stop.get_token());
    ASSERT_TRUE(waitUntil([&] { return !object.calls.isEmpty(); }));
    stop.request_stop();
    EXPECT_THROW(await(std::move(waiting)), CancellationError);
}

TEST_F(BusProgramTest, startsTheProgramWhereItIsInstalled)
{
    ASSERT_TRUE(server.unregisterService(instanceName({})));
    bus.makeActivatable(instanceName({}), QStringLiteral("/bin/false"));
    BusProgram patient(bus.connect(), instanceName({}), {5s, 5s});
    EXPECT_THAT(failureOf(patient.showSettings({})).toStdString(),
                HasSubstr("Zelvane Desk could not be started: "));
    EXPECT_THAT(failureOf(patient.status({})).toStdString(),
                HasSubstr("Zelvane Desk isn't running"));
}

TEST(BusProgramWithoutBus, saysSo)
{
    BusProgram program(noBus(), instanceName({}));
    try {
        await(program.showSettings({}));
        FAIL();
    } catch (const RunningProgramError& error) {
        EXPECT_THAT(error.description().toStdString(), HasSubstr("there is no session bus"));
    }
}

TEST(SessionBusAtHand, isAnAddressOrASocketOrAProgramThatHasFoundOne)
{
    QTemporaryDir runtime;
    const QByteArray runtimeBefore = qgetenv("XDG_RUNTIME_DIR");
    const QByteArray addressBefore = qgetenv("DBUS_SESSION_BUS_ADDRESS");
    qputenv("XDG_RUNTIME_DIR", runtime.path().toUtf8());
    qputenv("DBUS_SESSION_BUS_ADDRESS", "");
    const QString name = instanceName({});
    EXPECT_FALSE(sessionBusIsAtHand(name));
    {
        InstanceLock running(runtime.path(), name);
        ASSERT_TRUE(running.claim());
        EXPECT_TRUE(sessionBusIsAtHand(name));
    }
    EXPECT_FALSE(sessionBusIsAtHand(name));
    qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nowhere");
    EXPECT_TRUE(sessionBusIsAtHand(name));
    qputenv("DBUS_SESSION_BUS_ADDRESS", "");
    QFile socket(runtime.filePath(QStringLiteral("bus")));
    ASSERT_TRUE(socket.open(QIODevice::WriteOnly));
    EXPECT_TRUE(sessionBusIsAtHand(name));
    qputenv("XDG_RUNTIME_DIR", runtimeBefore);
    qputenv("DBUS_SESSION_BUS_ADDRESS", addressBefore);
}

} // namespace
} // namespace zelvane::test
