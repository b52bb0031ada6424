#include "foundation/Worker.h"

#include "support/Await.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QThread>

#include <future>

namespace zelvane::test {
namespace {

using ::testing::ElementsAre;

TEST(Worker, yieldsWhatACallReturnsFromAnotherThread)
{
    Worker worker;
    QThread* const here = QThread::currentThread();
    const bool isElsewhere =
        await(worker.run([here] { return QThread::currentThread() != here; }, {}));
    EXPECT_TRUE(isElsewhere);
}

TEST(Worker, throwsWhatACallThrows)
{
    Worker worker;
    EXPECT_THROW(await(worker.run([]() -> int { throw std::out_of_range("far"); }, {})),
                 std::out_of_range);
}

TEST(Worker, runsCallsInTheirOrder)
{
    Worker worker;
    std::promise<void> open;
    std::vector<int> order; // of the worker's thread until all have run
    auto first = worker.run([&] { open.get_future().wait(), order.push_back(1); }, {});
    auto second = worker.run([&] { order.push_back(2); }, {});
    auto third = worker.run([&] { order.push_back(3); }, {});
    open.set_value();
    await(std::move(third));
    EXPECT_THAT(order, ElementsAre(1, 2, 3));
}

TEST(Worker, aStopEndsTheWaitAndNotTheCall)
{
    Worker worker;
    std::promise<void> open;
    bool hasRun = false;
    std::stop_source stop;
    auto stopped = worker.run([&] { open.get_future().wait(), hasRun = true; }, stop.get_token());
    stop.request_stop();
    EXPECT_THROW(await(std::move(stopped)), CancellationError);
    open.set_value();
    await(worker.run([] {}, {}));
    EXPECT_TRUE(hasRun);
}

TEST(Worker, itsEndEndsTheWaitsAndLetsTheCallsRun)
{
    auto worker = std::make_unique<Worker>();
    std::promise<void> open;
    int runs = 0;
    auto first = worker->run([&] { open.get_future().wait(), ++runs; }, {});
    auto second = worker->run([&] { ++runs; }, {});
    open.set_value();
    worker.reset();
    EXPECT_EQ(runs, 2);
    EXPECT_THROW(await(std::move(first)), CancellationError);
    EXPECT_THROW(await(std::move(second)), CancellationError);
}

} // namespace
} // namespace zelvane::test
