#pragma once

#include <QString>

namespace zelvane {

/// `text` with a mark and a line break put into every paragraph that is so long that laying it out
/// anew at each key press would be felt. Short texts, which are nearly all, come back as they are.
///
/// Text areas lay whole paragraphs out; a megabyte in one line takes them a second or more.
[[nodiscard]] QString withLongParagraphsBroken(const QString& text);

/// The text without those breaks, character for character as it was.
[[nodiscard]] QString withParagraphsJoined(QString text);

/// How long paragraphs are after `withLongParagraphsBroken`, at most, in UTF-16 code units.
inline constexpr qsizetype longestParagraph = 4096;

} // namespace zelvane
