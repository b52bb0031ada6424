#include "settings/GlossaryLanguage.h"

#include "foundation/Text.h"

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
        {QStringLiteral("en-US"), QStringLiteral("English (US)")},
        {QStringLiteral("en-GB"), QStringLiteral("English (UK)")},
        {QStringLiteral("sq"), QStringLiteral("Albanian")},
        {QStringLiteral("eu"), QStringLiteral("Basque")},
        {QStringLiteral("be"), QStringLiteral("Belarusian")},
        {QStringLiteral("bs"), QStringLiteral("Bosnian")},
        {QStringLiteral("bg"), QStringLiteral("Bulgarian")},
        {QStringLiteral("ca"), QStringLiteral("Catalan")},
        {QStringLiteral("hr"), QStringLiteral("Croatian")},
        {QStringLiteral("cs"), QStringLiteral("Czech")},
        {QStringLiteral("da"), QStringLiteral("Danish")},
        {QStringLiteral("nl"), QStringLiteral("Dutch")},
        {QStringLiteral("et"), QStringLiteral("Estonian")},
        {QStringLiteral("fo"), QStringLiteral("Faroese")},
        {QStringLiteral("fi"), QStringLiteral("Finnish")},
        {QStringLiteral("fr"), QStringLiteral("French")},
        {QStringLiteral("gl"), QStringLiteral("Galician")},
        {QStringLiteral("de"), QStringLiteral("German")},
        {QStringLiteral("el"), QStringLiteral("Greek")},
        {QStringLiteral("hu"), QStringLiteral("Hungarian")},
        {QStringLiteral("is"), QStringLiteral("Icelandic")},
        {QStringLiteral("ga"), QStringLiteral("Irish")},
        {QStringLiteral("it"), QStringLiteral("Italian")},
        {QStringLiteral("la"), QStringLiteral("Latin")},
        {QStringLiteral("lv"), QStringLiteral("Latvian")},
        {QStringLiteral("lt"), QStringLiteral("Lithuanian")},
        {QStringLiteral("lb"), QStringLiteral("Luxembourgish")},
        {QStringLiteral("mk"), QStringLiteral("Macedonian")},
        {QStringLiteral("mt"), QStringLiteral("Maltese")},
        {QStringLiteral("cnr"), QStringLiteral("Montenegrin")},
        {QStringLiteral("no"), QStringLiteral("Norwegian")},
        {QStringLiteral("pl"), QStringLiteral("Polish")},
        {QStringLiteral("pt"), QStringLiteral("Portuguese")},
        {QStringLiteral("ro"), QStringLiteral("Romanian")},
        {QStringLiteral("ru"), QStringLiteral("Russian")},
        {QStringLiteral("gd"), QStringLiteral("Scottish Gaelic")},
        {QStringLiteral("sr"), QStringLiteral("Serbian")},
        {QStringLiteral("sk"), QStringLiteral("Slovak")},
        {QStringLiteral("sl"), QStringLiteral("Slovenian")},
        {QStringLiteral("es"), QStringLiteral("Spanish")},
        {QStringLiteral("sv"), QStringLiteral("Swedish")},
        {QStringLiteral("tr"), QStringLiteral("Turkish")},
        {QStringLiteral("uk"), QStringLiteral("Ukrainian")},
        {QStringLiteral("cy"), QStringLiteral("Welsh")},
        {QStringLiteral("ar"), QStringLiteral("Arabic")},
        {QStringLiteral("bn"), QStringLiteral("Bengali")},
        {QStringLiteral("zh"), QStringLiteral("Chinese (Simplified)")},
        {QStringLiteral("hi"), QStringLiteral("Hindi")},
        {QStringLiteral("id"), QStringLiteral("Indonesian")},
        {QStringLiteral("ja"), QStringLiteral("Japanese")},
        {QStringLiteral("ko"), QStringLiteral("Korean")},
        {QStringLiteral("th"), QStringLiteral("Thai")},
        {QStringLiteral("ur"), QStringLiteral("Urdu")},
        {QStringLiteral("vi"), QStringLiteral("Vietnamese")},
        {QStringLiteral("ku"), QStringLiteral("Kurdish")},
        {QStringLiteral("mg"), QStringLiteral("Malagasy")},
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
