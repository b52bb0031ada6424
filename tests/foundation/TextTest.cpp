#include "foundation/Text.h"

#include <gtest/gtest.h>

namespace zelvane::test {
namespace {

struct CountCase
{
    const char* name;
    QString text;
    qsizetype characters;
};

class CharacterCount : public ::testing::TestWithParam<CountCase>
{
};

TEST_P(CharacterCount, countsWhatAReaderPerceives)
{
    EXPECT_EQ(text::characterCount(GetParam().text), GetParam().characters);
}

INSTANTIATE_TEST_SUITE_P(
    Text, CharacterCount,
    ::testing::Values(CountCase{"empty", QString(), 0},
                      CountCase{"ascii", QStringLiteral("abc"), 3},
                      CountCase{"crLf", QStringLiteral("a\r\nb"), 3},
                      CountCase{"combining", QStringLiteral("e\u0301"), 1},
                      CountCase{"flag", QStringLiteral("🇩🇪🇫🇷"), 2},
                      CountCase{"family", QStringLiteral("👨‍👩‍👧‍👦"), 1},
                      CountCase{"skinTone", QStringLiteral("👍🏽"), 1},
                      CountCase{"hangul", QStringLiteral("\u1112\u1161\u11ab"), 1},
                      CountCase{"loneSurrogate", QString(QChar(0xd800)) + QStringLiteral("a"), 2}),
    [](const auto& info) { return info.param.name; });

TEST(Text, cutsBetweenCharactersOnly)
{
    EXPECT_EQ(text::firstCharacters(QStringLiteral("a👨‍👩‍👧b"), 2),
              QStringLiteral("a👨‍👩‍👧"));
    EXPECT_EQ(text::firstCharacters(QStringLiteral("abc"), 3), QStringLiteral("abc"));
    EXPECT_EQ(text::firstCharacters(QStringLiteral("abc"), 0), QString());
    EXPECT_EQ(text::firstCharacters(QString(), 5), QString());
}

TEST(Text, trimsUnicodeSpacesAndNewlines)
{
    EXPECT_EQ(text::trimmed(QStringLiteral("\u00a0\u3000\t\r\n\u2028 a b \u0085\u2029\v\f")),
              QStringLiteral("a b"));
    EXPECT_EQ(text::trimmed(QStringLiteral("\u200da\u200d")), QStringLiteral("\u200da\u200d"));
    EXPECT_EQ(text::trimmed(QStringLiteral(" \n ")), QString());
}

TEST(Text, trimmingWithinALineKeepsCarriageReturns)
{
    EXPECT_EQ(text::trimmedWithinLine(QStringLiteral(" \t\u00a0")), QString());
    EXPECT_EQ(text::trimmedWithinLine(QStringLiteral(" \r ")), QStringLiteral("\r"));
}

TEST(Text, blankMeansNothingButSpacesAndNewlines)
{
    EXPECT_TRUE(text::isBlank(QString()));
    EXPECT_TRUE(text::isBlank(QStringLiteral(" \r\n\t")));
    EXPECT_FALSE(text::isBlank(QStringLiteral(" . ")));
}

} // namespace
} // namespace zelvane::test
