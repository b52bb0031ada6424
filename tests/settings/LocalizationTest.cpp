#include "settings/Localization.h"

#include "settings/AIProvider.h"
#include "settings/LanguageNames.h"
#include "settings/UserDefaults.h"

#include <gtest/gtest.h>

#include <thread>
#include <utility>
#include <vector>

namespace zelvane::test {
namespace {

const QString cancel = QStringLiteral("Cancel");

class LocalizationTest : public ::testing::Test
{
protected:
    ~LocalizationTest() override { installLocalization(nullptr); }

    void choose(const char* language)
    {
        defaults.setValue(QStringLiteral("zv.appLanguage"), QString::fromUtf8(language));
    }
    /// Follows a system with these languages.
    void followSystem(const QStringList& languages)
    {
        choose("system");
        installLocalization(&defaults, languages);
    }

    OverlayUserDefaults defaults;
};

TEST_F(LocalizationTest, leavesTextsInEnglishBeforeItIsInstalled)
{
    EXPECT_EQ(localizedText(cancel), QStringLiteral("Cancel"));
    EXPECT_EQ(interfaceLocale().language(), QLocale::English);
}

TEST_F(LocalizationTest, speaksEachLanguageOfTheInterface)
{
    installLocalization(&defaults, {});
    const std::vector<std::pair<const char*, const char*>> rows{
        {"en", "Cancel"}, {"ru", "Отмена"},    {"zh-Hans", "取消"}, {"es", "Cancelar"},
        {"hi", "रद्द करें"}, {"de", "Abbrechen"}, {"fr", "Annuler"}};
    for (const auto& [language, text] : rows) {
        choose(language);
        EXPECT_EQ(localizedText(cancel).toStdString(), text) << language;
    }
}

TEST_F(LocalizationTest, followsAChangeAtOnce)
{
    installLocalization(&defaults, {});
    choose("de");
    EXPECT_EQ(localizedText(cancel), QStringLiteral("Abbrechen"));
    choose("fr");
    EXPECT_EQ(localizedText(cancel), QStringLiteral("Annuler"));
    choose("tlh"); // unknown: as the system has it
    EXPECT_EQ(localizedText(cancel), QStringLiteral("Cancel"));
}

TEST_F(LocalizationTest, givesAKeyWithoutATranslationBack)
{
    installLocalization(&defaults, {});
    choose("de");
    EXPECT_EQ(localizedText(QStringLiteral("No such key")), QStringLiteral("No such key"));
    EXPECT_EQ(localizedText(QString()), QString());
}

TEST_F(LocalizationTest, followsTheFirstLanguageOfTheSystemThatItSpeaks)
{
    const std::vector<std::pair<QStringList, const char*>> rows{
        {{QStringLiteral("de-AT"), QStringLiteral("de")}, "Abbrechen"},
        {{QStringLiteral("pl-PL"), QStringLiteral("fr-FR")}, "Annuler"},
        {{QStringLiteral("en-GB"), QStringLiteral("de-DE")}, "Cancel"},
        {{QStringLiteral("zh-Hans-CN")}, "取消"},
        {{QStringLiteral("zh-CN"), QStringLiteral("zh")}, "取消"},
        {{QStringLiteral("zh-Hant-TW"), QStringLiteral("zh-TW"), QStringLiteral("ru-RU")},
         "Отмена"},
        {{QStringLiteral("zh-Hans-HK")}, "取消"},
        {{QStringLiteral("system")}, "Cancel"},
        {{QStringLiteral("C")}, "Cancel"},
        {{}, "Cancel"}};
    for (const auto& [languages, text] : rows) {
        followSystem(languages);
        EXPECT_EQ(localizedText(cancel).toStdString(), text) << languages.join(u' ').toStdString();
    }
}

TEST_F(LocalizationTest, followsTheSystemWhereNothingIsChosen)
{
    installLocalization(&defaults, {QStringLiteral("es-MX")});
    EXPECT_EQ(localizedText(cancel), QStringLiteral("Cancelar"));
}

TEST_F(LocalizationTest, hasTheLocaleOfItsLanguage)
{
    installLocalization(&defaults, {});
    choose("zh-Hans");
    EXPECT_EQ(interfaceLocale().language(), QLocale::Chinese);
    EXPECT_EQ(interfaceLocale().script(), QLocale::SimplifiedHanScript);
    choose("hi");
    EXPECT_EQ(interfaceLocale().language(), QLocale::Hindi);
    choose("system");
    EXPECT_EQ(interfaceLocale(), QLocale::system());
}

TEST_F(LocalizationTest, formatsInTheOrderOfTheTranslation)
{
    installLocalization(&defaults, {});
    choose("en");
    EXPECT_EQ(localizedFormat(QStringLiteral("%@ and %@, %lld %% %2$@ %1$@ %"),
                              {QStringLiteral("a%@"), QStringLiteral("b"), 1234567}),
              QStringLiteral("a%@ and b, 1234567 % b a%@ %"));
    EXPECT_EQ(localizedFormat(QStringLiteral("%@ %3$@ %x"), {}), QStringLiteral("%@ %3$@ %x"));
    choose("ru");
    EXPECT_EQ(localizedFormat(QStringLiteral("API error %lld: %@"), {500, QStringLiteral("x")}),
              QStringLiteral("Ошибка API 500: x"));
}

TEST_F(LocalizationTest, translatesWhatStandsInTables)
{
    installLocalization(&defaults, {});
    choose("de");
    EXPECT_EQ(pageLinkLabel(AIProvider::gemini), QStringLiteral("Gemini-API-Schlüssel holen"));
    EXPECT_EQ(
        providerDescription(AIProvider::mistral),
        QStringLiteral("Europäische KI-Modelle mit solider mehrsprachiger Leistung. Geeignet, "
                       "wenn Sie einen Anbieter aus der EU bevorzugen."));
}

TEST_F(LocalizationTest, namesLanguagesInTheLanguageOfTheInterface)
{
    installLocalization(&defaults, {});
    choose("de");
    EXPECT_EQ(localizedLanguageName(QStringLiteral("auto")), QStringLiteral("Beliebige Sprache"));
    EXPECT_EQ(localizedLanguageName(QStringLiteral("Scottish Gaelic")),
              QStringLiteral("Schottisch-Gälisch"));
    EXPECT_EQ(localizedLanguageName(QStringLiteral("mandarin")),
              QStringLiteral("Chinesisch (vereinfacht)"));
    // Spelled alike in both languages: the name goes by the code.
    EXPECT_EQ(localizedLanguageName(QStringLiteral("Hindi")), QStringLiteral("Hindi"));
    choose("fr");
    EXPECT_EQ(localizedLanguageName(QStringLiteral("nb")), QStringLiteral("Norvégien bokmål"));
    EXPECT_EQ(localizedLanguageName(QStringLiteral("xq")), QStringLiteral("xq"));
}

TEST_F(LocalizationTest, canBeAskedFromAnyThread)
{
    installLocalization(&defaults, {});
    std::vector<std::jthread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([] {
            for (int round = 0; round < 200; ++round) {
                const QString text = localizedText(cancel);
                EXPECT_TRUE(text == u"Cancel" || text == u"Отмена" || text == u"Abbrechen");
            }
        });
    }
    for (int round = 0; round < 200; ++round) {
        choose(round % 2 == 0 ? "de" : "ru");
    }
}

} // namespace
} // namespace zelvane::test
