#include "settings/LanguageNames.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

namespace zelvane::test {
namespace {

TEST(Languages, areOfferedInTheirOrder)
{
    const std::vector<const char*> expected{
        "Any Language",    "English (US)", "English (UK)",
        "Albanian",        "Basque",       "Belarusian",
        "Bosnian",         "Bulgarian",    "Catalan",
        "Croatian",        "Czech",        "Danish",
        "Dutch",           "Estonian",     "Faroese",
        "Finnish",         "French",       "Galician",
        "German",          "Greek",        "Hungarian",
        "Icelandic",       "Irish",        "Italian",
        "Latin",           "Latvian",      "Lithuanian",
        "Luxembourgish",   "Macedonian",   "Maltese",
        "Montenegrin",     "Norwegian",    "Polish",
        "Portuguese",      "Romanian",     "Russian",
        "Scottish Gaelic", "Serbian",      "Slovak",
        "Slovenian",       "Spanish",      "Swedish",
        "Turkish",         "Ukrainian",    "Welsh",
        "Arabic",          "Bengali",      "Chinese (Simplified)",
        "Hindi",           "Indonesian",   "Japanese",
        "Korean",          "Thai",         "Urdu",
        "Vietnamese"};
    QStringList names;
    for (const char* name : expected) {
        names += QString::fromUtf8(name);
    }
    EXPECT_EQ(names.size(), 55);
    EXPECT_EQ(offeredLanguages(), names);
    EXPECT_EQ(targetLanguages(), names.sliced(1));
}

TEST(Languages, areDetectedForTheAutomaticTextsOnly)
{
    for (const char* text : {"any language", "any", "auto", "auto-detect", "autodetect", "detect",
                             "Any Language", "AUTO", " auto", "\tDetect\n", "\u00a0any\u3000"}) {
        EXPECT_TRUE(isAutoSource(QString::fromUtf8(text))) << text;
    }
    for (const char* text : {"", " ", "auto detect", "automatic", "English", "any  language"}) {
        EXPECT_FALSE(isAutoSource(QString::fromUtf8(text))) << text;
    }
}

using Row = std::pair<const char*, const char*>;

TEST(Languages, areKeptUnderTheirCanonicalSpelling)
{
    const std::vector<Row> rows{
        {"chinese", "Chinese (Simplified)"},
        {"simplified chinese", "Chinese (Simplified)"},
        {"mandarin", "Chinese (Simplified)"},
        {"mandarin chinese", "Chinese (Simplified)"},
        {"english", "English (US)"},
        {"american english", "English (US)"},
        {"british english", "English (UK)"},
        {" Mandarin\n", "Chinese (Simplified)"},
        {"ENGLISH", "English (US)"},
        // Anything else stays as it is, blanks included.
        {" Klingon ", " Klingon "},
        {"english (us)", "english (us)"},
        {"Chinese (Traditional)", "Chinese (Traditional)"},
        {"", ""},
    };
    for (const auto& [text, expected] : rows) {
        EXPECT_EQ(canonicalSpelling(QString::fromUtf8(text)).toStdString(), expected) << text;
    }
}

TEST(Languages, haveShortCodes)
{
    const std::vector<Row> rows{{"any language", "ANY"},
                                {"any", "ANY"},
                                {"auto", "ANY"},
                                {"detect", "ANY"},
                                {"auto-detect", "ANY"},
                                {"autodetect", "ANY"},
                                {"english (us)", "EN-US"},
                                {"american english", "EN-US"},
                                {"english", "EN-US"},
                                {"english (uk)", "EN-GB"},
                                {"british english", "EN-GB"},
                                {"chinese", "ZH"},
                                {"chinese (simplified)", "ZH"},
                                {"simplified chinese", "ZH"},
                                {"mandarin chinese", "ZH"},
                                {"mandarin", "ZH"},
                                {"arabic", "AR"},
                                {"modern standard arabic", "AR"},
                                {"german", "DE"},
                                {"standard german", "DE"},
                                {"hindi", "HI"},
                                {"spanish", "ES"},
                                {"french", "FR"},
                                {"bengali", "BN"},
                                {"portuguese", "PT"},
                                {"indonesian", "ID"},
                                {"urdu", "UR"},
                                {"russian", "RU"},
                                {"japanese", "JA"},
                                {"vietnamese", "VI"},
                                {"turkish", "TR"},
                                {"korean", "KO"},
                                {"italian", "IT"},
                                {"thai", "TH"},
                                {"polish", "PL"},
                                {"ukrainian", "UK"},
                                {"albanian", "SQ"},
                                {"basque", "EU"},
                                {"belarusian", "BE"},
                                {"bosnian", "BS"},
                                {"bulgarian", "BG"},
                                {"catalan", "CA"},
                                {"croatian", "HR"},
                                {"czech", "CS"},
                                {"danish", "DA"},
                                {"dutch", "NL"},
                                {"estonian", "ET"},
                                {"faroese", "FO"},
                                {"finnish", "FI"},
                                {"galician", "GL"},
                                {"greek", "EL"},
                                {"hungarian", "HU"},
                                {"icelandic", "IS"},
                                {"irish", "GA"},
                                {"latin", "LA"},
                                {"latvian", "LV"},
                                {"lithuanian", "LT"},
                                {"luxembourgish", "LB"},
                                {"macedonian", "MK"},
                                {"maltese", "MT"},
                                {"montenegrin", "CNR"},
                                {"norwegian", "NO"},
                                {"romanian", "RO"},
                                {"scottish gaelic", "GD"},
                                {"serbian", "SR"},
                                {"slovak", "SK"},
                                {"slovenian", "SL"},
                                {"swedish", "SV"},
                                {"welsh", "CY"},
                                {"German", "DE"},
                                {"ENGLISH (UK)", "EN-GB"}};
    for (const auto& [text, expected] : rows) {
        EXPECT_EQ(shortCode(QString::fromUtf8(text)).toStdString(), expected) << text;
    }
}

TEST(Languages, outsideTheTableAreLabelledByTheirFirstTwoCharacters)
{
    const std::vector<Row> rows{
        {"Chinese (Traditional)", "CH"},
        {" auto", "AU"}, // the table is searched without trimming
        {"auto ", "AU"},
        {"\tklingon\n", "KL"},
        {"x", "X"},
        {"straße", "ST"},
        {"ßa", "SSA"},
        {"e\u0301lfico", "E\u0301L"},
        {"", "?"},
        {" \n", "?"},
    };
    for (const auto& [text, expected] : rows) {
        EXPECT_EQ(shortCode(QString::fromUtf8(text)).toStdString(), expected) << text;
    }
}

TEST(Languages, areNamedInTheInterfaceLanguage)
{
    const std::vector<Row> rows{
        {" AUTO ", "Any Language"},
        {"mandarin", "Chinese (Simplified)"},
        {"de-AT", "German"},
        // A name that the lookup leaves as it is goes by its code.
        {"German", "German"},
        {"English (UK)", "English"},
        {"Montenegrin", "Montenegrin"},
        // What nothing knows stays as it was typed.
        {"xq", "xq"},
        {"", ""},
    };
    for (const auto& [text, expected] : rows) {
        EXPECT_EQ(localizedLanguageName(QString::fromUtf8(text)).toStdString(), expected) << text;
    }
}

} // namespace
} // namespace zelvane::test
