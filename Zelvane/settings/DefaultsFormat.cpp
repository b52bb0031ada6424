#include "settings/DefaultsFormat.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocale>

#include <algorithm>

namespace zelvane {

namespace {

/// Splits the members of an object without reading their values, which Qt's reader would round and
/// change. The text must be known to be valid JSON.
class MemberSplitter
{
public:
    explicit MemberSplitter(QByteArrayView object)
        : m_text(object)
        , m_at(object.indexOf('{') + 1)
    {
    }

    struct Member
    {
        QByteArrayView key; ///< with its quotes
        QByteArrayView value;
    };

    std::optional<Member> next()
    {
        skipWhile(" \t\r\n,");
        if (m_text.at(m_at) == '}') {
            return std::nullopt;
        }
        const QByteArrayView key = takeString();
        skipWhile(" \t\r\n:");
        return Member{key, takeValue()};
    }

private:
    void skipWhile(QByteArrayView characters)
    {
        while (characters.contains(m_text.at(m_at))) {
            ++m_at;
        }
    }

    QByteArrayView takeString()
    {
        const qsizetype start = m_at++;
        while (m_text.at(m_at) != '"') {
            m_at += m_text.at(m_at) == '\\' ? 2 : 1;
        }
        ++m_at;
        return m_text.sliced(start, m_at - start);
    }

    QByteArrayView takeValue()
    {
        const qsizetype start = m_at;
        for (int depth = 0;;) {
            const char c = m_text.at(m_at);
            if (depth == 0 && (c == ',' || c == '}')) {
                return m_text.sliced(start, m_at - start).trimmed();
            }
            if (c == '"') {
                takeString();
                continue;
            }
            depth += c == '{' || c == '[' ? 1 : 0;
            depth -= c == '}' || c == ']' ? 1 : 0;
            ++m_at;
        }
    }

    QByteArrayView m_text;
    qsizetype m_at;
};

QString decodeString(QByteArrayView json)
{
    const QByteArrayView inner = json.sliced(1, json.size() - 2);
    if (!inner.contains('\\')) {
        return QString::fromUtf8(inner);
    }
    return QJsonDocument::fromJson('[' + json.toByteArray() + ']').array().first().toString();
}

/// Whole numbers beyond 64 bits are none of the kinds here, and stay as they are.
StoredValue decodeNumber(QByteArrayView json)
{
    bool fits = false;
    const bool isWhole =
        std::ranges::none_of(json, [](char c) { return c == '.' || c == 'e' || c == 'E'; });
    if (isWhole) {
        const qint64 number = json.toLongLong(&fits);
        return fits ? StoredValue(number) : StoredValue(ForeignValue{json.toByteArray()});
    }
    const double number = json.toDouble(&fits);
    return fits ? StoredValue(number) : StoredValue(ForeignValue{json.toByteArray()});
}

std::optional<QByteArray> decodeData(QByteArrayView json)
{
    const QJsonObject object = QJsonDocument::fromJson(json.toByteArray()).object();
    const QJsonValue text = object.value(QStringLiteral("data"));
    if (object.size() != 1 || !text.isString()) {
        return std::nullopt;
    }
    const auto decoded = QByteArray::fromBase64Encoding(text.toString().toUtf8(),
                                                        QByteArray::AbortOnBase64DecodingErrors);
    return decoded ? std::optional(decoded.decoded) : std::nullopt;
}

StoredValue decodeValue(QByteArrayView json)
{
    switch (json.front()) {
    case '"':
        return decodeString(json);
    case 't':
        return true;
    case 'f':
        return false;
    case '{':
        if (auto data = decodeData(json)) {
            return *std::move(data);
        }
        return ForeignValue{json.toByteArray()};
    case '[':
    case 'n':
        return ForeignValue{json.toByteArray()};
    default:
        return decodeNumber(json);
    }
}

QByteArray encodeString(const QString& text)
{
    const QByteArray array = QJsonDocument(QJsonArray{text}).toJson(QJsonDocument::Compact);
    return array.sliced(1, array.size() - 2);
}

struct Encoder
{
    QByteArray operator()(bool on) const { return on ? "true" : "false"; }
    QByteArray operator()(qint64 number) const { return QByteArray::number(number); }
    QByteArray operator()(double number) const
    {
        const QByteArray shortest = QByteArray::number(number, 'g', QLocale::FloatingPointShortest);
        const bool looksWhole = !shortest.contains('.') && !shortest.contains('e');
        return looksWhole ? shortest + ".0" : shortest;
    }
    QByteArray operator()(const QString& text) const { return encodeString(text); }
    QByteArray operator()(const QByteArray& data) const
    {
        return "{\"data\": \"" + data.toBase64() + "\"}";
    }
    QByteArray operator()(const DefaultsValue& value) const { return std::visit(*this, value); }
    QByteArray operator()(const ForeignValue& value) const { return value.json; }
};

} // namespace

QByteArray encodeDefaults(const DefaultsContents& contents)
{
    QStringList keys = contents.keys();
    keys.sort();
    QByteArray json = "{";
    const char* separator = "\n";
    for (const QString& key : keys) {
        json += separator;
        json += "  " + encodeString(key) + ": " + std::visit(Encoder(), contents.value(key));
        separator = ",\n";
    }
    return json + "\n}\n";
}

std::optional<DefaultsContents> decodeDefaults(const QByteArray& json)
{
    if (!QJsonDocument::fromJson(json).isObject()) {
        return std::nullopt;
    }
    DefaultsContents contents;
    MemberSplitter members(json);
    while (const auto member = members.next()) {
        contents.insert(decodeString(member->key), decodeValue(member->value));
    }
    return contents;
}

} // namespace zelvane
