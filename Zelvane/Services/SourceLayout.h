#pragma once

#include <QString>

#include <optional>

namespace zelvane {

/// What a text appears to be written in, judged by its looks alone.
enum class StructuredFormat {
    json,
    markup, ///< XML or HTML
};

/// None for prose.
[[nodiscard]] std::optional<StructuredFormat> detectStructuredFormat(const QString& text);

/// Whether pipes or tabs lay the text out: at least two of the same kind.
[[nodiscard]] bool hasDelimiterLayout(const QString& text);

} // namespace zelvane
