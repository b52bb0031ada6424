#include "Services/LocalModelLanguages.h"

#include "foundation/Text.h"

#include <algorithm>
#include <array>

namespace zelvane {

namespace {

struct LanguageName
{
    const char16_t* label; ///< in lower case
    const char16_t* name;
};

// What the models were trained on; neither "Modern Greek" nor "English" without a region is what
// readers are shown.
constexpr std::array languageNames{
    LanguageName{u"english", u"English"},
    LanguageName{u"english (us)", u"English"},
    LanguageName{u"american english", u"English"},
    LanguageName{u"english (uk)", u"English"},
    LanguageName{u"british english", u"English"},
    LanguageName{u"russian", u"Russian"},
    LanguageName{u"polish", u"Polish"},
    LanguageName{u"ukrainian", u"Ukrainian"},
    LanguageName{u"german", u"German"},
    LanguageName{u"standard german", u"German"},
    LanguageName{u"french", u"French"},
    LanguageName{u"spanish", u"Spanish"},
    LanguageName{u"italian", u"Italian"},
    LanguageName{u"portuguese", u"Portuguese"},
    LanguageName{u"chinese", u"Chinese"},
    LanguageName{u"chinese (simplified)", u"Chinese"},
    LanguageName{u"simplified chinese", u"Chinese"},
    LanguageName{u"mandarin chinese", u"Chinese"},
    LanguageName{u"mandarin", u"Chinese"},
    LanguageName{u"japanese", u"Japanese"},
    LanguageName{u"korean", u"Korean"},
    LanguageName{u"arabic", u"Arabic"},
    LanguageName{u"modern standard arabic", u"Arabic"},
    LanguageName{u"turkish", u"Turkish"},
    LanguageName{u"dutch", u"Dutch"},
    LanguageName{u"hindi", u"Hindi"},
    LanguageName{u"czech", u"Czech"},
    LanguageName{u"romanian", u"Romanian"},
    LanguageName{u"hungarian", u"Hungarian"},
    LanguageName{u"finnish", u"Finnish"},
    LanguageName{u"danish", u"Danish"},
    LanguageName{u"swedish", u"Swedish"},
    LanguageName{u"norwegian", u"Norwegian Bokmål"},
    LanguageName{u"greek", u"Modern Greek"},
    LanguageName{u"hebrew", u"Modern Hebrew"},
    LanguageName{u"persian", u"Persian"},
    LanguageName{u"farsi", u"Persian"},
    LanguageName{u"vietnamese", u"Vietnamese"},
    LanguageName{u"thai", u"Thai"},
    LanguageName{u"indonesian", u"Indonesian"},
    LanguageName{u"bulgarian", u"Bulgarian"},
    LanguageName{u"bengali", u"Bengali"},
    LanguageName{u"slovak", u"Slovak"},
};

} // namespace

QString localModelLanguageName(const QString& language)
{
    const QString label = text::lowerCased(language);
    const auto* known = std::ranges::find_if(
        languageNames, [&](const LanguageName& row) { return label == QStringView(row.label); });
    return known == languageNames.end() ? language : QString::fromUtf16(known->name);
}

} // namespace zelvane
