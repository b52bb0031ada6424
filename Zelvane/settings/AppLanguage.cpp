#include "settings/AppLanguage.h"

#include "settings/Localization.h"

#include <algorithm>

namespace zelvane {

namespace {

struct Entry
{
    AppLanguage language;
    QString rawValue;
    QString ownName;
};

/// One row for each language, in the order of the enumeration.
const std::array<Entry, allAppLanguages.size()>& entries()
{
    static const std::array<Entry, allAppLanguages.size()> rows{{
        {AppLanguage::system, QStringLiteral("system"), LOCALIZATION_KEY("System")},
        {AppLanguage::english, QStringLiteral("en"), QStringLiteral("English")},
        {AppLanguage::russian, QStringLiteral("ru"), QStringLiteral("Русский")},
        {AppLanguage::chineseSimplified, QStringLiteral("zh-Hans"), QStringLiteral("中文（简体）")},
        {AppLanguage::spanish, QStringLiteral("es"), QStringLiteral("Español")},
        {AppLanguage::hindi, QStringLiteral("hi"), QStringLiteral("हिन्दी")},
        {AppLanguage::german, QStringLiteral("de"), QStringLiteral("Deutsch")},
        {AppLanguage::french, QStringLiteral("fr"), QStringLiteral("Français")},
    }};
    return rows;
}

const Entry& entry(AppLanguage language)
{
    return entries().at(static_cast<size_t>(language));
}

} // namespace

QString rawValue(AppLanguage language)
{
    return entry(language).rawValue;
}

AppLanguage appLanguageFromStoredName(const QString& name)
{
    const auto* found =
        std::ranges::find_if(entries(), [&](const Entry& row) { return row.rawValue == name; });
    return found != entries().end() ? found->language : AppLanguage::system;
}

QString displayName(AppLanguage language)
{
    if (language == AppLanguage::system) {
        return localizedText(entry(language).ownName);
    }
    return entry(language).ownName;
}

} // namespace zelvane
