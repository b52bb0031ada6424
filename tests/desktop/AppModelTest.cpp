#include "desktop/FlowFixture.h"
#include "pipeline/TranslationError.h"
#include "support/Await.h"

#include <gmock/gmock.h>

#include <functional>

namespace zelvane::test {
namespace {

using namespace std::chrono_literals;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::Not;
using State = AccessibilityPermission::State;

class Controller : public FlowFixture
{
protected:
    Controller()
    {
        settings.setPairs({pair, otherPair});
        settings.setOptionRightClickMenu(false);
    }

    /// Makes the controller and lets its queued start-up steps run.
    void launch()
    {
        model = std::make_unique<AppModel>(AppModel::Parts{settings, flow, hotKeys, optionMenu,
                                                           permission, alerts, windows, clock});
        QCoreApplication::sendPostedEvents();
        log.clear();
    }

    [[nodiscard]] qsizetype runs() const { return translator.texts.size(); }

    LanguagePair otherPair = makePair(QStringLiteral("German"), QStringLiteral("French"));
    FakeHotKeyRegistrar registrar;
    HotKeyManager hotKeys{registrar};
    FakeOptionClickMenu optionMenu{log};
    FakeAlertPresenter alerts{log};
    FakeWindows windows{log};
    std::unique_ptr<AppModel> model;
};

TEST_F(Controller, startsReadyAndIdle)
{
    launch();
    EXPECT_EQ(model->status(), QStringLiteral("Ready"));
    EXPECT_FALSE(model->isBusy());
    EXPECT_EQ(model->lastError(), std::nullopt);
    EXPECT_EQ(model->accessibilityState(), State::granted);
}

TEST_F(Controller, constructionQueuesTheShortcutsThenTheMenuThenTheFirstWindow)
{
    settings.setOptionRightClickMenu(true);
    pair.hotKey = KeyChord{17, 0x1800};
    settings.setPairs({pair});
    model = std::make_unique<AppModel>(
        AppModel::Parts{settings, flow, hotKeys, optionMenu, permission, alerts, windows, clock});
    EXPECT_THAT(log, ElementsAre());
    EXPECT_THAT(registrar.liveIds(), ElementsAre());
    QCoreApplication::sendPostedEvents();
    EXPECT_THAT(registrar.liveIds(), ElementsAre(1u));
    EXPECT_THAT(log,
                ElementsAre(QStringLiteral("menu wanted"), QStringLiteral("prompt on launch")));
}

TEST_F(Controller, theFirstLaunchShowsTheIntroduction)
{
    settings.setHasSeenOnboarding(false);
    model = std::make_unique<AppModel>(
        AppModel::Parts{settings, flow, hotKeys, optionMenu, permission, alerts, windows, clock});
    QCoreApplication::sendPostedEvents();
    EXPECT_THAT(log, ElementsAre(QStringLiteral("menu unwanted"), QStringLiteral("onboarding")));
}

TEST_F(Controller, aSinglePressWaitsOneSecondAndRunsInPlace)
{
    launch();
    model->handleHotKey(pair.id);
    EXPECT_EQ(model->status(), QStringLiteral("Ready"));
    clock.advance(999ms);
    EXPECT_FALSE(model->isBusy());
    clock.advance(1ms);
    EXPECT_TRUE(model->isBusy());
    EXPECT_EQ(model->status(), QStringLiteral("Translating ANY-DE…"));
    clock.advance(380ms);
    EXPECT_FALSE(model->isBusy());
    EXPECT_EQ(model->status(), QStringLiteral("Done · ANY-DE"));
    EXPECT_THAT(log, Contains(QStringLiteral("post paste")));
    EXPECT_THAT(log, Not(Contains(QStringLiteral("popup hello world | Hallo Welt"))));
}

TEST_F(Controller, twoPressesWithinTheSecondRunOnceWithThePopup)
{
    launch();
    model->handleHotKey(pair.id);
    clock.advance(900ms);
    model->handleHotKey(pair.id);
    EXPECT_TRUE(model->isBusy());
    clock.advance(5s);
    EXPECT_EQ(runs(), 1);
    EXPECT_THAT(log, Contains(QStringLiteral("post paste")));
    EXPECT_EQ(log.last(), QStringLiteral("popup hello world | Hallo Welt"));
    EXPECT_TRUE(windows.lastDiagnostics.contains(QStringLiteral("mode: autoAndWindow")));
    EXPECT_EQ(model->status(), QStringLiteral("Done · ANY-DE"));
}

TEST_F(Controller, aSecondPressStartsAtOnce)
{
    launch();
    model->handleHotKey(pair.id);
    clock.advance(100ms);
    model->handleHotKey(pair.id);
    EXPECT_THAT(log, ElementsAre(QStringLiteral("snapshot"), QStringLiteral("clear"),
                                 QStringLiteral("post copy")));
}

TEST_F(Controller, pressesFartherApartThanASecondRunTwice)
{
    launch();
    model->handleHotKey(pair.id);
    clock.advance(1100ms);
    model->handleHotKey(pair.id);
    clock.advance(5s);
    EXPECT_EQ(runs(), 2);
    EXPECT_THAT(log, Not(Contains(QStringLiteral("popup hello world | Hallo Welt"))));
}

TEST_F(Controller, theSecondOfTwoDistantPressesIsDroppedWhileTheFirstIsBusy)
{
    translator.answer.reset();
    launch();
    model->handleHotKey(pair.id);
    clock.advance(1100ms);
    model->handleHotKey(pair.id);
    clock.advance(5s);
    EXPECT_EQ(runs(), 1);
}

TEST_F(Controller, withoutAutoReplaceEveryPressRunsAtOnceByItself)
{
    settings.setAutoReplace(false);
    launch();
    model->handleHotKey(pair.id);
    EXPECT_TRUE(model->isBusy());
    model->handleHotKey(pair.id);
    clock.advance(5s);
    EXPECT_EQ(runs(), 1);
    EXPECT_EQ(log.last(), QStringLiteral("popup hello world | Hallo Welt"));
    EXPECT_TRUE(windows.lastDiagnostics.contains(QStringLiteral("mode: auto\n")));
    EXPECT_EQ(model->status(), QStringLiteral("Translated · ANY-DE"));
}

TEST_F(Controller, withoutTheDoublePressWindowAPressRunsAtOnce)
{
    settings.setDoubleHotKeyWindow(false);
    launch();
    model->handleHotKey(pair.id);
    EXPECT_TRUE(model->isBusy());
}

TEST_F(Controller, twoPairsWaitSideBySideAndTheFirstToFireRuns)
{
    translator.answer.reset();
    launch();
    model->handleHotKey(pair.id);
    clock.advance(500ms);
    model->handleHotKey(otherPair.id);
    clock.advance(500ms);
    EXPECT_EQ(model->status(), QStringLiteral("Translating ANY-DE…"));
    clock.advance(500ms);
    EXPECT_EQ(model->status(), QStringLiteral("Hotkey → DE-FR"));
    EXPECT_EQ(runs(), 1);
}

TEST_F(Controller, aPressWhileBusyLeavesItsStatusUntilTheRunEnds)
{
    translator.answer.reset();
    settings.setDoubleHotKeyWindow(false);
    launch();
    model->handleHotKey(pair.id);
    clock.advance(180ms);
    model->handleHotKey(otherPair.id);
    EXPECT_EQ(model->status(), QStringLiteral("Hotkey → DE-FR"));
    translator.pending.succeed(QStringLiteral("Hallo"));
    clock.advance(200ms);
    EXPECT_EQ(model->status(), QStringLiteral("Done · ANY-DE"));
    EXPECT_EQ(runs(), 1);
}

TEST_F(Controller, aSecondPressWhileBusySaysSoAndIsDropped)
{
    translator.answer.reset();
    launch();
    model->handleHotKey(pair.id);
    clock.advance(1s);
    model->handleHotKey(otherPair.id);
    model->handleHotKey(otherPair.id);
    EXPECT_EQ(model->status(), QStringLiteral("Hotkey ×2 → DE-FR"));
    clock.advance(3s);
    EXPECT_EQ(runs(), 1);
}

TEST_F(Controller, disablingAPairDoesNotCancelItsFirstPress)
{
    launch();
    model->handleHotKey(pair.id);
    LanguagePair disabled = pair;
    disabled.enabled = false;
    disabled.target = QStringLiteral("French");
    settings.setPairs({disabled});
    clock.advance(2s);
    ASSERT_EQ(runs(), 1);
    EXPECT_EQ(translator.pairs.first().target, QStringLiteral("German"));
}

TEST_F(Controller, theSecondPressUsesTheSettingsOfNow)
{
    launch();
    model->handleHotKey(pair.id);
    settings.setPairs({});
    model->handleHotKey(pair.id);
    EXPECT_FALSE(model->isBusy());
}

TEST_F(Controller, unknownAndDisabledPairsAreIgnoredWithoutAWord)
{
    launch();
    model->handleHotKey(QUuid::createUuid());
    pair.enabled = false;
    settings.setPairs({pair});
    model->handleHotKey(pair.id);
    clock.advance(2s);
    EXPECT_EQ(runs(), 0);
    EXPECT_EQ(model->status(), QStringLiteral("Ready"));
}

TEST_F(Controller, aFailureKeepsBusyUntilTheAlertIsClosed)
{
    translator.failure = std::make_exception_ptr(TranslationError::http(401, QStringLiteral("no")));
    settings.setDoubleHotKeyWindow(false);
    launch();
    model->handleHotKey(pair.id);
    clock.advance(180ms);
    ASSERT_EQ(alerts.alerts.size(), 1);
    EXPECT_EQ(alerts.alerts.first(), (Alert{QStringLiteral("Translation failed"),
                                            QStringLiteral("API error 401: no"),
                                            {QStringLiteral("OK")}}));
    EXPECT_THAT(log.sliced(log.size() - 3),
                ElementsAre(QStringLiteral("restore"), QStringLiteral("activate"),
                            QStringLiteral("alert API error 401: no")));
    EXPECT_TRUE(model->isBusy());
    EXPECT_EQ(model->status(), QStringLiteral("Error"));
    EXPECT_EQ(model->lastError(), QStringLiteral("API error 401: no"));
    model->handleHotKey(pair.id);
    EXPECT_EQ(runs(), 1);
    alerts.closed.succeed(0);
    EXPECT_FALSE(model->isBusy());
    EXPECT_EQ(model->lastError(), QStringLiteral("API error 401: no"));
    EXPECT_THAT(log, Not(Contains(QStringLiteral("permission prompt"))));
}

TEST_F(Controller, theNextRunForgetsTheLastError)
{
    selection = QString();
    settings.setDoubleHotKeyWindow(false);
    launch();
    model->handleHotKey(pair.id);
    clock.advance(180ms);
    EXPECT_EQ(model->lastError(), QStringLiteral("No text selected."));
    alerts.closed.succeed(0);
    model->handleHotKey(pair.id);
    EXPECT_EQ(model->lastError(), std::nullopt);
}

class DeniedAlert : public Controller
{
protected:
    void failForWantOfPermission()
    {
        settings.setDoubleHotKeyWindow(false);
        launch();
        platform.trusted = false;
        model->handleHotKey(pair.id);
        ASSERT_EQ(alerts.alerts.size(), 1);
        clock.advance(2600ms); // the prompt that the flow itself asked for no longer counts
        log.clear();
    }
};

TEST_F(DeniedAlert, offersThreeWaysOut)
{
    failForWantOfPermission();
    EXPECT_EQ(alerts.alerts.first(),
              (Alert{QStringLiteral("Translation failed"),
                     QStringLiteral("Accessibility permission is required to replace text. Enable "
                                    "it in System Settings → Privacy & Security → Accessibility."),
                     {QStringLiteral("Request Permission…"),
                      QStringLiteral("Relaunch Zelvane Desk"), QStringLiteral("Cancel")}}));
    EXPECT_EQ(model->accessibilityState(), State::denied);
}

TEST_F(DeniedAlert, theFirstButtonAsksForThePermission)
{
    failForWantOfPermission();
    alerts.closed.succeed(0);
    EXPECT_THAT(log, ElementsAre(QStringLiteral("permission prompt")));
    EXPECT_FALSE(model->isBusy());
}

TEST_F(DeniedAlert, theSecondButtonStartsTheProgramAnew)
{
    failForWantOfPermission();
    alerts.closed.succeed(1);
    EXPECT_THAT(log, ElementsAre(QStringLiteral("relaunch")));
    EXPECT_EQ(defaults.boolean(QStringLiteral("Zelvane.promptAccessibilityOnLaunch")), true);
}

TEST_F(DeniedAlert, theThirdButtonDoesNothing)
{
    failForWantOfPermission();
    alerts.closed.succeed(2);
    EXPECT_THAT(log, ElementsAre());
    EXPECT_FALSE(model->isBusy());
}

TEST_F(Controller, aMenuChoiceRunsInItsModeWithoutWaiting)
{
    launch();
    optionMenu.onSelect(otherPair, TranslateOutputMode::windowOnly);
    EXPECT_EQ(model->status(), QStringLiteral("Translating DE-FR…"));
    clock.advance(180ms);
    EXPECT_EQ(model->status(), QStringLiteral("Translated · DE-FR"));
    EXPECT_THAT(log, Not(Contains(QStringLiteral("post paste"))));
}

TEST_F(Controller, aMenuChoiceWhileBusyLeavesItsStatus)
{
    translator.answer.reset();
    launch();
    optionMenu.onSelect(pair, TranslateOutputMode::automatic);
    optionMenu.onSelect(otherPair, TranslateOutputMode::automatic);
    EXPECT_EQ(model->status(), QStringLiteral("⌥\u2011click → DE-FR"));
}

TEST_F(Controller, theTranslationWindowsShortcutIsNotHeldUpByARun)
{
    translator.answer.reset();
    settings.setManualTranslationHotKey(KeyChord{17, 0x1800});
    settings.setDoubleHotKeyWindow(false);
    launch();
    model->handleHotKey(pair.id);
    registrar.press({0x5A4C564E, 10001});
    EXPECT_EQ(log.last(), QStringLiteral("manual window"));
}

TEST_F(Controller, registersAnewOnEveryStart)
{
    launch();
    pair.hotKey = KeyChord{17, 0x1800};
    settings.setPairs({pair});
    model->startHotKeys();
    EXPECT_THAT(registrar.liveIds(), ElementsAre(1u));
    registrar.press({0x5A4C564E, 1});
    clock.advance(1s);
    EXPECT_TRUE(model->isBusy());
}

TEST_F(Controller, tellsWhenTheShortcutsWorkAndWhatEachRunTook)
{
    settings.setDoubleHotKeyWindow(false);
    model = std::make_unique<AppModel>(
        AppModel::Parts{settings, flow, hotKeys, optionMenu, permission, alerts, windows, clock});
    int reloads = 0;
    QStringList reports;
    QObject::connect(model.get(), &AppModel::hotKeysReloaded, [&] { ++reloads; });
    QObject::connect(model.get(), &AppModel::translationDelivered,
                     [&](const QString& report) { reports << report; });
    QCoreApplication::sendPostedEvents();
    EXPECT_EQ(reloads, 1);
    model->handleHotKey(pair.id);
    clock.advance(380ms);
    ASSERT_EQ(reports.size(), 1);
    EXPECT_TRUE(reports.first().contains(QStringLiteral("  total: 380 ms")));
}

/// Where a run can stand when the program ends.
struct QuitCase
{
    const char* name;
    std::function<Hold*(FakePasteboard&, FakeKeystrokePoster&, FakeFocusInspector&)> hold;
    std::chrono::milliseconds after;
    const char* lastStep;
};

class Quitting : public Controller, public ::testing::WithParamInterface<QuitCase>
{
};

TEST_P(Quitting, givesTheClipboardBackAndLeavesNobodyBehind)
{
    const QuitCase& given = GetParam();
    settings.setDoubleHotKeyWindow(false);
    auto run = std::make_unique<SelectionTranslation>(SelectionTranslation::Parts{
        settings, permission, pasteboard, keystrokes, focus, translator, trace, clock});
    model = std::make_unique<AppModel>(
        AppModel::Parts{settings, *run, hotKeys, optionMenu, permission, alerts, windows, clock});
    QCoreApplication::sendPostedEvents();
    Hold* hold = given.hold ? given.hold(pasteboard, keystrokes, focus) : nullptr;
    if (hold) {
        hold->close();
    }
    model->handleHotKey(pair.id);
    clock.advance(given.after);
    ASSERT_EQ(log.last(), QString::fromUtf8(given.lastStep));

    model.reset();
    run.reset();
    EXPECT_EQ(clipboardText(), QStringLiteral("the user's own"));
    const QStringList logAtTheEnd = log;
    if (hold) {
        hold->open(); // as the platform's adapters do when they go, after all else
    }
    clock.advance(5s);
    EXPECT_EQ(log, logAtTheEnd);
    EXPECT_TRUE(alerts.alerts.isEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    Stages, Quitting,
    ::testing::Values(
        QuitCase{"snapshot", [](auto& board, auto&, auto&) { return &board.heldSnapshot; }, 0ms,
                 "snapshot"},
        QuitCase{"copyKeys", [](auto&, auto& keys, auto&) { return &keys.heldCopy; }, 0ms,
                 "post copy"},
        QuitCase{"copyWait", nullptr, 100ms, "post copy"},
        QuitCase{"readText", [](auto& board, auto&, auto&) { return &board.heldString; }, 180ms,
                 "read string"},
        QuitCase{"focus", [](auto&, auto&, auto& focus) { return &focus.held; }, 180ms,
                 "read string"},
        QuitCase{"prePasteWait", nullptr, 200ms, "set string Hallo Welt"},
        QuitCase{"pasteKeys", [](auto&, auto& keys, auto&) { return &keys.heldPaste; }, 260ms,
                 "post paste"},
        QuitCase{"postPasteWait", nullptr, 300ms, "post paste"}),
    [](const auto& info) { return info.param.name; });

TEST_F(Controller, quittingDuringTheEnginesCallPutsTheClipboardBack)
{
    translator.answer.reset();
    settings.setDoubleHotKeyWindow(false);
    launch();
    model->handleHotKey(pair.id);
    clock.advance(180ms);
    model.reset();
    EXPECT_EQ(clipboardText(), QStringLiteral("the user's own"));
    EXPECT_TRUE(alerts.alerts.isEmpty());
}

TEST_F(Controller, quittingWhileAnAlertIsOpenLeavesNobodyBehind)
{
    selection = QString();
    settings.setDoubleHotKeyWindow(false);
    launch();
    model->handleHotKey(pair.id);
    clock.advance(180ms);
    ASSERT_EQ(alerts.alerts.size(), 1);
    model.reset();
    alerts.closed.succeed(0);
    EXPECT_THAT(log, Not(Contains(QStringLiteral("permission prompt"))));
}

// The permission.

TEST_F(Controller, looksAtThePermissionEveryThreeSeconds)
{
    launch();
    platform.trusted = false;
    clock.advance(2999ms);
    EXPECT_EQ(model->accessibilityState(), State::granted);
    clock.advance(1ms);
    EXPECT_EQ(model->accessibilityState(), State::denied);
    EXPECT_THAT(log, ElementsAre(QStringLiteral("menu reconcile")));
}

TEST_F(Controller, looksAtThePermissionAMomentAfterItsAnnouncement)
{
    launch();
    platform.tapWorks = false;
    model->accessibilityApiChanged();
    clock.advance(799ms);
    EXPECT_EQ(model->accessibilityState(), State::granted);
    clock.advance(1ms);
    EXPECT_EQ(model->accessibilityState(), State::stale);
}

TEST_F(Controller, aFurtherAnnouncementDoesNotPutOffTheFirst)
{
    launch();
    model->accessibilityApiChanged();
    clock.advance(500ms);
    model->accessibilityApiChanged();
    platform.tapWorks = false;
    clock.advance(300ms);
    EXPECT_EQ(model->accessibilityState(), State::stale);
    platform.tapWorks = true;
    clock.advance(500ms);
    EXPECT_EQ(model->accessibilityState(), State::granted);
}

TEST_F(Controller, looksAtThePermissionWhenItComesToTheFront)
{
    launch();
    platform.trusted = false;
    model->activated();
    EXPECT_EQ(model->accessibilityState(), State::granted);
    QCoreApplication::sendPostedEvents();
    EXPECT_EQ(model->accessibilityState(), State::denied);
}

TEST_F(Controller, aLostPermissionShowsInTheStatusOfTheMenu)
{
    settings.setOptionRightClickMenu(true);
    launch();
    optionMenu.error = QStringLiteral("Accessibility required");
    platform.trusted = false;
    clock.advance(3s);
    EXPECT_EQ(model->status(), QStringLiteral("⌥\u2011menu: waiting for Accessibility…"));
}

TEST_F(Controller, anUnchangedPermissionDisturbsNothing)
{
    launch();
    clock.advance(9s);
    EXPECT_THAT(log, ElementsAre());
}

// The status of the option menu.

TEST_F(Controller, anActiveMenuShowsWhereNothingElseDoes)
{
    settings.setOptionRightClickMenu(true);
    launch();
    optionMenu.listening = true;
    optionMenu.onActivated();
    EXPECT_EQ(model->status(), QStringLiteral("⌥\u2011menu: active"));
}

TEST_F(Controller, aFinishedTranslationsStatusSurvivesTheMenusActivation)
{
    settings.setOptionRightClickMenu(true);
    settings.setAutoReplace(false);
    launch();
    model->handleHotKey(pair.id);
    clock.advance(180ms);
    optionMenu.listening = true;
    optionMenu.onActivated();
    EXPECT_EQ(model->status(), QStringLiteral("Translated · ANY-DE"));
}

TEST_F(Controller, aMenuThatWaitsForThePermissionSaysSoOverAnyStatus)
{
    settings.setOptionRightClickMenu(true);
    settings.setAutoReplace(false);
    launch();
    model->handleHotKey(pair.id);
    clock.advance(180ms);
    optionMenu.error = QStringLiteral("Accessibility required");
    model->refreshOptionMenuStatus();
    EXPECT_EQ(model->status(), QStringLiteral("⌥\u2011menu: waiting for Accessibility…"));
}

TEST_F(Controller, aMenuThatFailedSaysWhyOverAnyStatus)
{
    settings.setOptionRightClickMenu(true);
    launch();
    optionMenu.error = QStringLiteral("taken");
    model->refreshOptionMenuStatus();
    EXPECT_EQ(model->status(), QStringLiteral("⌥\u2011menu: taken"));
    optionMenu.error.clear();
    model->refreshOptionMenuStatus();
    EXPECT_EQ(model->status(), QStringLiteral("⌥\u2011menu: taken"));
}

TEST_F(Controller, switchingTheMenuOffMakesItsStatusReady)
{
    settings.setOptionRightClickMenu(true);
    launch();
    optionMenu.listening = true;
    model->refreshOptionMenuStatus();
    settings.setOptionRightClickMenu(false);
    model->refreshOptionMenuStatus();
    EXPECT_EQ(model->status(), QStringLiteral("Ready"));
}

TEST_F(Controller, switchingTheMenuOffLeavesAnOutcomeInPlace)
{
    settings.setAutoReplace(false);
    launch();
    model->handleHotKey(pair.id);
    clock.advance(180ms);
    model->refreshOptionMenuStatus();
    model->refreshStatusText();
    EXPECT_EQ(model->status(), QStringLiteral("Translated · ANY-DE"));
}

TEST_F(Controller, aChangeOfLanguageRewritesAnIdleStatus)
{
    settings.setOptionRightClickMenu(true);
    launch();
    optionMenu.listening = true;
    model->refreshStatusText();
    EXPECT_EQ(model->status(), QStringLiteral("⌥\u2011menu: active"));
    settings.setOptionRightClickMenu(false);
    model->refreshStatusText();
    EXPECT_EQ(model->status(), QStringLiteral("Ready"));
}

} // namespace
} // namespace zelvane::test
