#include "foundation/UnixSignals.h"

#include "support/Await.h"

#include <gtest/gtest.h>

#include <csignal>
#include <optional>

namespace zelvane::test {
namespace {

TEST(UnixSignals, arriveInTheEventLoop)
{
    std::optional<int> arrived;
    const UnixSignals signalsToLoop([&](int number) { arrived = number; });
    std::raise(SIGTERM);
    EXPECT_EQ(arrived, std::nullopt);
    EXPECT_TRUE(waitUntil([&] { return arrived.has_value(); }));
    EXPECT_EQ(arrived, SIGTERM);
}

TEST(UnixSignalsDeathTest, aSecondOneEndsTheProgramAtOnceWhateverItsKind)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            const UnixSignals signalsToLoop([](int) {});
            std::raise(SIGTERM);
            std::raise(SIGINT);
        },
        ::testing::KilledBySignal(SIGINT), "");
}

} // namespace
} // namespace zelvane::test
