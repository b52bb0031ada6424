#include "support/Await.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>

#include <csignal>

namespace zelvane::test {
namespace {

using std::chrono::milliseconds;
using ::testing::AllOf;
using ::testing::Ge;
using ::testing::HasSubstr;
using ::testing::Le;
using ::testing::StartsWith;

constexpr int limitMs = 8000;
const QByteArray key = "0123456789abcdef0123456789abcdef";

quint16 freePort()
{
    QTcpServer server;
    server.listen(QHostAddress::LocalHost);
    return server.serverPort();
}

/// A client with one connection.
class Client
{
public:
    explicit Client(quint16 port)
    {
        m_socket.connectToHost(QStringLiteral("127.0.0.1"), port);
        m_socket.waitForConnected(limitMs);
    }

    void send(const QByteArray& operation, const QByteArray& body = {},
              const QByteArray& bearer = key)
    {
        m_socket.write(operation + " HTTP/1.1\r\nHost: 127.0.0.1\r\nAuthorization: Bearer " +
                       bearer + "\r\nContent-Length: " + QByteArray::number(body.size()) +
                       "\r\n\r\n" + body);
    }
    /// Status and body of the next answer; what came of it if the connection ends first.
    std::pair<int, QByteArray> read()
    {
        QByteArray received;
        waitUntil([&] {
            received += m_socket.readAll();
            const qsizetype bodyStart = received.indexOf("\r\n\r\n") + 4;
            const qsizetype lengthAt = received.indexOf("Content-Length: ") + 16;
            return m_socket.state() != QAbstractSocket::ConnectedState ||
                   (bodyStart > 4 &&
                    received.size() - bodyStart ==
                        received.sliced(lengthAt, received.indexOf('\r', lengthAt) - lengthAt)
                            .toLongLong());
        });
        received += m_socket.readAll();
        return {received.mid(9, 3).toInt(), received.mid(received.indexOf("\r\n\r\n") + 4)};
    }
    std::pair<int, QByteArray> ask(const QByteArray& operation, const QByteArray& body = {},
                                   const QByteArray& bearer = key)
    {
        send(operation, body, bearer);
        return read();
    }
    [[nodiscard]] bool isConnected() const
    {
        return m_socket.state() == QAbstractSocket::ConnectedState;
    }
    void abort() { m_socket.abort(); }

private:
    QTcpSocket m_socket;
};

QByteArray chatBody(const QString& text)
{
    const QJsonObject message{{QStringLiteral("role"), QStringLiteral("user")},
                              {QStringLiteral("content"), text}};
    return QJsonDocument(QJsonObject{{QStringLiteral("messages"), QJsonArray{message}}}).toJson();
}

const QByteArray chat = "POST /v1/chat/completions";

class FakeLlamaServer : public ::testing::Test
{
protected:
    FakeLlamaServer()
    {
        QFile file(model);
        file.open(QIODevice::WriteOnly);
        file.write("GGUF" + QByteArray(60, '\0'));
    }
    ~FakeLlamaServer() override
    {
        process.kill();
        process.waitForFinished(limitMs);
    }

    void start(const QByteArray& script = "{}", const QStringList& more = {})
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("ZELVANE_FAKE_LLAMA"), QString::fromUtf8(script));
        process.setProcessEnvironment(environment);
        process.start(QStringLiteral(ZELVANE_FAKE_LLAMA_SERVER),
                      QStringList{QStringLiteral("-m"), model, QStringLiteral("--host"),
                                  QStringLiteral("127.0.0.1"), QStringLiteral("--port"),
                                  QString::number(port), QStringLiteral("-ngl"), gpuLayers,
                                  QStringLiteral("-c"), QStringLiteral("12288"),
                                  QStringLiteral("-np"), QStringLiteral("4"),
                                  QStringLiteral("--jinja"), QStringLiteral("--api-key"),
                                  QString::fromUtf8(key)} +
                          more);
        ASSERT_TRUE(process.waitForStarted(limitMs));
    }
    /// Starts and waits until the model is loaded.
    void serve(const QByteArray& script = "{}")
    {
        start(script);
        ASSERT_TRUE(waitUntil([this] { return health() == 200; }));
    }
    /// The status of /health; 0 if nobody listens.
    int health()
    {
        Client client(port);
        return client.isConnected() ? client.ask("GET /health").first : 0;
    }
    /// The content, and the reason for the end, of the answer to a text.
    std::pair<QString, QString> translate(const QString& text)
    {
        const auto [status, body] = Client(port).ask(chat, chatBody(text));
        EXPECT_EQ(status, 200);
        const QJsonValue choice = QJsonDocument::fromJson(body).object()[u"choices"][0];
        return {choice[u"message"][u"content"].toString(), choice[u"finish_reason"].toString()};
    }
    /// Real time from now until the process has ended.
    milliseconds untilEnd()
    {
        QElapsedTimer timer;
        timer.start();
        EXPECT_TRUE(waitUntil([this] { return process.state() == QProcess::NotRunning; }));
        return milliseconds(timer.elapsed());
    }

    QTemporaryDir folder;
    QString model = folder.filePath(QStringLiteral("m.gguf"));
    QString gpuLayers = QStringLiteral("99");
    quint16 port = freePort();
    QProcess process;
};

TEST_F(FakeLlamaServer, ListensThenLoadsThenServes)
{
    start(R"({"loadMs":150})");
    EXPECT_EQ(health(), 0);
    ASSERT_TRUE(waitUntil([this] { return health() == 503; }));
    EXPECT_EQ(Client(port).ask("GET /health").second,
              R"({"error":{"code":503,"message":"Loading model","type":"unavailable_error"}})");
    ASSERT_TRUE(waitUntil([this] { return health() == 200; }));
    EXPECT_EQ(Client(port).ask("GET /health").second, R"({"status":"ok"})");
    EXPECT_TRUE(process.readAllStandardOutput().isEmpty());
    EXPECT_THAT(process.readAllStandardError().toStdString(),
                AllOf(HasSubstr("no usable GPU found"), HasSubstr("server is listening")));
}

TEST_F(FakeLlamaServer, TellsItsHealthToAnyoneAndTheRestToWhoHasTheKey)
{
    serve();
    Client client(port);
    EXPECT_EQ(client.ask("GET /health", {}, "wrong").first, 200);
    EXPECT_EQ(client.ask("GET /v1/models", {}, "wrong").first, 200);
    EXPECT_EQ(client.ask("GET /props", {}, "wrong").first, 401);
    EXPECT_EQ(client.ask("GET /props").first, 200);
    const auto [status, body] = client.ask(chat, chatBody(QStringLiteral("Hello")), "");
    EXPECT_EQ(status, 401);
    EXPECT_EQ(
        body,
        R"({"error":{"code":401,"message":"Invalid API Key","type":"authentication_error"}})");
}

TEST_F(FakeLlamaServer, AnswersInTheShapeOfTheRealOne)
{
    serve();
    const auto [status, body] = Client(port).ask(chat, chatBody(QStringLiteral("Hello")));
    EXPECT_EQ(status, 200);
    const QJsonObject answer = QJsonDocument::fromJson(body).object();
    EXPECT_EQ(answer.value(u"choices"),
              QJsonDocument::fromJson(R"([{"finish_reason":"stop","index":0,"message":
                 {"content":"Hello","role":"assistant"}}])")
                  .array());
    EXPECT_EQ(answer.value(u"model").toString(), model);
    EXPECT_EQ(answer.value(u"object").toString(), QStringLiteral("chat.completion"));
    EXPECT_EQ(answer[u"usage"][u"prompt_tokens"].toInt(), 2);
}

TEST_F(FakeLlamaServer, RefusesWhatItCannotRead)
{
    serve();
    Client client(port);
    EXPECT_EQ(client.ask(chat, "{").first, 500);
    const auto [status, body] = client.ask(chat, "{}");
    EXPECT_EQ(status, 400);
    EXPECT_THAT(body.toStdString(), HasSubstr(R"("type":"invalid_request_error")"));
    EXPECT_EQ(client.ask("GET /nothing").first, 404);
}

TEST_F(FakeLlamaServer, RefusesAPromptThatIsLongerThanASlot)
{
    serve();
    const auto [status, body] = Client(port).ask(chat, chatBody(QString(4 * 3072 + 1, u'x')));
    EXPECT_EQ(status, 400);
    EXPECT_EQ(body, R"({"error":{"code":400,"message":"the request exceeds the available context )"
                    R"(size","n_ctx":3072,"n_prompt_tokens":3073,)"
                    R"("type":"exceed_context_size_error"}})");
    EXPECT_EQ(Client(port).ask(chat, chatBody(QString(4 * 3072, u'x'))).first, 200);
}

TEST_F(FakeLlamaServer, WorksOnFourRequestsAtOnceAndAnswersForItsHealthMeanwhile)
{
    serve(R"({"answerAfterMs":300})");
    QElapsedTimer timer;
    timer.start();
    std::vector<std::unique_ptr<Client>> clients;
    for (int i = 0; i < 5; ++i) {
        clients.push_back(std::make_unique<Client>(port));
        clients.back()->send(chat, chatBody(QStringLiteral("Hello")));
    }
    EXPECT_EQ(health(), 200);
    EXPECT_LT(timer.elapsed(), 299);
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(clients[i]->read().first, 200);
    }
    EXPECT_LT(timer.elapsed(), 1000);
    EXPECT_EQ(clients[4]->read().first, 200);
    EXPECT_GE(timer.elapsed(), 599);
}

TEST_F(FakeLlamaServer, AClientThatLeavesFreesItsSlot)
{
    serve(R"({"moods":["silence","silence","silence","silence","echo"]})");
    std::vector<std::unique_ptr<Client>> clients;
    for (int i = 0; i < 5; ++i) {
        clients.push_back(std::make_unique<Client>(port));
        clients.back()->send(chat, chatBody(QStringLiteral("Hello")));
        EXPECT_EQ(health(), 200); // keeps the order
    }
    clients[0]->abort();
    EXPECT_EQ(clients[4]->read().first, 200);
}

TEST_F(FakeLlamaServer, HasAMoodForEachRequestAndStaysInTheLast)
{
    serve(
        R"({"prefix":"> ","translations":{"two":"zwei"},"moods":["drop-line","add-line","repeat",)"
        R"("think","fence","echo"]})");
    const QString text = QStringLiteral("one\ntwo");
    EXPECT_EQ(translate(text).first, QStringLiteral("> one"));
    EXPECT_EQ(translate(text).first, QStringLiteral("> one\nzwei\nand more"));
    EXPECT_EQ(translate(text).first, QStringLiteral("again\nagain\nagain\nagain\nagain"));
    EXPECT_EQ(translate(text).first,
              QStringLiteral("<think>\nLet me see.\n</think>\n\n> one\nzwei"));
    EXPECT_EQ(translate(text).first, QStringLiteral("```text\n> one\nzwei\n```"));
    EXPECT_EQ(translate(text).first, QStringLiteral("> one\nzwei"));
    EXPECT_EQ(translate(text).first, QStringLiteral("> one\nzwei"));
}

TEST_F(FakeLlamaServer, AnswersInTheFieldForThoughtsOrNotAtAll)
{
    serve(R"({"moods":["reasoning","think-cut","blank"]})");
    const QByteArray body = Client(port).ask(chat, chatBody(QStringLiteral("Hello"))).second;
    EXPECT_EQ(
        QJsonDocument::fromJson(body).object()[u"choices"][0][u"message"],
        QJsonDocument::fromJson(R"({"content":"","reasoning_content":"Hello","role":"assistant"})")
            .object());
    EXPECT_EQ(translate(QStringLiteral("Hello")), std::pair(QString(), QStringLiteral("length")));
    EXPECT_EQ(translate(QStringLiteral("Hello")), std::pair(QString(), QStringLiteral("stop")));
}

TEST_F(FakeLlamaServer, BreaksTheProtocolOnDemand)
{
    serve(R"({"moods":["refuse","not-json","no-choices","cut-off","echo"]})");
    const QByteArray body = chatBody(QStringLiteral("Hello"));
    EXPECT_EQ(Client(port).ask(chat, body).first, 503);
    EXPECT_THAT(Client(port).ask(chat, body).second.toStdString(), StartsWith("<html>"));
    EXPECT_THAT(Client(port).ask(chat, body).second.toStdString(), HasSubstr(R"("choices":[])"));
    const QByteArray half = Client(port).ask(chat, body).second;
    EXPECT_TRUE(half.startsWith(R"({"choices":)"));
    EXPECT_FALSE(half.endsWith("}"));
    EXPECT_EQ(Client(port).ask(chat, body).first, 200);
}

TEST_F(FakeLlamaServer, DiesInTheMiddleOfAnAnswer)
{
    serve(R"({"moods":["die"]})");
    EXPECT_TRUE(Client(port)
                    .ask(chat, chatBody(QStringLiteral("Hello")))
                    .second.startsWith(R"({"choices":)"));
    (void)untilEnd();
    EXPECT_EQ(process.exitStatus(), QProcess::CrashExit);
}

TEST_F(FakeLlamaServer, EndsSoonWhenItIsIdle)
{
    serve();
    process.terminate();
    EXPECT_THAT(untilEnd().count(), Le(800));
    EXPECT_EQ(process.exitCode(), 0);
    EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
}

TEST_F(FakeLlamaServer, EndsAlmostAsSoonWithAnIdleClient)
{
    serve();
    Client client(port);
    EXPECT_EQ(client.ask("GET /health").first, 200);
    process.terminate();
    EXPECT_THAT(untilEnd().count(), AllOf(Ge(150), Le(1000)));
    EXPECT_EQ(process.exitCode(), 0);
}

TEST_F(FakeLlamaServer, DiesOfTheSignalWhileItLoads)
{
    start(R"({"neverReady":true})");
    ASSERT_TRUE(waitUntil([this] { return health() == 503; }));
    process.terminate();
    (void)untilEnd();
    EXPECT_EQ(process.exitStatus(), QProcess::CrashExit);
    EXPECT_EQ(process.exitCode(), SIGTERM);
}

TEST_F(FakeLlamaServer, HangsWhileAClientWaitsAndEndsASecondAfterItHasGone)
{
    serve(R"({"moods":["silence"]})");
    Client client(port);
    client.send(chat, chatBody(QStringLiteral("Hello")));
    EXPECT_EQ(health(), 200);
    process.terminate();
    EXPECT_FALSE(
        waitUntil([this] { return process.state() == QProcess::NotRunning; }, milliseconds(300)));
    client.abort();
    EXPECT_THAT(untilEnd().count(), AllOf(Ge(950), Le(4000)));
    EXPECT_EQ(process.exitCode(), 0);
}

TEST_F(FakeLlamaServer, TakesAsLongWhenTheClientHasJustGone)
{
    serve(R"({"moods":["silence"]})");
    Client client(port);
    client.send(chat, chatBody(QStringLiteral("Hello")));
    EXPECT_EQ(health(), 200);
    client.abort();
    EXPECT_EQ(health(), 200);
    process.terminate();
    EXPECT_THAT(untilEnd().count(), AllOf(Ge(950), Le(4000)));
    EXPECT_EQ(process.exitCode(), 0);
}

TEST_F(FakeLlamaServer, ASecondSignalEndsItAtOnce)
{
    serve(R"({"moods":["silence"]})");
    Client client(port);
    client.send(chat, chatBody(QStringLiteral("Hello")));
    EXPECT_EQ(health(), 200);
    process.terminate();
    EXPECT_FALSE(
        waitUntil([this] { return process.state() == QProcess::NotRunning; }, milliseconds(100)));
    process.terminate();
    EXPECT_THAT(untilEnd().count(), Le(800));
    EXPECT_EQ(process.exitCode(), 1);
}

TEST_F(FakeLlamaServer, CanIgnoreThatItIsAskedToEnd)
{
    serve(R"({"ignoresTerminate":true})");
    process.terminate();
    EXPECT_FALSE(
        waitUntil([this] { return process.state() == QProcess::NotRunning; }, milliseconds(300)));
    EXPECT_EQ(health(), 200);
}

TEST_F(FakeLlamaServer, StandsStillWhenNobodyReadsItsLog)
{
    process.setReadChannel(QProcess::StandardError);
    start(R"({"logFlood":200000})");
    // Nothing of this process reads the pipe from here on: QProcess does so in the event loop only.
    QTcpSocket socket;
    const QByteArray request =
        "POST /v1/chat/completions HTTP/1.1\r\nAuthorization: Bearer " + key +
        "\r\nContent-Length: " + QByteArray::number(chatBody(QStringLiteral("a")).size()) +
        "\r\n\r\n" + chatBody(QStringLiteral("a"));
    QElapsedTimer timer;
    timer.start();
    while (socket.state() != QAbstractSocket::ConnectedState && timer.elapsed() < limitMs) {
        socket.connectToHost(QStringLiteral("127.0.0.1"), port);
        socket.waitForConnected(50);
    }
    ::usleep(100'000); // for the load
    socket.write(request);
    socket.flush();
    EXPECT_FALSE(socket.waitForReadyRead(300));
    ::kill(static_cast<pid_t>(process.processId()), SIGTERM);
    EXPECT_FALSE(socket.waitForReadyRead(200));
    EXPECT_EQ(::kill(static_cast<pid_t>(process.processId()), 0), 0);
}

TEST_F(FakeLlamaServer, RefusesABrokenModel)
{
    QFile file(model);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("junk");
    file.close();
    start();
    (void)untilEnd();
    EXPECT_EQ(process.exitCode(), 1);
    const std::string log = process.readAllStandardError().toStdString();
    EXPECT_THAT(log, HasSubstr("failed to load model, '" + model.toStdString() + "'"));
    EXPECT_THAT(log, ::testing::EndsWith("exiting due to model loading error\n"));
}

TEST_F(FakeLlamaServer, EndsWhereThePortIsTakenOrAnOptionUnknown)
{
    QTcpServer other;
    ASSERT_TRUE(other.listen(QHostAddress::LocalHost, port));
    start();
    (void)untilEnd();
    EXPECT_EQ(process.exitCode(), 1);
    EXPECT_THAT(process.readAllStandardError().toStdString(),
                HasSubstr("couldn't bind HTTP server socket"));
    other.close();
    start("{}", {QStringLiteral("--unknown")});
    (void)untilEnd();
    EXPECT_EQ(process.exitCode(), 1);
    EXPECT_THAT(process.readAllStandardError().toStdString(), HasSubstr("invalid argument"));
}

TEST_F(FakeLlamaServer, FailsToLoadOnTheGpuOnDemand)
{
    start(R"({"diesWithGpu":true})");
    (void)untilEnd();
    EXPECT_EQ(process.exitCode(), 1);
    gpuLayers = QStringLiteral("0");
    serve(R"({"diesWithGpu":true})");
}

TEST_F(FakeLlamaServer, RecordsWhatItWasStartedWithAndAskedFor)
{
    const QString record = folder.filePath(QStringLiteral("record"));
    serve(QJsonDocument(QJsonObject{{QStringLiteral("record"), record}}).toJson());
    EXPECT_EQ(translate(QStringLiteral("Hello")).first, QStringLiteral("Hello"));
    process.terminate();
    (void)untilEnd();
    QFile file(record);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QList<QByteArray> lines = file.readAll().trimmed().split('\n');
    const QJsonObject first = QJsonDocument::fromJson(lines.first()).object();
    EXPECT_EQ(first.value(u"event").toString(), QStringLiteral("start"));
    EXPECT_EQ(first[u"arguments"][0].toString(), QStringLiteral("-m"));
    const QJsonObject request = QJsonDocument::fromJson(lines.at(lines.size() - 2)).object();
    EXPECT_EQ(request.value(u"target").toString(), QStringLiteral("/v1/chat/completions"));
    EXPECT_EQ(request.value(u"authorization").toString(),
              QStringLiteral("Bearer 0123456789abcdef0123456789abcdef"));
    EXPECT_THAT(request.value(u"body").toString().toStdString(), HasSubstr("Hello"));
    EXPECT_THAT(lines.last().toStdString(), HasSubstr(R"("event":"end")"));
}

TEST_F(FakeLlamaServer, RefusesAScriptThatItDoesNotUnderstand)
{
    start(R"({"moods":["cheerful"]})");
    (void)untilEnd();
    EXPECT_EQ(process.exitCode(), 1);
    EXPECT_EQ(process.readAllStandardError(), "no such mood: cheerful\n");
}

TEST_F(FakeLlamaServer, FindsItsScriptBesideItsPath)
{
    const QString link = folder.filePath(QStringLiteral("llama-server"));
    ASSERT_TRUE(QFile::link(QStringLiteral(ZELVANE_FAKE_LLAMA_SERVER), link));
    QFile script(folder.filePath(QStringLiteral("llama-script.json")));
    ASSERT_TRUE(script.open(QIODevice::WriteOnly));
    script.write(R"({"record":1,"what":2})");
    script.close();
    process.start(link, QStringList());
    (void)untilEnd();
    EXPECT_EQ(process.readAllStandardError(), "no such entry: what\n");
}

} // namespace
} // namespace zelvane::test
