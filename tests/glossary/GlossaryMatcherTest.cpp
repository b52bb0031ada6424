#include "glossary/GlossaryMatcher.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace zelvane::test {
namespace {

using ::testing::ElementsAre;

class GlossaryMatching : public ::testing::Test
{
protected:
    void add(const QByteArray& content)
    {
        dictionaries.push_back(std::make_shared<const GlossaryDictionary>(content));
    }

    [[nodiscard]] std::optional<GlossaryMatch> match(const QString& line,
                                                     const QString& target = QStringLiteral("fr"))
    {
        return GlossaryMatcher(dictionaries, {target, target}).match(line);
    }
    [[nodiscard]] std::optional<QString> replacement(const char* line,
                                                     const QString& target = QStringLiteral("fr"))
    {
        const auto found = match(QString::fromUtf8(line), target);
        return found ? found->replacement : std::nullopt;
    }

    GlossaryDictionaries dictionaries;
};

TEST_F(GlossaryMatching, keepsThePrefixAndTheTermAsTheyWereWritten)
{
    add("été\tsummer\t30.0\n");
    EXPECT_EQ(match(QStringLiteral("  3. E\u0301TE\u0301 "), QStringLiteral("en-GB")),
              (GlossaryMatch{QStringLiteral("  3. "),
                             QStringLiteral("E\u0301TE\u0301 "),
                             QStringLiteral("summer"),
                             {QStringLiteral("summer")}}));
}

TEST_F(GlossaryMatching, stripsNoPunctuation)
{
    add("apple\tpomme\t30.0\n");
    EXPECT_TRUE(match(QStringLiteral("Apple")));
    EXPECT_FALSE(match(QStringLiteral("Apple.")));
    EXPECT_FALSE(match(QStringLiteral("3) apple")));
    EXPECT_FALSE(match(QStringLiteral("- apple")));
    EXPECT_FALSE(match(QStringLiteral("an apple")));
}

TEST_F(GlossaryMatching, findsSeveralWordsThatAreTheWholeLine)
{
    add("ice cream\tglace\t30.0\n");
    EXPECT_EQ(replacement("  ice \t cream "), QStringLiteral("glace"));
}

TEST_F(GlossaryMatching, knowsNothingOfLinesWithoutATerm)
{
    add("apple\tpomme\t30.0\n");
    for (const char* line : {"", "   ", "\t", "3.", " 3. "}) {
        EXPECT_FALSE(match(QString::fromUtf8(line))) << line;
    }
}

TEST_F(GlossaryMatching, replacesFromAScoreOfTwentyOn)
{
    add("sure\tx\t20.0\nunsure\ty\t19.9\nunscored\tz\t\n");
    EXPECT_EQ(replacement("sure"), QStringLiteral("x"));
    EXPECT_EQ(replacement("unsure"), std::nullopt);
    EXPECT_THAT(match(QStringLiteral("unsure"))->hints, ElementsAre(QStringLiteral("y")));
    EXPECT_THAT(match(QStringLiteral("unscored"))->hints, ElementsAre(QStringLiteral("z")));
}

TEST_F(GlossaryMatching, keepsTheTermItselfOutOfTheHints)
{
    add("Taxi\tTAXI | cab | taxi|Cab\t30.0\nHotel\thotel|HOTEL\t30.0\nÉté\te\u0301te\u0301\t30.0");
    EXPECT_THAT(match(QStringLiteral("taxi"))->hints,
                ElementsAre(QStringLiteral("cab"), QStringLiteral("Cab")));
    EXPECT_FALSE(match(QStringLiteral("Hotel")));
    EXPECT_FALSE(match(QStringLiteral("été")));
}

TEST_F(GlossaryMatching, ofALowerCaseTermTakesTheFirstLowerCaseCandidate)
{
    add("apple\tPomme | pomme\t30.0\n");
    EXPECT_EQ(replacement("Apple"), QStringLiteral("Pomme"));
    EXPECT_EQ(replacement("apple"), QStringLiteral("pomme"));
    EXPECT_EQ(replacement("APPLE"), QStringLiteral("Pomme"));
}

TEST_F(GlossaryMatching, takesTheFirstCandidateIntoGerman)
{
    add("apple\tApfel | apfel\t30.0\n");
    EXPECT_EQ(replacement("Apple", QStringLiteral("de")), QStringLiteral("Apfel"));
    EXPECT_EQ(replacement("apple", QStringLiteral("de")), QStringLiteral("Apfel"));
    EXPECT_EQ(replacement("apple", QStringLiteral("de-AT")), QStringLiteral("Apfel"));
}

TEST_F(GlossaryMatching, takesTheFirstCandidateWhereCaseSaysNothing)
{
    add("2nd\tDeuxième | deuxième\t30.0\nりんご\tPomme | pomme\t30.0\n"
        "monday\tLundi | 1er jour\t30.0\n");
    EXPECT_EQ(replacement("2nd"), QStringLiteral("Deuxième"));
    EXPECT_EQ(replacement("りんご"), QStringLiteral("Pomme"));
    EXPECT_EQ(replacement("monday"), QStringLiteral("Lundi"));
}

TEST_F(GlossaryMatching, takesTheHigherScoreOfSeveralDictionariesAndTheFirstOfEquals)
{
    add("mal\tbad\t21.0\nson\tnoise\t5.0\nonly\thier\t1.0\n");
    add("mal\tevil\t21.0\nson\tsound\t25.0\n");
    EXPECT_THAT(match(QStringLiteral("mal"))->hints, ElementsAre(QStringLiteral("bad")));
    EXPECT_THAT(match(QStringLiteral("son"))->hints, ElementsAre(QStringLiteral("sound")));
    EXPECT_THAT(match(QStringLiteral("only"))->hints, ElementsAre(QStringLiteral("hier")));
}

} // namespace
} // namespace zelvane::test
