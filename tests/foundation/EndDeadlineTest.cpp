#include "foundation/EndDeadline.h"

#include "foundation/UnixSignals.h"

#include <gtest/gtest.h>

#include <csignal>

#include <sys/time.h>
#include <unistd.h>

namespace zelvane::test {
namespace {

using namespace std::chrono_literals;

std::chrono::steady_clock::duration timeOf(void (*run)())
{
    const auto start = std::chrono::steady_clock::now();
    run();
    return std::chrono::steady_clock::now() - start;
}

[[noreturn]] void hang()
{
    for (;;) {
        ::pause();
    }
}

TEST(EndDeadlineDeathTest, aThreadThatHangsEndsWithinThreeSecondsOfTheSignal)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto taken = timeOf([] {
        EXPECT_EXIT(
            {
                const UnixSignals signalsToLoop([](int) {}, beginEndDeadline);
                std::raise(SIGTERM);
                hang();
            },
            ::testing::ExitedWithCode(1), "");
    });
    EXPECT_GE(taken, 2700ms);
    EXPECT_LT(taken, 4s);
}

TEST(EndDeadlineDeathTest, aSecondRequestGivesNoMoreTime)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto taken = timeOf([] {
        EXPECT_EXIT(
            {
                beginEndDeadline();
                ::usleep(1'500'000);
                beginEndDeadline();
                hang();
            },
            ::testing::ExitedWithCode(1), "");
    });
    EXPECT_LT(taken, 4s);
}

TEST(EndDeadline, canBeTakenBack)
{
    const auto isRunning = [] {
        itimerval timer{};
        ::getitimer(ITIMER_REAL, &timer);
        return timer.it_value.tv_sec != 0 || timer.it_value.tv_usec != 0;
    };
    beginEndDeadline();
    EXPECT_TRUE(isRunning());
    cancelEndDeadline();
    EXPECT_FALSE(isRunning());
}

} // namespace
} // namespace zelvane::test
