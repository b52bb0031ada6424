#include "settings/SystemLanguage.h"

#include <gtest/gtest.h>

namespace zelvane::test {
namespace {

struct SystemCase
{
    const char* name;
    QStringList preferred;
    const char* identifier;
    const char* region;
    const char* expected;
};

class SystemLanguage : public ::testing::TestWithParam<SystemCase>
{
};

TEST_P(SystemLanguage, isFoundInTheTable)
{
    const SystemCase& system = GetParam();
    const GlossaryLanguage language = systemLanguage(
        {system.preferred, QString::fromUtf8(system.identifier), QString::fromUtf8(system.region)});
    EXPECT_EQ(language.name.toStdString(), system.expected);
}

QStringList tags(const char* text)
{
    return QString::fromUtf8(text).split(u' ', Qt::SkipEmptyParts);
}

INSTANTIATE_TEST_SUITE_P(
    Locales, SystemLanguage,
    ::testing::Values(
        SystemCase{"german", tags("de-DE en-US"), "de_DE", "DE", "German"},
        SystemCase{"austrian", tags("de-AT"), "de_AT", "AT", "German"},
        SystemCase{"american", tags("en-US"), "en_US", "US", "English (US)"},
        SystemCase{"british", tags("en-GB"), "en_GB", "GB", "English (UK)"},
        SystemCase{"englishInBritain", tags("en"), "en_GB", "GB", "English (UK)"},
        SystemCase{"englishInFrance", tags("en"), "en_FR", "FR", "English (US)"},
        SystemCase{"americanInBritain", tags("en-US"), "en_US", "GB", "English (US)"},
        SystemCase{"australian", tags("en-AU"), "en_AU", "AU", "English (US)"},
        SystemCase{"underscore", tags("pt_BR"), "pt_BR", "BR", "Portuguese"},
        SystemCase{"chinese", tags("zh-Hans-CN"), "zh_CN", "CN", "Chinese (Simplified)"},
        SystemCase{"threeLetters", tags("cnr-ME"), "cnr_ME", "ME", "Montenegrin"},
        SystemCase{"noPreference", {}, "ru_RU", "RU", "Russian"},
        SystemCase{"firstPreferenceUnknown", tags("tlh de-DE"), "de_DE", "DE", "English (US)"},
        SystemCase{"plainC", tags("C"), "C", "C", "English (US)"},
        SystemCase{"nothing", {}, "", "", "English (US)"}),
    [](const auto& info) { return info.param.name; });

TEST(CurrentSystemLocale, isThatOfTheProcess)
{
    // Tests run in the C locale, which no language of the table fits.
    EXPECT_EQ(systemLanguage(currentSystemLocale()).name, QStringLiteral("English (US)"));
}

} // namespace
} // namespace zelvane::test
