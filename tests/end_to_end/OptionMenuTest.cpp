// Alt + right click with the program's own binary, over foreign windows.

#include "desktop/linux/ForeignWindow.h"
#include "end_to_end/ZelvaneSession.h"
#include "support/Await.h"
#include "support/QtPrinters.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QRect>

namespace zelvane::test {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

const QString menuTitle = QStringLiteral("^Zelvane Desk$");
const QString popupTitle = QStringLiteral("^Translation$");

class OptionMenu : public ::testing::Test
{
protected:
    void altClick(QPoint at)
    {
        mouse({"mousemove", QByteArray::number(at.x()), QByteArray::number(at.y()), "keydown",
               "alt", "click", "3", "keyup", "alt"});
    }
    void mouse(const QByteArrayList& words)
    {
        QStringList arguments;
        for (const QByteArray& word : words) {
            arguments << QString::fromLatin1(word);
        }
        session.desktop.xdotool(arguments);
    }
    void openMenu(QPoint at)
    {
        altClick(at);
        session.waitForWindow(menuTitle);
    }
    QRect menuFrame()
    {
        const QString menu = session.waitForWindow(menuTitle);
        const QByteArray shell = session.desktop.xdotool(
            {QStringLiteral("getwindowgeometry"), QStringLiteral("--shell"), menu});
        const auto number = [&](const char* name) {
            const qsizetype at = shell.indexOf(name) + qsizetype(strlen(name));
            return shell.mid(at, shell.indexOf('\n', at) - at).toInt();
        };
        return {number("X="), number("Y="), number("WIDTH="), number("HEIGHT=")};
    }

    ZelvaneSession session;
};

TEST_F(OptionMenu, aChoiceByKeyReplacesTheSelectionOfTheEditor)
{
    session.setClipboard("the user's own");
    session.start();
    session.openEditor("hello world");
    openMenu({300, 200});
    session.key("Down");
    session.key("Return");
    const QByteArray report = session.waitForReport();
    EXPECT_THAT(report.toStdString(), HasSubstr("mode: auto\n"));
    EXPECT_FALSE(session.windowIsVisible(menuTitle));
    EXPECT_THAT(session.askedTexts(), ElementsAre(QStringLiteral("hello world")));
    EXPECT_EQ(session.editorText(), "Hallo Welt");
    EXPECT_EQ(session.clipboard(), "the user's own");
}

TEST_F(OptionMenu, aChoiceByMouseReplacesTheSelectionOfTheEditor)
{
    session.start();
    session.openEditor("hello world");
    openMenu({300, 200});
    const QRect menu = menuFrame();
    EXPECT_EQ(menu.topLeft(), QPoint(300, 200));
    const QByteArray x = QByteArray::number(menu.center().x());
    mouse({"mousemove", x, QByteArray::number(menu.top() + 15), "click", "1"});
    session.waitForReport();
    EXPECT_EQ(session.editorText(), "Hallo Welt");
}

TEST_F(OptionMenu, pressDragAndReleaseChoosesInOneGo)
{
    session.start();
    session.openEditor("hello world");
    mouse({"mousemove", "300", "200", "keydown", "alt", "mousedown", "3"});
    const QRect menu = menuFrame();
    // As slow as a hand: the menu takes the pointer a moment after it shows.
    QByteArrayList drag;
    for (int step = 0; step < 8; ++step) {
        drag << "mousemove" << QByteArray::number(menu.center().x() + step)
             << QByteArray::number(menu.top() + 10 + step);
        drag += {"sleep", "0.06"};
    }
    mouse(drag + QByteArrayList{"mouseup", "3", "keyup", "alt"});
    session.waitForReport();
    EXPECT_EQ(session.editorText(), "Hallo Welt");
}

TEST_F(OptionMenu, theSecondGroupTranslatesIntoThePopup)
{
    session.start();
    session.openEditor("hello world");
    openMenu({300, 200});
    session.key("Up");
    session.key("Up");
    session.key("Return");
    EXPECT_THAT(session.waitForReport().toStdString(), HasSubstr("mode: windowOnly"));
    session.waitForWindow(popupTitle);
    session.key("Escape");
    session.waitUntilGone(popupTitle);
    session.desktop.focusWindow(session.desktop.waitForWindow(QStringLiteral("letter.txt")));
    EXPECT_EQ(session.unchangedEditorText(), "hello world");
}

TEST_F(OptionMenu, theWindowBelowSeesNothingOfIt)
{
    session.start();
    const ForeignWindow below(session.desktop.display(), "Below");
    const QString id = session.desktop.waitForWindow(QStringLiteral("^Below$"));
    session.desktop.xdotool(
        {QStringLiteral("windowsize"), id, QStringLiteral("900"), QStringLiteral("700")});
    session.desktop.xdotool(
        {QStringLiteral("windowmove"), id, QStringLiteral("20"), QStringLiteral("20")});
    session.desktop.focusWindow(id);
    (void)below.clicks();

    // A quick click, and slow ones that end while the menu is opening or long open.
    for (const char* pause : {"0", "0.002", "0.005", "0.01", "0.02", "0.04", "0.4"}) {
        mouse({"mousemove", "400", "400", "keydown", "alt", "mousedown", "3", "sleep", pause,
               "mouseup", "3", "keyup", "alt"});
        session.waitForWindow(menuTitle);
        session.key("Escape");
        session.waitUntilGone(menuTitle);
        EXPECT_THAT(below.clicks(), IsEmpty()) << pause;
        EXPECT_EQ(session.desktop.xdotool({QStringLiteral("getactivewindow")}), id.toLatin1());
    }

    // The program has no part in any other click.
    mouse({"click", "3", "keydown", "ctrl", "keydown", "alt", "click", "3", "keyup", "alt", "keyup",
           "ctrl"});
    EXPECT_THAT(below.clicks(), ElementsAre(QStringLiteral("+3:0"), QStringLiteral("-3:0"),
                                            QStringLiteral("+3:12"), QStringLiteral("-3:12")));
    EXPECT_FALSE(session.windowIsVisible(menuTitle));
}

TEST_F(OptionMenu, keysWhileItIsOpenDoNotReachTheWindowBelow)
{
    session.start();
    const ForeignWindow below(session.desktop.display(), "Below");
    session.desktop.focusWindow(session.desktop.waitForWindow(QStringLiteral("^Below$")));
    openMenu({700, 500});
    (void)below.keys();
    for (const char* key : {"Down", "x", "Escape"}) {
        session.key(key);
    }
    session.waitUntilGone(menuTitle);
    for (const QString& event : below.keys()) {
        EXPECT_FALSE(event.startsWith(u'+')) << event.toStdString();
    }
    session.key("x");
    EXPECT_THAT(below.keys(), ElementsAre(QStringLiteral("+53:0"), QStringLiteral("-53:0")));
}

TEST_F(OptionMenu, aClickElsewhereClosesIt)
{
    session.start();
    openMenu({300, 200});
    mouse({"mousemove", "900", "700", "click", "1"});
    session.waitUntilGone(menuTitle);
    openMenu({500, 300});
    EXPECT_EQ(menuFrame().topLeft(), QPoint(500, 300));
}

TEST_F(OptionMenu, staysOnTheScreen)
{
    session.start();
    openMenu({1275, 795});
    const QRect menu = menuFrame();
    EXPECT_TRUE(QRect(0, 0, 1280, 800).contains(menu))
        << menu.x() << " " << menu.y() << " " << menu.width() << " " << menu.height();
}

TEST_F(OptionMenu, doesNotOpenWhileItIsOff)
{
    session.setDefault(QStringLiteral("zv.optionRightClickMenu"), false);
    session.start();
    altClick({300, 200});
    EXPECT_FALSE(waitUntil([&] { return session.windowIsVisible(menuTitle); }, 400ms));
}

} // namespace
} // namespace zelvane::test
