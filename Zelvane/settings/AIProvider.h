#pragma once

#include <QString>
#include <QUrl>

#include <array>
#include <optional>
#include <span>

namespace zelvane {

/// A translation engine. The order is that of every list that shows them.
enum class AIProvider {
    zelvane,
    chatGPT,
    gemini,
    claude,
    deepSeek,
    mistral,
    grok,
    deepL,
    smartOffline,
    balancedOffline,
    fastOffline,
};

inline constexpr std::array allProviders{
    AIProvider::zelvane,      AIProvider::chatGPT,
    AIProvider::gemini,       AIProvider::claude,
    AIProvider::deepSeek,     AIProvider::mistral,
    AIProvider::grok,         AIProvider::deepL,
    AIProvider::smartOffline, AIProvider::balancedOffline,
    AIProvider::fastOffline,
};

/// The provider's name in every stored setting and secret. A persistence format: never to change.
[[nodiscard]] QString rawValue(AIProvider provider);

/// The name shown to the user. The same in every interface language.
[[nodiscard]] QString displayName(AIProvider provider);

/// The model used until the user chooses one.
[[nodiscard]] QString defaultModel(AIProvider provider);

/// One paragraph for the settings, in the interface language.
[[nodiscard]] QString providerDescription(AIProvider provider);

/// The page for getting a key or reading about the engine.
[[nodiscard]] QUrl userFacingPage(AIProvider provider);

/// The text of the link to `userFacingPage`, in the interface language.
[[nodiscard]] QString pageLinkLabel(AIProvider provider);

/// Whether a translation is impossible without the user's own key.
[[nodiscard]] bool needsKey(AIProvider provider);

/// Whether the provider is one of those that the settings group under the user's own keys.
[[nodiscard]] bool isKeyProvider(AIProvider provider);

/// Whether the engine runs on this machine.
[[nodiscard]] bool isOffline(AIProvider provider);

/// The provider behind a stored name, older spellings included. Exact and case-sensitive.
[[nodiscard]] std::optional<AIProvider> providerFromStoredName(const QString& name);

/// The providers that the settings offer, for the user's choice of engines with or without own
/// keys.
[[nodiscard]] std::span<const AIProvider> visibleProviders(bool useOwnAI);

} // namespace zelvane
