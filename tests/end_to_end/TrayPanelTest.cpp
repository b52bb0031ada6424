// The panel of the program itself, at its icon in a real tray.

#include "end_to_end/Tray.h"
#include "support/Await.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace zelvane::test {
namespace {

using namespace std::chrono_literals;
using ::testing::HasSubstr;

class TrayPanelTest : public ::testing::Test
{
protected:
    TrayPanelTest() { session.start(); }

    void openPanel() { tray.openPanel(); }

    /// What a screen reader finds in the program's windows.
    [[nodiscard]] std::string walk()
    {
        return session.desktop
            .run(QStringLiteral(ZELVANE_WALK_ACCESSIBLE), {QStringLiteral("elvane")})
            .output.toStdString();
    }

    ZelvaneSession session;
    Tray tray{session};
};

TEST_F(TrayPanelTest, showsPairsAndCommandsAndClosesOnAClickElsewhere)
{
    openPanel();
    const std::string found = walk();
    EXPECT_THAT(found, HasSubstr("dialog\tZelvane Desk\n"));
    EXPECT_THAT(found, HasSubstr("label\t⌥‑menu: active\n"));
    EXPECT_THAT(found, HasSubstr("label\tAny Language → German\n"));
    EXPECT_THAT(found, HasSubstr("label\t⌃⌥G\n"));
    EXPECT_THAT(found, HasSubstr("push button\tTranslation Window *\n"));
    EXPECT_THAT(found, HasSubstr("push button\tSettings\n"));
    EXPECT_THAT(found, HasSubstr("push button\tQuit\n"));
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

TEST_F(TrayPanelTest, quitsTheProgram)
{
    openPanel();
    session.key("ctrl+q");
    EXPECT_TRUE(waitUntil([&] { return session.process().state() == QProcess::NotRunning; }, 5s));
    EXPECT_EQ(session.process().exitCode(), 0);
}

} // namespace
} // namespace zelvane::test
