#include "settings/AppLanguage.h"
#include "settings/TranslationWindowSize.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

namespace zelvane::test {
namespace {

TEST(AppLanguages, areStoredByCodeAndShownByTheirOwnNames)
{
    const std::vector<std::tuple<AppLanguage, const char*, const char*>> rows{
        {AppLanguage::system, "system", "System"},
        {AppLanguage::english, "en", "English"},
        {AppLanguage::russian, "ru", "Русский"},
        {AppLanguage::chineseSimplified, "zh-Hans", "中文（简体）"},
        {AppLanguage::spanish, "es", "Español"},
        {AppLanguage::hindi, "hi", "हिन्दी"},
        {AppLanguage::german, "de", "Deutsch"},
        {AppLanguage::french, "fr", "Français"}};
    ASSERT_EQ(rows.size(), allAppLanguages.size());
    for (size_t i = 0; i < rows.size(); ++i) {
        const auto& [language, stored, shown] = rows[i];
        EXPECT_EQ(allAppLanguages[i], language);
        EXPECT_EQ(rawValue(language).toStdString(), stored);
        EXPECT_EQ(displayName(language).toStdString(), shown);
        EXPECT_EQ(appLanguageFromStoredName(QString::fromUtf8(stored)), language);
    }
    EXPECT_EQ(appLanguageFromStoredName(QStringLiteral("EN")), AppLanguage::system);
    EXPECT_EQ(appLanguageFromStoredName(QString()), AppLanguage::system);
}

TEST(WindowSizes, haveAStoredNameAndATitle)
{
    const std::vector<std::tuple<TranslationWindowSize, const char*, const char*>> rows{
        {TranslationWindowSize::extraSmall, "extraSmall", "Extra Small"},
        {TranslationWindowSize::small, "small", "Small"},
        {TranslationWindowSize::medium, "medium", "Medium"},
        {TranslationWindowSize::large, "large", "Large"},
        {TranslationWindowSize::extraLarge, "extraLarge", "Extra Large"}};
    ASSERT_EQ(rows.size(), allTranslationWindowSizes.size());
    for (size_t i = 0; i < rows.size(); ++i) {
        const auto& [size, stored, shown] = rows[i];
        EXPECT_EQ(allTranslationWindowSizes[i], size);
        EXPECT_EQ(rawValue(size).toStdString(), stored);
        EXPECT_EQ(title(size).toStdString(), shown);
        EXPECT_EQ(windowSizeFromStoredName(QString::fromUtf8(stored)), size);
    }
    EXPECT_EQ(windowSizeFromStoredName(QStringLiteral("Large")), TranslationWindowSize::medium);
}

} // namespace
} // namespace zelvane::test
