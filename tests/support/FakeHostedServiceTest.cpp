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

using ::testing::HasSubstr;
using ::testing::StartsWith;

constexpr int limitMs = 8000;

class FakeHosted : public ::testing::Test
{
protected:
    /// Starts the service and waits until it listens.
    void start(const QStringList& arguments)
    {
        process.start(QStringLiteral(ZELVANE_FAKE_HOSTED), arguments);
        while (!process.canReadLine()) {
            ASSERT_TRUE(process.waitForReadyRead(limitMs))
                << process.readAllStandardError().toStdString();
        }
        const QByteArray line = process.readLine();
        ASSERT_THAT(line.toStdString(), StartsWith("port "));
        port = line.trimmed().sliced(5).toUShort();
        ASSERT_NE(port, 0);
    }

    /// Status line, headers and body of the answer.
    std::string ask(const QByteArray& requestLine, const QByteArray& body = {},
                    const QByteArray& token = {})
    {
        QTcpSocket socket;
        socket.connectToHost(QStringLiteral("127.0.0.1"), port);
        socket.write(requestLine +
                     " HTTP/1.1\r\nAccept: application/json\r\nContent-Type: application/json\r\n"
                     "X-Install-Id: A\r\nX-App-Version: 1\r\n" +
                     (token.isEmpty() ? QByteArray()
                                      : QByteArray("Authorization: Bearer " + token + "\r\n")) +
                     "Content-Length: " + QByteArray::number(body.size()) + "\r\n\r\n" + body);
        QByteArray received;
        EXPECT_TRUE(waitUntil([&] {
            received += socket.readAll();
            const qsizetype end = received.indexOf("\r\n\r\n");
            const qsizetype at = received.indexOf("Content-Length: ");
            return end >= 0 && received.size() - end - 4 ==
                                   received.sliced(at + 16).split('\r').first().toLongLong();
        }));
        return received.toStdString();
    }
    QByteArray registered()
    {
        const std::string answer = ask("POST /v1/register", R"({"installId":"A","appVersion":"1",)"
                                                            R"("appBuild":"",)"
                                                            R"("deviceFingerprint":"d"})");
        EXPECT_THAT(answer, StartsWith("HTTP/1.1 200 "));
        const auto at = answer.find("installToken\":\"") + 15;
        return QByteArray::fromStdString(answer.substr(at, 64));
    }
    std::string translate(const QByteArray& token)
    {
        return ask("POST /v1/translate",
                   R"({"installId":"A","appVersion":"1","appBuild":"","model":"m",)"
                   R"("systemPrompt":"p","text":"Hello"})",
                   token);
    }
    std::pair<int, std::string> refusal(const QStringList& arguments)
    {
        process.start(QStringLiteral(ZELVANE_FAKE_HOSTED), arguments);
        EXPECT_TRUE(process.waitForFinished(limitMs));
        return {process.exitCode(), process.readAllStandardError().trimmed().toStdString()};
    }

    ~FakeHosted() override
    {
        process.kill();
        process.waitForFinished(limitMs);
    }

    QProcess process;
    quint16 port = 0;
    QTemporaryDir folder;
};

TEST_F(FakeHosted, translatesByItsMapForThoseWhoRegister)
{
    QFile map(folder.filePath(QStringLiteral("map.json")));
    ASSERT_TRUE(map.open(QIODevice::WriteOnly));
    map.write(R"({"Hello":"Hallo"})");
    map.close();
    start({QStringLiteral("--map"), map.fileName()});
    EXPECT_THAT(translate("none"), StartsWith("HTTP/1.1 401 "));
    EXPECT_THAT(translate(registered()), HasSubstr(R"("text":"Hallo")"));
}

TEST_F(FakeHosted, hasLimits)
{
    start({QStringLiteral("--day-limit"), QStringLiteral("1")});
    const QByteArray token = registered();
    EXPECT_THAT(translate(token), HasSubstr(R"("dayRemaining":0)"));
    EXPECT_THAT(translate(token), HasSubstr("rate_limited"));
}

TEST_F(FakeHosted, doesWhatItsOperatorAsksFor)
{
    start({});
    const QByteArray token = registered();
    EXPECT_THAT(ask("GET /model/state"), HasSubstr(R"("installId": "A")"));
    EXPECT_THAT(ask("POST /model/ban?installId=A&reason=too%20much"), HasSubstr("200"));
    EXPECT_THAT(translate(token), HasSubstr(R"({"error":"install_banned","reason":"too much"})"));
    EXPECT_THAT(ask("POST /model/unban?installId=A"), HasSubstr("200"));
    EXPECT_THAT(translate(token), HasSubstr(R"("text":"Hello")"));
    EXPECT_THAT(ask("POST /model/config?model=m-2"), HasSubstr("200"));
    EXPECT_THAT(ask("GET /v1/bootstrap", {}, token),
                HasSubstr(R"({"model":"m-2","provider":"gemini","version":2})"));
    EXPECT_THAT(ask("POST /model/revoke?installId=A"), HasSubstr("200"));
    EXPECT_THAT(translate(token), HasSubstr("unauthorized"));
    EXPECT_THAT(ask("POST /model/ban-device?installId=A"), HasSubstr("200"));
    EXPECT_THAT(ask("POST /model/forget?installId=A"), HasSubstr("200"));
    EXPECT_THAT(ask("POST /model/forget?installId=A"), StartsWith("HTTP/1.1 404 "));
    EXPECT_THAT(ask("POST /model/nonsense"), StartsWith("HTTP/1.1 404 "));
}

TEST_F(FakeHosted, logsEachRequestWithoutItsToken)
{
    const QString log = folder.filePath(QStringLiteral("log"));
    start({QStringLiteral("--log"), log});
    translate(registered());
    QFile file(log);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll(), "POST /v1/register HTTP/1.1 A\nPOST /v1/translate HTTP/1.1 A\n");
}

TEST_F(FakeHosted, saysWhatIsWrongWithItsArguments)
{
    EXPECT_EQ(refusal({QStringLiteral("--port"), QStringLiteral("70000")}),
              std::make_pair(2, std::string("--port takes a number from 0 to 65535.")));
    EXPECT_EQ(refusal({QStringLiteral("--map"), QStringLiteral("/nowhere")}),
              std::make_pair(2, std::string("/nowhere can't be read: No such file or directory")));
}

} // namespace
} // namespace zelvane::test
