#include "cli/GlossaryOptions.h"

#include <gtest/gtest.h>

namespace zelvane::test {
namespace {

using Verb = GlossaryOptions::Verb;

std::expected<GlossaryOptions, QString> parsed(std::initializer_list<const char*> words)
{
    QStringList arguments;
    for (const char* word : words) {
        arguments << QString::fromUtf8(word);
    }
    return parseGlossaryOptions(arguments);
}

TEST(GlossaryOptions, takesLanguagesByNameAndByCode)
{
    const auto install = parsed({"install", "german", "en_GB"});
    ASSERT_TRUE(install);
    EXPECT_EQ(install->verb, Verb::install);
    EXPECT_EQ(install->package.source.name, QStringLiteral("German"));
    EXPECT_EQ(install->package.target.name, QStringLiteral("English (UK)"));
    const auto removal = parsed({"delete", "fr", "Chinese", "--json"});
    ASSERT_TRUE(removal);
    EXPECT_EQ(removal->verb, Verb::remove);
    EXPECT_EQ(removal->package.key(), QStringLiteral("fr-zh"));
    EXPECT_TRUE(removal->json);
}

TEST(GlossaryOptions, listsWithoutLanguages)
{
    EXPECT_EQ(parsed({"list"})->verb, Verb::list);
    EXPECT_FALSE(parsed({"list"})->json);
    EXPECT_TRUE(parsed({"list", "--json"})->json);
    EXPECT_EQ(parsed({"languages"})->verb, Verb::languages);
}

TEST(GlossaryOptions, looksUpAnArgumentOrStandardInput)
{
    const auto given = parsed({"lookup", "--to", "de", "--from=English (UK)", "apple"});
    ASSERT_TRUE(given);
    EXPECT_EQ(given->verb, Verb::lookup);
    EXPECT_EQ(given->source, QStringLiteral("English (UK)"));
    EXPECT_EQ(given->target, QStringLiteral("de"));
    EXPECT_EQ(given->text, QStringLiteral("apple"));
    EXPECT_EQ(parsed({"lookup", "--to=de"})->source, QStringLiteral("Any Language"));
    EXPECT_EQ(parsed({"lookup", "--to=de"})->text, std::nullopt);
    EXPECT_EQ(parsed({"lookup", "--to=de", "-"})->text, std::nullopt);
    EXPECT_EQ(parsed({"lookup", "--to=de", "--from", "auto"})->source, QStringLiteral("auto"));
    EXPECT_EQ(parsed({"lookup", "--to=de", "--", "--from"})->text, QStringLiteral("--from"));
}

TEST(GlossaryOptions, helpGoesBeforeAllElse)
{
    EXPECT_TRUE(parsed({"--help"})->help);
    EXPECT_TRUE(parsed({"-h"})->help);
    EXPECT_TRUE(parsed({"install", "--help"})->help);
    EXPECT_TRUE(parsed({"lookup", "-h"})->help);
}

TEST(GlossaryOptions, saysWhatIsWrong)
{
    const auto error = [](std::initializer_list<const char*> words) {
        return parsed(words).error().toStdString();
    };
    EXPECT_EQ(error({}), "glossary needs one of list, languages, install, delete and lookup");
    EXPECT_EQ(error({"remove"}), "unknown command \"glossary remove\"");
    EXPECT_EQ(error({"install"}), "glossary install needs two languages");
    EXPECT_EQ(error({"delete", "de"}), "glossary delete needs two languages");
    EXPECT_EQ(error({"install", "de", "en", "fr"}), "glossary install needs two languages");
    EXPECT_EQ(error({"install", "de", "Klingon"}), "there is no language \"Klingon\"");
    EXPECT_EQ(error({"install", "Any Language", "de"}), "there is no language \"Any Language\"");
    EXPECT_EQ(error({"install", "en-US", "en-GB"}), "a glossary needs two different languages");
    EXPECT_EQ(error({"list", "de"}), "glossary list takes no argument \"de\"");
    EXPECT_EQ(error({"list", "--to", "de"}), "only glossary lookup takes --from and --to");
    EXPECT_EQ(error({"list", "--all"}), "unknown option \"--all\"");
    EXPECT_EQ(error({"lookup", "apple"}), "glossary lookup needs --to LANGUAGE");
    EXPECT_EQ(error({"lookup", "--to"}), "--to needs a value");
    EXPECT_EQ(error({"lookup", "--to", "Any Language"}), "there is no language \"Any Language\"");
    EXPECT_EQ(error({"lookup", "--to=de", "--from", "x y"}), "there is no language \"x y\"");
    EXPECT_EQ(error({"lookup", "--to=de", "big", "apple"}),
              "more than one text: put it into quotation marks");
}

} // namespace
} // namespace zelvane::test
