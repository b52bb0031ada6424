#include "foundation/DescribedError.h"
#include "foundation/SystemClock.h"
#include "support/Await.h"
#include "support/VirtualClock.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QStringList>

namespace zelvane::test {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;

QCoro::Task<void> note(QCoro::Task<void> wait, QString label, QStringList* log)
{
    try {
        co_await wait;
        log->append(label);
    } catch (const CancellationError&) {
        log->append(label + QStringLiteral(" cancelled"));
    }
}

TEST(Clock, sleepEndsExactlyWhenItsTimeHasPassed)
{
    VirtualClock clock;
    QStringList log;
    note(clock.sleep(180ms), QStringLiteral("woke"), &log);
    clock.advance(179ms);
    EXPECT_TRUE(log.isEmpty());
    clock.advance(1ms);
    EXPECT_THAT(log, ElementsAre(QStringLiteral("woke")));
}

TEST(Clock, sleepEndsAtOnceWhenItIsCancelled)
{
    VirtualClock clock;
    QStringList log;
    std::stop_source stop;
    note(clock.sleep(1h, stop.get_token()), QStringLiteral("sleep"), &log);
    stop.request_stop();
    EXPECT_THAT(log, ElementsAre(QStringLiteral("sleep cancelled")));
    EXPECT_EQ(clock.pendingTimers(), 0);
}

TEST(Clock, sleepAfterCancellationDoesNotWait)
{
    VirtualClock clock;
    std::stop_source stop;
    stop.request_stop();
    EXPECT_THROW(await(clock.sleep(1h, stop.get_token())), CancellationError);
}

TEST(Clock, virtualTimersRunInTheOrderOfTheirMoments)
{
    VirtualClock clock;
    QStringList log;
    const auto late = clock.callLater(20ms, [&] { log << QStringLiteral("20"); });
    const auto early = clock.callLater(10ms, [&] { log << QStringLiteral("10"); });
    const auto often = clock.callEvery(8ms, 0ms, [&] { log << QStringLiteral("8n"); });
    clock.advance(20ms);
    EXPECT_THAT(log, ElementsAre(QStringLiteral("8n"), QStringLiteral("10"), QStringLiteral("8n"),
                                 QStringLiteral("20")));
}

TEST(Clock, destroyingATimerCancelsIt)
{
    VirtualClock clock;
    bool ran = false;
    auto timer = clock.callLater(10ms, [&] { ran = true; });
    timer.reset();
    clock.advance(1s);
    EXPECT_FALSE(ran);
}

TEST(SystemClock, sleepsForRealWithoutBlockingTheEventLoop)
{
    SystemClock clock;
    bool loopRan = false;
    const auto noteTheLoop = [&] { loopRan = true; };
    QMetaObject::invokeMethod(qApp, noteTheLoop, Qt::QueuedConnection);
    const auto before = clock.monotonicNow();
    await(clock.sleep(20ms));
    EXPECT_GE(clock.monotonicNow() - before, 19ms);
    EXPECT_TRUE(loopRan);
}

TEST(SystemClock, aRepeatingTimerRunsUntilItIsDestroyed)
{
    SystemClock clock;
    int runs = 0;
    std::unique_ptr<Timer> timer;
    timer = clock.callEvery(1ms, 0ms, [&] {
        if (++runs == 3) {
            timer.reset();
        }
    });
    EXPECT_TRUE(waitUntil([&] { return timer == nullptr; }));
    EXPECT_EQ(runs, 3);
}

} // namespace
} // namespace zelvane::test
