// What every engine owes to a server that misbehaves, whatever its format.

#include "online/AnthropicClient.h"
#include "online/DeepLClient.h"
#include "online/EngineFixture.h"
#include "online/GeminiClient.h"

namespace zelvane::test {
namespace {

using namespace std::chrono_literals;
using Code = TranslationError::Code;
using Kind = TransportError::Kind;
using Outcome = CallOutcome<QString>;

struct Engine
{
    const char* name;
    AIProvider provider;
    /// An answer that says "Hallo".
    QByteArray answer;
    std::unique_ptr<TranslationEngine> (*make)(HttpTransport&, const UserDefaults&);
};

template <typename Client>
std::unique_ptr<TranslationEngine> make(HttpTransport& transport, const UserDefaults& defaults)
{
    return std::make_unique<Client>(transport, defaults);
}

class EngineOnTheWire : public ProviderFixture, public ::testing::WithParamInterface<Engine>
{
protected:
    QCoro::Task<QString> call(std::stop_token stop = {})
    {
        return engine->translate(requestFor(GetParam().provider), std::move(stop));
    }
    Outcome translate() { return outcomeOf(call()); }

    std::unique_ptr<TranslationEngine> engine = GetParam().make(transport, defaults);
};

INSTANTIATE_TEST_SUITE_P(
    Online, EngineOnTheWire,
    ::testing::Values(Engine{"gemini", AIProvider::gemini,
                             R"({"candidates":[{"content":{"parts":[{"text":"Hallo"}]}}]})",
                             make<GeminiClient>},
                      Engine{"claude", AIProvider::claude,
                             R"({"content":[{"type":"text","text":"Hallo"}]})",
                             make<AnthropicClient>},
                      Engine{"deepL", AIProvider::deepL, R"({"translations":[{"text":"Hallo"}]})",
                             make<DeepLClient>}),
    [](const auto& info) { return info.param.name; });

TEST_P(EngineOnTheWire, takesAnAnswerWhateverItsTypeIsSaidToBe)
{
    server.enqueue(
        Answer().send(httpMessage(200, GetParam().answer, {{"Content-Type", "text/html"}})));
    server.enqueue(Answer().send(httpMessage(299, GetParam().answer, {})));
    EXPECT_EQ(translate().value, QStringLiteral("Hallo"));
    EXPECT_EQ(translate().value, QStringLiteral("Hallo"));
}

TEST_P(EngineOnTheWire, takesAnAnswerInChunksWithHeadersThatComeSlowly)
{
    const QByteArray& body = GetParam().answer;
    server.enqueue(Answer()
                       .send("HTTP/1.1 200 O")
                       .hold()
                       .send("K\r\nTransfer-Encoding: chu")
                       .hold()
                       .send("nked\r\n\r\n" + QByteArray::number(body.size(), 16) + "\r\n" + body)
                       .hold()
                       .send("\r\n0\r\n\r\n"));
    QString translation;
    auto task = [](QCoro::Task<QString> running, QString* result) -> QCoro::Task<void> {
        *result = co_await running;
    }(call(), &translation);
    for (int piece = 0; piece < 3; ++piece) {
        ASSERT_TRUE(waitUntil([&] { return server.heldAnswers() == 1; }));
        EXPECT_EQ(translation, QString());
        server.release();
    }
    EXPECT_TRUE(waitUntil([&] { return !translation.isEmpty(); }));
    EXPECT_EQ(translation, QStringLiteral("Hallo"));
}

TEST_P(EngineOnTheWire, usesOneConnectionForAllTranslations)
{
    server.setHandler([](const RecordedRequest&) { return Answer::json(200, GetParam().answer); });
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(translate().value, QStringLiteral("Hallo"));
    }
    EXPECT_EQ(server.requests().size(), 5);
    EXPECT_EQ(server.acceptedConnections(), 1);
}

TEST_P(EngineOnTheWire, failsOnAPageOfAProxyThatCallsItselfASuccess)
{
    server.enqueue(Answer().send(
        httpMessage(200, "<html>Please log in</html>", {{"Content-Type", "text/html"}})));
    EXPECT_EQ(translate().text, QStringLiteral("The answer is not JSON: illegal value at byte 1."));
}

TEST_P(EngineOnTheWire, showsTheStartOfAProxysErrorPage)
{
    server.enqueue(Answer().send(httpMessage(
        502, "<html><head><title>502 Bad Gateway</title></head>" + QByteArray(1000, 'x'),
        {{"Content-Type", "text/html"}})));
    EXPECT_EQ(translate().text,
              QStringLiteral("API error 502: <html><head><title>502 Bad Gateway</title></head>") +
                  QString(351, u'x') + u'…');
}

TEST_P(EngineOnTheWire, cutsAComplaintAfterFourHundredCharactersAndWithinNone)
{
    const QByteArray family = "👨‍👩‍👧";
    server.enqueue(Answer::json(500, family.repeated(400)));
    server.enqueue(Answer::json(500, family.repeated(401)));
    const QString shown =
        QStringLiteral("API error 500: ") + QString::fromUtf8(family).repeated(400);
    EXPECT_EQ(translate().text, shown);
    EXPECT_EQ(translate().text, shown + u'…');
}

TEST_P(EngineOnTheWire, showsNothingOfAComplaintThatIsNoText)
{
    server.enqueue(Answer::json(500, "\xff\xfe"));
    server.enqueue(Answer::json(403, ""));
    EXPECT_EQ(translate().text, QStringLiteral("API error 500: "));
    EXPECT_EQ(translate().text, QStringLiteral("API error 403: "));
}

TEST_P(EngineOnTheWire, triesOnceWhateverTheStatus)
{
    for (const int status : {300, 400, 401, 403, 404, 408, 413, 422, 429, 456, 500, 503, 529}) {
        server.enqueue(Answer().send(httpMessage(
            status, "no", {{"Retry-After", "1"}, {"WWW-Authenticate", "Basic realm=\"x\""}})));
        const Outcome outcome = translate();
        EXPECT_EQ(outcome.code, Code::http) << status;
        EXPECT_TRUE(outcome.text.startsWith(QStringLiteral("API error %1: ").arg(status)))
            << outcome.text.toStdString();
    }
    EXPECT_EQ(server.requests().size(), 13);
}

TEST_P(EngineOnTheWire, neverShowsTheKeyThatAComplaintQuotes)
{
    server.enqueue(Answer::json(401, "invalid key-1234567890, not key-1234567890!"));
    EXPECT_EQ(translate().text, QStringLiteral("API error 401: invalid ***, not ***!"));
}

TEST_P(EngineOnTheWire, failsOnHalfABody)
{
    server.enqueue(Answer().send(httpMessage(200, GetParam().answer).chopped(9)).close());
    const Outcome outcome = translate();
    EXPECT_EQ(outcome.transport, Kind::truncated);
    EXPECT_EQ(outcome.text, QStringLiteral("The answer of 127.0.0.1 is incomplete."));
    EXPECT_EQ(server.requests().size(), 1);
}

TEST_P(EngineOnTheWire, failsOnAnEmptyBody)
{
    server.enqueue(Answer::json(200, ""));
    server.enqueue(Answer().send("HTTP/1.1 204 No Content\r\n\r\n"));
    EXPECT_TRUE(translate().json);
    EXPECT_TRUE(translate().json);
}

TEST_P(EngineOnTheWire, failsWhenTheServerHangsUp)
{
    server.setHandler([](const RecordedRequest&) { return Answer().close(); });
    const Outcome outcome = translate();
    EXPECT_EQ(outcome.transport, Kind::connection);
    EXPECT_EQ(outcome.text,
              QStringLiteral("The connection to 127.0.0.1 ended without a valid answer."));
    EXPECT_EQ(server.requests().size(), 1);
}

TEST_P(EngineOnTheWire, failsOnAHugeBody)
{
    server.enqueue(Answer().send("HTTP/1.1 200 OK\r\n\r\n").flood(hugeBody).close());
    EXPECT_EQ(translate().transport, Kind::tooLarge);
    EXPECT_TRUE(waitUntil([&] { return server.openConnections() == 0; }));
    EXPECT_LT(server.floodedBytes(), hugeBody / 2);
}

TEST_P(EngineOnTheWire, asksForUnpackedAnswersAndTakesNoOthers)
{
    server.enqueue(Answer().send(
        httpMessage(200, gzipped(GetParam().answer), {{"Content-Encoding", "gzip"}})));
    EXPECT_EQ(translate().text,
              QStringLiteral("The answer of 127.0.0.1 is packed and can't be read."));
    EXPECT_EQ(received().header("Accept-Encoding"), "identity");
}

TEST_P(EngineOnTheWire, tellsTheKeyToNoOtherHost)
{
    for (const int status : {301, 302, 303, 307, 308}) {
        LoopbackHttpServer other;
        server.enqueue(Answer().send(
            httpMessage(status, "", {{"Location", other.url(QStringLiteral("/x")).toEncoded()}})));
        EXPECT_EQ(translate().text, QStringLiteral("API error %1: ").arg(status));
        EXPECT_EQ(other.acceptedConnections(), 0);
    }
}

TEST_P(EngineOnTheWire, failsAfterThreeMinutesOfSilence)
{
    server.enqueue(Answer().hold());
    std::optional<Kind> kind;
    [](QCoro::Task<QString> task, std::optional<Kind>* result) -> QCoro::Task<void> {
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
    EXPECT_EQ(kind, Kind::timeout);
    EXPECT_EQ(clock.pendingTimers(), 0);
}

TEST_P(EngineOnTheWire, hangsUpWhenItIsCancelled)
{
    server.enqueue(Answer().hold());
    std::stop_source stop;
    auto running = call(stop.get_token());
    ASSERT_TRUE(waitUntil([&] { return server.heldAnswers() == 1; }));
    stop.request_stop();
    EXPECT_TRUE(outcomeOf(std::move(running)).cancelled);
    EXPECT_TRUE(waitUntil([&] { return server.openConnections() == 0; }));
    EXPECT_EQ(clock.pendingTimers(), 0);
}

TEST_P(EngineOnTheWire, sendsNothingWhenItIsAlreadyCancelled)
{
    std::stop_source stop;
    stop.request_stop();
    EXPECT_TRUE(outcomeOf(call(stop.get_token())).cancelled);
    EXPECT_EQ(server.acceptedConnections(), 0);
}

TEST_P(EngineOnTheWire, takesNoPlainHttpBeyondThisMachine)
{
    defaults.setValue(QStringLiteral("zv.endpoint.") + rawValue(GetParam().provider),
                      QStringLiteral("http://gateway.example"));
    EXPECT_EQ(translate().code, Code::invalidURL);
}

} // namespace
} // namespace zelvane::test
