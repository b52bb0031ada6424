#include "glossary/GlossaryNames.h"

#include "settings/Localization.h"
#include "settings/UserDefaults.h"

#include <gtest/gtest.h>

namespace zelvane::test {
namespace {

/// The name with the interface in a language such as "de".
std::string nameIn(const char* interface, const char* language)
{
    OverlayUserDefaults defaults;
    defaults.setValue(QStringLiteral("zv.appLanguage"), QString::fromUtf8(interface));
    installLocalization(&defaults, {});
    const auto known = resolveGlossaryLanguage(QString::fromUtf8(language));
    const QString name = glossaryDisplayName(known.value_or(GlossaryLanguage{}), interfaceLocale());
    installLocalization(nullptr);
    return name.toStdString();
}

TEST(GlossaryDisplayName, tellsTheFormsOfEnglishApart)
{
    EXPECT_EQ(nameIn("en", "en-US"), "English (US)");
    EXPECT_EQ(nameIn("en", "en-GB"), "English (UK)");
    EXPECT_EQ(nameIn("de", "en-GB"), "Englisch (UK)");
    EXPECT_EQ(nameIn("fr", "en-US"), "Anglais (US)");
    EXPECT_EQ(nameIn("ru", "en-US"), "Английский (US)");
}

TEST(GlossaryDisplayName, takesChineseFromTheInterfaceIfItCan)
{
    EXPECT_EQ(nameIn("de", "zh"), "Chinesisch (vereinfacht)");
    EXPECT_EQ(nameIn("en", "zh"), "Chinese");
}

TEST(GlossaryDisplayName, isTheLocalesNameWithACapital)
{
    EXPECT_EQ(nameIn("en", "de"), "German");
    EXPECT_EQ(nameIn("es", "de"), "Alemán");
    EXPECT_EQ(nameIn("ru", "fr"), "Французский");
    EXPECT_EQ(nameIn("zh-Hans", "de"), "德语");
    EXPECT_EQ(nameIn("hi", "pl"), "पोलिश");
    EXPECT_EQ(nameIn("en", "no"), "Norwegian");
}

TEST(GlossaryDisplayName, fallsBackToTheInterfaceWhereTheLocaleHasTheEnglishName)
{
    // A language of the interface for which the locale's data have no name of this language.
    const GlossaryLanguage language{QStringLiteral("cnr"), QStringLiteral("Montenegrin")};
    OverlayUserDefaults defaults;
    defaults.setValue(QStringLiteral("zv.appLanguage"), QStringLiteral("de"));
    installLocalization(&defaults, {});
    const QString translation = localizedText(language.name);
    const QString name = glossaryDisplayName(language, QLocale(QLocale::German));
    const QString elsewhere = glossaryDisplayName(language, QLocale(QLocale::Zulu));
    installLocalization(nullptr);
    EXPECT_EQ(translation, QStringLiteral("Montenegrinisch"));
    EXPECT_EQ(name, translation);
    EXPECT_EQ(elsewhere, translation);
}

TEST(GlossaryDisplayName, fallsBackToTheNameItself)
{
    EXPECT_EQ(glossaryDisplayName({QStringLiteral("qaa"), QStringLiteral("Martian")},
                                  QLocale(QLocale::German)),
              QStringLiteral("Martian"));
}

struct SystemCase
{
    const char* tags;
    const char* identifier;
    const char* region;
    const char* code;
    const char* name;
};

class GlossarySystemLanguage : public ::testing::TestWithParam<SystemCase>
{
};

TEST_P(GlossarySystemLanguage, isTheFirstThatTheUserPrefers)
{
    const SystemCase& system = GetParam();
    const GlossaryLanguage language = glossarySystemLanguage(
        {QString::fromUtf8(system.tags).split(u' ', Qt::SkipEmptyParts),
         QString::fromUtf8(system.identifier), QString::fromUtf8(system.region)});
    EXPECT_EQ(language.code.toStdString(), system.code);
    EXPECT_EQ(language.name.toStdString(), system.name);
}

INSTANTIATE_TEST_SUITE_P(
    Locales, GlossarySystemLanguage,
    ::testing::Values(SystemCase{"de-AT en-US", "en_US", "US", "de", "German"},
                      SystemCase{"", "fr_CA", "CA", "fr", "French"},
                      SystemCase{"en-GB", "de_DE", "DE", "en-GB", "English (UK)"},
                      SystemCase{"en_gb", "de_DE", "DE", "en-GB", "English (UK)"},
                      SystemCase{"en-UK", "de_DE", "DE", "en-GB", "English (UK)"},
                      SystemCase{"en", "en_GB", "GB", "en-GB", "English (UK)"},
                      SystemCase{"en-US", "en_GB", "GB", "en-US", "English (US)"},
                      SystemCase{"en", "en_AU", "AU", "en-US", "English (US)"},
                      SystemCase{"en", "en", "", "en-US", "English (US)"},
                      SystemCase{"zh-Hans-CN", "", "", "zh", "Chinese (Simplified)"},
                      SystemCase{"PT-BR", "", "", "pt", "Portuguese"},
                      SystemCase{"sw-KE", "", "", "sw", "Swahili"},
                      SystemCase{"qaa", "", "", "qaa", "qaa"},
                      SystemCase{"-", "", "", "en-US", "English (US)"},
                      SystemCase{"", "", "", "en-US", "English (US)"},
                      SystemCase{"C", "C", "C", "en-US", "English (US)"},
                      SystemCase{"", "POSIX", "", "en-US", "English (US)"}));

} // namespace
} // namespace zelvane::test
