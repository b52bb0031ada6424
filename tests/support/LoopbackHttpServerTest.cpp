#include "support/LoopbackHttpServer.h"

#include "support/Await.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QSslSocket>
#include <QTcpSocket>

namespace zelvane::test {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::Pair;
using ::testing::SizeIs;

/// A client without any idea of HTTP.
class RawClient
{
public:
    explicit RawClient(const LoopbackHttpServer& server)
    {
        m_socket.connectToHost(QStringLiteral("127.0.0.1"), server.port());
    }
    void send(const QByteArray& bytes) { m_socket.write(bytes); }
    [[nodiscard]] QByteArray received()
    {
        m_received += m_socket.readAll();
        return m_received;
    }
    /// Whether exactly these bytes arrive.
    [[nodiscard]] bool receives(const QByteArray& bytes)
    {
        return waitUntil([&] { return received().size() >= bytes.size(); }) && received() == bytes;
    }
    [[nodiscard]] bool isClosedByServer()
    {
        return waitUntil([&] { return m_socket.state() == QAbstractSocket::UnconnectedState; });
    }
    QTcpSocket& socket() { return m_socket; }

private:
    QTcpSocket m_socket;
    QByteArray m_received;
};

constexpr char simpleRequest[] = "GET / HTTP/1.1\r\n\r\n";

TEST(LoopbackHttpServer, recordsARequestByteForByte)
{
    LoopbackHttpServer server;
    RawClient client(server);
    client.send("POST /v1/chat?x=%20 HTTP/1.1\r\nhOSt: here\r\nX-Two:  a b \r\nX-Two: c\r\n"
                "content-length: 5\r\n\r\nhello");
    ASSERT_TRUE(waitUntil([&] { return server.requests().size() == 1; }));
    const RecordedRequest& request = server.requests().front();
    EXPECT_EQ(request.requestLine, "POST /v1/chat?x=%20 HTTP/1.1");
    EXPECT_EQ(request.method(), "POST");
    EXPECT_EQ(request.target(), "/v1/chat?x=%20");
    EXPECT_THAT(request.headers, ElementsAre(Pair("hOSt", "here"), Pair("X-Two", "a b"),
                                             Pair("X-Two", "c"), Pair("content-length", "5")));
    EXPECT_EQ(request.body, "hello");
    EXPECT_EQ(request.header("HOST"), "here");
    EXPECT_TRUE(request.header("Absent").isNull());
}

TEST(LoopbackHttpServer, waitsForTheWholeBodyAndKeepsItsBytes)
{
    LoopbackHttpServer server;
    RawClient client(server);
    client.send("POST / HTTP/1.1\r\nContent-Length: 4\r\n\r\n");
    client.send(QByteArray("\0\xff\r", 3));
    ASSERT_TRUE(waitUntil([&] { return server.acceptedConnections() == 1; }));
    EXPECT_THAT(server.requests(), SizeIs(0));
    client.send("\n");
    ASSERT_TRUE(waitUntil([&] { return server.requests().size() == 1; }));
    EXPECT_EQ(server.requests().front().body, QByteArray("\0\xff\r\n", 4));
}

TEST(LoopbackHttpServer, givesOutItsAnswersInOrderAndThenAsksTheHandler)
{
    LoopbackHttpServer server;
    server.enqueue(Answer().send("one"));
    server.enqueue(Answer().send("two"));
    server.setHandler(
        [](const RecordedRequest& request) { return Answer().send(request.target()); });
    RawClient client(server);
    client.send("GET /a HTTP/1.1\r\n\r\nGET /b HTTP/1.1\r\n\r\nGET /c HTTP/1.1\r\n\r\n");
    EXPECT_TRUE(client.receives("onetwo/c"));
    EXPECT_EQ(server.acceptedConnections(), 1);
}

TEST(LoopbackHttpServer, answersWhatIsNotScriptedWithStatus500)
{
    LoopbackHttpServer server;
    RawClient client(server);
    client.send(simpleRequest);
    EXPECT_TRUE(client.receives("HTTP/1.1 500 Scripted\r\nContent-Type: application/json\r\n"
                                "Content-Length: 31\r\n\r\n{\"error\":\"nothing is scripted\"}"));
}

TEST(LoopbackHttpServer, holdsAnAnswerUntilItIsReleased)
{
    LoopbackHttpServer server;
    server.enqueue(Answer().send("a").hold().send("b").hold().send("c"));
    RawClient client(server);
    client.send(simpleRequest);
    EXPECT_TRUE(client.receives("a"));
    EXPECT_EQ(server.heldAnswers(), 1);
    server.release();
    EXPECT_TRUE(client.receives("ab"));
    server.release();
    EXPECT_TRUE(client.receives("abc"));
    EXPECT_EQ(server.heldAnswers(), 0);
}

TEST(LoopbackHttpServer, pausesByTheRealClock)
{
    LoopbackHttpServer server;
    server.enqueue(Answer().pause(20ms).send("late"));
    RawClient client(server);
    QElapsedTimer timer;
    timer.start();
    client.send(simpleRequest);
    EXPECT_TRUE(client.receives("late"));
    EXPECT_GE(timer.elapsed(), 19);
}

TEST(LoopbackHttpServer, closesTheConnectionAfterEverythingIsSent)
{
    LoopbackHttpServer server;
    server.enqueue(Answer().send(QByteArray(3'000'000, 'x')).close());
    RawClient client(server);
    client.send(simpleRequest);
    EXPECT_TRUE(client.isClosedByServer());
    EXPECT_EQ(client.received().size(), 3'000'000);
    EXPECT_TRUE(waitUntil([&] { return server.openConnections() == 0; }));
}

TEST(LoopbackHttpServer, noticesThatAClientHangsUp)
{
    LoopbackHttpServer server;
    server.enqueue(Answer().hold());
    auto client = std::make_unique<RawClient>(server);
    client->send(simpleRequest);
    ASSERT_TRUE(waitUntil([&] { return server.heldAnswers() == 1; }));
    EXPECT_EQ(server.openConnections(), 1);
    client.reset();
    EXPECT_TRUE(waitUntil([&] { return server.openConnections() == 0; }));
}

TEST(LoopbackHttpServer, floodsNoFasterThanTheClientReads)
{
    LoopbackHttpServer server;
    server.enqueue(Answer().flood(qint64(1) << 40));
    RawClient client(server);
    client.socket().setReadBufferSize(1000);
    client.send(simpleRequest);
    // The buffers of the system fill up, and then it stands still.
    qint64 seen = 0;
    int stillTurns = 0;
    EXPECT_TRUE(waitUntil([&] {
        stillTurns = server.floodedBytes() == seen ? stillTurns + 1 : 0;
        seen = server.floodedBytes();
        return seen > 0 && stillTurns == 20;
    }));
    EXPECT_LT(server.floodedBytes(), qint64(64) << 20);
}

TEST(LoopbackHttpServer, sendsExactlyTheFloodThatIsAskedFor)
{
    LoopbackHttpServer server;
    server.enqueue(Answer().flood(200'001).close());
    RawClient client(server);
    client.send(simpleRequest);
    EXPECT_TRUE(client.isClosedByServer());
    EXPECT_EQ(client.received(), QByteArray(200'001, 'x'));
}

TEST(LoopbackHttpServer, closesKeptConnectionsOnDemand)
{
    LoopbackHttpServer server;
    server.enqueue(Answer::json(200, "{}"));
    RawClient client(server);
    client.send(simpleRequest);
    ASSERT_TRUE(waitUntil([&] { return !client.received().isEmpty(); }));
    EXPECT_EQ(server.openConnections(), 1);
    server.closeConnections();
    EXPECT_TRUE(client.isClosedByServer());
}

TEST(LoopbackHttpServer, speaksTlsWithItsOwnCertificate)
{
    LoopbackHttpServer server(LoopbackHttpServer::Security::selfSigned);
    server.enqueue(Answer().send("hello"));
    QSslConfiguration tls = QSslConfiguration::defaultConfiguration();
    tls.setCaCertificates({QSslCertificate(LoopbackHttpServer::certificate())});
    QSslSocket client;
    client.setSslConfiguration(tls);
    client.connectToHostEncrypted(QStringLiteral("localhost"), server.port());
    client.write(simpleRequest);
    ASSERT_TRUE(waitUntil([&] { return client.bytesAvailable() == 5; }))
        << client.errorString().toStdString();
    EXPECT_EQ(client.readAll(), "hello");
    EXPECT_EQ(server.url().scheme(), QStringLiteral("https"));
}

TEST(LoopbackHttpServer, greetsAClientThatHasAskedForNothing)
{
    LoopbackHttpServer server;
    server.setGreeting("220 ready\r\n");
    RawClient client(server);
    EXPECT_TRUE(client.receives("220 ready\r\n"));
}

TEST(LoopbackHttpServer, tellsThatAPortIsTaken)
{
    const LoopbackHttpServer first;
    const LoopbackHttpServer second(LoopbackHttpServer::Security::plain, first.port());
    EXPECT_TRUE(first.isListening());
    EXPECT_FALSE(second.isListening());
}

} // namespace
} // namespace zelvane::test
