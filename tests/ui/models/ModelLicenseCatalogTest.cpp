#include "ui/licenses/ModelLicenseCatalog.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace zelvane::test {
namespace {

using ::testing::ElementsAre;

TEST(ModelLicenseCatalog, namesEachPartWithItsHolderAndLicence)
{
    QStringList ids;
    QStringList names;
    QStringList licences;
    for (const auto& entry : ModelLicenseCatalog::entries()) {
        ids += entry.id;
        names += entry.name;
        licences += entry.licenseName;
        EXPECT_EQ(entry.sourceURL.scheme(), QStringLiteral("https"));
        EXPECT_EQ(entry.licenseURL.scheme(), QStringLiteral("https"));
    }
    EXPECT_THAT(ids, ElementsAre(QStringLiteral("llama"), QStringLiteral("hymt2"),
                                 QStringLiteral("eurollm"), QStringLiteral("lmt60"),
                                 QStringLiteral("wikdict")));
    EXPECT_THAT(names, ElementsAre(QStringLiteral("llama.cpp"), QStringLiteral("Hy-MT2-7B (GGUF)"),
                                   QStringLiteral("EuroLLM-9B-Instruct (GGUF)"),
                                   QStringLiteral("LMT-60-4B (GGUF)"), QStringLiteral("WikDict")));
    EXPECT_THAT(licences,
                ElementsAre(QStringLiteral("MIT License"), QStringLiteral("Apache License 2.0"),
                            QStringLiteral("Apache License 2.0"),
                            QStringLiteral("Apache License 2.0"),
                            QStringLiteral("Creative Commons Attribution-ShareAlike 3.0")));
    EXPECT_TRUE(
        ModelLicenseCatalog::entries()[1].copyright.contains(QStringLiteral("2026 Tencent")));
}

} // namespace
} // namespace zelvane::test
