#include "settings/GlossaryLanguage.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

namespace zelvane::test {
namespace {

using Row = std::pair<const char*, const char*>;

TEST(GlossaryLanguages, standInTheOrderInWhichTheyAreSearched)
{
    const std::vector<Row> rows{{"en-US", "English (US)"},
                                {"en-GB", "English (UK)"},
                                {"sq", "Albanian"},
                                {"eu", "Basque"},
                                {"be", "Belarusian"},
                                {"bs", "Bosnian"},
                                {"bg", "Bulgarian"},
                                {"ca", "Catalan"},
                                {"hr", "Croatian"},
                                {"cs", "Czech"},
                                {"da", "Danish"},
                                {"nl", "Dutch"},
                                {"et", "Estonian"},
                                {"fo", "Faroese"},
                                {"fi", "Finnish"},
                                {"fr", "French"},
                                {"gl", "Galician"},
                                {"de", "German"},
                                {"el", "Greek"},
                                {"hu", "Hungarian"},
                                {"is", "Icelandic"},
                                {"ga", "Irish"},
                                {"it", "Italian"},
                                {"la", "Latin"},
                                {"lv", "Latvian"},
                                {"lt", "Lithuanian"},
                                {"lb", "Luxembourgish"},
                                {"mk", "Macedonian"},
                                {"mt", "Maltese"},
                                {"cnr", "Montenegrin"},
                                {"no", "Norwegian"},
                                {"pl", "Polish"},
                                {"pt", "Portuguese"},
                                {"ro", "Romanian"},
                                {"ru", "Russian"},
                                {"gd", "Scottish Gaelic"},
                                {"sr", "Serbian"},
                                {"sk", "Slovak"},
                                {"sl", "Slovenian"},
                                {"es", "Spanish"},
                                {"sv", "Swedish"},
                                {"tr", "Turkish"},
                                {"uk", "Ukrainian"},
                                {"cy", "Welsh"},
                                {"ar", "Arabic"},
                                {"bn", "Bengali"},
                                {"zh", "Chinese (Simplified)"},
                                {"hi", "Hindi"},
                                {"id", "Indonesian"},
                                {"ja", "Japanese"},
                                {"ko", "Korean"},
                                {"th", "Thai"},
                                {"ur", "Urdu"},
                                {"vi", "Vietnamese"},
                                {"ku", "Kurdish"},
                                {"mg", "Malagasy"}};
    ASSERT_EQ(rows.size(), 56U);
    ASSERT_EQ(glossaryLanguages().size(), 56);
    for (size_t i = 0; i < rows.size(); ++i) {
        EXPECT_EQ(glossaryLanguages().at(qsizetype(i)).code.toStdString(), rows[i].first);
        EXPECT_EQ(glossaryLanguages().at(qsizetype(i)).name.toStdString(), rows[i].second);
    }
}

TEST(GlossaryLanguages, haveABaseCode)
{
    EXPECT_EQ(languageBase(QStringLiteral("en-GB")), QStringLiteral("en"));
    EXPECT_EQ(languageBase(QStringLiteral("DE")), QStringLiteral("de"));
    EXPECT_EQ(languageBase(QStringLiteral("-Pt-BR")), QStringLiteral("pt"));
    EXPECT_EQ(languageBase(QStringLiteral("--")), QStringLiteral("--"));
    EXPECT_EQ(languageBase(QString()), QString());
}

TEST(GlossaryLanguages, areResolvedFromNamesSpellingsAndCodes)
{
    const std::vector<Row> rows{{"German", "de"},
                                {" gERMAN\n", "de"},
                                {"English (UK)", "en-GB"},
                                {"english", "en-US"},
                                {"American English", "en-US"},
                                {"british english", "en-GB"},
                                {"chinese", "zh"},
                                {"Simplified Chinese", "zh"},
                                {"mandarin", "zh"},
                                {"mandarin chinese", "zh"},
                                {"EN_gb", "en-GB"},
                                {"en-US", "en-US"},
                                {"CNR", "cnr"},
                                {"de-AT", "de"},
                                {"pt_BR", "pt"},
                                {"en", "en-US"},
                                {"en-AU", "en-US"},
                                {"zh-Hant", "zh"},
                                {"-fr", "fr"},
                                {"", ""},
                                {"--", ""},
                                {"Chinese (Traditional)", ""},
                                {"Any Language", ""},
                                {"tlh", ""},
                                {"nb", ""}};
    for (const auto& [text, code] : rows) {
        const auto language = resolveGlossaryLanguage(QString::fromUtf8(text));
        EXPECT_EQ(language ? language->code.toStdString() : "", code) << text;
    }
}

} // namespace
} // namespace zelvane::test
