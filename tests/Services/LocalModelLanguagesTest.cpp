#include "Services/LocalModelLanguages.h"

#include <gtest/gtest.h>

namespace zelvane::test {
namespace {

struct NameCase
{
    const char16_t* label;
    const char16_t* name;
};

class LocalModelName : public ::testing::TestWithParam<NameCase>
{
};

TEST_P(LocalModelName, isTheOneThatTheModelsWereTrainedOn)
{
    const QString label = QString::fromUtf16(GetParam().label);
    EXPECT_EQ(localModelLanguageName(label), QString::fromUtf16(GetParam().name));
}

INSTANTIATE_TEST_SUITE_P(
    LocalModelLanguages, LocalModelName,
    ::testing::Values(
        NameCase{u"english", u"English"}, NameCase{u"English (US)", u"English"},
        NameCase{u"American English", u"English"}, NameCase{u"English (UK)", u"English"},
        NameCase{u"british english", u"English"}, NameCase{u"Russian", u"Russian"},
        NameCase{u"Polish", u"Polish"}, NameCase{u"Ukrainian", u"Ukrainian"},
        NameCase{u"German", u"German"}, NameCase{u"Standard German", u"German"},
        NameCase{u"French", u"French"}, NameCase{u"Spanish", u"Spanish"},
        NameCase{u"Italian", u"Italian"}, NameCase{u"Portuguese", u"Portuguese"},
        NameCase{u"Chinese", u"Chinese"}, NameCase{u"Chinese (Simplified)", u"Chinese"},
        NameCase{u"Simplified Chinese", u"Chinese"}, NameCase{u"Mandarin Chinese", u"Chinese"},
        NameCase{u"mandarin", u"Chinese"}, NameCase{u"Japanese", u"Japanese"},
        NameCase{u"Korean", u"Korean"}, NameCase{u"Arabic", u"Arabic"},
        NameCase{u"Modern Standard Arabic", u"Arabic"}, NameCase{u"Turkish", u"Turkish"},
        NameCase{u"Dutch", u"Dutch"}, NameCase{u"Hindi", u"Hindi"}, NameCase{u"Czech", u"Czech"},
        NameCase{u"Romanian", u"Romanian"}, NameCase{u"Hungarian", u"Hungarian"},
        NameCase{u"Finnish", u"Finnish"}, NameCase{u"Danish", u"Danish"},
        NameCase{u"Swedish", u"Swedish"}, NameCase{u"Norwegian", u"Norwegian Bokmål"},
        NameCase{u"GREEK", u"Modern Greek"}, NameCase{u"Hebrew", u"Modern Hebrew"},
        NameCase{u"Persian", u"Persian"}, NameCase{u"Farsi", u"Persian"},
        NameCase{u"Vietnamese", u"Vietnamese"}, NameCase{u"Thai", u"Thai"},
        NameCase{u"Indonesian", u"Indonesian"}, NameCase{u"Bulgarian", u"Bulgarian"},
        NameCase{u"Bengali", u"Bengali"}, NameCase{u"Slovak", u"Slovak"}));

TEST(LocalModelLanguages, leavesEveryOtherLabelAsItIs)
{
    for (const QString& label :
         {QStringLiteral("Klingon"), QStringLiteral("iCeLandic"), QStringLiteral(" German "),
          QStringLiteral("Any Language"), QStringLiteral("AUTO"), QString()}) {
        EXPECT_EQ(localModelLanguageName(label), label);
    }
}

} // namespace
} // namespace zelvane::test
