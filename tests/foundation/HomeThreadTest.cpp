#include "foundation/HomeThread.h"

#include "support/Await.h"

#include <gtest/gtest.h>

#include <QThread>

#include <atomic>
#include <semaphore>
#include <thread>

namespace zelvane::test {
namespace {

/// Tells of its end.
struct Token
{
    explicit Token(std::atomic<int>& counter)
        : ended(counter)
    {
    }
    ~Token() { ++ended; }
    Q_DISABLE_COPY_MOVE(Token)

    std::atomic<int>& ended;
};

TEST(HomeThread, knowsItsThread)
{
    const HomeThread home;
    EXPECT_TRUE(home.isCurrent());
    bool other = true;
    std::jthread([&] { other = home.isCurrent(); }).join();
    EXPECT_FALSE(other);
}

TEST(HomeThread, runsCallsOfOtherThreadsInTheirOrder)
{
    HomeThread home;
    std::vector<int> order;
    const QThread* ranOn = nullptr;
    const std::jthread other([&] {
        for (int i = 0; i < 3; ++i) {
            home.post([&, i] {
                order.push_back(i);
                ranOn = QThread::currentThread();
            });
        }
    });
    EXPECT_TRUE(waitUntil([&] { return order.size() == 3; }));
    EXPECT_EQ(order, (std::vector<int>{0, 1, 2}));
    EXPECT_EQ(ranOn, QThread::currentThread());
}

TEST(HomeThread, aCallIsNotRunFromWithinThePost)
{
    HomeThread home;
    bool ran = false;
    home.post([&] { ran = true; });
    EXPECT_FALSE(ran);
    EXPECT_TRUE(waitUntil([&] { return ran; }));
}

TEST(HomeThread, callsThatWaitAreDestroyedWithIt)
{
    std::atomic<int> ended = 0;
    bool ran = false;
    {
        HomeThread home;
        home.post([&ran, token = std::make_shared<Token>(ended)] { ran = true; });
        EXPECT_EQ(ended, 0);
    }
    EXPECT_EQ(ended, 1);
    QCoreApplication::sendPostedEvents();
    EXPECT_FALSE(ran);
}

TEST(HomeThread, callsAfterItsCloseAreDestroyedAtOnce)
{
    std::atomic<int> ended = 0;
    HomeThread home;
    home.close();
    std::jthread([&] { home.post([token = std::make_shared<Token>(ended)] {}); }).join();
    EXPECT_EQ(ended, 1);
}

TEST(HomeThread, everyCallEndsWhileItIsClosed)
{
    std::atomic<int> ended = 0;
    constexpr int threads = 4;
    constexpr int calls = 500;
    HomeThread home;
    {
        std::vector<std::jthread> others;
        std::counting_semaphore<threads> running(0);
        for (int i = 0; i < threads; ++i) {
            others.emplace_back([&] {
                running.release();
                for (int j = 0; j < calls; ++j) {
                    home.post([token = std::make_shared<Token>(ended)] {});
                }
            });
        }
        running.acquire();
        home.close();
    }
    EXPECT_EQ(ended, threads * calls);
}

} // namespace
} // namespace zelvane::test
