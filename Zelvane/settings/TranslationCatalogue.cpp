#include "settings/TranslationCatalogue.h"

#include <QStringDecoder>

namespace zelvane {

namespace {

/// The text of a quoted string with its escapes resolved, or none if it isn't one.
std::optional<QString> unquoted(QStringView text)
{
    if (text.size() < 2 || !text.startsWith(u'"') || !text.endsWith(u'"')) {
        return std::nullopt;
    }
    const QStringView inner = text.sliced(1, text.size() - 2);
    QString result;
    for (qsizetype i = 0; i < inner.size(); ++i) {
        if (inner[i] == u'"') {
            return std::nullopt;
        }
        if (inner[i] != u'\\') {
            result += inner[i];
            continue;
        }
        if (++i == inner.size()) {
            return std::nullopt;
        }
        switch (inner[i].unicode()) {
        case u'n':
            result += u'\n';
            break;
        case u't':
            result += u'\t';
            break;
        case u'"':
        case u'\\':
            result += inner[i];
            break;
        default:
            return std::nullopt;
        }
    }
    return result;
}

class CatalogueReader
{
public:
    /// False if the line doesn't belong into a catalogue.
    bool readLine(QStringView line)
    {
        if (line.isEmpty()) {
            return true;
        }
        if (line.startsWith(u'#')) {
            finishEntry();
            m_isFuzzy = m_isFuzzy || (line.startsWith(u"#,") && line.contains(u"fuzzy"));
            return true;
        }
        if (line.startsWith(u"msgid ")) {
            finishEntry();
            m_part = &m_key;
            return append(line.sliced(6));
        }
        if (line.startsWith(u"msgstr ") && m_part == &m_key) {
            m_part = &m_translation;
            return append(line.sliced(7));
        }
        return m_part != nullptr && append(line);
    }

    TranslationCatalogue finish()
    {
        finishEntry();
        return std::move(m_catalogue);
    }

private:
    bool append(QStringView quoted)
    {
        const std::optional<QString> text = unquoted(quoted);
        if (text) {
            *m_part += *text;
        }
        return text.has_value();
    }

    void finishEntry()
    {
        if (m_part == nullptr) {
            return;
        }
        // The entry of the empty key is the catalogue's header.
        if (!m_key.isEmpty() && !m_translation.isEmpty() && !m_isFuzzy) {
            m_catalogue.insert(m_key, m_translation);
        }
        m_key.clear();
        m_translation.clear();
        m_part = nullptr;
        m_isFuzzy = false;
    }

    TranslationCatalogue m_catalogue;
    QString m_key;
    QString m_translation;
    QString* m_part = nullptr; ///< what the lines belong to
    bool m_isFuzzy = false;
};

} // namespace

std::optional<TranslationCatalogue> parseCatalogue(const QByteArray& text)
{
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString decoded = decoder(text);
    if (decoder.hasError()) {
        return std::nullopt;
    }
    CatalogueReader reader;
    for (const QStringView line : QStringView(decoded).split(u'\n')) {
        if (!reader.readLine(line.trimmed())) {
            return std::nullopt;
        }
    }
    return reader.finish();
}

} // namespace zelvane
