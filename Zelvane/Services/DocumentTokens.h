#pragma once

#include <QString>
#include <QStringView>

#include <optional>
#include <vector>

namespace zelvane {

/// A piece of a JSON text.
struct DocumentToken
{
    enum class Kind {
        objectBegin,
        objectEnd,
        arrayBegin,
        arrayEnd,
        name,     ///< of a member
        string,   ///< a value
        verbatim, ///< a number, or a word of the format
    };

    Kind kind;
    /// What a name or a string says; anything verbatim as it was written.
    QString text;
    /// Where a string stands: "$.menu.items[0]".
    QString path;
};

/// The pieces of `text`, if it is one JSON object or array by RFC 8259 and nothing but white space
/// around it. One with more than 512 levels, or with names so long that the paths would fill the
/// memory, counts as none.
[[nodiscard]] std::optional<std::vector<DocumentToken>> documentTokens(QStringView text);

} // namespace zelvane
