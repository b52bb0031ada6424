#include "support/Await.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTcpSocket>
#include <QTemporaryDir>

namespace zelvane::test {
namespace {

using ::testing::EndsWith;
using ::testing::StartsWith;

constexpr int limitMs = 8000;

class FakeProvider : public ::testing::Test
{
protected:
    /// Starts the provider and waits until it listens.
    void start(const QStringList& arguments)
    {
        process.start(QStringLiteral(ZELVANE_FAKE_PROVIDER), arguments);
        while (!process.canReadLine()) {
            ASSERT_TRUE(process.waitForReadyRead(limitMs))
                << process.readAllStandardError().toStdString();
        }
        const QByteArray line = process.readLine();
        ASSERT_THAT(line.toStdString(), StartsWith("port "));
        port = line.trimmed().sliced(5).toUShort();
        ASSERT_NE(port, 0);
    }

    /// The provider's answer to a request.
    std::string ask(const QByteArray& operation, const QByteArray& body = {})
    {
        QTcpSocket socket;
        socket.connectToHost(QStringLiteral("127.0.0.1"), port);
        socket.write(operation + " HTTP/1.1\r\nAuthorization: Bearer k\r\nContent-Length: " +
                     QByteArray::number(body.size()) + "\r\n\r\n" + body);
        QByteArray received;
        const bool answered = waitUntil([&] {
            received += socket.readAll();
            const qsizetype bodyStart = received.indexOf("\r\n\r\n") + 4;
            const qsizetype lengthAt = received.indexOf("Content-Length: ") + 16;
            return bodyStart > 4 &&
                   received.size() - bodyStart ==
                       received.sliced(lengthAt, received.indexOf('\r', lengthAt) - lengthAt)
                           .toLongLong();
        });
        EXPECT_TRUE(answered);
        return received.toStdString();
    }

    /// The provider's answer to a request for the translation of `text`.
    std::string translate(const QString& text)
    {
        const QJsonArray messages{QJsonObject{{QStringLiteral("content"), QStringLiteral("do")}},
                                  QJsonObject{{QStringLiteral("content"), text}}};
        return ask("POST /v1/chat/completions",
                   QJsonDocument(QJsonObject{{QStringLiteral("messages"), messages}}).toJson());
    }

    /// The status and the message of a start that fails.
    std::pair<int, std::string> refusal(const QStringList& arguments)
    {
        process.start(QStringLiteral(ZELVANE_FAKE_PROVIDER), arguments);
        EXPECT_TRUE(process.waitForFinished(limitMs));
        return {process.exitCode(), process.readAllStandardError().trimmed().toStdString()};
    }

    ~FakeProvider() override
    {
        process.kill();
        process.waitForFinished(limitMs);
    }

    QProcess process;
    quint16 port = 0;
    QTemporaryDir folder;
};

TEST_F(FakeProvider, answersWithTheTextItselfUnlessToldOtherwise)
{
    start({});
    EXPECT_EQ(translate(QStringLiteral("Hello")),
              "HTTP/1.1 200 Scripted\r\nContent-Type: application/json\r\nContent-Length: 74\r\n"
              "\r\n"
              R"({"choices":[{"index":0,"message":{"content":"Hello","role":"assistant"}}]})");
}

TEST_F(FakeProvider, looksTextsUpAndElseGivesTheOneAnswer)
{
    QFile map(folder.filePath(QStringLiteral("map.json")));
    ASSERT_TRUE(map.open(QIODevice::WriteOnly));
    map.write(R"({"Hello":"Grüße"})");
    map.close();
    start({QStringLiteral("--map"), map.fileName(), QStringLiteral("--answer"),
           QStringLiteral("Sonst")});
    EXPECT_THAT(translate(QStringLiteral("Hello")), ::testing::HasSubstr(R"("content":"Grüße")"));
    EXPECT_THAT(translate(QStringLiteral("Bye")), ::testing::HasSubstr(R"("content":"Sonst")"));
}

TEST_F(FakeProvider, givesTheStatusAndTheBodyThatItIsTold)
{
    start({QStringLiteral("--status"), QStringLiteral("429"), QStringLiteral("--body"),
           QStringLiteral("slow down"), QStringLiteral("--delay-ms"), QStringLiteral("5")});
    const std::string answer = translate(QStringLiteral("Hello"));
    EXPECT_THAT(answer, StartsWith("HTTP/1.1 429 "));
    EXPECT_THAT(answer, EndsWith("\r\n\r\nslow down"));
}

TEST_F(FakeProvider, knowsNoOtherOperation)
{
    start({});
    EXPECT_THAT(ask("POST /v1/models"), StartsWith("HTTP/1.1 404 "));
    EXPECT_THAT(ask("GET /v1/messages"), StartsWith("HTTP/1.1 404 "));
    EXPECT_THAT(ask("POST /v1/embeddings"), StartsWith("HTTP/1.1 404 "));
}

TEST_F(FakeProvider, speaksTheProtocolOfEachProvider)
{
    start({QStringLiteral("--answer"), QStringLiteral("Hallo")});
    EXPECT_THAT(ask("POST /v1beta/models/m:generateContent?key=k",
                    R"({"contents":[{"parts":[{"text":"Hello"}]}]})"),
                EndsWith("\r\n\r\n"
                         R"({"candidates":[{"content":{"parts":[{"text":"Hallo"}],)"
                         R"("role":"model"}}]})"));
    EXPECT_THAT(ask("POST /v1/messages", R"({"messages":[{"content":"Hello"}]})"),
                EndsWith("\r\n\r\n"
                         R"({"content":[{"text":"Hallo","type":"text"}],"type":"message"})"));
    EXPECT_THAT(ask("POST /v2/translate", R"({"text":["Hello"]})"),
                EndsWith("\r\n\r\n"
                         R"({"translations":[{"text":"Hallo"}]})"));
}

TEST_F(FakeProvider, findsTheTextInEachProtocol)
{
    start({});
    EXPECT_THAT(ask("POST /v1beta/models/m:generateContent?key=k",
                    R"({"contents":[{"parts":[{"text":"one"}]}]})"),
                ::testing::HasSubstr(R"({"text":"one"})"));
    EXPECT_THAT(ask("POST /v1/messages", R"({"messages":[{"content":"two"}]})"),
                ::testing::HasSubstr(R"({"text":"two")"));
    EXPECT_THAT(ask("POST /v2/translate", R"({"text":["three"]})"),
                ::testing::HasSubstr(R"({"text":"three"})"));
}

TEST_F(FakeProvider, listsItsModelsInBothForms)
{
    start({QStringLiteral("--models"), QStringLiteral("a,b")});
    for (const char* path : {"GET /v1/models", "GET /models", "GET /v1beta/models?key=k"}) {
        EXPECT_THAT(
            ask(path),
            EndsWith("\r\n\r\n"
                     R"({"data":[{"id":"a"},{"id":"b"}],"models":[)"
                     R"({"name":"models/a","supportedGenerationMethods":["generateContent"]},)"
                     R"({"name":"models/b","supportedGenerationMethods":["generateContent"]}]})"));
    }
}

TEST_F(FakeProvider, logsEachRequest)
{
    const QString log = folder.filePath(QStringLiteral("log"));
    start({QStringLiteral("--log"), log});
    translate(QStringLiteral("one"));
    translate(QStringLiteral("two"));
    QFile file(log);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QList<QByteArray> lines = file.readAll().split('\n');
    ASSERT_EQ(lines.size(), 3);
    const QJsonObject entry = QJsonDocument::fromJson(lines[1]).object();
    EXPECT_EQ(entry.value(u"requestLine").toString(),
              QStringLiteral("POST /v1/chat/completions HTTP/1.1"));
    EXPECT_EQ(entry.value(u"headers").toArray().first().toArray(),
              (QJsonArray{QStringLiteral("Authorization"), QStringLiteral("Bearer k")}));
    EXPECT_TRUE(entry.value(u"body").toString().contains(QStringLiteral("\"two\"")));
}

TEST_F(FakeProvider, saysWhatIsWrongWithItsArguments)
{
    EXPECT_EQ(refusal({QStringLiteral("--port"), QStringLiteral("70000")}),
              std::make_pair(2, std::string("--port takes a number from 0 to 65535.")));
    EXPECT_EQ(refusal({QStringLiteral("--map"), QStringLiteral("/nowhere")}),
              std::make_pair(2, std::string("/nowhere can't be read: No such file or directory")));
}

} // namespace
} // namespace zelvane::test
