#include "desktop/AccessibilityPermission.h"
#include "desktop/FakeDesktop.h"
#include "support/VirtualClock.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace zelvane::test {
namespace {

using namespace std::chrono_literals;
using State = AccessibilityPermission::State;

class Permission : public ::testing::Test
{
protected:
    QStringList log;
    VirtualClock clock;
    OverlayUserDefaults defaults;
    FakeAccessibilityPlatform platform{log};
    AccessibilityPermission permission{platform, defaults, clock};
};

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

TEST_F(Permission, promptsOnceInTwoAndAHalfSeconds)
{
    permission.requestPrompt();
    clock.advance(2499ms);
    permission.requestPrompt();
    EXPECT_EQ(log.size(), 1);
    clock.advance(1ms);
    permission.requestPrompt();
    EXPECT_EQ(log.size(), 2);
}

} // namespace
} // namespace zelvane::test
