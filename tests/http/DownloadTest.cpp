#include "http/NetworkHttpTransport.h"

#include "support/Await.h"
#include "support/LoopbackHttpServer.h"
#include "support/TrustLoopbackServer.h"
#include "support/VirtualClock.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <csignal>
#include <sys/resource.h>
#include <unistd.h>

namespace zelvane::test {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

using Kind = TransportError::Kind;

/// What became of one download.
struct Outcome
{
    std::optional<HttpResponse> response;
    std::optional<Kind> kind;
    QString text;
    bool cancelled = false;
    std::vector<DownloadProgress> progress;

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

QByteArray headOf(qint64 length)
{
    return "HTTP/1.1 200 OK\r\nContent-Length: " + QByteArray::number(length) + "\r\n\r\n";
}

Answer redirectionTo(const QUrl& url, int status = 302)
{
    return Answer().send(httpMessage(status, "moved", {{"Location", url.toEncoded()}}));
}

class Download : public ::testing::Test
{
protected:
    [[nodiscard]] HttpRequest get(const QString& place = QStringLiteral("/model.gguf")) const
    {
        HttpRequest request;
        request.url = server.url(place);
        request.timeout = 120s;
        request.totalTimeout = 24h;
        request.maximalBodySize = qint64(1) << 33;
        return request;
    }

    std::shared_ptr<Outcome> start(const HttpRequest& request, const std::stop_token& stop = {})
    {
        const auto outcome = std::make_shared<Outcome>();
        follow(transport->download(
                   request, path,
                   [outcome](DownloadProgress progress) { outcome->progress.push_back(progress); },
                   stop),
               outcome);
        return outcome;
    }

    Outcome run(const HttpRequest& request)
    {
        const auto outcome = start(request);
        EXPECT_TRUE(waitUntil([&] { return outcome->ended(); }));
        return *outcome;
    }

    /// Lets time pass until the download reports that so many bytes have been written.
    [[nodiscard]] bool waitForProgress(const Outcome& outcome, qint64 bytes)
    {
        return waitUntil([&] {
            clock.advance(NetworkHttpTransport::progressInterval);
            return !outcome.progress.empty() && outcome.progress.back().writtenBytes == bytes;
        });
    }

    [[nodiscard]] QByteArray file() const
    {
        QFile stored(path);
        return stored.open(QIODevice::ReadOnly) ? stored.readAll() : QByteArray();
    }
    [[nodiscard]] QStringList filesLeft() const
    {
        return QDir(folder.path()).entryList(QDir::Files | QDir::Hidden | QDir::System);
    }

    QTemporaryDir folder;
    QString path = folder.filePath(QStringLiteral("model.partial"));
    VirtualClock clock;
    LoopbackHttpServer server;
    std::unique_ptr<NetworkHttpTransport> transport = std::make_unique<NetworkHttpTransport>(clock);
};

TEST_F(Download, writesTheBodyToTheFile)
{
    server.enqueue(Answer().send(httpMessage(200, "weights", {{"ETag", "x"}})));
    const Outcome outcome = run(get(QStringLiteral("/r/model.gguf?download=true")));
    ASSERT_TRUE(outcome.response) << outcome.text.toStdString();
    EXPECT_EQ(outcome.response->status, 200);
    EXPECT_EQ(outcome.response->body, QByteArray());
    EXPECT_EQ(outcome.response->headers.front().first, "etag");
    EXPECT_EQ(file(), "weights");
    EXPECT_EQ(server.requests().front().requestLine, "GET /r/model.gguf?download=true HTTP/1.1");
    EXPECT_THAT(outcome.progress, ElementsAre(DownloadProgress{7, 7}));
    EXPECT_EQ(clock.pendingTimers(), 0);
}

TEST_F(Download, belongsToItsUserAlone)
{
    server.enqueue(Answer().send(httpMessage(200, "weights")));
    run(get());
    EXPECT_EQ(QFile::permissions(path) & ~(QFile::ReadUser | QFile::WriteUser),
              QFile::ReadOwner | QFile::WriteOwner);
}

TEST_F(Download, takesThePlaceOfAnEarlierFile)
{
    QFile earlier(path);
    ASSERT_TRUE(earlier.open(QIODevice::WriteOnly));
    earlier.write("something much longer than the new file");
    earlier.close();
    server.enqueue(Answer().send(httpMessage(200, "new")));
    run(get());
    EXPECT_EQ(file(), "new");
}

TEST_F(Download, ofAnEmptyBodyIsAnEmptyFile)
{
    server.enqueue(Answer().send(httpMessage(200, "")));
    const Outcome outcome = run(get());
    EXPECT_TRUE(outcome.response);
    EXPECT_THAT(filesLeft(), ElementsAre(QStringLiteral("model.partial")));
    EXPECT_EQ(file(), QByteArray());
    EXPECT_THAT(outcome.progress, IsEmpty());
}

TEST_F(Download, takesABodyInChunksWithoutKnowingItsSize)
{
    server.setHandler([](const RecordedRequest&) {
        return Answer().send("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n"
                             "3\r\nabc\r\n4\r\ndefg\r\n0\r\n\r\n");
    });
    const Outcome outcome = run(get());
    ASSERT_TRUE(outcome.response) << outcome.text.toStdString();
    EXPECT_EQ(file(), "abcdefg");
    EXPECT_THAT(outcome.progress, ElementsAre(DownloadProgress{7, std::nullopt}));
}

TEST_F(Download, takesABodyThatEndsWithTheConnection)
{
    server.setHandler([](const RecordedRequest&) {
        return Answer().send("HTTP/1.0 200 OK\r\n\r\nuntil the end").close();
    });
    EXPECT_TRUE(run(get()).response);
    EXPECT_EQ(file(), "until the end");
}

TEST_F(Download, keepsTheSizeOfAnyFileOutOfTheMemory)
{
    const auto peak = [] {
        rusage usage = {};
        ::getrusage(RUSAGE_SELF, &usage);
        return usage.ru_maxrss; // in KiB
    };
#if defined(__has_feature)
#if __has_feature(address_sanitizer)
    GTEST_SKIP() << "the sanitizer keeps what is freed";
#endif
#endif
    const qint64 size = qint64(300) << 20;
    server.enqueue(Answer().send(headOf(size)).flood(size));
    const long before = peak();
    const Outcome outcome = run(get());
    ASSERT_TRUE(outcome.response) << outcome.text.toStdString();
    EXPECT_EQ(QFileInfo(path).size(), size);
    EXPECT_LT(peak() - before, 64 * 1024);
    EXPECT_EQ(outcome.progress.back(), (DownloadProgress{size, size}));
}

TEST_F(Download, isWholeWhenTheConnectionClosesRightBehindIt)
{
    server.setHandler([](const RecordedRequest& request) {
        return request.target() == "/chunks"
                   ? Answer()
                         .send("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n"
                               "3\r\nabc\r\n0\r\n\r\n")
                         .close()
                   : Answer().send(headOf(1'100'000)).flood(1'100'000).close();
    });
    for (int i = 0; i < 20; ++i) {
        ASSERT_TRUE(run(get(QStringLiteral("/chunks"))).response);
        ASSERT_EQ(file(), "abc");
        ASSERT_TRUE(run(get(QStringLiteral("/sized"))).response);
        ASSERT_EQ(QFileInfo(path).size(), 1'100'000);
    }
}

// Progress

TEST_F(Download, reportsAFewTimesASecondWhatIsNew)
{
    server.enqueue(Answer().send(headOf(6)).send("ab").hold().send("cd").hold().send("ef"));
    const auto outcome = start(get());
    ASSERT_TRUE(waitForProgress(*outcome, 2));
    clock.advance(5s);
    server.release();
    ASSERT_TRUE(waitForProgress(*outcome, 4));
    server.release();
    ASSERT_TRUE(waitUntil([&] { return outcome->ended(); }));
    EXPECT_THAT(outcome->progress, ElementsAre(DownloadProgress{2, 6}, DownloadProgress{4, 6},
                                               DownloadProgress{6, 6}));
    EXPECT_EQ(clock.pendingTimers(), 0);
}

TEST_F(Download, mayDoWithoutAListener)
{
    server.enqueue(Answer().send(httpMessage(200, "weights")));
    EXPECT_EQ(await(transport->download(get(), path, {}, {})).status, 200);
    EXPECT_EQ(file(), "weights");
}

// Answers that are no file

class RefusedDownload : public Download, public ::testing::WithParamInterface<int>
{
};

TEST_P(RefusedDownload, comesWithTheReasonAndWithoutAFile)
{
    server.enqueue(Answer().send(httpMessage(GetParam(), R"({"error":"why"})")));
    const Outcome outcome = run(get());
    ASSERT_TRUE(outcome.response) << outcome.text.toStdString();
    EXPECT_EQ(outcome.response->status, GetParam());
    EXPECT_EQ(outcome.response->body, R"({"error":"why"})");
    EXPECT_THAT(filesLeft(), IsEmpty());
    EXPECT_THAT(outcome.progress, IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Download, RefusedDownload,
                         ::testing::Values(300, 400, 401, 403, 404, 410, 416, 429, 451, 500, 502,
                                           503, 504));

TEST_F(Download, leavesAnEarlierFileAloneWhenItIsRefused)
{
    QFile earlier(path);
    ASSERT_TRUE(earlier.open(QIODevice::WriteOnly));
    earlier.write("kept");
    earlier.close();
    server.enqueue(Answer::json(404, "{}"));
    run(get());
    EXPECT_EQ(file(), "kept");
}

TEST_F(Download, readsNoMoreThanTheBeginningOfARefusal)
{
    server.enqueue(Answer().send("HTTP/1.1 500 Oh\r\n\r\n").flood(hugeBody).close());
    const Outcome outcome = run(get());
    ASSERT_TRUE(outcome.response) << outcome.text.toStdString();
    EXPECT_EQ(outcome.response->status, 500);
    EXPECT_EQ(outcome.response->body.size(), 64 * 1024);
    EXPECT_TRUE(waitUntil([&] { return server.openConnections() == 0; }));
    EXPECT_LT(server.floodedBytes(), hugeBody / 2);
}

// Broken servers

TEST_F(Download, failsWhenTheConnectionEndsBeforeTheBody)
{
    server.enqueue(Answer().send(headOf(14)).send("half of").close());
    const Outcome outcome = run(get());
    EXPECT_EQ(outcome.kind, Kind::truncated);
    EXPECT_EQ(outcome.text, QStringLiteral("The answer of 127.0.0.1 is incomplete."));
    EXPECT_THAT(filesLeft(), IsEmpty());
}

TEST_F(Download, failsWhenTheChunksEndTooEarly)
{
    server.setHandler([](const RecordedRequest&) {
        return Answer()
            .send("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n3\r\nabc\r\n")
            .close();
    });
    for (int i = 0; i < 20; ++i) { // it depends on the moment at which Qt learns of the end
        ASSERT_EQ(run(get()).kind, Kind::truncated);
        ASSERT_THAT(filesLeft(), IsEmpty());
    }
}

TEST_F(Download, failsWhenTheServerHangsUpWithoutAnAnswer)
{
    server.setHandler([](const RecordedRequest&) { return Answer().close(); });
    EXPECT_EQ(run(get()).kind, Kind::connection);
    EXPECT_THAT(filesLeft(), IsEmpty());
}

TEST_F(Download, failsWhenTheConnectionIsRefused)
{
    HttpRequest request = get();
    {
        const LoopbackHttpServer closedSoon;
        request.url = closedSoon.url();
    }
    const Outcome outcome = run(request);
    EXPECT_EQ(outcome.kind, Kind::connection);
    EXPECT_EQ(outcome.text, QStringLiteral("127.0.0.1 refuses the connection."));
}

TEST_F(Download, isHeldToTheLimitOfItsRequest)
{
    HttpRequest request = get();
    request.maximalBodySize = 1000;
    server.enqueue(Answer().send(headOf(1001)).hold());
    EXPECT_EQ(run(request).kind, Kind::tooLarge);
    server.setHandler([](const RecordedRequest&) {
        return Answer().send("HTTP/1.1 200 OK\r\n\r\n").flood(1001).close();
    });
    EXPECT_EQ(run(request).kind, Kind::tooLarge);
    EXPECT_THAT(filesLeft(), IsEmpty());
    server.setHandler([](const RecordedRequest&) {
        return Answer().send("HTTP/1.1 200 OK\r\n\r\n").flood(1000).close();
    });
    EXPECT_TRUE(run(request).response);
    EXPECT_EQ(QFileInfo(path).size(), 1000);
}

TEST_F(Download, failsAfterTheLongestSilence)
{
    server.enqueue(Answer().send(headOf(4)).send("ab").hold());
    const auto outcome = start(get());
    ASSERT_TRUE(waitForProgress(*outcome, 2));
    clock.advance(120s - 1ms);
    EXPECT_FALSE(outcome->ended());
    clock.advance(1ms);
    ASSERT_TRUE(waitUntil([&] { return outcome->ended(); }));
    EXPECT_EQ(outcome->kind, Kind::timeout);
    EXPECT_EQ(outcome->text, QStringLiteral("127.0.0.1 did not answer in time."));
    EXPECT_THAT(filesLeft(), IsEmpty());
    EXPECT_TRUE(waitUntil([&] { return server.openConnections() == 0; }));
}

TEST_F(Download, isPatientWithAServerThatSendsSlowly)
{
    server.enqueue(Answer().send(headOf(3)).hold().send("a").hold().send("b").hold().send("c"));
    const auto outcome = start(get());
    ASSERT_TRUE(waitUntil([&] { return server.heldAnswers() == 1; }));
    for (int letter = 1; letter < 3; ++letter) {
        clock.advance(119s);
        ASSERT_FALSE(outcome->ended());
        server.release();
        ASSERT_TRUE(waitForProgress(*outcome, letter));
    }
    server.release();
    ASSERT_TRUE(waitUntil([&] { return outcome->ended(); }));
    EXPECT_TRUE(outcome->response);
    EXPECT_EQ(file(), "abc");
}

TEST_F(Download, endsAtTheLimitOfTheWhole)
{
    server.enqueue(Answer().send(headOf(4)).send("ab").hold());
    HttpRequest request = get();
    request.timeout = 48h;
    const auto outcome = start(request);
    ASSERT_TRUE(waitUntil([&] { return server.heldAnswers() == 1; }));
    clock.advance(24h - 1ms);
    EXPECT_FALSE(outcome->ended());
    clock.advance(1ms);
    ASSERT_TRUE(waitUntil([&] { return outcome->ended(); }));
    EXPECT_EQ(outcome->kind, Kind::timeout);
    EXPECT_THAT(filesLeft(), IsEmpty());
}

// The disk

/// Lets no file of this process grow beyond a size, as a full disk does.
class SizeLimit
{
public:
    explicit SizeLimit(rlim_t bytes)
        : m_signal(std::signal(SIGXFSZ, SIG_IGN))
    {
        ::getrlimit(RLIMIT_FSIZE, &m_before);
        rlimit limit = m_before;
        limit.rlim_cur = bytes;
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~SizeLimit()
    {
        ::setrlimit(RLIMIT_FSIZE, &m_before);
        std::signal(SIGXFSZ, m_signal);
    }
    Q_DISABLE_COPY_MOVE(SizeLimit)

private:
    rlimit m_before = {};
    void (*m_signal)(int);
};

TEST_F(Download, failsWhenTheFileMayNotGrow)
{
    server.enqueue(Answer().send(headOf(100'000'000)).flood(100'000'000));
    const SizeLimit limit(300'000);
    const Outcome outcome = run(get());
    EXPECT_EQ(outcome.kind, Kind::storage);
    EXPECT_EQ(outcome.text, QStringLiteral("The download could not be written to the disk."));
    EXPECT_THAT(filesLeft(), IsEmpty());
    EXPECT_TRUE(waitUntil([&] { return server.openConnections() == 0; }));
}

TEST_F(Download, failsWithoutAFolder)
{
    server.enqueue(Answer().send(httpMessage(200, "weights")));
    path = folder.filePath(QStringLiteral("missing/model"));
    EXPECT_EQ(run(get()).kind, Kind::storage);
}

TEST_F(Download, doesNotFollowALinkAndTouchesNoDevice)
{
    const QString target = folder.filePath(QStringLiteral("elsewhere"));
    ASSERT_TRUE(QFile::link(target, path));
    server.setHandler(
        [](const RecordedRequest&) { return Answer().send(httpMessage(200, "weights")); });
    EXPECT_EQ(run(get()).kind, Kind::storage);
    EXPECT_FALSE(QFileInfo::exists(target));
    path = QStringLiteral("/dev/full");
    EXPECT_EQ(run(get()).kind, Kind::storage);
    EXPECT_TRUE(QFileInfo::exists(path));
}

// Cancellation

TEST_F(Download, removesItsFileWhenItIsCancelled)
{
    server.enqueue(Answer().send(headOf(4)).send("ab").hold());
    std::stop_source stop;
    const auto outcome = start(get(), stop.get_token());
    ASSERT_TRUE(waitForProgress(*outcome, 2));
    EXPECT_EQ(file(), "ab");
    stop.request_stop();
    ASSERT_TRUE(waitUntil([&] { return outcome->ended(); }));
    EXPECT_TRUE(outcome->cancelled);
    EXPECT_THAT(filesLeft(), IsEmpty());
    EXPECT_TRUE(waitUntil([&] { return server.openConnections() == 0; }));
    EXPECT_EQ(clock.pendingTimers(), 0);
}

TEST_F(Download, canBeCancelledByItsListener)
{
    server.enqueue(Answer().send(headOf(4)).send("ab").hold());
    std::stop_source stop;
    const auto outcome = std::make_shared<Outcome>();
    follow(transport->download(
               get(), path, [&](DownloadProgress) { stop.request_stop(); }, stop.get_token()),
           outcome);
    ASSERT_TRUE(waitUntil([&] {
        clock.advance(NetworkHttpTransport::progressInterval);
        return outcome->ended();
    }));
    EXPECT_TRUE(outcome->cancelled);
    EXPECT_THAT(filesLeft(), IsEmpty());
}

TEST_F(Download, asksForNothingWhenItIsAlreadyCancelled)
{
    std::stop_source stop;
    stop.request_stop();
    EXPECT_TRUE(start(get(), stop.get_token())->cancelled);
    EXPECT_THAT(filesLeft(), IsEmpty());
    EXPECT_EQ(server.acceptedConnections(), 0);
}

TEST_F(Download, isCancelledWithItsTransport)
{
    server.enqueue(Answer().send(headOf(4)).send("ab").hold());
    const auto outcome = start(get());
    ASSERT_TRUE(waitForProgress(*outcome, 2));
    transport.reset();
    EXPECT_TRUE(outcome->cancelled);
    EXPECT_THAT(filesLeft(), IsEmpty());
}

TEST_F(Download, canBeginAnewAtTheSamePlaceRightAfterACancellation)
{
    server.enqueue(Answer().send(headOf(4)).send("ab").hold());
    server.enqueue(Answer().send(httpMessage(200, "second")));
    std::stop_source stop;
    const auto first = start(get(), stop.get_token());
    ASSERT_TRUE(waitForProgress(*first, 2));
    stop.request_stop();
    const Outcome second = run(get());
    EXPECT_TRUE(first->cancelled);
    EXPECT_TRUE(second.response);
    EXPECT_EQ(file(), "second");
}

TEST_F(Download, runsBesideExchanges)
{
    server.enqueue(Answer().send(headOf(4)).send("ab").hold());
    server.enqueue(Answer::json(200, "{}"));
    const auto outcome = start(get());
    ASSERT_TRUE(waitUntil([&] { return server.heldAnswers() == 1; }));
    EXPECT_EQ(await(transport->send(get(QStringLiteral("/chat")), {})).body, "{}");
    EXPECT_FALSE(outcome->ended());
}

// Where it may be sent

class DownloadRedirection : public Download, public ::testing::WithParamInterface<int>
{
};

TEST_P(DownloadRedirection, toAnotherHostIsFollowedWithoutTheHeaders)
{
    LoopbackHttpServer other;
    server.enqueue(redirectionTo(other.url(QStringLiteral("/blob?sig=1")), GetParam()));
    other.enqueue(Answer().send(httpMessage(200, "weights")));
    HttpRequest request = get();
    request.headers = {{"Authorization", "Bearer secret"}};
    const Outcome outcome = run(request);
    ASSERT_TRUE(outcome.response) << outcome.text.toStdString();
    EXPECT_EQ(file(), "weights");
    ASSERT_EQ(other.requests().size(), 1);
    EXPECT_EQ(other.requests().front().requestLine, "GET /blob?sig=1 HTTP/1.1");
    EXPECT_TRUE(other.requests().front().header("Authorization").isNull());
    EXPECT_EQ(outcome.progress.back(), (DownloadProgress{7, 7}));
}

INSTANTIATE_TEST_SUITE_P(Download, DownloadRedirection, ::testing::Values(301, 302, 303, 307, 308));

TEST_F(Download, followsARedirectionWithALongText)
{
    LoopbackHttpServer other;
    server.enqueue(Answer().send(
        httpMessage(302, QByteArray(200'000, 'x'), {{"Location", other.url().toEncoded()}})));
    other.enqueue(Answer().send(httpMessage(200, "weights")));
    EXPECT_TRUE(run(get()).response);
    EXPECT_EQ(file(), "weights");
}

TEST_F(Download, isNotLuredToPlainHttpOnAnotherMachine)
{
    server.enqueue(redirectionTo(QUrl(QStringLiteral("http://10.0.0.1/weights"))));
    EXPECT_EQ(run(get()).response->status, 302);
    EXPECT_THAT(filesLeft(), IsEmpty());
}

TEST_F(Download, isNotLuredFromHttpsToPlainHttp)
{
    LoopbackHttpServer secure{LoopbackHttpServer::Security::selfSigned};
    const TrustLoopbackServer trust;
    secure.enqueue(redirectionTo(server.url()));
    HttpRequest request = get();
    request.url = secure.url();
    EXPECT_EQ(run(request).response->status, 302);
    EXPECT_EQ(server.acceptedConnections(), 0);
}

TEST_F(Download, givesUpAfterFiveRedirections)
{
    server.setHandler([&](const RecordedRequest&) { return redirectionTo(server.url()); });
    EXPECT_EQ(run(get()).response->status, 302);
    EXPECT_EQ(server.requests().size(), 6);
}

TEST_F(Download, goesToNoPlainHttpOfAnotherMachine)
{
    HttpRequest request = get();
    request.url = QUrl(QStringLiteral("http://example.invalid/weights"));
    EXPECT_EQ(start(request)->kind, Kind::insecure);
}

} // namespace
} // namespace zelvane::test
