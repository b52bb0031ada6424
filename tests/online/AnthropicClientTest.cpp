#include "online/AnthropicClient.h"

#include "online/EngineFixture.h"

#include <gmock/gmock.h>

namespace zelvane::test {
namespace {

using Code = TranslationError::Code;

constexpr char goodAnswer[] = R"({"content":[{"type":"text","text":"Hallo"}]})";

class Anthropic : public ProviderFixture
{
protected:
    CallOutcome<QString> translate(const TranslationRequest& request)
    {
        return outcomeOf(client.translate(request, {}));
    }
    CallOutcome<QString> translate() { return translate(requestFor(AIProvider::claude)); }

    AnthropicClient client{transport, defaults};
};

// Requests

TEST_F(Anthropic, sendsTextPromptAndModelWithTheKeyInAHeader)
{
    server.enqueue(Answer::json(200, goodAnswer));
    EXPECT_EQ(translate().value, QStringLiteral("Hallo"));
    EXPECT_EQ(received().requestLine, "POST /v1/messages HTTP/1.1");
    EXPECT_EQ(received().header("x-api-key"), "key-1234567890");
    EXPECT_EQ(received().header("anthropic-version"), "2023-06-01");
    EXPECT_EQ(received().header("Content-Type"), "application/json");
    EXPECT_TRUE(received().header("Authorization").isNull());
    EXPECT_EQ(received().body, R"({"max_tokens":4096,"messages":[{"content":"Hello",)"
                               R"("role":"user"}],"model":"claude-sonnet-4-20250514",)"
                               R"("system":"Translate.","temperature":0.2})");
}

TEST_F(Anthropic, sendsAnyTextAndNoLessTokensForALongOne)
{
    server.enqueue(Answer::json(200, goodAnswer));
    TranslationRequest request = requestFor(AIProvider::claude);
    request.text = QStringLiteral("\"a\" \\ \n\tü 👨‍👩‍👧") + QChar(0xdc00);
    request.systemPrompt = QString(3, u'x') + QChar(0xd800);
    request.model = QStringLiteral(" my model ");
    EXPECT_EQ(translate(request).value, QStringLiteral("Hallo"));
    EXPECT_EQ(
        received().body,
        R"({"max_tokens":4096,"messages":[{"content":"\"a\" \\ \n\tü 👨‍👩‍👧�",)"
        R"("role":"user"}],"model":" my model ","system":"xxx�","temperature":0.2})");
}

TEST_F(Anthropic, refusesAKeyWithALineBreak)
{
    TranslationRequest request = requestFor(AIProvider::claude);
    request.apiKey = QStringLiteral("key\r\nX-Evil: 1");
    EXPECT_EQ(translate(request).text,
              QStringLiteral("The API key for 127.0.0.1 holds a line break."));
    EXPECT_TRUE(server.requests().empty());
}

TEST_F(Anthropic, anUnusableEndpointIsAnInvalidUrl)
{
    defaults.setValue(QStringLiteral("zv.endpoint.Claude"), QStringLiteral("gateway.example"));
    EXPECT_EQ(translate().code, Code::invalidURL);
}

// Answers

class NoClaudeAnswer : public ::testing::TestWithParam<BadAnswer>
{
};

TEST_P(NoClaudeAnswer, fails)
{
    expectRefusal(GetParam(), claudeResponseText);
}

const auto nameOfAnswer = [](const auto& info) { return info.param.name; };

INSTANTIATE_TEST_SUITE_P(Anybody, NoClaudeAnswer, ::testing::ValuesIn(nobodysAnswers),
                         nameOfAnswer);

INSTANTIATE_TEST_SUITE_P(
    Anthropic, NoClaudeAnswer,
    ::testing::Values(
        BadAnswer{"noBlocks", R"({"content":[]})", nullptr},
        BadAnswer{"contentNull", R"({"content":null})", nullptr},
        BadAnswer{"contentText", R"({"content":"Hallo"})", nullptr},
        BadAnswer{"contentObject", R"({"content":{"type":"text","text":"x"}})", nullptr},
        BadAnswer{"blockText", R"({"content":["x"]})", nullptr},
        BadAnswer{"otherBlockText", R"({"content":[{"type":"text","text":"x"},"y"]})", nullptr},
        BadAnswer{"otherType", R"({"content":[{"type":"tool_use","text":"x"}]})", nullptr},
        BadAnswer{"otherCase", R"({"content":[{"type":"Text","text":"x"}]})", nullptr},
        BadAnswer{"noType", R"({"content":[{"text":"x"}]})", nullptr},
        BadAnswer{"noText", R"({"content":[{"type":"text"}]})", nullptr},
        BadAnswer{"textNull", R"({"content":[{"type":"text","text":null}]})", nullptr},
        BadAnswer{"textArray", R"({"content":[{"type":"text","text":["x"]}]})", nullptr},
        BadAnswer{"empty", R"({"content":[{"type":"text","text":""}]})", nullptr},
        BadAnswer{"blank",
                  R"({"content":[{"type":"text","text":" \n"},)"
                  R"({"type":"text","text":"\t\u00a0"}]})",
                  nullptr}),
    nameOfAnswer);

TEST(ClaudeAnswer, isTheTextBehindAThinkingBlock)
{
    EXPECT_EQ(claudeResponseText(R"({"content":[{"type":"thinking","thinking":"Hm","text":"no"},)"
                                 R"({"type":"text","text":"Hallo"}]})"),
              QStringLiteral("Hallo"));
}

TEST(ClaudeAnswer, joinsTheTextBlocksWithNothingBetween)
{
    EXPECT_EQ(claudeResponseText(R"({"content":[{"type":"text","text":"Guten"},)"
                                 R"({"type":"text","text":" Mor"},{"type":"x"},)"
                                 R"({"type":"text","text":"gen"}]})"),
              QStringLiteral("Guten Morgen"));
}

TEST(ClaudeAnswer, skipsATextBlockWhoseTextIsNone)
{
    EXPECT_EQ(claudeResponseText(R"({"content":[{"type":"text","text":7},)"
                                 R"({"type":"text","text":"Hallo"}]})"),
              QStringLiteral("Hallo"));
}

TEST(ClaudeAnswer, comesBackTrimmedAtItsEndsOnly)
{
    EXPECT_EQ(claudeResponseText(R"({"content":[{"type":"text","text":"\n a \n"},)"
                                 R"({"type":"text","text":"\n b \n"}]})"),
              QStringLiteral("a \n\n b"));
}

TEST_F(Anthropic, readsADocumentedAnswer)
{
    server.enqueue(Answer::json(200, R"({
  "id": "msg_01XFDUDYJgAACzvnptvVoYEL",
  "type": "message",
  "role": "assistant",
  "model": "claude-sonnet-4-20250514",
  "content": [ { "type": "text", "text": "Guten Morgen" } ],
  "stop_reason": "end_turn",
  "stop_sequence": null,
  "usage": { "input_tokens": 41, "output_tokens": 6 }
})"));
    EXPECT_EQ(translate().value, QStringLiteral("Guten Morgen"));
}

TEST_F(Anthropic, takesAnAnswerThatWasCutAtTheTokenLimitForWhole)
{
    server.enqueue(Answer::json(200, R"({"content":[{"type":"text","text":"Guten Mor"}],)"
                                     R"("stop_reason":"max_tokens"})"));
    EXPECT_EQ(translate().value, QStringLiteral("Guten Mor"));
}

// Documented errors

struct Complaint
{
    const char* name;
    int status;
    const char* body;
};

class ClaudeComplaint : public Anthropic, public ::testing::WithParamInterface<Complaint>
{
};

TEST_P(ClaudeComplaint, isShownWithItsStatus)
{
    server.enqueue(
        Answer().send(httpMessage(GetParam().status, GetParam().body,
                                  {{"Content-Type", "application/json"}, {"retry-after", "7"}})));
    const auto outcome = translate();
    EXPECT_EQ(outcome.code, Code::http);
    EXPECT_EQ(outcome.text, QStringLiteral("API error %1: %2")
                                .arg(GetParam().status)
                                .arg(QString::fromUtf8(GetParam().body)));
    EXPECT_EQ(server.requests().size(), 1);
}

INSTANTIATE_TEST_SUITE_P(
    Anthropic, ClaudeComplaint,
    ::testing::Values(Complaint{"refusedParameter", 400,
                                R"({"type":"error","error":{"type":"invalid_request_error",)"
                                R"("message":"temperature: Extra inputs are not permitted"}})"},
                      Complaint{"wrongKey", 401,
                                R"({"type":"error","error":{"type":"authentication_error",)"
                                R"("message":"invalid x-api-key"}})"},
                      Complaint{"unknownModel", 404,
                                R"({"type":"error","error":{"type":"not_found_error",)"
                                R"("message":"model: claude-none"}})"},
                      Complaint{"tooLarge", 413,
                                R"({"type":"error","error":{"type":"request_too_large"}})"},
                      Complaint{"rateLimit", 429,
                                R"({"type":"error","error":{"type":"rate_limit_error",)"
                                R"("message":"This request would exceed your rate limit."}})"},
                      Complaint{"overloaded", 529,
                                R"({"type":"error","error":{"type":"overloaded_error",)"
                                R"("message":"Overloaded"}})"}),
    [](const auto& info) { return info.param.name; });

} // namespace
} // namespace zelvane::test
