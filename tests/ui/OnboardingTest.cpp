#include "ui/onboarding/OnboardingWindow.h"

#include "settings/Localization.h"
#include "support/Await.h"
#include "ui/AccessibleWalk.h"
#include "ui/UiFixture.h"

#include <gmock/gmock.h>

#include <QApplication>
#include <QGraphicsEffect>
#include <QImage>
#include <QTest>
#include <QTextLayout>

namespace zelvane::test {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class OnboardingTest : public UiTest
{
protected:
    OnboardingTest()
    {
        window.setLinks({.becomeAccessory = [this] { log << QStringLiteral("accessory"); },
                         .hideSettings = [this] { log << QStringLiteral("hide"); },
                         .updateActivationPolicy = [this] { log << QStringLiteral("policy"); },
                         .visibilityChanged = [this](bool on) { visible = on; },
                         .afterwards = [this] { log << QStringLiteral("afterwards"); }});
    }

    void open()
    {
        window.showOnboarding();
        ASSERT_NE(panel(), nullptr);
        ASSERT_TRUE(QTest::qWaitForWindowActive(panel()));
    }

    void openOnSlide(int index)
    {
        open();
        for (int i = 0; i < index; ++i) {
            press(Qt::Key_Right);
        }
    }

    /// To whatever has the keyboard.
    void press(Qt::Key key)
    {
        ASSERT_NE(QApplication::focusWidget(), nullptr);
        QTest::keyClick(QApplication::focusWidget(), key);
    }

    [[nodiscard]] TranslatorKeyablePanel* panel() const { return window.panel(); }
    [[nodiscard]] OnboardingView& view() const { return *window.view(); }
    [[nodiscard]] QString title() const { return view().title().text(); }

    QStringList log;
    bool visible = false;
    OnboardingWindow window{theme, windows, origins, settings, clock};
};

TEST_F(OnboardingTest, opensFloatingInTheMiddleAtTheFirstSlide)
{
    open();
    EXPECT_EQ(panel()->panelFrame(), QRect(560, 260, 480, 520));
    EXPECT_TRUE(panel()->isFloating());
    EXPECT_FALSE(panel()->promotesDockIcon());
    EXPECT_EQ(title(), QStringLiteral("AI translation without limits"));
    EXPECT_EQ(panel()->windowTitle(), title());
    EXPECT_EQ(view().dots().count(), 7);
    EXPECT_EQ(view().dots().index(), 0);
    EXPECT_EQ(view().dots().accessibleName(), QStringLiteral("Page 1 of 7"));
    EXPECT_THAT(log, ElementsAre(QStringLiteral("accessory")));
    EXPECT_TRUE(visible);
    EXPECT_FALSE(settings.hasSeenOnboarding());
}

TEST_F(OnboardingTest, stepsByTheArrowKeysWhereverTheKeyboardIs)
{
    openOnSlide(2);
    EXPECT_EQ(title(), QStringLiteral("Replace selection in one keystroke"));
    EXPECT_EQ(view().hero().illustration(), OnboardingIllustration::replaceSelection);
    EXPECT_EQ(view().title().objectName(), QStringLiteral("title-2"));
    EXPECT_EQ(view().body().objectName(), QStringLiteral("body-2"));
    EXPECT_EQ(view().dots().index(), 2);
    EXPECT_EQ(panel()->windowTitle(), title());

    view().backButton().setFocus();
    press(Qt::Key_Left);
    EXPECT_EQ(title(), QStringLiteral("Translate anywhere — even offline"));
    press(Qt::Key_Left);
    press(Qt::Key_Left);
    EXPECT_EQ(view().dots().index(), 0);
    press(Qt::Key_Right);
    EXPECT_EQ(view().dots().index(), 1);
}

TEST_F(OnboardingTest, stepsByTheChevrons)
{
    open();
    QTest::mouseClick(&view().forwardButton(), Qt::LeftButton);
    QTest::mouseClick(&view().forwardButton(), Qt::LeftButton);
    EXPECT_EQ(view().dots().index(), 2);
    QTest::mouseClick(&view().backButton(), Qt::LeftButton);
    EXPECT_EQ(view().dots().index(), 1);
}

TEST_F(OnboardingTest, returnGoesThroughAllSlidesAndFinishes)
{
    open();
    for (int i = 0; i < 6; ++i) {
        press(Qt::Key_Return);
    }
    EXPECT_EQ(view().dots().index(), 6);
    press(Qt::Key_Return);
    EXPECT_EQ(panel(), nullptr);
    EXPECT_TRUE(settings.hasSeenOnboarding());
}

TEST_F(OnboardingTest, aChevronThatCannotActIsFaint)
{
    open();
    EXPECT_EQ(view().backButton().symbol(), QStringLiteral("chevron.left"));
    EXPECT_FALSE(view().backButton().isEnabled());
    EXPECT_EQ(view().backButton().symbolOpacity(), 0.35);
    EXPECT_EQ(view().forwardButton().symbol(), QStringLiteral("chevron.right"));
    EXPECT_EQ(view().forwardButton().symbolOpacity(), 1);
    press(Qt::Key_Right);
    EXPECT_TRUE(view().backButton().isEnabled());
    EXPECT_EQ(view().backButton().symbolOpacity(), 1);
}

TEST_F(OnboardingTest, theLastSlideHasAButtonInPlaceOfTheWayForward)
{
    openOnSlide(5);
    EXPECT_TRUE(view().forwardButton().isVisible());
    EXPECT_FALSE(view().gotItButton().isVisible());
    press(Qt::Key_Right);
    EXPECT_FALSE(view().forwardButton().isVisible());
    EXPECT_TRUE(view().gotItButton().isVisible());
    EXPECT_TRUE(view().gotItButton().hasFocus());
    EXPECT_EQ(view().gotItButton().text(), QStringLiteral("Got It"));
    press(Qt::Key_Right);
    EXPECT_EQ(view().dots().index(), 6);
    press(Qt::Key_Left);
    EXPECT_EQ(view().dots().index(), 5);
    EXPECT_TRUE(view().forwardButton().hasFocus());
}

TEST_F(OnboardingTest, noSlideCanBeSkipped)
{
    openOnSlide(2);
    press(Qt::Key_Escape);
    panel()->close();
    ASSERT_NE(panel(), nullptr);
    EXPECT_TRUE(panel()->isVisible());
    EXPECT_EQ(view().dots().index(), 2);
    EXPECT_FALSE(settings.hasSeenOnboarding());
}

TEST_F(OnboardingTest, escapeFinishesOnTheLastSlide)
{
    openOnSlide(6);
    press(Qt::Key_Escape);
    EXPECT_EQ(panel(), nullptr);
    EXPECT_TRUE(settings.hasSeenOnboarding());
}

TEST_F(OnboardingTest, theButtonFinishesAndTheLaunchGoesOnAQuarterOfASecondLater)
{
    openOnSlide(6);
    QTest::mouseClick(&view().gotItButton(), Qt::LeftButton);
    EXPECT_EQ(panel(), nullptr);
    EXPECT_TRUE(settings.hasSeenOnboarding());
    EXPECT_FALSE(visible);
    EXPECT_EQ(windows.givenBack, QList<WindowSystem::Window>{77});
    EXPECT_THAT(log, ElementsAre(QStringLiteral("accessory"), QStringLiteral("policy")));

    clock.advance(249ms);
    EXPECT_EQ(log.size(), 2);
    clock.advance(1ms);
    EXPECT_EQ(log.last(), QStringLiteral("afterwards"));
    clock.advance(5s);
    EXPECT_EQ(log.size(), 3);
}

TEST_F(OnboardingTest, comesToTheFrontAgainFiveTimesAndPutsTheSettingsAway)
{
    open();
    const int before = windows.activations;
    const std::vector<std::pair<std::chrono::milliseconds, int>> moments{
        {49ms, 0}, {1ms, 1}, {149ms, 1}, {1ms, 2}, {300ms, 3}, {500ms, 4}, {999ms, 4}, {1ms, 5}};
    for (const auto& [step, expected] : moments) {
        clock.advance(step);
        EXPECT_EQ(windows.activations, before + expected);
        EXPECT_EQ(log.count(QStringLiteral("hide")), expected);
    }
    clock.advance(1min);
    EXPECT_EQ(windows.activations, before + 5);
}

TEST_F(OnboardingTest, doesNotComeInFrontOfAFailureThatWaitsForAnAnswer)
{
    open();
    const int before = windows.activations;
    TranslatorKeyablePanel alert(theme, windows, PanelRole::alert);
    alert.show();
    clock.advance(1s);
    EXPECT_EQ(windows.activations, before);
    alert.hide();
    clock.advance(1s);
    EXPECT_EQ(windows.activations, before + 1);
}

TEST_F(OnboardingTest, staysAwayOnceItIsFinished)
{
    openOnSlide(6);
    clock.advance(60ms);
    press(Qt::Key_Escape);
    const int before = windows.activations;
    clock.advance(5s);
    EXPECT_EQ(windows.activations, before);
    EXPECT_EQ(log.count(QStringLiteral("hide")), 1);
    EXPECT_EQ(panel(), nullptr);
}

TEST_F(OnboardingTest, aSecondRequestBringsTheOpenPanelForwardAsItIs)
{
    openOnSlide(3);
    const TranslatorKeyablePanel* first = panel();
    const int before = windows.activations;
    window.showOnboarding();
    EXPECT_EQ(panel(), first);
    EXPECT_EQ(view().dots().index(), 3);
    EXPECT_EQ(windows.activations, before + 1);
    EXPECT_EQ(clock.pendingTimers(), 5);
}

TEST_F(OnboardingTest, anInterruptedIntroductionBeginsAgain)
{
    {
        OnboardingWindow interrupted(theme, windows, origins, settings, clock);
        interrupted.showOnboarding();
        interrupted.view()->forwardButton().click();
        interrupted.view()->forwardButton().click();
        interrupted.view()->forwardButton().click();
    }
    EXPECT_EQ(clock.pendingTimers(), 0);
    EXPECT_FALSE(settings.hasSeenOnboarding());
    open();
    EXPECT_EQ(view().dots().index(), 0);
}

TEST_F(OnboardingTest, speaksAnotherLanguageAtOnce)
{
    openOnSlide(6);
    installLocalization(&defaults, {});
    settings.setAppLanguage(AppLanguage::german);
    QEvent change(QEvent::LanguageChange);
    QApplication::sendEvent(panel(), &change);
    EXPECT_EQ(title(), QStringLiteral("Die volle Kraft freischalten"));
    EXPECT_EQ(view().gotItButton().text(), QStringLiteral("Verstanden"));
    EXPECT_EQ(view().dots().accessibleName(), QStringLiteral("Seite 7 von 7"));
    EXPECT_EQ(panel()->windowTitle(), title());
    installLocalization(nullptr);
}

TEST_F(OnboardingTest, fadesTheTextsInUnlessMotionIsUnwanted)
{
    open();
    QWidget* texts = view().title().parentWidget();
    appearance.setReducedMotion(true);
    press(Qt::Key_Right);
    EXPECT_FALSE(texts->graphicsEffect()->isEnabled());
    appearance.setReducedMotion(false);
    press(Qt::Key_Right);
    EXPECT_TRUE(texts->graphicsEffect()->isEnabled());
    EXPECT_TRUE(waitUntil([texts] { return !texts->graphicsEffect()->isEnabled(); }));
}

TEST_F(OnboardingTest, leavesNoWordAloneInTheLastLine)
{
    installLocalization(&defaults);
    settings.setAppLanguage(AppLanguage::russian); // where words are long
    for (const OnboardingSlide& slide : onboardingSlides()) {
        OnboardingModel model;
        OnboardingView slides(model, theme);
        slides.resize(OnboardingView::contentSize);
        slides.show();
        while (model.index() < slide.id) {
            model.stepForward();
        }
        QCoreApplication::processEvents();
        QTextLayout lines(slides.body().text(), slides.body().font());
        lines.beginLayout();
        double longest = 0;
        double last = 0;
        for (QTextLine line = lines.createLine(); line.isValid(); line = lines.createLine()) {
            line.setLineWidth(slides.body().contentsRect().width());
            last = line.naturalTextWidth();
            longest = std::max(longest, last);
        }
        lines.endLayout();
        EXPECT_GT(last, longest * 0.5) << slide.id;
    }
    installLocalization(nullptr);
}

TEST_F(OnboardingTest, theGradientRunsThroughTheHero)
{
    OnboardingHero hero(theme);
    hero.resize(478, 260);
    hero.setIllustration(OnboardingIllustration::offline);
    const QImage image = hero.grab().toImage();
    const auto near = [](QColor color, int red, int green, int blue) {
        return std::abs(color.red() - red) < 4 && std::abs(color.green() - green) < 4 &&
               std::abs(color.blue() - blue) < 4;
    };
    EXPECT_TRUE(near(image.pixelColor(1, 1), 26, 71, 82));
    EXPECT_TRUE(near(image.pixelColor(476, 258), 20, 46, 71));
}

TEST_F(OnboardingTest, everySlideHasADrawingOfItsOwn)
{
    QList<QImage> drawings;
    for (const OnboardingSlide& slide : onboardingSlides()) {
        OnboardingHero hero(theme);
        hero.resize(478, 260);
        hero.setIllustration(slide.illustration);
        const QImage image = hero.grab().toImage();
        EXPECT_FALSE(drawings.contains(image));
        // In the drawing there is pure white or nearly so, which no gradient has.
        bool hasWhite = false;
        for (int y = 0; y < image.height() && !hasWhite; ++y) {
            for (int x = 0; x < image.width() && !hasWhite; ++x) {
                hasWhite = qGray(image.pixel(x, y)) > 235;
            }
        }
        EXPECT_TRUE(hasWhite);
        drawings.append(image);
    }
}

TEST_F(OnboardingTest, everyControlHasAName)
{
    openOnSlide(1);
    EXPECT_THAT(unnamedControls(*panel()), IsEmpty());
    EXPECT_TRUE(controlNames(*panel()).contains(QStringLiteral("Previous page")));
    EXPECT_TRUE(controlNames(*panel()).contains(QStringLiteral("Next page")));
}

} // namespace
} // namespace zelvane::test
