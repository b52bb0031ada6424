#include "Services/SourceLayout.h"

#include <gtest/gtest.h>

namespace zelvane::test {
namespace {

constexpr auto prose = std::optional<StructuredFormat>();
constexpr auto json = std::optional(StructuredFormat::json);
constexpr auto markup = std::optional(StructuredFormat::markup);

struct FormatCase
{
    const char* name;
    QString text;
    std::optional<StructuredFormat> format;
};

class DetectedFormat : public ::testing::TestWithParam<FormatCase>
{
};

TEST_P(DetectedFormat, isWhatTheTextLooksLike)
{
    EXPECT_EQ(detectStructuredFormat(GetParam().text), GetParam().format);
}

INSTANTIATE_TEST_SUITE_P(
    SourceLayout, DetectedFormat,
    ::testing::Values(FormatCase{"empty", QString(), prose},
                      FormatCase{"blank", QStringLiteral(" \n\t"), prose},
                      FormatCase{"text", QStringLiteral("Good morning"), prose},
                      FormatCase{"object", QStringLiteral("\n {broken"), json},
                      FormatCase{"array", QStringLiteral("[1"), json},
                      FormatCase{"closedTag", QStringLiteral("<b>bold</b>"), markup},
                      FormatCase{"emptyTag", QStringLiteral(" <br/>"), markup},
                      FormatCase{"page", QStringLiteral("<HTML lang=de>"), markup},
                      FormatCase{"declaration", QStringLiteral("<?XML version='1.0'?>"), markup},
                      FormatCase{"comparison", QStringLiteral("a < b </"), prose},
                      FormatCase{"lessThan", QStringLiteral("<note"), prose},
                      FormatCase{"lessThanWithMember", QStringLiteral("<note \"a\":1"), json},
                      FormatCase{"member", QStringLiteral("the \"key\": value"), json},
                      FormatCase{"looseMember", QStringLiteral("{'key': 1"), json},
                      FormatCase{"quotedWord", QStringLiteral("say 'yes': now"), json},
                      FormatCase{"apostropheWithoutBlank", QStringLiteral("it's':no"), prose}),
    [](const auto& info) { return info.param.name; });

TEST(SourceLayout, twoPipesOrTwoTabsLayATextOut)
{
    EXPECT_TRUE(hasDelimiterLayout(QStringLiteral("a|b|c")));
    EXPECT_TRUE(hasDelimiterLayout(QStringLiteral("a\tb\tc")));
    EXPECT_TRUE(hasDelimiterLayout(QStringLiteral("a|b\nc|d")));
    EXPECT_FALSE(hasDelimiterLayout(QStringLiteral("a|b")));
    EXPECT_FALSE(hasDelimiterLayout(QStringLiteral("a\tb")));
    EXPECT_FALSE(hasDelimiterLayout(QStringLiteral("a|b\tc")));
    EXPECT_FALSE(hasDelimiterLayout(QString()));
}

} // namespace
} // namespace zelvane::test
