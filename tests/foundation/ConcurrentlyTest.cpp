#include "foundation/Concurrently.h"

#include "foundation/DescribedError.h"
#include "support/Await.h"
#include "support/VirtualClock.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace zelvane::test {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class ConcurrentTasks : public ::testing::Test
{
protected:
    /// Task 0 takes 1 s, task 1 takes 2 s and so on, unless told otherwise.
    QCoro::Task<int> work(std::size_t index, std::stop_token stop)
    {
        begun.push_back(index);
        running += 1;
        mostRunning = std::max(mostRunning, running);
        const auto time = durations.value(int(index), std::chrono::seconds(index + 1));
        try {
            if (time > 0s) {
                co_await clock.sleep(time, stop);
            }
        } catch (const CancellationError&) {
            cancelled.push_back(index);
        }
        if (stop.stop_requested() && lingering > 0s) {
            co_await clock.sleep(lingering);
        }
        running -= 1;
        if (stop.stop_requested()) {
            throw CancellationError();
        }
        if (index == failing) {
            throw std::out_of_range(std::to_string(index));
        }
        co_return int(index) * 10;
    }

    QCoro::Task<std::vector<int>> run(std::size_t count, std::stop_token stop = {})
    {
        return runConcurrently<int>(
            count, 4,
            [this](std::size_t index, std::stop_token token) { return work(index, token); }, stop);
    }

    VirtualClock clock;
    QMap<int, std::chrono::seconds> durations;
    std::chrono::seconds lingering{0};
    std::size_t failing = std::size_t(-1);
    std::vector<std::size_t> begun;
    std::vector<std::size_t> cancelled;
    int running = 0;
    int mostRunning = 0;
};

TEST_F(ConcurrentTasks, yieldTheirResultsInOrder)
{
    durations = {{0, 9s}, {1, 1s}, {2, 5s}};
    auto call = run(3);
    clock.advance(9s);
    EXPECT_THAT(await(std::move(call)), ElementsAre(0, 10, 20));
}

TEST_F(ConcurrentTasks, mayBeNone)
{
    EXPECT_THAT(await(run(0)), IsEmpty());
}

TEST_F(ConcurrentTasks, beginInOrderAsOthersEnd)
{
    durations = {{0, 3s}, {1, 1s}, {2, 3s}, {3, 2s}};
    auto call = run(6);
    EXPECT_THAT(begun, ElementsAre(0, 1, 2, 3));
    clock.advance(1s);
    EXPECT_THAT(begun, ElementsAre(0, 1, 2, 3, 4));
    clock.advance(1s);
    EXPECT_THAT(begun, ElementsAre(0, 1, 2, 3, 4, 5));
    clock.advance(10s);
    EXPECT_EQ(await(std::move(call)).size(), 6U);
    EXPECT_EQ(mostRunning, 4);
}

TEST_F(ConcurrentTasks, mayEndAtOnce)
{
    for (int i = 0; i < 100'000; ++i) {
        durations[i] = 0s;
    }
    EXPECT_EQ(await(run(100'000)).back(), 999'990);
    EXPECT_EQ(mostRunning, 1);
}

TEST_F(ConcurrentTasks, stopWhenOneFails)
{
    failing = 1;
    auto call = run(9);
    clock.advance(2s); // task 0 has ended, and task 4 has begun
    EXPECT_THAT(begun, ElementsAre(0, 1, 2, 3, 4));
    EXPECT_THAT(cancelled, ElementsAre(4, 3, 2));
    EXPECT_THROW(await(std::move(call)), std::out_of_range);
}

TEST_F(ConcurrentTasks, areWaitedForBeforeTheFailureIsTold)
{
    failing = 0;
    lingering = 5s;
    auto call = run(4);
    clock.advance(5s);
    EXPECT_FALSE(call.isReady());
    EXPECT_EQ(running, 3);
    clock.advance(1s);
    EXPECT_EQ(running, 0);
    EXPECT_THROW(await(std::move(call)), std::out_of_range);
}

TEST_F(ConcurrentTasks, tellTheFirstFailure)
{
    durations = {{0, 9s}, {1, 2s}, {2, 1s}};
    failing = 2;
    auto call = run(3);
    clock.advance(9s);
    try {
        await(std::move(call));
        FAIL();
    } catch (const std::out_of_range& failure) {
        EXPECT_STREQ(failure.what(), "2");
    }
}

TEST_F(ConcurrentTasks, stopWhenAsked)
{
    std::stop_source stop;
    auto call = run(9, stop.get_token());
    clock.advance(1s);
    stop.request_stop();
    EXPECT_EQ(running, 0);
    EXPECT_EQ(begun.size(), 5U);
    EXPECT_THROW(await(std::move(call)), CancellationError);
}

TEST_F(ConcurrentTasks, beginNothingMuchAfterAStop)
{
    std::stop_source stop;
    stop.request_stop();
    EXPECT_THROW(await(run(9, stop.get_token())), CancellationError);
    EXPECT_THAT(begun, ElementsAre(0));
}

TEST_F(ConcurrentTasks, areSafeFromACallerThatGoesWhenTheyStop)
{
    std::stop_source stop;
    auto call = std::make_unique<QCoro::Task<std::vector<int>>>(run(9, stop.get_token()));
    bool ended = false;
    [](QCoro::Task<std::vector<int>> task, bool* flag) -> QCoro::Task<void> {
        try {
            co_await task;
        } catch (const CancellationError&) {
            *flag = true;
        }
    }(std::move(*call), &ended);
    call.reset();
    stop.request_stop();
    EXPECT_TRUE(ended);
}

} // namespace
} // namespace zelvane::test
