#include "online/RemoteModels.h"

#include "online/EngineFixture.h"
#include "support/FakeHttpTransport.h"

#include <gmock/gmock.h>

namespace zelvane::test {

/// For messages of tests.
void PrintTo(const RemoteModel& model, std::ostream* out)
{
    *out << model.apiID.toStdString() << " (" << model.label.toStdString() << ")";
}

namespace {

using namespace std::chrono_literals;
using ::testing::SizeIs;
using Code = TranslationError::Code;
using Kind = TransportError::Kind;
using Models = QList<RemoteModel>;

RemoteModel model(const char* id, const char* label)
{
    return {QString::fromUtf8(id), QString::fromUtf8(label)};
}

/// A listing of the form `{"data":[{"id":...},...]}`.
QByteArray listingOf(std::initializer_list<QByteArray> ids)
{
    QByteArray entries;
    for (const QByteArray& id : ids) {
        entries += (entries.isEmpty() ? "" : ",") + (R"({"id":")" + id + R"(","object":"model"})");
    }
    return R"({"object":"list","data":[)" + entries + "]}";
}

QStringList idsOf(const Models& models)
{
    QStringList ids;
    for (const RemoteModel& listed : models) {
        ids << listed.apiID;
    }
    return ids;
}

class FakeHosted final : public HostedEngine
{
public:
    [[nodiscard]] ZelvaneClientConfig currentConfig() const override
    {
        return {QStringLiteral("hosted-model"), 3, QString()};
    }
    [[nodiscard]] QCoro::Task<ZelvaneClientConfig> loadConfig(QString, std::stop_token) override
    {
        throw std::logic_error("nobody asked to load");
    }
    [[nodiscard]] QCoro::Task<QString> translateHosted(TranslationRequest, QString,
                                                       std::stop_token) override
    {
        throw std::logic_error("nobody asked to translate");
    }
};

class RemoteModelListing : public ProviderFixture
{
protected:
    CallOutcome<Models> fetch(AIProvider provider,
                              const QString& key = QStringLiteral("key-1234567890"),
                              std::stop_token stop = {})
    {
        return outcomeOf(models.fetchRemoteModels(provider, key, std::move(stop)));
    }

    FakeHosted hosted;
    RemoteModels models{transport, defaults, &hosted};
};

// Providers without a listing

TEST_F(RemoteModelListing, isEmptyForDeepLAndForEnginesOfThisMachine)
{
    for (const AIProvider provider : {AIProvider::deepL, AIProvider::smartOffline,
                                      AIProvider::balancedOffline, AIProvider::fastOffline}) {
        EXPECT_EQ(fetch(provider).value, Models());
        EXPECT_EQ(fetch(provider, QString()).value, Models());
    }
    EXPECT_EQ(server.acceptedConnections(), 0);
}

TEST_F(RemoteModelListing, isTheConfigurationsModelForTheHostedService)
{
    EXPECT_EQ(fetch(AIProvider::zelvane, QString()).value,
              Models{model("hosted-model", "hosted-model")});
    EXPECT_EQ(server.acceptedConnections(), 0);
}

TEST_F(RemoteModelListing, saysSoWhereThereIsNoHostedService)
{
    RemoteModels bare(transport, defaults, nullptr);
    try {
        await(bare.fetchRemoteModels(AIProvider::zelvane, QString(), {}));
        FAIL();
    } catch (const EngineUnavailableError& error) {
        EXPECT_EQ(error.description(),
                  QStringLiteral("Zelvane Best&Fast (Online) is not part of this version of "
                                 "Zelvane Desk. Choose another engine."));
    }
}

// Requests

struct Listing
{
    const char* name;
    AIProvider provider;
    const char* url;
    std::vector<std::pair<QByteArray, QByteArray>> headers;
    QByteArray answer;
    const char* model;
};

std::vector<Listing> listings()
{
    const std::pair<QByteArray, QByteArray> bearer("Authorization", "Bearer key-1234567890");
    return {
        {"chatGPT",
         AIProvider::chatGPT,
         "https://api.openai.com/v1/models",
         {bearer},
         listingOf({"gpt-5-nano"}),
         "gpt-5-nano"},
        {"deepSeek",
         AIProvider::deepSeek,
         "https://api.deepseek.com/models",
         {bearer},
         listingOf({"deepseek-chat"}),
         "deepseek-chat"},
        {"mistral",
         AIProvider::mistral,
         "https://api.mistral.ai/v1/models",
         {bearer},
         listingOf({"mistral-small-latest"}),
         "mistral-small-latest"},
        {"grok",
         AIProvider::grok,
         "https://api.x.ai/v1/models",
         {bearer},
         listingOf({"grok-2-latest"}),
         "grok-2-latest"},
        {"claude",
         AIProvider::claude,
         "https://api.anthropic.com/v1/models?limit=100",
         {{"x-api-key", "key-1234567890"}, {"anthropic-version", "2023-06-01"}},
         listingOf({"claude-sonnet-4-20250514"}),
         "claude-sonnet-4-20250514"},
        {"gemini",
         AIProvider::gemini,
         "https://generativelanguage.googleapis.com/v1beta/models?key=key-1234567890",
         {},
         R"({"models":[{"name":"models/gemini-2.0-flash",)"
         R"("supportedGenerationMethods":["generateContent"]}]})",
         "gemini-2.0-flash"},
    };
}

class ListingOf : public RemoteModelListing, public ::testing::WithParamInterface<Listing>
{
};

INSTANTIATE_TEST_SUITE_P(Providers, ListingOf, ::testing::ValuesIn(listings()),
                         [](const auto& info) { return info.param.name; });

TEST_P(ListingOf, isAskedForAtTheProvidersOwnAddress)
{
    FakeHttpTransport recorder;
    const OverlayUserDefaults publicHosts;
    RemoteModels own(recorder, publicHosts, nullptr);
    recorder.answer(200, GetParam().answer);
    const auto outcome = outcomeOf(
        own.fetchRemoteModels(GetParam().provider, QStringLiteral(" key-1234567890 \n"), {}));
    ASSERT_TRUE(outcome.value) << outcome.text.toStdString();
    EXPECT_EQ(idsOf(*outcome.value), QStringList{QString::fromLatin1(GetParam().model)});
    ASSERT_THAT(recorder.requests(), SizeIs(1));
    const HttpRequest& request = recorder.requests().front();
    EXPECT_EQ(request.method, "GET");
    EXPECT_EQ(request.url.toString(), QString::fromLatin1(GetParam().url));
    EXPECT_EQ(request.timeout, 30s);
    EXPECT_EQ(request.body, QByteArray());
    std::vector<std::pair<QByteArray, QByteArray>> headers;
    for (const auto& [name, value] : request.headers) {
        headers.emplace_back(name, value);
    }
    EXPECT_EQ(headers, GetParam().headers);
}

TEST_P(ListingOf, goesOverTheWireOnce)
{
    server.enqueue(Answer::json(200, GetParam().answer));
    const auto outcome = fetch(GetParam().provider);
    ASSERT_TRUE(outcome.value) << outcome.text.toStdString();
    EXPECT_EQ(idsOf(*outcome.value), QStringList{QString::fromLatin1(GetParam().model)});
    const QUrl url(QString::fromLatin1(GetParam().url));
    EXPECT_EQ(received().requestLine,
              "GET " + url.toEncoded(QUrl::RemoveScheme | QUrl::RemoveAuthority) + " HTTP/1.1");
    for (const auto& [name, value] : GetParam().headers) {
        EXPECT_EQ(received().header(name), value);
    }
    EXPECT_TRUE(received().header("Content-Type").isNull());
    EXPECT_EQ(received().body, QByteArray());
}

TEST_P(ListingOf, needsAKey)
{
    for (const char* key : {"", " \n\t"}) {
        const auto outcome = fetch(GetParam().provider, QString::fromLatin1(key));
        EXPECT_EQ(outcome.code, Code::missingAPIKey);
    }
    EXPECT_EQ(server.acceptedConnections(), 0);
}

TEST_P(ListingOf, failsWithTheProvidersWordsWhenTheKeyIsWrong)
{
    server.enqueue(Answer::json(401, R"({"error":"bad key key-1234567890"})"));
    const auto outcome = fetch(GetParam().provider);
    EXPECT_EQ(outcome.code, Code::http);
    EXPECT_EQ(outcome.text, QStringLiteral(R"(API error 401: {"error":"bad key ***"})"));
}

TEST_P(ListingOf, failsOnAPageOfHtmlAndOnHalfABody)
{
    server.enqueue(Answer().send(httpMessage(200, "<html></html>")));
    server.enqueue(Answer().send(httpMessage(200, GetParam().answer).chopped(5)).close());
    EXPECT_TRUE(fetch(GetParam().provider).json);
    EXPECT_EQ(fetch(GetParam().provider).transport, Kind::truncated);
}

TEST_P(ListingOf, failsAtAnUnusableEndpoint)
{
    defaults.setValue(QStringLiteral("zv.endpoint.") + rawValue(GetParam().provider),
                      QStringLiteral("http://gateway.example"));
    EXPECT_EQ(fetch(GetParam().provider).code, Code::invalidURL);
}

TEST_P(ListingOf, givesUpAfterHalfAMinuteOfSilence)
{
    server.enqueue(Answer().hold());
    std::optional<Kind> kind;
    [](QCoro::Task<Models> task, std::optional<Kind>* result) -> QCoro::Task<void> {
        try {
            co_await task;
        } catch (const TransportError& error) {
            *result = error.kind();
        }
    }(models.fetchRemoteModels(GetParam().provider, QStringLiteral("key"), {}), &kind);
    ASSERT_TRUE(waitUntil([&] { return server.heldAnswers() == 1; }));
    clock.advance(29'999ms);
    EXPECT_EQ(kind, std::nullopt);
    clock.advance(1ms);
    EXPECT_EQ(kind, Kind::timeout);
}

TEST_P(ListingOf, hangsUpWhenItIsCancelled)
{
    server.enqueue(Answer().hold());
    std::stop_source stop;
    auto running =
        models.fetchRemoteModels(GetParam().provider, QStringLiteral("key"), stop.get_token());
    ASSERT_TRUE(waitUntil([&] { return server.heldAnswers() == 1; }));
    stop.request_stop();
    EXPECT_TRUE(outcomeOf(std::move(running)).cancelled);
    EXPECT_TRUE(waitUntil([&] { return server.openConnections() == 0; }));
}

TEST_F(RemoteModelListing, encodesGeminisKeyForTheQuery)
{
    server.enqueue(Answer::json(200, R"({"models":[]})"));
    EXPECT_EQ(fetch(AIProvider::gemini, QStringLiteral("a b&c=d+e/f?g#h%i")).value, Models());
    EXPECT_EQ(received().target(), "/v1beta/models?key=a%20b%26c%3Dd%2Be%2Ff%3Fg%23h%25i");
}

TEST_F(RemoteModelListing, tellsAKeyToNoOtherHost)
{
    LoopbackHttpServer other;
    for (const int status : {301, 302, 303, 307, 308}) {
        server.enqueue(
            Answer().send(httpMessage(status, "", {{"Location", other.url().toEncoded()}})));
        EXPECT_EQ(fetch(AIProvider::gemini).text, QStringLiteral("API error %1: ").arg(status));
    }
    EXPECT_EQ(other.acceptedConnections(), 0);
}

// Answers

TEST(ListedModels, ofOpenAIAreItsChatModelsInOrder)
{
    const QByteArray body = listingOf({"gpt-4o",
                                       "chatgpt-4o-latest",
                                       "o1",
                                       "o3-mini",
                                       "o4-mini",
                                       "gpt-5-nano",
                                       "GPT-4.1",
                                       "gpt-3.5-turbo-instruct",
                                       "gpt-4o-realtime-preview",
                                       "gpt-4o-audio-preview",
                                       "gpt-4o-mini-tts",
                                       "whisper-1",
                                       "gpt-whisper",
                                       "gpt-image-1",
                                       "gpt-4o-transcribe",
                                       "gpt-4o-search-preview",
                                       "davinci-002",
                                       "text-embedding-3-small",
                                       "dall-e-3",
                                       "babbage-002",
                                       "o2",
                                       "my-gpt-4",
                                       "omni-moderation-latest",
                                       "gpt4",
                                       "gpt-4o-AUDIO"});
    EXPECT_EQ(
        listedModels(AIProvider::chatGPT, body),
        (Models{model("GPT-4.1", "GPT-4.1"), model("chatgpt-4o-latest", "chatgpt-4o-latest"),
                model("gpt-4o", "gpt-4o"), model("gpt-5-nano", "gpt-5-nano"), model("o1", "o1"),
                model("o3-mini", "o3-mini"), model("o4-mini", "o4-mini")}));
}

TEST(ListedModels, ofDeepSeekAreAll)
{
    EXPECT_EQ(idsOf(listedModels(AIProvider::deepSeek,
                                 listingOf({"deepseek-reasoner", "deepseek-chat", "embed-1"}))),
              (QStringList{QStringLiteral("deepseek-chat"), QStringLiteral("deepseek-reasoner"),
                           QStringLiteral("embed-1")}));
}

TEST(ListedModels, ofMistralAreThoseThatWriteText)
{
    EXPECT_EQ(
        idsOf(listedModels(AIProvider::mistral,
                           listingOf({"mistral-small-latest", "mistral-EMBED", "codestral-embed",
                                      "mistral-Moderation-latest", "ministral-3b"}))),
        (QStringList{QStringLiteral("ministral-3b"), QStringLiteral("mistral-small-latest")}));
}

TEST(ListedModels, ofXAIAreGroks)
{
    EXPECT_EQ(idsOf(listedModels(AIProvider::grok,
                                 listingOf({"grok-3", "aurora", "Grok-2-latest", "v1-grok"}))),
              (QStringList{QStringLiteral("Grok-2-latest"), QStringLiteral("grok-3"),
                           QStringLiteral("v1-grok")}));
}

TEST(ListedModels, skipEntriesWithoutAnIdentifier)
{
    const QByteArray body =
        R"({"data":[{"id":"b"},{"id":7},{"id":null},{"name":"c"},{},{"id":["d"]},{"id":"a"}]})";
    EXPECT_EQ(idsOf(listedModels(AIProvider::deepSeek, body)),
              (QStringList{QStringLiteral("a"), QStringLiteral("b")}));
    EXPECT_EQ(idsOf(listedModels(AIProvider::claude, body)),
              (QStringList{QStringLiteral("b"), QStringLiteral("a")}));
}

TEST(ListedModels, ofAnthropicKeepTheirOrderAndNames)
{
    EXPECT_EQ(listedModels(AIProvider::claude, R"({
  "data": [
    { "type": "model", "id": "claude-sonnet-4-20250514", "display_name": "Claude Sonnet 4",
      "created_at": "2025-05-14T00:00:00Z" },
    { "type": "model", "id": "claude-3-5-haiku-20241022", "display_name": "Claude Haiku 3.5" },
    { "type": "model", "id": "b-unnamed" },
    { "type": "model", "id": "a-misnamed", "display_name": 7 }
  ],
  "has_more": false, "first_id": "claude-sonnet-4-20250514", "last_id": "a-misnamed"
})"),
              (Models{model("claude-sonnet-4-20250514", "Claude Sonnet 4"),
                      model("claude-3-5-haiku-20241022", "Claude Haiku 3.5"),
                      model("b-unnamed", "b-unnamed"), model("a-misnamed", "a-misnamed")}));
}

TEST(ListedModels, ofGeminiAreThoseThatGenerateContent)
{
    EXPECT_EQ(
        listedModels(AIProvider::gemini, R"({"models":[
  { "name": "models/gemini-2.0-flash", "version": "2.0", "displayName": "Gemini 2.0 Flash",
    "inputTokenLimit": 1048576,
    "supportedGenerationMethods": ["generateContent", "countTokens"] },
  { "name": "models/gemma-3-27b-it", "displayName": "Gemma 3 27B",
    "supportedGenerationMethods": ["countTokens", "generateContent"] },
  { "name": "models/embedding-001", "displayName": "Embedding 001",
    "supportedGenerationMethods": ["generateContent"] },
  { "name": "models/gemini-embedding-001", "displayName": "Gemini Embedding 001",
    "supportedGenerationMethods": ["embedContent"] },
  { "name": "models/imagen-4.0-generate-001", "supportedGenerationMethods": ["predict"] },
  { "name": "GEMINI-bare", "displayName": 7, "supportedGenerationMethods": ["generateContent"] },
  { "name": "models/models/gemini-x", "supportedGenerationMethods": ["generateContent"] },
  { "name": "tunedModels/gemini-t", "supportedGenerationMethods": ["generateContent"] },
  { "name": "models/gemini-no-methods" },
  { "name": "models/gemini-text-methods", "supportedGenerationMethods": "generateContent" },
  { "name": "models/gemini-odd-methods", "supportedGenerationMethods": ["generateContent", 7] },
  { "name": 7, "supportedGenerationMethods": ["generateContent"] },
  { "id": "gemini-id", "supportedGenerationMethods": ["generateContent"] }
],"nextPageToken":"x"})"),
        (Models{model("GEMINI-bare", "GEMINI-bare"), model("gemini-2.0-flash", "Gemini 2.0 Flash"),
                model("gemma-3-27b-it", "Gemma 3 27B"), model("models/gemini-x", "models/gemini-x"),
                model("tunedModels/gemini-t", "tunedModels/gemini-t")}));
}

TEST(ListedModels, mayBeNone)
{
    EXPECT_EQ(listedModels(AIProvider::chatGPT, R"({"data":[]})"), Models());
    EXPECT_EQ(listedModels(AIProvider::gemini, R"({"models":[]})"), Models());
}

class NoListing : public ::testing::TestWithParam<BadAnswer>
{
};

TEST_P(NoListing, fails)
{
    for (const AIProvider provider :
         {AIProvider::chatGPT, AIProvider::claude, AIProvider::gemini}) {
        expectRefusal(GetParam(), [provider](const QByteArray& body) {
            std::ignore = listedModels(provider, body);
        });
    }
}

INSTANTIATE_TEST_SUITE_P(Anybody, NoListing, ::testing::ValuesIn(nobodysAnswers),
                         [](const auto& info) { return info.param.name; });

INSTANTIATE_TEST_SUITE_P(
    Listings, NoListing,
    ::testing::Values(BadAnswer{"null", R"({"data":null,"models":null})", nullptr},
                      BadAnswer{"object", R"({"data":{"id":"x"},"models":{"name":"x"}})", nullptr},
                      BadAnswer{"texts", R"({"data":["gpt-5"],"models":["gemini"]})", nullptr},
                      BadAnswer{"top", R"([{"id":"gpt-5"}])", nullptr}),
    [](const auto& info) { return info.param.name; });

TEST(ListedModels, areReadFromTheRightMember)
{
    EXPECT_THROW(std::ignore = listedModels(AIProvider::gemini, R"({"data":[]})"),
                 TranslationError);
    EXPECT_THROW(std::ignore = listedModels(AIProvider::grok, R"({"models":[]})"),
                 TranslationError);
}

} // namespace
} // namespace zelvane::test
