#include "ui/sheets/PromptEditModel.h"

#include "settings/FactorySettings.h"

#include <gtest/gtest.h>

namespace zelvane::test {
namespace {

TEST(PromptEditModel, startsWithTheDefaultPromptForABlankOne)
{
    const PromptEditModel model(QStringLiteral("EN-DE"), QStringLiteral("  \n "));
    EXPECT_EQ(model.pairLabel(), QStringLiteral("EN-DE"));
    EXPECT_FALSE(model.draft().isEmpty());
    EXPECT_EQ(model.draft(), defaultPromptTemplate());
}

TEST(PromptEditModel, keepsThePromptAsItStands)
{
    PromptEditModel model(QStringLiteral("EN-DE"), QStringLiteral(" Be brief. \n"));
    EXPECT_EQ(model.draft(), QStringLiteral(" Be brief. \n"));
    model.setDraft(QStringLiteral("  Shout. "));
    EXPECT_EQ(model.draft(), QStringLiteral("  Shout. "));
    EXPECT_TRUE(model.canSave());
}

TEST(PromptEditModel, refusesABlankDraft)
{
    PromptEditModel model(QStringLiteral("EN-DE"), QStringLiteral("Be brief."));
    model.setDraft(QStringLiteral(" \t\n"));
    EXPECT_FALSE(model.canSave());
}

TEST(PromptEditModel, goesBackToTheDefault)
{
    PromptEditModel model(QStringLiteral("EN-DE"), QStringLiteral("Be brief."));
    model.resetToDefault();
    EXPECT_EQ(model.draft(), defaultPromptTemplate());
}

} // namespace
} // namespace zelvane::test
