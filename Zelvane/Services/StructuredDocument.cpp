#include "Services/StructuredDocument.h"

#include <utility>

namespace zelvane {

namespace {

using Kind = DocumentToken::Kind;
using Layout = StructuredDocument::Layout;

bool isBegin(Kind kind)
{
    return kind == Kind::objectBegin || kind == Kind::arrayBegin;
}

bool isEnd(Kind kind)
{
    return kind == Kind::objectEnd || kind == Kind::arrayEnd;
}

/// How a character is written in a string. Half of a surrogate pair can't be written in UTF-8, so
/// it is escaped as it must have been before.
QString escaped(QChar c)
{
    switch (c.unicode()) {
    case u'"':
        return QStringLiteral("\\\"");
    case u'\\':
        return QStringLiteral("\\\\");
    case u'\b':
        return QStringLiteral("\\b");
    case u'\f':
        return QStringLiteral("\\f");
    case u'\n':
        return QStringLiteral("\\n");
    case u'\r':
        return QStringLiteral("\\r");
    case u'\t':
        return QStringLiteral("\\t");
    default:
        return QStringLiteral("\\u") + QString::number(c.unicode(), 16).rightJustified(4, u'0');
    }
}

/// Whether a string can hold the unit at `index` as it is.
bool isPlain(const QString& text, qsizetype index)
{
    const QChar c = text[index];
    if (c.isHighSurrogate()) {
        return index + 1 < text.size() && text[index + 1].isLowSurrogate();
    }
    if (c.isLowSurrogate()) {
        return index > 0 && text[index - 1].isHighSurrogate();
    }
    return c >= u' ' && c != u'"' && c != u'\\';
}

/// `text` between quotes. "/" stays as it is, and so does what isn't ASCII.
QString quoted(const QString& text)
{
    QString result = QStringLiteral("\"");
    result.reserve(text.size() + 2);
    qsizetype written = 0;
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (!isPlain(text, i)) {
            result += QStringView(text).sliced(written, i - written);
            result += escaped(text[i]);
            written = i + 1;
        }
    }
    result += QStringView(text).sliced(written);
    return result + u'"';
}

QString spelled(const DocumentToken& token)
{
    switch (token.kind) {
    case Kind::objectBegin:
        return QStringLiteral("{");
    case Kind::objectEnd:
        return QStringLiteral("}");
    case Kind::arrayBegin:
        return QStringLiteral("[");
    case Kind::arrayEnd:
        return QStringLiteral("]");
    case Kind::name:
        return quoted(token.text) + u':';
    case Kind::string:
        return quoted(token.text);
    case Kind::verbatim:
        return token.text;
    }
    Q_UNREACHABLE();
}

/// What stands between two pieces, the second of which is `depth` levels down.
QString gap(Kind before, Kind after, qsizetype depth, Layout layout)
{
    if (before == Kind::name) {
        return layout == Layout::indented ? QStringLiteral(" ") : QString();
    }
    if (isBegin(before) && isEnd(after)) {
        return {};
    }
    const QString comma = isBegin(before) || isEnd(after) ? QString() : QStringLiteral(",");
    return layout == Layout::indented ? comma + u'\n' + QString(2 * depth, u' ') : comma;
}

} // namespace

StructuredDocument::StructuredDocument(std::vector<DocumentToken> tokens)
    : m_tokens(std::move(tokens))
{
}

std::optional<StructuredDocument> StructuredDocument::parse(QStringView text)
{
    auto tokens = documentTokens(text);
    if (!tokens) {
        return std::nullopt;
    }
    return StructuredDocument(std::move(*tokens));
}

std::vector<DocumentString> StructuredDocument::strings() const
{
    std::vector<DocumentString> result;
    for (const DocumentToken& token : m_tokens) {
        if (token.kind == Kind::string) {
            result.push_back({token.path, token.text});
        }
    }
    return result;
}

void StructuredDocument::replaceStrings(const QHash<QString, QString>& replacements)
{
    for (DocumentToken& token : m_tokens) {
        if (token.kind == Kind::string) {
            token.text = replacements.value(token.path, token.text);
        }
    }
}

QString StructuredDocument::written(Layout layout) const
{
    QString result;
    qsizetype depth = 0;
    const DocumentToken* previous = nullptr;
    for (const DocumentToken& token : m_tokens) {
        depth -= isEnd(token.kind) ? 1 : 0;
        if (previous) {
            result += gap(previous->kind, token.kind, depth, layout);
        }
        result += spelled(token);
        depth += isBegin(token.kind) ? 1 : 0;
        previous = &token;
    }
    return result;
}

} // namespace zelvane
