#include "Services/PromptStyle.h"

#include "foundation/Text.h"

#include <algorithm>

namespace zelvane {

bool isDefaultPromptText(const QString& prompt)
{
    const QString lower = text::lowerCased(prompt);
    if (lower.contains(u"rules, most important first")) {
        return true;
    }
    if (lower.contains(u"output the translation only") && lower.contains(u"no preamble")) {
        return true;
    }
    if (!lower.startsWith(u"translate the text below") &&
        !lower.startsWith(u"translate the following text from")) {
        return false;
    }
    // A long prompt that begins as ours do was written by the user.
    const auto filledLines = std::ranges::count_if(prompt.split(u'\n'), [](const QString& line) {
        return !text::trimmedWithinLine(line).isEmpty();
    });
    return filledLines < 5;
}

std::optional<QString> effectiveStylePrompt(const QString& prompt)
{
    const QString style = text::trimmed(prompt);
    if (style.isEmpty() || isDefaultPromptText(style)) {
        return std::nullopt;
    }
    return style;
}

} // namespace zelvane
