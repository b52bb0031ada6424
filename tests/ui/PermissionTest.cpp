#include "ui/permission/PermissionModel.h"
#include "ui/permission/PermissionView.h"

#include "foundation/Completion.h"
#include "ui/AccessibleWalk.h"
#include "ui/UiFixture.h"

#include <gtest/gtest.h>

#include <QSignalSpy>
#include <QTest>

namespace zelvane::test {
namespace {

using namespace std::chrono_literals;
using State = AccessibilityPermission::State;

class FakeInspector final : public SessionInspector
{
public:
    [[nodiscard]] QCoro::Task<SessionCapabilities> inspect() override
    {
        ++looks;
        if (pending) {
            const Completion<void> gate = *pending;
            co_await gate.result();
        }
        const SessionCapabilities answer = found;
        co_return answer;
    }

    SessionCapabilities found{SessionKind::x11,        Availability::available,
                              Availability::available, Availability::available,
                              Availability::available, Availability::available};
    std::optional<Completion<void>> pending;
    int looks = 0;
};

class PermissionPage : public UiTest
{
protected:
    [[nodiscard]] Availability of(const QString& title) const
    {
        for (const CapabilityRow& row : model.rows()) {
            if (row.title == title) {
                return row.availability;
            }
        }
        return Availability::unknown;
    }

    FakeInspector inspector;
    QProperty<State> state{State::granted};
    QStringList log;
    PermissionModel model{&state,
                          inspector,
                          clock,
                          {[this] { log << QStringLiteral("relaunch"); },
                           [this](const QString& text) { log << text; },
                           [this] { log << QStringLiteral("request"); }}};
};

TEST_F(PermissionPage, knowsNothingOfTheSessionBeforeItHasLooked)
{
    EXPECT_EQ(inspector.looks, 0);
    EXPECT_EQ(of(QStringLiteral("Keyring")), Availability::unknown);
    EXPECT_EQ(model.rows()[5].state, QStringLiteral("Checking…"));
    model.setShown(true);
    EXPECT_EQ(of(QStringLiteral("Keyring")), Availability::available);
    EXPECT_EQ(model.rows()[5].state, QStringLiteral("Available"));
}

TEST_F(PermissionPage, looksEveryThreeSecondsWhileItIsOnTheScreen)
{
    model.setShown(true);
    clock.advance(6s);
    EXPECT_EQ(inspector.looks, 3);
    model.setShown(false);
    clock.advance(1min);
    EXPECT_EQ(inspector.looks, 3);
}

TEST_F(PermissionPage, doesNotLookAgainWhileASlowBusStillOwesTheAnswer)
{
    inspector.pending = Completion<void>();
    model.setShown(true);
    clock.advance(1min);
    EXPECT_EQ(inspector.looks, 1);
    const Completion<void> gate = *inspector.pending;
    inspector.pending.reset();
    gate.succeed();
    clock.advance(3s);
    EXPECT_EQ(inspector.looks, 2);
}

TEST_F(PermissionPage, tellsOfAChangeOnce)
{
    model.setShown(true);
    const QSignalSpy changes(&model, &PermissionModel::changed);
    clock.advance(3s);
    EXPECT_EQ(changes.count(), 0);
    inspector.found.secretStore = Availability::missing;
    clock.advance(3s);
    EXPECT_EQ(changes.count(), 1);
    EXPECT_EQ(model.rows()[5].advice,
              QStringLiteral("Install GNOME Keyring, KWallet or KeePassXC. Until then API keys "
                             "can't be stored."));
    state = State::denied;
    EXPECT_EQ(changes.count(), 2);
}

TEST_F(PermissionPage, saysInOneLineWhetherThePermissionIsThere)
{
    EXPECT_EQ(model.headline(), QStringLiteral("Permission granted"));
    EXPECT_FALSE(model.offersRelaunch());
    state = State::denied;
    EXPECT_EQ(model.headline(), QStringLiteral("Permission not granted"));
    EXPECT_TRUE(model.offersRelaunch());
    state = State::stale;
    EXPECT_EQ(model.headline(), QStringLiteral("Permission not granted"));
    EXPECT_TRUE(model.offersRelaunch());
}

TEST_F(PermissionPage, namesAProgramThatKeepsTheKeysWhereAllElseIsThere)
{
    model.setShown(true);
    EXPECT_EQ(of(QStringLiteral("Watching for shortcuts")), Availability::available);
    state = State::stale;
    EXPECT_EQ(of(QStringLiteral("Watching for shortcuts")), Availability::missing);
    EXPECT_EQ(model.rows()[2].advice, QStringLiteral("Another program keeps all keys to itself. "
                                                     "Close it, then relaunch Zelvane Desk."));
}

TEST_F(PermissionPage, offersACommandWhereShortcutsDoNotReach)
{
    model.setShown(true);
    EXPECT_FALSE(model.offersCommand());
    inspector.found.kind = SessionKind::wayland;
    clock.advance(3s);
    EXPECT_TRUE(model.offersCommand());
    EXPECT_EQ(of(QStringLiteral("Session")), Availability::missing);
    model.copyCommand();
    EXPECT_EQ(log, QStringList{QStringLiteral("zelvane-desk trigger 1")});
    EXPECT_TRUE(model.copied());
}

TEST_F(PermissionPage, mayGoWhileItLooks)
{
    inspector.pending = Completion<void>();
    {
        PermissionModel gone(&state, inspector, clock, {[] {}, [](const QString&) {}});
        gone.setShown(true);
    }
    inspector.pending->succeed();
}

// --- The view

TEST_F(PermissionPage, looksAtTheSessionOnlyWhileItShows)
{
    PermissionView view(model, theme);
    EXPECT_EQ(inspector.looks, 0);
    view.show();
    EXPECT_EQ(inspector.looks, 1);
    view.hide();
    clock.advance(1min);
    EXPECT_EQ(inspector.looks, 1);
}

TEST_F(PermissionPage, relaunchesByItsButtonWhichIsThereOnlyIfItMayHelp)
{
    PermissionView view(model, theme);
    view.show();
    TextButton* relaunch = nullptr;
    for (TextButton* button : view.findChildren<TextButton*>()) {
        if (button->text() == QStringLiteral("Relaunch Zelvane Desk")) {
            relaunch = button;
        }
    }
    ASSERT_NE(relaunch, nullptr);
    EXPECT_FALSE(relaunch->isVisible());
    state = State::stale;
    EXPECT_TRUE(relaunch->isVisible());
    QTest::mouseClick(relaunch, Qt::LeftButton);
    EXPECT_EQ(log, QStringList{QStringLiteral("relaunch")});
}

TEST_F(PermissionPage, asksForAMissingPermissionAndLooksAgainAtOnce)
{
    PermissionView view(model, theme);
    view.show();
    TextButton* request = nullptr;
    for (TextButton* button : view.findChildren<TextButton*>()) {
        if (button->text() == QStringLiteral("Request Permission…")) {
            request = button;
        }
    }
    ASSERT_NE(request, nullptr);
    EXPECT_FALSE(request->isVisible());
    for (const State missing : {State::denied, State::stale}) {
        state = missing;
        EXPECT_TRUE(request->isVisible());
    }
    const int before = inspector.looks;
    QTest::mouseClick(request, Qt::LeftButton);
    EXPECT_EQ(log, QStringList{QStringLiteral("request")});
    EXPECT_EQ(inspector.looks, before + 1);
    state = State::granted;
    EXPECT_FALSE(request->isVisible());
}

TEST_F(PermissionPage, copiesTheCommandByItsButton)
{
    inspector.found.kind = SessionKind::wayland;
    PermissionView view(model, theme);
    view.show();
    TextButton* copy = nullptr;
    for (TextButton* button : view.findChildren<TextButton*>()) {
        if (button->text() == QStringLiteral("Copy")) {
            copy = button;
        }
    }
    ASSERT_NE(copy, nullptr);
    ASSERT_TRUE(copy->isVisible());
    QTest::mouseClick(copy, Qt::LeftButton);
    EXPECT_EQ(log, QStringList{QStringLiteral("zelvane-desk trigger 1")});
    EXPECT_EQ(copy->text(), QStringLiteral("Copied"));
}

TEST_F(PermissionPage, hasNamesForEverythingThatUsersActOn)
{
    state = State::stale;
    PermissionView view(model, theme);
    view.show();
    EXPECT_EQ(unnamedControls(view), QStringList());
    EXPECT_TRUE(controlNames(view).contains(QStringLiteral("Relaunch Zelvane Desk")));
    EXPECT_TRUE(controlNames(view).contains(QStringLiteral("Copy")));
}

} // namespace
} // namespace zelvane::test
