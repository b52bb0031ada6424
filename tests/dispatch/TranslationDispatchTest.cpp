#include "pipeline/TranslationDispatch.h"

#include "online/AnthropicClient.h"
#include "online/DeepLClient.h"
#include "online/GeminiClient.h"
#include "pipeline/TranslationError.h"
#include "support/Await.h"
#include "support/FakeHttpTransport.h"
#include "support/FakeSecretBackend.h"
#include "support/VirtualClock.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>

namespace zelvane::test {
namespace {

QByteArray chatAnswer(const QByteArray& content)
{
    return R"({"choices":[{"message":{"content":")" + content + R"("}}]})";
}

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Code = TranslationError::Code;

class FakeEngine final : public TranslationEngine
{
public:
    [[nodiscard]] QCoro::Task<QString> translate(TranslationRequest request,
                                                 std::stop_token) override
    {
        requests << request;
        if (failAt == requests.size()) {
            throw TranslationError(Code::offlineEngineBusy);
        }
        co_return QStringLiteral("<%1>").arg(request.text);
    }

    QList<TranslationRequest> requests;
    qsizetype failAt = 0;
};

class FakeHosted final : public HostedEngine
{
public:
    [[nodiscard]] ZelvaneClientConfig currentConfig() const override { return current; }
    [[nodiscard]] QCoro::Task<ZelvaneClientConfig> loadConfig(QString workerUrl,
                                                              std::stop_token) override
    {
        workerUrls << workerUrl;
        if (failure) {
            std::rethrow_exception(failure);
        }
        co_return loaded;
    }
    [[nodiscard]] QCoro::Task<QString> translateHosted(TranslationRequest request,
                                                       QString workerUrl, std::stop_token) override
    {
        requests << request;
        workerUrls << workerUrl;
        co_return QStringLiteral("hosted");
    }

    ZelvaneClientConfig current;
    ZelvaneClientConfig loaded;
    std::exception_ptr failure;
    QList<TranslationRequest> requests;
    QStringList workerUrls;
};

class FakeGlossary final : public GlossaryLookup
{
public:
    [[nodiscard]] QCoro::Task<std::vector<std::optional<GlossaryMatch>>>
    matches(QStringList lines, QString source, QString target, std::stop_token stop) override
    {
        if (stop.stop_requested()) {
            throw CancellationError();
        }
        asked = lines;
        languages = {source, target};
        std::vector<std::optional<GlossaryMatch>> found;
        for (const QString& line : std::as_const(lines)) {
            found.push_back(known.contains(line) ? std::optional(known.value(line)) : std::nullopt);
        }
        found.resize(std::min(found.size(), longestAnswer));
        co_return found;
    }

    std::size_t longestAnswer = 1000;
    QMap<QString, GlossaryMatch> known;
    QStringList asked;
    QStringList languages;
};

class Dispatch : public ::testing::Test
{
protected:
    Dispatch()
    {
        trace.begin({});
        settings.setApiKey(QStringLiteral(" key-1 \n"));
    }

    void use(AIProvider provider)
    {
        settings.setProvider(provider);
        QCoreApplication::sendPostedEvents();
        settings.setApiKey(QStringLiteral(" key-1 \n"));
    }

    [[nodiscard]] TranslationRequest request(const QString& text = QStringLiteral("hello"))
    {
        return dispatch.makeTranslationRequest(text, QStringLiteral("Any Language"),
                                               QStringLiteral("German"), QStringLiteral("prompt"));
    }

    QString run(const QString& text = QStringLiteral("hello"))
    {
        return await(dispatch.runRequest(request(text), {}));
    }

    template <typename Action>
    static std::optional<Code> codeOf(Action action)
    {
        try {
            action();
        } catch (const TranslationError& error) {
            return error.code();
        }
        return std::nullopt;
    }

    VirtualClock clock;
    OverlayUserDefaults defaults;
    FakeSecretBackend secretBackend;
    SecretStore secrets{defaults, secretBackend};
    AppSettings settings{defaults, secrets, QStringLiteral("English (US)")};
    TranslationTrace trace{clock};
    FakeHttpTransport transport;
    ChatCompletionsClient chat{transport, trace};
    FakeHosted hosted;
    FakeEngine gemini;
    FakeEngine claude;
    FakeEngine deepL;
    FakeEngine smart;
    FakeEngine balanced;
    FakeEngine fast;
    FakeGlossary glossary;
    TranslationDispatch dispatch{settings,
                                 defaults,
                                 trace,
                                 {&chat,
                                  &hosted,
                                  {{AIProvider::gemini, &gemini},
                                   {AIProvider::claude, &claude},
                                   {AIProvider::deepL, &deepL},
                                   {AIProvider::smartOffline, &smart},
                                   {AIProvider::balancedOffline, &balanced},
                                   {AIProvider::fastOffline, &fast}},
                                  &glossary}};
};

TEST_F(Dispatch, aBlankTextFailsForEveryProviderBeforeAMissingKey)
{
    for (const AIProvider provider : allProviders) {
        use(provider);
        settings.setApiKey(QString());
        EXPECT_EQ(codeOf([&] { std::ignore = request(QStringLiteral(" \n\t ")); }),
                  Code::emptyText);
    }
}

TEST_F(Dispatch, aKeyProviderWithoutAKeyFailsBeforeAnyNetworkUse)
{
    for (const AIProvider provider :
         {AIProvider::chatGPT, AIProvider::gemini, AIProvider::claude, AIProvider::deepSeek,
          AIProvider::mistral, AIProvider::grok, AIProvider::deepL}) {
        use(provider);
        settings.setApiKey(QStringLiteral("  "));
        EXPECT_EQ(codeOf([&] { std::ignore = request(); }), Code::missingAPIKey);
    }
    EXPECT_TRUE(transport.requests().empty());
}

TEST_F(Dispatch, theRequestCarriesTheTrimmedTextAndKey)
{
    use(AIProvider::mistral);
    const TranslationRequest made = request(QStringLiteral("\n  hello\nworld \n"));
    EXPECT_EQ(made.text, QStringLiteral("hello\nworld"));
    EXPECT_EQ(made.apiKey, QStringLiteral("key-1"));
    EXPECT_EQ(made.provider, AIProvider::mistral);
    EXPECT_EQ(made.systemPrompt, QStringLiteral("prompt"));
    EXPECT_EQ(made.sourceLanguage, QStringLiteral("Any Language"));
    EXPECT_EQ(made.targetLanguage, QStringLiteral("German"));
    EXPECT_TRUE(made.glossaryHints.isEmpty());
}

TEST_F(Dispatch, theHostedServiceAndTheOfflineEnginesGetNoKey)
{
    for (const AIProvider provider : {AIProvider::zelvane, AIProvider::smartOffline}) {
        use(provider);
        EXPECT_EQ(request().apiKey, QString());
    }
}

TEST_F(Dispatch, theModelIsTheSettingsUntrimmedElseTheProvidersDefault)
{
    use(AIProvider::mistral);
    settings.setModel(QStringLiteral(" mistral-large "));
    EXPECT_EQ(request().model, QStringLiteral(" mistral-large "));
    settings.setModel(QString());
    EXPECT_EQ(request().model, QStringLiteral("mistral-small-latest"));
    use(AIProvider::deepL);
    settings.setModel(QString());
    EXPECT_EQ(request().model, QStringLiteral("deepl"));
}

TEST_F(Dispatch, theHostedModelIsTheConfigurationsElseTheDefault)
{
    use(AIProvider::zelvane);
    settings.setModel(QStringLiteral("ignored"));
    hosted.current = {QStringLiteral("hosted-model"), 3, {}};
    EXPECT_EQ(request().model, QStringLiteral("hosted-model"));
    hosted.current = {};
    EXPECT_EQ(request().model, QStringLiteral("gemini-3.1-flash-lite"));
}

struct ChatCase
{
    const char* name;
    AIProvider provider;
    const char* url;
};

class ChatEndpoint : public Dispatch, public ::testing::WithParamInterface<ChatCase>
{
};

TEST_P(ChatEndpoint, isTheProvidersOwn)
{
    use(GetParam().provider);
    transport.answer(200, chatAnswer("Hallo"));
    EXPECT_EQ(run(), QStringLiteral("Hallo"));
    ASSERT_EQ(transport.requests().size(), 1u);
    EXPECT_EQ(transport.requests().front().url.toString(), QString::fromLatin1(GetParam().url));
    EXPECT_TRUE(transport.requests().front().headers.contains(
        QPair<QByteArray, QByteArray>("Authorization", "Bearer key-1")));
}

INSTANTIATE_TEST_SUITE_P(
    Providers, ChatEndpoint,
    ::testing::Values(
        ChatCase{"chatGPT", AIProvider::chatGPT, "https://api.openai.com/v1/chat/completions"},
        ChatCase{"deepSeek", AIProvider::deepSeek, "https://api.deepseek.com/chat/completions"},
        ChatCase{"mistral", AIProvider::mistral, "https://api.mistral.ai/v1/chat/completions"},
        ChatCase{"grok", AIProvider::grok, "https://api.x.ai/v1/chat/completions"}),
    [](const auto& info) { return info.param.name; });

TEST_F(Dispatch, anUnusableEndpointIsAnInvalidUrl)
{
    use(AIProvider::mistral);
    defaults.setValue(QStringLiteral("zv.endpoint.Mistral"),
                      QStringLiteral("http://gateway.example.org"));
    EXPECT_EQ(codeOf([&] { run(); }), Code::invalidURL);
    EXPECT_TRUE(transport.requests().empty());
}

TEST_F(Dispatch, protocolsOfTheirOwnGoToTheirOwnEngines)
{
    const QList<std::pair<AIProvider, FakeEngine*>> engines{
        {AIProvider::gemini, &gemini},
        {AIProvider::claude, &claude},
        {AIProvider::deepL, &deepL},
        {AIProvider::smartOffline, &smart},
        {AIProvider::balancedOffline, &balanced},
        {AIProvider::fastOffline, &fast}};
    for (const auto& [provider, engine] : engines) {
        use(provider);
        EXPECT_EQ(run(), QStringLiteral("<hello>"));
        ASSERT_EQ(engine->requests.size(), 1);
        EXPECT_EQ(engine->requests.first().provider, provider);
    }
}

TEST_F(Dispatch, aMissingEngineSaysSo)
{
    TranslationDispatch bare(settings, defaults, trace, {});
    const auto failure = [&](AIProvider provider) {
        use(provider);
        try {
            await(bare.runRequest(request(), {}));
        } catch (const DescribedError& error) {
            return error.description();
        }
        return QString();
    };
    EXPECT_EQ(failure(AIProvider::gemini),
              QStringLiteral(
                  "Gemini is not part of this version of Zelvane Desk. Choose another engine."));
    EXPECT_EQ(failure(AIProvider::zelvane),
              QStringLiteral("Zelvane Best&Fast (Online) is not part of this version of Zelvane "
                             "Desk. Choose another engine."));
    EXPECT_EQ(failure(AIProvider::fastOffline),
              QStringLiteral("The selected offline engine is not installed. Open Settings → AI "
                             "Provider and tap Install."));
    EXPECT_EQ(failure(AIProvider::mistral),
              QStringLiteral(
                  "Mistral is not part of this version of Zelvane Desk. Choose another engine."));
}

TEST_F(Dispatch, theTraceGetsTheRequestsFacts)
{
    use(AIProvider::mistral);
    transport.answer(200, chatAnswer("Hallo"));
    run();
    const QString report = trace.report();
    EXPECT_TRUE(report.contains(QStringLiteral("\nmodel: mistral-small-latest\n"
                                               "provider: Mistral\n"
                                               "source: Any Language\n"
                                               "target: German\n")));
    EXPECT_TRUE(
        report.contains(QStringLiteral("  request ready · Mistral / mistral-small-latest\n")));
}

TEST_F(Dispatch, enginesWithAProtocolOfTheirOwnAddNothingToTheTrace)
{
    GeminiClient ownGemini(transport, defaults);
    AnthropicClient ownClaude(transport, defaults);
    DeepLClient ownDeepL(transport, defaults);
    TranslationDispatch own(settings, defaults, trace,
                            {&chat,
                             nullptr,
                             {{AIProvider::gemini, &ownGemini},
                              {AIProvider::claude, &ownClaude},
                              {AIProvider::deepL, &ownDeepL}},
                             nullptr});
    const QList<std::pair<AIProvider, QByteArray>> answers{
        {AIProvider::gemini, R"({"candidates":[{"content":{"parts":[{"text":"Hallo"}]}}]})"},
        {AIProvider::claude, R"({"content":[{"type":"text","text":"Hallo"}]})"},
        {AIProvider::deepL, R"({"translations":[{"text":"Hallo"}]})"}};
    for (const auto& [provider, answer] : answers) {
        use(provider);
        trace.begin({});
        transport.answer(200, answer);
        EXPECT_EQ(await(own.runRequest(request(), {})), QStringLiteral("Hallo"));
        const QString name = rawValue(provider) + QStringLiteral(" / ") + defaultModel(provider);
        EXPECT_EQ(trace.report().section(u'\n', 2, 10),
                  QStringLiteral("model: %1\n"
                                 "provider: %2\n"
                                 "source: Any Language\n"
                                 "target: German\n"
                                 "\n"
                                 "timeline (ms from start):\n"
                                 "       0  start\n"
                                 "       0  request ready · %3\n")
                      .arg(defaultModel(provider), rawValue(provider), name));
    }
}

TEST_F(Dispatch, theHostedServiceIsSentItsConfigurationsModelAndNoKey)
{
    use(AIProvider::zelvane);
    settings.setCloudflareWorkerURL(QStringLiteral("https://worker.example.org"));
    hosted.loaded = {QStringLiteral("hosted-2"), 7, {}};
    EXPECT_EQ(run(), QStringLiteral("hosted"));
    ASSERT_EQ(hosted.requests.size(), 1);
    EXPECT_EQ(hosted.requests.first().model, QStringLiteral("hosted-2"));
    EXPECT_EQ(hosted.requests.first().apiKey, QString());
    EXPECT_THAT(hosted.workerUrls, ElementsAre(QStringLiteral("https://worker.example.org"),
                                               QStringLiteral("https://worker.example.org")));
    EXPECT_TRUE(
        trace.report().contains(QStringLiteral("  cloudflare config · v7 · hosted-2 · proxy")));
    EXPECT_TRUE(trace.report().contains(QStringLiteral("\nmodel: hosted-2\n")));
}

TEST_F(Dispatch, theHostedServiceNeverSeesAKeyThatARequestBrings)
{
    use(AIProvider::zelvane);
    TranslationRequest withKey = request();
    withKey.apiKey = QStringLiteral("another-engines-key");
    await(dispatch.runRequest(withKey, {}));
    ASSERT_EQ(hosted.requests.size(), 1);
    EXPECT_EQ(hosted.requests.first().apiKey, QString());
}

TEST_F(Dispatch, anEmptyHostedModelLeavesTheRequests)
{
    use(AIProvider::zelvane);
    hosted.current = {QStringLiteral("cached"), 1, {}};
    hosted.loaded = {QString(), 2, {}};
    run();
    EXPECT_EQ(hosted.requests.first().model, QStringLiteral("cached"));
}

TEST_F(Dispatch, aFailedConfigurationEndsTheTranslation)
{
    use(AIProvider::zelvane);
    hosted.failure = std::make_exception_ptr(TranslationError(Code::badResponse));
    EXPECT_EQ(codeOf([&] { run(); }), Code::badResponse);
    EXPECT_TRUE(hosted.requests.isEmpty());
}

TEST_F(Dispatch, translateTextRendersThePairsPrompt)
{
    use(AIProvider::mistral);
    settings.setPromptTemplate(QStringLiteral("From {{source}} to {{target}}"));
    transport.answer(200, chatAnswer("Hallo"));
    LanguagePair pair;
    pair.source = QStringLiteral("Any Language");
    pair.target = QStringLiteral("German");
    EXPECT_EQ(await(dispatch.translateText(QStringLiteral(" hello "), pair, {})),
              QStringLiteral("Hallo"));
    const QJsonObject body = QJsonDocument::fromJson(transport.requests().front().body).object();
    EXPECT_EQ(body.value(QStringLiteral("messages"))[0][QStringLiteral("content")].toString(),
              QStringLiteral("From the automatically detected language to German"));
    EXPECT_EQ(body.value(QStringLiteral("messages"))[1][QStringLiteral("content")].toString(),
              QStringLiteral("hello"));
}

// The offline engines' dictionaries.

class OfflineDispatch : public Dispatch
{
protected:
    OfflineDispatch() { use(AIProvider::smartOffline); }

    void knowReplacement(const QString& line, const QString& prefix, const QString& replacement)
    {
        glossary.known.insert(line, {prefix, line, replacement, {}});
    }
    void knowHints(const QString& line, const QString& term, const QStringList& hints)
    {
        glossary.known.insert(line, {QString(), term, std::nullopt, hints});
    }

    [[nodiscard]] QStringList sentTexts() const
    {
        QStringList texts;
        for (const TranslationRequest& sent : smart.requests) {
            texts << sent.text;
        }
        return texts;
    }
};

TEST_F(OfflineDispatch, onlyTheOfflineEnginesAskTheGlossary)
{
    use(AIProvider::mistral);
    transport.answer(200, chatAnswer("Hallo"));
    run();
    EXPECT_THAT(glossary.asked, IsEmpty());
}

TEST_F(OfflineDispatch, withoutMatchesTheWholeTextIsOneRequest)
{
    EXPECT_EQ(run(QStringLiteral("one\n\ntwo")), QStringLiteral("<one\n\ntwo>"));
    EXPECT_THAT(glossary.asked,
                ElementsAre(QStringLiteral("one"), QString(), QStringLiteral("two")));
    EXPECT_THAT(glossary.languages,
                ElementsAre(QStringLiteral("Any Language"), QStringLiteral("German")));
    EXPECT_THAT(sentTexts(), ElementsAre(QStringLiteral("one\n\ntwo")));
    EXPECT_TRUE(trace.report().contains(QStringLiteral("  glossary · no matches")));
}

TEST_F(OfflineDispatch, replacedLinesNeedNoEngine)
{
    knowReplacement(QStringLiteral("- cat"), QStringLiteral("- "), QStringLiteral("Katze"));
    knowReplacement(QStringLiteral("dog"), QString(), QStringLiteral("Hund"));
    EXPECT_EQ(run(QStringLiteral("- cat\ndog")), QStringLiteral("- Katze\nHund"));
    EXPECT_THAT(smart.requests, IsEmpty());
    EXPECT_TRUE(trace.report().contains(QStringLiteral("  glossary · 2 hits")));
}

TEST_F(OfflineDispatch, aBlankLineSplitsTheTextOnceThereIsAHit)
{
    knowHints(QStringLiteral("the cat sat"), QStringLiteral("cat"), {QStringLiteral("Katze")});
    EXPECT_EQ(run(QStringLiteral("the cat sat\n \t\nand slept")),
              QStringLiteral("<the cat sat>\n \t\n<and slept>"));
    ASSERT_EQ(smart.requests.size(), 2);
    EXPECT_EQ(smart.requests[0].glossaryHints,
              (QMap<QString, QStringList>{{QStringLiteral("cat"), {QStringLiteral("Katze")}}}));
    EXPECT_TRUE(smart.requests[1].glossaryHints.isEmpty());
}

TEST_F(OfflineDispatch, runsStopAtReplacedLinesAndKeepTheirOrder)
{
    knowReplacement(QStringLiteral("dog"), QString(), QStringLiteral("Hund"));
    EXPECT_EQ(run(QStringLiteral("a\nb\ndog\nc")), QStringLiteral("<a\nb>\nHund\n<c>"));
    EXPECT_THAT(sentTexts(), ElementsAre(QStringLiteral("a\nb"), QStringLiteral("c")));
}

TEST_F(OfflineDispatch, theLaterLinesHintsWinForOneTerm)
{
    knowHints(QStringLiteral("first"), QStringLiteral("bank"), {QStringLiteral("Ufer")});
    knowHints(QStringLiteral("second"), QStringLiteral("bank"), {QStringLiteral("Bank")});
    run(QStringLiteral("first\nsecond"));
    EXPECT_EQ(smart.requests.first().glossaryHints,
              (QMap<QString, QStringList>{{QStringLiteral("bank"), {QStringLiteral("Bank")}}}));
}

TEST_F(OfflineDispatch, aCarriageReturnIsNotABlankLine)
{
    knowReplacement(QStringLiteral("dog"), QString(), QStringLiteral("Hund"));
    EXPECT_EQ(run(QStringLiteral("dog\n\r\ndog")), QStringLiteral("Hund\n<\r>\nHund"));
}

TEST_F(OfflineDispatch, aFailedRunEndsTheTranslation)
{
    knowReplacement(QStringLiteral("dog"), QString(), QStringLiteral("Hund"));
    smart.failAt = 2;
    EXPECT_EQ(codeOf([&] { run(QStringLiteral("a\ndog\nb\ndog\nc")); }), Code::offlineEngineBusy);
    EXPECT_EQ(smart.requests.size(), 2);
}

TEST_F(OfflineDispatch, aStopEndsTheLookUpToo)
{
    knowReplacement(QStringLiteral("dog"), QString(), QStringLiteral("Hund"));
    std::stop_source stop;
    stop.request_stop();
    EXPECT_THROW(await(dispatch.runRequest(request(QStringLiteral("dog")), stop.get_token())),
                 CancellationError);
}

TEST_F(OfflineDispatch, linesThatTheGlossaryLeavesOutHaveNoMatch)
{
    knowReplacement(QStringLiteral("cat"), QString(), QStringLiteral("Katze"));
    glossary.longestAnswer = 1;
    EXPECT_EQ(run(QStringLiteral("cat\ndog")), QStringLiteral("Katze\n<dog>"));
}

TEST_F(OfflineDispatch, withoutAGlossaryThereAreNoMatches)
{
    TranslationDispatch plain(settings, defaults, trace,
                              {nullptr, nullptr, {{AIProvider::smartOffline, &smart}}, nullptr});
    EXPECT_EQ(await(plain.runRequest(request(QStringLiteral("a\nb")), {})),
              QStringLiteral("<a\nb>"));
}

} // namespace
} // namespace zelvane::test
