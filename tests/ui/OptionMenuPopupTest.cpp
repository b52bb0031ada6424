#include "ui/optionmenu/OptionMenuPopup.h"

#include "support/Await.h"
#include "ui/AccessibleWalk.h"
#include "ui/UiFixture.h"
#include "ui/style/InterfaceStyle.h"

#include <gmock/gmock.h>

#include <QCursor>
#include <QScreen>
#include <QTest>

namespace zelvane::test {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class OptionMenuPopupTest : public UiTest
{
protected:
    ~OptionMenuPopupTest() override
    {
        if (popup.menu()) {
            popup.menu()->close();
        }
    }

    void open()
    {
        popup.popUp(content, {100, 50}, [this](const MenuChoice& choice) { chosen << choice; });
    }
    void press(Qt::Key key) { QTest::keyClick(popup.menu(), key); }
    [[nodiscard]] QStringList entries() const
    {
        QStringList texts;
        for (const QAction* action : popup.menu()->actions()) {
            texts += action->isSeparator() ? QStringLiteral("-") : action->text();
        }
        return texts;
    }

    const MenuChoice first{QUuid::createUuid(), QStringLiteral("auto")};
    const MenuChoice second{QUuid::createUuid(), QStringLiteral("auto")};
    const MenuChoice third{first.pairID, QStringLiteral("window")};
    OptionMenuContent content{
        QStringLiteral("Zelvane Desk"),
        {{{QStringLiteral("Translate A → B"), first}, {QStringLiteral("Translate R & D"), second}},
         {{QStringLiteral("Translate A → B (window)"), third}}}};
    OptionMenuPopup popup{[](QPoint location) { return location * 2; }};
    QList<MenuChoice> chosen;
};

TEST_F(OptionMenuPopupTest, isNotMadeBeforeItIsFirstOpened)
{
    EXPECT_EQ(popup.menu(), nullptr);
}

TEST_F(OptionMenuPopupTest, hasTheGroupsWithASeparatorBetweenThem)
{
    open();
    ASSERT_NE(popup.menu(), nullptr);
    EXPECT_TRUE(popup.menu()->isVisible());
    EXPECT_THAT(entries(),
                ElementsAre(QStringLiteral("Translate A → B"), QStringLiteral("Translate R && D"),
                            QStringLiteral("-"), QStringLiteral("Translate A → B (window)")));
}

TEST_F(OptionMenuPopupTest, opensWhereTheClickIsInItsOwnCoordinates)
{
    open();
    EXPECT_EQ(popup.menu()->pos(), QPoint(200, 100));
}

TEST_F(OptionMenuPopupTest, isChosenFromByKeyboard)
{
    open();
    press(Qt::Key_Down);
    press(Qt::Key_Down);
    press(Qt::Key_Return);
    EXPECT_THAT(chosen, ElementsAre(second));
    EXPECT_FALSE(popup.menu()->isVisible());
    open();
    press(Qt::Key_Up);
    press(Qt::Key_Return);
    EXPECT_THAT(chosen, ElementsAre(second, third));
}

TEST_F(OptionMenuPopupTest, isChosenFromByMouse)
{
    open();
    QAction* entry = popup.menu()->actions().constLast();
    const QPoint place = popup.menu()->actionGeometry(entry).center();
    QTest::mouseMove(popup.menu(), place);
    QTest::mouseClick(popup.menu(), Qt::LeftButton, {}, place);
    EXPECT_THAT(chosen, ElementsAre(third));
}

TEST_F(OptionMenuPopupTest, escapeChoosesNothing)
{
    open();
    press(Qt::Key_Down);
    press(Qt::Key_Escape);
    EXPECT_FALSE(popup.menu()->isVisible());
    EXPECT_THAT(chosen, IsEmpty());
}

TEST_F(OptionMenuPopupTest, nothingIsPreselectedForAStrayReturn)
{
    open();
    EXPECT_EQ(popup.menu()->activeAction(), nullptr);
    press(Qt::Key_Return);
    EXPECT_THAT(chosen, IsEmpty());
}

TEST_F(OptionMenuPopupTest, openingItAgainReplacesWhatItShows)
{
    open();
    content.groups = {{{QStringLiteral("Translate C → D"), third}}};
    open();
    EXPECT_TRUE(popup.menu()->isVisible());
    EXPECT_THAT(entries(), ElementsAre(QStringLiteral("Translate C → D")));
    press(Qt::Key_Down);
    press(Qt::Key_Return);
    EXPECT_THAT(chosen, ElementsAre(third));
}

TEST_F(OptionMenuPopupTest, namesEverythingForScreenReaders)
{
    open();
    EXPECT_EQ(unnamedControls(*popup.menu()).join(u' ').toStdString(), "");
    const QStringList names = controlNames(*popup.menu());
    EXPECT_THAT(names, Contains(QStringLiteral("Zelvane Desk")));
    EXPECT_THAT(names, Contains(QStringLiteral("Translate R & D")));
}

TEST_F(OptionMenuPopupTest, hasTheColoursOfTheTheme)
{
    dressApplication(theme);
    appearance.setColorScheme(ColorScheme::dark);
    open();
    popup.menu()->setActiveAction(popup.menu()->actions().constFirst());
    const QImage image = popup.menu()->grab().toImage();
    EXPECT_EQ(image.pixelColor(image.width() / 2, 2), theme.colors().window);
    const QRect entry = popup.menu()->actionGeometry(popup.menu()->actions().constFirst());
    EXPECT_EQ(image.pixelColor(entry.right() - 4, entry.center().y()), theme.colors().accent);
    popup.menu()->close();
    QApplication::setStyle(QStringLiteral("Fusion"));
}

/// The menu under a compositor, with a shadow around it.
class ShadowedMenuTest : public OptionMenuPopupTest
{
protected:
    ShadowedMenuTest()
    {
        dressApplication(theme);
        appearance.setCompositing(true);
    }
    ~ShadowedMenuTest() override
    {
        popup.menu()->close();
        QApplication::setStyle(QStringLiteral("Fusion"));
    }

    /// At a place whose coordinates are even.
    void openAt(QPoint location)
    {
        QCursor::setPos(location);
        popup.popUp(content, location / 2, [this](const MenuChoice& choice) { chosen << choice; });
    }
    /// Where the menu itself is on the screen.
    [[nodiscard]] QRect panel() const
    {
        return popup.menu()->contentsRect().translated(popup.menu()->pos());
    }
};

TEST_F(ShadowedMenuTest, opensAtThePointerWithItsShadowAroundIt)
{
    openAt({200, 100});
    EXPECT_EQ(panel().topLeft(), QPoint(200, 100));
    const QImage image = popup.menu()->grab().toImage();
    const QPoint below(image.width() / 2, popup.menu()->contentsRect().bottom() + 6);
    EXPECT_GT(image.pixelColor(below).alpha(), 0);
    EXPECT_LT(image.pixelColor(below).alpha(), 255);
}

TEST_F(ShadowedMenuTest, endsAtThePointerOrTheScreensEdgeWhereItHasNoRoom)
{
    const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
    for (const QPoint& inset : {QPoint(2, 2), QPoint(40, 40), QPoint(100, 60)}) {
        const QPoint pointer = screen.bottomRight() + QPoint(1, 1) - inset;
        openAt(pointer);
        EXPECT_TRUE(screen.contains(panel()));
        EXPECT_TRUE(panel().adjusted(-3, -3, 3, 3).contains(pointer));
        popup.menu()->close();
    }
}

TEST_F(ShadowedMenuTest, aClickOnTheShadowClosesItWithoutAChoice)
{
    open();
    QTest::mouseClick(popup.menu(), Qt::LeftButton, {}, QPoint(3, 40));
    EXPECT_FALSE(popup.menu()->isVisible());
    EXPECT_THAT(chosen, IsEmpty());
}

TEST_F(ShadowedMenuTest, losesItsShadowWithTheCompositor)
{
    openAt({200, 100});
    popup.menu()->close();
    appearance.setCompositing(false);
    openAt({200, 100});
    EXPECT_EQ(popup.menu()->geometry(), panel());
    EXPECT_EQ(panel().topLeft(), QPoint(200, 100));
}

} // namespace
} // namespace zelvane::test
