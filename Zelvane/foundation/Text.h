#pragma once

#include <QLocale>
#include <QString>

#include <compare>

/// Unicode as the program counts and cuts it. "Characters" are what a reader perceives as one:
/// extended grapheme clusters (UAX #29), with the data of ICU.
namespace zelvane::text {

/// The number of user-perceived characters.
[[nodiscard]] qsizetype characterCount(QStringView text);

/// The first `count` user-perceived characters, or all if there are fewer. Never splits one.
[[nodiscard]] QString firstCharacters(const QString& text, qsizetype count);

/// The last `count` user-perceived characters, likewise.
[[nodiscard]] QString lastCharacters(const QString& text, qsizetype count);

/// The first user-perceived character, or nothing of an empty text.
[[nodiscard]] QStringView firstCharacter(QStringView text);

/// `text` without white space and newlines at both ends: the general categories Zs, Zl, Zp, the
/// control characters U+0009 to U+000D and U+0085.
[[nodiscard]] QString trimmed(const QString& text);

/// `text` without white space at both ends, newlines staying: the general category Zs and U+0009.
[[nodiscard]] QString trimmedWithinLine(const QString& text);

/// Whether `trimmed` takes the code point away.
[[nodiscard]] bool isWhiteSpace(char32_t codePoint);

/// Whether the code point stands for a number in any script: digits, but also ½ or Ⅳ.
[[nodiscard]] bool isNumber(char32_t codePoint);

/// The length of the run of user-perceived characters at the start of `text` whose first code point
/// `belongs` to it, in UTF-16 code units.
[[nodiscard]] qsizetype leadingLength(QStringView text, bool (*belongs)(char32_t codePoint));

/// True if nothing is left of `text` after `trimmed`.
[[nodiscard]] bool isBlank(QStringView text);

/// Case mapping by Unicode's full rules, the same in every locale.
[[nodiscard]] QString lowerCased(const QString& text);
[[nodiscard]] QString upperCased(const QString& text);

/// `text` in a form that it shares with every text that differs from it only in case, by the rules
/// of `locale`, or in how its characters are composed. To be compared, not to be shown.
[[nodiscard]] QString caseFolded(const QString& text, const QLocale& locale);

/// Whether the user-perceived characters of `part` occur in `text`, one after the other: "e" does
/// not occur in "e\u0301". An empty `part` occurs nowhere.
[[nodiscard]] bool containsCharacters(const QString& text, const QString& part);

/// `text` with its first user-perceived character in upper case, by the rules of `locale`.
[[nodiscard]] QString withFirstUpperCased(const QString& text, const QLocale& locale);

/// Whether the code point has Unicode's Lowercase property.
[[nodiscard]] bool isLowercase(char32_t codePoint);

/// Whether the first user-perceived character of `text` is a lower-case one. What has no case
/// isn't.
[[nodiscard]] bool startsLowercase(const QString& text);

/// Whether the texts differ in nothing but case and in how their characters are composed.
[[nodiscard]] bool equalIgnoringCase(const QString& left, const QString& right);

/// Unicode's canonical composition (NFC).
[[nodiscard]] QString composed(const QString& text);

/// How a list for readers is ordered: by the rules of `locale`, digits by their value ("2" before
/// "10"). Equal only for texts that the rules don't tell apart.
[[nodiscard]] std::weak_ordering naturalOrder(const QString& left, const QString& right,
                                              const QLocale& locale);

/// What speakers of `locale` call the language of a code such as "de"; empty if they have no name
/// for it.
[[nodiscard]] QString languageName(const QString& languageCode, const QLocale& locale);

/// `text` as it can be written in UTF-8: each half of a surrogate pair that stands alone becomes
/// U+FFFD.
[[nodiscard]] QString wellFormed(const QString& text);

} // namespace zelvane::text
