#pragma once

#include <string>
#include <string_view>

/// Rules of `foundation/Text.h` for text that is UTF-8 and stays so: large files, read without a
/// detour over UTF-16. The text must be valid UTF-8.
namespace zelvane::text::utf8 {

/// Appends what `lowerCased(composed(text))` yields.
void appendComposedLowerCased(std::string_view text, std::string& result);

/// Appends `text` without the white space at both ends, each run of it in between as one blank.
void appendSimplified(std::string_view text, std::string& result);

} // namespace zelvane::text::utf8
