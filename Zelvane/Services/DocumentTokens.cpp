#include "Services/DocumentTokens.h"

#include <QHash>

#include <utility>

namespace zelvane {

namespace {

using Kind = DocumentToken::Kind;

constexpr std::size_t maximalDepth = 512;
// Fifty characters for each of 300,000 strings: more than any document that somebody translates.
constexpr qsizetype maximalPathCharacters = 16'000'000;

bool isDigit(char16_t c)
{
    return c >= u'0' && c <= u'9';
}

std::optional<int> hexValue(char16_t c)
{
    if (isDigit(c)) {
        return c - u'0';
    }
    const char16_t letter = c | 0x20; // in lower case
    if (letter >= u'a' && letter <= u'f') {
        return letter - u'a' + 10;
    }
    return std::nullopt;
}

/// Walks over single characters. Behind the end stand null characters, which no document has
/// outside its strings.
class Cursor
{
public:
    explicit Cursor(QStringView text)
        : m_text(text)
    {
    }

    [[nodiscard]] char16_t peek() const { return isAtEnd() ? u'\0' : m_text[m_at].unicode(); }
    [[nodiscard]] bool isAtEnd() const { return m_at >= m_text.size(); }
    [[nodiscard]] qsizetype position() const { return m_at; }
    [[nodiscard]] QString since(qsizetype begin) const
    {
        return m_text.sliced(begin, m_at - begin).toString();
    }

    char16_t next()
    {
        const char16_t c = peek();
        ++m_at;
        return c;
    }

    bool take(char16_t expected)
    {
        const bool isThere = !isAtEnd() && peek() == expected;
        m_at += isThere ? 1 : 0;
        return isThere;
    }

    bool take(QStringView expected)
    {
        const bool isThere = !isAtEnd() && m_text.sliced(m_at).startsWith(expected);
        m_at += isThere ? expected.size() : 0;
        return isThere;
    }

    /// What a string can hold as it is.
    QStringView takePlain()
    {
        const qsizetype begin = m_at;
        while (peek() >= u' ' && peek() != u'"' && peek() != u'\\') {
            ++m_at;
        }
        return m_text.sliced(begin, m_at - begin);
    }

    bool takeDigits()
    {
        const qsizetype begin = m_at;
        while (isDigit(peek())) {
            ++m_at;
        }
        return m_at > begin;
    }

    void skipWhiteSpace()
    {
        while (take(u' ') || take(u'\t') || take(u'\n') || take(u'\r')) {
        }
    }

private:
    QStringView m_text;
    qsizetype m_at = 0;
};

bool takeNumber(Cursor& cursor)
{
    cursor.take(u'-');
    if (!cursor.take(u'0') && !cursor.takeDigits()) {
        return false;
    }
    if (cursor.take(u'.') && !cursor.takeDigits()) {
        return false;
    }
    if (!cursor.take(u'e') && !cursor.take(u'E')) {
        return true;
    }
    if (!cursor.take(u'+')) {
        cursor.take(u'-');
    }
    return cursor.takeDigits();
}

/// What an escape stands for, behind its backslash: one unit of UTF-16.
std::optional<QChar> takeEscape(Cursor& cursor)
{
    switch (const char16_t c = cursor.next()) {
    case u'"':
    case u'\\':
    case u'/':
        return QChar(c);
    case u'b':
        return QChar(u'\b');
    case u'f':
        return QChar(u'\f');
    case u'n':
        return QChar(u'\n');
    case u'r':
        return QChar(u'\r');
    case u't':
        return QChar(u'\t');
    case u'u':
        break;
    default:
        return std::nullopt;
    }
    int unit = 0;
    for (int i = 0; i < 4; ++i) {
        const auto digit = hexValue(cursor.next());
        if (!digit) {
            return std::nullopt;
        }
        unit = unit * 16 + *digit;
    }
    return QChar(unit);
}

std::optional<QString> takeString(Cursor& cursor)
{
    if (!cursor.take(u'"')) {
        return std::nullopt;
    }
    QString string;
    while (true) {
        string += cursor.takePlain();
        const char16_t c = cursor.next();
        if (c == u'"') {
            return string;
        }
        const auto escaped = c == u'\\' ? takeEscape(cursor) : std::nullopt;
        if (!escaped) { // also at the end
            return std::nullopt;
        }
        string += *escaped;
    }
}

/// Keeps the open objects and arrays itself, so that a hostile depth costs no stack.
class Tokenizer
{
public:
    explicit Tokenizer(QStringView text)
        : m_cursor(text)
    {
    }

    [[nodiscard]] bool read()
    {
        m_cursor.skipWhiteSpace();
        if ((m_cursor.peek() != u'{' && m_cursor.peek() != u'[') || !readValue()) {
            return false;
        }
        while (!m_levels.empty()) {
            m_cursor.skipWhiteSpace();
            if (!readStep()) {
                return false;
            }
        }
        m_cursor.skipWhiteSpace();
        return m_cursor.isAtEnd();
    }

    std::vector<DocumentToken>& tokens() { return m_tokens; }

private:
    /// What may come next in an object or array.
    enum class Next { elementOrEnd, element, commaOrEnd };

    struct Level
    {
        bool isObject = false;
        QString path;
        QString name;                    ///< of the member at hand, in an object
        QHash<QString, qsizetype> names; ///< how often each occurred so far
        qsizetype index = -1;            ///< of the element at hand, in an array
    };

    bool readStep()
    {
        Level& level = m_levels.back();
        if (m_next != Next::element && m_cursor.take(level.isObject ? u'}' : u']')) {
            return close();
        }
        if (m_next == Next::commaOrEnd) {
            m_next = Next::element;
            return m_cursor.take(u',');
        }
        ++level.index;
        return (!level.isObject || readName()) && readValue();
    }

    bool readName()
    {
        const auto name = takeString(m_cursor);
        m_cursor.skipWhiteSpace();
        if (!name || !m_cursor.take(u':')) {
            return false;
        }
        m_cursor.skipWhiteSpace();
        Level& level = m_levels.back();
        level.name = *name;
        if (const qsizetype earlier = level.names[*name]++) {
            // A repeated member is another one all the same, and has a path of its own.
            level.name += QChar(u'\0') + QString::number(earlier);
        }
        m_tokens.push_back({Kind::name, *name, {}});
        return true;
    }

    bool readValue()
    {
        m_next = Next::commaOrEnd;
        switch (m_cursor.peek()) {
        case u'{':
            return open(Kind::objectBegin);
        case u'[':
            return open(Kind::arrayBegin);
        case u'"':
            return readString();
        default:
            return readVerbatim();
        }
    }

    bool open(Kind kind)
    {
        if (m_levels.size() == maximalDepth) {
            return false;
        }
        m_cursor.next();
        m_tokens.push_back({kind, {}, {}});
        m_next = Next::elementOrEnd;
        Level level;
        level.isObject = kind == Kind::objectBegin;
        level.path = pathOfValue();
        m_levels.push_back(std::move(level));
        return m_pathCharacters <= maximalPathCharacters;
    }

    bool close()
    {
        const Kind kind = m_levels.back().isObject ? Kind::objectEnd : Kind::arrayEnd;
        m_tokens.push_back({kind, {}, {}});
        m_levels.pop_back();
        m_next = Next::commaOrEnd;
        return true;
    }

    bool readString()
    {
        const auto string = takeString(m_cursor);
        if (!string) {
            return false;
        }
        m_tokens.push_back({Kind::string, *string, pathOfValue()});
        return m_pathCharacters <= maximalPathCharacters;
    }

    bool readVerbatim()
    {
        const qsizetype begin = m_cursor.position();
        const bool isThere = m_cursor.take(QStringView(u"true")) ||
                             m_cursor.take(QStringView(u"false")) ||
                             m_cursor.take(QStringView(u"null")) || takeNumber(m_cursor);
        if (isThere) {
            m_tokens.push_back({Kind::verbatim, m_cursor.since(begin), {}});
        }
        return isThere;
    }

    /// The path of the value that is about to be added.
    QString pathOfValue()
    {
        if (m_levels.empty()) {
            return QStringLiteral("$");
        }
        const Level& level = m_levels.back();
        const QString path = level.isObject
                                 ? level.path + u'.' + level.name
                                 : level.path + u'[' + QString::number(level.index) + u']';
        m_pathCharacters += path.size();
        return path;
    }

    Cursor m_cursor;
    std::vector<DocumentToken> m_tokens;
    std::vector<Level> m_levels;
    Next m_next = Next::elementOrEnd;
    qsizetype m_pathCharacters = 0; ///< of all paths so far
};

} // namespace

std::optional<std::vector<DocumentToken>> documentTokens(QStringView text)
{
    Tokenizer tokenizer(text);
    if (!tokenizer.read()) {
        return std::nullopt;
    }
    return std::move(tokenizer.tokens());
}

} // namespace zelvane
