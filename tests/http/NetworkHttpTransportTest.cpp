#include "http/NetworkHttpTransport.h"

#include "foundation/SystemClock.h"
#include "support/Await.h"
#include "support/LoopbackHttpServer.h"
#include "support/TrustLoopbackServer.h"
#include "support/VirtualClock.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QNetworkProxyFactory>
#include <QSemaphore>
#include <QSslConfiguration>

namespace zelvane::test {
namespace {

using namespace std::chrono_literals;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::Not;
using ::testing::Pair;

using Kind = TransportError::Kind;

/// What became of one exchange.
struct Outcome
{
    std::optional<HttpResponse> response;
    std::optional<Kind> kind;
    QString text;
    bool cancelled = false;

    [[nodiscard]] bool ended() const { return response || kind || cancelled; }
};

QCoro::Task<void> follow(QCoro::Task<HttpResponse> task, std::shared_ptr<Outcome> outcome)
{
    try {
        outcome->response = co_await task;
    } catch (const TransportError& error) {
        outcome->text = error.description();
        outcome->kind = error.kind();
    } catch (const CancellationError&) {
        outcome->cancelled = true;
    }
}

/// A virtual clock that tells how often the transport has set its time limits anew.
class CountingClock final : public Clock
{
public:
    [[nodiscard]] std::chrono::nanoseconds monotonicNow() const override
    {
        return m_clock.monotonicNow();
    }
    [[nodiscard]] QDateTime now() const override { return m_clock.now(); }
    [[nodiscard]] std::unique_ptr<Timer> callLater(std::chrono::milliseconds delay,
                                                   std::function<void()> callback) override
    {
        ++m_timers;
        m_lastTimerAt = monotonicNow();
        return m_clock.callLater(delay, std::move(callback));
    }
    [[nodiscard]] std::unique_ptr<Timer> callEvery(std::chrono::milliseconds interval,
                                                   std::chrono::milliseconds tolerance,
                                                   std::function<void()> callback) override
    {
        return m_clock.callEvery(interval, tolerance, std::move(callback));
    }
    void advance(std::chrono::milliseconds duration) { m_clock.advance(duration); }
    [[nodiscard]] int timers() const { return m_timers; }
    /// Whether the latest timer was set at this moment of virtual time.
    [[nodiscard]] bool isTimerFromNow() const { return m_lastTimerAt == monotonicNow(); }
    [[nodiscard]] qsizetype pendingTimers() const { return m_clock.pendingTimers(); }

private:
    VirtualClock m_clock;
    int m_timers = 0;
    std::chrono::nanoseconds m_lastTimerAt{};
};

class NetworkTransport : public ::testing::Test
{
protected:
    /// A POST with a body and a key.
    [[nodiscard]] HttpRequest post(const QString& path = QStringLiteral("/v1/chat")) const
    {
        HttpRequest request;
        request.method = "POST";
        request.url = server.url(path);
        request.headers = {{"Authorization", "Bearer secret"}, {"Content-Type", "text/x"}};
        request.body = "question";
        return request;
    }

    std::shared_ptr<Outcome> start(const HttpRequest& request, const std::stop_token& stop = {})
    {
        const auto outcome = std::make_shared<Outcome>();
        follow(transport->send(request, stop), outcome);
        return outcome;
    }

    /// Runs an exchange to its end.
    Outcome run(const HttpRequest& request)
    {
        const auto outcome = start(request);
        EXPECT_TRUE(waitUntil([&] { return outcome->ended(); }));
        return *outcome;
    }

    [[nodiscard]] bool waitForRequests(std::size_t count) const
    {
        return waitUntil([&] { return server.requests().size() == count; });
    }

    CountingClock clock;
    LoopbackHttpServer server;
    std::unique_ptr<NetworkHttpTransport> transport = std::make_unique<NetworkHttpTransport>(clock);
};

TEST_F(NetworkTransport, sendsTheRequestAndDeliversTheWholeAnswer)
{
    server.enqueue(Answer().send(httpMessage(200, "answer", {{"X-Thing", "One"}})));
    const Outcome outcome = run(post(QStringLiteral("/v1/chat?x=%2Fy")));

    ASSERT_TRUE(outcome.response) << outcome.text.toStdString();
    EXPECT_EQ(outcome.response->status, 200);
    EXPECT_EQ(outcome.response->body, "answer");
    EXPECT_THAT(outcome.response->headers,
                ElementsAre(Pair("x-thing", "One"), Pair("content-length", "6")));
    const RecordedRequest& request = server.requests().front();
    EXPECT_EQ(request.requestLine, "POST /v1/chat?x=%2Fy HTTP/1.1");
    EXPECT_EQ(request.body, "question");
    EXPECT_THAT(request.headers, Contains(Pair("Authorization", "Bearer secret")));
    EXPECT_THAT(request.headers, Contains(Pair("Content-Type", "text/x")));
    EXPECT_THAT(request.headers, Contains(Pair("Content-Length", "8")));
    EXPECT_EQ(request.header("User-Agent"), "Zelvane-Desk");
    EXPECT_TRUE(request.header("Cookie").isNull());
    EXPECT_TRUE(request.header("Cache-Control").isNull());
}

TEST_F(NetworkTransport, sendsHeadersInTheOrderAndSpellingOfTheRequest)
{
    server.enqueue(Answer::json(200, "{}"));
    HttpRequest request = post();
    request.headers = {{"zZ-Last", "1"}, {"aA-First", "2"}, {"Mm", "3"}};
    run(request);
    QList<QByteArray> own;
    for (const auto& [name, value] : server.requests().front().headers) {
        if (value.size() == 1 && value != "8") {
            own.append(name);
        }
    }
    EXPECT_THAT(own, ElementsAre("zZ-Last", "aA-First", "Mm"));
}

TEST_F(NetworkTransport, sendsALargeBodyWhole)
{
    server.enqueue(Answer::json(200, "{}"));
    HttpRequest request = post();
    request.body = QByteArray(3'000'001, 'q');
    EXPECT_TRUE(run(request).response);
    EXPECT_EQ(server.requests().front().body, request.body);
}

TEST_F(NetworkTransport, gets)
{
    server.enqueue(Answer::json(200, "[]"));
    HttpRequest request;
    request.url = server.url(QStringLiteral("/models"));
    const Outcome outcome = run(request);
    EXPECT_EQ(outcome.response->body, "[]");
    EXPECT_EQ(server.requests().front().requestLine, "GET /models HTTP/1.1");
    EXPECT_TRUE(server.requests().front().body.isEmpty());
}

class StatusOfAnAnswer : public NetworkTransport, public ::testing::WithParamInterface<int>
{
};

TEST_P(StatusOfAnAnswer, comesWithItsBodyAndIsNoFailure)
{
    server.enqueue(Answer().send(httpMessage(
        GetParam(), R"({"error":"why"})",
        {{"Content-Type", "application/json"}, {"WWW-Authenticate", "Basic realm=\"x\""}})));
    const Outcome outcome = run(post());
    ASSERT_TRUE(outcome.response) << outcome.text.toStdString();
    EXPECT_EQ(outcome.response->status, GetParam());
    EXPECT_EQ(outcome.response->body, R"({"error":"why"})");
    EXPECT_EQ(server.requests().size(), 1);
}

INSTANTIATE_TEST_SUITE_P(NetworkTransport, StatusOfAnAnswer,
                         ::testing::Values(201, 299, 400, 401, 402, 403, 404, 405, 409, 410, 418,
                                           422, 429, 451, 499, 500, 501, 502, 503, 504, 529, 599,
                                           600));

TEST_F(NetworkTransport, takesAnAnswerWithoutABody)
{
    server.enqueue(Answer().send("HTTP/1.1 204 No Content\r\n\r\n"));
    server.enqueue(Answer().send(httpMessage(200, "")));
    EXPECT_EQ(run(post()).response->status, 204);
    const Outcome outcome = run(post());
    EXPECT_EQ(outcome.response->status, 200);
    EXPECT_EQ(outcome.response->body, QByteArray());
}

TEST_F(NetworkTransport, takesAnAnswerThatEndsWithTheConnection)
{
    server.enqueue(Answer().send("HTTP/1.0 200 OK\r\n\r\nuntil the end").close());
    const Outcome outcome = run(post());
    ASSERT_TRUE(outcome.response) << outcome.text.toStdString();
    EXPECT_EQ(outcome.response->body, "until the end");
}

TEST_F(NetworkTransport, takesAnAnswerWhoseConnectionIsClosedAtOnce)
{
    server.enqueue(Answer().send(httpMessage(200, "whole", {{"Connection", "close"}})).close());
    const Outcome outcome = run(post());
    ASSERT_TRUE(outcome.response) << outcome.text.toStdString();
    EXPECT_EQ(outcome.response->body, "whole");
    EXPECT_EQ(server.requests().size(), 1);
}

TEST_F(NetworkTransport, takesAnAnswerInChunks)
{
    server.enqueue(Answer().send("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n"
                                 "3\r\nabc\r\n4\r\ndefg\r\n0\r\n\r\n"));
    EXPECT_EQ(run(post()).response->body, "abcdefg");
}

TEST_F(NetworkTransport, takesAnAnswerAfterAnInterimOne)
{
    server.enqueue(Answer().send("HTTP/1.1 100 Continue\r\n\r\n").send(httpMessage(200, "final")));
    EXPECT_EQ(run(post()).response->body, "final");
}

TEST_F(NetworkTransport, keepsItsConnection)
{
    server.setHandler([](const RecordedRequest&) { return Answer::json(200, "{}"); });
    for (int i = 0; i < 3; ++i) {
        EXPECT_TRUE(run(post()).response);
    }
    EXPECT_EQ(server.requests().size(), 3);
    EXPECT_EQ(server.acceptedConnections(), 1);
}

TEST_F(NetworkTransport, opensANewConnectionAfterTheServerClosedTheKeptOne)
{
    server.setHandler([](const RecordedRequest&) { return Answer::json(200, "{}"); });
    EXPECT_TRUE(run(post()).response);
    server.closeConnections();
    const Outcome outcome = run(post());
    ASSERT_TRUE(outcome.response) << outcome.text.toStdString();
    EXPECT_EQ(server.requests().size(), 2);
    EXPECT_GE(server.acceptedConnections(), 2);
}

TEST_F(NetworkTransport, trustsAKeptConnectionForAMinute)
{
    server.setHandler([](const RecordedRequest&) { return Answer::json(200, "{}"); });
    EXPECT_TRUE(run(post()).response);
    clock.advance(59s);
    EXPECT_TRUE(run(post()).response);
    EXPECT_EQ(server.acceptedConnections(), 1);
    clock.advance(60s);
    EXPECT_TRUE(run(post()).response);
    EXPECT_EQ(server.acceptedConnections(), 2);
    EXPECT_TRUE(waitUntil([&] { return server.openConnections() == 1; }));
}

TEST_F(NetworkTransport, leavesARunningExchangeAloneWhenItDropsOldConnections)
{
    server.setHandler([](const RecordedRequest& request) {
        return Answer().hold().send(httpMessage(200, request.target()));
    });
    const auto first = start(post(QStringLiteral("/first")));
    ASSERT_TRUE(waitUntil([&] { return server.heldAnswers() == 1; }));
    clock.advance(120s);
    const auto second = start(post(QStringLiteral("/second")));
    ASSERT_TRUE(waitUntil([&] { return server.heldAnswers() == 2; }));
    server.release();
    ASSERT_TRUE(waitUntil([&] { return first->ended() && second->ended(); }));
    ASSERT_TRUE(first->response) << first->text.toStdString();
    EXPECT_EQ(first->response->body, "/first");
    EXPECT_EQ(second->response->body, "/second");
}

TEST_F(NetworkTransport, sendsAgainIfAKeptConnectionTurnsOutToBeDead)
{
    server.enqueue(Answer::json(200, "{}"));
    server.enqueue(Answer().close());
    server.enqueue(Answer::json(200, R"("second")"));
    EXPECT_TRUE(run(post()).response);
    const Outcome outcome = run(post());
    ASSERT_TRUE(outcome.response) << outcome.text.toStdString();
    EXPECT_EQ(outcome.response->body, R"("second")");
    EXPECT_EQ(server.requests().back().body, "question");
    EXPECT_EQ(server.acceptedConnections(), 2);
}

TEST_F(NetworkTransport, runsExchangesBesideEachOther)
{
    server.setHandler([](const RecordedRequest& request) {
        return Answer().hold().send(httpMessage(200, request.target()));
    });
    const auto a = start(post(QStringLiteral("/a")));
    const auto b = start(post(QStringLiteral("/b")));
    ASSERT_TRUE(waitUntil([&] { return server.heldAnswers() == 2; }));
    server.release();
    ASSERT_TRUE(waitUntil([&] { return a->ended() && b->ended(); }));
    EXPECT_EQ(a->response->body, "/a");
    EXPECT_EQ(b->response->body, "/b");
}

TEST_F(NetworkTransport, storesNoCookies)
{
    server.enqueue(Answer().send(httpMessage(200, "{}", {{"Set-Cookie", "track=me"}})));
    server.enqueue(Answer::json(200, "{}"));
    run(post());
    run(post());
    EXPECT_TRUE(server.requests().back().header("Cookie").isNull());
}

// Broken servers

TEST_F(NetworkTransport, failsWhenTheBodyIsCutShort)
{
    server.enqueue(Answer().send(httpMessage(200, "half an answer").chopped(7)).close());
    const Outcome outcome = run(post());
    EXPECT_EQ(outcome.kind, Kind::truncated);
    EXPECT_EQ(outcome.text, QStringLiteral("The answer of 127.0.0.1 is incomplete."));
    EXPECT_EQ(server.requests().size(), 1);
}

TEST_F(NetworkTransport, failsWhenNoneOfThePromisedBodyArrives)
{
    server.enqueue(Answer().send("HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\n").close());
    EXPECT_EQ(run(post()).kind, Kind::truncated);
}

TEST_F(NetworkTransport, failsWhenTheChunksEndTooEarly)
{
    server.enqueue(
        Answer().send("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n3\r\nabc\r\n").close());
    EXPECT_EQ(run(post()).kind, Kind::truncated);
}

TEST_F(NetworkTransport, asksForUnpackedAnswersAndTakesNoOthers)
{
    server.enqueue(
        Answer().send(httpMessage(200, gzipped("text"), {{"Content-Encoding", "gzip"}})));
    const Outcome outcome = run(post());
    EXPECT_EQ(outcome.kind, Kind::connection);
    EXPECT_EQ(outcome.text, QStringLiteral("The answer of 127.0.0.1 is packed and can't be read."));
    EXPECT_EQ(server.requests().front().header("Accept-Encoding"), "identity");
}

TEST_F(NetworkTransport, failsOnceWhenTheServerHangsUpWithoutAnAnswer)
{
    server.setHandler([](const RecordedRequest&) { return Answer().close(); });
    const Outcome outcome = run(post());
    EXPECT_EQ(outcome.kind, Kind::connection);
    EXPECT_EQ(outcome.text,
              QStringLiteral("The connection to 127.0.0.1 ended without a valid answer."));
    EXPECT_EQ(server.requests().size(), 1);
}

TEST_F(NetworkTransport, failsWhenTheServerHangsUpWithinTheHead)
{
    server.setHandler(
        [](const RecordedRequest&) { return Answer().send("HTTP/1.1 200 OK\r\nX-Tr").close(); });
    EXPECT_EQ(run(post()).kind, Kind::connection);
    EXPECT_EQ(server.requests().size(), 1);
}

TEST_F(NetworkTransport, failsWhenTheAnswerIsNotHttp)
{
    server.setHandler([](const RecordedRequest&) {
        return Answer().send("SSH-2.0-OpenSSH_9.2\r\n\x01\x02garbage\r\n\r\n").close();
    });
    const Outcome outcome = run(post());
    EXPECT_EQ(outcome.kind, Kind::connection);
    EXPECT_EQ(outcome.text,
              QStringLiteral("The connection to 127.0.0.1 ended without a valid answer."));
    EXPECT_EQ(server.requests().size(), 1);
}

TEST_F(NetworkTransport, failsWhenTheConnectionIsRefused)
{
    HttpRequest request = post();
    {
        const LoopbackHttpServer closedSoon;
        request.url = closedSoon.url(QStringLiteral("/v1?key=secret"));
    }
    const Outcome outcome = run(request);
    EXPECT_EQ(outcome.kind, Kind::connection);
    EXPECT_EQ(outcome.text, QStringLiteral("127.0.0.1 refuses the connection."));
}

// Limits

TEST_F(NetworkTransport, failsAtOnceWhenTheServerAnnouncesTooLargeABody)
{
    server.enqueue(Answer().send("HTTP/1.1 200 OK\r\nContent-Length: 1001\r\n\r\nx").hold());
    HttpRequest request = post();
    request.maximalBodySize = 1000;
    const Outcome outcome = run(request);
    EXPECT_EQ(outcome.kind, Kind::tooLarge);
    EXPECT_EQ(outcome.text, QStringLiteral("The answer of 127.0.0.1 is too large."));
    EXPECT_TRUE(waitUntil([&] { return server.openConnections() == 0; }));
}

TEST_F(NetworkTransport, takesABodyOfExactlyTheLimit)
{
    server.enqueue(Answer::json(200, QByteArray(1000, 'x')));
    server.enqueue(Answer().send("HTTP/1.1 200 OK\r\n\r\n").flood(1000).close());
    HttpRequest request = post();
    request.maximalBodySize = 1000;
    EXPECT_EQ(run(request).response->body.size(), 1000);
    EXPECT_EQ(run(request).response->body.size(), 1000);
}

TEST_F(NetworkTransport, hangsUpOnABodyWithoutEnd)
{
    server.enqueue(Answer().send("HTTP/1.1 200 OK\r\n\r\n").flood(hugeBody).close());
    HttpRequest request = post();
    request.maximalBodySize = qint64(1) << 20;
    EXPECT_EQ(run(request).kind, Kind::tooLarge);
    EXPECT_TRUE(waitUntil([&] { return server.openConnections() == 0; }));
    EXPECT_LT(server.floodedBytes(), hugeBody / 2);
}

TEST_F(NetworkTransport, failsAfterTheLongestSilence)
{
    server.enqueue(Answer().hold());
    const auto outcome = start(post());
    ASSERT_TRUE(waitForRequests(1));
    clock.advance(179'999ms);
    EXPECT_FALSE(outcome->ended());
    clock.advance(1ms);
    EXPECT_EQ(outcome->kind, Kind::timeout);
    EXPECT_EQ(outcome->text, QStringLiteral("127.0.0.1 did not answer in time."));
    EXPECT_TRUE(waitUntil([&] { return server.openConnections() == 0; }));
    EXPECT_EQ(clock.pendingTimers(), 0);
}

TEST_F(NetworkTransport, isPatientWithAServerThatSendsSlowly)
{
    server.enqueue(Answer()
                       .send("HTTP/1.1 200 OK\r\nContent-Length: 3\r\n\r\n")
                       .hold()
                       .send("a")
                       .hold()
                       .send("b")
                       .hold()
                       .send("c"));
    const auto outcome = start(post());
    ASSERT_TRUE(waitUntil([&] { return server.heldAnswers() == 1; }));
    for (int letter = 0; letter < 3; ++letter) {
        clock.advance(179s);
        ASSERT_FALSE(outcome->ended());
        server.release();
        ASSERT_TRUE(waitUntil([&] { return clock.isTimerFromNow() || outcome->ended(); }));
    }
    ASSERT_TRUE(waitUntil([&] { return outcome->ended(); }));
    ASSERT_TRUE(outcome->response);
    EXPECT_EQ(outcome->response->body, "abc");
}

TEST_F(NetworkTransport, endsAnExchangeThatTricklesForTenMinutes)
{
    server.enqueue(Answer().send("HTTP/1.1 200 OK\r\n\r\n").hold());
    HttpRequest request = post();
    request.timeout = 1h;
    const auto outcome = start(request);
    ASSERT_TRUE(waitForRequests(1));
    clock.advance(10min - 1ms);
    EXPECT_FALSE(outcome->ended());
    clock.advance(1ms);
    EXPECT_EQ(outcome->kind, Kind::timeout);
    EXPECT_TRUE(waitUntil([&] { return server.openConnections() == 0; }));
}

// Cancellation

TEST_F(NetworkTransport, endsOnTheWireWhenItIsCancelledWhileItWaits)
{
    server.enqueue(Answer().hold());
    std::stop_source stop;
    const auto outcome = start(post(), stop.get_token());
    ASSERT_TRUE(waitForRequests(1));
    EXPECT_EQ(server.openConnections(), 1);
    stop.request_stop();
    EXPECT_TRUE(outcome->cancelled);
    EXPECT_TRUE(waitUntil([&] { return server.openConnections() == 0; }));
    EXPECT_EQ(clock.pendingTimers(), 0);
}

TEST_F(NetworkTransport, endsOnTheWireWhenItIsCancelledWithinTheBody)
{
    server.enqueue(Answer().send("HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\nab").hold());
    std::stop_source stop;
    const auto outcome = start(post(), stop.get_token());
    const int timers = clock.timers();
    ASSERT_TRUE(waitUntil([&] { return clock.timers() > timers; }));
    stop.request_stop();
    EXPECT_TRUE(outcome->cancelled);
    EXPECT_TRUE(waitUntil([&] { return server.openConnections() == 0; }));
}

TEST_F(NetworkTransport, sendsNothingWhenItIsAlreadyCancelled)
{
    std::stop_source stop;
    stop.request_stop();
    EXPECT_TRUE(start(post(), stop.get_token())->cancelled);
    server.enqueue(Answer::json(200, "{}"));
    EXPECT_TRUE(run(post(QStringLiteral("/next"))).response);
    EXPECT_EQ(server.requests().size(), 1);
}

TEST_F(NetworkTransport, cancellingAfterTheAnswerIsHarmless)
{
    server.enqueue(Answer::json(200, "{}"));
    std::stop_source stop;
    const auto outcome = start(post(), stop.get_token());
    ASSERT_TRUE(waitUntil([&] { return outcome->ended(); }));
    stop.request_stop();
    EXPECT_TRUE(outcome->response);
    EXPECT_FALSE(outcome->cancelled);
}

TEST_F(NetworkTransport, cancelsWhatStillRunsWhenItIsDestroyed)
{
    server.enqueue(Answer().hold());
    const auto outcome = start(post());
    ASSERT_TRUE(waitForRequests(1));
    transport.reset();
    EXPECT_TRUE(outcome->cancelled);
    EXPECT_TRUE(waitUntil([&] { return server.openConnections() == 0; }));
}

// Where a key may go

class Redirection : public NetworkTransport, public ::testing::WithParamInterface<int>
{
};

TEST_P(Redirection, toAnotherHostIsNotFollowed)
{
    LoopbackHttpServer other;
    server.enqueue(Answer().send(httpMessage(
        GetParam(), "moved", {{"Location", other.url(QStringLiteral("/x")).toEncoded()}})));
    const Outcome outcome = run(post());
    ASSERT_TRUE(outcome.response) << outcome.text.toStdString();
    EXPECT_EQ(outcome.response->status, GetParam());
    EXPECT_EQ(outcome.response->body, "moved");
    EXPECT_EQ(other.acceptedConnections(), 0);
}

TEST_P(Redirection, ofAGetStaysWithinItsOrigin)
{
    server.enqueue(Answer().send(httpMessage(GetParam(), "moved", {{"Location", "/there?q=1"}})));
    server.enqueue(Answer::json(200, "[]"));
    HttpRequest request = post();
    request.method = "GET";
    request.body.clear();
    EXPECT_EQ(run(request).response->body, "[]");
    ASSERT_EQ(server.requests().size(), 2);
    EXPECT_EQ(server.requests().back().requestLine, "GET /there?q=1 HTTP/1.1");
    EXPECT_EQ(server.requests().back().header("Authorization"), "Bearer secret");
}

TEST_P(Redirection, ofAPostIsFollowedOnlyIfItStaysAPost)
{
    server.enqueue(Answer().send(httpMessage(
        GetParam(), "moved", {{"Location", server.url(QStringLiteral("/there")).toEncoded()}})));
    server.enqueue(Answer::json(200, "{}"));
    const Outcome outcome = run(post());
    ASSERT_TRUE(outcome.response) << outcome.text.toStdString();
    if (GetParam() == 307 || GetParam() == 308) {
        EXPECT_EQ(outcome.response->body, "{}");
        ASSERT_EQ(server.requests().size(), 2);
        EXPECT_EQ(server.requests().back().requestLine, "POST /there HTTP/1.1");
        EXPECT_EQ(server.requests().back().body, "question");
    } else {
        EXPECT_EQ(outcome.response->status, GetParam());
        EXPECT_EQ(server.requests().size(), 1);
    }
}

INSTANTIATE_TEST_SUITE_P(NetworkTransport, Redirection, ::testing::Values(301, 302, 303, 307, 308));

TEST_F(NetworkTransport, givesUpAfterFiveRedirections)
{
    server.setHandler([](const RecordedRequest&) {
        return Answer().send(httpMessage(307, "again", {{"Location", "/again"}}));
    });
    const Outcome outcome = run(post());
    EXPECT_EQ(outcome.response->status, 307);
    EXPECT_EQ(server.requests().size(), 6);
}

class ForbiddenUrl : public NetworkTransport, public ::testing::WithParamInterface<const char*>
{
};

TEST_P(ForbiddenUrl, isRefusedBeforeAnythingIsSent)
{
    HttpRequest request = post();
    request.url = QUrl(QString::fromLatin1(GetParam()));
    const auto outcome = start(request);
    ASSERT_TRUE(outcome->ended());
    EXPECT_EQ(outcome->kind, Kind::insecure);
    EXPECT_THAT(outcome->text.toStdString(),
                ::testing::EndsWith("may only be reached over HTTPS."));
}

INSTANTIATE_TEST_SUITE_P(NetworkTransport, ForbiddenUrl,
                         ::testing::Values("http://example.invalid/",
                                           "http://127.0.0.1.nip.invalid/", "http://128.0.0.1/",
                                           "http://localhost.invalid/",
                                           "http://10.0.0.1:8080/x?key=secret", "http://[::2]/",
                                           "http://127.0.0.1@example.invalid/"));

TEST_F(NetworkTransport, refusesWhatIsNoWebAddress)
{
    for (const char* text :
         {"", "file:///etc/passwd", "ftp://127.0.0.1/x", "/relative", "http://"}) {
        HttpRequest request = post();
        request.url = QUrl(QString::fromLatin1(text));
        const auto outcome = start(request);
        EXPECT_EQ(outcome->kind, Kind::connection) << text;
        EXPECT_EQ(outcome->text, QStringLiteral("This is not the address of a web server."));
    }
}

TEST_F(NetworkTransport, refusesAHeaderWithALineBreak)
{
    for (const char* key : {"a\r\nX-Evil: 1", "a\nb", "a\rb"}) {
        HttpRequest request = post();
        request.headers = {{"Authorization", key}};
        const auto outcome = start(request);
        EXPECT_EQ(outcome->kind, Kind::connection);
        EXPECT_EQ(outcome->text, QStringLiteral("The API key for 127.0.0.1 holds a line break."));
    }
}

TEST_F(NetworkTransport, neverTellsTheQueryOrTheUserOfAnAddress)
{
    server.setHandler([](const RecordedRequest&) { return Answer().close(); });
    HttpRequest request = post();
    request.url = server.url(QStringLiteral("/p?key=topsecret"));
    request.url.setUserInfo(QStringLiteral("me:topsecret"));
    const Outcome outcome = run(request);
    EXPECT_EQ(outcome.kind, Kind::connection);
    EXPECT_FALSE(outcome.text.contains(QStringLiteral("topsecret")));
    EXPECT_EQ(server.requests().front().header("Authorization"), "Bearer secret");
}

/// Sends everything to one proxy.
class OneProxy final : public QNetworkProxyFactory
{
public:
    explicit OneProxy(quint16 port)
        : m_port(port)
    {
    }
    QList<QNetworkProxy> queryProxy(const QNetworkProxyQuery& /*query*/) override
    {
        return {QNetworkProxy(QNetworkProxy::HttpProxy, QStringLiteral("127.0.0.1"), m_port)};
    }

private:
    quint16 m_port;
};

TEST_F(NetworkTransport, usesTheProxyForOtherHostsButNeverForThisMachine)
{
    LoopbackHttpServer proxy;
    proxy.setHandler([](const RecordedRequest&) {
        return Answer().send("HTTP/1.1 403 Forbidden\r\nContent-Length: 0\r\n\r\n").close();
    });
    QNetworkProxyFactory::setApplicationProxyFactory(new OneProxy(proxy.port()));
    server.enqueue(Answer::json(200, "{}"));
    const Outcome direct = run(post());
    HttpRequest request = post();
    request.url = QUrl(QStringLiteral("https://provider.invalid/v1/chat?key=topsecret"));
    const Outcome proxied = run(request);
    QNetworkProxyFactory::setApplicationProxyFactory(nullptr);

    EXPECT_TRUE(direct.response);
    EXPECT_EQ(proxied.kind, Kind::connection);
    ASSERT_GE(proxy.requests().size(), 1);
    for (const RecordedRequest& seen : proxy.requests()) {
        EXPECT_EQ(seen.requestLine, "CONNECT provider.invalid:443 HTTP/1.1");
        EXPECT_TRUE(seen.header("Authorization").isNull());
    }
    EXPECT_EQ(proxied.text, QStringLiteral("The connection to provider.invalid failed."));
}

/// A choice of proxies that hangs, as one does that asks a server which has gone.
class HangingProxies final : public QNetworkProxyFactory
{
public:
    HangingProxies(QSemaphore& asked, QSemaphore& end)
        : m_asked(asked)
        , m_end(end)
    {
    }

    QList<QNetworkProxy> queryProxy(const QNetworkProxyQuery&) override
    {
        m_asked.release();
        m_end.acquire();
        m_asked.release();
        return {QNetworkProxy(QNetworkProxy::NoProxy)};
    }

private:
    QSemaphore& m_asked;
    QSemaphore& m_end;
};

TEST_F(NetworkTransport, goesInTimeEvenIfItsThreadHangs)
{
    QSemaphore asked;
    QSemaphore end;
    QNetworkProxyFactory::setApplicationProxyFactory(new HangingProxies(asked, end));
    auto own = std::make_unique<NetworkHttpTransport>(clock);
    HttpRequest request = post();
    request.url = QUrl(QStringLiteral("https://provider.invalid/"));
    const auto outcome = std::make_shared<Outcome>();
    follow(own->send(request, {}), outcome);
    asked.acquire();

    QElapsedTimer timer;
    timer.start();
    own.reset();
    EXPECT_TRUE(outcome->cancelled);
    EXPECT_GE(timer.elapsed(), 450);
    EXPECT_LT(timer.elapsed(), 2000);

    // What the thread still reports reaches nobody.
    end.release();
    asked.acquire();
    waitUntil([] { return false; }, 100ms);
    QNetworkProxyFactory::setApplicationProxyFactory(nullptr);
}

// TLS

class TlsTransport : public NetworkTransport
{
protected:
    [[nodiscard]] HttpRequest securePost() const
    {
        HttpRequest request = post();
        request.url = secure.url(QStringLiteral("/v1/chat"));
        return request;
    }

    LoopbackHttpServer secure{LoopbackHttpServer::Security::selfSigned};
};

TEST_F(TlsTransport, reachesAServerWhoseCertificateIsTrusted)
{
    const TrustLoopbackServer trust;
    secure.enqueue(Answer::json(200, R"("private")"));
    const Outcome outcome = run(securePost());
    ASSERT_TRUE(outcome.response) << outcome.text.toStdString();
    EXPECT_EQ(outcome.response->body, R"("private")");
    EXPECT_EQ(secure.requests().front().body, "question");
}

TEST_F(TlsTransport, sendsNothingToAServerWithAnUntrustedCertificate)
{
    const Outcome outcome = run(securePost());
    EXPECT_EQ(outcome.kind, Kind::insecure);
    EXPECT_EQ(outcome.text, QStringLiteral("The certificate of localhost is not trusted."));
    EXPECT_TRUE(secure.requests().empty());
}

TEST_F(TlsTransport, sendsNothingToAServerWithTheCertificateOfAnotherHost)
{
    const TrustLoopbackServer trust;
    HttpRequest request = securePost();
    request.url.setHost(QStringLiteral("127.0.0.1"));
    EXPECT_EQ(run(request).kind, Kind::insecure);
    EXPECT_TRUE(secure.requests().empty());
}

TEST_F(TlsTransport, verifiesEvenIfTheProcessSwitchesVerificationOff)
{
    const QSslConfiguration before = QSslConfiguration::defaultConfiguration();
    QSslConfiguration careless = before;
    careless.setPeerVerifyMode(QSslSocket::VerifyNone);
    careless.setProtocol(QSsl::AnyProtocol);
    QSslConfiguration::setDefaultConfiguration(careless);
    const Outcome outcome = run(securePost());
    QSslConfiguration::setDefaultConfiguration(before);
    EXPECT_EQ(outcome.kind, Kind::insecure);
    EXPECT_TRUE(secure.requests().empty());
}

TEST_F(TlsTransport, failsWhenTheServerDoesNotSpeakTls)
{
    server.setGreeting("HTTP/1.1 400 Bad Request\r\n\r\n");
    HttpRequest request = post();
    request.url.setScheme(QStringLiteral("https"));
    const Outcome outcome = run(request);
    EXPECT_EQ(outcome.kind, Kind::insecure);
    EXPECT_EQ(outcome.text, QStringLiteral("No secure connection to 127.0.0.1 is possible."));
    EXPECT_TRUE(server.requests().empty());
}

TEST_F(TlsTransport, failsWhenTheServerHangsUpWithinTheHandshake)
{
    HttpRequest request = post();
    request.url.setScheme(QStringLiteral("https"));
    const auto outcome = start(request);
    ASSERT_TRUE(waitUntil([&] { return server.acceptedConnections() > 0; }));
    server.closeConnections();
    ASSERT_TRUE(waitUntil([&] { return outcome->ended(); }));
    EXPECT_EQ(outcome->kind, Kind::connection);
    EXPECT_TRUE(server.requests().empty());
}

TEST_F(TlsTransport, isNotLuredIntoPlainHttp)
{
    const TrustLoopbackServer trust;
    secure.enqueue(Answer().send(httpMessage(307, "", {{"Location", server.url().toEncoded()}})));
    EXPECT_EQ(run(securePost()).response->status, 307);
    EXPECT_EQ(server.acceptedConnections(), 0);
}

TEST_F(NetworkTransport, worksWithTheSystemsClock)
{
    SystemClock real;
    NetworkHttpTransport own(real);
    server.enqueue(Answer::json(200, "{}"));
    EXPECT_EQ(await(own.send(post(), {})).status, 200);
}

} // namespace
} // namespace zelvane::test
