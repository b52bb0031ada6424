#include "desktop/linux/X11AccessibilityPlatform.h"

#include "support/Await.h"
#include "support/DesktopSession.h"
#include "support/QtPrinters.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>

namespace zelvane::test {
namespace {

TEST(X11AccessibilityPlatform, aServerWithItsExtensionsIsTrustedAndLetsAListenerIn)
{
    const DesktopSession desktop({.windowManager = false});
    const auto session = X11Session::open(desktop.display());
    ASSERT_TRUE(session);
    X11AccessibilityPlatform platform(session->get(), nullptr);
    EXPECT_TRUE(platform.isProcessTrusted());
    EXPECT_TRUE(platform.probeEventTap());
    EXPECT_TRUE(platform.probeEventTap());
}

TEST(X11AccessibilityPlatform, withoutASessionNothingIsTrusted)
{
    int prompts = 0;
    X11AccessibilityPlatform platform(nullptr, [&] { ++prompts; });
    EXPECT_FALSE(platform.isProcessTrusted());
    EXPECT_FALSE(platform.probeEventTap());
    platform.showPrompt();
    EXPECT_EQ(prompts, 1);
}

TEST(X11AccessibilityPlatform, aLostServerIsNotTrusted)
{
    DesktopSession desktop({.windowManager = false});
    const auto session = X11Session::open(desktop.display());
    ASSERT_TRUE(session);
    X11AccessibilityPlatform platform(session->get(), nullptr);
    desktop.killServer();
    EXPECT_FALSE(platform.probeEventTap());
    EXPECT_FALSE(platform.isProcessTrusted());
}

TEST(X11AccessibilityPlatform, relaunchStartsTheProgramAgainWithItsArgumentsAndEndsThisOne)
{
    DesktopSession desktop({.windowManager = false});
    const QString marker = desktop.writeFile(QStringLiteral("first"), "");
    const QString report = QDir(desktop.home()).filePath(QStringLiteral("report"));
    const auto first =
        desktop.run(QStringLiteral(ZELVANE_RELAUNCH_PROBE),
                    {marker, report, QStringLiteral("--profile"), QStringLiteral("a folder")});
    EXPECT_EQ(first.exitCode, 7);
    QFile file(report);
    ASSERT_TRUE(waitUntil([&] { return file.exists(); }));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll(), "--profile\na folder\nhas the hotkey");
}

} // namespace
} // namespace zelvane::test
