#include "support/provider/HostedModel.h"

#include "support/Await.h"
#include "support/VirtualClock.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTcpSocket>

namespace zelvane::test {
namespace {

using namespace std::chrono_literals;
using RetryHint = HostedRules::RetryHint;

/// A client that says what it likes.
class Model : public ::testing::Test
{
protected:
    struct Reply
    {
        int status = 0;
        std::string body;
        std::string head;
    };

    Model()
    {
        server.setHandler(
            [this](const RecordedRequest& request) { return model.answerTo(request); });
    }

    Reply ask(const QByteArray& requestLine, const HttpHeaders& headers,
              const QByteArray& body = {})
    {
        QTcpSocket socket;
        socket.connectToHost(QStringLiteral("127.0.0.1"), server.port());
        QByteArray message = requestLine + " HTTP/1.1\r\n";
        for (const auto& [name, value] : headers) {
            message += name + ": " + value + "\r\n";
        }
        message += "Content-Length: " + QByteArray::number(body.size()) + "\r\n\r\n" + body;
        socket.write(message);
        QByteArray received;
        const bool isAnswered = waitUntil([&] {
            received += socket.readAll();
            const qsizetype at = received.indexOf("Content-Length: ");
            const qsizetype end = received.indexOf("\r\n\r\n");
            return end >= 0 && received.size() - end - 4 ==
                                   received.sliced(at + 16).split('\r').first().toLongLong();
        });
        EXPECT_TRUE(isAnswered);
        const qsizetype end = received.indexOf("\r\n\r\n");
        return {received.split(' ').value(1).toInt(), received.sliced(end + 4).toStdString(),
                received.first(end).toStdString()};
    }

    static HttpHeaders headers(const QByteArray& id, const QByteArray& token = {})
    {
        HttpHeaders all{{"Accept", "application/json"},
                        {"Content-Type", "application/json"},
                        {"X-Install-Id", id},
                        {"X-App-Version", "1"}};
        if (!token.isEmpty()) {
            all.append({"Authorization", "Bearer " + token});
        }
        return all;
    }
    Reply join(const QByteArray& id, const QByteArray& device = "d-1")
    {
        return ask("POST /v1/register", headers(id),
                   R"({"installId":")" + id + R"(","appVersion":"1","appBuild":"",)" +
                       R"("deviceFingerprint":")" + device + R"("})");
    }
    /// The token of a new installation.
    QByteArray token(const QByteArray& id, const QByteArray& device = "d-1")
    {
        const Reply reply = join(id, device);
        EXPECT_EQ(reply.status, 200) << reply.body;
        return QJsonDocument::fromJson(QByteArray::fromStdString(reply.body))[u"installToken"]
            .toString()
            .toUtf8();
    }
    Reply translate(const QByteArray& id, const QByteArray& with, const QByteArray& text = "Hello")
    {
        return ask("POST /v1/translate", headers(id, with),
                   R"({"installId":")" + id + R"(","appVersion":"1","appBuild":"","model":"m",)" +
                       R"("systemPrompt":"p","text":")" + text + R"("})");
    }

    VirtualClock clock;
    HostedModel model{clock};
    LoopbackHttpServer server;
};

TEST_F(Model, registersAnInstallationOnce)
{
    const QByteArray first = token("A");
    EXPECT_EQ(first.size(), 64);
    const Reply again = join("A");
    EXPECT_EQ(again.status, 409);
    EXPECT_EQ(again.body, R"({"error":"install_exists"})");
    EXPECT_NE(token("B"), first);
    EXPECT_EQ(model.installations().size(), 2);
}

TEST_F(Model, translatesForARegisteredInstallation)
{
    model.translator = [](const QString& text) { return text.toUpper(); };
    const QByteArray own = token("A");
    const Reply reply = translate("A", own);
    EXPECT_EQ(reply.status, 200);
    EXPECT_EQ(reply.body, R"({"quota":{"dayBucket":"2026-01-02","dayLimit":200,"dayRemaining":199,)"
                          R"("dayUsed":1,"minuteLimit":20,"minuteRemaining":19,"minuteUsed":1},)"
                          R"("text":"HELLO"})");
}

TEST_F(Model, knowsEachTokenFromEveryOther)
{
    const QByteArray first = token("A");
    const QByteArray second = token("B");
    EXPECT_EQ(translate("A", second).status, 401);
    EXPECT_EQ(translate("B", first).status, 401);
    EXPECT_EQ(translate("C", first).status, 401);
    EXPECT_EQ(translate("A", {}).status, 401);
    EXPECT_EQ(translate("A", first).status, 200);
    EXPECT_EQ(translate("B", second).status, 200);
}

TEST_F(Model, refusesARevokedTokenAndKeepsTheIdTaken)
{
    const QByteArray own = token("A");
    EXPECT_TRUE(model.revokeToken(QStringLiteral("A")));
    EXPECT_FALSE(model.revokeToken(QStringLiteral("B")));
    EXPECT_EQ(translate("A", own).body, R"({"error":"unauthorized"})");
    EXPECT_EQ(join("A").status, 409);
}

TEST_F(Model, forgets)
{
    const QByteArray own = token("A");
    EXPECT_TRUE(model.forget(QStringLiteral("A")));
    EXPECT_FALSE(model.forget(QStringLiteral("A")));
    EXPECT_EQ(translate("A", own).status, 401);
    EXPECT_EQ(join("A").status, 200);
}

TEST_F(Model, bansAnInstallation)
{
    const QByteArray own = token("A");
    const QByteArray other = token("B");
    EXPECT_TRUE(model.ban(QStringLiteral("A"), QStringLiteral("spam")));
    EXPECT_FALSE(model.ban(QStringLiteral("C"), QStringLiteral("spam")));
    const Reply reply = translate("A", own);
    EXPECT_EQ(reply.status, 403);
    EXPECT_EQ(reply.body, R"({"error":"install_banned","reason":"spam"})");
    EXPECT_EQ(translate("B", other).status, 200);
    EXPECT_TRUE(model.unban(QStringLiteral("A")));
    EXPECT_EQ(translate("A", own).status, 200);
    EXPECT_TRUE(model.ban(QStringLiteral("A"), QString()));
    EXPECT_EQ(translate("A", own).body, R"({"error":"install_banned"})");
}

TEST_F(Model, bansAMachine)
{
    EXPECT_EQ(join("A", "d-1").status, 200);
    EXPECT_TRUE(model.banDevice(QStringLiteral("A"), QStringLiteral("spam")));
    EXPECT_EQ(join("B", "d-1").body, R"({"error":"install_banned","reason":"spam"})");
    EXPECT_EQ(join("B", "d-2").status, 200);
    EXPECT_TRUE(model.unban(QStringLiteral("A")));
    EXPECT_EQ(join("C", "d-1").status, 200);
}

TEST_F(Model, limitsTheTranslationsOfAMinute)
{
    model.rules.minuteLimit = 2;
    const QByteArray own = token("A");
    EXPECT_EQ(translate("A", own).status, 200);
    EXPECT_EQ(translate("A", own).status, 200);
    // 03:04:05
    EXPECT_EQ(translate("A", own).body, R"({"error":"rate_limited","retryAfterSeconds":55})");
    clock.advance(54s);
    EXPECT_EQ(translate("A", own).status, 429);
    clock.advance(1s);
    EXPECT_EQ(translate("A", own).status, 200);
    EXPECT_EQ(model.installations().value(QStringLiteral("A")).day.used, 3);
}

TEST_F(Model, limitsTheTranslationsOfADay)
{
    model.rules.dayLimit = 1;
    const QByteArray own = token("A");
    EXPECT_EQ(translate("A", own).status, 200);
    EXPECT_EQ(translate("A", own).body, R"({"error":"rate_limited","retryAfterSeconds":75355})");
    clock.advance(75355s);
    EXPECT_EQ(translate("A", own).status, 200);
}

TEST_F(Model, beginsABucketAnewWhenTheClockGoesBack)
{
    model.rules.minuteLimit = 1;
    const QByteArray own = token("A");
    EXPECT_EQ(translate("A", own).status, 200);
    clock.setStart(QDateTime(QDate(2025, 12, 31), QTime(3, 4, 5), Qt::UTC));
    const Reply reply = translate("A", own);
    EXPECT_EQ(reply.status, 200);
    EXPECT_THAT(reply.body, ::testing::HasSubstr(R"("dayBucket":"2025-12-31")"));
}

TEST_F(Model, saysHowLongToWaitInEachWayThereIs)
{
    model.rules.minuteLimit = 0;
    const QByteArray own = token("A");
    model.rules.retryHint = RetryHint::snakeCase;
    EXPECT_EQ(translate("A", own).body, R"({"error":"rate_limited","retry_after_seconds":55})");
    model.rules.retryHint = RetryHint::text;
    EXPECT_EQ(translate("A", own).body, R"({"error":"rate_limited","retryAfterSeconds":"55"})");
    model.rules.retryHint = RetryHint::header;
    const Reply reply = translate("A", own);
    EXPECT_EQ(reply.body, R"({"error":"rate_limited"})");
    EXPECT_THAT(reply.head, ::testing::HasSubstr("Retry-After: 55"));
    model.rules.retryHint = RetryHint::none;
    EXPECT_EQ(translate("A", own).body, R"({"error":"rate_limited"})");
}

TEST_F(Model, limitsTheRegistrationsOfAMachine)
{
    model.rules.registrationLimit = 1;
    EXPECT_EQ(join("A").status, 200);
    EXPECT_EQ(join("B").status, 429);
    EXPECT_EQ(join("B", "d-2").status, 200);
    clock.advance(24h);
    EXPECT_EQ(join("C").status, 200);
}

TEST_F(Model, tellsItsConfigurationAndTheQuota)
{
    const QByteArray own = token("A");
    EXPECT_EQ(ask("GET /v1/bootstrap", headers("A", own)).body,
              R"({"config":{"model":"gemini-3.1-flash-lite","provider":"gemini","version":1},)"
              R"("env":"prod"})");
    EXPECT_EQ(ask("GET /v1/quota?installId=A", headers("A", own)).body,
              R"({"quota":{"dayBucket":"2026-01-02","dayLimit":200,"dayRemaining":200,)"
              R"("dayUsed":0,"minuteLimit":20,"minuteRemaining":20,"minuteUsed":0}})");
    EXPECT_EQ(ask("GET /v1/quota?installId=B", headers("A", own)).status, 400);
    EXPECT_EQ(ask("GET /v1/bootstrap", headers("A")).status, 401);
}

TEST_F(Model, insistsOnWhatTheProtocolAsksFor)
{
    const auto complaint = [&](const QByteArray& name, const QByteArray& value) {
        HttpHeaders changed = headers("A");
        for (auto& header : changed) {
            header.second = header.first == name ? value : header.second;
        }
        const Reply reply =
            ask("POST /v1/register", changed,
                R"({"installId":"A","appVersion":"1","appBuild":"","deviceFingerprint":"d"})");
        EXPECT_EQ(reply.status, 400);
        return reply.body;
    };
    EXPECT_EQ(complaint("Accept", "*/*"),
              R"({"error":"bad_request","message":"Accept is not application/json"})");
    EXPECT_EQ(complaint("Content-Type", "text/plain"),
              R"({"error":"bad_request","message":"Content-Type is not application/json"})");
    EXPECT_EQ(complaint("X-App-Version", ""),
              R"({"error":"bad_request","message":"X-App-Version is missing"})");
    EXPECT_EQ(complaint("X-App-Version", "2"),
              R"({"error":"bad_request","message":"appVersion is not X-App-Version"})");
    EXPECT_EQ(complaint("X-Install-Id", ""),
              R"({"error":"bad_request","message":"X-Install-Id is missing"})");
    EXPECT_EQ(complaint("X-Install-Id", "B"),
              R"({"error":"bad_request","message":"installId is not X-Install-Id"})");
    EXPECT_EQ(ask("POST /v1/register", headers("A", "token"),
                  R"({"installId":"A","appVersion":"1","appBuild":"","deviceFingerprint":"d"})")
                  .body,
              R"({"error":"bad_request","message":"a registration has no Authorization"})");
    EXPECT_EQ(ask("POST /v1/register", headers("A"),
                  R"({"installId":"A","appVersion":"1","appBuild":"7","deviceFingerprint":"d"})")
                  .body,
              R"({"error":"bad_request","message":"appBuild is not X-App-Build"})");
    EXPECT_EQ(join("A", "").body,
              R"({"error":"bad_request","message":"deviceFingerprint is missing"})");
    EXPECT_TRUE(model.installations().isEmpty());
    EXPECT_EQ(translate("A", token("A"), "").body,
              R"({"error":"bad_request","message":"text is missing"})");
}

TEST_F(Model, knowsNothingElse)
{
    EXPECT_EQ(ask("GET /", headers("A")).status, 404);
    EXPECT_EQ(ask("GET /v1/models", headers("A")).status, 404);
    EXPECT_EQ(ask("GET /v1/translate", headers("A")).status, 405);
    EXPECT_EQ(ask("POST /v1/quota", headers("A")).status, 405);
    EXPECT_EQ(ask("GET /health", {}).body, R"({"status":"ok"})");
}

TEST_F(Model, takesTextsOfALimitedLengthOnly)
{
    model.rules.longestText = 5;
    const QByteArray own = token("A");
    EXPECT_EQ(translate("A", own, "12345").status, 200);
    EXPECT_EQ(translate("A", own, "123456").body, R"({"error":"text_too_long"})");
}

TEST_F(Model, showsItsState)
{
    const QByteArray own = token("A");
    translate("A", own);
    model.ban(QStringLiteral("A"), QStringLiteral("spam"));
    const QJsonObject shown = model.state()[u"installations"].toArray().first().toObject();
    EXPECT_EQ(shown.value(u"installId"), QStringLiteral("A"));
    EXPECT_EQ(shown.value(u"device"), QStringLiteral("d-1"));
    EXPECT_EQ(shown.value(u"hasToken"), true);
    EXPECT_EQ(shown.value(u"banned"), true);
    EXPECT_EQ(shown.value(u"translations"), 1);
    EXPECT_EQ(shown.value(u"quota")[u"minuteUsed"], 1);
    EXPECT_FALSE(QJsonDocument(model.state()).toJson().contains(own));
}

} // namespace
} // namespace zelvane::test
