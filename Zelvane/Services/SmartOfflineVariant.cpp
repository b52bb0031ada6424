#include "Services/SmartOfflineVariant.h"

#include "settings/Localization.h"

#include <algorithm>

namespace zelvane {

const QList<SmartOfflineVariant>& smartOfflineVariants()
{
    using enum SmartOfflineVariant;
    static const QList<SmartOfflineVariant> variants{hyMT2_7b, euroLLM_9b, lmt60_4b};
    return variants;
}

const SmartOfflineVariantFacts& factsOf(SmartOfflineVariant variant)
{
    // The sizes and names of the files are fixed. Which account they come from, where their makers
    // publish none themselves, is the choice of this build.
    static const QList<SmartOfflineVariantFacts> facts{
        {.provider = AIProvider::smartOffline,
         .folder = QStringLiteral("hymt2-7b"),
         .modelFile = QStringLiteral("Hy-MT2-7B-Q4_K_M.gguf"),
         .requestModel = QStringLiteral("hymt2-7b"),
         .expectedModelBytes = 4'624'648'896,
         .recordEngine = QStringLiteral("hymt2-7b-q4-k-m"),
         .repository = QStringLiteral("tencent/Hy-MT2-7B-GGUF"),
         .downloadText = LOCALIZATION_KEY("Downloading Hy-MT2 model…")},
        {.provider = AIProvider::balancedOffline,
         .folder = QStringLiteral("eurollm-9b"),
         .modelFile = QStringLiteral("EuroLLM-9B-Instruct-Q4_K_M.gguf"),
         .requestModel = QStringLiteral("eurollm-9b"),
         .expectedModelBytes = 5'582'838'496,
         .recordEngine = QStringLiteral("eurollm-9b-instruct-q4-k-m"),
         .repository = QStringLiteral("bartowski/EuroLLM-9B-Instruct-GGUF"),
         .downloadText = LOCALIZATION_KEY("Downloading EuroLLM model…")},
        {.provider = AIProvider::fastOffline,
         .folder = QStringLiteral("lmt60-4b"),
         .modelFile = QStringLiteral("LMT-60-4B.Q4_K_M.gguf"),
         // Other than the folder by a hyphen.
         .requestModel = QStringLiteral("lmt-60-4b"),
         .expectedModelBytes = 2'716'068'544,
         .recordEngine = QStringLiteral("lmt-60-4b-q4-k-m"),
         .repository = QStringLiteral("mradermacher/LMT-60-4B-GGUF"),
         .downloadText = LOCALIZATION_KEY("Downloading LMT-60 model…")},
    };
    return facts.at(static_cast<qsizetype>(variant));
}

std::optional<SmartOfflineVariant> smartOfflineVariantOf(AIProvider provider)
{
    const auto& variants = smartOfflineVariants();
    const auto found = std::ranges::find_if(
        variants, [provider](auto variant) { return factsOf(variant).provider == provider; });
    return found == variants.end() ? std::nullopt : std::optional(*found);
}

} // namespace zelvane
