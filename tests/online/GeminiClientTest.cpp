#include "online/GeminiClient.h"

#include "online/EngineFixture.h"

#include <gmock/gmock.h>

namespace zelvane::test {
namespace {

using Code = TranslationError::Code;

constexpr char goodAnswer[] = R"({"candidates":[{"content":{"parts":[{"text":"Hallo"}]}}]})";

class Gemini : public ProviderFixture
{
protected:
    CallOutcome<QString> translate(const TranslationRequest& request)
    {
        return outcomeOf(client.translate(request, {}));
    }
    CallOutcome<QString> translate() { return translate(requestFor(AIProvider::gemini)); }

    GeminiClient client{transport, defaults};
};

// Requests

TEST_F(Gemini, sendsTextAndPromptToTheModelWithTheKeyInTheQuery)
{
    server.enqueue(Answer::json(200, goodAnswer));
    EXPECT_EQ(translate().value, QStringLiteral("Hallo"));
    EXPECT_EQ(received().requestLine,
              "POST /v1beta/models/gemini-2.0-flash:generateContent?key=key-1234567890 HTTP/1.1");
    EXPECT_EQ(received().header("Content-Type"), "application/json");
    EXPECT_TRUE(received().header("Authorization").isNull());
    EXPECT_EQ(received().body, R"({"contents":[{"parts":[{"text":"Hello"}],"role":"user"}],)"
                               R"("generationConfig":{"temperature":0.2},)"
                               R"("system_instruction":{"parts":[{"text":"Translate."}]}})");
    for (const auto& [name, value] : received().headers) {
        EXPECT_FALSE(value.contains("key-1234567890")) << name.toStdString();
    }
}

struct EncodedModel
{
    const char* model;
    const char* inPath;
};

class ModelInThePath : public Gemini, public ::testing::WithParamInterface<EncodedModel>
{
};

TEST_P(ModelInThePath, isPercentEncoded)
{
    server.enqueue(Answer::json(200, goodAnswer));
    TranslationRequest request = requestFor(AIProvider::gemini);
    request.model = QString::fromUtf8(GetParam().model);
    EXPECT_EQ(translate(request).value, QStringLiteral("Hallo"));
    EXPECT_EQ(received().target(), "/v1beta/models/" + QByteArray(GetParam().inPath) +
                                       ":generateContent?key=key-1234567890");
}

INSTANTIATE_TEST_SUITE_P(
    Gemini, ModelInThePath,
    ::testing::Values(EncodedModel{"my model", "my%20model"},
                      EncodedModel{"tuned/a-b_c.d~e", "tuned/a-b_c.d~e"},
                      EncodedModel{"!$&'()*+,:=@", "!$&'()*+,:=@"},
                      EncodedModel{"a?key=x#y;z", "a%3Fkey=x%23y%3Bz"},
                      EncodedModel{"50%", "50%25"}, EncodedModel{"%20", "%2520"},
                      EncodedModel{"[a]{b}|\\^`\"<>", "%5Ba%5D%7Bb%7D%7C%5C%5E%60%22%3C%3E"},
                      EncodedModel{"größe", "gr%C3%B6%C3%9Fe"}, EncodedModel{"a\nb", "a%0Ab"},
                      EncodedModel{"", ""}));

TEST_F(Gemini, aModelWithHalfASurrogatePairIsSentAsUtf8)
{
    EXPECT_EQ(geminiPath(QStringLiteral("a") + QChar(0xd800), QStringLiteral("k")),
              QStringLiteral("/v1beta/models/a%EF%BF%BD:generateContent?key=k"));
}

TEST_F(Gemini, theKeyIsSentAsItStands)
{
    server.enqueue(Answer::json(200, goodAnswer));
    TranslationRequest request = requestFor(AIProvider::gemini);
    request.apiKey = QStringLiteral("AIza_Sy-1.2~3+4/5=");
    EXPECT_EQ(translate(request).value, QStringLiteral("Hallo"));
    EXPECT_TRUE(received().target().endsWith("?key=AIza_Sy-1.2~3+4/5="));
}

TEST_F(Gemini, aKeyThatMakesNoAddressIsAnInvalidUrl)
{
    for (const char* key : {"two words", "line\nbreak", "quote\"", "50%", "<key>"}) {
        TranslationRequest request = requestFor(AIProvider::gemini);
        request.apiKey = QString::fromLatin1(key);
        EXPECT_EQ(translate(request).code, Code::invalidURL) << key;
    }
    EXPECT_TRUE(server.requests().empty());
}

TEST_F(Gemini, anUnusableEndpointIsAnInvalidUrl)
{
    defaults.setValue(QStringLiteral("zv.endpoint.Gemini"), QStringLiteral("http://192.168.0.2"));
    EXPECT_EQ(translate().code, Code::invalidURL);
}

TEST_F(Gemini, sendsAnyText)
{
    server.enqueue(Answer::json(200, goodAnswer));
    TranslationRequest request = requestFor(AIProvider::gemini);
    request.text = QStringLiteral("\"a\" \\ \n\tü 👨‍👩‍👧") + QChar(0xd800);
    request.systemPrompt = QStringLiteral("ß");
    EXPECT_EQ(translate(request).value, QStringLiteral("Hallo"));
    EXPECT_EQ(received().body,
              R"({"contents":[{"parts":[{"text":"\"a\" \\ \n\tü 👨‍👩‍👧�"}],)"
              R"("role":"user"}],"generationConfig":{"temperature":0.2},)"
              R"("system_instruction":{"parts":[{"text":"ß"}]}})");
}

// Answers

class NoGeminiAnswer : public ::testing::TestWithParam<BadAnswer>
{
};

TEST_P(NoGeminiAnswer, fails)
{
    expectRefusal(GetParam(), geminiResponseText);
}

const auto nameOfAnswer = [](const auto& info) { return info.param.name; };

INSTANTIATE_TEST_SUITE_P(Anybody, NoGeminiAnswer, ::testing::ValuesIn(nobodysAnswers),
                         nameOfAnswer);

INSTANTIATE_TEST_SUITE_P(
    Gemini, NoGeminiAnswer,
    ::testing::Values(
        BadAnswer{"noCandidates", R"({"candidates":[]})", nullptr},
        BadAnswer{"candidatesNull", R"({"candidates":null})", nullptr},
        BadAnswer{"candidatesObject", R"({"candidates":{"content":{"parts":[{"text":"x"}]}}})",
                  nullptr},
        BadAnswer{"candidateText", R"({"candidates":["x"]})", nullptr},
        BadAnswer{"noContent", R"({"candidates":[{"finishReason":"SAFETY"}]})", nullptr},
        BadAnswer{"contentText", R"({"candidates":[{"content":"x"}]})", nullptr},
        BadAnswer{"noParts",
                  R"({"candidates":[{"content":{"role":"model"},"finishReason":"MAX_TOKENS"}]})",
                  nullptr},
        BadAnswer{"partsEmpty", R"({"candidates":[{"content":{"parts":[]}}]})", nullptr},
        BadAnswer{"partsObject", R"({"candidates":[{"content":{"parts":{"text":"x"}}}]})", nullptr},
        BadAnswer{"partText", R"({"candidates":[{"content":{"parts":["x"]}}]})", nullptr},
        BadAnswer{"noText", R"({"candidates":[{"content":{"parts":[{"inlineData":{}}]}}]})",
                  nullptr},
        BadAnswer{"textNull", R"({"candidates":[{"content":{"parts":[{"text":null}]}}]})", nullptr},
        BadAnswer{"textNumber", R"({"candidates":[{"content":{"parts":[{"text":1}]}}]})", nullptr},
        BadAnswer{"secondCandidateOnly",
                  R"({"candidates":[{},{"content":{"parts":[{"text":"x"}]}}]})", nullptr},
        BadAnswer{"secondPartOnly", R"({"candidates":[{"content":{"parts":[{},{"text":"x"}]}}]})",
                  nullptr},
        BadAnswer{"blockedPrompt", R"({"promptFeedback":{"blockReason":"SAFETY"}})", nullptr}),
    nameOfAnswer);

TEST_F(Gemini, readsADocumentedAnswer)
{
    server.enqueue(Answer::json(200, R"({
  "candidates": [
    {
      "content": { "parts": [ { "text": "Guten Morgen\n" } ], "role": "model" },
      "finishReason": "STOP",
      "avgLogprobs": -0.0024,
      "safetyRatings": [ { "category": "HARM_CATEGORY_HATE_SPEECH", "probability": "NEGLIGIBLE" } ]
    }
  ],
  "usageMetadata": {
    "promptTokenCount": 41, "candidatesTokenCount": 3, "totalTokenCount": 44
  },
  "modelVersion": "gemini-2.0-flash"
})"));
    EXPECT_EQ(translate().value, QStringLiteral("Guten Morgen"));
}

TEST(GeminiAnswer, comesBackTrimmed)
{
    EXPECT_EQ(geminiResponseText(
                  R"({"candidates":[{"content":{"parts":[{"text":" \n\u00a0Guten Tag \r\n"}]}}]})"),
              QStringLiteral("Guten Tag"));
}

TEST(GeminiAnswer, mayBeEmpty)
{
    EXPECT_EQ(geminiResponseText(R"({"candidates":[{"content":{"parts":[{"text":" \n"}]}}]})"),
              QString());
}

TEST(GeminiAnswer, isTheFirstPartOfTheFirstCandidateOnly)
{
    EXPECT_EQ(geminiResponseText(R"({"candidates":[{"content":{"parts":[{"text":"a"},)"
                                 R"({"text":"b"}]}},{"content":{"parts":[{"text":"c"}]}}]})"),
              QStringLiteral("a"));
}

TEST_F(Gemini, aBlockedAnswerIsABadResponse)
{
    server.enqueue(Answer::json(
        200, R"({"candidates":[{"finishReason":"SAFETY","index":0,"safetyRatings":[)"
             R"({"category":"HARM_CATEGORY_DANGEROUS_CONTENT","probability":"HIGH"}]}]})"));
    const auto outcome = translate();
    EXPECT_EQ(outcome.code, Code::badResponse);
    EXPECT_EQ(outcome.text, QStringLiteral("Unexpected response from the AI provider."));
}

// Documented errors

TEST_F(Gemini, tellsThatTheKeyIsWrong)
{
    server.enqueue(
        Answer::json(400, R"({"error":{"code":400,"message":"API key not valid. Please pass a )"
                          R"(valid API key.","status":"INVALID_ARGUMENT"}})"));
    const auto outcome = translate();
    EXPECT_EQ(outcome.code, Code::http);
    EXPECT_EQ(outcome.text,
              QStringLiteral(R"(API error 400: {"error":{"code":400,"message":"API key not valid. )"
                             R"(Please pass a valid API key.","status":"INVALID_ARGUMENT"}})"));
    EXPECT_EQ(server.requests().size(), 1);
}

TEST_F(Gemini, doesNotRepeatWithoutAParameterThatIsRefused)
{
    server.enqueue(Answer::json(400, "temperature"));
    EXPECT_EQ(translate().text, QStringLiteral("API error 400: temperature"));
    EXPECT_EQ(server.requests().size(), 1);
}

TEST_F(Gemini, tellsThatTheRateIsTooHigh)
{
    server.enqueue(Answer::json(429, R"({"error":{"code":429,"status":"RESOURCE_EXHAUSTED"}})"));
    EXPECT_EQ(
        translate().text,
        QStringLiteral(R"(API error 429: {"error":{"code":429,"status":"RESOURCE_EXHAUSTED"}})"));
}

TEST_F(Gemini, tellsThatTheModelIsOverloaded)
{
    server.enqueue(Answer::json(503, R"({"error":{"message":"The model is overloaded."}})"));
    EXPECT_EQ(translate().text,
              QStringLiteral(R"(API error 503: {"error":{"message":"The model is overloaded."}})"));
}

// The key

TEST_F(Gemini, neverShowsTheKeyThatAComplaintQuotes)
{
    server.enqueue(Answer::json(404, "no /models/x?key=key-1234567890 here, key-1234567890"));
    EXPECT_EQ(translate().text, QStringLiteral("API error 404: no /models/x?key=*** here, ***"));
}

TEST_F(Gemini, neverShowsTheKeyAsItStandsInAnAddress)
{
    server.enqueue(Answer::json(404, "no ?key=abc%2Bdef%2F12%3D"));
    TranslationRequest request = requestFor(AIProvider::gemini);
    request.apiKey = QStringLiteral("abc+def/12=");
    EXPECT_EQ(translate(request).text, QStringLiteral("API error 404: no ?key=***"));
}

TEST_F(Gemini, showsNoKeyWhenTheServerCantBeReached)
{
    {
        const LoopbackHttpServer closedSoon;
        defaults.setValue(QStringLiteral("zv.endpoint.Gemini"), closedSoon.url().toString());
    }
    EXPECT_EQ(translate().text, QStringLiteral("127.0.0.1 refuses the connection."));
}

} // namespace
} // namespace zelvane::test
