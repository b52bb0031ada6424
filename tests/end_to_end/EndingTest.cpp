// The end of the program, whatever is open or on its way.

#include "end_to_end/ZelvaneSession.h"
#include "support/Await.h"

#include <gtest/gtest.h>

namespace zelvane::test {
namespace {

const QString settingsTitle = QStringLiteral("^Settings$");
const QString windowTitle = QStringLiteral("^Translation Window$");
const QString alertTitle = QStringLiteral("^Translation failed$");

class Ending : public ::testing::Test
{
protected:
    Ending()
    {
        // Memory that is freed changes, so that whoever still uses it gets lost.
        session.desktop.setVariable(QStringLiteral("MALLOC_PERTURB_"), QStringLiteral("165"));
    }

    void show(const char* window, const QString& title)
    {
        session.zelvane({QStringLiteral("show"), QString::fromLatin1(window)});
        session.waitForWindow(title);
    }

    /// Requests get no answer from now on.
    void keepSilent()
    {
        session.provider.setHandler([this](const RecordedRequest&) {
            ++requests;
            return Answer().hold();
        });
    }

    ZelvaneSession session;
    int requests = 0;
};

TEST_F(Ending, comesWithEveryWindowOpen)
{
    session.start();
    show("settings", settingsTitle);
    show("translation", windowTitle);
    session.quit();
}

TEST_F(Ending, comesWithTheIntroductionOpen)
{
    session.setDefault(QStringLiteral("zv.hasSeenOnboarding"), false);
    session.start();
    session.waitForWindow(QStringLiteral("^AI translation without limits$"));
    session.quit();
}

TEST_F(Ending, comesWhileTheModelsAreBeingListed)
{
    keepSilent();
    session.start();
    show("settings", settingsTitle);
    ASSERT_TRUE(waitUntil([this] { return requests > 0; }));
    session.quit();
}

TEST_F(Ending, comesWhileASelectionIsBeingTranslated)
{
    keepSilent();
    session.openEditor("hello");
    session.start();
    session.key(ZelvaneSession::toGerman);
    ASSERT_TRUE(waitUntil([this] { return requests > 0; }));
    session.quit();
}

TEST_F(Ending, comesWhileTheTranslationWindowTranslates)
{
    keepSilent();
    session.start();
    show("translation", windowTitle);
    session.desktop.focusWindow(session.waitForWindow(windowTitle));
    session.desktop.xdotool({QStringLiteral("type"), QStringLiteral("hello")});
    session.key("ctrl+Return");
    ASSERT_TRUE(waitUntil([this] { return requests > 0; }));
    session.quit();
}

TEST_F(Ending, comesWithAFailureOnTheScreen)
{
    session.provider.setHandler([](const RecordedRequest&) { return Answer::json(500, "{}"); });
    session.openEditor("hello");
    session.start();
    session.key(ZelvaneSession::toGerman);
    session.waitForWindow(alertTitle);
    session.quit();
}

TEST_F(Ending, comesWithAResultOnTheScreen)
{
    session.openReader(QStringLiteral("hello"));
    session.start();
    session.selectAll();
    session.key(ZelvaneSession::toGerman);
    session.waitForWindow(QStringLiteral("^Translation$"));
    session.quit();
}

} // namespace
} // namespace zelvane::test
