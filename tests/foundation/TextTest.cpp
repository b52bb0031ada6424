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

TEST(Text, mapsCaseByTheFullRulesInEveryLocale)
{
    EXPECT_EQ(text::lowerCased(QStringLiteral("ÄΟΣ Iİ")), QStringLiteral("äος ii\u0307"));
    EXPECT_EQ(text::upperCased(QStringLiteral("straße ı ﬁ")), QStringLiteral("STRASSE I FI"));
    EXPECT_EQ(text::lowerCased(QString()), QString());
}

TEST(Text, raisesTheFirstCharacterByTheRulesOfTheLocale)
{
    const QLocale turkish(QLocale::Turkish);
    const QLocale german(QLocale::German);
    EXPECT_EQ(text::withFirstUpperCased(QStringLiteral("ingilizce"), turkish),
              QStringLiteral("İngilizce"));
    EXPECT_EQ(text::withFirstUpperCased(QStringLiteral("ingilizce"), german),
              QStringLiteral("Ingilizce"));
    EXPECT_EQ(text::withFirstUpperCased(QStringLiteral("e\u0301lan"), german),
              QStringLiteral("E\u0301lan"));
    EXPECT_EQ(text::withFirstUpperCased(QString(), german), QString());
}

TEST(Text, knowsTheLowercaseProperty)
{
    EXPECT_TRUE(text::isLowercase(U'a'));
    EXPECT_TRUE(text::isLowercase(U'ß'));
    EXPECT_TRUE(text::isLowercase(U'ª')); // not of the category Ll
    EXPECT_TRUE(text::isLowercase(U'𝒶'));
    EXPECT_FALSE(text::isLowercase(U'A'));
    EXPECT_FALSE(text::isLowercase(U'1'));
    EXPECT_FALSE(text::isLowercase(U'क'));
}

TEST(Text, composesCanonically)
{
    EXPECT_EQ(text::composed(QStringLiteral("e\u0301\u1112\u1161\u11ab")),
              QStringLiteral("\u00e9\ud55c"));
    EXPECT_EQ(text::composed(QStringLiteral("ﬁ")), QStringLiteral("ﬁ"));
    const QString loneSurrogate(QChar(0xd800));
    EXPECT_EQ(text::composed(loneSurrogate), loneSurrogate);
}

TEST(Text, ordersListsAsTheirReadersDo)
{
    const QLocale german(QLocale::German);
    const auto order = [&](const QString& left, const QString& right) {
        return text::naturalOrder(left, right, german);
    };
    EXPECT_TRUE(order(QStringLiteral("gpt-9"), QStringLiteral("gpt-10")) < 0);
    EXPECT_TRUE(order(QStringLiteral("Ärger"), QStringLiteral("Zorn")) < 0);
    EXPECT_TRUE(order(QStringLiteral("a"), QStringLiteral("B")) < 0);
    EXPECT_TRUE(order(QStringLiteral("B"), QStringLiteral("a")) > 0);
    EXPECT_TRUE(order(QStringLiteral("a"), QStringLiteral("a")) == 0);
    // In Swedish that letter comes after the last one of the English alphabet.
    EXPECT_TRUE(text::naturalOrder(QStringLiteral("ärlig"), QStringLiteral("zon"),
                                   QLocale(QLocale::Swedish)) > 0);
}

TEST(Text, namesLanguagesInTheLanguageOfTheReader)
{
    EXPECT_EQ(text::languageName(QStringLiteral("de"), QLocale(QLocale::English)),
              QStringLiteral("German"));
    EXPECT_EQ(text::languageName(QStringLiteral("de"), QLocale(QLocale::French)),
              QStringLiteral("allemand"));
    EXPECT_EQ(text::languageName(QStringLiteral("en"), QLocale(QLocale::Hindi)),
              QStringLiteral("अंग्रेज़ी"));
    EXPECT_EQ(text::languageName(QStringLiteral("xq"), QLocale(QLocale::English)), QString());
}

TEST(Text, replacesHalvesOfSurrogatePairsThatStandAlone)
{
    const QChar high(0xd83d);
    const QChar low(0xde00);
    const QString pair = QString(high) + low;
    EXPECT_EQ(text::wellFormed(QStringLiteral("a") + pair), QStringLiteral("a") + pair);
    EXPECT_EQ(text::wellFormed(QString(high)), QStringLiteral("\ufffd"));
    EXPECT_EQ(text::wellFormed(low + QStringLiteral("a") + high), QStringLiteral("\ufffda\ufffd"));
    EXPECT_EQ(text::wellFormed(high + pair + low),
              QStringLiteral("\ufffd") + pair + QStringLiteral("\ufffd"));
    EXPECT_EQ(text::wellFormed(QString()), QString());
}

} // namespace
} // namespace zelvane::test
