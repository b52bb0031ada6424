// The panel of the program itself, at its icon in a real tray.

#include "end_to_end/ZelvaneSession.h"
#include "support/Await.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace zelvane::test {
namespace {

using namespace std::chrono_literals;
using ::testing::HasSubstr;

const QString panelTitle = QStringLiteral("^Zelvane Desk$");

class TrayPanelTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        const QString tray = session.desktop.writeFile(
            QStringLiteral("tint2rc"),
            "panel_items = S\npanel_position = bottom right horizontal\npanel_size = 200 32\n"
            "systray_icon_size = 22\n");
        session.desktop.start(QStringLiteral("tint2"), {QStringLiteral("-c"), tray});
        session.start();
    }

    void clickIcon()
    {
        const QString icon = findIcon();
        ASSERT_FALSE(icon.isEmpty());
        session.desktop.xdotool({QStringLiteral("mousemove"), QStringLiteral("--window"), icon,
                                 QStringLiteral("11"), QStringLiteral("11"),
                                 QStringLiteral("click"), QStringLiteral("1")});
    }

    /// The program's window in the tray: the only one of its windows that shows unasked.
    [[nodiscard]] QString findIcon()
    {
        QString icon;
        waitUntil(
            [&] {
                icon = QString::fromLatin1(
                    session.desktop
                        .run(QStringLiteral("xdotool"),
                             {QStringLiteral("search"), QStringLiteral("--onlyvisible"),
                              QStringLiteral("--class"), QStringLiteral("elvane")})
                        .output.trimmed());
                return !icon.isEmpty();
            },
            5s);
        return icon;
    }

    /// What a screen reader finds in the program's windows.
    [[nodiscard]] std::string walk()
    {
        return session.desktop
            .run(QStringLiteral(ZELVANE_WALK_ACCESSIBLE), {QStringLiteral("elvane")})
            .output.toStdString();
    }

    ZelvaneSession session;
};

TEST_F(TrayPanelTest, showsPairsAndCommandsAndClosesOnAClickElsewhere)
{
    clickIcon();
    session.waitForWindow(panelTitle);
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
    session.waitUntilGone(panelTitle);
}

TEST_F(TrayPanelTest, opensTheTranslationWindowAndShortcutsWorkAfterwards)
{
    clickIcon();
    session.waitForWindow(panelTitle);
    session.key("Return");
    session.waitUntilGone(panelTitle);
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
    clickIcon();
    session.waitForWindow(panelTitle);
    session.key("ctrl+q");
    EXPECT_TRUE(waitUntil([&] { return session.process().state() == QProcess::NotRunning; }, 5s));
    EXPECT_EQ(session.process().exitCode(), 0);
}

} // namespace
} // namespace zelvane::test
