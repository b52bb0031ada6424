#pragma once

#include <QString>

#include <array>

namespace zelvane {

/// How large the translation window and the result popup are. The points are each window's own.
enum class TranslationWindowSize {
    extraSmall,
    small,
    medium,
    large,
    extraLarge,
};

inline constexpr std::array allTranslationWindowSizes{
    TranslationWindowSize::extraSmall, TranslationWindowSize::small,
    TranslationWindowSize::medium,     TranslationWindowSize::large,
    TranslationWindowSize::extraLarge,
};

/// The name under which the choice is stored.
[[nodiscard]] QString rawValue(TranslationWindowSize size);

/// The size behind a stored name; `medium` for an unknown one.
[[nodiscard]] TranslationWindowSize windowSizeFromStoredName(const QString& name);

/// The name in the picker, in the interface language.
[[nodiscard]] QString title(TranslationWindowSize size);

} // namespace zelvane
