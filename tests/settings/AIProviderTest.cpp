#include "settings/AIProvider.h"

#include <gtest/gtest.h>

namespace zelvane::test {
namespace {

struct ProviderCase
{
    AIProvider provider;
    const char* rawValue;
    const char* displayName;
    const char* defaultModel;
    bool needsKey;
    bool isOffline;
    const char* page;
    const char* linkLabel;
    const char* description;
};

const ProviderCase providerCases[] = {
    {AIProvider::zelvane, "Zelvane", "Zelvane Best&Fast (Online)", "gemini-3.1-flash-lite", false,
     false, "https://api.zelvane.org/health", "Connection status",
     "Best quality and speed when you are online. Handles slang, long texts, and everyday writing "
     "well. Choose this whenever you have an internet connection."},
    {AIProvider::chatGPT, "ChatGPT", "ChatGPT", "gpt-5-nano", true, false,
     "https://platform.openai.com/api-keys", "Get a ChatGPT API key",
     "OpenAI models with strong general translation. Choose if you already use ChatGPT or want "
     "GPT-quality results with your own key."},
    {AIProvider::gemini, "Gemini", "Gemini", "gemini-2.0-flash", true, false,
     "https://aistudio.google.com/apikey", "Get a Gemini API key",
     "Google models — fast and strong across many languages. Choose if you prefer Google AI or "
     "already have a Gemini API key."},
    {AIProvider::claude, "Claude", "Claude", "claude-sonnet-4-20250514", true, false,
     "https://console.anthropic.com/settings/keys", "Get a Claude API key",
     "Anthropic models that are careful with tone and longer writing. Choose when nuance and "
     "natural phrasing matter most."},
    {AIProvider::deepSeek, "DeepSeek", "DeepSeek", "deepseek-chat", true, false,
     "https://platform.deepseek.com/api_keys", "Get a DeepSeek API key",
     "Capable multilingual translation at a lower API cost. Choose for technical or high-volume "
     "work on a budget."},
    {AIProvider::mistral, "Mistral", "Mistral", "mistral-small-latest", true, false,
     "https://console.mistral.ai/api-keys", "Get a Mistral API key",
     "European AI models with solid multilingual performance. Choose if you prefer an EU-based "
     "provider."},
    {AIProvider::grok, "Grok", "Grok", "grok-2-latest", true, false, "https://console.x.ai",
     "Get a Grok API key", "xAI models. Choose if you already use Grok or have an xAI API key."},
    {AIProvider::deepL, "DeepL", "DeepL", "deepl", true, false, "https://www.deepl.com/pro-api",
     "Get a DeepL API key",
     "A dedicated translation service — often excellent for European languages. Best for polished "
     "formal text. Uses your DeepL key; custom prompts are not applied."},
    {AIProvider::smartOffline, "Smart Offline", "Smart Offline", "hymt2-7b-q4-k-m", false, true,
     "https://huggingface.co/tencent/Hy-MT2-7B-GGUF", "Get a Smart Offline API key",
     "Best offline quality. Strong on formal writing, technical terms, and natural slang. Choose "
     "when accuracy without internet matters more than speed."},
    {AIProvider::balancedOffline, "Balanced Offline", "Balanced Offline",
     "eurollm-9b-instruct-q4-k-m", false, true,
     "https://huggingface.co/utter-project/EuroLLM-9B-Instruct", "Get a Balanced Offline API key",
     "Solid offline quality for European languages. A good middle ground between quality and speed "
     "when you are offline."},
    {AIProvider::fastOffline, "Fast Offline", "Fast Offline", "lmt-60-4b-q4-k-m", false, true,
     "https://huggingface.co/NiuTrans/LMT-60-4B", "Get a Fast Offline API key",
     "Fastest and lightest offline option. Fine for short, simple phrases; weaker on long texts, "
     "slang, and specialist terms. Choose when speed and disk space matter most."},
};

class Provider : public ::testing::TestWithParam<ProviderCase>
{
};

TEST_P(Provider, isDescribedByItsRowOfTheCatalogue)
{
    const ProviderCase& row = GetParam();
    EXPECT_EQ(rawValue(row.provider).toStdString(), row.rawValue);
    EXPECT_EQ(displayName(row.provider).toStdString(), row.displayName);
    EXPECT_EQ(defaultModel(row.provider).toStdString(), row.defaultModel);
    EXPECT_EQ(needsKey(row.provider), row.needsKey);
    EXPECT_EQ(isKeyProvider(row.provider), row.needsKey);
    EXPECT_EQ(isOffline(row.provider), row.isOffline);
    EXPECT_EQ(userFacingPage(row.provider).toString().toStdString(), row.page);
    EXPECT_EQ(pageLinkLabel(row.provider).toStdString(), row.linkLabel);
    EXPECT_EQ(providerDescription(row.provider).toStdString(), row.description);
}

TEST_P(Provider, isFoundAgainByTheNameThatIsStored)
{
    EXPECT_EQ(providerFromStoredName(QString::fromUtf8(GetParam().rawValue)), GetParam().provider);
}

INSTANTIATE_TEST_SUITE_P(AllProviders, Provider, ::testing::ValuesIn(providerCases),
                         [](const auto& info) {
                             return rawValue(info.param.provider).remove(u' ').toStdString();
                         });

TEST(Providers, areElevenInTheOrderOfTheCatalogue)
{
    ASSERT_EQ(allProviders.size(), 11U);
    for (size_t i = 0; i < allProviders.size(); ++i) {
        EXPECT_EQ(allProviders[i], providerCases[i].provider);
    }
}

struct StoredNameCase
{
    const char* stored;
    std::optional<AIProvider> provider;
};

class StoredName : public ::testing::TestWithParam<StoredNameCase>
{
};

TEST_P(StoredName, yieldsTheEngineThatTookItsPlace)
{
    EXPECT_EQ(providerFromStoredName(QString::fromUtf8(GetParam().stored)), GetParam().provider);
}

INSTANTIATE_TEST_SUITE_P(
    OlderNames, StoredName,
    ::testing::Values(StoredNameCase{"Zelvane Best&Fast (Online)", AIProvider::zelvane},
                      StoredNameCase{"Smart Offline (Hy-MT2 7B)", AIProvider::smartOffline},
                      StoredNameCase{"Smart Offline (Qwen)", AIProvider::smartOffline},
                      StoredNameCase{"Smart Offline Lite (Qwen)", AIProvider::smartOffline},
                      StoredNameCase{"Smart Offline (EuroLLM 9B)", AIProvider::balancedOffline},
                      StoredNameCase{"Smart Offline (EuroLLM 1.7B)", AIProvider::balancedOffline},
                      StoredNameCase{"Smart Offline (LMT-60)", AIProvider::fastOffline},
                      StoredNameCase{"Fast Offline (MADLAD)", AIProvider::fastOffline},
                      StoredNameCase{"Fast Offline Large (MADLAD)", AIProvider::fastOffline},
                      StoredNameCase{"Offline (NLLB)", AIProvider::fastOffline},
                      StoredNameCase{"Offline (MADLAD)", AIProvider::fastOffline},
                      StoredNameCase{"Smart Offline (Hy-MT2 1.8B)", AIProvider::fastOffline},
                      StoredNameCase{"Smart Offline (Marco-MT)", AIProvider::fastOffline}));

INSTANTIATE_TEST_SUITE_P(NoNames, StoredName,
                         ::testing::Values(StoredNameCase{"chatgpt", std::nullopt},
                                           StoredNameCase{"zelvane", std::nullopt},
                                           StoredNameCase{" ChatGPT", std::nullopt},
                                           StoredNameCase{"Smart offline", std::nullopt},
                                           StoredNameCase{"Bing", std::nullopt},
                                           StoredNameCase{"", std::nullopt}));

TEST(VisibleProviders, areThoseWithoutKeysUnlessTheUserBringsOwnOnes)
{
    using enum AIProvider;
    const auto offered = [](bool useOwnAI) {
        const std::span<const AIProvider> providers = visibleProviders(useOwnAI);
        return std::vector<AIProvider>(providers.begin(), providers.end());
    };
    EXPECT_EQ(offered(false), (std::vector{zelvane, smartOffline, balancedOffline, fastOffline}));
    EXPECT_EQ(offered(true),
              (std::vector{chatGPT, gemini, claude, deepSeek, mistral, grok, deepL}));
}

} // namespace
} // namespace zelvane::test
