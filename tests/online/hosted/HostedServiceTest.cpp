#include "online/hosted/HostedFixture.h"

#include <gmock/gmock.h>

#include <QJsonDocument>

namespace zelvane::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Code = CloudflareKeyError::Code;
using Outcome = CloudflareSyncResult::Outcome;

const QByteArray translation = R"({"text":"Hallo"})";
const QByteArray quotaJson =
    R"({"dayUsed":1,"dayLimit":200,"dayRemaining":199,"minuteUsed":2,"minuteLimit":20,)"
    R"("minuteRemaining":18,"dayBucket":"2026-01-02"})";
const CloudflareQuota quota{1, 200, 199, 2, 20, 18, QStringLiteral("2026-01-02")};
const QString quotaKey = QStringLiteral("zv.cloudflare.quota.prod");
const QString configKey = QStringLiteral("zv.cloudflare.config.prod");
const QString unauthorized =
    QStringLiteral("This install is not authorized for Cloudflare translations.");

class Hosted : public ::testing::Test
{
protected:
    /// Lets the installation have been registered by an earlier run of the program.
    void registered()
    {
        install.defaults.setValue(QStringLiteral("zv.installId"), QStringLiteral("ID-0"));
        ASSERT_TRUE(install.secrets.write(QStringLiteral("token-0"),
                                          QStringLiteral("zv.cloudflare.installToken")));
        install.backend.calls.clear();
    }
    void answerRegistration(const QByteArray& token)
    {
        transport.answer(200, "{\"installToken\":\"" + token + "\"}");
    }

    HostedOutcome<QString> translate(const QString& workerUrl = worker)
    {
        return outcomeOf(service.translateHosted(hostedRequest(), workerUrl, {}));
    }
    HostedOutcome<ZelvaneClientConfig> load() { return outcomeOf(service.loadConfig(worker, {})); }

    /// The requests as "GET /path token id", or "-" where there is no token.
    [[nodiscard]] QStringList sent() const
    {
        QStringList lines;
        for (const HttpRequest& request : transport.requests()) {
            QMap<QByteArray, QByteArray> headers;
            for (const auto& [name, value] : request.headers) {
                headers.insert(name, value);
            }
            const QByteArray token = headers.value("Authorization", "Bearer -").sliced(7);
            lines += QString::fromUtf8(request.method + ' ' + request.url.path().toUtf8() + ' ' +
                                       token + ' ' + headers.value("X-Install-Id"));
        }
        return lines;
    }

    static inline const QString worker = QStringLiteral("https://worker.example");

    Install install;
    FakeHttpTransport transport;
    HostedService service{transport, install.defaults, install.secrets, install.machine,
                          ProgramVersion{QStringLiteral("1.2.3"), QStringLiteral("45")}};
};

TEST_F(Hosted, translatesWithTheTokenOfAnEarlierStart)
{
    registered();
    transport.answer(200, R"({"text":" Hallo \n"})");
    EXPECT_EQ(translate().value, QStringLiteral("Hallo"));
    EXPECT_THAT(sent(), ElementsAre(QStringLiteral("POST /v1/translate token-0 ID-0")));
    const HttpRequest& request = transport.requests().front();
    EXPECT_EQ(request.url.toString(), QStringLiteral("https://worker.example/v1/translate"));
    EXPECT_EQ(request.body, R"({"appBuild":"45","appVersion":"1.2.3","installId":"ID-0",)"
                            R"("model":"m-1","systemPrompt":"Translate.","text":"Hello"})");
}

TEST_F(Hosted, registersBeforeItsFirstCall)
{
    answerRegistration(" token-1\\n");
    transport.answer(200, translation);
    EXPECT_EQ(translate().value, QStringLiteral("Hallo"));
    const QString id = install.id();
    EXPECT_EQ(id.size(), 36);
    EXPECT_THAT(sent(), ElementsAre(QStringLiteral("POST /v1/register - ") + id,
                                    QStringLiteral("POST /v1/translate token-1 ") + id));
    EXPECT_EQ(install.token(), "token-1");
    EXPECT_EQ(transport.requests().front().body,
              R"({"appBuild":"45","appVersion":"1.2.3","deviceFingerprint":")" +
                  deviceFingerprint("machine-1").toUtf8() + R"(","installId":")" + id.toUtf8() +
                  R"("})");
}

TEST_F(Hosted, registersOnce)
{
    answerRegistration("token-1");
    transport.answer(200, translation);
    transport.answer(200, translation);
    EXPECT_EQ(translate().value, QStringLiteral("Hallo"));
    EXPECT_EQ(translate().value, QStringLiteral("Hallo"));
    EXPECT_EQ(sent().size(), 3);
}

TEST_F(Hosted, touchesTheSecretStoreOncePerStart)
{
    registered();
    for (int i = 0; i < 3; ++i) {
        transport.answer(200, translation);
        EXPECT_EQ(translate().value, QStringLiteral("Hallo"));
    }
    EXPECT_THAT(install.backend.calls,
                ElementsAre(QStringLiteral("find zv.cloudflare.installToken")));
}

TEST_F(Hosted, keepsWorkingOnASystemWithoutASecretStore)
{
    install.backend.addStatus = SecretStatus::otherFailure;
    answerRegistration("token-1");
    transport.answer(200, translation);
    transport.answer(200, translation);
    EXPECT_EQ(translate().value, QStringLiteral("Hallo"));
    EXPECT_EQ(translate().value, QStringLiteral("Hallo"));
    EXPECT_EQ(sent().size(), 3);
    for (const QString& key : install.defaults.keys()) {
        EXPECT_NE(install.defaults.string(key), QStringLiteral("token-1"));
    }
}

TEST_F(Hosted, usesTheOldIdWithATokenButNeverATokenWithoutAnId)
{
    registered();
    install.defaults.remove(QStringLiteral("zv.installId"));
    transport.answer(200, translation);
    EXPECT_EQ(translate().value, QStringLiteral("Hallo"));
    EXPECT_EQ(install.id().size(), 36);
    EXPECT_THAT(sent(), ElementsAre(QStringLiteral("POST /v1/translate token-0 ") + install.id()));
}

// Registration.

TEST_F(Hosted, takesANewIdOnceIfItsOwnIsTaken)
{
    install.defaults.setValue(QStringLiteral("zv.installId"), QStringLiteral("ID-0"));
    transport.answer(409, R"({"error":"exists"})");
    answerRegistration("token-1");
    transport.answer(200, translation);
    EXPECT_EQ(translate().value, QStringLiteral("Hallo"));
    const QString id = install.id();
    EXPECT_EQ(id.size(), 36);
    EXPECT_THAT(sent(), ElementsAre(QStringLiteral("POST /v1/register - ID-0"),
                                    QStringLiteral("POST /v1/register - ") + id,
                                    QStringLiteral("POST /v1/translate token-1 ") + id));
}

TEST_F(Hosted, givesUpWhenTheSecondIdIsTakenToo)
{
    transport.answer(409, "taken");
    transport.answer(409, "taken again");
    EXPECT_EQ(translate().text, QStringLiteral("Cloudflare error 409: taken again"));
    EXPECT_EQ(transport.requests().size(), 2U);
    EXPECT_EQ(install.token(), "");
}

TEST_F(Hosted, registersAnewOnlyForATakenId)
{
    for (const int status : {400, 404, 410, 500, 503}) {
        transport.answer(status, "no");
        EXPECT_EQ(translate().text, QStringLiteral("Cloudflare error %1: no").arg(status));
    }
    EXPECT_EQ(transport.requests().size(), 5U);
}

TEST_F(Hosted, isRefusedARegistrationInTheWordsOfAnyCall)
{
    transport.answer(401, "");
    EXPECT_EQ(translate().text, unauthorized);
    transport.answer(403, R"({"error":"install_banned","reason":"device"})");
    EXPECT_EQ(translate().text, QStringLiteral("This install is blocked: device"));
    transport.answer(429, R"({"retryAfterSeconds":7300})");
    EXPECT_EQ(translate().text, QStringLiteral("Too many requests. Try again in 2 hour(s)."));
    EXPECT_EQ(transport.requests().size(), 3U);
}

TEST_F(Hosted, takesNoRegistrationWithoutAToken)
{
    transport.answer(200, "{}");
    EXPECT_EQ(translate().code, Code::badResponse);
    transport.answer(200, "<html>Please log in</html>");
    EXPECT_EQ(translate().text, QStringLiteral("Unexpected response from Cloudflare."));
    EXPECT_THAT(install.backend.items, IsEmpty());
}

TEST_F(Hosted, keepsItsIdThroughAFailedRegistration)
{
    transport.fail(TransportError(TransportError::Kind::connection, QStringLiteral("offline")));
    EXPECT_EQ(translate().text, QStringLiteral("offline"));
    const QString id = install.id();
    answerRegistration("token-1");
    transport.answer(200, translation);
    EXPECT_EQ(translate().value, QStringLiteral("Hallo"));
    EXPECT_EQ(install.id(), id);
}

// A token that is no longer accepted.

TEST_F(Hosted, registersAnewAndRepeatsTheCallOnceWhenItsTokenIsRefused)
{
    registered();
    transport.answer(401, R"({"error":"unauthorized"})");
    answerRegistration("token-1");
    transport.answer(200, translation);
    EXPECT_EQ(translate().value, QStringLiteral("Hallo"));
    const QString id = install.id();
    EXPECT_NE(id, QStringLiteral("ID-0"));
    EXPECT_THAT(sent(), ElementsAre(QStringLiteral("POST /v1/translate token-0 ID-0"),
                                    QStringLiteral("POST /v1/register - ") + id,
                                    QStringLiteral("POST /v1/translate token-1 ") + id));
    EXPECT_EQ(install.token(), "token-1");
    EXPECT_EQ(QJsonDocument::fromJson(transport.requests().back().body)[u"installId"].toString(),
              id);
}

TEST_F(Hosted, reportsASecondRefusal)
{
    registered();
    transport.answer(401, "");
    answerRegistration("token-1");
    transport.answer(401, "");
    EXPECT_EQ(translate().text, unauthorized);
    EXPECT_NE(install.id(), QStringLiteral("ID-0"));
    EXPECT_EQ(transport.requests().size(), 3U);
}

TEST_F(Hosted, isRefusedAFreshTokenInTheSameWay)
{
    answerRegistration("token-1");
    transport.answer(401, "");
    answerRegistration("token-2");
    transport.answer(401, "");
    EXPECT_EQ(translate().text, unauthorized);
    EXPECT_EQ(install.token(), "token-2");
    EXPECT_EQ(transport.requests().size(), 4U);
}

TEST_F(Hosted, checksTheSecondAnswerLikeAnyOther)
{
    registered();
    transport.answer(401, "");
    answerRegistration("token-1");
    transport.answer(429, R"({"retryAfterSeconds":59})");
    EXPECT_EQ(translate().text, QStringLiteral("Too many requests. Try again in 59 second(s)."));
}

TEST_F(Hosted, forgetsARefusedInstallationEvenIfItGetsNoNewOne)
{
    registered();
    transport.answer(401, "");
    transport.fail(TransportError(TransportError::Kind::connection, QStringLiteral("offline")));
    EXPECT_EQ(translate().text, QStringLiteral("offline"));
    EXPECT_NE(install.id(), QStringLiteral("ID-0"));
    EXPECT_THAT(install.backend.items, IsEmpty());
}

TEST_F(Hosted, registersAnewForEveryKindOfCall)
{
    registered();
    transport.answer(401, "");
    answerRegistration("token-1");
    transport.answer(200, R"({"config":{}})");
    EXPECT_TRUE(outcomeOf(service.syncConfig(worker, {})).value);
    transport.answer(401, "");
    answerRegistration("token-2");
    transport.answer(200, "{}");
    EXPECT_TRUE(outcomeOf(service.refreshQuota(worker, {})).value);
    EXPECT_EQ(install.token(), "token-2");
    EXPECT_EQ(transport.requests().back().url.query(), QStringLiteral("installId=") + install.id());
}

TEST_F(Hosted, repeatsNothingForAnyOtherStatus)
{
    registered();
    for (const int status : {300, 307, 400, 403, 404, 408, 409, 413, 422, 429, 500, 502, 503}) {
        transport.answer(status, "no");
        EXPECT_TRUE(translate().code) << status;
    }
    EXPECT_EQ(transport.requests().size(), 13U);
    EXPECT_EQ(install.token(), "token-0");
    EXPECT_EQ(install.id(), QStringLiteral("ID-0"));
}

TEST_F(Hosted, staysBlockedAndClearsNothingWhenItIsBanned)
{
    registered();
    for (const int status : {403, 401}) {
        transport.answer(status, R"({"error":"install_banned","reason":"spam"})");
        EXPECT_EQ(translate().text, QStringLiteral("This install is blocked: spam"));
    }
    EXPECT_EQ(transport.requests().size(), 2U);
    EXPECT_EQ(install.token(), "token-0");
    EXPECT_EQ(install.id(), QStringLiteral("ID-0"));
}

TEST_F(Hosted, isNotAuthorizedByA403ThatIsNoBan)
{
    registered();
    transport.answer(403, R"({"error":"forbidden"})");
    EXPECT_EQ(translate().text, unauthorized);
}

// Translations.

TEST_F(Hosted, usesTheAddressOfTheSettingWithoutBlanksAndSlashes)
{
    registered();
    transport.answer(200, translation);
    EXPECT_EQ(translate(QStringLiteral("  https://own.example/ \n")).value,
              QStringLiteral("Hallo"));
    transport.answer(200, translation);
    EXPECT_EQ(translate(QStringLiteral("/")).value, QStringLiteral("Hallo"));
    EXPECT_EQ(transport.requests().front().url.toString(),
              QStringLiteral("https://own.example/v1/translate"));
    EXPECT_EQ(transport.requests().back().url.toString(),
              QStringLiteral("https://api.zelvane.org/v1/translate"));
}

TEST_F(Hosted, asksNobodyUnderAnAddressThatIsNone)
{
    const QString address = QStringLiteral("not an address");
    EXPECT_EQ(translate(address).text, QStringLiteral("Invalid Cloudflare Worker URL."));
    EXPECT_EQ(outcomeOf(service.syncConfig(address, {})).code, Code::invalidURL);
    EXPECT_EQ(outcomeOf(service.refreshQuota(address, {})).code, Code::invalidURL);
    EXPECT_EQ(outcomeOf(service.loadConfig(address, {})).code, Code::invalidURL);
    EXPECT_THAT(sent(), IsEmpty());
    EXPECT_THAT(install.defaults.keys(), IsEmpty());
}

TEST_F(Hosted, failsOnABlankTranslationAndStoresNoQuotaWithIt)
{
    registered();
    transport.answer(200, R"({"text":" \n","quota":)" + quotaJson + "}");
    EXPECT_EQ(translate().text, QStringLiteral("Cloudflare returned an empty translation."));
    EXPECT_EQ(service.cachedQuota(), std::nullopt);
    EXPECT_EQ(install.defaults.value(quotaKey), std::nullopt);
}

TEST_F(Hosted, failsOnWhatIsNotJsonAsTheParserDoes)
{
    registered();
    transport.answer(200, "<html>Please log in</html>");
    EXPECT_EQ(translate().text, QStringLiteral("The answer is not JSON: illegal value at byte 1."));
}

TEST_F(Hosted, neverShowsTheTokenThatAnAnswerQuotes)
{
    registered();
    transport.answer(500, "bad token-0");
    EXPECT_EQ(translate().text, QStringLiteral("Cloudflare error 500: bad ***"));
}

// The quota.

TEST_F(Hosted, keepsTheQuotaThatComesWithATranslation)
{
    registered();
    int changes = 0;
    QObject::connect(&service, &HostedService::cloudflareQuotaDidChange, &service,
                     [&] { ++changes; });
    transport.answer(200, R"({"text":"Hallo","quota":)" + quotaJson + "}");
    EXPECT_EQ(translate().value, QStringLiteral("Hallo"));
    EXPECT_EQ(changes, 0); // in a later turn
    QCoreApplication::sendPostedEvents();
    EXPECT_EQ(changes, 1);
    EXPECT_EQ(service.cachedQuota(), quota);
    EXPECT_EQ(install.defaults.data(quotaKey),
              QByteArray(R"({"dayBucket":"2026-01-02","dayLimit":200,"dayRemaining":199,)"
                         R"("dayUsed":1,"minuteLimit":20,"minuteRemaining":18,"minuteUsed":2})"));
}

TEST_F(Hosted, keepsTheLastQuotaWhenAnAnswerHasNone)
{
    registered();
    transport.answer(200, R"({"text":"Hallo","quota":)" + quotaJson + "}");
    transport.answer(200, R"({"text":"Hallo","quota":{"dayUsed":9}})");
    transport.answer(200, translation);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(translate().value, QStringLiteral("Hallo"));
    }
    EXPECT_EQ(service.cachedQuota(), quota);
}

TEST_F(Hosted, asksForTheQuota)
{
    registered();
    int changes = 0;
    QObject::connect(&service, &HostedService::cloudflareQuotaDidChange, &service,
                     [&] { ++changes; });
    transport.answer(200, "{\"quota\":" + quotaJson + "}");
    transport.answer(200, "{}");
    transport.answer(200, "no JSON");
    EXPECT_EQ(outcomeOf(service.refreshQuota(worker, {})).value.value(), quota);
    EXPECT_EQ(outcomeOf(service.refreshQuota(worker, {})).value.value(), std::nullopt);
    EXPECT_EQ(outcomeOf(service.refreshQuota(worker, {})).value.value(), std::nullopt);
    EXPECT_EQ(service.cachedQuota(), quota);
    QCoreApplication::sendPostedEvents();
    EXPECT_EQ(changes, 1);
    EXPECT_THAT(sent(), ::testing::Each(QStringLiteral("GET /v1/quota token-0 ID-0")));
    EXPECT_EQ(transport.requests().front().url.query(), QStringLiteral("installId=ID-0"));
}

TEST_F(Hosted, takesADamagedStoredQuotaForNone)
{
    install.defaults.setValue(quotaKey, QByteArray("garbage"));
    EXPECT_EQ(service.cachedQuota(), std::nullopt);
}

// The configuration.

const ZelvaneClientConfig given{QStringLiteral("m-2"), 7, QStringLiteral("mistral")};
const QByteArray givenJson =
    R"({"config":{"version":7,"model":"m-2","provider":"mistral"},"env":"dev"})";

TEST_F(Hosted, beginsWithTheBuiltInConfiguration)
{
    EXPECT_EQ(service.currentConfig().model, QStringLiteral("gemini-3.1-flash-lite"));
    EXPECT_EQ(service.currentConfig().version, 0);
    EXPECT_EQ(service.currentConfig().provider, QStringLiteral("gemini"));
}

TEST_F(Hosted, syncsItsConfiguration)
{
    registered();
    transport.answer(200, givenJson);
    transport.answer(200, givenJson);
    const auto first = outcomeOf(service.syncConfig(worker, {})).value.value();
    EXPECT_EQ(first.outcome, Outcome::updated);
    EXPECT_EQ(first.bootstrap.config, given);
    EXPECT_EQ(first.bootstrap.environment, QStringLiteral("dev"));
    EXPECT_EQ(service.currentConfig(), given);
    EXPECT_TRUE(install.defaults.data(configKey));
    const auto second = outcomeOf(service.syncConfig(worker, {})).value.value();
    EXPECT_EQ(second.outcome, Outcome::unchanged);
    EXPECT_EQ(second.bootstrap.config, given);
    EXPECT_THAT(sent(), ::testing::Each(QStringLiteral("GET /v1/bootstrap token-0 ID-0")));
}

TEST_F(Hosted, keepsItsConfigurationWhenASyncFails)
{
    registered();
    transport.answer(200, givenJson);
    std::ignore = outcomeOf(service.syncConfig(worker, {}));
    transport.answer(200, "{}");
    EXPECT_EQ(outcomeOf(service.syncConfig(worker, {})).code, Code::badResponse);
    transport.answer(200, "<html>");
    EXPECT_TRUE(outcomeOf(service.syncConfig(worker, {})).json);
    transport.answer(500, "down");
    EXPECT_EQ(outcomeOf(service.syncConfig(worker, {})).text,
              QStringLiteral("Cloudflare error 500: down"));
    EXPECT_EQ(service.currentConfig(), given);
}

TEST_F(Hosted, loadsTheCachedConfigurationWithoutAskingAnybody)
{
    install.defaults.setValue(configKey,
                              QByteArray(R"({"version":7,"model":"m-2","provider":"mistral"})"));
    EXPECT_EQ(load().value, given);
    EXPECT_EQ(service.currentConfig(), given);
    EXPECT_THAT(sent(), IsEmpty());
}

TEST_F(Hosted, asksForTheConfigurationIfNoneIsCached)
{
    registered();
    EXPECT_EQ(service.currentConfig().version, 0); // what is built in counts for none
    transport.answer(200, givenJson);
    EXPECT_EQ(load().value, given);
    EXPECT_EQ(load().value, given);
    EXPECT_THAT(sent(), ElementsAre(QStringLiteral("GET /v1/bootstrap token-0 ID-0")));
}

TEST_F(Hosted, hasNoConfigurationToLoadWhileTheServiceIsOutOfReach)
{
    const QString missing = QStringLiteral(
        "Cloudflare config is not loaded yet. Restart the app or refresh in Settings.");
    transport.fail(TransportError(TransportError::Kind::connection, QStringLiteral("offline")));
    EXPECT_EQ(load().text, missing);
    registered();
    transport.answer(200, "<html>Please log in</html>");
    EXPECT_EQ(load().text, missing);
}

TEST_F(Hosted, saysWhyTheServiceItselfGivesNoConfiguration)
{
    registered();
    transport.answer(403, R"({"error":"install_banned","reason":"spam"})");
    EXPECT_EQ(load().text, QStringLiteral("This install is blocked: spam"));
    transport.answer(429, "");
    EXPECT_EQ(load().text, QStringLiteral("Too many requests. Try again in 1 minute(s)."));
}

TEST_F(Hosted, asksOnceForAllWhoNeedTheConfiguration)
{
    registered();
    transport.answer(200, givenJson);
    auto first = service.loadConfig(worker, {});
    auto second = service.loadConfig(worker, {});
    EXPECT_EQ(outcomeOf(std::move(first)).value, given);
    EXPECT_EQ(outcomeOf(std::move(second)).value, given);
    EXPECT_EQ(sent().size(), 1);
}

// The rest.

TEST_F(Hosted, tellsItsInstallId)
{
    const QString id = outcomeOf(service.installId({})).value.value();
    EXPECT_EQ(id.size(), 36);
    EXPECT_EQ(install.id(), id);
    answerRegistration("token-1");
    transport.answer(200, translation);
    EXPECT_TRUE(translate().value);
    EXPECT_EQ(outcomeOf(service.installId({})).value, id);
}

TEST_F(Hosted, sendsNothingForACallThatIsAlreadyCancelled)
{
    registered();
    std::stop_source stop;
    stop.request_stop();
    EXPECT_TRUE(
        outcomeOf(service.translateHosted(hostedRequest(), worker, stop.get_token())).cancelled);
    EXPECT_TRUE(outcomeOf(service.loadConfig(worker, stop.get_token())).cancelled);
    EXPECT_THAT(sent(), IsEmpty());
}

} // namespace
} // namespace zelvane::test
