#include "pipeline/TranslationTrace.h"

#include "support/VirtualClock.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace zelvane::test {
namespace {

using namespace std::chrono_literals;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::Not;

constexpr auto providerVerdict = u"verdict: delay is in the AI provider / model request";
constexpr auto appVerdict = u"verdict: delay is mostly in the app (capture / paste / waits)";
constexpr auto splitVerdict = u"verdict: time is split between the app and the AI request";

class Trace : public ::testing::Test
{
protected:
    void markAfter(std::chrono::milliseconds delay, const QString& label,
                   const std::optional<QString>& detail = std::nullopt)
    {
        clock.advance(delay);
        trace.mark(label, detail);
    }
    /// A run with these three spans in milliseconds.
    void run(int before, int api, int after)
    {
        trace.begin({});
        markAfter(std::chrono::milliseconds(before), QStringLiteral("API begin"));
        markAfter(std::chrono::milliseconds(api), QStringLiteral("API end"));
        markAfter(std::chrono::milliseconds(after), QStringLiteral("done"));
    }
    [[nodiscard]] QStringList lines() const { return trace.report().split(u'\n'); }
    /// The four durations and the verdict.
    [[nodiscard]] QStringList ending() const
    {
        QStringList all = lines();
        return all.mid(all.indexOf(QStringLiteral("durations:")) + 1);
    }
    [[nodiscard]] QString verdict() const { return lines().last(); }

    VirtualClock clock;
    TranslationTrace trace{clock};
};

QStringList endingWith(const char* before, const char* api, const char* after, const char* total,
                       const char16_t* verdict)
{
    const auto line = [](const char* label, const char* value) {
        return QString::fromLatin1(label) + QString::fromLatin1(value) + QStringLiteral(" ms");
    };
    return {line("  app before API: ", before),
            line("  API / model: ", api),
            line("  app after API: ", after),
            line("  total: ", total),
            QString(),
            QString::fromUtf16(verdict)};
}

TEST_F(Trace, hasNothingToReportBeforeTheFirstRun)
{
    EXPECT_EQ(trace.report(), QStringLiteral("Zelvane · no timing data for the last translation"));
}

TEST_F(Trace, stillHasNothingToReportWhenOnlyAFactIsKnown)
{
    trace.setMeta(QStringLiteral("provider"), QStringLiteral("ChatGPT"));
    EXPECT_EQ(trace.report(), QStringLiteral("Zelvane · no timing data for the last translation"));
}

TEST_F(Trace, reportsARunLineByLine)
{
    clock.setStart(QDateTime(QDate(2026, 7, 8), QTime(9, 10, 11, 999), Qt::UTC));
    trace.begin({{QStringLiteral("provider"), QStringLiteral("ChatGPT")},
                 {QStringLiteral("model"), QStringLiteral("gpt-5-nano")},
                 {QStringLiteral("autoReplace"), QStringLiteral("true")}});
    markAfter(2ms, QStringLiteral("Cmd+C wait done"), QStringLiteral("180 ms"));
    markAfter(1ms, QStringLiteral("API begin"));
    markAfter(1234567ms, QStringLiteral("API end"), QString());
    markAfter(10ms, QStringLiteral("done"));
    EXPECT_EQ(trace.report(),
              QStringLiteral("Zelvane · translation timing\n"
                             "generated: 2026-07-08T09:30:46Z\n"
                             "autoReplace: true\n"
                             "model: gpt-5-nano\n"
                             "provider: ChatGPT\n"
                             "\n"
                             "timeline (ms from start):\n"
                             "       0  start\n"
                             "       2  Cmd+C wait done · 180 ms\n"
                             "       3  API begin\n"
                             "  1234570  API end\n"
                             "  1234580  done\n"
                             "\n"
                             "durations:\n"
                             "  app before API: 3 ms\n"
                             "  API / model: 1234567 ms\n"
                             "  app after API: 10 ms\n"
                             "  total: 1234580 ms\n"
                             "\n"
                             "verdict: delay is in the AI provider / model request"));
}

TEST_F(Trace, reportsARunThatHasOnlyBegun)
{
    trace.begin({});
    EXPECT_EQ(trace.report(), QStringLiteral("Zelvane · translation timing\n"
                                             "generated: 2026-01-02T03:04:05Z\n"
                                             "\n"
                                             "timeline (ms from start):\n"
                                             "       0  start\n"
                                             "\n"
                                             "durations:\n"
                                             "  app before API: 0 ms\n"
                                             "  API / model: 0 ms\n"
                                             "  app after API: 0 ms\n"
                                             "  total: 0 ms\n"
                                             "\n"
                                             "verdict: time is split between the app and the AI "
                                             "request"));
}

TEST_F(Trace, countsAllTimeAsTheAppsIfNoEngineWasCalled)
{
    trace.begin({});
    markAfter(7ms, QStringLiteral("selection empty"));
    EXPECT_EQ(ending(), endingWith("7", "0", "0", "7", appVerdict));
}

TEST_F(Trace, countsTheTimeOfAFailedEngineUpToTheEnd)
{
    trace.begin({});
    markAfter(5ms, QStringLiteral("API begin"));
    markAfter(20ms, QStringLiteral("error"));
    EXPECT_EQ(ending(), endingWith("5", "20", "0", "25", providerVerdict));
}

TEST_F(Trace, ignoresAnEndWithoutABegin)
{
    trace.begin({});
    markAfter(5ms, QStringLiteral("API end"));
    markAfter(1ms, QStringLiteral("done"));
    EXPECT_EQ(ending(), endingWith("6", "0", "0", "6", appVerdict));
}

TEST_F(Trace, takesTheLastBeginAndTheLastEnd)
{
    trace.begin({});
    markAfter(1ms, QStringLiteral("API begin"));
    markAfter(1ms, QStringLiteral("API end"));
    markAfter(10ms, QStringLiteral("API begin again"));
    markAfter(100ms, QStringLiteral("API end again"));
    markAfter(1000ms, QStringLiteral("done"));
    EXPECT_EQ(ending(), endingWith("12", "100", "1000", "1112", appVerdict));
}

TEST_F(Trace, neverReportsANegativeTimeAfterTheEngine)
{
    trace.begin({});
    markAfter(5ms, QStringLiteral("API end"));
    markAfter(5ms, QStringLiteral("API begin"));
    EXPECT_EQ(ending(), endingWith("10", "-5", "5", "10", appVerdict));
}

TEST_F(Trace, takesTheEndOfAnAttemptForTheEngines)
{
    trace.begin({});
    markAfter(1ms, QStringLiteral("API begin"));
    markAfter(2ms, QStringLiteral("API attempt 2 ended"));
    markAfter(4ms, QStringLiteral("API attempt 3 begun"));
    EXPECT_EQ(ending(), endingWith("1", "2", "4", "7", appVerdict));
}

TEST_F(Trace, doesNotTakeTheHttpEventsForTheEngines)
{
    trace.begin({});
    markAfter(1ms, QStringLiteral("API HTTP begin"));
    markAfter(2ms, QStringLiteral("API HTTP end"));
    EXPECT_EQ(ending(), endingWith("3", "0", "0", "3", appVerdict));
}

/// A clock with steps below a millisecond, and without timers.
class FineClock final : public Clock
{
public:
    [[nodiscard]] std::chrono::nanoseconds monotonicNow() const override { return now_; }
    [[nodiscard]] QDateTime now() const override { return QDateTime::currentDateTimeUtc(); }
    [[nodiscard]] std::unique_ptr<Timer> callLater(std::chrono::milliseconds,
                                                   std::function<void()>) override
    {
        return nullptr;
    }
    [[nodiscard]] std::unique_ptr<Timer>
    callEvery(std::chrono::milliseconds, std::chrono::milliseconds, std::function<void()>) override
    {
        return nullptr;
    }
    std::chrono::nanoseconds now_{0};
};

TEST_F(Trace, roundsHalvesUp)
{
    FineClock fine;
    TranslationTrace fineTrace(fine);
    fineTrace.begin({});
    for (const auto step : {499us, 1us, 1000us, 999us}) {
        fine.now_ += step;
        fineTrace.mark(QStringLiteral("x"));
    }
    const QStringList report = fineTrace.report().split(u'\n');
    EXPECT_THAT(report.mid(4, 5),
                ElementsAre(QStringLiteral("       0  start"), QStringLiteral("       0  x"),
                            QStringLiteral("       1  x"), QStringLiteral("       2  x"),
                            QStringLiteral("       2  x")));
}

TEST_F(Trace, roundsTheEnginesTimeByItself)
{
    FineClock fine;
    TranslationTrace fineTrace(fine);
    fineTrace.begin({});
    for (const auto* label : {"API begin", "API end", "done"}) {
        fine.now_ += 600us;
        fineTrace.mark(QString::fromLatin1(label));
    }
    // At 0.6, 1.2 and 1.8 ms: the difference of the rounded times would be 0.
    const QString report = fineTrace.report();
    EXPECT_TRUE(report.contains(QStringLiteral("  app before API: 1 ms\n"
                                               "  API / model: 1 ms\n"
                                               "  app after API: 0 ms\n"
                                               "  total: 2 ms\n")))
        << report.toStdString();
}

TEST_F(Trace, blamesTheProviderFromThreeTimesTheAppsTime)
{
    run(600, 3000, 400);
    EXPECT_EQ(ending(), endingWith("600", "3000", "400", "4000", providerVerdict));
    run(600, 2999, 400);
    EXPECT_EQ(verdict(), QString::fromUtf16(splitVerdict));
    run(600, 1000, 400);
    EXPECT_EQ(verdict(), QString::fromUtf16(splitVerdict));
    run(600, 999, 400);
    EXPECT_EQ(verdict(), QString::fromUtf16(appVerdict));
}

TEST_F(Trace, takesAnAppWithoutAnyTimeForOneMillisecond)
{
    run(0, 3, 0);
    EXPECT_EQ(verdict(), QString::fromUtf16(providerVerdict));
    run(0, 2, 0);
    EXPECT_EQ(verdict(), QString::fromUtf16(splitVerdict));
}

TEST_F(Trace, printsAnEmptyDetailLikeNone)
{
    trace.begin({});
    trace.mark(QStringLiteral("a"), QString());
    trace.mark(QStringLiteral("b"), QStringLiteral(""));
    trace.mark(QStringLiteral("c"), QStringLiteral(" "));
    EXPECT_THAT(lines(), Contains(QStringLiteral("       0  a")));
    EXPECT_THAT(lines(), Contains(QStringLiteral("       0  b")));
    EXPECT_THAT(lines(), Contains(QStringLiteral("       0  c ·  ")));
}

TEST_F(Trace, sortsLaterFactsAmongTheFirstOnes)
{
    trace.begin({{QStringLiteral("pair"), QStringLiteral("EN-DE")},
                 {QStringLiteral("model"), QStringLiteral("old")}});
    trace.setMeta(QStringLiteral("chars"), QStringLiteral("12"));
    trace.setMeta(QStringLiteral("model"), QStringLiteral("new"));
    trace.setMeta(QStringLiteral("Zed"), QString());
    EXPECT_THAT(lines().mid(2, 5), ElementsAre(QStringLiteral("Zed: "), QStringLiteral("chars: 12"),
                                               QStringLiteral("model: new"),
                                               QStringLiteral("pair: EN-DE"), QString()));
}

TEST_F(Trace, forgetsTheLastRunWhenANewOneBegins)
{
    trace.begin({{QStringLiteral("old"), QStringLiteral("fact")}});
    markAfter(5ms, QStringLiteral("old event"));
    trace.begin({{QStringLiteral("new"), QStringLiteral("fact")}});
    EXPECT_THAT(lines(), Not(Contains(QStringLiteral("old: fact"))));
    EXPECT_THAT(lines(), Not(Contains(QStringLiteral("       5  old event"))));
    EXPECT_THAT(lines(), Contains(QStringLiteral("       0  start")));
}

TEST_F(Trace, keepsEventsThatCameBeforeAnyRun)
{
    trace.mark(QStringLiteral("early"));
    markAfter(4ms, QStringLiteral("late"));
    EXPECT_THAT(lines(), Contains(QStringLiteral("       0  early")));
    EXPECT_THAT(lines(), Contains(QStringLiteral("       4  late")));
}

TEST_F(Trace, isNotChangedByAReport)
{
    run(1, 2, 3);
    EXPECT_EQ(trace.report(), trace.report());
}

TEST_F(Trace, takesEventsFromManyThreads)
{
    trace.begin({});
    {
        std::vector<std::jthread> writers;
        for (int writer = 0; writer < 4; ++writer) {
            writers.emplace_back([this] {
                for (int i = 0; i < 250; ++i) {
                    trace.mark(QStringLiteral("event"));
                    trace.setMeta(QStringLiteral("key"), QStringLiteral("value"));
                    static_cast<void>(trace.report());
                }
            });
        }
    }
    EXPECT_EQ(lines().count(QStringLiteral("       0  event")), 1000);
}

} // namespace
} // namespace zelvane::test
