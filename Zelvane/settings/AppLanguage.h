#pragma once

#include <QString>

#include <array>

namespace zelvane {

/// The language of the interface. `system` follows the platform's choice.
enum class AppLanguage {
    system,
    english,
    russian,
    chineseSimplified,
    spanish,
    hindi,
    german,
    french,
};

inline constexpr std::array allAppLanguages{
    AppLanguage::system,  AppLanguage::english,
    AppLanguage::russian, AppLanguage::chineseSimplified,
    AppLanguage::spanish, AppLanguage::hindi,
    AppLanguage::german,  AppLanguage::french,
};

/// The name under which the choice is stored, which is a language code but for "system".
[[nodiscard]] QString rawValue(AppLanguage language);

/// The language behind a stored name; `system` for an unknown one.
[[nodiscard]] AppLanguage appLanguageFromStoredName(const QString& name);

/// The name in the picker: each language by its own name, whatever the interface language.
[[nodiscard]] QString displayName(AppLanguage language);

} // namespace zelvane
