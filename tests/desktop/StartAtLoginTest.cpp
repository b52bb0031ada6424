#include "desktop/StartAtLogin.h"

#include "desktop/FakeDesktop.h"
#include "desktop/FakeShell.h"
#include "support/FakeSecretBackend.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace zelvane::test {
namespace {

using ::testing::ElementsAre;
using State = LoginItem::State;

class FakeLoginItem final : public LoginItem
{
public:
    explicit FakeLoginItem(QStringList& log)
        : m_log(log)
    {
    }

    [[nodiscard]] QCoro::Task<State> look() override
    {
        co_await heldLook.wait();
        co_return state;
    }
    [[nodiscard]] QCoro::Task<bool> set(bool on) override
    {
        m_log << (on ? QStringLiteral("on") : QStringLiteral("off"));
        co_await heldSet.wait();
        co_return stores;
    }

    State state = State::absent;
    bool stores = true;
    Hold heldLook;
    Hold heldSet;

private:
    QStringList& m_log;
};

class StartWithSession : public ::testing::Test
{
protected:
    QStringList log;
    OverlayUserDefaults defaults;
    FakeSecretBackend backend;
    SecretStore secrets{defaults, backend};
    AppSettings settings{defaults, secrets, QStringLiteral("English (US)")};
    FakeLoginItem item{log};
};

TEST_F(StartWithSession, isOffAndNothingIsWrittenUnlessTheUserWantsIt)
{
    const StartAtLogin login(settings, item);
    EXPECT_FALSE(settings.startAtLogin());
    EXPECT_THAT(texts(log), ElementsAre());
}

TEST_F(StartWithSession, followsTheSetting)
{
    const StartAtLogin login(settings, item);
    settings.setStartAtLogin(true);
    settings.setStartAtLogin(false);
    EXPECT_THAT(texts(log), ElementsAre("on", "off"));
}

TEST_F(StartWithSession, writesTheRecordThatIsMissing)
{
    settings.setStartAtLogin(true);
    const StartAtLogin login(settings, item);
    EXPECT_THAT(texts(log), ElementsAre("on"));
}

TEST_F(StartWithSession, thatTheUserSwitchedOffByTheDesktopStaysOff)
{
    settings.setStartAtLogin(true);
    item.state = State::off;
    const StartAtLogin login(settings, item);
    EXPECT_FALSE(settings.startAtLogin());
    EXPECT_THAT(texts(log), ElementsAre());
}

TEST_F(StartWithSession, thatTheUserSwitchedOnByTheDesktopStaysOn)
{
    item.state = State::on;
    const StartAtLogin login(settings, item);
    EXPECT_TRUE(settings.startAtLogin());
    EXPECT_THAT(texts(log), ElementsAre());
}

TEST_F(StartWithSession, canBeSwitchedOnAgainByTheSetting)
{
    item.state = State::off;
    const StartAtLogin login(settings, item);
    settings.setStartAtLogin(true);
    EXPECT_THAT(texts(log), ElementsAre("on"));
}

TEST_F(StartWithSession, aChoiceMadeWhileTheRecordIsReadIsNewerThanTheRecord)
{
    item.state = State::off;
    item.heldLook.close();
    const StartAtLogin login(settings, item);
    settings.setStartAtLogin(true);
    EXPECT_THAT(texts(log), ElementsAre());
    item.heldLook.open();
    EXPECT_TRUE(settings.startAtLogin());
    EXPECT_THAT(texts(log), ElementsAre("on"));
}

TEST_F(StartWithSession, theLastOfManyQuickChoicesIsStored)
{
    item.heldSet.close();
    const StartAtLogin login(settings, item);
    settings.setStartAtLogin(true);
    settings.setStartAtLogin(false);
    settings.setStartAtLogin(true);
    settings.setStartAtLogin(false);
    item.heldSet.open();
    EXPECT_THAT(texts(log), ElementsAre("on", "off"));
    EXPECT_FALSE(settings.startAtLogin());
}

TEST_F(StartWithSession, whatCannotBeStoredIsNotShownAsSo)
{
    item.stores = false;
    const StartAtLogin login(settings, item);
    settings.setStartAtLogin(true);
    EXPECT_FALSE(settings.startAtLogin());
    EXPECT_THAT(texts(log), ElementsAre("on"));
}

TEST_F(StartWithSession, mayGoWhileTheRecordIsReadOrWritten)
{
    item.heldLook.close();
    {
        const StartAtLogin reading(settings, item);
    }
    item.heldLook.open();
    item.heldSet.close();
    {
        const StartAtLogin writing(settings, item);
        settings.setStartAtLogin(true);
    }
    item.heldSet.open();
    EXPECT_THAT(texts(log), ElementsAre("on"));
}

} // namespace
} // namespace zelvane::test
