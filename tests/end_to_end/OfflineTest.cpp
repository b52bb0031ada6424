// The program on a real desktop with an engine in its profile whose server is the stand-in.

#include "end_to_end/ZelvaneSession.h"
#include "support/Await.h"
#include "support/Processes.h"
#include "support/llama/EngineFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QJsonDocument>
#include <QProcess>

namespace zelvane::test {
namespace {

using ::testing::IsEmpty;
using ::testing::SizeIs;

class Offline : public ::testing::Test
{
protected:
    Offline()
    {
        engine.writeReady();
        engine.script(R"({"translations":{"hello world":"Hallo Welt"}})");
        session.zelvane({QStringLiteral("defaults"), QStringLiteral("write"),
                         QStringLiteral("zv.provider"), QStringLiteral("Fast Offline")});
    }

    qint64 pidOfServer() const
    {
        const QList<QByteArray> starts = engine.recorded("start");
        return starts.isEmpty()
                   ? 0
                   : QJsonDocument::fromJson(starts.last()).object().value(u"pid").toInteger();
    }

    ZelvaneSession session;
    EngineFolder engine{session.desktop.home() + QStringLiteral("/profile/data/org.zelvane.desk"),
                        QStringLiteral("lmt60-4b"), QStringLiteral("LMT-60-4B.Q4_K_M.gguf"),
                        2'716'068'544};
};

TEST_F(Offline, replacesTheSelectionWithAModelOnThisMachineAndEndsItsServerInOrder)
{
    session.start();
    session.openEditor("hello world");
    session.key(ZelvaneSession::toGerman);
    (void)session.waitForReport();
    EXPECT_EQ(session.editorText(), "Hallo Welt");
    EXPECT_THAT(session.askedTexts(), IsEmpty());
    const qint64 pid = pidOfServer();
    EXPECT_TRUE(isProcessRunning(pid));
    session.quit();
    EXPECT_FALSE(isProcessRunning(pid));
    EXPECT_THAT(engine.recorded("end"), SizeIs(1));
}

TEST_F(Offline, aLaunchEndsAServerThatAnEarlierRunLeft)
{
    QProcess stray;
    stray.start(engine.server(), {QStringLiteral("-m"), engine.model(), QStringLiteral("--port"),
                                  QStringLiteral("48999")});
    ASSERT_TRUE(waitUntil([this] { return pidOfServer() > 0; }));
    session.start();
    EXPECT_TRUE(waitUntil([&] { return stray.state() == QProcess::NotRunning; }));
    EXPECT_THAT(engine.recorded("start"), SizeIs(1));
}

TEST_F(Offline, aCrashOfTheProgramTakesTheServerAlong)
{
    session.start();
    session.openEditor("hello world");
    session.key(ZelvaneSession::toGerman);
    (void)session.waitForReport();
    const qint64 pid = pidOfServer();
    EXPECT_TRUE(isProcessRunning(pid));
    DesktopSession::kill(session.process());
    EXPECT_TRUE(waitUntil([pid] { return !isProcessRunning(pid); }));
}

} // namespace
} // namespace zelvane::test
