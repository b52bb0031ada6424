#pragma once

#include "settings/GlossaryLanguage.h"
#include "settings/SystemLanguage.h"

#include <QLocale>
#include <QString>

namespace zelvane {

/// What readers of `locale` call the language, with a capital. Names that the locale doesn't have
/// come from the translations of the interface.
[[nodiscard]] QString glossaryDisplayName(const GlossaryLanguage& language, const QLocale& locale);

/// The user's language as one end of a dictionary: any language, even one without dictionaries.
[[nodiscard]] GlossaryLanguage glossarySystemLanguage(const SystemLocale& locale);

} // namespace zelvane
