#include "desktop/ApplicationShell.h"

#include "desktop/FakeDesktop.h"
#include "desktop/FakeShell.h"
#include "desktop/RetiredModelFolders.h"
#include "support/VirtualClock.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

namespace zelvane::test {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using Kind = ActivationPolicy::Kind;

class Shell : public ::testing::Test
{
protected:
    std::function<void()> step(const char* name)
    {
        return [this, name] { log << QString::fromLatin1(name); };
    }

    QStringList log;
    VirtualClock clock;
    OverlayUserDefaults defaults;
    FakeApplicationWindows windows{log};
    FakeActivationPolicy policy{log};
    FakeAccessibilityPlatform platform{log};
    SettingsWindow settings{windows, policy, clock, [] { return true; }};
    AccessibilityPermission permission{platform, settings, defaults, clock};
    std::optional<ApplicationWindow::Id> onboarding;
    std::optional<ApplicationWindow::Id> manual;
    ApplicationShell shell{windows,
                           policy,
                           settings,
                           permission,
                           {step("menu bar"), step("hosted service"), step("retired models"),
                            step("smart engines"), step("local engines")},
                           {[this] { return onboarding; }, [this] { return manual; }}};
};

TEST_F(Shell, launchesInItsOrder)
{
    shell.didFinishLaunching();
    EXPECT_THAT(texts(log), ElementsAre("accessory", "observe", "menu bar", "hosted service",
                                        "retired models", "smart engines", "local engines"));
}

TEST_F(Shell, closingTheLastWindowNeverQuits)
{
    EXPECT_FALSE(ApplicationShell::shouldTerminateAfterLastWindowClosed());
}

TEST_F(Shell, aReopeningWithNoWindowVisibleOpensNothing)
{
    EXPECT_FALSE(shell.shouldHandleReopen());
    clock.advance(1s);
    EXPECT_THAT(texts(log), ElementsAre("activate application"));
    EXPECT_EQ(policy.kind, Kind::accessory);
}

TEST_F(Shell, aReopeningBringsTheIntroductionToTheFrontBeforeAllElse)
{
    onboarding = 1;
    manual = 2;
    windows.list = {{.id = 1, .isVisible = true}, {.id = 2, .isVisible = true}};
    EXPECT_FALSE(shell.shouldHandleReopen());
    EXPECT_THAT(texts(log),
                ElementsAre("activate application", "activate application", "key and front 1"));
}

TEST_F(Shell, aReopeningBringsTheManualWindowToTheFront)
{
    onboarding = 1;
    manual = 2;
    windows.list = {{.id = 1, .isVisible = false},
                    {.id = 2, .isVisible = true, .level = 3, .promotesDockIcon = true}};
    EXPECT_FALSE(shell.shouldHandleReopen());
    EXPECT_THAT(texts(log), ElementsAre("activate application", "regular", "activate application",
                                        "key and front 2"));
    EXPECT_EQ(policy.kind, Kind::regular);
}

TEST_F(Shell, aReopeningBringsSettingsToTheFrontIfOnlyTheyShow)
{
    manual = 2;
    windows.list = {
        {.id = 2, .isVisible = false, .promotesDockIcon = true},
        {.id = 4, .identifier = QStringLiteral("com.apple.SwiftUI.Settings"), .isVisible = true}};
    EXPECT_FALSE(shell.shouldHandleReopen());
    EXPECT_THAT(texts(log), ElementsAre("activate application", "regular", "key and front 4",
                                        "front regardless 4"));
}

TEST_F(Shell, settingsThatDisappearAreWantedNoLongerAndNeedShowNoSection)
{
    platform.trusted = false;
    permission.promptFromOnboarding();
    EXPECT_TRUE(settings.settingsRequested());
    EXPECT_TRUE(permission.focusAccessibilitySection());
    shell.settingsDisappeared();
    EXPECT_FALSE(settings.settingsRequested());
    EXPECT_FALSE(permission.focusAccessibilitySection());
    EXPECT_EQ(policy.kind, Kind::accessory);
}

TEST(RetiredModels, haveTheseFolders)
{
    EXPECT_THAT(texts(retiredModelFolders()),
                ElementsAre("qwen-lite", "qwen", "lmt60-17b", "eurollm-17b", "hymt2-18b",
                            "marco-mt-14b", "madlad-400-3b", "madlad-7b", "nllb"));
}

TEST(RetiredModels, areDeletedWithAllTheyHoldAndNothingBesidesThem)
{
    const QTemporaryDir folder;
    const QDir support(folder.path());
    ASSERT_TRUE(support.mkpath(QStringLiteral("qwen/deep/down")));
    ASSERT_TRUE(support.mkpath(QStringLiteral("qwen3")));
    ASSERT_TRUE(support.mkpath(QStringLiteral("kept")));
    QFile inKept(support.filePath(QStringLiteral("kept/file")));
    ASSERT_TRUE(inKept.open(QIODevice::WriteOnly));
    QFile plain(support.filePath(QStringLiteral("nllb")));
    ASSERT_TRUE(plain.open(QIODevice::WriteOnly));
    // Somebody has moved the models to another disk.
    ASSERT_TRUE(QFile::link(support.filePath(QStringLiteral("kept")),
                            support.filePath(QStringLiteral("madlad-7b"))));

    deleteRetiredModelFolders(folder.path());
    EXPECT_THAT(texts(support.entryList(QDir::AllEntries | QDir::NoDotAndDotDot)),
                ElementsAre("kept", "qwen3"));
    EXPECT_TRUE(inKept.exists());
}

TEST(RetiredModels, whereThereIsNoFolderNothingHappens)
{
    const QTemporaryDir folder;
    deleteRetiredModelFolders(folder.filePath(QStringLiteral("missing")));
    EXPECT_FALSE(QDir(folder.filePath(QStringLiteral("missing"))).exists());
}

} // namespace
} // namespace zelvane::test
