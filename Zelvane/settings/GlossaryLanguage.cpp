#include "settings/GlossaryLanguage.h"

#include "foundation/Text.h"
#include "settings/Localization.h"

#include <algorithm>

namespace zelvane {

namespace {

template <typename Predicate>
std::optional<GlossaryLanguage> firstLanguage(Predicate matches)
{
    const QList<GlossaryLanguage>& all = glossaryLanguages();
    const auto found = std::ranges::find_if(all, matches);
    return found != all.end() ? std::optional(*found) : std::nullopt;
}

std::optional<GlossaryLanguage> languageWithCode(const QString& code)
{
    return firstLanguage([&](const GlossaryLanguage& language) {
        return language.code.compare(code, Qt::CaseInsensitive) == 0;
    });
}

/// The code behind spellings that are no language's name in the table.
QString codeOfOtherSpelling(const QString& lowerCased)
{
    if (lowerCased == u"english" || lowerCased == u"american english") {
        return QStringLiteral("en-US");
    }
    if (lowerCased == u"british english") {
        return QStringLiteral("en-GB");
    }
    if (lowerCased == u"chinese" || lowerCased == u"simplified chinese" ||
        lowerCased == u"mandarin" || lowerCased == u"mandarin chinese") {
        return QStringLiteral("zh");
    }
    return {};
}

} // namespace

const QList<GlossaryLanguage>& glossaryLanguages()
{
    static const QList<GlossaryLanguage> languages{
        {QStringLiteral("en-US"), LOCALIZATION_KEY("English (US)")},
        {QStringLiteral("en-GB"), LOCALIZATION_KEY("English (UK)")},
        {QStringLiteral("sq"), LOCALIZATION_KEY("Albanian")},
        {QStringLiteral("eu"), LOCALIZATION_KEY("Basque")},
        {QStringLiteral("be"), LOCALIZATION_KEY("Belarusian")},
        {QStringLiteral("bs"), LOCALIZATION_KEY("Bosnian")},
        {QStringLiteral("bg"), LOCALIZATION_KEY("Bulgarian")},
        {QStringLiteral("ca"), LOCALIZATION_KEY("Catalan")},
        {QStringLiteral("hr"), LOCALIZATION_KEY("Croatian")},
        {QStringLiteral("cs"), LOCALIZATION_KEY("Czech")},
        {QStringLiteral("da"), LOCALIZATION_KEY("Danish")},
        {QStringLiteral("nl"), LOCALIZATION_KEY("Dutch")},
        {QStringLiteral("et"), LOCALIZATION_KEY("Estonian")},
        {QStringLiteral("fo"), LOCALIZATION_KEY("Faroese")},
        {QStringLiteral("fi"), LOCALIZATION_KEY("Finnish")},
        {QStringLiteral("fr"), LOCALIZATION_KEY("French")},
        {QStringLiteral("gl"), LOCALIZATION_KEY("Galician")},
        {QStringLiteral("de"), LOCALIZATION_KEY("German")},
        {QStringLiteral("el"), LOCALIZATION_KEY("Greek")},
        {QStringLiteral("hu"), LOCALIZATION_KEY("Hungarian")},
        {QStringLiteral("is"), LOCALIZATION_KEY("Icelandic")},
        {QStringLiteral("ga"), LOCALIZATION_KEY("Irish")},
        {QStringLiteral("it"), LOCALIZATION_KEY("Italian")},
        {QStringLiteral("la"), LOCALIZATION_KEY("Latin")},
        {QStringLiteral("lv"), LOCALIZATION_KEY("Latvian")},
        {QStringLiteral("lt"), LOCALIZATION_KEY("Lithuanian")},
        {QStringLiteral("lb"), LOCALIZATION_KEY("Luxembourgish")},
        {QStringLiteral("mk"), LOCALIZATION_KEY("Macedonian")},
        {QStringLiteral("mt"), LOCALIZATION_KEY("Maltese")},
        {QStringLiteral("cnr"), LOCALIZATION_KEY("Montenegrin")},
        {QStringLiteral("no"), LOCALIZATION_KEY("Norwegian")},
        {QStringLiteral("pl"), LOCALIZATION_KEY("Polish")},
        {QStringLiteral("pt"), LOCALIZATION_KEY("Portuguese")},
        {QStringLiteral("ro"), LOCALIZATION_KEY("Romanian")},
        {QStringLiteral("ru"), LOCALIZATION_KEY("Russian")},
        {QStringLiteral("gd"), LOCALIZATION_KEY("Scottish Gaelic")},
        {QStringLiteral("sr"), LOCALIZATION_KEY("Serbian")},
        {QStringLiteral("sk"), LOCALIZATION_KEY("Slovak")},
        {QStringLiteral("sl"), LOCALIZATION_KEY("Slovenian")},
        {QStringLiteral("es"), LOCALIZATION_KEY("Spanish")},
        {QStringLiteral("sv"), LOCALIZATION_KEY("Swedish")},
        {QStringLiteral("tr"), LOCALIZATION_KEY("Turkish")},
        {QStringLiteral("uk"), LOCALIZATION_KEY("Ukrainian")},
        {QStringLiteral("cy"), LOCALIZATION_KEY("Welsh")},
        {QStringLiteral("ar"), LOCALIZATION_KEY("Arabic")},
        {QStringLiteral("bn"), LOCALIZATION_KEY("Bengali")},
        {QStringLiteral("zh"), LOCALIZATION_KEY("Chinese (Simplified)")},
        {QStringLiteral("hi"), LOCALIZATION_KEY("Hindi")},
        {QStringLiteral("id"), LOCALIZATION_KEY("Indonesian")},
        {QStringLiteral("ja"), LOCALIZATION_KEY("Japanese")},
        {QStringLiteral("ko"), LOCALIZATION_KEY("Korean")},
        {QStringLiteral("th"), LOCALIZATION_KEY("Thai")},
        {QStringLiteral("ur"), LOCALIZATION_KEY("Urdu")},
        {QStringLiteral("vi"), LOCALIZATION_KEY("Vietnamese")},
        {QStringLiteral("ku"), LOCALIZATION_KEY("Kurdish")},
        {QStringLiteral("mg"), LOCALIZATION_KEY("Malagasy")},
    };
    return languages;
}

QString languageBase(const QString& code)
{
    const QStringList pieces = code.split(u'-', Qt::SkipEmptyParts);
    return text::lowerCased(pieces.isEmpty() ? code : pieces.first());
}

std::optional<GlossaryLanguage> resolveGlossaryLanguage(const QString& text)
{
    const QString trimmed = text::trimmed(text);
    const auto named = firstLanguage([&](const GlossaryLanguage& language) {
        return language.name.compare(trimmed, Qt::CaseInsensitive) == 0;
    });
    if (named) {
        return named;
    }
    const QString otherSpelling = codeOfOtherSpelling(text::lowerCased(trimmed));
    if (!otherSpelling.isEmpty()) {
        return languageWithCode(otherSpelling);
    }
    const QString code = QString(trimmed).replace(u'_', u'-');
    if (const auto exact = languageWithCode(code)) {
        return exact;
    }
    const QStringList pieces = code.split(u'-', Qt::SkipEmptyParts);
    if (pieces.isEmpty()) {
        return std::nullopt;
    }
    const QString base = text::lowerCased(pieces.first());
    return firstLanguage(
        [&](const GlossaryLanguage& language) { return languageBase(language.code) == base; });
}

} // namespace zelvane
