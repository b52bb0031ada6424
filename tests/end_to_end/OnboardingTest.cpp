// The first launch, by keyboard, under a window manager.

#include "end_to_end/GreedyProgram.h"
#include "end_to_end/ZelvaneSession.h"
#include "support/Await.h"
#include "support/TestRunner.h"

#include <gtest/gtest.h>

namespace zelvane::test {
namespace {

const QString firstSlide = QStringLiteral("^AI translation without limits$");
const QString thirdSlide = QStringLiteral("^Replace selection in one keystroke$");
const QString fourthSlide = QStringLiteral("^See the translation before you commit$");
const QString lastSlide = QStringLiteral("^Unlock the full power$");
const QString settingsTitle = QStringLiteral("^Settings$");

class FirstLaunch : public ::testing::Test
{
protected:
    FirstLaunch() { session.setDefault(QStringLiteral("zv.hasSeenOnboarding"), false); }

    void press(const char* chord, int times = 1)
    {
        for (int i = 0; i < times; ++i) {
            session.key(chord);
        }
    }

    [[nodiscard]] QByteArray hasSeenOnboarding()
    {
        return session
            .zelvane({QStringLiteral("defaults"), QStringLiteral("read"),
                      QStringLiteral("zv.hasSeenOnboarding")})
            .trimmed();
    }

    ZelvaneSession session;
};

TEST_F(FirstLaunch, beginsWithTheFirstSlideEachTimeUntilTheUserHasSeenAll)
{
    session.start();
    session.desktop.focusWindow(session.waitForWindow(firstSlide));
    press("Right", 3);
    session.waitForWindow(fourthSlide);
    session.quit();
    EXPECT_EQ(hasSeenOnboarding(), QByteArray("false"));

    session.start();
    session.desktop.focusWindow(session.waitForWindow(firstSlide));
    press("Right", 2);
    session.waitForWindow(thirdSlide);
    press("Escape");
    press("Left");
    press("Right");
    session.waitForWindow(thirdSlide);

    press("Return", 4);
    session.waitForWindow(lastSlide);
    press("Escape");
    session.waitUntilGone(lastSlide);
    EXPECT_TRUE(waitUntil([this] { return hasSeenOnboarding() == "true"; }));

    session.quit();
    session.start();
    EXPECT_FALSE(waitUntil([this] { return session.windowIsVisible(firstSlide); },
                           std::chrono::milliseconds(700)));
}

TEST_F(FirstLaunch, aShortcutIsAnsweredInFrontOfItAndItGoesOn)
{
    session.start();
    session.waitForKeyboard(firstSlide);
    press(ZelvaneSession::toGerman);
    const QString alert = session.waitForKeyboard(QStringLiteral("^Translation failed$"));
    // The introduction has insisted on the front for the last time.
    EXPECT_FALSE(waitUntil(
        [&] {
            return session.desktop.xdotool({QStringLiteral("getactivewindow")}) != alert.toLatin1();
        },
        std::chrono::milliseconds(2100)));
    press("Escape");
    session.waitUntilGone(QStringLiteral("^Translation failed$"));
    session.waitForKeyboard(firstSlide);
    press("Right");
    session.waitForKeyboard(QStringLiteral("^Translate anywhere — even offline$"));
}

TEST_F(FirstLaunch, withoutATrayTheSettingsWaitUntilItIsOver)
{
    allowThisTest(std::chrono::seconds(20));
    session.start();
    session.waitForKeyboard(firstSlide);
    EXPECT_TRUE(waitUntil([this] {
        return session.zelvane({QStringLiteral("defaults"), QStringLiteral("list")})
            .contains("zv.toldOfMissingTray");
    }));
    EXPECT_FALSE(waitUntil([this] { return session.windowIsVisible(settingsTitle); },
                           std::chrono::milliseconds(700)));
    press("Right", 6);
    session.waitForKeyboard(lastSlide);
    press("Return");
    session.waitForWindow(settingsTitle);
}

TEST_F(FirstLaunch, showsNothingWhenTheSessionStartsTheProgram)
{
    session.start({QStringLiteral("--quiet")});
    EXPECT_FALSE(waitUntil([this] { return session.windowIsVisible(firstSlide); },
                           std::chrono::milliseconds(700)));
}

TEST_F(FirstLaunch, endsAtTheSettingsWhereThePermissionIsMissing)
{
    const QString script = session.desktop.writeFile(QStringLiteral("greedy.py"), greedyProgram);
    QProcess& greedy = session.desktop.start(QStringLiteral("/usr/bin/python3"), {script});
    ASSERT_TRUE(waitUntil([&] { return greedy.canReadLine(); }));
    session.start();
    session.desktop.focusWindow(session.waitForWindow(firstSlide));
    EXPECT_FALSE(session.windowIsVisible(settingsTitle));
    press("Right", 6);
    session.waitForWindow(lastSlide);
    press("Return");
    session.waitUntilGone(lastSlide);
    session.waitForWindow(settingsTitle);
    session.quit();
}

} // namespace
} // namespace zelvane::test
