#include "glossary/GlossaryDirection.h"

#include <gtest/gtest.h>

namespace zelvane {
namespace {

TEST(GlossaryDirectionTest, ADictionaryIsNamedAfterTheBaseCodesOfItsLanguages)
{
    const GlossaryDirection direction{{QStringLiteral("en-GB"), QStringLiteral("English (UK)")},
                                      {QStringLiteral("de"), QStringLiteral("German")}};

    EXPECT_EQ(direction.key(), QStringLiteral("en-de"));
}

TEST(GlossaryDirectionTest, TheFilesOfAnEditionLieInAFolderOfTheirOwn)
{
    EXPECT_EQ(glossaryFile(QStringLiteral("/data"), QStringLiteral("de-en")),
              QStringLiteral("/data/glossaries/wikdict-2_2026-06/de-en.tsv"));
}

} // namespace
} // namespace zelvane
