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
        session.desktop.setVariable(QStringLiteral("QT_LINUX_ACCESSIBILITY_ALWAYS_ON"),
                                    QStringLiteral("1"));
        session.start();
    }

    /// Clicks until the panel is there: a tray moves an icon while it takes it in.
    void openPanel()
    {
        ASSERT_TRUE(waitUntil(
            [&] {
                clickIcon();
                return waitUntil([&] { return session.windowIsVisible(panelTitle); }, 1s);
            },
            5s));
    }

    /// Clicks on the program's window in the tray, the only one of its windows that shows unasked,
    /// if it is there already.
    void clickIcon()
    {
        const auto xdotool = [this](const QStringList& arguments) {
            return QString::fromLatin1(
                session.desktop.run(QStringLiteral("xdotool"), arguments).output.trimmed());
        };
        const QString icon = xdotool({QStringLiteral("search"), QStringLiteral("--onlyvisible"),
                                      QStringLiteral("--class"), QStringLiteral("elvane")});
        xdotool({QStringLiteral("mousemove"), QStringLiteral("--window"), icon,
                 QStringLiteral("11"), QStringLiteral("11"), QStringLiteral("click"),
                 QStringLiteral("1")});
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
    session.waitUntilGone(panelTitle);
}

TEST_F(TrayPanelTest, opensTheTranslationWindowAndShortcutsWorkAfterwards)
{
    openPanel();
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
    openPanel();
    session.key("ctrl+q");
    EXPECT_TRUE(waitUntil([&] { return session.process().state() == QProcess::NotRunning; }, 5s));
    EXPECT_EQ(session.process().exitCode(), 0);
}

} // namespace
} // namespace zelvane::test
