#include "desktop/SettingsWindow.h"

#include "desktop/FakeShell.h"
#include "support/VirtualClock.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QCoreApplication>

namespace zelvane::test {
namespace {

using namespace std::chrono_literals;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::Not;
using Kind = ActivationPolicy::Kind;
using PendingSection = SettingsWindow::PendingSection;

constexpr ApplicationWindow::Id settingsId = 1;
constexpr ApplicationWindow::Id manualId = 2;
constexpr ApplicationWindow::Id popupId = 3;

ApplicationWindow settingsWindow(bool visible = true)
{
    return {.id = settingsId,
            .identifier = QStringLiteral("com.apple.SwiftUI.Settings"),
            .isVisible = visible,
            .isTitled = true,
            .canBecomeMain = true};
}

ApplicationWindow panel(ApplicationWindow::Id id, bool promotes)
{
    return {.id = id, .isVisible = true, .level = 3, .promotesDockIcon = promotes};
}

class Settings : public ::testing::Test
{
protected:
    QStringList log;
    VirtualClock clock;
    FakeApplicationWindows windows{log};
    FakeActivationPolicy policy{log};
    bool canOpenFirst = true;
    SettingsWindow settings{windows, policy, clock, [this] {
                                log << QStringLiteral("open first");
                                return canOpenFirst;
                            }};

    void registerAction()
    {
        settings.registerOpenAction([this] { log << QStringLiteral("open"); });
    }
    QStringList takeLog() { return std::exchange(log, {}); }
    void close(std::optional<ApplicationWindow::Id> window)
    {
        windows.close(window);
        QCoreApplication::processEvents();
    }
};

// --- Opening

TEST_F(Settings, openByTheRegisteredActionWithAWaitBeforeAndAfter)
{
    registerAction();
    windows.list = {settingsWindow()};
    settings.requestOpen();
    EXPECT_THAT(texts(takeLog()), ElementsAre("observe", "regular"));
    clock.advance(99ms);
    EXPECT_THAT(texts(takeLog()), ElementsAre());
    clock.advance(1ms);
    EXPECT_THAT(texts(takeLog()), ElementsAre("activate application", "open"));
    clock.advance(199ms);
    EXPECT_THAT(texts(takeLog()), ElementsAre());
    clock.advance(1ms);
    EXPECT_THAT(texts(takeLog()), ElementsAre("key and front 1", "front regardless 1"));
}

TEST_F(Settings, thatAreClosedBeforeTheSecondWaitIsOverStayClosed)
{
    registerAction();
    windows.list = {settingsWindow()};
    settings.requestOpen();
    clock.advance(150ms);
    takeLog();
    close(settingsId);
    windows.list = {settingsWindow(false)};
    clock.advance(10s);
    EXPECT_THAT(texts(takeLog()), Not(Contains("key and front 1")));
    EXPECT_FALSE(settings.settingsRequested());
}

TEST_F(Settings, thatAreAlreadyAmongTheRunningProgramsAreNotMadeSoAgain)
{
    registerAction();
    policy.kind = Kind::regular;
    settings.requestOpen();
    clock.advance(300ms);
    EXPECT_THAT(texts(log), ElementsAre("observe", "activate application", "open"));
}

TEST_F(Settings, whoseWindowDoesNotComeAreLeftAtThat)
{
    registerAction();
    settings.requestOpen();
    clock.advance(10s);
    EXPECT_THAT(texts(log), ElementsAre("observe", "regular", "activate application", "open"));
    EXPECT_TRUE(settings.settingsRequested());
}

TEST_F(Settings, openForTheFirstTimeByTheirMakerAndThenByTheActionThatAppears)
{
    settings.requestOpen(PendingSection::accessibility);
    EXPECT_THAT(texts(takeLog()),
                ElementsAre("observe", "regular", "activate application", "open first"));
    EXPECT_EQ(settings.takePendingSection(), std::nullopt);

    windows.list = {settingsWindow()};
    registerAction();
    EXPECT_EQ(settings.takePendingSection(), PendingSection::accessibility);
    clock.advance(300ms);
    EXPECT_THAT(texts(log), ElementsAre("activate application", "open", "key and front 1",
                                        "front regardless 1"));
}

TEST_F(Settings, anActionThatComesWithoutARequestOpensNothing)
{
    registerAction();
    clock.advance(1s);
    EXPECT_THAT(texts(log), ElementsAre());
    settings.requestOpen();
    clock.advance(1s);
    takeLog();
    registerAction();
    clock.advance(1s);
    EXPECT_THAT(texts(log), ElementsAre());
}

TEST_F(Settings, thatCannotBeOpenedAreALineInTheLogAndNothingElse)
{
    static QStringList messages;
    messages.clear();
    canOpenFirst = false;
    const auto before = qInstallMessageHandler(
        [](QtMsgType, const QMessageLogContext&, const QString& text) { messages << text; });
    settings.requestOpen();
    qInstallMessageHandler(before);
    EXPECT_THAT(texts(messages), ElementsAre("[Zelvane] could not open the Settings scene"));
    clock.advance(1s);
    EXPECT_THAT(texts(takeLog()),
                ElementsAre("observe", "regular", "activate application", "open first"));
}

TEST_F(Settings, theSectionOfARequestIsTakenOnce)
{
    registerAction();
    settings.requestOpen(PendingSection::accessibility);
    EXPECT_EQ(settings.takePendingSection(), PendingSection::accessibility);
    EXPECT_EQ(settings.takePendingSection(), std::nullopt);
    settings.requestOpen(PendingSection::accessibility);
    settings.requestOpen();
    EXPECT_EQ(settings.takePendingSection(), std::nullopt);
}

TEST_F(Settings, mayGoWhileTheyAreBeingOpened)
{
    {
        SettingsWindow gone(windows, policy, clock, {});
        gone.registerOpenAction([this] { log << QStringLiteral("open"); });
        gone.requestOpen();
        takeLog();
    }
    clock.advance(1s);
    EXPECT_THAT(texts(log), ElementsAre());
}

// --- Finding

TEST(IsSettingsWindow, byEitherIdentifierEvenWhenItDoesNotShow)
{
    EXPECT_TRUE(SettingsWindow::isSettingsWindow(settingsWindow(false)));
    EXPECT_TRUE(SettingsWindow::isSettingsWindow(
        {.id = 1, .identifier = QStringLiteral("com_apple_SwiftUI_Settings_window")}));
    EXPECT_FALSE(SettingsWindow::isSettingsWindow(
        {.id = 1, .identifier = QStringLiteral("com.apple.SwiftUI.Settings.other")}));
}

TEST(IsSettingsWindow, byTheTitleOfAVisibleTitledWindow)
{
    const auto titled = [](const char16_t* title, bool visible, bool hasBar) {
        return ApplicationWindow{
            .id = 1, .title = QString::fromUtf16(title), .isVisible = visible, .isTitled = hasBar};
    };
    EXPECT_TRUE(SettingsWindow::isSettingsWindow(titled(u"Zelvane SETTINGS", true, true)));
    EXPECT_TRUE(SettingsWindow::isSettingsWindow(titled(u"Preferences", true, true)));
    EXPECT_FALSE(SettingsWindow::isSettingsWindow(titled(u"Settings", false, true)));
    EXPECT_FALSE(SettingsWindow::isSettingsWindow(titled(u"Settings", true, false)));
    EXPECT_FALSE(SettingsWindow::isSettingsWindow(titled(u"Setting", true, true)));
}

TEST(IsSettingsWindow, byTheTypeOfItsContentInThisSpelling)
{
    EXPECT_TRUE(SettingsWindow::isSettingsWindow(
        {.id = 1, .contentTypeName = QStringLiteral("zelvane::SettingsView")}));
    EXPECT_FALSE(SettingsWindow::isSettingsWindow(
        {.id = 1, .contentTypeName = QStringLiteral("settingsView")}));
}

TEST_F(Settings, areTheFirstWindowThatIsOne)
{
    EXPECT_EQ(settings.findSettingsWindow(), std::nullopt);
    windows.list = {panel(popupId, false),
                    {.id = 7, .contentTypeName = QStringLiteral("SettingsView")},
                    settingsWindow()};
    EXPECT_EQ(settings.findSettingsWindow()->id, 7);
}

// --- Bringing to the front and hiding

TEST_F(Settings, comeToTheFrontOnlyIfTheyShow)
{
    EXPECT_FALSE(settings.bringSettingsToFront());
    windows.list = {settingsWindow(false)};
    EXPECT_FALSE(settings.bringSettingsToFront());
    EXPECT_FALSE(settings.settingsRequested());
    EXPECT_THAT(texts(takeLog()), ElementsAre());

    windows.list = {settingsWindow()};
    EXPECT_TRUE(settings.bringSettingsToFront());
    EXPECT_TRUE(settings.settingsRequested());
    EXPECT_THAT(texts(log), ElementsAre("regular", "key and front 1", "front regardless 1"));
}

TEST_F(Settings, hidingTakesOutTheWindowsOfBothNamesAndNoOther)
{
    registerAction();
    settings.requestOpen();
    clock.advance(300ms);
    takeLog();
    windows.list = {settingsWindow(),
                    {.id = 8, .contentTypeName = QStringLiteral("SettingsView")},
                    {.id = 9, .identifier = QStringLiteral("com_apple_SwiftUI_Settings_window")}};
    settings.hideSettings();
    EXPECT_FALSE(settings.settingsRequested());
    EXPECT_THAT(texts(log.first(2)), ElementsAre("order out 1", "order out 9"));
}

// --- The activation policy

TEST_F(Settings, makeTheProgramRegularWhileTheyAreWantedAndNotYetThere)
{
    registerAction();
    settings.requestOpen();
    settings.updateActivationPolicy();
    EXPECT_EQ(policy.kind, Kind::regular);
}

TEST_F(Settings, closingThemWithNoOtherWindowUpMakesTheProgramAnAccessory)
{
    registerAction();
    settings.installPolicyObservers();
    settings.requestOpen();
    windows.list = {settingsWindow()};
    clock.advance(300ms);
    takeLog();
    close(settingsId);
    EXPECT_FALSE(settings.settingsRequested());
    EXPECT_EQ(policy.kind, Kind::accessory);
    EXPECT_THAT(texts(log), ElementsAre("accessory"));
}

TEST_F(Settings, aVisibleManualWindowKeepsTheProgramRegularAfterTheyClose)
{
    registerAction();
    settings.installPolicyObservers();
    settings.requestOpen();
    windows.list = {settingsWindow(), panel(manualId, true)};
    clock.advance(300ms);
    takeLog();
    close(settingsId);
    EXPECT_EQ(policy.kind, Kind::regular);
    EXPECT_THAT(texts(log), ElementsAre());
}

TEST_F(Settings, aVisibleResultPopupDoesNotKeepTheProgramRegular)
{
    registerAction();
    settings.installPolicyObservers();
    settings.requestOpen();
    windows.list = {settingsWindow(), panel(popupId, false)};
    clock.advance(300ms);
    close(settingsId);
    EXPECT_EQ(policy.kind, Kind::accessory);
}

TEST_F(Settings, theClosingOfAnotherWindowLeavesTheRequestForThemAlone)
{
    registerAction();
    settings.requestOpen();
    windows.list = {settingsWindow(), panel(manualId, true)};
    close(manualId);
    close(std::nullopt);
    EXPECT_TRUE(settings.settingsRequested());
}

TEST_F(Settings, whoseContentHasGoneAreNoLongerWanted)
{
    registerAction();
    settings.requestOpen();
    settings.contentDisappeared();
    EXPECT_FALSE(settings.settingsRequested());
    EXPECT_EQ(policy.kind, Kind::accessory);
}

struct PolicyCase
{
    const char* name;
    QList<ApplicationWindow> windows;
    std::optional<ApplicationWindow::Id> closing;
    Kind kind;
};

void PrintTo(const PolicyCase& example, std::ostream* out)
{
    *out << example.name;
}

class PolicyOver : public Settings, public ::testing::WithParamInterface<PolicyCase>
{
};

TEST_P(PolicyOver, itsWindows)
{
    windows.list = GetParam().windows;
    policy.kind = GetParam().kind == Kind::regular ? Kind::accessory : Kind::regular;
    settings.updateActivationPolicy(GetParam().closing);
    EXPECT_EQ(policy.kind, GetParam().kind);
    takeLog();
    settings.updateActivationPolicy(GetParam().closing);
    EXPECT_THAT(texts(log), ElementsAre());
}

ApplicationWindow ordinary()
{
    return {.id = 5, .isVisible = true, .isTitled = true, .canBecomeMain = true};
}

ApplicationWindow changed(ApplicationWindow window, void (*change)(ApplicationWindow&))
{
    change(window);
    return window;
}

INSTANTIATE_TEST_SUITE_P(
    Each, PolicyOver,
    ::testing::Values(
        PolicyCase{"none", {}, std::nullopt, Kind::accessory},
        PolicyCase{"ordinary", {ordinary()}, std::nullopt, Kind::regular},
        PolicyCase{"closing", {ordinary()}, 5, Kind::accessory},
        PolicyCase{"hidden",
                   {changed(ordinary(), [](ApplicationWindow& w) { w.isVisible = false; })},
                   std::nullopt,
                   Kind::accessory},
        PolicyCase{"justBelowFloating",
                   {changed(ordinary(), [](ApplicationWindow& w) { w.level = 2; })},
                   std::nullopt,
                   Kind::regular},
        PolicyCase{"floating",
                   {changed(ordinary(), [](ApplicationWindow& w) { w.level = 3; })},
                   std::nullopt,
                   Kind::accessory},
        PolicyCase{"untitled",
                   {changed(ordinary(), [](ApplicationWindow& w) { w.isTitled = false; })},
                   std::nullopt,
                   Kind::accessory},
        PolicyCase{"neverMain",
                   {changed(ordinary(), [](ApplicationWindow& w) { w.canBecomeMain = false; })},
                   std::nullopt,
                   Kind::accessory},
        PolicyCase{"promotingPanel", {panel(manualId, true)}, std::nullopt, Kind::regular},
        PolicyCase{"closingPromotingPanel", {panel(manualId, true)}, manualId, Kind::accessory},
        PolicyCase{"quietPanel", {panel(popupId, false)}, std::nullopt, Kind::accessory},
        PolicyCase{"promotingPanelBehindAnother",
                   {panel(popupId, false), panel(manualId, true)},
                   std::nullopt,
                   Kind::regular},
        PolicyCase{"settings", {settingsWindow()}, std::nullopt, Kind::regular},
        PolicyCase{"hiddenSettings", {settingsWindow(false)}, std::nullopt, Kind::accessory}),
    [](const auto& info) { return info.param.name; });

TEST_F(Settings, thePolicyFollowsTheWindowsOnceItIsWatched)
{
    settings.installPolicyObservers();
    settings.installPolicyObservers();
    EXPECT_THAT(texts(takeLog()), ElementsAre("observe"));
    windows.list = {ordinary()};
    windows.becomeKey();
    EXPECT_THAT(texts(takeLog()), ElementsAre("regular"));
    windows.list = {};
    QCoreApplication::processEvents();
    EXPECT_THAT(texts(takeLog()), ElementsAre("accessory"));
    windows.list = {ordinary()};
    close(std::nullopt);
    EXPECT_THAT(texts(takeLog()), ElementsAre("regular"));
    close(5);
    EXPECT_THAT(texts(takeLog()), ElementsAre("accessory"));
}

} // namespace
} // namespace zelvane::test
