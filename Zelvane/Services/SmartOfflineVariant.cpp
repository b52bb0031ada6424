#include "Services/SmartOfflineVariant.h"

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
    static const QList<SmartOfflineVariantFacts> facts{
        {AIProvider::smartOffline, QStringLiteral("hymt2-7b"),
         QStringLiteral("Hy-MT2-7B-Q4_K_M.gguf"), QStringLiteral("hymt2-7b"), 4'624'648'896},
        {AIProvider::balancedOffline, QStringLiteral("eurollm-9b"),
         QStringLiteral("EuroLLM-9B-Instruct-Q4_K_M.gguf"), QStringLiteral("eurollm-9b"),
         5'582'838'496},
        // The folder and the name in requests differ by a hyphen.
        {AIProvider::fastOffline, QStringLiteral("lmt60-4b"),
         QStringLiteral("LMT-60-4B.Q4_K_M.gguf"), QStringLiteral("lmt-60-4b"), 2'716'068'544},
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
