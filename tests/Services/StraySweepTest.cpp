#include "Services/StraySweep.h"

#include "FakeProcessTable.h"
#include "support/Await.h"
#include "support/VirtualClock.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace zelvane::test {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

const QString server = QStringLiteral("/data/lmt60-4b/runtime/llama-b10437/llama-server");

QList<qint32> found(const QByteArray& listing, std::optional<qint32> exempt = std::nullopt)
{
    return strayServers(listing, server, exempt);
}

TEST(StrayServersTest, AreKnownByTheirWholePath)
{
    const QByteArray listing =
        "    1 /sbin/init\n"
        "  812 /data/lmt60-4b/runtime/llama-b10437/llama-server -m /data/m.gguf --port 50000\n"
        "  813 /data/hymt2-7b/runtime/llama-b10437/llama-server -m /data/m.gguf\n"
        "  814 /usr/bin/llama-server -m m.gguf\n"
        "90210 /usr/bin/vim /data/lmt60-4b/runtime/llama-b10437/llama-server\n";
    EXPECT_THAT(found(listing), ElementsAre(812, 90210));
    EXPECT_THAT(found(listing, 812), ElementsAre(90210));
}

TEST(StrayServersTest, OddLinesAreSkipped)
{
    const struct
    {
        const char* line;
        QList<qint32> pids;
    } cases[] = {
        {"", {}},
        {"\n\n\n", {}},
        {"812", {}},
        {"/data/lmt60-4b/runtime/llama-b10437/llama-server", {}},
        {"\t812\t/data/lmt60-4b/runtime/llama-b10437/llama-server", {812}},
        {"812 \xc2\xa0/data/lmt60-4b/runtime/llama-b10437/llama-server  ", {812}},
        {"+812 /data/lmt60-4b/runtime/llama-b10437/llama-server", {812}},
        {"-812 /data/lmt60-4b/runtime/llama-b10437/llama-server", {}},
        {"-1 /data/lmt60-4b/runtime/llama-b10437/llama-server", {}},
        {"0 /data/lmt60-4b/runtime/llama-b10437/llama-server", {}},
        {"1 /data/lmt60-4b/runtime/llama-b10437/llama-server", {}},
        {"2 /data/lmt60-4b/runtime/llama-b10437/llama-server", {2}},
        {"2147483647 /data/lmt60-4b/runtime/llama-b10437/llama-server", {2147483647}},
        {"2147483648 /data/lmt60-4b/runtime/llama-b10437/llama-server", {}},
        {"99999999999999999999 /data/lmt60-4b/runtime/llama-b10437/llama-server", {}},
        {"0x20 /data/lmt60-4b/runtime/llama-b10437/llama-server", {}},
        {"8 12 /data/lmt60-4b/runtime/llama-b10437/llama-server", {8}},
        {"8.5 /data/lmt60-4b/runtime/llama-b10437/llama-server", {}},
        {"pid /data/lmt60-4b/runtime/llama-b10437/llama-server", {}},
        {"812 /DATA/LMT60-4B/runtime/llama-b10437/llama-server", {}},
        {"812 sh -c '/data/lmt60-4b/runtime/llama-b10437/llama-server -m x'", {812}},
        {"812 /data/lmt60-4b/runtime/llama-b10437/llama-server\r", {812}},
        // Not UTF-8: nothing at all is ended.
        {"812 /data/lmt60-4b/runtime/llama-b10437/llama-server\n813 \xff", {}},
    };
    for (const auto& [line, pids] : cases) {
        EXPECT_EQ(found(line), pids) << line;
    }
}

class StraySweepTest : public ::testing::Test
{
protected:
    void run(std::optional<qint32> exempt = std::nullopt)
    {
        await(sweep.sweepStrayServers(server, exempt, {}));
    }

    VirtualClock clock;
    FakeProcessTable processes;
    StraySweep sweep{processes, clock};
};

TEST_F(StraySweepTest, AsksStraysToEndAndKillsWhoIsThereAfterTwoSeconds)
{
    processes.table = "812 " + server.toUtf8() + "\n813 " + server.toUtf8() + "\n";
    run();
    EXPECT_THAT(processes.calls,
                ElementsAre(QStringLiteral("terminate 812"), QStringLiteral("terminate 813")));
    processes.gone.insert(812);
    clock.advance(1999ms);
    EXPECT_EQ(processes.calls.size(), 2);
    clock.advance(1ms);
    EXPECT_EQ(processes.calls.mid(2), QStringList{QStringLiteral("kill 813")});
}

TEST_F(StraySweepTest, LeavesTheExemptServerAndThisProgramAlone)
{
    const QByteArray own = QByteArray::number(QCoreApplication::applicationPid());
    processes.table = "812 " + server.toUtf8() + "\n" + own + " program " + server.toUtf8() + "\n";
    run(812);
    clock.advance(5s);
    EXPECT_THAT(processes.calls, IsEmpty());
}

TEST_F(StraySweepTest, AnEmptyOrMissingTableEndsTheSweepSilently)
{
    run();
    processes.table = std::nullopt;
    run();
    EXPECT_EQ(processes.listings, 2);
    EXPECT_THAT(processes.calls, IsEmpty());
}

TEST_F(StraySweepTest, AStoppedSweepEndsNobody)
{
    processes.table = "812 " + server.toUtf8();
    std::stop_source stop;
    stop.request_stop();
    EXPECT_THROW(await(sweep.sweepStrayServers(server, std::nullopt, stop.get_token())),
                 CancellationError);
    EXPECT_THAT(processes.calls, IsEmpty());
}

TEST_F(StraySweepTest, NobodyIsKilledAfterTheSweepHasGone)
{
    {
        StraySweep shortLived(processes, clock);
        processes.table = "812 " + server.toUtf8();
        await(shortLived.sweepStrayServers(server, std::nullopt, {}));
    }
    clock.advance(5s);
    EXPECT_THAT(processes.calls, ElementsAre(QStringLiteral("terminate 812")));
}

} // namespace
} // namespace zelvane::test
