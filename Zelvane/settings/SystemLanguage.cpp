#include "settings/SystemLanguage.h"

#include <QLocale>

#include <algorithm>

namespace zelvane {

namespace {

/// The region tells the two forms of English apart where the language alone doesn't.
std::optional<GlossaryLanguage> matchingLanguage(const QString& tag, const QString& region)
{
    const QList<GlossaryLanguage>& all = glossaryLanguages();
    const auto withCode = [&](const QString& code) {
        return std::ranges::find_if(all, [&](const GlossaryLanguage& language) {
            return language.code.compare(code, Qt::CaseInsensitive) == 0;
        });
    };
    const QString base = languageBase(tag);
    auto found = withCode(tag);
    if (found == all.end()) {
        found = withCode(base + u'-' + region);
    }
    if (found == all.end()) {
        found = std::ranges::find_if(all, [&](const GlossaryLanguage& language) {
            return languageBase(language.code) == base;
        });
    }
    return found != all.end() ? std::optional(*found) : std::nullopt;
}

} // namespace

SystemLocale currentSystemLocale()
{
    const QLocale system = QLocale::system();
    return {system.uiLanguages(), system.name(), system.name().section(u'_', -1)};
}

GlossaryLanguage systemLanguage(const SystemLocale& locale)
{
    const QString tag = locale.preferredLanguages.value(0, locale.identifier);
    return matchingLanguage(QString(tag).replace(u'_', u'-'), locale.region)
        .value_or(GlossaryLanguage{QStringLiteral("en-US"), QStringLiteral("English (US)")});
}

} // namespace zelvane
