#include "settings/AIProvider.h"

#include "settings/Localization.h"

#include <algorithm>

namespace zelvane {

namespace {

enum class Group { hosted, ownKey, offline };

struct Entry
{
    AIProvider provider;
    Group group;
    QString rawValue;
    QString displayName;
    QString defaultModel;
    QString page;
    QString description;
};

/// One row for each provider, in the order of the enumeration.
const std::array<Entry, allProviders.size()>& catalogue()
{
    static const std::array<Entry, allProviders.size()> entries{{
        {AIProvider::zelvane, Group::hosted, QStringLiteral("Zelvane"),
         QStringLiteral("Zelvane Best&Fast (Online)"), QStringLiteral("gemini-3.1-flash-lite"),
         QStringLiteral("https://api.zelvane.org/health"),
         LOCALIZATION_KEY("Best quality and speed when you are online. Handles slang, long texts, "
                          "and everyday writing well. Choose this whenever you have an internet "
                          "connection.")},
        {AIProvider::chatGPT, Group::ownKey, QStringLiteral("ChatGPT"), QStringLiteral("ChatGPT"),
         QStringLiteral("gpt-5-nano"), QStringLiteral("https://platform.openai.com/api-keys"),
         LOCALIZATION_KEY(
             "OpenAI models with strong general translation. Choose if you already use "
             "ChatGPT or want GPT-quality results with your own key.")},
        {AIProvider::gemini, Group::ownKey, QStringLiteral("Gemini"), QStringLiteral("Gemini"),
         QStringLiteral("gemini-2.0-flash"), QStringLiteral("https://aistudio.google.com/apikey"),
         LOCALIZATION_KEY("Google models — fast and strong across many languages. Choose if you "
                          "prefer Google AI or already have a Gemini API key.")},
        {AIProvider::claude, Group::ownKey, QStringLiteral("Claude"), QStringLiteral("Claude"),
         QStringLiteral("claude-sonnet-4-20250514"),
         QStringLiteral("https://console.anthropic.com/settings/keys"),
         LOCALIZATION_KEY("Anthropic models that are careful with tone and longer writing. Choose "
                          "when nuance and natural phrasing matter most.")},
        {AIProvider::deepSeek, Group::ownKey, QStringLiteral("DeepSeek"),
         QStringLiteral("DeepSeek"), QStringLiteral("deepseek-chat"),
         QStringLiteral("https://platform.deepseek.com/api_keys"),
         LOCALIZATION_KEY("Capable multilingual translation at a lower API cost. Choose for "
                          "technical or high-volume work on a budget.")},
        {AIProvider::mistral, Group::ownKey, QStringLiteral("Mistral"), QStringLiteral("Mistral"),
         QStringLiteral("mistral-small-latest"),
         QStringLiteral("https://console.mistral.ai/api-keys"),
         LOCALIZATION_KEY("European AI models with solid multilingual performance. Choose if you "
                          "prefer an EU-based provider.")},
        {AIProvider::grok, Group::ownKey, QStringLiteral("Grok"), QStringLiteral("Grok"),
         QStringLiteral("grok-2-latest"), QStringLiteral("https://console.x.ai"),
         LOCALIZATION_KEY("xAI models. Choose if you already use Grok or have an xAI API key.")},
        {AIProvider::deepL, Group::ownKey, QStringLiteral("DeepL"), QStringLiteral("DeepL"),
         QStringLiteral("deepl"), QStringLiteral("https://www.deepl.com/pro-api"),
         LOCALIZATION_KEY("A dedicated translation service — often excellent for European "
                          "languages. Best for polished formal text. Uses your DeepL key; custom "
                          "prompts are not applied.")},
        {AIProvider::smartOffline, Group::offline, QStringLiteral("Smart Offline"),
         QStringLiteral("Smart Offline"), QStringLiteral("hymt2-7b-q4-k-m"),
         QStringLiteral("https://huggingface.co/tencent/Hy-MT2-7B-GGUF"),
         LOCALIZATION_KEY("Best offline quality. Strong on formal writing, technical terms, and "
                          "natural slang. Choose when accuracy without internet matters more than "
                          "speed.")},
        {AIProvider::balancedOffline, Group::offline, QStringLiteral("Balanced Offline"),
         QStringLiteral("Balanced Offline"), QStringLiteral("eurollm-9b-instruct-q4-k-m"),
         QStringLiteral("https://huggingface.co/utter-project/EuroLLM-9B-Instruct"),
         LOCALIZATION_KEY("Solid offline quality for European languages. A good middle ground "
                          "between quality and speed when you are offline.")},
        {AIProvider::fastOffline, Group::offline, QStringLiteral("Fast Offline"),
         QStringLiteral("Fast Offline"), QStringLiteral("lmt-60-4b-q4-k-m"),
         QStringLiteral("https://huggingface.co/NiuTrans/LMT-60-4B"),
         LOCALIZATION_KEY(
             "Fastest and lightest offline option. Fine for short, simple phrases; "
             "weaker on long texts, slang, and specialist terms. Choose when speed and "
             "disk space matter most.")},
    }};
    return entries;
}

const Entry& entry(AIProvider provider)
{
    return catalogue().at(static_cast<size_t>(provider));
}

struct StoredName
{
    const char16_t* name;
    AIProvider provider;
};

/// What older versions wrote. Engines were regrouped more than once, so names of one family do not
/// stay within it.
constexpr std::array storedNames{
    StoredName{u"Zelvane", AIProvider::zelvane},
    StoredName{u"Zelvane Best&Fast (Online)", AIProvider::zelvane},
    StoredName{u"Smart Offline", AIProvider::smartOffline},
    StoredName{u"Smart Offline (Hy-MT2 7B)", AIProvider::smartOffline},
    StoredName{u"Smart Offline (Qwen)", AIProvider::smartOffline},
    StoredName{u"Smart Offline Lite (Qwen)", AIProvider::smartOffline},
    StoredName{u"Balanced Offline", AIProvider::balancedOffline},
    StoredName{u"Smart Offline (EuroLLM 9B)", AIProvider::balancedOffline},
    StoredName{u"Smart Offline (EuroLLM 1.7B)", AIProvider::balancedOffline},
    StoredName{u"Fast Offline", AIProvider::fastOffline},
    StoredName{u"Smart Offline (LMT-60)", AIProvider::fastOffline},
    StoredName{u"Fast Offline (MADLAD)", AIProvider::fastOffline},
    StoredName{u"Fast Offline Large (MADLAD)", AIProvider::fastOffline},
    StoredName{u"Offline (NLLB)", AIProvider::fastOffline},
    StoredName{u"Offline (MADLAD)", AIProvider::fastOffline},
    StoredName{u"Smart Offline (Hy-MT2 1.8B)", AIProvider::fastOffline},
    StoredName{u"Smart Offline (Marco-MT)", AIProvider::fastOffline},
};

constexpr std::array providersWithoutKeys{
    AIProvider::zelvane,
    AIProvider::smartOffline,
    AIProvider::balancedOffline,
    AIProvider::fastOffline,
};

constexpr std::array providersWithKeys{
    AIProvider::chatGPT, AIProvider::gemini, AIProvider::claude, AIProvider::deepSeek,
    AIProvider::mistral, AIProvider::grok,   AIProvider::deepL,
};

} // namespace

QString rawValue(AIProvider provider)
{
    return entry(provider).rawValue;
}

QString displayName(AIProvider provider)
{
    return entry(provider).displayName;
}

QString defaultModel(AIProvider provider)
{
    return entry(provider).defaultModel;
}

QString providerDescription(AIProvider provider)
{
    return localizedText(entry(provider).description);
}

QUrl userFacingPage(AIProvider provider)
{
    return QUrl(entry(provider).page);
}

QString pageLinkLabel(AIProvider provider)
{
    switch (provider) {
    case AIProvider::zelvane:
        return localizedText(QStringLiteral("Connection status"));
    case AIProvider::deepL:
        return localizedText(QStringLiteral("Get a DeepL API key"));
    default:
        return localizedFormat(QStringLiteral("Get a %@ API key"), {rawValue(provider)});
    }
}

bool needsKey(AIProvider provider)
{
    return entry(provider).group == Group::ownKey;
}

bool isKeyProvider(AIProvider provider)
{
    return entry(provider).group == Group::ownKey;
}

bool isOffline(AIProvider provider)
{
    return entry(provider).group == Group::offline;
}

std::optional<AIProvider> providerFromStoredName(const QString& name)
{
    const auto* stored = std::ranges::find_if(
        storedNames, [&](const StoredName& row) { return name == QStringView(row.name); });
    if (stored != storedNames.end()) {
        return stored->provider;
    }
    const auto* known =
        std::ranges::find_if(catalogue(), [&](const Entry& row) { return row.rawValue == name; });
    return known != catalogue().end() ? std::optional(known->provider) : std::nullopt;
}

std::span<const AIProvider> visibleProviders(bool useOwnAI)
{
    if (useOwnAI) {
        return providersWithKeys;
    }
    return providersWithoutKeys;
}

} // namespace zelvane
