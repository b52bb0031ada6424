#include "online/HostedAnswers.h"

#include "http/JsonError.h"
#include "online/CloudflareKeyError.h"

#include <gtest/gtest.h>

namespace zelvane::test {
namespace {

using Code = CloudflareKeyError::Code;
using Headers = QList<QPair<QByteArray, QByteArray>>;

/// The text of the refusal, or the null text if the answer is taken.
QString refusalOf(const HttpResponse& response, const QString& token = {})
{
    try {
        checkHostedResponse(response, token);
    } catch (const CloudflareKeyError& error) {
        return error.description();
    }
    return {};
}

const QString unauthorized =
    QStringLiteral("This install is not authorized for Cloudflare translations.");
const QString banned = QStringLiteral("This install is blocked from Cloudflare translations.");

TEST(HostedResponse, passesFrom200To299)
{
    for (const int status : {200, 201, 204, 299}) {
        EXPECT_TRUE(refusalOf({status, {}, "whatever"}).isNull()) << status;
    }
}

TEST(HostedResponse, isRefusedByAnyOtherStatusWithItsBody)
{
    EXPECT_EQ(refusalOf({100, {}, ""}), QStringLiteral("Cloudflare error 100: "));
    EXPECT_EQ(refusalOf({199, {}, "a"}), QStringLiteral("Cloudflare error 199: a"));
    EXPECT_EQ(refusalOf({300, {}, "b"}), QStringLiteral("Cloudflare error 300: b"));
    EXPECT_EQ(refusalOf({404, {}, R"({"error":"no"})"}),
              QStringLiteral(R"(Cloudflare error 404: {"error":"no"})"));
    EXPECT_EQ(refusalOf({409, {}, "taken"}), QStringLiteral("Cloudflare error 409: taken"));
    EXPECT_EQ(refusalOf({502, {}, "<html>Bad gateway"}),
              QStringLiteral("Cloudflare error 502: <html>Bad gateway"));
    EXPECT_EQ(refusalOf({599, {}, "\xff\xfe"}), QStringLiteral("Cloudflare error 599: "));
}

TEST(HostedResponse, showsTwoHundredCharactersOfABodyAndCutsWithinNone)
{
    const QByteArray family = "👨‍👩‍👧";
    const QString all =
        QStringLiteral("Cloudflare error 500: ") + QString::fromUtf8(family).repeated(200);
    EXPECT_EQ(refusalOf({500, {}, family.repeated(200)}), all);
    EXPECT_EQ(refusalOf({500, {}, family.repeated(201)}), all + u'…');
}

TEST(HostedResponse, neverShowsTheTokenThatABodyQuotes)
{
    EXPECT_EQ(refusalOf({500, {}, "no token-1234 here, token-1234"}, QStringLiteral("token-1234")),
              QStringLiteral("Cloudflare error 500: no *** here, ***"));
}

struct Refusal
{
    const char* name;
    int status;
    QByteArray body;
    QString text;
};

class HostedRefusal : public ::testing::TestWithParam<Refusal>
{
};

TEST_P(HostedRefusal, tellsABanFromAMissingRight)
{
    const Refusal& refusal = GetParam();
    EXPECT_EQ(refusalOf({refusal.status, {}, refusal.body}), refusal.text);
}

INSTANTIATE_TEST_SUITE_P(
    Hosted, HostedRefusal,
    ::testing::Values(
        Refusal{"bareUnauthorized", 401, "", unauthorized},
        Refusal{"bareForbidden", 403, "", unauthorized},
        Refusal{"otherError", 403, R"({"error":"forbidden","reason":"spam"})", unauthorized},
        Refusal{"html", 403, "<html>install_banned</html>", unauthorized},
        Refusal{"errorInAnArray", 403, R"(["install_banned"])", unauthorized},
        Refusal{"errorOfAnotherCase", 403, R"({"error":"INSTALL_BANNED"})", unauthorized},
        Refusal{"ban", 403, R"({"error":"install_banned"})", banned},
        Refusal{"banWithAnEmptyReason", 403, R"({"error":"install_banned","reason":""})", banned},
        Refusal{"banWithANumberForAReason", 403, R"({"error":"install_banned","reason":7})",
                banned},
        Refusal{"banWithAReason", 403, R"({"error":"install_banned","reason":"spam"})",
                QStringLiteral("This install is blocked: spam")},
        Refusal{"banBy401", 401, R"({"error":"install_banned","reason":"spam"})",
                QStringLiteral("This install is blocked: spam")},
        Refusal{"banOfAnotherStatus", 400, R"({"error":"install_banned"})",
                QStringLiteral(R"(Cloudflare error 400: {"error":"install_banned"})")}),
    [](const auto& info) { return info.param.name; });

struct Delay
{
    const char* name;
    QByteArray body;
    Headers headers;
    qint64 seconds;
};

class RetryDelay : public ::testing::TestWithParam<Delay>
{
};

TEST_P(RetryDelay, isTheBodysThenTheHeadersThenAMinute)
{
    const HttpResponse response{429, GetParam().headers, GetParam().body};
    EXPECT_EQ(retryDelay(response), GetParam().seconds);
    try {
        checkHostedResponse(response, {});
        FAIL() << "the answer was taken";
    } catch (const CloudflareKeyError& error) {
        EXPECT_EQ(error.code(), Code::rateLimited);
        EXPECT_EQ(error.retryAfterSeconds(), GetParam().seconds);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Hosted, RetryDelay,
    ::testing::Values(
        Delay{"none", "", {}, 60}, Delay{"noJson", "slow down", {}, 60},
        Delay{"noObject", "[90]", {}, 60}, Delay{"number", R"({"retryAfterSeconds":90})", {}, 90},
        Delay{"zero", R"({"retryAfterSeconds":0})", {{"retry-after", "5"}}, 0},
        Delay{"fraction", R"({"retryAfterSeconds":90.9})", {}, 90},
        Delay{"text", R"({"retryAfterSeconds":"90"})", {}, 90},
        Delay{"snakeCase", R"({"retry_after_seconds":7200})", {}, 7200},
        Delay{"snakeCaseText", R"({"retry_after_seconds":"7200"})", {}, 7200},
        Delay{"both", R"({"retry_after_seconds":1,"retryAfterSeconds":2})", {}, 2},
        Delay{"bodyBeforeHeader", R"({"retryAfterSeconds":2})", {{"retry-after", "5"}}, 2},
        Delay{"unreadableFirst", R"({"retryAfterSeconds":"soon","retry_after_seconds":3})", {}, 3},
        Delay{"textWithABlank", R"({"retryAfterSeconds":" 90"})", {{"retry-after", "5"}}, 5},
        Delay{"textWithAFraction", R"({"retryAfterSeconds":"1.5"})", {}, 60},
        Delay{"boolean", R"({"retryAfterSeconds":true})", {}, 60},
        Delay{"null", R"({"retryAfterSeconds":null})", {{"retry-after", "5"}}, 5},
        Delay{"beyondAllNumbers", R"({"retryAfterSeconds":1e300})", {{"retry-after", "5"}}, 5},
        Delay{"header", "", {{"retry-after", "90"}}, 90},
        Delay{"headerWithBlanks", "{}", {{"date", "x"}, {"retry-after", " 90 "}}, 90},
        Delay{"headerWithADate", "", {{"retry-after", "Wed, 21 Oct 2026 07:28:00 GMT"}}, 60},
        Delay{"emptyHeader", "", {{"retry-after", ""}}, 60},
        Delay{"signOnly", "", {{"retry-after", "-"}}, 60},
        Delay{"tooManyDigits", "", {{"retry-after", "99999999999999999999"}}, 60}),
    [](const auto& info) { return info.param.name; });

TEST(HostedResponse, aMinuteOfWaitingIsTheTextForMinutes)
{
    EXPECT_EQ(refusalOf({429, {{"retry-after", "90"}}, ""}),
              QStringLiteral("Too many requests. Try again in 1 minute(s)."));
    EXPECT_EQ(refusalOf({429, {}, ""}),
              QStringLiteral("Too many requests. Try again in 1 minute(s)."));
}

/// The code of the failure, or none.
template <typename Read>
std::optional<Code> failureOf(Read read)
{
    try {
        read();
    } catch (const CloudflareKeyError& error) {
        return error.code();
    }
    return std::nullopt;
}

TEST(InstallToken, isTrimmed)
{
    EXPECT_EQ(installTokenIn(R"({"installToken":" \n tok.en-1 ","other":1})"),
              QStringLiteral("tok.en-1"));
}

TEST(InstallToken, isTakenFromNoOtherAnswer)
{
    for (const QByteArray body :
         {"", "{}", "[]", "<html>", R"({"installToken":""})", R"({"installToken":" \n"})",
          R"({"installToken":7})", R"({"installToken":null})", R"({"token":"x"})",
          R"({"installToken":"a\r\nX-Evil: b"})", R"({"installToken":"a\u0000b"})"}) {
        EXPECT_EQ(failureOf([&] { std::ignore = installTokenIn(body); }), Code::badResponse)
            << body.toStdString();
    }
}

TEST(Bootstrap, isReadWhole)
{
    const CloudflareBootstrap expected{{QStringLiteral("m-2"), 7, QStringLiteral("mistral")},
                                       QStringLiteral("dev")};
    EXPECT_EQ(
        bootstrapIn(
            R"({"config":{"version":7,"model":"m-2","provider":"mistral","x":1},"env":"dev"})"),
        expected);
}

TEST(Bootstrap, withoutAnEnvironmentIsThatOfProduction)
{
    EXPECT_EQ(bootstrapIn(R"({"config":{}})").environment, QStringLiteral("prod"));
    EXPECT_EQ(bootstrapIn(R"({"config":{},"env":7})").environment, QStringLiteral("prod"));
}

TEST(Bootstrap, fillsWhatIsMissingFromTheBuiltInConfiguration)
{
    const ZelvaneClientConfig builtIn{QStringLiteral("gemini-3.1-flash-lite"), 0,
                                      QStringLiteral("gemini")};
    for (const QByteArray config :
         {"{}", R"({"version":"7","model":"","provider":""})",
          R"({"version":null,"model":null,"provider":null})",
          R"({"version":true,"model":1,"provider":{}})", R"({"version":1e300})"}) {
        EXPECT_EQ(bootstrapIn("{\"config\":" + config + "}").config, builtIn)
            << config.toStdString();
    }
    EXPECT_EQ(bootstrapIn(R"({"config":{"version":3.9}})").config.version, 3);
}

TEST(Bootstrap, isNothingWithoutAConfiguration)
{
    for (const QByteArray body : {"{}", "[]", R"({"config":null})", R"({"config":[]})"}) {
        EXPECT_EQ(failureOf([&] { std::ignore = bootstrapIn(body); }), Code::badResponse);
    }
    EXPECT_THROW(std::ignore = bootstrapIn("<html>"), JsonError);
}

const QByteArray wholeQuota =
    R"({"dayUsed":1,"dayLimit":200,"dayRemaining":199,"minuteUsed":2,"minuteLimit":20,)"
    R"("minuteRemaining":18,"dayBucket":"2026-01-02"})";

TEST(Quota, isReadAndWrittenWhole)
{
    const CloudflareQuota expected{1, 200, 199, 2, 20, 18, QStringLiteral("2026-01-02")};
    const auto quota = quotaIn("{\"quota\":" + wholeQuota + "}");
    EXPECT_EQ(quota, expected);
    EXPECT_EQ(cloudflareQuotaFromJson(toJson(expected)), expected);
}

TEST(Quota, countsForNothingIfAMemberIsMissingOrOfAnotherType)
{
    for (const QByteArray member : {"dayUsed", "dayLimit", "dayRemaining", "minuteUsed",
                                    "minuteLimit", "minuteRemaining", "dayBucket"}) {
        QByteArray without = wholeQuota;
        without.replace('"' + member + '"', "\"x\"");
        EXPECT_EQ(quotaIn("{\"quota\":" + without + "}"), std::nullopt) << member.toStdString();
    }
    for (const auto& [good, bad] : {std::pair("\"dayUsed\":1", "\"dayUsed\":\"1\""),
                                    std::pair("\"dayUsed\":1", "\"dayUsed\":1.5"),
                                    std::pair("\"dayUsed\":1", "\"dayUsed\":true"),
                                    std::pair("\"dayUsed\":1", "\"dayUsed\":1e300"),
                                    std::pair("\"2026-01-02\"", "20260102")}) {
        QByteArray other = wholeQuota;
        other.replace(good, bad);
        EXPECT_EQ(quotaIn("{\"quota\":" + other + "}"), std::nullopt) << bad;
    }
    for (const QByteArray body : {"", "{}", "[]", R"({"quota":null})", R"({"quota":[1]})"}) {
        EXPECT_EQ(quotaIn(body), std::nullopt) << body.toStdString();
    }
}

TEST(HostedTranslation, isTrimmed)
{
    EXPECT_EQ(translationIn(R"({"text":" \n Grüße \u00a0","quota":7})"), QStringLiteral("Grüße"));
}

TEST(HostedTranslation, isNeverEmpty)
{
    for (const QByteArray body : {"{}", "[]", R"({"text":""})", R"({"text":" \n\t"})",
                                  R"({"text":null})", R"({"text":7})", R"({"text":["x"]})"}) {
        EXPECT_EQ(failureOf([&] { std::ignore = translationIn(body); }), Code::emptyTranslation)
            << body.toStdString();
    }
}

TEST(HostedTranslation, thatIsNotJsonIsAFailureOfTheParser)
{
    for (const QByteArray body : {"", "<html>", "{\"text\":\"x", "\"x\""}) {
        EXPECT_THROW(std::ignore = translationIn(body), JsonError) << body.toStdString();
    }
}

} // namespace
} // namespace zelvane::test
