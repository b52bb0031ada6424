#include "online/ChatCompletionsClient.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QJsonDocument>
#include <QJsonObject>

namespace zelvane::test {
namespace {

struct Family
{
    const char* model;
    const char* family;
};

class ModelFamily : public ::testing::TestWithParam<Family>
{
};

TEST_P(ModelFamily, isTheLastPieceInLowerCase)
{
    EXPECT_EQ(modelFamily(QString::fromLatin1(GetParam().model)),
              QString::fromLatin1(GetParam().family));
}

INSTANTIATE_TEST_SUITE_P(ChatParameters, ModelFamily,
                         ::testing::Values(Family{"gpt-4o-mini", "gpt-4o-mini"},
                                           Family{"openai/GPT-5-mini", "gpt-5-mini"},
                                           Family{"a/b/C", "c"}, Family{"/a//B/", "b"},
                                           Family{"O3", "o3"}, Family{"", ""}, Family{"/", "/"},
                                           Family{"//", "//"}, Family{" A / B ", " b "}));

struct Known
{
    const char* model;
    const char* parameters; ///< as JSON
};

class ParametersOfAModel : public ::testing::TestWithParam<Known>
{
};

TEST_P(ParametersOfAModel, areThoseItsFamilyUnderstands)
{
    const ChatParameters parameters = chatParameters(QString::fromLatin1(GetParam().model));
    QJsonObject object;
    for (auto p = parameters.cbegin(); p != parameters.cend(); ++p) {
        object.insert(p.key(), p.value());
    }
    EXPECT_EQ(QJsonDocument(object).toJson(QJsonDocument::Compact), GetParam().parameters);
}

INSTANTIATE_TEST_SUITE_P(
    ChatParameters, ParametersOfAModel,
    ::testing::Values(
        Known{"gpt-5", R"({"reasoning_effort":"minimal"})"},
        Known{"gpt-5-nano", R"({"reasoning_effort":"minimal"})"},
        Known{"vendor/GPT-5-mini", R"({"reasoning_effort":"minimal"})"}, Known{"gpt-5.1", "{}"},
        Known{"gpt-50", "{}"}, Known{"o1", "{}"}, Known{"o3-mini", "{}"}, Known{"o4-mini", "{}"},
        Known{"o2", R"({"temperature":0.2})"}, Known{"gpt-4o-mini", R"({"temperature":0.2})"},
        Known{"mistral-small-latest", R"({"temperature":0.2})"},
        Known{"grok-2-latest", R"({"temperature":0.2})"},
        Known{"deepseek-chat", R"({"temperature":0.2,"thinking":{"type":"disabled"}})"},
        Known{"DeepSeek-V3", R"({"temperature":0.2,"thinking":{"type":"disabled"}})"},
        Known{"deepseek-reasoner", R"({"temperature":0.2})"},
        Known{"my-deepseek", R"({"temperature":0.2})"}, Known{"", R"({"temperature":0.2})"}));

TEST(DroppableParameter, isTheOneThatA400Names)
{
    const ChatParameters both = chatParameters(QStringLiteral("deepseek-chat"));
    const auto dropped = [&](int status, const char* body) {
        return droppableParameter(TranslationError::http(status, QString::fromLatin1(body)), both);
    };
    EXPECT_EQ(dropped(400, "unknown field 'thinking'"), QStringLiteral("thinking"));
    EXPECT_EQ(dropped(400, "xtemperaturex"), QStringLiteral("temperature"));
    EXPECT_EQ(dropped(400, "thinking and temperature"), QStringLiteral("temperature"));
    EXPECT_EQ(dropped(400, "Temperature"), std::nullopt);
    EXPECT_EQ(dropped(400, "reasoning_effort"), std::nullopt);
    EXPECT_EQ(dropped(400, ""), std::nullopt);
    EXPECT_EQ(dropped(422, "temperature"), std::nullopt);
    EXPECT_EQ(dropped(401, "temperature"), std::nullopt);
    EXPECT_EQ(dropped(500, "temperature"), std::nullopt);
}

TEST(DroppableParameter, isNoneForAnotherFailureOrWithoutParameters)
{
    const ChatParameters both = chatParameters(QStringLiteral("deepseek-chat"));
    EXPECT_EQ(droppableParameter(TranslationError(TranslationError::Code::badResponse), both),
              std::nullopt);
    EXPECT_EQ(
        droppableParameter(
            TranslationError::offlineUnsupportedLanguage(QStringLiteral("temperature")), both),
        std::nullopt);
    EXPECT_EQ(droppableParameter(TranslationError::http(400, QStringLiteral("temperature")), {}),
              std::nullopt);
}

} // namespace
} // namespace zelvane::test
