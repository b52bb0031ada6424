// Whatever stands in a dictionary's file is read as by the rules taken word for word, on QString,
// and whatever is looked up in it is taken apart without a loss.

#include "Survive.h"
#include "foundation/Text.h"
#include "glossary/GlossaryMatcher.h"
#include "glossary/GlossaryTerm.h"

#include <QMap>
#include <QStringDecoder>

#include <cstdint>

using namespace zelvane;
using zelvane::fuzz::require;

namespace {

using Records = QMap<QString, QStringList>;

QString keyOf(const QString& term)
{
    QStringList words{QString()};
    const QString lowerCased = text::lowerCased(text::composed(term));
    for (const QChar unit : lowerCased) {
        if (text::isWhiteSpace(unit.unicode())) {
            words += QString();
        } else {
            words.back() += unit;
        }
    }
    words.removeAll(QString());
    return words.join(u' ');
}

Records recordsOf(const QString& content)
{
    Records records;
    for (const QString& line : content.split(u'\n')) {
        const QStringList fields = line.split(u'\t');
        if (fields.size() != 3) {
            continue;
        }
        QStringList candidates;
        for (const QString& piece : fields[1].split(u'|')) {
            candidates += text::trimmedWithinLine(piece);
        }
        candidates.removeAll(QString());
        if (!candidates.isEmpty()) {
            records[keyOf(fields[0])] = candidates;
        }
    }
    return records;
}

void requireSame(const GlossaryDictionary& dictionary, const Records& records)
{
    require(dictionary.size() == records.size());
    std::string key;
    for (auto record = records.begin(); record != records.end(); ++record) {
        const QByteArray expected = record.key().toUtf8();
        const auto entry = dictionary.find({expected.constData(), size_t(expected.size())});
        require(entry && entry->candidates() == record.value());
    }
}

void lookUp(const QString& line, GlossaryMatcher& matcher)
{
    const GlossaryLine split = splitGlossaryLine(line);
    require(split.prefix + split.term == line);
    if (const auto match = matcher.match(line)) {
        require(match->prefix == split.prefix && match->term == split.term);
        require(!match->hints.isEmpty());
        require(!match->replacement || match->hints.contains(*match->replacement));
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString content = decoder.decode(bytes);
    std::shared_ptr<const GlossaryDictionary> dictionary;
    fuzz::survive([&] { dictionary = std::make_shared<const GlossaryDictionary>(bytes); });
    require((dictionary == nullptr) == decoder.hasError());
    if (!dictionary) {
        return 0;
    }
    requireSame(*dictionary, recordsOf(content));
    GlossaryMatcher intoGerman({dictionary}, {QStringLiteral("de"), QString()});
    GlossaryMatcher intoFrench({dictionary, dictionary}, {QStringLiteral("fr"), QString()});
    for (const QString& field : QString(content).replace(u'\t', u'\n').split(u'\n')) {
        lookUp(field, intoGerman);
        lookUp(field, intoFrench);
    }
    return 0;
}
