#pragma once

#include "settings/LanguagePair.h"

namespace zelvane {

/// The template that a pair translates with: its own if that is switched on, else `promptTemplate`.
/// A pair's own prompt that is left blank means the factory's prompt, not `promptTemplate`.
[[nodiscard]] QString effectivePrompt(const QString& promptTemplate, const LanguagePair& pair);

/// Puts the languages in for "{{source}}" and then "{{target}}". An automatic source reads
/// "the automatically detected language". Nothing else is special.
[[nodiscard]] QString renderPrompt(const QString& promptTemplate, const QString& source,
                                   const QString& target);

} // namespace zelvane
