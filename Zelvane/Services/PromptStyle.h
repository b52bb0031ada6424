#pragma once

#include <QString>

#include <optional>

namespace zelvane {

/// Whether a prompt, its languages put in, is one of those that the program comes with rather than
/// a wish of the user.
[[nodiscard]] bool isDefaultPromptText(const QString& prompt);

/// What the user wishes for in the prompt, trimmed. None for a blank prompt and for a default one.
[[nodiscard]] std::optional<QString> effectiveStylePrompt(const QString& prompt);

} // namespace zelvane
