#pragma once

#include <QString>

#include <string>
#include <string_view>

namespace zelvane {

/// A line as dictionaries see it.
struct GlossaryLine
{
    /// White space at the start, and a list number with a point. What stands here stays.
    QString prefix;
    /// The rest, exactly as it was written.
    QString term;

    friend bool operator==(const GlossaryLine&, const GlossaryLine&) = default;
};

[[nodiscard]] GlossaryLine splitGlossaryLine(const QString& line);

/// What a term is found under, in UTF-8: composed (NFC), in lower case, without white space at both
/// ends, each run of it in between as one blank. Overwrites `key`, whose room is used again.
///
/// Dictionaries and lines take the same road. The bytes must be valid UTF-8.
void writeGlossaryKey(std::string_view term, std::string& key);
void writeGlossaryKey(QStringView term, std::string& key);

} // namespace zelvane
