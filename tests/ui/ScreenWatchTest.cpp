#include "ui/panel/ScreenWatch.h"
#include "ui/UiFixture.h"
#include "ui/panel/TranslatorKeyablePanel.h"

#include <QMenu>
#include <QTest>

namespace zelvane::test {
namespace {

class ScreenWatchTest : public UiTest
{
protected:
    ScreenWatchTest() { panel.setContentSize({400, 300}); }

    TranslatorKeyablePanel panel{theme, windows, PanelRole::floating};
};

TEST_F(ScreenWatchTest, bringsAPanelBackWithoutItsShadow)
{
    appearance.setCompositing(true);
    panel.setPanelOrigin({3000, 500});
    panel.show();
    bringWindowsOntoScreens(oneScreen());
    EXPECT_EQ(panel.panelFrame(), QRect(1200, 500, 400, 300));
}

TEST_F(ScreenWatchTest, leavesAPanelThatCanBeSeenWhereItIs)
{
    panel.setPanelOrigin({100, 50});
    panel.show();
    bringWindowsOntoScreens(oneScreen());
    EXPECT_EQ(panel.panelFrame(), QRect(100, 50, 400, 300));
}

TEST_F(ScreenWatchTest, bringsOrdinaryWindowsBackAndLeavesMenusAlone)
{
    QWidget ordinary;
    ordinary.setGeometry(3000, 100, 500, 400);
    ordinary.show();
    QMenu menu;
    menu.addAction(QStringLiteral("Copy"));
    menu.setGeometry(2000, 100, 100, 100);
    menu.show();
    bringWindowsOntoScreens(oneScreen());
    EXPECT_EQ(ordinary.frameGeometry().right(), 1599);
    EXPECT_EQ(ordinary.y(), 98);
    EXPECT_EQ(menu.pos(), QPoint(2000, 100));
}

} // namespace
} // namespace zelvane::test
