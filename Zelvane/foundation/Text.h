#pragma once

#include <QString>

/// Unicode as the program counts and cuts it. "Characters" are what a reader perceives as one:
/// extended grapheme clusters (UAX #29), with the data of ICU.
namespace zelvane::text {

/// The number of user-perceived characters.
[[nodiscard]] qsizetype characterCount(QStringView text);

/// The first `count` user-perceived characters, or all if there are fewer. Never splits one.
[[nodiscard]] QString firstCharacters(const QString& text, qsizetype count);

/// `text` without white space and newlines at both ends: the general categories Zs, Zl, Zp, the
/// control characters U+0009 to U+000D and U+0085.
[[nodiscard]] QString trimmed(const QString& text);

/// `text` without white space at both ends, newlines staying: the general category Zs and U+0009.
[[nodiscard]] QString trimmedWithinLine(const QString& text);

/// True if nothing is left of `text` after `trimmed`.
[[nodiscard]] bool isBlank(QStringView text);

/// Case mapping by Unicode's full rules, the same in every locale.
[[nodiscard]] QString lowerCased(const QString& text);
[[nodiscard]] QString upperCased(const QString& text);

} // namespace zelvane::text
