#pragma once

#include <QString>

#include <array>

namespace zelvane {

/// A page of the settings, in the order of the sidebar.
enum class SettingsCategory { translation, languages, behavior, accessibility, general };

inline constexpr std::array allSettingsCategories{
    SettingsCategory::translation,   SettingsCategory::languages, SettingsCategory::behavior,
    SettingsCategory::accessibility, SettingsCategory::general,
};

/// The page's name where programs name it.
[[nodiscard]] QString rawValue(SettingsCategory category);
/// In the interface language.
[[nodiscard]] QString title(SettingsCategory category);
[[nodiscard]] QString subtitle(SettingsCategory category);
/// The name of the symbol in the sidebar.
[[nodiscard]] QString sidebarSymbol(SettingsCategory category);

} // namespace zelvane
