#include "online/CloudflareKeyError.h"

#include <gtest/gtest.h>

namespace zelvane::test {
namespace {

using Code = CloudflareKeyError::Code;

struct ErrorText
{
    const char* name;
    CloudflareKeyError error;
    const char* text;
};

class CloudflareKeyErrorText : public ::testing::TestWithParam<ErrorText>
{
};

TEST_P(CloudflareKeyErrorText, tellsTheUserWhatHappened)
{
    EXPECT_EQ(GetParam().error.description(), QString::fromUtf8(GetParam().text));
}

ErrorText limited(const char* name, qint64 seconds, const char* text)
{
    return {name, CloudflareKeyError::rateLimited(seconds), text};
}

INSTANTIATE_TEST_SUITE_P(
    Hosted, CloudflareKeyErrorText,
    ::testing::Values(
        ErrorText{"bannedFor", CloudflareKeyError::installBanned(QStringLiteral("spam & more")),
                  "This install is blocked: spam & more"},
        ErrorText{"bannedForNoReason", CloudflareKeyError::installBanned(QString()),
                  "This install is blocked from Cloudflare translations."},
        ErrorText{"banned", CloudflareKeyError(Code::installBanned),
                  "This install is blocked from Cloudflare translations."},
        limited("noTime", 0, "Too many requests. Try again in 0 second(s)."),
        limited("aSecond", 1, "Too many requests. Try again in 1 second(s)."),
        limited("lastSecond", 59, "Too many requests. Try again in 59 second(s)."),
        limited("firstMinute", 60, "Too many requests. Try again in 1 minute(s)."),
        limited("almostTwoMinutes", 119, "Too many requests. Try again in 1 minute(s)."),
        limited("twoMinutes", 120, "Too many requests. Try again in 2 minute(s)."),
        limited("lastMinute", 3599, "Too many requests. Try again in 59 minute(s)."),
        limited("firstHour", 3600, "Too many requests. Try again in 1 hour(s)."),
        limited("almostTwoHours", 7199, "Too many requests. Try again in 1 hour(s)."),
        limited("aDay", 86400, "Too many requests. Try again in 24 hour(s)."),
        ErrorText{"http", CloudflareKeyError::http(502, QStringLiteral("Bad gateway")),
                  "Cloudflare error 502: Bad gateway"},
        ErrorText{"httpWithoutBody", CloudflareKeyError::http(404, QString()),
                  "Cloudflare error 404: "},
        ErrorText{"notConfigured", CloudflareKeyError(Code::notConfigured),
                  "Cloudflare Worker is not reachable. Check your network connection."},
        ErrorText{"invalidURL", CloudflareKeyError(Code::invalidURL),
                  "Invalid Cloudflare Worker URL."},
        ErrorText{"unauthorized", CloudflareKeyError(Code::unauthorized),
                  "This install is not authorized for Cloudflare translations."},
        ErrorText{"badResponse", CloudflareKeyError(Code::badResponse),
                  "Unexpected response from Cloudflare."},
        ErrorText{"missingCachedConfig", CloudflareKeyError(Code::missingCachedConfig),
                  "Cloudflare config is not loaded yet. Restart the app or refresh in Settings."},
        ErrorText{"emptyTranslation", CloudflareKeyError(Code::emptyTranslation),
                  "Cloudflare returned an empty translation."}),
    [](const auto& info) { return info.param.name; });

TEST(CloudflareKeyError, carriesItsPayload)
{
    const auto limit = CloudflareKeyError::rateLimited(90);
    EXPECT_EQ(limit.code(), Code::rateLimited);
    EXPECT_EQ(limit.retryAfterSeconds(), 90);
    EXPECT_EQ(limit.httpStatus(), 0);
    const auto http = CloudflareKeyError::http(409, QStringLiteral("taken"));
    EXPECT_EQ(http.code(), Code::http);
    EXPECT_EQ(http.httpStatus(), 409);
    EXPECT_EQ(http.retryAfterSeconds(), 0);
    EXPECT_EQ(http.payload(), QStringLiteral("taken"));
    const auto ban = CloudflareKeyError::installBanned(QStringLiteral("spam"));
    EXPECT_EQ(ban.code(), Code::installBanned);
    EXPECT_EQ(ban.payload(), QStringLiteral("spam"));
}

} // namespace
} // namespace zelvane::test
