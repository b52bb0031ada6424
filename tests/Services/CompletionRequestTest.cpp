#include "Services/CompletionRequest.h"

#include "http/JsonError.h"
#include "pipeline/TranslationError.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QJsonDocument>

namespace zelvane {
namespace {

using Code = TranslationError::Code;

ModelJob job(SmartOfflineVariant variant = SmartOfflineVariant::hyMT2_7b,
             const QStringList& lines = {QStringLiteral("Hello")})
{
    return {variant,   lines, QStringLiteral("English (US)"), QStringLiteral("German"),
            QString(), {}};
}

QJsonObject parsed(const char* json)
{
    return QJsonDocument::fromJson(json).object();
}

int maximalTokens(const QStringList& lines)
{
    return completionRequest(job(SmartOfflineVariant::hyMT2_7b, lines), Attempt::first)
        .value(u"max_tokens")
        .toInt();
}

TEST(CompletionRequestTest, AFirstAttemptTakesTheLikeliestWords)
{
    EXPECT_EQ(completionRequest(job(), Attempt::first), parsed(R"({
        "model": "hymt2-7b",
        "messages": [{"role": "user", "content": "Translate the following text into German. Note that you should only output the translated result without any additional explanation:\nHello"}],
        "temperature": 0, "top_p": 1.0, "presence_penalty": 0, "frequency_penalty": 0,
        "max_tokens": 768, "stream": false})"));
}

TEST(CompletionRequestTest, ARetryIsLooser)
{
    EXPECT_EQ(completionRequest(job(SmartOfflineVariant::euroLLM_9b), Attempt::retry), parsed(R"({
        "model": "eurollm-9b",
        "messages": [
            {"role": "system", "content": "You are a professional translator. Return only the translation."},
            {"role": "user", "content": "Translate the following text into German. Output only the translation, with no notes or quotes.\n\nHello"}],
        "temperature": 0.3, "top_p": 0.8, "presence_penalty": 0.6, "frequency_penalty": 0.4,
        "max_tokens": 768, "stream": false})"));
}

TEST(CompletionRequestTest, TheModelHasAnotherNameThanItsFolder)
{
    EXPECT_EQ(completionRequest(job(SmartOfflineVariant::lmt60_4b), Attempt::first)
                  .value(u"model")
                  .toString(),
              QStringLiteral("lmt-60-4b"));
}

TEST(CompletionRequestTest, TheLimitGrowsWithTheText)
{
    EXPECT_EQ(maximalTokens({}), 768);
    EXPECT_EQ(maximalTokens({QString(128, u'x')}), 768);
    EXPECT_EQ(maximalTokens({QString(129, u'x')}), 770);
    EXPECT_EQ(maximalTokens({QString(1000, u'x')}), 2512);
    EXPECT_EQ(maximalTokens({QString(499, u'x'), QString(500, u'x')}), 2512);
    EXPECT_EQ(maximalTokens({QStringLiteral("👨‍👩‍👧").repeated(1000)}), 2512);
    EXPECT_EQ(maximalTokens({QString(1791, u'x')}), 4094);
    EXPECT_EQ(maximalTokens({QString(1792, u'x')}), 4096);
    EXPECT_EQ(maximalTokens({QString(100000, u'x')}), 4096);
}

/// How an answer is refused; none if it isn't.
std::optional<Code> refusal(const QByteArray& body)
{
    try {
        (void)completionText(body);
    } catch (const TranslationError& error) {
        return error.code();
    }
    return std::nullopt;
}

TEST(CompletionTextTest, IsTheMessageAsItCame)
{
    EXPECT_EQ(completionText(R"({"choices":[{"message":{"content":" Hallo \n"}}]})"),
              QStringLiteral(" Hallo \n"));
    EXPECT_EQ(completionText(
                  R"({"choices":[{"message":{"content":"","reasoning_content":"Hallo"}}, {}]})"),
              QStringLiteral("Hallo"));
}

TEST(CompletionTextTest, AnotherShapeIsABadResponse)
{
    for (const char* body :
         {"[]", "{}", R"({"choices":[]})", R"({"choices":{}})", R"({"choices":[1]})",
          R"({"choices":[{}]})", R"({"choices":[{"message":"Hallo"}]})",
          R"({"choices":[{"message":{}}]})", R"({"choices":[{"message":{"content":" \n"}}]})",
          R"({"choices":[{"message":{"content":"Hallo"}}, 1]})"}) {
        EXPECT_EQ(refusal(body), Code::badResponse) << body;
    }
}

TEST(CompletionTextTest, WhatIsNoJsonIsSaidToBeNone)
{
    EXPECT_THROW((void)completionText("<html>"), JsonError);
    EXPECT_THROW((void)completionText(""), JsonError);
}

} // namespace
} // namespace zelvane
