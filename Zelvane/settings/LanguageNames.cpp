#include "settings/LanguageNames.h"

#include "foundation/Text.h"
#include "settings/GlossaryLanguage.h"
#include "settings/Localization.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <span>

namespace zelvane {

namespace {

struct Spelling
{
    const char16_t* text;
    const char16_t* result;
};

/// The result of the row whose text is `text`, or none.
std::optional<QString> find(std::span<const Spelling> table, const QString& text)
{
    for (const Spelling& row : table) {
        if (text == QStringView(row.text)) {
            return QStringView(row.result).toString();
        }
    }
    return std::nullopt;
}

constexpr std::array canonicalSpellings{
    Spelling{u"chinese", u"Chinese (Simplified)"},
    Spelling{u"simplified chinese", u"Chinese (Simplified)"},
    Spelling{u"mandarin", u"Chinese (Simplified)"},
    Spelling{u"mandarin chinese", u"Chinese (Simplified)"},
    Spelling{u"english", u"English (US)"},
    Spelling{u"american english", u"English (US)"},
    Spelling{u"british english", u"English (UK)"},
};

// clang-format off
constexpr std::array shortCodes{
    Spelling{u"any language", u"ANY"}, Spelling{u"any", u"ANY"}, Spelling{u"auto", u"ANY"},
    Spelling{u"detect", u"ANY"}, Spelling{u"auto-detect", u"ANY"}, Spelling{u"autodetect", u"ANY"},
    Spelling{u"english (us)", u"EN-US"}, Spelling{u"american english", u"EN-US"},
    Spelling{u"english", u"EN-US"},
    Spelling{u"english (uk)", u"EN-GB"}, Spelling{u"british english", u"EN-GB"},
    Spelling{u"chinese", u"ZH"}, Spelling{u"chinese (simplified)", u"ZH"},
    Spelling{u"simplified chinese", u"ZH"}, Spelling{u"mandarin chinese", u"ZH"},
    Spelling{u"mandarin", u"ZH"},
    Spelling{u"arabic", u"AR"}, Spelling{u"modern standard arabic", u"AR"},
    Spelling{u"german", u"DE"}, Spelling{u"standard german", u"DE"},
    Spelling{u"hindi", u"HI"}, Spelling{u"spanish", u"ES"}, Spelling{u"french", u"FR"},
    Spelling{u"bengali", u"BN"}, Spelling{u"portuguese", u"PT"}, Spelling{u"indonesian", u"ID"},
    Spelling{u"urdu", u"UR"}, Spelling{u"russian", u"RU"}, Spelling{u"japanese", u"JA"},
    Spelling{u"vietnamese", u"VI"}, Spelling{u"turkish", u"TR"}, Spelling{u"korean", u"KO"},
    Spelling{u"italian", u"IT"}, Spelling{u"thai", u"TH"}, Spelling{u"polish", u"PL"},
    Spelling{u"ukrainian", u"UK"}, Spelling{u"albanian", u"SQ"}, Spelling{u"basque", u"EU"},
    Spelling{u"belarusian", u"BE"}, Spelling{u"bosnian", u"BS"}, Spelling{u"bulgarian", u"BG"},
    Spelling{u"catalan", u"CA"}, Spelling{u"croatian", u"HR"}, Spelling{u"czech", u"CS"},
    Spelling{u"danish", u"DA"}, Spelling{u"dutch", u"NL"}, Spelling{u"estonian", u"ET"},
    Spelling{u"faroese", u"FO"}, Spelling{u"finnish", u"FI"}, Spelling{u"galician", u"GL"},
    Spelling{u"greek", u"EL"}, Spelling{u"hungarian", u"HU"}, Spelling{u"icelandic", u"IS"},
    Spelling{u"irish", u"GA"}, Spelling{u"latin", u"LA"}, Spelling{u"latvian", u"LV"},
    Spelling{u"lithuanian", u"LT"}, Spelling{u"luxembourgish", u"LB"},
    Spelling{u"macedonian", u"MK"}, Spelling{u"maltese", u"MT"},
    Spelling{u"montenegrin", u"CNR"}, Spelling{u"norwegian", u"NO"},
    Spelling{u"romanian", u"RO"}, Spelling{u"scottish gaelic", u"GD"},
    Spelling{u"serbian", u"SR"}, Spelling{u"slovak", u"SK"}, Spelling{u"slovenian", u"SL"},
    Spelling{u"swedish", u"SV"}, Spelling{u"welsh", u"CY"},
};
// clang-format on

} // namespace

const QStringList& offeredLanguages()
{
    static const QStringList languages{
        QStringLiteral("Any Language"),
        QStringLiteral("English (US)"),
        QStringLiteral("English (UK)"),
        QStringLiteral("Albanian"),
        QStringLiteral("Basque"),
        QStringLiteral("Belarusian"),
        QStringLiteral("Bosnian"),
        QStringLiteral("Bulgarian"),
        QStringLiteral("Catalan"),
        QStringLiteral("Croatian"),
        QStringLiteral("Czech"),
        QStringLiteral("Danish"),
        QStringLiteral("Dutch"),
        QStringLiteral("Estonian"),
        QStringLiteral("Faroese"),
        QStringLiteral("Finnish"),
        QStringLiteral("French"),
        QStringLiteral("Galician"),
        QStringLiteral("German"),
        QStringLiteral("Greek"),
        QStringLiteral("Hungarian"),
        QStringLiteral("Icelandic"),
        QStringLiteral("Irish"),
        QStringLiteral("Italian"),
        QStringLiteral("Latin"),
        QStringLiteral("Latvian"),
        QStringLiteral("Lithuanian"),
        QStringLiteral("Luxembourgish"),
        QStringLiteral("Macedonian"),
        QStringLiteral("Maltese"),
        QStringLiteral("Montenegrin"),
        QStringLiteral("Norwegian"),
        QStringLiteral("Polish"),
        QStringLiteral("Portuguese"),
        QStringLiteral("Romanian"),
        QStringLiteral("Russian"),
        QStringLiteral("Scottish Gaelic"),
        QStringLiteral("Serbian"),
        QStringLiteral("Slovak"),
        QStringLiteral("Slovenian"),
        QStringLiteral("Spanish"),
        QStringLiteral("Swedish"),
        QStringLiteral("Turkish"),
        QStringLiteral("Ukrainian"),
        QStringLiteral("Welsh"),
        QStringLiteral("Arabic"),
        QStringLiteral("Bengali"),
        QStringLiteral("Chinese (Simplified)"),
        QStringLiteral("Hindi"),
        QStringLiteral("Indonesian"),
        QStringLiteral("Japanese"),
        QStringLiteral("Korean"),
        QStringLiteral("Thai"),
        QStringLiteral("Urdu"),
        QStringLiteral("Vietnamese"),
    };
    return languages;
}

QStringList targetLanguages()
{
    QStringList targets;
    std::ranges::remove_copy_if(offeredLanguages(), std::back_inserter(targets), isAutoSource);
    return targets;
}

bool isAutoSource(const QString& language)
{
    const QString text = text::lowerCased(text::trimmed(language));
    return text == u"any language" || text == u"any" || text == u"auto" || text == u"auto-detect" ||
           text == u"autodetect" || text == u"detect";
}

QString canonicalSpelling(const QString& language)
{
    return find(canonicalSpellings, text::lowerCased(text::trimmed(language))).value_or(language);
}

QString localizedLanguageName(const QString& language)
{
    if (isAutoSource(language)) {
        return localizedText(QStringLiteral("Any Language"));
    }
    if (const auto known = resolveGlossaryLanguage(language)) {
        const QString name = localizedText(known->name);
        if (name != language) {
            return name;
        }
    }
    const QString code = text::lowerCased(shortCode(language)).section(u'-', 0, 0);
    if (text::characterCount(code) != 2) {
        return language;
    }
    const QLocale locale = interfaceLocale();
    const QString name = text::languageName(code, locale);
    return name.isEmpty() ? language : text::withFirstUpperCased(name, locale);
}

QString shortCode(const QString& language)
{
    if (const auto code = find(shortCodes, text::lowerCased(language))) {
        return *code;
    }
    const QString start = text::firstCharacters(text::trimmed(language), 2);
    return start.isEmpty() ? QStringLiteral("?") : text::upperCased(start);
}

} // namespace zelvane
