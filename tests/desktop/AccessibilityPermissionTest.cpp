#include "desktop/AccessibilityPermission.h"

#include "desktop/FakeDesktop.h"
#include "desktop/FakeShell.h"
#include "support/VirtualClock.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace zelvane::test {
namespace {

using namespace std::chrono_literals;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::Not;
using State = AccessibilityPermission::State;
using PendingSection = SettingsWindow::PendingSection;

const QString prompt = QStringLiteral("permission prompt");
const QString relaunchFlag = QStringLiteral("Zelvane.promptAccessibilityOnLaunch");

/// What the program logs, instead of printing it.
class LoggedLines
{
public:
    LoggedLines() { s_lines.clear(); }
    ~LoggedLines() { qInstallMessageHandler(m_before); }
    Q_DISABLE_COPY_MOVE(LoggedLines)

    [[nodiscard]] static QStringList lines() { return s_lines; }

private:
    static inline QStringList s_lines;
    QtMessageHandler m_before = qInstallMessageHandler(
        [](QtMsgType, const QMessageLogContext& context, const QString& text) {
            s_lines << QString::fromLatin1(context.category) + QStringLiteral(": ") + text;
        });
};

class Permission : public ::testing::Test
{
protected:
    [[nodiscard]] int prompts() const { return int(log.count(prompt)); }

    QStringList log;
    VirtualClock clock;
    OverlayUserDefaults defaults;
    FakeApplicationWindows windows{log};
    FakeActivationPolicy policy{log};
    FakeAccessibilityPlatform platform{log};
    SettingsWindow settings{windows, policy, clock, [this] {
                                log << QStringLiteral("settings");
                                return true;
                            }};
    AccessibilityPermission permission{platform, settings, defaults, clock};
};

// --- The state

TEST_F(Permission, isGrantedOnlyIfAListenerCanReallyBeMade)
{
    EXPECT_EQ(permission.currentState(), State::granted);
    EXPECT_TRUE(permission.isEffectivelyTrusted());
    platform.tapWorks = false;
    EXPECT_EQ(permission.currentState(), State::stale);
    EXPECT_FALSE(permission.isEffectivelyTrusted());
}

TEST_F(Permission, withoutTrustNoListenerIsTried)
{
    platform.trusted = false;
    EXPECT_EQ(permission.currentState(), State::denied);
    EXPECT_FALSE(permission.isEffectivelyTrusted());
    EXPECT_EQ(platform.probes, 0);
}

// --- The request

TEST_F(Permission, promptsOnceInTwoAndAHalfSeconds)
{
    permission.requestPrompt();
    clock.advance(2499ms);
    {
        const LoggedLines logged;
        permission.requestPrompt();
        EXPECT_THAT(texts(logged.lines()), ElementsAre("org.zelvane.desk.accessibility: skipping "
                                                       "duplicate Accessibility prompt"));
    }
    EXPECT_EQ(prompts(), 1);
    clock.advance(1ms);
    permission.requestPrompt();
    EXPECT_EQ(prompts(), 2);
}

// --- The launch

TEST_F(Permission, aLaunchWithThePermissionPresentOpensNothing)
{
    permission.promptOnLaunchIfNeeded();
    clock.advance(10s);
    EXPECT_THAT(texts(log), ElementsAre());
    EXPECT_FALSE(settings.settingsRequested());
}

TEST_F(Permission, aLaunchWithoutItOpensSettingsAtOnceAndPromptsAfterSevenTenths)
{
    platform.trusted = false;
    permission.promptOnLaunchIfNeeded();
    EXPECT_THAT(texts(log), Contains("settings"));
    EXPECT_FALSE(permission.focusAccessibilitySection());
    clock.advance(699ms);
    EXPECT_EQ(prompts(), 0);
    clock.advance(1ms);
    EXPECT_EQ(prompts(), 1);
    clock.advance(1min);
    EXPECT_EQ(prompts(), 1);
}

TEST_F(Permission, theDelayOfThePromptIsLogged)
{
    platform.trusted = false;
    permission.promptOnLaunchIfNeeded();
    const LoggedLines logged;
    clock.advance(150ms);
    EXPECT_THAT(texts(logged.lines()), ElementsAre("org.zelvane.desk.accessibility: scheduling "
                                                   "Accessibility prompt in 0.550000s"));
}

TEST_F(Permission, thatArrivesBeforeThePromptIsArmedArmsNone)
{
    platform.trusted = false;
    permission.promptOnLaunchIfNeeded();
    clock.advance(149ms);
    platform.trusted = true;
    clock.advance(1min);
    EXPECT_EQ(prompts(), 0);
}

TEST_F(Permission, thatArrivesBeforeThePromptFiresKeepsItAway)
{
    platform.trusted = false;
    permission.promptOnLaunchIfNeeded();
    clock.advance(699ms);
    platform.trusted = true;
    clock.advance(1min);
    EXPECT_EQ(prompts(), 0);
}

TEST_F(Permission, thatIsStalePromptsNever)
{
    platform.tapWorks = false;
    permission.promptFromOnboarding();
    clock.advance(1min);
    EXPECT_EQ(prompts(), 0);
    EXPECT_TRUE(permission.focusAccessibilitySection());
}

TEST_F(Permission, afterARelaunchTheFlagGoesAndTheLaunchIsLikeAnyOther)
{
    permission.relaunch();
    EXPECT_EQ(defaults.boolean(relaunchFlag), true);
    EXPECT_THAT(texts(log), ElementsAre("relaunch"));
    log.clear();

    permission.promptOnLaunchIfNeeded();
    EXPECT_EQ(defaults.value(relaunchFlag), std::nullopt);
    clock.advance(10s);
    EXPECT_THAT(texts(log), ElementsAre());

    defaults.setValue(relaunchFlag, true);
    platform.trusted = false;
    permission.promptOnLaunchIfNeeded();
    EXPECT_EQ(defaults.value(relaunchFlag), std::nullopt);
    clock.advance(700ms);
    EXPECT_EQ(prompts(), 1);
}

// --- The introduction

TEST_F(Permission, theEndOfTheIntroductionShowsTheSectionAndPromptsAfterAMomentLonger)
{
    platform.trusted = false;
    permission.promptFromOnboarding();
    EXPECT_TRUE(permission.focusAccessibilitySection());
    settings.registerOpenAction([] {});
    EXPECT_EQ(settings.takePendingSection(), PendingSection::accessibility);
    clock.advance(1649ms);
    EXPECT_EQ(prompts(), 0);
    clock.advance(1ms);
    EXPECT_EQ(prompts(), 1);
    EXPECT_TRUE(permission.focusAccessibilitySection());
}

TEST_F(Permission, presentAtTheEndOfTheIntroductionNothingIsOpened)
{
    permission.promptFromOnboarding();
    clock.advance(10s);
    EXPECT_THAT(texts(log), ElementsAre());
    EXPECT_FALSE(permission.focusAccessibilitySection());
}

TEST_F(Permission, thatArrivesTakesTheSectionOutOfFocus)
{
    platform.trusted = false;
    permission.promptFromOnboarding();
    clock.advance(1s);
    platform.trusted = true;
    clock.advance(1s);
    EXPECT_FALSE(permission.focusAccessibilitySection());
}

TEST_F(Permission, noPromptIsArmedWhileTheIntroductionIsOpen)
{
    platform.trusted = false;
    permission.setOnboardingVisible(true);
    permission.schedulePrompt();
    clock.advance(1min);
    EXPECT_EQ(prompts(), 0);
    permission.setOnboardingVisible(false);
    permission.schedulePrompt();
    clock.advance(450ms);
    EXPECT_EQ(prompts(), 1);
}

TEST_F(Permission, anArmedPromptFindsTheIntroductionOpenAndCanBeArmedAgain)
{
    platform.trusted = false;
    permission.promptOnLaunchIfNeeded();
    clock.advance(699ms);
    permission.setOnboardingVisible(true);
    clock.advance(1min);
    EXPECT_EQ(prompts(), 0);
    permission.setOnboardingVisible(false);
    permission.schedulePrompt();
    clock.advance(549ms);
    EXPECT_EQ(prompts(), 0);
    clock.advance(1ms);
    EXPECT_EQ(prompts(), 1);
}

// --- Settings that appear

TEST_F(Permission, settingsThatAppearAgainPromptNoSecondTime)
{
    platform.trusted = false;
    permission.schedulePrompt();
    permission.schedulePrompt();
    clock.advance(450ms);
    EXPECT_EQ(prompts(), 1);
    clock.advance(1min);
    permission.schedulePrompt();
    clock.advance(1min);
    EXPECT_EQ(prompts(), 1);
}

TEST_F(Permission, foundPresentWhenSettingsAppearArmsNothing)
{
    platform.trusted = false;
    permission.promptFromOnboarding();
    platform.trusted = true;
    permission.schedulePrompt();
    EXPECT_FALSE(permission.focusAccessibilitySection());
    platform.trusted = false;
    clock.advance(250ms);
    clock.advance(1400ms);
    EXPECT_EQ(prompts(), 1);
}

TEST_F(Permission, mayGoWhileAPromptIsArmed)
{
    platform.trusted = false;
    {
        AccessibilityPermission gone(platform, settings, defaults, clock);
        gone.schedulePrompt();
    }
    clock.advance(1min);
    EXPECT_THAT(texts(log), Not(Contains("permission prompt")));
}

} // namespace
} // namespace zelvane::test
