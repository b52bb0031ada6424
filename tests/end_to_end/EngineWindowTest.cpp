// An engine of this machine in the settings of the program itself.

#include "end_to_end/ZelvaneSession.h"

#include <gtest/gtest.h>

namespace zelvane::test {
namespace {

class EngineWindow : public ::testing::Test
{
protected:
    EngineWindow()
    {
        session.zelvane({QStringLiteral("defaults"), QStringLiteral("write"),
                         QStringLiteral("zv.provider"), QStringLiteral("Zelvane")});
    }

    void openSettings()
    {
        session.zelvane({QStringLiteral("show"), QStringLiteral("settings")});
        session.waitForWindow(QStringLiteral("^Settings$"));
    }

    ZelvaneSession session;
};

TEST_F(EngineWindow, showsTheEngineOfThePlatformThatIsPicked)
{
    session.start();
    openSettings();
    session.press(QStringLiteral("Platform"));
    session.press(QStringLiteral("Fast Offline"));
    EXPECT_TRUE(session.shows(QStringLiteral("Offline engine not installed")));
    session.press(QStringLiteral("Languages"));
    EXPECT_TRUE(session.shows(QStringLiteral("Add pair")));
}

} // namespace
} // namespace zelvane::test
