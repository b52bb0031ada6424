#include "ui/result/TranslationResultModel.h"

#include <gtest/gtest.h>

namespace zelvane::test {
namespace {

const TranslationResult result{QStringLiteral("Hello"), QStringLiteral("Hallo"),
                               QStringLiteral("total 12 ms")};

TEST(TranslationResultModel, keepsTheDiagnosticsWithTheResult)
{
    const TranslationResultModel model(result, [](const QString&) {});
    EXPECT_EQ(model.result(), result);
}

TEST(TranslationResultModel, copiesTheTranslationAndSaysSo)
{
    QString clipboard;
    TranslationResultModel model(result, [&](const QString& text) { clipboard = text; });
    EXPECT_FALSE(model.copied());
    EXPECT_EQ(model.copyLabel(), QStringLiteral("Copy"));
    EXPECT_EQ(model.statusText(), QString());

    model.copy();
    EXPECT_EQ(clipboard, QStringLiteral("Hallo"));
    EXPECT_TRUE(model.copied());
    EXPECT_EQ(model.copyLabel(), QStringLiteral("Copied"));
    EXPECT_EQ(model.statusText(), QStringLiteral("Copied"));
}

TEST(TranslationResultModel, copiesAgainWhatHasBeenCopied)
{
    int copies = 0;
    TranslationResultModel model(result, [&](const QString&) { ++copies; });
    model.copy();
    model.copy();
    EXPECT_EQ(copies, 2);
}

struct SizeCase
{
    TranslationWindowSize size;
    int width;
    int sectionHeight;
};

class ResultSizes : public ::testing::TestWithParam<SizeCase>
{
};

TEST_P(ResultSizes, areThoseOfTheChosenSize)
{
    const SizeCase& c = GetParam();
    EXPECT_EQ(resultWidth(c.size, SheetLayoutTokens()), c.width);
    EXPECT_EQ(resultSectionHeight(c.size), c.sectionHeight);
    SheetLayoutTokens wider;
    wider.resultWidth = 560;
    EXPECT_EQ(resultWidth(c.size, wider), c.width + 60);
}

INSTANTIATE_TEST_SUITE_P(All, ResultSizes,
                         ::testing::Values(SizeCase{TranslationWindowSize::extraSmall, 400, 90},
                                           SizeCase{TranslationWindowSize::small, 460, 115},
                                           SizeCase{TranslationWindowSize::medium, 520, 140},
                                           SizeCase{TranslationWindowSize::large, 660, 190},
                                           SizeCase{TranslationWindowSize::extraLarge, 800, 250}),
                         [](const auto& info) { return std::to_string(info.param.width); });

} // namespace
} // namespace zelvane::test
