// The panel of the program itself, at its icon in a real tray.

#include "end_to_end/Tray.h"
#include "support/Await.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace zelvane::test {
namespace {

using namespace std::chrono_literals;
using ::testing::Contains;
using ::testing::ElementsAre;

class TrayPanelTest : public ::testing::Test
{
protected:
    TrayPanelTest() { session.start(); }

    void openPanel() { tray.openPanel(); }

    ZelvaneSession session;
    Tray tray{session};
};

TEST_F(TrayPanelTest, showsPairsAndCommandsAndClosesOnAClickElsewhere)
{
    openPanel();
    const QStringList found = session.elements();
    EXPECT_THAT(found, Contains(QStringLiteral("dialog\tZelvane Desk")));
    EXPECT_THAT(found, Contains(QStringLiteral("label\t⌥‑menu: active")));
    EXPECT_THAT(found, Contains(QStringLiteral("label\tAny Language → German")));
    EXPECT_THAT(found, Contains(QStringLiteral("label\t⌃⌥G")));
    EXPECT_THAT(found, Contains(QStringLiteral("push button\tTranslation Window *")));
    EXPECT_THAT(found, Contains(QStringLiteral("push button\tSettings")));
    EXPECT_THAT(found, Contains(QStringLiteral("push button\tQuit")));
    session.desktop.xdotool({QStringLiteral("mousemove"), QStringLiteral("100"),
                             QStringLiteral("100"), QStringLiteral("click"), QStringLiteral("1")});
    session.waitUntilGone(Tray::panelTitle);
}

TEST_F(TrayPanelTest, opensTheTranslationWindowAndShortcutsWorkAfterwards)
{
    openPanel();
    session.key("Return");
    session.waitUntilGone(Tray::panelTitle);
    session.waitForWindow(QStringLiteral("^Translation Window$"));
    session.key("Escape");
    session.waitUntilGone(QStringLiteral("^Translation Window$"));
    session.openEditor("hello world");
    session.key(ZelvaneSession::toGerman);
    session.waitForReport();
    EXPECT_EQ(session.editorText(), "Hallo Welt");
}

TEST_F(TrayPanelTest, aTextIsTranslatedCopiedAndPinnedAndTheKeyboardGoesBack)
{
    const QString editor = session.openEditor("hello world");
    openPanel();
    session.press(QStringLiteral("Translation Window"));
    const QString window = session.waitForKeyboard(QStringLiteral("^Translation Window$"));
    session.desktop.xdotool({QStringLiteral("type"), QStringLiteral("good morning")});
    session.press(QStringLiteral("Translate"));
    session.press(QStringLiteral("Copy"));
    EXPECT_TRUE(session.clipboardBecomes("Hallo Welt"));
    EXPECT_THAT(session.askedTexts(), ElementsAre(QStringLiteral("good morning")));
    session.press(QStringLiteral("Keep window on top"));
    EXPECT_TRUE(waitUntil([&] { return session.isAbove(window); }));
    session.press(QStringLiteral("Close"));
    session.waitUntilGone(QStringLiteral("^Translation Window$"));
    EXPECT_TRUE(session.becomesActive(editor));
}

TEST_F(TrayPanelTest, escGivesTheKeyboardBack)
{
    session.openEditor("hello world");
    openPanel();
    session.key("Escape");
    session.waitUntilGone(Tray::panelTitle);
    session.key("x");
    EXPECT_EQ(session.editorText(), "x");
}

TEST_F(TrayPanelTest, quitsTheProgram)
{
    openPanel();
    session.key("ctrl+q");
    EXPECT_TRUE(waitUntil([&] { return session.process().state() == QProcess::NotRunning; }, 5s));
    EXPECT_EQ(session.process().exitCode(), 0);
}

} // namespace
} // namespace zelvane::test
