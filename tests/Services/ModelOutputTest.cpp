#include "Services/ModelOutput.h"

#include "SeededRandom.h"
#include "foundation/Text.h"

#include <gtest/gtest.h>

#include <QJsonDocument>

namespace zelvane::test {
namespace {

using Lines = std::optional<QStringList>;
constexpr auto refused = std::nullopt;

std::optional<QString> extracted(const char* json)
{
    const QJsonDocument document = QJsonDocument::fromJson(json);
    EXPECT_TRUE(document.isObject()) << json;
    return extractMessageText(document.object());
}

/// The answer put in place of all of `lines` that aren't empty.
Lines merged(const QString& answer, const QStringList& lines)
{
    QList<qsizetype> positions;
    for (qsizetype i = 0; i < lines.size(); ++i) {
        if (!lines[i].isEmpty()) {
            positions += i;
        }
    }
    return mergeModelOutput(answer, lines, positions);
}

const QStringList oneLine{QStringLiteral("one")};
const QStringList twoLines{QStringLiteral("one"), QStringLiteral("two")};
const QStringList threeLines{QStringLiteral("one"), QStringLiteral("two"), QStringLiteral("three")};

TEST(MessageText, isTheContent)
{
    EXPECT_EQ(extracted(R"({"content": " Hola\n", "reasoning": "no"})"), QStringLiteral(" Hola\n"));
}

TEST(MessageText, isPutTogetherFromParts)
{
    EXPECT_EQ(extracted(R"({"content": [{"text": "Ho"}, {"content": "la"}, {"type": "image"},
                            {"text": 1, "content": " y"}, {"text": "", "content": "no"},
                            {"content": {}}]})"),
              QStringLiteral("Hola y"));
}

TEST(MessageText, isFoundAmongTheThoughtsIfThereIsNoContent)
{
    EXPECT_EQ(extracted(R"({"content": "", "reasoning_content": "Hola"})"), QStringLiteral("Hola"));
    EXPECT_EQ(extracted(R"({"content": null, "reasoning_content": " \n", "reasoning": " a "})"),
              QStringLiteral(" a "));
    EXPECT_EQ(extracted(R"({"thinking": "c", "reasoning": "b", "reasoning_content": "a"})"),
              QStringLiteral("a"));
    EXPECT_EQ(extracted(R"({"content": 5, "reasoning": [], "thinking": "c"})"),
              QStringLiteral("c"));
}

TEST(MessageText, partsMustBeObjects)
{
    EXPECT_EQ(extracted(R"({"content": ["Hola", {"text": "b"}], "thinking": "c"})"),
              QStringLiteral("c"));
    EXPECT_EQ(extracted(R"({"content": [{"text": " "}], "thinking": "c"})"), QStringLiteral("c"));
    EXPECT_EQ(extracted(R"({"content": [], "thinking": "c"})"), QStringLiteral("c"));
}

TEST(MessageText, mayBeMissing)
{
    EXPECT_EQ(extracted("{}"), std::nullopt);
    EXPECT_EQ(extracted(R"({"content": " \u00a0\n", "reasoning": ""})"), std::nullopt);
    EXPECT_EQ(extracted(R"({"content": {"text": "Hola"}})"), std::nullopt);
}

struct ReasoningCase
{
    const char* answer;
    const char* stripped;
};

class StrippedReasoning : public ::testing::TestWithParam<ReasoningCase>
{
};

TEST_P(StrippedReasoning, leavesTheAnswer)
{
    EXPECT_EQ(stripReasoning(QString::fromUtf8(GetParam().answer)),
              QString::fromUtf8(GetParam().stripped));
}

INSTANTIATE_TEST_SUITE_P(
    ModelOutput, StrippedReasoning,
    ::testing::Values(
        ReasoningCase{"Hola", "Hola"}, ReasoningCase{"", ""}, ReasoningCase{" \n Hola \n", "Hola"},
        ReasoningCase{"<think>hmm</think>Hola", "Hola"}, ReasoningCase{"<THINK>a</Think>b", "b"},
        ReasoningCase{"plan</think>Hola", "Hola"}, ReasoningCase{"Hola<think>plan", "Hola"},
        ReasoningCase{"<think>plan", ""}, ReasoningCase{"<think>a</think>x<think>b</think>y", "xy"},
        ReasoningCase{"<think>a<think>b</think>c", "c"},
        ReasoningCase{"a</think>b</think>c", "b</think>c"},
        ReasoningCase{"<th<think>x</think>ink>y</think>z", "z"},
        ReasoningCase{"a</think>b<think>c", "b"},
        ReasoningCase{"[redacted_thinking]plan\nmore[/redacted_thinking]\nHola", "Hola"},
        ReasoningCase{"redacted_thinking plan /redacted_thinking Hola", "Hola"},
        ReasoningCase{"a [redacted_thinking]x[/redacted_thinking] b redacted_thinking]y"
                      "/redacted_thinking] c",
                      "a  b  c"},
        ReasoningCase{"[Redacted_thinking]x[/redacted_thinking]",
                      "[Redacted_thinking]x[/redacted_thinking]"},
        ReasoningCase{"[redacted_thinking] no end", "[redacted_thinking] no end"},
        ReasoningCase{"[[redacted_thinking]x[/redacted_thinking]]", "[]"}));

TEST(ModelOutput, stripsReasoningFromTextThatIsNotUnicode)
{
    const QString half(QChar(0xd800));
    EXPECT_EQ(stripReasoning(half + QStringLiteral("[redacted_thinking]x[/redacted_thinking]")),
              half);
}

TEST(ModelOutput, knowsALoopByThreeEqualLines)
{
    const QString yes = QStringLiteral("Yes");
    EXPECT_TRUE(looksDegenerate({}));
    EXPECT_TRUE(looksDegenerate({yes, QStringLiteral("yes"), QStringLiteral("YES")}));
    EXPECT_TRUE(looksDegenerate({QStringLiteral("a"), yes, yes, yes}));
    EXPECT_FALSE(looksDegenerate({yes, QStringLiteral("No"), yes}));
    EXPECT_FALSE(looksDegenerate({yes, yes}));
    EXPECT_FALSE(looksDegenerate({yes, yes, QStringLiteral("No"), yes, yes}));
}

TEST(ModelOutput, knowsALoopByALineThatRecursFourTimesAmongSix)
{
    const QString ok = QStringLiteral("ok");
    const QString shout = QStringLiteral("OK");
    const QString x = QStringLiteral("x");
    const QString y = QStringLiteral("y");
    EXPECT_TRUE(looksDegenerate({ok, shout, x, ok, y, ok}));
    EXPECT_FALSE(looksDegenerate({ok, x, ok, y, ok, QStringLiteral("z")}));
    EXPECT_FALSE(looksDegenerate({ok, ok, x, ok, ok}));
    EXPECT_TRUE(looksDegenerate({ok, ok, x, ok, ok, y}));
}

TEST(ModelOutput, knowsALoopByFourEqualWords)
{
    EXPECT_TRUE(looksDegenerate({QStringLiteral("very very very very good")}));
    EXPECT_TRUE(looksDegenerate({QStringLiteral("so  Very very  VERY very")}));
    EXPECT_FALSE(looksDegenerate({QStringLiteral("very very very good")}));
    EXPECT_FALSE(looksDegenerate({QStringLiteral("very very good very very")}));
    EXPECT_FALSE(looksDegenerate({QStringLiteral("very\tvery\tvery\tvery")}));
    EXPECT_TRUE(looksDegenerate({QStringLiteral("fine"), QStringLiteral("a a a a")}));
}

TEST(ModelOutput, aLongTextDoesNotShrinkToLessThanAThird)
{
    const auto isPlausible = [](qsizetype source, qsizetype candidate) {
        return isPlausibleSingleLine(QString(source, u's'), QString(candidate, u'c'));
    };
    EXPECT_FALSE(isPlausible(300, 99));
    EXPECT_TRUE(isPlausible(300, 100));
    EXPECT_FALSE(isPlausible(200, 66));
    EXPECT_TRUE(isPlausible(200, 67));
    EXPECT_TRUE(isPlausible(199, 1));
    EXPECT_FALSE(isPlausible(199, 0));
    EXPECT_FALSE(isPlausible(0, 0));
    EXPECT_TRUE(isPlausible(0, 1));
}

TEST(ModelOutput, countsCharactersWithoutTheBlanksAround)
{
    const QString spaced = QStringLiteral(" \n") + QString(199, u's') + QStringLiteral("\n ");
    EXPECT_TRUE(isPlausibleSingleLine(spaced, QStringLiteral("c")));
    EXPECT_FALSE(isPlausibleSingleLine(spaced, QStringLiteral(" \n ")));
    const QString accents = QStringLiteral("e\u0301").repeated(100);
    EXPECT_FALSE(isPlausibleSingleLine(QString(303, u's'), accents));
    EXPECT_TRUE(isPlausibleSingleLine(QString(300, u's'), accents));
}

TEST(ModelOutput, aTargetIsFilledIfItIsNotBlank)
{
    const QStringList lines{QStringLiteral("a"), QStringLiteral(" \r\n"), QStringLiteral("b")};
    EXPECT_TRUE(allTargetsFilled(lines, {0, 2}));
    EXPECT_FALSE(allTargetsFilled(lines, {0, 1}));
    EXPECT_TRUE(allTargetsFilled(lines, {}));
}

TEST(MergedOutput, takesAFenceOff)
{
    EXPECT_EQ(merged(QStringLiteral("```\nHola\n```"), oneLine), Lines({QStringLiteral("Hola")}));
    EXPECT_EQ(merged(QStringLiteral("```text\nHola\n  ```\n"), oneLine),
              Lines({QStringLiteral("Hola")}));
}

TEST(MergedOutput, takesThoughtsOff)
{
    EXPECT_EQ(merged(QStringLiteral("<think>one\ntwo</think>\n\nHola"), oneLine),
              Lines({QStringLiteral("Hola")}));
}

TEST(MergedOutput, refusesAnAnswerThatIsEmpty)
{
    EXPECT_EQ(merged(QString(), oneLine), refused);
    EXPECT_EQ(merged(QStringLiteral("<think>plan"), oneLine), refused);
    EXPECT_EQ(merged(QStringLiteral("```\n \n```"), oneLine), refused);
    EXPECT_EQ(merged(QStringLiteral(" \n "), twoLines), refused);
}

TEST(MergedOutput, refusesALoop)
{
    EXPECT_EQ(merged(QStringLiteral("a\nA\na"), oneLine), refused);
    EXPECT_EQ(merged(QStringLiteral("a\na\na"), threeLines), refused);
    EXPECT_EQ(merged(QStringLiteral("so so so so"), oneLine), refused);
}

TEST(MergedOutput, oneLineMayBecomeSeveral)
{
    EXPECT_EQ(merged(QStringLiteral(" Hola \n\n\tamigo"), oneLine),
              Lines({QStringLiteral("Hola\namigo")}));
    EXPECT_EQ(merged(QStringLiteral("Hola"), {QString(), QStringLiteral("  one"), QString()}),
              Lines({QString(), QStringLiteral("Hola"), QString()}));
}

TEST(MergedOutput, refusesTooShortATranslationOfOneLine)
{
    const QStringList longLine{QString(300, u's')};
    EXPECT_EQ(merged(QString(99, u'c'), longLine), refused);
    EXPECT_EQ(merged(QString(100, u'c'), longLine), Lines({QString(100, u'c')}));
    // Of several lines nobody asks.
    EXPECT_NE(merged(QStringLiteral("a\nb"), {QString(300, u's'), QString(300, u't')}), refused);
}

TEST(MergedOutput, putsAsManyLinesAsWereAskedForInPlace)
{
    EXPECT_EQ(merged(QStringLiteral(" uno\t\n\ndos "), twoLines),
              Lines({QStringLiteral("uno"), QStringLiteral("dos")}));
}

TEST(MergedOutput, keepsBlankLinesWhereTheyAre)
{
    const QStringList lines{QStringLiteral("one"), QStringLiteral(" \t"), QStringLiteral("  two")};
    EXPECT_EQ(mergeModelOutput(QStringLiteral("uno\ndos"), lines, {0, 2}),
              Lines({QStringLiteral("uno"), QStringLiteral(" \t"), QStringLiteral("dos")}));
}

TEST(MergedOutput, refusesALineThatIsBlankButForACarriageReturn)
{
    EXPECT_EQ(merged(QStringLiteral("uno\n\r\ndos"), threeLines), refused);
}

TEST(MergedOutput, readsAParagraphForEachLine)
{
    EXPECT_EQ(merged(QStringLiteral("a b\nc\n\nd"), twoLines),
              Lines({QStringLiteral("a b\nc"), QStringLiteral("d")}));
    EXPECT_EQ(merged(QStringLiteral("a\nb\n\n \n\nc\n\nd"), threeLines),
              Lines({QStringLiteral("a\nb"), QStringLiteral("c"), QStringLiteral("d")}));
}

TEST(MergedOutput, refusesALoopOfParagraphsByTheLinesInstead)
{
    // Three equal paragraphs of two lines: no three lines in a row are equal.
    EXPECT_EQ(merged(QStringLiteral("a\nb\n\na\nb\n\na\nb"), threeLines),
              Lines({QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("a\nb\na\nb")}));
}

TEST(MergedOutput, refusesTooFewLines)
{
    EXPECT_EQ(merged(QStringLiteral("uno"), twoLines), refused);
    EXPECT_EQ(merged(QStringLiteral("uno\ndos"), threeLines), refused);
}

TEST(MergedOutput, theLastLineTakesWhatIsLeft)
{
    EXPECT_EQ(merged(QStringLiteral("a\nb\nc"), twoLines),
              Lines({QStringLiteral("a"), QStringLiteral("b\nc")}));
    EXPECT_EQ(merged(QStringLiteral("a\nb\nc\n\nd\ne"), threeLines),
              Lines({QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("c\nd\ne")}));
}

TEST(MergedOutput, fillsWhatWasAskedAndLeavesTheRest)
{
    const QStringList sources{QString(),           QStringLiteral(" \t"), QStringLiteral("a"),
                              QStringLiteral("b"), QString(300, u's'),    QStringLiteral("\r")};
    const QStringList pieces{
        QStringLiteral("\n"),  QStringLiteral("\n\n"),     QStringLiteral("uno"),
        QStringLiteral("dos"), QStringLiteral(" "),        QStringLiteral("<think>"),
        QStringLiteral("\r"),  QStringLiteral("</think>"), QStringLiteral("```"),
        QString(150, u't'),    QStringLiteral("\ntres\n"), QStringLiteral("[redacted_thinking]")};
    SeededRandom random;
    int accepted = 0;
    for (int round = 0; round < 5'000; ++round) {
        QStringList lines;
        QList<qsizetype> positions;
        for (qsizetype count = 1 + random.below(5); count > 0; --count) {
            lines += random.oneOf(sources);
            if (!text::trimmedWithinLine(lines.last()).isEmpty()) {
                positions += lines.size() - 1;
            }
        }
        if (positions.isEmpty()) {
            continue;
        }
        QString answer;
        for (qsizetype count = random.below(12); count > 0; --count) {
            answer += random.oneOf(pieces);
        }
        const Lines result = mergeModelOutput(answer, lines, positions);
        if (!result) {
            continue;
        }
        ++accepted;
        SCOPED_TRACE(::testing::PrintToString(answer.toStdString()));
        ASSERT_EQ(result->size(), lines.size());
        for (qsizetype i = 0; i < lines.size(); ++i) {
            if (positions.contains(i)) {
                ASSERT_FALSE(text::isBlank((*result)[i])) << i;
            } else {
                ASSERT_EQ((*result)[i], lines[i]);
            }
        }
    }
    EXPECT_GT(accepted, 500);
}

} // namespace
} // namespace zelvane::test
