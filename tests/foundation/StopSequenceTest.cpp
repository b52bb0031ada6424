#include "foundation/StopSequence.h"

#include "foundation/Completion.h"
#include "support/VirtualClock.h"

#include <gtest/gtest.h>

#include <QStringList>

#include <stdexcept>

namespace zelvane::test {
namespace {

using namespace std::chrono_literals;

QCoro::Task<void> note(QStringList& log, QString name)
{
    log << name;
    co_return;
}

QCoro::Task<void> failAtOnce()
{
    throw std::runtime_error("a step that fails");
    co_return;
}

class Stop : public ::testing::Test
{
protected:
    QStringList log;
    VirtualClock clock;
    StopSequence stop{clock, [this] { log << QStringLiteral("end"); }};
};

TEST_F(Stop, withNothingToDoTheProgramEndsAtOnce)
{
    EXPECT_FALSE(stop.hasBegun());
    stop.begin();
    EXPECT_TRUE(stop.hasBegun());
    EXPECT_EQ(log, QStringList{QStringLiteral("end")});
    EXPECT_EQ(clock.pendingTimers(), 0);
}

TEST_F(Stop, stepsRunInTheirOrderAndTheEndFollows)
{
    stop.aboutToStop([this] { return note(log, QStringLiteral("first")); });
    stop.aboutToStop([this] { return note(log, QStringLiteral("second")); });
    stop.begin();
    EXPECT_EQ(log.join(u' '), QStringLiteral("first second end"));
}

TEST_F(Stop, theEndWaitsForEveryStep)
{
    const Completion<void> server;
    const Completion<void> other;
    stop.aboutToStop([server] { return server.result(); });
    stop.aboutToStop([other] { return other.result(); });
    stop.begin();
    other.succeed();
    EXPECT_TRUE(log.isEmpty());
    server.succeed();
    EXPECT_EQ(log.join(u' '), QStringLiteral("end"));
}

TEST_F(Stop, aStepThatHangsDelaysTheEndByOneAndAHalfSeconds)
{
    const Completion<void> never;
    stop.aboutToStop([never] { return never.result(); });
    stop.begin();
    clock.advance(1499ms);
    EXPECT_TRUE(log.isEmpty());
    clock.advance(1ms);
    EXPECT_EQ(log.join(u' '), QStringLiteral("end"));
    never.succeed();
    EXPECT_EQ(log.join(u' '), QStringLiteral("end"));
}

TEST_F(Stop, aStepThatFailsKeepsNoOtherFromRunning)
{
    stop.aboutToStop([] { return failAtOnce(); });
    stop.aboutToStop([this] { return note(log, QStringLiteral("second")); });
    stop.begin();
    EXPECT_EQ(log.join(u' '), QStringLiteral("second end"));
}

TEST_F(Stop, isBegunOnce)
{
    stop.aboutToStop([this] { return note(log, QStringLiteral("step")); });
    stop.begin();
    stop.begin();
    EXPECT_EQ(log.join(u' '), QStringLiteral("step end"));
}

TEST(StopSequence, mayGoWhileAStepRuns)
{
    VirtualClock clock;
    const Completion<void> late;
    {
        StopSequence stop(clock, [] { FAIL(); });
        stop.aboutToStop([late] { return late.result(); });
        stop.begin();
    }
    late.succeed();
    clock.advance(2s);
}

} // namespace
} // namespace zelvane::test
