#include "foundation/TaskScope.h"
#include "foundation/Completion.h"
#include "support/VirtualClock.h"

#include "foundation/DescribedError.h"

#include <gtest/gtest.h>

namespace zelvane::test {
namespace {

using namespace std::chrono_literals;

TEST(TaskScope, countsItsTasksWhileTheyRun)
{
    VirtualClock clock;
    TaskScope scope;
    scope.start([&](std::stop_token stop) { return clock.sleep(10ms, stop); });
    EXPECT_EQ(scope.runningTasks(), 1);
    clock.advance(10ms);
    EXPECT_EQ(scope.runningTasks(), 0);
}

TEST(TaskScope, destructionEndsTheWaitsOfItsTasks)
{
    VirtualClock clock;
    auto scope = std::make_unique<TaskScope>();
    scope->start([&](std::stop_token stop) { return clock.sleep(1h, stop); });
    ASSERT_EQ(clock.pendingTimers(), 1);
    scope.reset();
    EXPECT_EQ(clock.pendingTimers(), 0);
}

TEST(TaskScope, runsNewTasksAfterCancellingTheOldOnes)
{
    VirtualClock clock;
    TaskScope scope;
    scope.start([&](std::stop_token stop) { return clock.sleep(1h, stop); });
    scope.cancelAll();
    scope.start([&](std::stop_token stop) { return clock.sleep(1h, stop); });
    EXPECT_EQ(scope.runningTasks(), 1);
}

TEST(Completion, theFirstOutcomeStands)
{
    const Completion<int> completion;
    completion.succeed(1);
    completion.succeed(2);
    completion.fail(CancellationError());
    int seen = 0;
    [](Completion<int> source, int* result) -> QCoro::Task<void> {
        *result = co_await source.result();
    }(completion, &seen);
    EXPECT_EQ(seen, 1);
}

} // namespace
} // namespace zelvane::test
