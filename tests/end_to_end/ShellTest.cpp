// How the program lives in the session: what it does where keys can't be pressed, and how it ends.

#include "end_to_end/ZelvaneSession.h"
#include "support/Await.h"

#include <gtest/gtest.h>

#include <QElapsedTimer>

namespace zelvane::test {
namespace {

/// How long the program takes to end after SIGTERM, in milliseconds.
qint64 timeToEnd(ZelvaneSession& session)
{
    QElapsedTimer timer;
    timer.start();
    session.quit();
    return timer.elapsed();
}

TEST(Shell, withoutTheTestExtensionItSaysWhatIsMissingAndLivesOn)
{
    DesktopSession::Options options = ZelvaneSession::wholeDesktop();
    options.serverArguments = {QStringLiteral("-extension"), QStringLiteral("XTEST")};
    options.windowManager = false; // it could not be operated without
    ZelvaneSession session(options);
    const auto outcome = session.desktop.run(
        QStringLiteral("timeout"),
        {QStringLiteral("--preserve-status"), QStringLiteral("2"), QStringLiteral(ZELVANE_PROGRAM),
         QStringLiteral("--profile"), session.desktop.home() + QStringLiteral("/profile")});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_TRUE(outcome.errors.contains("zelvane-desk: The X server lacks the extension XTEST"));
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
    EXPECT_EQ(session.editorText(), "hello world");
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
    ASSERT_TRUE(waitUntil([&] { return session.process().state() == QProcess::NotRunning; }));

    session.answerWith("Hallo Welt");
    session.start();
    session.selectAll();
    session.key(ZelvaneSession::toGerman);
    session.waitForReport();
    EXPECT_EQ(session.editorText(), "Hallo Welt");
}

} // namespace
} // namespace zelvane::test
