#include "foundation/Text.h"

#include <gtest/gtest.h>

#include <unicode/brkiter.h>
#include <unicode/locid.h>

#include <memory>

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

TEST(Text, countsEveryCharacterAsIcuDoes)
{
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<icu::BreakIterator> iterator(
        icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
    ASSERT_TRUE(U_SUCCESS(status));
    const auto count = [&](const QString& text) {
        const icu::UnicodeString copy(reinterpret_cast<const UChar*>(text.utf16()),
                                      static_cast<int32_t>(text.size()));
        iterator->setText(copy);
        qsizetype characters = 0;
        while (iterator->next() != icu::BreakIterator::DONE) {
            ++characters;
        }
        return characters;
    };
    for (char16_t unit = 0; unit < 0xffff; ++unit) {
        // Beside itself, and beside what does and what doesn't combine.
        const QString text = QChar(unit) + QString(QChar(unit)) + u'a' + QChar(unit) + u'\n' +
                             QChar(unit) + QChar(0x4e00) + QChar(unit) + QChar(0x301);
        ASSERT_EQ(text::characterCount(text), count(text)) << int(unit);
        ASSERT_EQ(text::characterCount(text.chopped(1)), count(text.chopped(1))) << int(unit);
    }
}

TEST(Text, cutsBetweenCharactersOnly)
{
    EXPECT_EQ(text::firstCharacters(QStringLiteral("a👨‍👩‍👧b"), 2),
              QStringLiteral("a👨‍👩‍👧"));
    EXPECT_EQ(text::firstCharacters(QStringLiteral("abc"), 3), QStringLiteral("abc"));
    EXPECT_EQ(text::firstCharacters(QStringLiteral("abc"), 0), QString());
    EXPECT_EQ(text::firstCharacters(QString(), 5), QString());
}

TEST(Text, givesTheLastCharactersWhole)
{
    EXPECT_EQ(text::lastCharacters(QStringLiteral("a👨‍👩‍👧b"), 2),
              QStringLiteral("👨‍👩‍👧b"));
    EXPECT_EQ(text::lastCharacters(QStringLiteral("a👨‍👩‍👧b"), 3),
              QStringLiteral("a👨‍👩‍👧b"));
    EXPECT_EQ(text::lastCharacters(QStringLiteral("abc"), 3), QStringLiteral("abc"));
    EXPECT_EQ(text::lastCharacters(QStringLiteral("abc"), 0), QString());
    EXPECT_EQ(text::lastCharacters(QString(), 5), QString());
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

TEST(Text, knowsWhiteSpace)
{
    for (const char32_t space :
         U" \t\n\v\f\r\u0085\u00a0\u1680\u2003\u2028\u2029\u202f\u205f\u3000") {
        EXPECT_EQ(text::isWhiteSpace(space), space != 0) << uint32_t(space);
    }
    EXPECT_FALSE(text::isWhiteSpace(U'a'));
    EXPECT_FALSE(text::isWhiteSpace(U'\u200b'));
    EXPECT_FALSE(text::isWhiteSpace(U'\u001f'));
}

TEST(Text, knowsTheNumbersOfAllScripts)
{
    for (const char32_t number : {U'0', U'9', U'٣', U'½', U'Ⅳ', U'①', U'三', U'𝟙'}) {
        EXPECT_TRUE(text::isNumber(number)) << uint32_t(number);
    }
    EXPECT_FALSE(text::isNumber(U'a'));
    EXPECT_FALSE(text::isNumber(U'.'));
}

TEST(Text, measuresARunOfWholeCharacters)
{
    const auto digits = [](const QString& text) {
        return text::leadingLength(text, text::isNumber);
    };
    EXPECT_EQ(digits(QStringLiteral("12a3")), 2);
    EXPECT_EQ(digits(QStringLiteral("a12")), 0);
    EXPECT_EQ(digits(QStringLiteral("12")), 2);
    EXPECT_EQ(digits(QString()), 0);
    EXPECT_EQ(digits(QStringLiteral("1\ufe0f\u20e32x")), 4); // a keycap is one character
    EXPECT_EQ(digits(QStringLiteral("2𝟙.")), 3);
    const auto spaces = [](const QString& text) {
        return text::leadingLength(text, text::isWhiteSpace);
    };
    EXPECT_EQ(spaces(QStringLiteral(" \r\n\u3000 x")), 5);
    EXPECT_EQ(spaces(QStringLiteral("\r")), 1);
}

TEST(Text, takesTheFirstCharacterWhole)
{
    const auto first = [](const QString& text) { return text::firstCharacter(text).toString(); };
    EXPECT_EQ(first(QStringLiteral("ab")), QStringLiteral("a"));
    EXPECT_EQ(first(QStringLiteral("жб")), QStringLiteral("ж"));
    EXPECT_EQ(first(QStringLiteral("ж\u0301б")), QStringLiteral("ж\u0301"));
    EXPECT_EQ(first(QStringLiteral("a\u0301b")), QStringLiteral("a\u0301"));
    EXPECT_EQ(first(QStringLiteral("\r\na")), QStringLiteral("\r\n"));
    EXPECT_EQ(first(QStringLiteral("\n\n")), QStringLiteral("\n"));
    EXPECT_EQ(first(QStringLiteral("👩‍👧b")), QStringLiteral("👩‍👧"));
    EXPECT_EQ(first(QStringLiteral("\u1112\u1161\u11ab")), QStringLiteral("\u1112\u1161\u11ab"));
    EXPECT_EQ(first(QString()), QString());
}

TEST(Text, findsTheSameFirstCharacterAsAllRulesTogether)
{
    // Each pair of units from here and there, where the short way must not be taken too far.
    QList<char16_t> units{u'\r', u'\n', u'\t',  u'a',   u'0',  0xa9,
                          0xad,  0xe9,  0x200d, 0xfe0f, 0x20e3};
    for (char16_t unit = 0x300; unit < 0x2000; unit = char16_t(unit + 61)) {
        units += unit;
    }
    units += {0x2764, 0xac00, 0xac01, 0x3042, 0x3099, 0xd83d, 0xde00, 0xfeff};
    for (const char16_t one : units) {
        for (const char16_t other : units) {
            const QString text = QString(QChar(one)) + QChar(other);
            ASSERT_EQ(text::firstCharacter(text).toString(), text::firstCharacters(text, 1))
                << std::hex << uint32_t(one) << " " << uint32_t(other);
        }
    }
}

TEST(Text, comparesWithoutCaseAndComposition)
{
    const auto equal = [](const char16_t* left, const char16_t* right) {
        return text::equalIgnoringCase(QString::fromUtf16(left), QString::fromUtf16(right));
    };
    EXPECT_TRUE(equal(u"Apple", u"aPPLE"));
    EXPECT_TRUE(equal(u"\u00c9t\u00e9", u"e\u0301te\u0301"));
    EXPECT_TRUE(equal(u"Straße", u"STRASSE"));
    EXPECT_TRUE(equal(u"", u""));
    EXPECT_TRUE(equal(u"a K", u"A \u212a")); // the sign for kelvin
    EXPECT_TRUE(equal(u"maß", u"MASS"));
    EXPECT_FALSE(equal(u"e", u"e\u0301"));
    EXPECT_FALSE(equal(u"apple", u"apples"));
    EXPECT_FALSE(equal(u"ete", u"été"));
}

TEST(Text, tellsWhetherTheFirstCharacterIsLowerCase)
{
    for (const char16_t* lower : {u"a", u"ß", u"ª", u"e\u0301A", u"éA", u"𝒶", u"ﬁ"}) {
        EXPECT_TRUE(text::startsLowercase(QString::fromUtf16(lower)));
    }
    for (const char16_t* other : {u"", u"A", u"E\u0301a", u"1a", u"-a", u" a", u"あ", u"ǅ"}) {
        EXPECT_FALSE(text::startsLowercase(QString::fromUtf16(other)));
    }
}

/// Whether `part` occurs in `whole` with the case ignored.
bool occurs(const QString& part, const QString& whole, const QLocale& locale = QLocale::C)
{
    return text::containsCharacters(text::caseFolded(whole, locale),
                                    text::caseFolded(part, locale));
}

TEST(Text, findsCharactersWhateverTheirCase)
{
    EXPECT_TRUE(occurs(QStringLiteral("APFEL"), QStringLiteral("Apfelbaum")));
    EXPECT_TRUE(occurs(QStringLiteral("привет"), QStringLiteral("О, ПРИВЕТ!")));
    EXPECT_TRUE(occurs(QStringLiteral("STRASSE"), QStringLiteral("Hauptstraße")));
    EXPECT_TRUE(occurs(QStringLiteral("οδός"), QStringLiteral("ΟΔΌΣ")));
    EXPECT_FALSE(occurs(QStringLiteral("Birne"), QStringLiteral("Apfel")));
    EXPECT_FALSE(occurs(QStringLiteral("Apfelbaum"), QStringLiteral("Apfel")));
    EXPECT_FALSE(occurs(QString(), QStringLiteral("a")));
    EXPECT_FALSE(occurs(QString(), QString()));
}

TEST(Text, findsCharactersHoweverTheyAreComposed)
{
    EXPECT_TRUE(occurs(QStringLiteral("cafe\u0301"), QStringLiteral("Un CAF\u00c9 noir")));
    EXPECT_TRUE(occurs(QStringLiteral("caf\u00e9"), QStringLiteral("un cafe\u0301 noir")));
}

TEST(Text, findsNoPartOfACharacter)
{
    EXPECT_FALSE(occurs(QStringLiteral("x"), QStringLiteral("x\u0302")));
    EXPECT_FALSE(occurs(QStringLiteral("\u0302y"), QStringLiteral("x\u0302y")));
    EXPECT_TRUE(occurs(QStringLiteral("x"), QStringLiteral("x\u0302x")));
    EXPECT_FALSE(occurs(QStringLiteral("👨"), QStringLiteral("👨‍👩‍👧")));
}

TEST(Text, ignoresCaseByTheRulesOfTheLocale)
{
    const QLocale turkish(QLocale::Turkish);
    EXPECT_TRUE(occurs(QStringLiteral("ILIK"), QStringLiteral("ılık su"), turkish));
    EXPECT_TRUE(occurs(QStringLiteral("İZMİR"), QStringLiteral("izmir"), turkish));
    EXPECT_FALSE(occurs(QStringLiteral("IZMIR"), QStringLiteral("izmir"), turkish));
    EXPECT_TRUE(occurs(QStringLiteral("IZMIR"), QStringLiteral("izmir")));
    EXPECT_TRUE(
        occurs(QStringLiteral("BAKI"), QStringLiteral("bakı"), QLocale(QLocale::Azerbaijani)));
}

TEST(Text, survivesFoldingWhatIsNotText)
{
    const QString loneSurrogate = QString(QChar(0xd800)) + QStringLiteral("A");
    EXPECT_TRUE(occurs(QStringLiteral("a"), loneSurrogate));
    EXPECT_EQ(text::caseFolded(QString(), QLocale::C), QString());
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
