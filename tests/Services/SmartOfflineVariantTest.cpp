#include "Services/SmartOfflineVariant.h"

#include <gtest/gtest.h>

namespace zelvane {
namespace {

TEST(SmartOfflineVariantTest, EachModelHasItsProviderFolderFileNameAndSize)
{
    const auto& smart = factsOf(SmartOfflineVariant::hyMT2_7b);
    EXPECT_EQ(smart.provider, AIProvider::smartOffline);
    EXPECT_EQ(smart.folder, QStringLiteral("hymt2-7b"));
    EXPECT_EQ(smart.modelFile, QStringLiteral("Hy-MT2-7B-Q4_K_M.gguf"));
    EXPECT_EQ(smart.requestModel, QStringLiteral("hymt2-7b"));
    EXPECT_EQ(smart.expectedModelBytes, 4624648896);

    const auto& balanced = factsOf(SmartOfflineVariant::euroLLM_9b);
    EXPECT_EQ(balanced.provider, AIProvider::balancedOffline);
    EXPECT_EQ(balanced.folder, QStringLiteral("eurollm-9b"));
    EXPECT_EQ(balanced.modelFile, QStringLiteral("EuroLLM-9B-Instruct-Q4_K_M.gguf"));
    EXPECT_EQ(balanced.requestModel, QStringLiteral("eurollm-9b"));
    EXPECT_EQ(balanced.expectedModelBytes, 5582838496);

    const auto& fast = factsOf(SmartOfflineVariant::lmt60_4b);
    EXPECT_EQ(fast.provider, AIProvider::fastOffline);
    EXPECT_EQ(fast.folder, QStringLiteral("lmt60-4b"));
    EXPECT_EQ(fast.modelFile, QStringLiteral("LMT-60-4B.Q4_K_M.gguf"));
    EXPECT_EQ(fast.requestModel, QStringLiteral("lmt-60-4b"));
    EXPECT_EQ(fast.expectedModelBytes, 2716068544);
}

TEST(SmartOfflineVariantTest, EachModelHasItsSource)
{
    const auto& smart = factsOf(SmartOfflineVariant::hyMT2_7b);
    EXPECT_EQ(smart.recordEngine, QStringLiteral("hymt2-7b-q4-k-m"));
    EXPECT_EQ(smart.repository, QStringLiteral("tencent/Hy-MT2-7B-GGUF"));
    EXPECT_EQ(smart.downloadText, QStringLiteral("Downloading Hy-MT2 model…"));

    const auto& balanced = factsOf(SmartOfflineVariant::euroLLM_9b);
    EXPECT_EQ(balanced.recordEngine, QStringLiteral("eurollm-9b-instruct-q4-k-m"));
    EXPECT_TRUE(balanced.repository.endsWith(QStringLiteral("/EuroLLM-9B-Instruct-GGUF")));
    EXPECT_EQ(balanced.downloadText, QStringLiteral("Downloading EuroLLM model…"));

    const auto& fast = factsOf(SmartOfflineVariant::lmt60_4b);
    EXPECT_EQ(fast.recordEngine, QStringLiteral("lmt-60-4b-q4-k-m"));
    EXPECT_TRUE(fast.repository.endsWith(QStringLiteral("/LMT-60-4B-GGUF")));
    EXPECT_EQ(fast.downloadText, QStringLiteral("Downloading LMT-60 model…"));
}

TEST(SmartOfflineVariantTest, AProviderLeadsToItsModel)
{
    EXPECT_EQ(smartOfflineVariantOf(AIProvider::fastOffline), SmartOfflineVariant::lmt60_4b);
    EXPECT_EQ(smartOfflineVariantOf(AIProvider::chatGPT), std::nullopt);
    EXPECT_EQ(smartOfflineVariants().size(), 3);
}

} // namespace
} // namespace zelvane
