#include "ui/shell/WidgetActivationPolicy.h"
#include "ui/shell/WidgetWindows.h"

#include "desktop/SettingsWindow.h"
#include "ui/UiFixture.h"
#include "ui/panel/TranslatorKeyablePanel.h"

#include <gtest/gtest.h>

#include <QMenu>
#include <QTest>

namespace zelvane::test {
namespace {

using Kind = ActivationPolicy::Kind;

class WindowsOfTheProgram : public UiTest
{
protected:
    WindowsOfTheProgram()
    {
        // Windows of earlier tests that were to go at the next turn of an event loop.
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    /// What an observer hears.
    void listen()
    {
        own.addObserver({.becameKeyOrMain = [this] { heard << QStringLiteral("key"); },
                         .willClose =
                             [this](std::optional<ApplicationWindow::Id> id) {
                                 heard << QStringLiteral("close %1").arg(id.value_or(0));
                             }});
    }

    WidgetWindows own{windows};
    WidgetActivationPolicy policy{own, windows};
    QStringList heard;
};

TEST_F(WindowsOfTheProgram, areDescribedAsTheyAre)
{
    QWidget ordinary;
    ordinary.setObjectName(QStringLiteral("an identifier"));
    ordinary.setWindowTitle(QStringLiteral("A title"));
    const ApplicationWindow expected{.id = own.idOf(ordinary),
                                     .identifier = QStringLiteral("an identifier"),
                                     .title = QStringLiteral("A title"),
                                     .contentTypeName = QStringLiteral("QWidget"),
                                     .isVisible = false,
                                     .isTitled = true,
                                     .level = 0,
                                     .canBecomeMain = true};
    EXPECT_EQ(own.windows(), QList<ApplicationWindow>{expected});
    ordinary.show();
    EXPECT_TRUE(own.windows().first().isVisible);
}

TEST_F(WindowsOfTheProgram, panelsFloatWithoutATitleBarAndTellWhetherTheyPromote)
{
    TranslatorKeyablePanel panel(theme, windows, PanelRole::floating);
    ApplicationWindow described = own.describe(panel);
    EXPECT_EQ(described.level, ApplicationWindow::floatingLevel);
    EXPECT_FALSE(described.isTitled);
    EXPECT_FALSE(described.canBecomeMain);
    EXPECT_EQ(described.promotesDockIcon, false);
    panel.setPromotesDockIcon(true);
    EXPECT_EQ(own.describe(panel).promotesDockIcon, true);
}

TEST_F(WindowsOfTheProgram, menusAndChildrenAreNone)
{
    QWidget ordinary;
    const QWidget child(&ordinary);
    QMenu menu;
    menu.addAction(QStringLiteral("entry"));
    menu.popup({});
    EXPECT_EQ(own.windows().size(), 1);
}

TEST_F(WindowsOfTheProgram, stayInTheOrderInWhichTheyWereFirstSeen)
{
    QWidget first;
    const auto firstId = own.idOf(first);
    QWidget second;
    const auto secondId = own.idOf(second);
    first.hide();
    ASSERT_EQ(own.windows().size(), 2);
    EXPECT_EQ(own.windows()[0].id, firstId);
    EXPECT_EQ(own.windows()[1].id, secondId);
}

TEST_F(WindowsOfTheProgram, tellWhenTheyAppearAndGo)
{
    QWidget window;
    const auto id = own.idOf(window);
    listen();
    window.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
    EXPECT_TRUE(heard.contains(QStringLiteral("key")));
    heard.clear();
    window.close();
    EXPECT_EQ(heard, QStringList{QStringLiteral("close %1").arg(id)});
}

TEST_F(WindowsOfTheProgram, tellWhenOneIsDestroyedWhileItShows)
{
    auto window = std::make_unique<TranslatorKeyablePanel>(theme, windows, PanelRole::floating);
    const auto id = own.idOf(*window);
    window->show();
    listen();
    window.reset();
    EXPECT_EQ(heard, QStringList{QStringLiteral("close %1").arg(id)});
    EXPECT_TRUE(own.windows().isEmpty());
}

TEST_F(WindowsOfTheProgram, areBroughtToTheFrontAndTakenOut)
{
    QWidget window;
    const auto id = own.idOf(window);
    own.makeKeyAndOrderFront(id);
    EXPECT_TRUE(window.isVisible());
    EXPECT_EQ(windows.activations, 1);
    own.orderOut(id);
    EXPECT_FALSE(window.isVisible());
    own.orderFrontRegardless(id);
    EXPECT_TRUE(window.isVisible());
}

TEST_F(WindowsOfTheProgram, thatHaveGoneAreLeftAlone)
{
    auto window = std::make_unique<QWidget>();
    const auto id = own.idOf(*window);
    window.reset();
    own.makeKeyAndOrderFront(id);
    own.orderFrontRegardless(id);
    own.orderOut(id);
    EXPECT_EQ(windows.activations, 0);
}

TEST_F(WindowsOfTheProgram, thePolicyTakesThoseThatUsersWorkInOutOfTheTaskbarAndPutsThemBack)
{
    QWidget ordinary;
    ordinary.setWindowTitle(QStringLiteral("ordinary"));
    TranslatorKeyablePanel manual(theme, windows, PanelRole::floating);
    manual.setWindowTitle(QStringLiteral("manual"));
    manual.setPromotesDockIcon(true);
    TranslatorKeyablePanel popup(theme, windows, PanelRole::floating);
    popup.setWindowTitle(QStringLiteral("popup"));
    for (QWidget* widget : std::initializer_list<QWidget*>{&ordinary, &manual, &popup}) {
        widget->show();
    }
    windows.skipping.clear();

    policy.set(Kind::accessory);
    EXPECT_EQ(policy.current(), Kind::accessory);
    std::ranges::sort(windows.skipping);
    EXPECT_EQ(windows.skipping, (QList<std::pair<QString, bool>>{{QStringLiteral("manual"), true},
                                                                 {QStringLiteral("ordinary"), true},
                                                                 {QStringLiteral("popup"), true}}));
    windows.skipping.clear();
    policy.set(Kind::regular);
    std::ranges::sort(windows.skipping);
    EXPECT_EQ(windows.skipping,
              (QList<std::pair<QString, bool>>{{QStringLiteral("manual"), false},
                                               {QStringLiteral("ordinary"), false},
                                               {QStringLiteral("popup"), true}}));
}

TEST_F(WindowsOfTheProgram, decideThePolicyAsTheyComeAndGo)
{
    SettingsWindow settings(own, policy, clock, {});
    policy.set(Kind::accessory);
    settings.installPolicyObservers();
    {
        TranslatorKeyablePanel popup(theme, windows, PanelRole::floating);
        popup.show();
        QCoreApplication::processEvents();
        EXPECT_EQ(policy.current(), Kind::accessory);

        TranslatorKeyablePanel manual(theme, windows, PanelRole::floating);
        manual.setPromotesDockIcon(true);
        manual.show();
        EXPECT_EQ(policy.current(), Kind::regular);
        manual.hide();
        EXPECT_EQ(policy.current(), Kind::accessory);

        QWidget ordinary;
        ordinary.show();
        EXPECT_EQ(policy.current(), Kind::regular);
    }
    QCoreApplication::processEvents();
    EXPECT_EQ(policy.current(), Kind::accessory);
}

TEST_F(WindowsOfTheProgram, mayGoAfterTheOneWhoDecidesThePolicy)
{
    auto settings = std::make_unique<SettingsWindow>(own, policy, clock, std::function<bool()>());
    settings->installPolicyObservers();
    settings->installCloseObserver();
    auto open = std::make_unique<QWidget>();
    open->show();
    EXPECT_EQ(policy.current(), Kind::regular);
    settings.reset();
    // Whoever decides has gone: nothing is decided any more.
    open.reset();
    QWidget another;
    another.show();
    EXPECT_EQ(policy.current(), Kind::regular);
}

} // namespace
} // namespace zelvane::test
