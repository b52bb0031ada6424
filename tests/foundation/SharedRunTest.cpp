#include "foundation/SharedRun.h"

#include "support/Await.h"
#include "support/VirtualClock.h"

#include <gtest/gtest.h>

namespace zelvane::test {
namespace {

using namespace std::chrono_literals;

class SharedRuns : public ::testing::Test
{
protected:
    QCoro::Task<int> work(std::stop_token stop)
    {
        const int number = ++started;
        try {
            co_await clock.sleep(10s, stop);
        } catch (const CancellationError&) {
            ++cancelled;
            throw;
        }
        if (failing) {
            throw std::out_of_range("far");
        }
        co_return number;
    }
    QCoro::Task<int> join(std::stop_token stop = {})
    {
        return runs->join([this](std::stop_token token) { return work(token); }, std::move(stop));
    }

    VirtualClock clock;
    std::unique_ptr<SharedRun<int>> runs = std::make_unique<SharedRun<int>>();
    int started = 0;
    int cancelled = 0;
    bool failing = false;
};

TEST_F(SharedRuns, serveAllWhoJoinOne)
{
    auto first = join();
    clock.advance(9s);
    auto second = join();
    clock.advance(1s);
    EXPECT_EQ(await(std::move(first)), 1);
    EXPECT_EQ(await(std::move(second)), 1);
    EXPECT_EQ(started, 1);
}

TEST_F(SharedRuns, beginAnewWhenTheLastOneHasEnded)
{
    auto first = join();
    clock.advance(10s);
    auto second = join();
    clock.advance(10s);
    EXPECT_EQ(await(std::move(first)), 1);
    EXPECT_EQ(await(std::move(second)), 2);
}

TEST_F(SharedRuns, failForAllWhoJoined)
{
    failing = true;
    auto first = join();
    auto second = join();
    clock.advance(10s);
    EXPECT_THROW(await(std::move(first)), std::out_of_range);
    EXPECT_THROW(await(std::move(second)), std::out_of_range);
}

TEST_F(SharedRuns, goOnForTheOthersWhenTheFirstStopsWaiting)
{
    std::stop_source stop;
    auto first = join(stop.get_token());
    auto second = join();
    stop.request_stop();
    EXPECT_THROW(await(std::move(first)), CancellationError);
    EXPECT_EQ(cancelled, 0);
    clock.advance(10s);
    EXPECT_EQ(await(std::move(second)), 1);
}

TEST_F(SharedRuns, areStoppedWhenNobodyWaits)
{
    std::stop_source stop;
    auto first = join(stop.get_token());
    auto second = join(stop.get_token());
    stop.request_stop();
    EXPECT_EQ(cancelled, 1);
    EXPECT_EQ(clock.pendingTimers(), 0);
    EXPECT_THROW(await(std::move(first)), CancellationError);
    EXPECT_THROW(await(std::move(second)), CancellationError);
    auto third = join();
    clock.advance(10s);
    EXPECT_EQ(await(std::move(third)), 2);
}

TEST_F(SharedRuns, areNotStartedForOneWhoHasAlreadyStopped)
{
    std::stop_source stop;
    stop.request_stop();
    EXPECT_THROW(await(join(stop.get_token())), CancellationError);
    EXPECT_EQ(started, 0);
}

TEST_F(SharedRuns, areStoppedWithTheirOwner)
{
    auto first = join();
    runs.reset();
    EXPECT_EQ(cancelled, 1);
    EXPECT_THROW(await(std::move(first)), CancellationError);
}

TEST_F(SharedRuns, mayEndAtOnce)
{
    const auto immediate = [](std::stop_token) -> QCoro::Task<int> { co_return 7; };
    EXPECT_EQ(await(runs->join(immediate, {})), 7);
    EXPECT_EQ(await(runs->join(immediate, {})), 7);
}

} // namespace
} // namespace zelvane::test
