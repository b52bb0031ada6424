#include "glossary/GlossaryTerm.h"

#include "foundation/Text.h"

#include <gtest/gtest.h>

#include <random>

namespace zelvane::test {
namespace {

struct LineCase
{
    const char* name;
    const char16_t* line;
    const char16_t* prefix;
    const char16_t* term;
};

class GlossaryLines : public ::testing::TestWithParam<LineCase>
{
};

TEST_P(GlossaryLines, areSplitIntoPrefixAndTerm)
{
    const GlossaryLine split = splitGlossaryLine(QString::fromUtf16(GetParam().line));
    EXPECT_EQ(split.prefix, QString::fromUtf16(GetParam().prefix));
    EXPECT_EQ(split.term, QString::fromUtf16(GetParam().term));
}

INSTANTIATE_TEST_SUITE_P(
    Glossary, GlossaryLines,
    ::testing::Values(LineCase{"numbered", u"3. apple", u"3. ", u"apple"},
                      LineCase{"numberedTightly", u"3.apple", u"3.", u"apple"},
                      LineCase{"manyDigits", u"120. \tapple", u"120. \t", u"apple"},
                      LineCase{"parenthesis", u"3) apple", u"", u"3) apple"},
                      LineCase{"dash", u"- apple", u"", u"- apple"},
                      LineCase{"numberAlone", u"12", u"", u"12"},
                      LineCase{"numberAndPointAlone", u"12.", u"12.", u""},
                      LineCase{"numberAndWord", u"  12 apples", u"  ", u"12 apples"},
                      LineCase{"leadingBlanks", u"  apple", u"  ", u"apple"},
                      LineCase{"leadingBlanksAndNumber", u"\t 3. apple", u"\t 3. ", u"apple"},
                      LineCase{"unicodeBlanks", u"\u3000 3.\u00a0apple", u"\u3000 3.\u00a0",
                               u"apple"},
                      LineCase{"onlyTheFirstPoint", u"1.2. apple", u"1.", u"2. apple"},
                      LineCase{"trailingBlanks", u"apple  ", u"", u"apple  "},
                      LineCase{"carriageReturn", u"3. apple\r", u"3. ", u"apple\r"},
                      LineCase{"blank", u" \t", u" \t", u""}, LineCase{"empty", u"", u"", u""},
                      LineCase{"arabicDigits", u"٣. تفاحة", u"٣. ", u"تفاحة"},
                      LineCase{"romanNumeral", u"Ⅳ. apple", u"Ⅳ. ", u"apple"},
                      LineCase{"keycap", u"1\ufe0f\u20e3. apple", u"1\ufe0f\u20e3. ", u"apple"},
                      LineCase{"pointWithAMark", u"3.\u0301 apple", u"", u"3.\u0301 apple"}),
    [](const auto& info) { return info.param.name; });

std::string keyOf(const QString& term)
{
    std::string key = "what was there before";
    writeGlossaryKey(QStringView(term), key);
    return key;
}

std::string keyOfUtf8(const QString& term)
{
    std::string key;
    writeGlossaryKey(term.toStdString(), key);
    return key;
}

TEST(GlossaryKey, isComposedLowerCaseWithSingleBlanks)
{
    EXPECT_EQ(keyOf(QStringLiteral("  Ice \t CREAM\r\n")), "ice cream");
    EXPECT_EQ(keyOf(QStringLiteral("E\u0301TUDE")), "\u00e9tude");
    EXPECT_EQ(keyOf(QStringLiteral("GRÜN\u00a0\u3000Ä")), "grün ä");
    EXPECT_EQ(keyOf(QStringLiteral("ΟΔΟΣ")), "οδος");
    EXPECT_EQ(keyOf(QStringLiteral("Apple.")), "apple.");
    EXPECT_EQ(keyOf(QStringLiteral(" \n")), "");
    EXPECT_EQ(keyOf(QString()), "");
}

TEST(GlossaryKey, ofHalfASurrogatePairIsTheReplacementCharacters)
{
    EXPECT_EQ(keyOf(QStringLiteral("A") + QChar(0xd800)), "a\ufffd");
}

/// The rule in the words in which it is given, one step after the other.
std::string slowKey(const QString& term)
{
    QStringList words{QString()};
    const QString lowerCased = text::lowerCased(text::composed(term));
    for (const QChar unit : lowerCased) {
        if (text::isWhiteSpace(unit.unicode())) {
            words += QString();
        } else {
            words.back() += unit;
        }
    }
    words.removeAll(QString());
    return words.join(u' ').toStdString();
}

TEST(GlossaryKey, isTheSameOnTheFastAndTheSlowRoad)
{
    const QStringList pieces{
        QStringLiteral("Ab"),      QStringLiteral("z"),      QStringLiteral(" "),
        QStringLiteral("\t"),      QStringLiteral("\r"),     QStringLiteral("\v "),
        QStringLiteral("\u00a0"),  QStringLiteral("\u2028"), QStringLiteral("ÄÖ"),
        QStringLiteral("e\u0301"), QStringLiteral("Σ"),      QStringLiteral("İ"),
        QStringLiteral("\u1161"),  QStringLiteral("\u1112"), QStringLiteral("'"),
        QStringLiteral("Ⱥ"),       QStringLiteral("\u0301"), QStringLiteral("𐐀"),
        QStringLiteral("\u001f"),  QString(QChar(u'\0')),    QStringLiteral("ß ﬁ"),
        QStringLiteral("\u0958"),  QStringLiteral("\u200d.")};
    std::mt19937 random(7); // NOLINT: the same texts in each run
    for (int round = 0; round < 50'000; ++round) {
        QString term;
        for (auto left = random() % 7; left > 0; --left) {
            term += pieces.at(qsizetype(random() % size_t(pieces.size())));
        }
        ASSERT_EQ(keyOf(term), slowKey(term)) << term.toStdString();
        ASSERT_EQ(keyOfUtf8(term), slowKey(term)) << term.toStdString();
    }
}

} // namespace
} // namespace zelvane::test
