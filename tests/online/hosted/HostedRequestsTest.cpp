#include "online/HostedRequests.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace zelvane::test {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using Header = QPair<QByteArray, QByteArray>;

const ProgramVersion program{QStringLiteral("1.2.3"), QStringLiteral("45")};
const ProgramVersion withoutBuild{QStringLiteral("1.2.3"), QString()};
const HostedInstallation installation{QStringLiteral("ID-1"), QStringLiteral("token-1")};

QUrl url(const char* path)
{
    return QUrl(QStringLiteral("https://worker.example") + QString::fromLatin1(path));
}

TEST(HostedRequest, registersWithoutAnyAuthorization)
{
    const HttpRequest request = registerRequest(url("/v1/register"), program,
                                                QStringLiteral("ID-1"), QStringLiteral("f00d"));
    EXPECT_EQ(request.method, "POST");
    EXPECT_EQ(request.url.toEncoded(), "https://worker.example/v1/register");
    EXPECT_THAT(request.headers,
                ElementsAre(Header("Content-Type", "application/json"),
                            Header("Accept", "application/json"), Header("X-App-Version", "1.2.3"),
                            Header("X-Install-Id", "ID-1"), Header("X-App-Build", "45")));
    EXPECT_EQ(request.body, R"({"appBuild":"45","appVersion":"1.2.3",)"
                            R"("deviceFingerprint":"f00d","installId":"ID-1"})");
    EXPECT_EQ(request.timeout, 30s);
}

TEST(HostedRequest, asksForTheConfiguration)
{
    const HttpRequest request = bootstrapRequest(url("/v1/bootstrap"), program, installation);
    EXPECT_EQ(request.method, "GET");
    EXPECT_EQ(request.url.toEncoded(), "https://worker.example/v1/bootstrap");
    EXPECT_THAT(request.headers,
                ElementsAre(Header("Authorization", "Bearer token-1"),
                            Header("Accept", "application/json"), Header("X-Install-Id", "ID-1"),
                            Header("X-App-Version", "1.2.3"), Header("X-App-Build", "45")));
    EXPECT_EQ(request.body, "");
    EXPECT_EQ(request.timeout, 30s);
}

TEST(HostedRequest, asksForTheQuotaOfTheInstallation)
{
    const HttpRequest request =
        quotaRequest(url("/v1/quota"), program, {QStringLiteral("a&b=ü +"), QStringLiteral("t")});
    EXPECT_EQ(request.method, "GET");
    EXPECT_EQ(request.url.toEncoded(),
              "https://worker.example/v1/quota?installId=a%26b%3D%C3%BC%20%2B");
    EXPECT_EQ(request.body, "");
    EXPECT_EQ(request.timeout, 30s);
}

TEST(HostedRequest, sendsTheTextWithItsPromptAndModel)
{
    const HttpRequest request = translateRequest(
        url("/v1/translate"), program, installation,
        {QStringLiteral("Grüße \"an\" 👋"), QStringLiteral("Translate."), QStringLiteral("m-1")});
    EXPECT_EQ(request.method, "POST");
    EXPECT_EQ(request.url.toEncoded(), "https://worker.example/v1/translate");
    EXPECT_THAT(request.headers,
                ElementsAre(Header("Authorization", "Bearer token-1"),
                            Header("Accept", "application/json"), Header("X-Install-Id", "ID-1"),
                            Header("X-App-Version", "1.2.3"), Header("X-App-Build", "45"),
                            Header("Content-Type", "application/json")));
    EXPECT_EQ(request.body.toStdString(),
              R"({"appBuild":"45","appVersion":"1.2.3","installId":"ID-1","model":"m-1",)"
              R"("systemPrompt":"Translate.","text":"Grüße \"an\" 👋"})");
    EXPECT_EQ(request.timeout, 180s);
}

TEST(HostedRequest, leavesOutTheHeaderOfAnUnknownBuild)
{
    for (const HttpRequest& request :
         {registerRequest(url("/"), withoutBuild, QStringLiteral("ID-1"), QString()),
          bootstrapRequest(url("/"), withoutBuild, installation),
          quotaRequest(url("/"), withoutBuild, installation),
          translateRequest(url("/"), withoutBuild, installation, {})}) {
        for (const auto& [name, value] : request.headers) {
            EXPECT_NE(name, "X-App-Build");
        }
    }
    EXPECT_EQ(
        registerRequest(url("/"), withoutBuild, QStringLiteral("ID-1"), QStringLiteral("f")).body,
        R"({"appBuild":"","appVersion":"1.2.3","deviceFingerprint":"f","installId":"ID-1"})");
}

TEST(HostedRequest, writesHalvesOfCharactersAsReplacements)
{
    const QString half(QChar(0xd83d));
    const HttpRequest request =
        translateRequest(url("/"), withoutBuild, installation, {half, half, half});
    EXPECT_EQ(
        request.body.toStdString(),
        "{\"appBuild\":\"\",\"appVersion\":\"1.2.3\",\"installId\":\"ID-1\",\"model\":\"\uFFFD\","
        "\"systemPrompt\":\"\uFFFD\",\"text\":\"\uFFFD\"}");
}

TEST(HostedRequest, ofAProgramOfUnknownVersionSaysSo)
{
    EXPECT_EQ(ProgramVersion().version, QStringLiteral("unknown"));
}

} // namespace
} // namespace zelvane::test
