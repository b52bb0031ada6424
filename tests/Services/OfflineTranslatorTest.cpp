#include "Services/OfflineTranslator.h"

#include "FakeCompletionSource.h"
#include "pipeline/TranslationError.h"
#include "support/Await.h"
#include "support/VirtualClock.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QElapsedTimer>

namespace zelvane::test {
namespace {

using namespace std::chrono_literals;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using Code = TranslationError::Code;

QStringList numbered(int count)
{
    QStringList lines;
    for (int i = 1; i <= count; ++i) {
        lines += QStringLiteral("line %1").arg(i);
    }
    return lines;
}

class OfflineTranslation : public ::testing::Test
{
protected:
    QCoro::Task<QString> start(const QString& text, std::stop_token stop = {})
    {
        return translator.translateOffline(text, QStringLiteral("English (US)"),
                                           QStringLiteral("German"), QStringLiteral("Be kind."),
                                           hints, stop);
    }

    QString translated(const QString& text)
    {
        auto call = start(text);
        clock.advance(1h);
        return await(std::move(call));
    }

    /// How a translation fails, if it is with a failure for the user.
    std::optional<Code> failure(const QString& text)
    {
        try {
            translated(text);
        } catch (const TranslationError& error) {
            return error.code();
        }
        return std::nullopt;
    }

    std::vector<Attempt> attempts() const
    {
        std::vector<Attempt> result;
        for (const auto& each : source.asked) {
            result.push_back(each.attempt);
        }
        return result;
    }

    VirtualClock clock;
    FakeCompletionSource source{clock};
    OfflineTranslator translator{source};
    QMap<QString, QStringList> hints;
};

// --- whether there is an engine ---

TEST_F(OfflineTranslation, startsTheServerWithAllLayersOnTheGraphicsCard)
{
    source.startTime = 5s;
    auto call = start(QStringLiteral("Good morning"));
    clock.advance(4s);
    EXPECT_THAT(source.starts, ElementsAre(GpuLayers::all));
    EXPECT_THAT(source.asked, IsEmpty());
    clock.advance(2s);
    EXPECT_EQ(await(std::move(call)), QStringLiteral("GOOD MORNING"));
    EXPECT_EQ(source.recordReadings, 0);
}

TEST_F(OfflineTranslation, goesOnWithAStaleStatusIfTheRecordIsGood)
{
    source.revision = 1;
    for (const EngineStatus& status :
         {EngineStatus(engine_status::Failed{QStringLiteral("no")}),
          EngineStatus(engine_status::NotInstalled{}),
          EngineStatus(engine_status::Installing{QStringLiteral("x"), 0.5})}) {
        source.known = status;
        EXPECT_EQ(translated(QStringLiteral("a")), QStringLiteral("A"));
    }
    EXPECT_EQ(source.recordReadings, 3);
}

TEST_F(OfflineTranslation, needsAnInstallation)
{
    source.known = engine_status::NotInstalled{};
    EXPECT_EQ(failure(QStringLiteral("a")), Code::offlineEngineMissing);
    source.revision = 2;
    EXPECT_EQ(failure(QStringLiteral("a")), Code::offlineEngineMissing);
    EXPECT_THAT(source.starts, IsEmpty());
}

TEST_F(OfflineTranslation, failsAsTheServerFailsToStart)
{
    source.startFailure = std::make_exception_ptr(TranslationError(Code::invalidURL));
    EXPECT_EQ(failure(QStringLiteral("a")), Code::invalidURL);
    EXPECT_THAT(source.asked, IsEmpty());
}

TEST_F(OfflineTranslation, servesTheDispatch)
{
    TranslationRequest request;
    request.text = QStringLiteral("Good morning");
    request.sourceLanguage = QStringLiteral("Any Language");
    request.targetLanguage = QStringLiteral("Polish");
    request.systemPrompt = QStringLiteral("Be brief.");
    request.glossaryHints = {{QStringLiteral("good"), {QStringLiteral("dobry")}}};
    auto call = static_cast<TranslationEngine&>(translator).translate(request, {});
    clock.advance(1min);
    EXPECT_EQ(await(std::move(call)), QStringLiteral("GOOD MORNING"));
    const ModelJob job{SmartOfflineVariant::hyMT2_7b,  {QStringLiteral("Good morning")},
                       QStringLiteral("Any Language"), QStringLiteral("Polish"),
                       QStringLiteral("Be brief."),    request.glossaryHints};
    EXPECT_THAT(source.asked, ElementsAre(FakeCompletionSource::Asked{job, Attempt::first}));
}

// --- plain text ---

TEST_F(OfflineTranslation, keepsBlankLinesInPlace)
{
    EXPECT_EQ(translated(QStringLiteral("a\n\nb")), QStringLiteral("A\n\nB"));
    EXPECT_THAT(source.askedLines(),
                ElementsAre(QStringList{QStringLiteral("a"), QStringLiteral("b")}));
}

TEST_F(OfflineTranslation, keepsBlankLinesAround)
{
    EXPECT_EQ(translated(QStringLiteral("\n \t\n  a b \n\n")), QStringLiteral("\n \t\nA B\n\n"));
    EXPECT_THAT(source.askedLines(), ElementsAre(QStringList{QStringLiteral("  a b ")}));
}

TEST_F(OfflineTranslation, asksNothingOfBlankLinesAndHasNothingToTell)
{
    EXPECT_EQ(failure(QStringLiteral("\n \n\t")), Code::badResponse);
    EXPECT_THAT(source.asked, IsEmpty());
}

TEST_F(OfflineTranslation, cutsAsTheModelNeedsIt)
{
    const QString text =
        QString(QStringList(9, QString(100, u'x') + QStringLiteral(" y")).join(u'\n'));
    source.answer = [](const ModelJob& job, Attempt) {
        QStringList lines;
        for (qsizetype i = 0; i < job.lines.size(); ++i) {
            lines += QStringLiteral("z%1").arg(i);
        }
        return lines.join(u'\n');
    };
    translated(text);
    EXPECT_THAT(source.askedLines(), ElementsAre(SizeIs(9)));
    source.asked.clear();
    source.model = SmartOfflineVariant::euroLLM_9b;
    translated(text);
    EXPECT_THAT(source.askedLines(), ElementsAre(SizeIs(9)));
    source.asked.clear();
    source.model = SmartOfflineVariant::lmt60_4b;
    translated(text);
    EXPECT_THAT(source.askedLines(), ElementsAre(SizeIs(6), SizeIs(3)));
    EXPECT_EQ(source.asked.front().job.variant, SmartOfflineVariant::lmt60_4b);
}

TEST_F(OfflineTranslation, putsChunksTogetherInOrderWhicheverEndsFirst)
{
    const QStringList lines = numbered(30);
    source.answerTime = [](const ModelJob& job) {
        return std::chrono::milliseconds(10'000 / job.lines.first().mid(5).toInt());
    };
    EXPECT_EQ(translated(lines.join(u'\n')), lines.join(u'\n').toUpper());
    EXPECT_THAT(source.asked, SizeIs(10));
}

TEST_F(OfflineTranslation, keepsFourRequestsInFlight)
{
    auto call = start(numbered(40).join(u'\n')); // 14 chunks
    clock.advance(0ms);
    EXPECT_EQ(source.inFlight, 4);
    clock.advance(100ms);
    EXPECT_THAT(source.asked, SizeIs(8));
    EXPECT_EQ(source.inFlight, 4);
    clock.advance(200ms);
    EXPECT_EQ(source.inFlight, 2);
    EXPECT_FALSE(call.isReady());
    clock.advance(100ms); // four rounds
    EXPECT_TRUE(call.isReady());
    EXPECT_EQ(await(std::move(call)), numbered(40).join(u'\n').toUpper());
    EXPECT_EQ(source.mostInFlight, 4);
}

TEST_F(OfflineTranslation, handsEachRequestTheWholeDictionary)
{
    hints = {{QStringLiteral("a"), {QStringLiteral("b")}}, {QStringLiteral("zzz"), {}}};
    translated(numbered(8).join(u'\n'));
    EXPECT_THAT(source.asked, SizeIs(3));
    for (const auto& each : source.asked) {
        EXPECT_EQ(each.job.glossaryHints, hints);
    }
}

// --- answers that are of no use ---

TEST_F(OfflineTranslation, asksOnceMoreAfterARefusedAnswer)
{
    source.answer = [](const ModelJob&, Attempt attempt) {
        return attempt == Attempt::first ? QStringLiteral("so so so so") : QStringLiteral("fine");
    };
    EXPECT_EQ(translated(QStringLiteral("a")), QStringLiteral("fine"));
    EXPECT_THAT(attempts(), ElementsAre(Attempt::first, Attempt::retry));
    EXPECT_EQ(source.asked[0].job, source.asked[1].job);
}

TEST_F(OfflineTranslation, asksOnceMoreAfterAFailure)
{
    source.answer = [](const ModelJob&, Attempt attempt) {
        if (attempt == Attempt::first) {
            throw TranslationError::http(503, {});
        }
        return QStringLiteral("fine");
    };
    EXPECT_EQ(translated(QStringLiteral("a")), QStringLiteral("fine"));
}

TEST_F(OfflineTranslation, triesAStubbornLineTwice)
{
    source.answer = [](const ModelJob&, Attempt) { return QStringLiteral(" "); };
    EXPECT_EQ(failure(QStringLiteral("a")), Code::badResponse);
    EXPECT_THAT(attempts(), ElementsAre(Attempt::first, Attempt::retry));
}

TEST_F(OfflineTranslation, tellsTheLastFailure)
{
    source.answer = [](const ModelJob&, Attempt attempt) -> QString {
        throw TranslationError(attempt == Attempt::first ? Code::offlineEngineBusy
                                                         : Code::invalidURL);
    };
    EXPECT_EQ(failure(QStringLiteral("a")), Code::invalidURL);
}

TEST_F(OfflineTranslation, aRefusalDoesNotHideTheFailureBeforeIt)
{
    source.answer = [](const ModelJob&, Attempt attempt) -> QString {
        if (attempt == Attempt::first) {
            throw TranslationError(Code::offlineEngineBusy);
        }
        return QString();
    };
    EXPECT_EQ(failure(QStringLiteral("a")), Code::offlineEngineBusy);
    source.answer = [](const ModelJob&, Attempt attempt) -> QString {
        if (attempt == Attempt::retry) {
            throw TranslationError(Code::offlineEngineBusy);
        }
        return QString();
    };
    EXPECT_EQ(failure(QStringLiteral("a")), Code::offlineEngineBusy);
}

TEST_F(OfflineTranslation, halvesWhatIsTooMuch)
{
    source.answer = [](const ModelJob& job, Attempt) {
        return job.lines.size() > 1 ? QStringLiteral("only one") : job.lines.first().toUpper();
    };
    EXPECT_EQ(translated(QStringLiteral("a\nb\nc\nd\ne")), QStringLiteral("A\nB\nC\nD\nE"));
    const auto some = [](const char* letters) { return QString::fromLatin1(letters).split(u' '); };
    EXPECT_THAT(source.askedLines(),
                ElementsAre(some("a b c d e"), some("a b c d e"), some("a b"), some("a b"),
                            some("a"), some("b"), some("c d e"), some("c d e"), some("c"),
                            some("d e"), some("d e"), some("d"), some("e")));
    EXPECT_EQ(source.mostInFlight, 1);
}

TEST_F(OfflineTranslation, halvesByAllLinesTheBlankOnesIncluded)
{
    source.answer = [](const ModelJob& job, Attempt) {
        return job.lines.size() > 1 ? QStringLiteral("only one") : job.lines.first().toUpper();
    };
    EXPECT_EQ(translated(QStringLiteral("a\n\n\n\nb\nc")), QStringLiteral("A\n\n\n\nB\nC"));
    EXPECT_THAT(source.askedLines(),
                ElementsAre(SizeIs(3), SizeIs(3), ElementsAre(QStringLiteral("a")),
                            // behind a blank line, and then without it
                            SizeIs(2), SizeIs(2), SizeIs(2), SizeIs(2),
                            ElementsAre(QStringLiteral("b")), ElementsAre(QStringLiteral("c"))));
}

TEST_F(OfflineTranslation, aHalfOfBlankLinesNeedsNoRequest)
{
    source.answer = [](const ModelJob& job, Attempt) {
        return job.lines.size() > 1 ? QStringLiteral("only one") : job.lines.first().toUpper();
    };
    EXPECT_EQ(translated(QStringLiteral("a\nb\n\n")), QStringLiteral("A\nB\n\n"));
    EXPECT_THAT(source.asked, SizeIs(6)); // two of two, two of the same, two of one
}

TEST_F(OfflineTranslation, givesUpOnALineThatComesBackEmptyWhateverIsHalved)
{
    // One line fewer than asked for, always: a single line gets nothing.
    source.answer = [](const ModelJob& job, Attempt) { return job.lines.mid(1).join(u'\n'); };
    EXPECT_EQ(
        failure(QString(QStringLiteral("abcdefgh ").repeated(10) + u'\n').repeated(8).trimmed()),
        Code::badResponse);
    // Eight, four, two and one line, each twice; then it is over.
    EXPECT_THAT(source.askedLines(), ElementsAre(SizeIs(8), SizeIs(8), SizeIs(4), SizeIs(4),
                                                 SizeIs(2), SizeIs(2), SizeIs(1), SizeIs(1)));
}

TEST_F(OfflineTranslation, halvesFourTimesAtMost)
{
    QStringList lines = numbered(24);
    lines += QString(81, u'x') + QStringLiteral(" y"); // no list of short items: one chunk
    source.answer = [](const ModelJob& job, Attempt) {
        return job.lines.size() > 1 ? QStringLiteral("only one") : job.lines.first();
    };
    EXPECT_EQ(failure(lines.join(u'\n')), Code::badResponse);
    // 25, 12, 6, 3, 1 and then 2 at the fourth halving, where it ends.
    EXPECT_THAT(source.askedLines(),
                ElementsAre(SizeIs(25), SizeIs(25), SizeIs(12), SizeIs(12), SizeIs(6), SizeIs(6),
                            SizeIs(3), SizeIs(3), SizeIs(1), SizeIs(2), SizeIs(2)));
}

TEST_F(OfflineTranslation, dropsTheFailureOfTheWholeWhenAHalfFailsByItself)
{
    source.answer = [](const ModelJob& job, Attempt) {
        if (job.lines.size() > 1) {
            throw TranslationError(Code::offlineEngineBusy);
        }
        return QString();
    };
    EXPECT_EQ(failure(QStringLiteral("a\nb")), Code::badResponse);
}

TEST_F(OfflineTranslation, aStoppedServerFailsTheJobAfterRetriesAndHalving)
{
    source.answer = [](const ModelJob&, Attempt) -> QString {
        throw TranslationError(Code::offlineEngineBusy);
    };
    EXPECT_EQ(failure(QStringLiteral("a\nb")), Code::offlineEngineBusy);
    EXPECT_THAT(source.askedLines(), ElementsAre(SizeIs(2), SizeIs(2), SizeIs(1), SizeIs(1)));
}

TEST_F(OfflineTranslation, oneFailedChunkFailsAll)
{
    source.answer = [](const ModelJob& job, Attempt) {
        if (job.lines.contains(QStringLiteral("line 7"))) {
            throw TranslationError(Code::offlineEngineBusy);
        }
        return job.lines.join(u'\n');
    };
    source.answerTime = [](const ModelJob& job) {
        return job.lines.contains(QStringLiteral("line 7")) ? 100ms : 5000ms;
    };
    auto call = start(numbered(40).join(u'\n'));
    clock.advance(800ms); // twice the chunk, twice its first line
    EXPECT_TRUE(call.isReady());
    EXPECT_EQ(source.inFlight, 0);
    EXPECT_EQ(source.cancelled, 3);
    EXPECT_THROW(await(std::move(call)), TranslationError);
    const auto asked = source.asked.size();
    clock.advance(1h);
    EXPECT_EQ(source.asked.size(), asked);
}

// --- cancellation ---

TEST_F(OfflineTranslation, aStopEndsEveryRequestInFlight)
{
    std::stop_source stop;
    auto call = start(numbered(40).join(u'\n'), stop.get_token());
    clock.advance(150ms);
    EXPECT_EQ(source.inFlight, 4);
    stop.request_stop();
    EXPECT_EQ(source.inFlight, 0);
    EXPECT_EQ(source.cancelled, 4);
    EXPECT_THROW(await(std::move(call)), CancellationError);
    EXPECT_THAT(source.asked, SizeIs(8)); // nothing was tried again
    EXPECT_EQ(clock.pendingTimers(), 0);
}

TEST_F(OfflineTranslation, aStopEndsTheStartOfTheServer)
{
    source.startTime = 1min;
    std::stop_source stop;
    auto call = start(QStringLiteral("a"), stop.get_token());
    stop.request_stop();
    EXPECT_THROW(await(std::move(call)), CancellationError);
}

TEST_F(OfflineTranslation, aStopBetweenTwoAttemptsIsHeeded)
{
    std::stop_source stop;
    source.answer = [&](const ModelJob&, Attempt) {
        stop.request_stop(); // too late for this answer
        return QString();
    };
    auto call = start(QStringLiteral("a\nb"), stop.get_token());
    clock.advance(1min);
    EXPECT_THROW(await(std::move(call)), CancellationError);
    EXPECT_THAT(source.asked, SizeIs(1));
}

TEST_F(OfflineTranslation, aStopEndsADocumentToo)
{
    std::stop_source stop;
    auto call = start(QStringLiteral(R"(["a b","c d","e f","g h","i j"])"), stop.get_token());
    clock.advance(50ms);
    EXPECT_EQ(source.inFlight, 4);
    stop.request_stop();
    EXPECT_EQ(source.inFlight, 0);
    EXPECT_THROW(await(std::move(call)), CancellationError);
}

// --- documents ---

TEST_F(OfflineTranslation, translatesTheTextsOfADocument)
{
    EXPECT_EQ(translated(QStringLiteral(
                  R"({"z":"hello world","id":"user_id","n":[1.0,1e400,"привет"],"a":"hello"})")),
              QStringLiteral(
                  R"({"z":"HELLO WORLD","id":"user_id","n":[1.0,1e400,"ПРИВЕТ"],"a":"hello"})"));
    EXPECT_THAT(source.askedLines(), ElementsAre(QStringList{QStringLiteral("hello world")},
                                                 QStringList{QStringLiteral("привет")}));
}

TEST_F(OfflineTranslation, writesADocumentWithLinesInLines)
{
    EXPECT_EQ(
        translated(QStringLiteral("{\"url\":\"http:\\/\\/a b/\",\n\"n\":12345678901234567890}")),
        QStringLiteral("{\n  \"url\": \"HTTP://A B/\",\n  \"n\": 12345678901234567890\n}"));
}

TEST_F(OfflineTranslation, asksNothingOfADocumentWithoutTexts)
{
    EXPECT_EQ(translated(QStringLiteral(" { \"a\" : 1.50, \"b\":[ ] } ")),
              QStringLiteral("{\"a\":1.50,\"b\":[]}"));
    EXPECT_EQ(translated(QStringLiteral("{\"id\":\"abc\"}")), QStringLiteral("{\"id\":\"abc\"}"));
    EXPECT_EQ(translated(QStringLiteral("[1,\n2]")), QStringLiteral("[\n  1,\n  2\n]"));
    EXPECT_THAT(source.asked, IsEmpty());
}

TEST_F(OfflineTranslation, takesADocumentOutOfItsFence)
{
    EXPECT_EQ(translated(QStringLiteral("```json\n{\"a\": \"hello world\"}\n```")),
              QStringLiteral("{\n  \"a\": \"HELLO WORLD\"\n}"));
    EXPECT_EQ(translated(QStringLiteral("```JSON [\"a b\"] ```")), QStringLiteral("[\"A B\"]"));
    EXPECT_EQ(translated(QStringLiteral("```[\"a b\"]")), QStringLiteral("[\"A B\"]"));
}

TEST_F(OfflineTranslation, whatIsNoDocumentIsText)
{
    EXPECT_EQ(translated(QStringLiteral("{\"a\": \"hello world\"")),
              QStringLiteral("{\"A\": \"HELLO WORLD\""));
    EXPECT_EQ(translated(QStringLiteral("\"hello world\"")), QStringLiteral("\"HELLO WORLD\""));
    source.asked.clear();
    source.answer = [](const ModelJob&, Attempt) { return QStringLiteral("plain"); };
    const QString otherFence = QStringLiteral("```Json [\"a b\"] ```");
    EXPECT_EQ(translated(otherFence), QStringLiteral("plain"));
    EXPECT_THAT(source.askedLines(), ElementsAre(QStringList{otherFence}));
}

TEST_F(OfflineTranslation, aDocumentOfHostileDepthIsText)
{
    const QString text = QString(100'000, u'[') + QStringLiteral("\"a b\"");
    EXPECT_EQ(translated(text), text.toUpper());
}

TEST_F(OfflineTranslation, handsEachTextOfADocumentItsPartOfTheDictionary)
{
    hints = {{QStringLiteral("WORLD"), {QStringLiteral("Welt")}},
             {QStringLiteral("moon"), {QStringLiteral("Mond")}}};
    translated(QStringLiteral(R"(["hello world","full Moon","plain text"])"));
    ASSERT_THAT(source.asked, SizeIs(3));
    EXPECT_THAT(source.asked[0].job.glossaryHints.keys(), ElementsAre(QStringLiteral("WORLD")));
    EXPECT_THAT(source.asked[1].job.glossaryHints.keys(), ElementsAre(QStringLiteral("moon")));
    EXPECT_THAT(source.asked[2].job.glossaryHints.keys(), IsEmpty());
}

TEST_F(OfflineTranslation, sendsATextOfSeveralLinesAsOne)
{
    source.answer = [](const ModelJob&, Attempt) { return QStringLiteral(" uno\n\ndos\n "); };
    EXPECT_EQ(translated(QStringLiteral(R"(["one\ntwo"])")), QStringLiteral(R"(["uno\ndos"])"));
    EXPECT_THAT(source.askedLines(), ElementsAre(QStringList{QStringLiteral("one\ntwo")}));
}

TEST_F(OfflineTranslation, keepsFourTextsOfADocumentInFlight)
{
    auto call = start(QStringLiteral(R"(["a 1","b 2","c 3","d 4","e 5"])"));
    clock.advance(0ms);
    EXPECT_EQ(source.inFlight, 4);
    clock.advance(200ms);
    EXPECT_TRUE(call.isReady());
    EXPECT_EQ(await(std::move(call)), QStringLiteral(R"(["A 1","B 2","C 3","D 4","E 5"])"));
}

TEST_F(OfflineTranslation, namesWithDotsTakeTheLaterTranslation)
{
    // The earlier text's answer comes last.
    source.answerTime = [](const ModelJob& job) {
        return job.lines.first().startsWith(u'e') ? 900ms : 100ms;
    };
    EXPECT_EQ(translated(QStringLiteral(R"({"a.b":"earlier text","a":{"b":"the later"}})")),
              QStringLiteral(R"({"a.b":"THE LATER","a":{"b":"THE LATER"}})"));
}

TEST_F(OfflineTranslation, translatesRepeatedMembersEachByItself)
{
    EXPECT_EQ(translated(QStringLiteral(R"({"a":"one text","a":"two text"})")),
              QStringLiteral(R"({"a":"ONE TEXT","a":"TWO TEXT"})"));
}

TEST_F(OfflineTranslation, aTextOfADocumentThatFailsFailsAll)
{
    source.answer = [](const ModelJob& job, Attempt) {
        return job.lines.first() == QStringLiteral("b 2") ? QStringLiteral(" \t ")
                                                          : job.lines.first();
    };
    EXPECT_EQ(failure(QStringLiteral(R"(["a 1","b 2","c 3","d 4","e 5","f 6","g 7","h 8"])")),
              Code::badResponse);
}

struct LeafCase
{
    const char16_t* value;
    bool isTranslatable;
};

class TranslatableLeaf : public ::testing::TestWithParam<LeafCase>
{
};

TEST_P(TranslatableLeaf, isTextForReaders)
{
    EXPECT_EQ(isTranslatableLeaf(QString::fromUtf16(GetParam().value)), GetParam().isTranslatable);
}

INSTANTIATE_TEST_SUITE_P(OfflineTranslator, TranslatableLeaf,
                         ::testing::Values(LeafCase{u"", false}, LeafCase{u" \n", false},
                                           LeafCase{u"é", false}, LeafCase{u" e\u0301 ", false},
                                           LeafCase{u"日", false}, LeafCase{u"日本", true},
                                           LeafCase{u"hello", false}, LeafCase{u" hello ", false},
                                           LeafCase{u"user_id", false},
                                           LeafCase{u"hello world", true}, LeafCase{u"a\tb", true},
                                           LeafCase{u"a\u00a0b", true}, LeafCase{u"a\nb", true},
                                           LeafCase{u"привет", true}, LeafCase{u"naïve", true},
                                           LeafCase{u"\U0001D4B6\U0001D4B7", true},
                                           LeafCase{u"😀😀", false}, LeafCase{u"12€", false},
                                           LeafCase{u"1 2", true}));

// --- how long it takes ---

TEST_F(OfflineTranslation, takesNoLongerThanFourInFlightMust)
{
    for (const int count : {40, 400, 5000}) {
        const QStringList lines = numbered(count);
        source.asked.clear();
        const auto before = clock.monotonicNow();
        auto call = start(lines.join(u'\n'));
        while (!call.isReady()) {
            clock.advance(1ms);
        }
        EXPECT_EQ(await(std::move(call)), lines.join(u'\n').toUpper());
        const int chunks = (count + 2) / 3;
        EXPECT_THAT(source.asked, SizeIs(chunks));
        const std::chrono::milliseconds ideal = 100ms * ((chunks + 3) / 4);
        EXPECT_LE(clock.monotonicNow() - before, ideal + 2ms) << count;
    }
}

} // namespace
} // namespace zelvane::test
