#include "desktop/linux/X11AccessibilityPlatform.h"

#include "support/DesktopSession.h"
#include "support/QtPrinters.h"

#include <gtest/gtest.h>

namespace zelvane::test {
namespace {

X11AccessibilityPlatform::Actions noActions()
{
    return {[] { FAIL(); }, [] { FAIL(); }};
}

/// Has every key with every modifier grabbed by another program.
class GrabOfEverything
{
public:
    explicit GrabOfEverything(const QByteArray& display)
        : m_connection(*XcbConnection::open(display, {}))
    {
        const auto grab =
            xcb_grab_key_checked(m_connection->get(), 0, m_connection->root(), XCB_MOD_MASK_ANY,
                                 XCB_GRAB_ANY, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
        const XcbOwned<xcb_generic_error_t> error(xcb_request_check(m_connection->get(), grab));
        EXPECT_FALSE(error);
    }

private:
    std::unique_ptr<XcbConnection> m_connection;
};

TEST(X11AccessibilityPlatform, aServerWithItsExtensionsIsTrustedAndLetsAGrabBeMade)
{
    const DesktopSession desktop({.windowManager = false});
    const auto session = X11Session::open(desktop.display());
    ASSERT_TRUE(session);
    X11AccessibilityPlatform platform(session->get(), noActions());
    EXPECT_TRUE(platform.isProcessTrusted());
    EXPECT_TRUE(platform.probeEventTap());
    EXPECT_TRUE(platform.probeEventTap());
}

TEST(X11AccessibilityPlatform, theGrabIsRemovedAgain)
{
    const DesktopSession desktop({.windowManager = false});
    const auto session = X11Session::open(desktop.display());
    ASSERT_TRUE(session);
    X11AccessibilityPlatform platform(session->get(), noActions());
    ASSERT_TRUE(platform.probeEventTap());
    (*session)->connection().sync();
    const GrabOfEverything possible(desktop.display());
}

TEST(X11AccessibilityPlatform, aServerOnWhichNoGrabCanBeMadeIsTrustedAndTheProbeFails)
{
    const DesktopSession desktop({.windowManager = false});
    const auto session = X11Session::open(desktop.display());
    ASSERT_TRUE(session);
    X11AccessibilityPlatform platform(session->get(), noActions());
    {
        const GrabOfEverything blocked(desktop.display());
        EXPECT_TRUE(platform.isProcessTrusted());
        EXPECT_FALSE(platform.probeEventTap());
    }
    EXPECT_TRUE(platform.probeEventTap());
}

TEST(X11AccessibilityPlatform, withoutASessionNothingIsTrusted)
{
    int prompts = 0;
    int relaunches = 0;
    X11AccessibilityPlatform platform(nullptr, {[&] { ++prompts; }, [&] { ++relaunches; }});
    EXPECT_FALSE(platform.isProcessTrusted());
    EXPECT_FALSE(platform.probeEventTap());
    platform.showPrompt();
    EXPECT_EQ(prompts, 1);
    platform.relaunch();
    EXPECT_EQ(relaunches, 1);
}

TEST(X11AccessibilityPlatform, aLostServerIsNotTrusted)
{
    DesktopSession desktop({.windowManager = false});
    const auto session = X11Session::open(desktop.display());
    ASSERT_TRUE(session);
    X11AccessibilityPlatform platform(session->get(), noActions());
    desktop.killServer();
    EXPECT_FALSE(platform.probeEventTap());
    EXPECT_FALSE(platform.isProcessTrusted());
}

} // namespace
} // namespace zelvane::test
