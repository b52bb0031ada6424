#pragma once

#include "Services/DocumentTokens.h"

#include <QHash>
#include <QString>

#include <optional>
#include <vector>

namespace zelvane {

/// A string of a document and where it stands: "$.menu.items[0]".
struct DocumentString
{
    /// Unique, but for names with dots: "$.a.b" is `b` in `a`, and also `a.b`.
    QString path;
    QString value;

    friend bool operator==(const DocumentString&, const DocumentString&) = default;
};

/// A JSON text whose strings can be replaced. All else stays as it was: the members and their
/// order, repeated ones too, and numbers letter for letter.
class StructuredDocument
{
public:
    enum class Layout {
        compact,
        indented, ///< by two blanks for each level
    };

    /// None for what `documentTokens` takes for none.
    [[nodiscard]] static std::optional<StructuredDocument> parse(QStringView text);

    /// The strings that are values, in the order of the text.
    [[nodiscard]] std::vector<DocumentString> strings() const;

    /// Replaces each string whose path is a key of `replacements`.
    void replaceStrings(const QHash<QString, QString>& replacements);

    /// The document as JSON, without a newline at its end. Only what must be escaped is.
    [[nodiscard]] QString written(Layout layout) const;

private:
    explicit StructuredDocument(std::vector<DocumentToken> tokens);

    std::vector<DocumentToken> m_tokens;
};

} // namespace zelvane
