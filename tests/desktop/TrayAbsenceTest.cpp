#include "desktop/TrayAbsence.h"

#include "desktop/FakeShell.h"
#include "support/VirtualClock.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QProperty>

namespace zelvane::test {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;

class FakeNotifications final : public Notifications
{
public:
    explicit FakeNotifications(QStringList& log)
        : m_log(log)
    {
    }

    [[nodiscard]] QCoro::Task<bool> post(QString title, QString) override
    {
        m_log << QStringLiteral("notification: ") + title;
        co_return taken;
    }

    bool taken = true;

private:
    QStringList& m_log;
};

class Tray : public ::testing::Test
{
protected:
    std::unique_ptr<TrayAbsence> start()
    {
        return std::make_unique<TrayAbsence>(
            &available, defaults, clock, TrayAbsence::patience,
            TrayAbsence::Ways{notifications, [this](const QString& text) { log << text; },
                              [this] { log << QStringLiteral("settings"); }});
    }

    QStringList log;
    VirtualClock clock;
    OverlayUserDefaults defaults;
    QProperty<bool> available{false};
    FakeNotifications notifications{log};
};

TEST_F(Tray, thatIsThereNeedsNoWord)
{
    available = true;
    const auto absence = start();
    clock.advance(1h);
    EXPECT_THAT(texts(log), ElementsAre());
}

TEST_F(Tray, thatComesLateNeedsNoWord)
{
    const auto absence = start();
    clock.advance(4999ms);
    available = true;
    clock.advance(1h);
    EXPECT_THAT(texts(log), ElementsAre());
}

TEST_F(Tray, thatIsGoneAtTheMomentIsNotMissing)
{
    const auto absence = start();
    clock.advance(1s);
    available = true;
    clock.advance(1s);
    available = false;
    clock.advance(1h);
    EXPECT_THAT(texts(log), ElementsAre());
}

TEST_F(Tray, thatIsMissingIsToldOfAndSettingsOpen)
{
    const auto absence = start();
    clock.advance(4999ms);
    EXPECT_THAT(texts(log), ElementsAre());
    clock.advance(1ms);
    EXPECT_THAT(texts(log), ElementsAre("notification: No place for the tray icon", "settings"));
    clock.advance(1h);
    EXPECT_EQ(log.size(), 2);
}

TEST_F(Tray, whereNobodyShowsMessagesIsToldOfOnStandardError)
{
    notifications.taken = false;
    const auto absence = start();
    clock.advance(5s);
    ASSERT_EQ(log.size(), 3);
    EXPECT_EQ(log[1].toStdString(),
              "No place for the tray icon: This desktop has no system tray. Zelvane Desk runs all "
              "the same: use your shortcuts, or start it again to open its panel.");
    EXPECT_EQ(log[2].toStdString(), "settings");
}

TEST_F(Tray, thatIsMissingAtTheNextStartAsWellIsNotToldOfAgain)
{
    auto absence = start();
    clock.advance(5s);
    log.clear();
    absence = start();
    clock.advance(5s);
    EXPECT_THAT(texts(log), ElementsAre());
}

TEST_F(Tray, thatWasThereMeanwhileIsToldOfAgain)
{
    auto absence = start();
    clock.advance(5s);
    log.clear();
    available = true;
    absence = start();
    clock.advance(5s);
    available = false;
    absence = start();
    clock.advance(5s);
    EXPECT_THAT(texts(log), ElementsAre("notification: No place for the tray icon", "settings"));
}

TEST_F(Tray, aProgramThatEndsBeforeSaysNothing)
{
    start().reset();
    clock.advance(1h);
    EXPECT_THAT(texts(log), ElementsAre());
}

} // namespace
} // namespace zelvane::test
