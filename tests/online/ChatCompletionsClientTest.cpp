#include "online/ChatCompletionsClient.h"

#include "http/NetworkHttpTransport.h"
#include "online/CallOutcome.h"
#include "support/FakeHttpTransport.h"
#include "support/LoopbackHttpServer.h"
#include "support/VirtualClock.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace zelvane::test {
namespace {

using namespace std::chrono_literals;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::Pair;
using ::testing::SizeIs;

using Code = TranslationError::Code;

constexpr char goodAnswer[] = R"({"choices":[{"message":{"content":"Hallo"}}]})";

using Outcome = CallOutcome<QString>;

/// The timeline of a trace without the times: "label · detail".
QStringList timeline(const TranslationTrace& trace)
{
    constexpr qsizetype timeColumn = 10;
    QStringList lines = trace.report().split(u'\n');
    lines = lines.mid(lines.indexOf(QStringLiteral("timeline (ms from start):")) + 1);
    lines = lines.first(lines.indexOf(QString()));
    for (QString& line : lines) {
        line = line.sliced(timeColumn);
    }
    lines.removeOne(QStringLiteral("start"));
    return lines;
}

QJsonObject jsonBody(const QByteArray& body)
{
    return QJsonDocument::fromJson(body).object();
}

class ChatCompletions : public ::testing::Test
{
protected:
    ChatCompletions() { trace.begin({}); }

    Outcome translate(const QString& model = QStringLiteral("gpt-4o-mini"),
                      const QString& text = QStringLiteral("Hello"))
    {
        return outcomeOf(client.chatCompletion(text, QStringLiteral("Translate."),
                                               QStringLiteral("sk-1234567890"), model,
                                               QStringLiteral("https://api.example/v1/chat"), {}));
    }
    /// The members of the n-th body that was sent, but for the model and the messages.
    [[nodiscard]] QStringList sentParameters(std::size_t request) const
    {
        QStringList names = jsonBody(transport.requests().at(request).body).keys();
        names.removeOne(QStringLiteral("model"));
        names.removeOne(QStringLiteral("messages"));
        return names;
    }

    VirtualClock clock;
    TranslationTrace trace{clock};
    FakeHttpTransport transport;
    ChatCompletionsClient client{transport, trace};
};

TEST_F(ChatCompletions, sendsTheTextAndThePromptToTheModel)
{
    transport.answer(200, goodAnswer);
    EXPECT_EQ(translate(QStringLiteral("openai/gpt-4o")).value, QStringLiteral("Hallo"));

    ASSERT_THAT(transport.requests(), SizeIs(1));
    const HttpRequest& request = transport.requests().front();
    EXPECT_EQ(request.method, "POST");
    EXPECT_EQ(request.url, QUrl(QStringLiteral("https://api.example/v1/chat")));
    EXPECT_EQ(request.timeout, 180s);
    EXPECT_THAT(request.headers, ElementsAre(Pair("Authorization", "Bearer sk-1234567890"),
                                             Pair("Content-Type", "application/json")));
    EXPECT_EQ(request.body, R"({"messages":[{"content":"Translate.","role":"system"},)"
                            R"({"content":"Hello","role":"user"}],)"
                            R"("model":"openai/gpt-4o","temperature":0.2})");
}

TEST_F(ChatCompletions, tracesAnAttemptThatSucceeds)
{
    transport.answer(200, goodAnswer);
    translate(QStringLiteral("deepseek-chat"));
    EXPECT_THAT(timeline(trace), ElementsAre(QStringLiteral("API HTTP begin · attempt 1; params "
                                                            "temperature,thinking"),
                                             QStringLiteral("API HTTP end · attempt 1 ok")));
    EXPECT_EQ(jsonBody(transport.requests().front().body).value(u"thinking").toObject(),
              (QJsonObject{{QStringLiteral("type"), QStringLiteral("disabled")}}));
}

TEST_F(ChatCompletions, asksAReasoningModelForLittleEffortAndSetsNoTemperature)
{
    transport.answer(200, goodAnswer);
    translate(QStringLiteral("gpt-5-nano"));
    EXPECT_THAT(sentParameters(0), ElementsAre(QStringLiteral("reasoning_effort")));
    EXPECT_EQ(jsonBody(transport.requests().front().body).value(u"reasoning_effort"),
              QJsonValue(QStringLiteral("minimal")));
    EXPECT_THAT(timeline(trace),
                Contains(QStringLiteral("API HTTP begin · attempt 1; params reasoning_effort")));
}

TEST_F(ChatCompletions, sendsNoParametersToAModelThatTakesNone)
{
    transport.answer(200, goodAnswer);
    translate(QStringLiteral("o3-mini"));
    EXPECT_THAT(sentParameters(0), IsEmpty());
    EXPECT_THAT(timeline(trace), Contains(QStringLiteral("API HTTP begin · attempt 1; params ")));
}

TEST_F(ChatCompletions, repeatsWithoutAParameterThatTheServerRefuses)
{
    transport.answer(400, R"({"error":"Unsupported value: 'temperature'"})");
    transport.answer(200, goodAnswer);
    EXPECT_EQ(translate().value, QStringLiteral("Hallo"));
    EXPECT_THAT(sentParameters(0), ElementsAre(QStringLiteral("temperature")));
    EXPECT_THAT(sentParameters(1), IsEmpty());
    EXPECT_THAT(timeline(trace),
                ElementsAre(QStringLiteral("API HTTP begin · attempt 1; params temperature"),
                            QStringLiteral("API HTTP retry · drop temperature; attempt 1"),
                            QStringLiteral("API HTTP begin · attempt 2; params "),
                            QStringLiteral("API HTTP end · attempt 2 ok")));
}

TEST_F(ChatCompletions, dropsOneParameterForEachRefusal)
{
    transport.answer(400, "neither thinking nor temperature");
    transport.answer(400, "no thinking");
    transport.answer(200, goodAnswer);
    EXPECT_EQ(translate(QStringLiteral("deepseek-chat")).value, QStringLiteral("Hallo"));
    EXPECT_THAT(timeline(trace),
                ElementsAre(QStringLiteral("API HTTP begin · attempt 1; params "
                                           "temperature,thinking"),
                            QStringLiteral("API HTTP retry · drop temperature; attempt 1"),
                            QStringLiteral("API HTTP begin · attempt 2; params thinking"),
                            QStringLiteral("API HTTP retry · drop thinking; attempt 2"),
                            QStringLiteral("API HTTP begin · attempt 3; params "),
                            QStringLiteral("API HTTP end · attempt 3 ok")));
}

TEST_F(ChatCompletions, failsWhenARefusalNamesNoParameter)
{
    transport.answer(400, "bad model");
    const Outcome outcome = translate();
    EXPECT_EQ(outcome.code, Code::http);
    EXPECT_EQ(outcome.text, QStringLiteral("API error 400: bad model"));
    EXPECT_THAT(transport.requests(), SizeIs(1));
    EXPECT_THAT(timeline(trace),
                ElementsAre(QStringLiteral("API HTTP begin · attempt 1; params temperature"),
                            QStringLiteral("API HTTP end · attempt 1 failed: API error 400: bad "
                                           "model")));
}

TEST_F(ChatCompletions, failsWhenTheServerRefusesAParameterThatIsAlreadyDropped)
{
    transport.answer(400, "temperature");
    transport.answer(400, "still temperature");
    const Outcome outcome = translate();
    EXPECT_EQ(outcome.text, QStringLiteral("API error 400: still temperature"));
    EXPECT_THAT(transport.requests(), SizeIs(2));
    EXPECT_THAT(timeline(trace),
                Contains(QStringLiteral(
                    "API HTTP end · attempt 2 failed: API error 400: still temperature")));
}

TEST_F(ChatCompletions, looksForParametersInTheShownPartOfTheBodyOnly)
{
    transport.answer(400, QByteArray(395, 'x') + "temperature");
    EXPECT_EQ(translate().code, Code::http);
    EXPECT_THAT(transport.requests(), SizeIs(1));
}

TEST_F(ChatCompletions, doesNotRepeatAfterAnyOtherStatus)
{
    for (const int status : {401, 403, 404, 422, 429, 500, 503}) {
        transport.answer(status, "temperature");
        const Outcome outcome = translate();
        EXPECT_EQ(outcome.text, QStringLiteral("API error %1: temperature").arg(status));
    }
    EXPECT_THAT(transport.requests(), SizeIs(7));
}

TEST_F(ChatCompletions, cutsALongComplaint)
{
    transport.answer(500, QByteArray(2000, 'x'));
    EXPECT_EQ(translate().text, QStringLiteral("API error 500: ") + QString(400, u'x') + u'…');
}

TEST_F(ChatCompletions, neverShowsTheKeyThatAComplaintQuotes)
{
    transport.answer(401, "Incorrect key sk-1234567890, sk-1234567890!");
    EXPECT_EQ(translate().text, QStringLiteral("API error 401: Incorrect key ***, ***!"));
    EXPECT_THAT(trace.report().toStdString(), Not(::testing::HasSubstr("1234567890")));
}

TEST_F(ChatCompletions, refusesAnAddressThatIsNone)
{
    for (const char* url : {"", "no url", "/v1/chat", "https://", "https://a b/", "://"}) {
        const Outcome outcome = outcomeOf(client.chatCompletion(
            QStringLiteral("Hello"), QStringLiteral("Translate."), QStringLiteral("key"),
            QStringLiteral("gpt-4o"), QString::fromLatin1(url), {}));
        EXPECT_EQ(outcome.code, Code::invalidURL) << url;
    }
    EXPECT_THAT(transport.requests(), IsEmpty());
    EXPECT_THAT(timeline(trace), IsEmpty());
}

TEST_F(ChatCompletions, passesAFailureOfTheTransportOn)
{
    transport.fail(TransportError(TransportError::Kind::timeout, QStringLiteral("too late")));
    const Outcome outcome = translate();
    EXPECT_EQ(outcome.transport, TransportError::Kind::timeout);
    EXPECT_EQ(outcome.text, QStringLiteral("too late"));
    EXPECT_THAT(timeline(trace),
                ElementsAre(QStringLiteral("API HTTP begin · attempt 1; params temperature")));
}

TEST_F(ChatCompletions, passesACancellationOn)
{
    transport.fail(CancellationError());
    EXPECT_TRUE(translate().cancelled);
    EXPECT_THAT(timeline(trace), SizeIs(1));
}

TEST_F(ChatCompletions, handsTheStopTokenToTheTransport)
{
    std::stop_source stop;
    stop.request_stop();
    const Outcome outcome = outcomeOf(client.chatCompletion(
        QStringLiteral("Hello"), QStringLiteral("Translate."), QStringLiteral("key"),
        QStringLiteral("gpt-4o"), QStringLiteral("https://api.example"), stop.get_token()));
    EXPECT_TRUE(outcome.cancelled);
    EXPECT_THAT(transport.requests(), IsEmpty());
}

TEST_F(ChatCompletions, sendsAnyText)
{
    transport.answer(200, goodAnswer);
    const QString text =
        QStringLiteral("\"quoted\" \\ \n\t\u0001 ümläut 👨‍👩‍👧 \u2028");
    translate(QStringLiteral("gpt-4o"), text);
    const QJsonArray messages =
        jsonBody(transport.requests().front().body).value(u"messages").toArray();
    EXPECT_EQ(messages.at(1).toObject().value(u"content").toString(), text);
}

TEST_F(ChatCompletions, sendsValidUtf8EvenForTextThatHasNone)
{
    transport.answer(200, goodAnswer);
    const QString text = QStringLiteral("a") + QChar(0xd800) + u'b' + QChar(0xdc00);
    EXPECT_EQ(translate(QStringLiteral("gpt-4o"), text).value, QStringLiteral("Hallo"));
    const QJsonArray messages =
        jsonBody(transport.requests().front().body).value(u"messages").toArray();
    EXPECT_EQ(messages.at(1).toObject().value(u"content").toString(),
              QStringLiteral("a\ufffdb\ufffd"));
}

// Answers

struct BadAnswer
{
    const char* name;
    QByteArray body;
    const char* json; ///< the parser's complaint, or null where the shape is wrong
};

class UnusableAnswer : public ChatCompletions, public ::testing::WithParamInterface<BadAnswer>
{
};

TEST_P(UnusableAnswer, fails)
{
    transport.answer(200, GetParam().body);
    const Outcome outcome = translate();
    QStringList expected{QStringLiteral("API HTTP begin · attempt 1; params temperature")};
    if (GetParam().json != nullptr) {
        EXPECT_TRUE(outcome.json);
        EXPECT_EQ(outcome.text, QString::fromLatin1(GetParam().json));
    } else {
        EXPECT_EQ(outcome.code, Code::badResponse);
        expected += QStringLiteral("API HTTP end · attempt 1 failed: Unexpected response from the "
                                   "AI provider.");
    }
    EXPECT_EQ(timeline(trace), expected);
    EXPECT_THAT(transport.requests(), SizeIs(1));
}

INSTANTIATE_TEST_SUITE_P(
    ChatCompletions, UnusableAnswer,
    ::testing::Values(
        BadAnswer{"array", "[]", nullptr}, BadAnswer{"emptyObject", "{}", nullptr},
        BadAnswer{"choicesNull", R"({"choices":null})", nullptr},
        BadAnswer{"choicesObject", R"({"choices":{"0":{"message":{"content":"x"}}}})", nullptr},
        BadAnswer{"noChoices", R"({"choices":[]})", nullptr},
        BadAnswer{"choiceText", R"({"choices":["x"]})", nullptr},
        BadAnswer{"otherChoiceText", R"({"choices":[{"message":{"content":"x"}},"y"]})", nullptr},
        BadAnswer{"noMessage", R"({"choices":[{"text":"x"}]})", nullptr},
        BadAnswer{"messageText", R"({"choices":[{"message":"x"}]})", nullptr},
        BadAnswer{"noContent", R"({"choices":[{"message":{}}]})", nullptr},
        BadAnswer{"contentNull", R"({"choices":[{"message":{"content":null}}]})", nullptr},
        BadAnswer{"contentNumber", R"({"choices":[{"message":{"content":1}}]})", nullptr},
        BadAnswer{"contentParts", R"({"choices":[{"message":{"content":[{"text":"x"}]}}]})",
                  nullptr},
        BadAnswer{"secondOnly", R"({"choices":[{},{"message":{"content":"x"}}]})", nullptr},
        BadAnswer{"empty", "", "The answer is not JSON: illegal value at byte 0."},
        BadAnswer{"html", "<!DOCTYPE html><html></html>",
                  "The answer is not JSON: illegal value at byte 1."},
        BadAnswer{"half", R"({"choices":[{"message":{"cont)",
                  "The answer is not JSON: unterminated string at byte 30."},
        BadAnswer{"text", R"("Hallo")", "The answer is not JSON: illegal value at byte 1."},
        BadAnswer{"trailing", QByteArray(goodAnswer) + "}",
                  "The answer is not JSON: garbage at the end of the document at byte 45."},
        BadAnswer{"invalidUtf8", "{\"choices\":[{\"message\":{\"content\":\"\xff\"}}]}",
                  "The answer is not JSON: invalid UTF8 string at byte 35."},
        BadAnswer{"deep", QByteArray(100'000, '['),
                  "The answer is not JSON: too deeply nested document at byte 1025."},
        BadAnswer{"deepObjects", QByteArray(R"({"a":)").repeated(100'000),
                  "The answer is not JSON: too deeply nested document at byte 5121."},
        BadAnswer{"zero", QByteArray("\0", 1), "The answer is not JSON: illegal value at byte 1."}),
    [](const auto& info) { return info.param.name; });

TEST_F(ChatCompletions, trimsTheTranslation)
{
    transport.answer(200, R"({"choices":[{"message":{"content":" \n\u00a0Guten Tag\r\n\t"}}]})");
    EXPECT_EQ(translate().value, QStringLiteral("Guten Tag"));
}

TEST_F(ChatCompletions, takesAnEmptyTranslationForOne)
{
    transport.answer(200, R"({"choices":[{"message":{"content":""}}]})");
    transport.answer(200, R"({"choices":[{"message":{"content":" \n"}}]})");
    EXPECT_EQ(translate().value, QString());
    EXPECT_EQ(translate().value, QString());
    EXPECT_THAT(timeline(trace), Contains(QStringLiteral("API HTTP end · attempt 1 ok")).Times(2));
}

TEST_F(ChatCompletions, ignoresWhateverElseAnAnswerHolds)
{
    transport.answer(201, "\xef\xbb\xbf"
                          R"( {"id":1,"choices":[{"index":0,"message":{)"
                          R"("role":"assistant","refusal":null,"content":"Grüße 👋 \u00e4",)"
                          R"("tool_calls":[]},"logprobs":null},{"x":1}],"usage":{"a":[1,2]}} )");
    EXPECT_EQ(translate().value, QStringLiteral("Grüße 👋 ä"));
}

// Over a real connection

class ChatCompletionsOnTheWire : public ::testing::Test
{
protected:
    ChatCompletionsOnTheWire() { trace.begin({}); }

    QCoro::Task<QString> call(std::stop_token stop = {})
    {
        return client.chatCompletion(QStringLiteral("Hello"), QStringLiteral("Translate."),
                                     QStringLiteral("sk-1234567890"), QStringLiteral("gpt-4o"),
                                     server.url(QStringLiteral("/v1/chat/completions")).toString(),
                                     std::move(stop));
    }

    VirtualClock clock;
    TranslationTrace trace{clock};
    LoopbackHttpServer server;
    NetworkHttpTransport transport{clock};
    ChatCompletionsClient client{transport, trace};
};

TEST_F(ChatCompletionsOnTheWire, sendsWhatTheProtocolAsksFor)
{
    server.enqueue(Answer::json(200, goodAnswer));
    EXPECT_EQ(outcomeOf(call()).value, QStringLiteral("Hallo"));
    const RecordedRequest& request = server.requests().front();
    EXPECT_EQ(request.requestLine, "POST /v1/chat/completions HTTP/1.1");
    EXPECT_EQ(request.header("Authorization"), "Bearer sk-1234567890");
    EXPECT_EQ(request.header("Content-Type"), "application/json");
    EXPECT_EQ(request.body, R"({"messages":[{"content":"Translate.","role":"system"},)"
                            R"({"content":"Hello","role":"user"}],)"
                            R"("model":"gpt-4o","temperature":0.2})");
}

TEST_F(ChatCompletionsOnTheWire, repeatsWithoutARefusedParameter)
{
    server.enqueue(Answer::json(400, R"({"error":{"param":"temperature"}})"));
    server.enqueue(Answer::json(200, goodAnswer));
    EXPECT_EQ(outcomeOf(call()).value, QStringLiteral("Hallo"));
    EXPECT_EQ(server.requests().back().body,
              R"({"messages":[{"content":"Translate.","role":"system"},)"
              R"({"content":"Hello","role":"user"}],"model":"gpt-4o"})");
    EXPECT_EQ(server.acceptedConnections(), 1);
}

TEST_F(ChatCompletionsOnTheWire, failsOnAPageOfHtml)
{
    server.enqueue(Answer().send(
        httpMessage(200, "<html>Please log in</html>", {{"Content-Type", "text/html"}})));
    EXPECT_TRUE(outcomeOf(call()).json);
}

TEST_F(ChatCompletionsOnTheWire, reliesOnTheBodyWhateverItsTypeIsSaidToBe)
{
    server.enqueue(Answer().send(httpMessage(200, goodAnswer, {{"Content-Type", "text/html"}})));
    server.enqueue(Answer().send(httpMessage(200, goodAnswer, {})));
    EXPECT_EQ(outcomeOf(call()).value, QStringLiteral("Hallo"));
    EXPECT_EQ(outcomeOf(call()).value, QStringLiteral("Hallo"));
}

TEST_F(ChatCompletionsOnTheWire, failsOnHalfABody)
{
    server.enqueue(Answer().send(httpMessage(200, goodAnswer).chopped(20)).close());
    EXPECT_EQ(outcomeOf(call()).transport, TransportError::Kind::truncated);
}

TEST_F(ChatCompletionsOnTheWire, failsOnAHugeBody)
{
    server.enqueue(Answer()
                       .send("HTTP/1.1 200 OK\r\nContent-Type: application/json\r\n\r\n")
                       .flood(hugeBody)
                       .close());
    EXPECT_EQ(outcomeOf(call()).transport, TransportError::Kind::tooLarge);
    EXPECT_TRUE(waitUntil([&] { return server.openConnections() == 0; }));
    EXPECT_LT(server.floodedBytes(), hugeBody / 2);
}

TEST_F(ChatCompletionsOnTheWire, failsAfterThreeMinutesOfSilence)
{
    server.enqueue(Answer().hold());
    std::optional<TransportError::Kind> kind;
    [](QCoro::Task<QString> task,
       std::optional<TransportError::Kind>* result) -> QCoro::Task<void> {
        try {
            co_await task;
        } catch (const TransportError& error) {
            *result = error.kind();
        }
    }(call(), &kind);
    ASSERT_TRUE(waitUntil([&] { return server.heldAnswers() == 1; }));
    clock.advance(179'999ms);
    EXPECT_EQ(kind, std::nullopt);
    clock.advance(1ms);
    EXPECT_EQ(kind, TransportError::Kind::timeout);
}

TEST_F(ChatCompletionsOnTheWire, hangsUpWhenItIsCancelled)
{
    server.enqueue(Answer().hold());
    std::stop_source stop;
    auto running = call(stop.get_token());
    ASSERT_TRUE(waitUntil([&] { return server.heldAnswers() == 1; }));
    stop.request_stop();
    EXPECT_TRUE(outcomeOf(std::move(running)).cancelled);
    EXPECT_TRUE(waitUntil([&] { return server.openConnections() == 0; }));
}

TEST_F(ChatCompletionsOnTheWire, sendsTheKeyToNoOtherHost)
{
    LoopbackHttpServer other;
    server.enqueue(Answer().send(httpMessage(307, "", {{"Location", other.url().toEncoded()}})));
    EXPECT_EQ(outcomeOf(call()).text, QStringLiteral("API error 307: "));
    EXPECT_EQ(other.acceptedConnections(), 0);
}

} // namespace
} // namespace zelvane::test
