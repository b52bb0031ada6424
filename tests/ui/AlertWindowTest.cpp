#include "ui/alert/AlertWindowPresenter.h"

#include "foundation/DescribedError.h"
#include "support/Await.h"
#include "ui/AccessibleWalk.h"
#include "ui/UiFixture.h"
#include "ui/components/FocusRing.h"
#include "ui/components/TextWell.h"
#include "ui/gallery/Texts.h"

#include <gmock/gmock.h>

#include <QScrollBar>

namespace zelvane::test {
namespace {

using ::testing::ElementsAre;

Alert threeButtons()
{
    return {QStringLiteral("Translation failed"),
            QStringLiteral("Accessibility permission is required."),
            {QStringLiteral("Request Permission…"), QStringLiteral("Relaunch Zelvane Desk"),
             QStringLiteral("Cancel")}};
}

Alert oneButton()
{
    return {QStringLiteral("Translation failed"),
            QStringLiteral("No text selected."),
            {QStringLiteral("OK")}};
}

class AlertWindowTest : public UiTest
{
protected:
    void present(const Alert& alert)
    {
        wait(alert);
        ASSERT_EQ(presenter->openAlerts().size(), 1);
        ASSERT_TRUE(QTest::qWaitForWindowActive(window()));
    }

    [[nodiscard]] AlertWindow* window() const { return presenter->openAlerts().first(); }

    QCoro::Task<void> wait(Alert alert)
    {
        try {
            answer = co_await presenter->present(alert);
        } catch (const CancellationError&) {
            cancelled = true;
        }
    }

    std::unique_ptr<AlertWindowPresenter> presenter =
        std::make_unique<AlertWindowPresenter>(theme, windows, origins);
    std::optional<int> answer;
    bool cancelled = false;
};

TEST_F(AlertWindowTest, answersWithTheButtonThatIsClicked)
{
    for (int button = 0; button < 3; ++button) {
        answer.reset();
        present(threeButtons());
        EXPECT_EQ(answer, std::nullopt);
        QTest::mouseClick(window()->buttons()[button], Qt::LeftButton);
        EXPECT_EQ(answer, button);
        EXPECT_TRUE(presenter->openAlerts().isEmpty());
    }
}

TEST_F(AlertWindowTest, returnIsTheFirstButtonAndEscTheLast)
{
    present(threeButtons());
    QTest::keyClick(window()->focusWidget(), Qt::Key_Return);
    EXPECT_EQ(answer, 0);
    present(threeButtons());
    QTest::keyClick(window()->focusWidget(), Qt::Key_Enter);
    EXPECT_EQ(answer, 0);
    present(threeButtons());
    QTest::keyClick(window()->focusWidget(), Qt::Key_Escape);
    EXPECT_EQ(answer, 2);
}

TEST_F(AlertWindowTest, spaceAndReturnPressTheButtonThatTheUserWentTo)
{
    for (const Qt::Key key : {Qt::Key_Space, Qt::Key_Return}) {
        present(threeButtons());
        QTest::keyClick(window()->focusWidget(), Qt::Key_Tab);
        EXPECT_TRUE(window()->findChild<FocusRing*>()->isVisible());
        QTest::keyClick(window()->focusWidget(), key);
        EXPECT_EQ(answer, 1);
    }
}

TEST_F(AlertWindowTest, closingByTheWindowManagerIsTheLastButton)
{
    present(threeButtons());
    window()->close();
    EXPECT_EQ(answer, 2);
}

TEST_F(AlertWindowTest, takesTheKeyboardAndGivesItBack)
{
    present(oneButton());
    EXPECT_EQ(windows.activations, 1);
    EXPECT_TRUE(window()->windowFlags().testFlag(Qt::WindowStaysOnTopHint));
    QTest::keyClick(window(), Qt::Key_Escape);
    EXPECT_EQ(answer, 0);
    EXPECT_THAT(windows.givenBack, ElementsAre(77));
}

TEST_F(AlertWindowTest, givesTheKeyboardBackToTheProgramsOwnWindow)
{
    windows.foreign = 0;
    QWidget other;
    other.show();
    other.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&other));
    present(oneButton());
    QTest::keyClick(window(), Qt::Key_Escape);
    EXPECT_EQ(windows.activations, 2);
    EXPECT_TRUE(QTest::qWaitForWindowActive(&other));
    EXPECT_TRUE(windows.givenBack.isEmpty());
}

TEST_F(AlertWindowTest, doesNotHoldUpTheRestOfTheProgram)
{
    present(oneButton());
    QWidget other;
    other.show();
    other.activateWindow();
    EXPECT_TRUE(QTest::qWaitForWindowActive(&other));
    EXPECT_FALSE(window()->isModal());
}

TEST_F(AlertWindowTest, severalAreAnsweredEachForItself)
{
    std::optional<int> first;
    std::optional<int> second;
    const auto wait = [](AlertWindowPresenter* alerts, Alert alert,
                         std::optional<int>* result) -> QCoro::Task<void> {
        *result = co_await alerts->present(alert);
    };
    wait(presenter.get(), threeButtons(), &first);
    wait(presenter.get(), oneButton(), &second);
    ASSERT_EQ(presenter->openAlerts().size(), 2);
    QTest::mouseClick(presenter->openAlerts()[1]->buttons()[0], Qt::LeftButton);
    EXPECT_EQ(second, 0);
    EXPECT_EQ(first, std::nullopt);
    QTest::mouseClick(presenter->openAlerts()[0]->buttons()[1], Qt::LeftButton);
    EXPECT_EQ(first, 1);
}

TEST_F(AlertWindowTest, endsTheWaitWhenTheProgramEnds)
{
    present(oneButton());
    presenter.reset();
    EXPECT_TRUE(cancelled);
    EXPECT_EQ(answer, std::nullopt);
}

TEST_F(AlertWindowTest, theOneWhoWaitsMayEndThePresenter)
{
    present(oneButton());
    [](std::unique_ptr<AlertWindowPresenter>* alerts) -> QCoro::Task<void> {
        const Alert alert = oneButton();
        co_await (*alerts)->present(alert);
        alerts->reset();
    }(&presenter);
    QTest::mouseClick(presenter->openAlerts().last()->buttons()[0], Qt::LeftButton);
    EXPECT_EQ(presenter, nullptr);
    EXPECT_TRUE(cancelled);
}

TEST_F(AlertWindowTest, namesEveryControlForScreenReaders)
{
    present(threeButtons());
    EXPECT_EQ(unnamedControls(*window()).join(u' ').toStdString(), "");
    EXPECT_THAT(controlNames(*window()),
                ElementsAre(QStringLiteral("Translation failed"),
                            QStringLiteral("Request Permission…"),
                            QStringLiteral("Relaunch Zelvane Desk"), QStringLiteral("Cancel")));
}

TEST_F(AlertWindowTest, buttonsThatDoNotFitInARowStandBelowOneAnother)
{
    present(threeButtons());
    const auto& buttons = window()->buttons();
    EXPECT_LT(buttons[0]->y(), buttons[1]->y());
    EXPECT_LT(buttons[1]->y(), buttons[2]->y());
    EXPECT_EQ(buttons[0]->width(), buttons[2]->width());
}

TEST_F(AlertWindowTest, shortButtonsStandInARowWithTheFirstAtItsEnd)
{
    present({QStringLiteral("Question"), QString(), {QStringLiteral("Yes"), QStringLiteral("No")}});
    const auto& buttons = window()->buttons();
    EXPECT_EQ(buttons[0]->y(), buttons[1]->y());
    EXPECT_GT(buttons[0]->x(), buttons[1]->x());
}

TEST_F(AlertWindowTest, aLongFailureScrollsAndLeavesTheButtonOnTheScreen)
{
    Alert alert = oneButton();
    alert.informativeText = gallery::texts::longGerman().repeated(30);
    present(alert);
    EXPECT_LT(window()->panelFrame().height(), 400);
    const auto* well = window()->findChild<TextWell*>();
    ASSERT_NE(well, nullptr);
    EXPECT_GT(well->editor().verticalScrollBar()->maximum(), 0);
    EXPECT_EQ(unnamedControls(*window()).join(u' ').toStdString(), "");
}

} // namespace
} // namespace zelvane::test
