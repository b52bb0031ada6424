// The windows on a desk with two monitors, one of which comes and goes.

#include "end_to_end/Tray.h"
#include "support/Await.h"
#include "support/QtPrinters.h"

#include <gtest/gtest.h>

namespace zelvane::test {
namespace {

using namespace std::chrono_literals;

const QRect left(0, 0, 1280, 800);
const QRect right(1280, 0, 1280, 800);

const QString translationWindow = QStringLiteral("^Translation Window$");
const QString popup = QStringLiteral("^Translation$");

DesktopSession::Options twoMonitors()
{
    DesktopSession::Options options = ZelvaneSession::wholeDesktop();
    options.monitors = {left, right};
    return options;
}

class TwoMonitors : public ::testing::Test
{
protected:
    TwoMonitors()
        : session(twoMonitors())
    {
    }

    /// The translation window in the size of its own, 640 by 560, when it shows.
    QString open()
    {
        session.zelvane({QStringLiteral("show"), QStringLiteral("translation")});
        return session.waitForWindow(translationWindow);
    }

    QString openPopup()
    {
        if (m_reader.isEmpty()) {
            m_reader = session.openReader(QStringLiteral("hello world"));
        }
        session.desktop.focusWindow(m_reader);
        session.selectAll();
        session.key(ZelvaneSession::toGerman);
        session.waitForReport(++m_runs);
        return session.waitForWindow(popup);
    }

    void close(const QString& title)
    {
        session.key("Escape");
        session.waitUntilGone(title);
    }

    /// Where the window is once it is there, or else in the end.
    [[nodiscard]] QPoint placeWhenAt(const QString& window, QPoint expected)
    {
        waitUntil([&] { return session.placeOf(window) == expected; }, 3s);
        return session.placeOf(window);
    }

    void move(const QString& window, QPoint place)
    {
        session.desktop.xdotool({QStringLiteral("windowmove"), QStringLiteral("--sync"), window,
                                 QString::number(place.x()), QString::number(place.y())});
    }

    void movePointer(QPoint place)
    {
        session.desktop.xdotool(
            {QStringLiteral("mousemove"), QString::number(place.x()), QString::number(place.y())});
    }

    ZelvaneSession session;

private:
    int m_runs = 0;
    QString m_reader;
};

TEST_F(TwoMonitors, theTranslationWindowOpensWhereItWasLeft)
{
    session.start();
    const QPoint onTheRight(1500, 100);
    move(open(), onTheRight);
    close(translationWindow);
    EXPECT_EQ(placeWhenAt(open(), onTheRight), onTheRight);
    session.quit();
    session.start();
    EXPECT_EQ(placeWhenAt(open(), onTheRight), onTheRight);
}

TEST_F(TwoMonitors, theTranslationWindowComesToTheOtherMonitorWhenItsOwnWentBetweenTwoRuns)
{
    session.start();
    move(open(), {1500, 100});
    close(translationWindow);
    session.quit();
    session.desktop.unplugMonitor(1);
    session.start();
    EXPECT_EQ(placeWhenAt(open(), {640, 100}), QPoint(640, 100));
}

TEST_F(TwoMonitors, openWindowsComeToTheOtherMonitorWhenTheirOwnGoes)
{
    session.start();
    const QString window = open();
    move(window, {1500, 100});
    session.desktop.unplugMonitor(1);
    EXPECT_EQ(placeWhenAt(window, {640, 100}), QPoint(640, 100));
}

TEST_F(TwoMonitors, thePopupOpensWhereItWasLeftAndComesToTheOtherMonitorWhenItsOwnGoes)
{
    session.start();
    move(openPopup(), {1600, 200});
    close(popup);
    const QString again = openPopup();
    EXPECT_EQ(placeWhenAt(again, {1600, 200}), QPoint(1600, 200));
    session.desktop.unplugMonitor(1);
    EXPECT_EQ(placeWhenAt(again, {760, 200}), QPoint(760, 200));
}

TEST_F(TwoMonitors, aWindowWithoutAPlaceOpensInTheMiddleOfTheMonitorWithThePointer)
{
    session.start();
    movePointer({2000, 700});
    EXPECT_EQ(placeWhenAt(open(), {1600, 120}), QPoint(1600, 120));
    close(translationWindow);
}

TEST_F(TwoMonitors, resettingTheirPlacesCentresOpenWindowsOnTheMonitorWithThePointer)
{
    session.start();
    const QString window = open();
    move(window, {1500, 100});
    session.zelvane({QStringLiteral("show"), QStringLiteral("settings")});
    session.waitForWindow(QStringLiteral("^Settings$"));
    session.press(QStringLiteral("Behavior"));
    session.press(QStringLiteral("Reset translation windows location"));
    EXPECT_EQ(placeWhenAt(window, {320, 120}), QPoint(320, 120));
    EXPECT_TRUE(session.shows(QStringLiteral("Done")));
}

TEST_F(TwoMonitors, thePanelOfTheTrayOpensOnTheMonitorOfItsIcon)
{
    Tray tray(session, 2);
    session.start();
    const QRect panel(session.placeOf(tray.openPanel()), QSize(320, 1));
    EXPECT_TRUE(right.contains(panel)) << testing::PrintToString(panel);
}

} // namespace
} // namespace zelvane::test
