#include "glossary/GlossaryNames.h"

#include "foundation/Text.h"
#include "settings/Localization.h"

#include <algorithm>

namespace zelvane {

namespace {

/// The name by the translations of the interface; empty if they don't know it.
QString translated(const QString& name)
{
    const QString translation = localizedText(name);
    return translation == name ? QString() : translation;
}

QString englishName(const QString& code, const QLocale& locale)
{
    const QString known = text::languageName(QStringLiteral("en"), locale);
    const QString name =
        text::withFirstUpperCased(known.isEmpty() ? QStringLiteral("English") : known, locale);
    return name +
           (code == QStringLiteral("en-GB") ? QStringLiteral(" (UK)") : QStringLiteral(" (US)"));
}

/// The pieces of a language tag. The locale of programs for everybody stands for no language.
QStringList piecesOf(const QString& tag)
{
    if (tag == QStringLiteral("C") || tag == QStringLiteral("POSIX")) {
        return {};
    }
    return QString(tag).replace(u'_', u'-').split(u'-', Qt::SkipEmptyParts);
}

GlossaryLanguage rowWithCode(const QString& code)
{
    const auto& all = glossaryLanguages();
    return *std::ranges::find(all, code, &GlossaryLanguage::code);
}

} // namespace

QString glossaryDisplayName(const GlossaryLanguage& language, const QLocale& locale)
{
    if (language.code == QStringLiteral("en-US") || language.code == QStringLiteral("en-GB")) {
        return englishName(language.code, locale);
    }
    const QString base = languageBase(language.code);
    if (base == QStringLiteral("zh")) {
        const QString chinese = translated(LOCALIZATION_KEY("Chinese (Simplified)"));
        if (!chinese.isEmpty()) {
            return chinese;
        }
    }
    const QString ownName = translated(language.name);
    const QString known = text::languageName(base, locale);
    if (known.isEmpty()) {
        return ownName.isEmpty() ? language.name : ownName;
    }
    const bool isStillEnglish = locale.language() != QLocale::English &&
                                known.compare(language.name, Qt::CaseInsensitive) == 0;
    return isStillEnglish && !ownName.isEmpty() ? ownName
                                                : text::withFirstUpperCased(known, locale);
}

GlossaryLanguage glossarySystemLanguage(const SystemLocale& locale)
{
    const QStringList pieces = piecesOf(locale.preferredLanguages.value(0, locale.identifier));
    const QString code = pieces.isEmpty() ? QStringLiteral("en") : text::lowerCased(pieces.first());
    if (code == QStringLiteral("en")) {
        const QString region = text::upperCased(pieces.value(1, locale.region));
        const bool isBritish = region == QStringLiteral("GB") || region == QStringLiteral("UK");
        return rowWithCode(isBritish ? QStringLiteral("en-GB") : QStringLiteral("en-US"));
    }
    const auto& all = glossaryLanguages();
    const auto row = std::ranges::find_if(
        all, [&](const GlossaryLanguage& language) { return languageBase(language.code) == code; });
    if (row != all.end()) {
        return *row;
    }
    const QString name = text::languageName(code, QLocale(QLocale::English));
    return {code, name.isEmpty() ? code : name};
}

} // namespace zelvane
