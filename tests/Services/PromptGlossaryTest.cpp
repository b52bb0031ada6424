#include "Services/PromptGlossary.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace zelvane::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

const QLocale english(QLocale::English);

/// Terms from "t10" on, each with one candidate.
GlossaryHints manyHints(int count)
{
    GlossaryHints hints;
    for (int i = 10; i < 10 + count; ++i) {
        hints.insert(QStringLiteral("t%1").arg(i), {QStringLiteral("z%1").arg(i)});
    }
    return hints;
}

QStringList terms(const GlossaryHints& hints)
{
    return hints.keys();
}

TEST(PromptGlossary, keepsTheTermsThatOccurInALine)
{
    const GlossaryHints hints{{QStringLiteral("Apple"), {QStringLiteral("Apfel")}},
                              {QStringLiteral("pear"), {QStringLiteral("Birne")}},
                              {QStringLiteral("plum"), {}}};
    const QStringList lines{QStringLiteral("two PEARS"), QStringLiteral("an apple, a plum")};
    EXPECT_EQ(matchingHints(hints, lines, english), hints);
    EXPECT_THAT(terms(matchingHints(hints, {lines.first()}, english)),
                ElementsAre(QStringLiteral("pear")));
    EXPECT_THAT(terms(matchingHints(hints, {}, english)), IsEmpty());
    EXPECT_THAT(terms(matchingHints({}, lines, english)), IsEmpty());
}

TEST(PromptGlossary, aTermMustStandOnOneLine)
{
    const GlossaryHints hints{{QStringLiteral("ice cream"), {QStringLiteral("Eis")}}};
    const QStringList lines{QStringLiteral("ice"), QStringLiteral("cream")};
    EXPECT_THAT(terms(matchingHints(hints, lines, english)), IsEmpty());
}

TEST(PromptGlossary, sortsByTheTermWithoutRegardToLanguage)
{
    const GlossaryHints hints{{QStringLiteral("b"), {}},
                              {QStringLiteral("A"), {}},
                              {QStringLiteral("a"), {}},
                              {QStringLiteral("ä"), {}},
                              {QStringLiteral("Z"), {}}};
    EXPECT_THAT(terms(matchingHints(hints, {QStringLiteral("a A b ä Z")}, english)),
                ElementsAre(QStringLiteral("A"), QStringLiteral("Z"), QStringLiteral("a"),
                            QStringLiteral("b"), QStringLiteral("ä")));
}

TEST(PromptGlossary, ignoresCaseAsTheUsersLanguageDoes)
{
    const GlossaryHints hints{{QStringLiteral("IŞIK"), {QStringLiteral("light")}}};
    const QStringList lines{QStringLiteral("ışık var")};
    EXPECT_EQ(matchingHints(hints, lines, QLocale(QLocale::Turkish)), hints);
    EXPECT_THAT(terms(matchingHints(hints, lines, english)), IsEmpty());
}

TEST(PromptGlossary, refersToTheBestTranslationOfATerm)
{
    const GlossaryHints hints{
        {QStringLiteral("bank"), {QStringLiteral("Ufer"), QStringLiteral("Bank")}},
        {QStringLiteral("river"), {}}};
    EXPECT_THAT(referenceLines(hints, {QStringLiteral("the river bank")}, english),
                ElementsAre(QStringLiteral("bank translates to Ufer")));
}

TEST(PromptGlossary, cutsTheReferencesBeforeItSkipsTermsWithoutACandidate)
{
    GlossaryHints hints = manyHints(25);
    const QStringList lines{terms(hints).join(u' ')};
    EXPECT_EQ(referenceLines(hints, lines, english).size(), 20);
    EXPECT_EQ(referenceLines(hints, lines, english).last(),
              QStringLiteral("t29 translates to z29"));
    hints[QStringLiteral("t12")] = {};
    EXPECT_EQ(referenceLines(hints, lines, english).size(), 19);
}

TEST(PromptGlossary, theDictionaryOffersThreeTranslationsOfEachTerm)
{
    const GlossaryHints hints{
        {QStringLiteral("bank"),
         {QStringLiteral("Ufer"), QStringLiteral("Bank"), QStringLiteral("Damm"),
          QStringLiteral("Reihe"), QStringLiteral("Kasse")}},
        {QStringLiteral("tree"), {QStringLiteral("Baum"), QStringLiteral("Stammbaum")}},
        {QStringLiteral("void"), {}}};
    EXPECT_EQ(dictionaryBlock(hints, {QStringLiteral("void bank tree")}, english),
              QStringLiteral(
                  "\nDictionary for terms in this input. Pick one of the listed options for "
                  "each,\ndo not invent another word:\nbank = Ufer / Bank / Damm\ntree = Baum / "
                  "Stammbaum\nvoid = \n"));
    EXPECT_EQ(dictionaryBlock(hints, {QStringLiteral("nothing")}, english), QString());
}

TEST(PromptGlossary, theDictionaryEndsAtFortyTerms)
{
    const GlossaryHints hints = manyHints(50);
    const QString block = dictionaryBlock(hints, {terms(hints).join(u' ')}, english);
    EXPECT_EQ(block.count(QStringLiteral(" = z")), 40);
    EXPECT_TRUE(block.endsWith(QStringLiteral("\nt49 = z49\n")));
}

} // namespace
} // namespace zelvane::test
