#include "desktop/OptionClickMenuManager.h"

#include "desktop/FlowFixture.h"
#include "settings/Localization.h"

#include <gmock/gmock.h>

namespace zelvane::test {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Type = TapEvent::Type;

class OptionClickMenuTest : public FlowFixture
{
protected:
    OptionClickMenuTest()
    {
        settings.setPairs({pair, otherPair});
        makeManager();
    }
    ~OptionClickMenuTest() override { installLocalization(nullptr); }

    void makeManager()
    {
        manager = std::make_unique<OptionClickMenuManager>(
            OptionClickMenuManager::Parts{settings, permission, tap, presenter, clock});
        manager->setOnSelect([this](const LanguagePair& chosen, TranslateOutputMode mode) {
            chosenPairs << chosen.id;
            chosenModes << mode;
        });
        manager->setOnActivated([this] { ++activations; });
        QObject::connect(manager.get(), &OptionClickMenuManager::optionClickMenuDidActivate,
                         manager.get(), [this] { ++notifications; });
    }

    void grant(bool granted) { platform.trusted = granted; }

    TapVerdict press(quint32 flags = TapEvent::optionFlag, QPoint location = {3, 4})
    {
        return tap.send(Type::rightMouseDown, flags, location);
    }
    TapVerdict release() { return tap.send(Type::rightMouseUp); }
    /// Opens the menu by a click.
    void click()
    {
        press();
        release();
        QCoreApplication::sendPostedEvents();
    }
    void choose(const QUuid& id, const char* mode)
    {
        presenter.choose({id, QString::fromLatin1(mode)});
        QCoreApplication::sendPostedEvents();
    }

    void expectOff()
    {
        EXPECT_FALSE(manager->isListening());
        EXPECT_EQ(manager->lastError(), QString());
        EXPECT_EQ(clock.pendingTimers(), 0);
        EXPECT_FALSE(tap.handler);
    }
    void expectActive()
    {
        EXPECT_TRUE(manager->isListening());
        EXPECT_EQ(manager->lastError(), QString());
        EXPECT_EQ(clock.pendingTimers(), 0);
        EXPECT_TRUE(tap.handler);
    }
    void expectWaiting(const char* error)
    {
        EXPECT_FALSE(manager->isListening());
        EXPECT_EQ(manager->lastError(), QString::fromUtf8(error));
        EXPECT_EQ(clock.pendingTimers(), 1);
        EXPECT_FALSE(tap.handler);
    }

    LanguagePair otherPair = makePair(QStringLiteral("English (US)"), QStringLiteral("French"));
    FakeMouseTap tap{log};
    FakeOptionMenuPresenter presenter;
    QList<QUuid> chosenPairs;
    QList<TranslateOutputMode> chosenModes;
    int activations = 0;
    int notifications = 0;
    std::unique_ptr<OptionClickMenuManager> manager;
};

// States and transitions.

TEST_F(OptionClickMenuTest, isOffUntilItIsWanted)
{
    expectOff();
    manager->reconcile();
    manager->activated();
    expectOff();
    EXPECT_THAT(log, IsEmpty());
}

TEST_F(OptionClickMenuTest, listensAtOnceWhereItMay)
{
    manager->setWanted(true);
    expectActive();
    EXPECT_THAT(log, ElementsAre(QStringLiteral("tap hardware")));
    EXPECT_EQ(notifications, 0);
}

TEST_F(OptionClickMenuTest, aSecondWishKeepsTheTapThatThereIs)
{
    manager->setWanted(true);
    manager->setWanted(true);
    expectActive();
    EXPECT_THAT(log, ElementsAre(QStringLiteral("tap hardware")));
}

TEST_F(OptionClickMenuTest, waitsForThePermission)
{
    grant(false);
    manager->setWanted(true);
    expectWaiting("Accessibility required");
    EXPECT_THAT(log, IsEmpty());
}

TEST_F(OptionClickMenuTest, stalePermissionIsNone)
{
    platform.tapWorks = false;
    manager->setWanted(true);
    expectWaiting("Accessibility required");
}

TEST_F(OptionClickMenuTest, theMissingPermissionIsToldInTheStoredLanguage)
{
    defaults.setValue(QStringLiteral("zv.appLanguage"), QStringLiteral("de"));
    installLocalization(&defaults, {QStringLiteral("en")});
    grant(false);
    manager->setWanted(true);
    expectWaiting("Bedienungshilfen erforderlich");
}

TEST_F(OptionClickMenuTest, triesTheSessionWhereTheHardwareIsRefused)
{
    tap.worksForHardware = false;
    manager->setWanted(true);
    expectActive();
    EXPECT_THAT(log, ElementsAre(QStringLiteral("tap hardware"), QStringLiteral("tap session")));
}

TEST_F(OptionClickMenuTest, aRefusedTapIsToldInItsFixedWords)
{
    defaults.setValue(QStringLiteral("zv.appLanguage"), QStringLiteral("de"));
    installLocalization(&defaults, {QStringLiteral("en")});
    tap.setWorks(false);
    manager->setWanted(true);
    expectWaiting("Event tap failed (Input Monitoring?)");
    EXPECT_THAT(log, ElementsAre(QStringLiteral("tap hardware"), QStringLiteral("tap session")));
}

TEST_F(OptionClickMenuTest, aReasonThatThePlatformKnowsIsTold)
{
    tap.setWorks(false);
    tap.reason = QStringLiteral("the window manager has it");
    manager->setWanted(true);
    expectWaiting("the window manager has it");
}

TEST_F(OptionClickMenuTest, aGrantedPermissionTurnsItOnWithinASecond)
{
    grant(false);
    manager->setWanted(true);
    clock.advance(1500ms);
    grant(true);
    clock.advance(499ms);
    expectWaiting("Accessibility required");
    EXPECT_EQ(notifications, 0);
    clock.advance(1ms);
    expectActive();
    EXPECT_EQ(notifications, 1);
    EXPECT_EQ(activations, 1);
}

TEST_F(OptionClickMenuTest, aTapThatWasRefusedIsTriedEverySecond)
{
    tap.setWorks(false);
    manager->setWanted(true);
    log.clear();
    clock.advance(2s);
    EXPECT_EQ(log.size(), 4);
    tap.setWorks(true);
    clock.advance(1s);
    expectActive();
    EXPECT_EQ(notifications, 1);
}

TEST_F(OptionClickMenuTest, aRetryTellsWhatStandsInTheWayNow)
{
    grant(false);
    manager->setWanted(true);
    grant(true);
    tap.setWorks(false);
    clock.advance(1s);
    expectWaiting("Event tap failed (Input Monitoring?)");
}

TEST_F(OptionClickMenuTest, turningItOffEmptiesTheErrorAndStopsTheRetries)
{
    grant(false);
    manager->setWanted(true);
    manager->setWanted(false);
    expectOff();
    grant(true);
    clock.advance(5s);
    expectOff();
    EXPECT_EQ(notifications, 0);
}

TEST_F(OptionClickMenuTest, turningItOffGivesTheTapUp)
{
    manager->setWanted(true);
    manager->setWanted(false);
    expectOff();
    EXPECT_THAT(log, ElementsAre(QStringLiteral("tap hardware"), QStringLiteral("tap remove")));
}

TEST_F(OptionClickMenuTest, aWithdrawnPermissionIsNoticedWhenTheProgramComesToTheFront)
{
    manager->setWanted(true);
    grant(false);
    clock.advance(10s);
    EXPECT_TRUE(manager->isListening());
    manager->activated();
    EXPECT_FALSE(manager->isListening());
    EXPECT_FALSE(tap.handler);
    EXPECT_EQ(clock.pendingTimers(), 1);
    // The error comes with the first retry.
    EXPECT_EQ(manager->lastError(), QString());
    clock.advance(1s);
    expectWaiting("Accessibility required");
}

TEST_F(OptionClickMenuTest, reconcilingMakesTheTapAnew)
{
    manager->setWanted(true);
    log.clear();
    manager->reconcile();
    expectActive();
    EXPECT_THAT(log, ElementsAre(QStringLiteral("tap remove"), QStringLiteral("tap hardware")));
    grant(false);
    manager->reconcile();
    expectWaiting("Accessibility required");
    EXPECT_EQ(notifications, 0);
}

TEST_F(OptionClickMenuTest, comingToTheFrontKeepsAGoodTapAndMakesAMissingOne)
{
    manager->setWanted(true);
    log.clear();
    manager->activated();
    expectActive();
    EXPECT_THAT(log, IsEmpty());
    grant(false);
    manager->reconcile();
    grant(true);
    manager->activated();
    expectActive();
    EXPECT_EQ(notifications, 0);
}

TEST_F(OptionClickMenuTest, anAnnouncedChangeIsLookedAtAMomentLater)
{
    grant(false);
    manager->setWanted(true);
    clock.advance(100ms); // so that no retry falls on the same moment
    grant(true);
    manager->accessibilityApiChanged();
    clock.advance(799ms);
    EXPECT_FALSE(manager->isListening());
    clock.advance(1ms);
    expectActive();
    EXPECT_EQ(notifications, 0);
}

TEST_F(OptionClickMenuTest, goesWithItsTapAndItsTimers)
{
    manager->setWanted(true);
    manager->accessibilityApiChanged();
    manager.reset();
    EXPECT_FALSE(tap.handler);
    clock.advance(5s);
    EXPECT_EQ(clock.pendingTimers(), 0);
}

// Events of the tap.

TEST_F(OptionClickMenuTest, aPlainRightClickPasses)
{
    manager->setWanted(true);
    for (const quint32 flags :
         {0U, TapEvent::shiftFlag, TapEvent::controlFlag, TapEvent::commandFlag}) {
        EXPECT_EQ(press(flags), TapVerdict::pass) << flags;
        EXPECT_EQ(release(), TapVerdict::pass) << flags;
    }
    QCoreApplication::sendPostedEvents();
    EXPECT_TRUE(presenter.shown.isEmpty());
}

TEST_F(OptionClickMenuTest, neitherPressNorReleaseReachesTheProgramBelow)
{
    manager->setWanted(true);
    EXPECT_EQ(press(), TapVerdict::swallow);
    EXPECT_EQ(release(), TapVerdict::swallow);
    EXPECT_EQ(release(), TapVerdict::pass);
}

TEST_F(OptionClickMenuTest, theReleaseAfterAPassedPressPasses)
{
    manager->setWanted(true);
    EXPECT_EQ(press(0), TapVerdict::pass);
    EXPECT_EQ(release(), TapVerdict::pass);
}

TEST_F(OptionClickMenuTest, otherEventsPass)
{
    manager->setWanted(true);
    EXPECT_EQ(tap.send(Type::other, TapEvent::optionFlag), TapVerdict::pass);
    QCoreApplication::sendPostedEvents();
    EXPECT_TRUE(presenter.shown.isEmpty());
}

TEST_F(OptionClickMenuTest, aTapThatWasSwitchedOffIsSwitchedOnAgain)
{
    manager->setWanted(true);
    log.clear();
    EXPECT_EQ(tap.send(Type::disabledByTimeout), TapVerdict::pass);
    EXPECT_EQ(tap.send(Type::disabledByUserInput), TapVerdict::pass);
    QCoreApplication::sendPostedEvents();
    EXPECT_THAT(log, ElementsAre(QStringLiteral("tap enable"), QStringLiteral("tap enable")));
    expectActive();
}

TEST_F(OptionClickMenuTest, aTapThatStaysOffIsMadeAnewByTheRetries)
{
    manager->setWanted(true);
    tap.canBeEnabled = false;
    tap.setWorks(false);
    tap.reason = QStringLiteral("taken");
    tap.send(Type::disabledByUserInput);
    QCoreApplication::sendPostedEvents();
    expectWaiting("taken");
    tap.setWorks(true);
    clock.advance(1s);
    expectActive();
    EXPECT_EQ(notifications, 1);
}

TEST_F(OptionClickMenuTest, aReleaseAfterTheTapWasMadeAnewPasses)
{
    manager->setWanted(true);
    press();
    manager->reconcile();
    EXPECT_EQ(release(), TapVerdict::pass);
}

// The menu.

TEST_F(OptionClickMenuTest, opensOnceWhereTheClickWasAndNotFromWithinTheCall)
{
    manager->setWanted(true);
    press(TapEvent::optionFlag | TapEvent::shiftFlag, {120, 450});
    EXPECT_TRUE(presenter.shown.isEmpty());
    QCoreApplication::sendPostedEvents();
    EXPECT_THAT(presenter.locations, ElementsAre(QPoint(120, 450)));
}

TEST_F(OptionClickMenuTest, hasTheEnabledPairsTwiceWithTheirStoredNames)
{
    LanguagePair disabled = makePair(QStringLiteral("Hindi"), QStringLiteral("Spanish"));
    disabled.enabled = false;
    settings.setPairs({otherPair, disabled, pair});
    manager->setWanted(true);
    click();
    const QString automatic = QStringLiteral("auto");
    const QString window = QStringLiteral("window");
    const OptionMenuContent expected{
        QStringLiteral("Zelvane Desk"),
        {{{QStringLiteral("Translate English (US) → French"), {otherPair.id, automatic}},
          {QStringLiteral("Translate Any Language → German"), {pair.id, automatic}}},
         {{QStringLiteral("Translate English (US) → French (window)"), {otherPair.id, window}},
          {QStringLiteral("Translate Any Language → German (window)"), {pair.id, window}}}}};
    ASSERT_EQ(presenter.shown.size(), 1);
    EXPECT_EQ(presenter.shown.first(), expected);
}

TEST_F(OptionClickMenuTest, speaksTheInterfaceLanguage)
{
    defaults.setValue(QStringLiteral("zv.appLanguage"), QStringLiteral("de"));
    installLocalization(&defaults, {QStringLiteral("en")});
    manager->setWanted(true);
    click();
    ASSERT_EQ(presenter.shown.size(), 1);
    EXPECT_EQ(presenter.shown.first().groups.last().last().title,
              QStringLiteral("English (US) → French übersetzen (Fenster)"));
}

TEST_F(OptionClickMenuTest, withoutAnEnabledPairTheClickIsLostAndNoMenuShows)
{
    pair.enabled = false;
    settings.setPairs({pair});
    manager->setWanted(true);
    EXPECT_EQ(press(), TapVerdict::swallow);
    EXPECT_EQ(release(), TapVerdict::swallow);
    QCoreApplication::sendPostedEvents();
    EXPECT_TRUE(presenter.shown.isEmpty());
}

TEST_F(OptionClickMenuTest, aChoiceComesWithItsPairAndMode)
{
    manager->setWanted(true);
    click();
    choose(otherPair.id, "auto");
    click();
    choose(pair.id, "window");
    EXPECT_THAT(chosenPairs, ElementsAre(otherPair.id, pair.id));
    EXPECT_THAT(chosenModes,
                ElementsAre(TranslateOutputMode::automatic, TranslateOutputMode::windowOnly));
}

TEST_F(OptionClickMenuTest, aPairThatWasDisabledOrRemovedMeanwhileDoesNothing)
{
    manager->setWanted(true);
    click();
    pair.enabled = false;
    settings.setPairs({pair});
    choose(pair.id, "auto");
    click();
    choose(otherPair.id, "auto");
    EXPECT_THAT(chosenPairs, IsEmpty());
}

TEST_F(OptionClickMenuTest, aChoiceAfterItsEndIsHarmless)
{
    manager->setWanted(true);
    click();
    presenter.choose({pair.id, QStringLiteral("auto")});
    manager.reset();
    QCoreApplication::sendPostedEvents();
    presenter.choose({pair.id, QStringLiteral("auto")});
    QCoreApplication::sendPostedEvents();
    EXPECT_THAT(chosenPairs, IsEmpty());
}

} // namespace
} // namespace zelvane::test
