#include "Services/ModelOutput.h"

#include "foundation/Text.h"

#include <QHash>
#include <QJsonArray>

#include <algorithm>
#include <array>

namespace zelvane {

namespace {

/// The texts of the parts of which some servers make a message. None if `content` holds anything
/// but objects.
QString joinedParts(const QJsonArray& content)
{
    QString joined;
    for (const QJsonValue part : content) {
        if (!part.isObject()) {
            return {};
        }
        const QJsonValue text = part[u"text"];
        joined += text.isString() ? text.toString() : part[u"content"].toString();
    }
    return joined;
}

/// Removes each passage from `<think>` to the `</think>` behind it, also one that only the removal
/// of another has put together.
QString withoutThoughts(QString text)
{
    static const QString opening = QStringLiteral("<think>");
    static const QString closing = QStringLiteral("</think>");
    qsizetype begin = 0;
    while (true) {
        begin = text.indexOf(opening, begin, Qt::CaseInsensitive);
        const qsizetype end =
            begin < 0 ? -1 : text.indexOf(closing, begin + opening.size(), Qt::CaseInsensitive);
        if (end < 0) {
            return text;
        }
        text.remove(begin, end + closing.size() - begin);
        begin = std::max<qsizetype>(0, begin - opening.size() + 1);
    }
}

/// Removes each passage from `redacted_thinking` to the `/redacted_thinking` behind it, brackets
/// around them included. By hand: Qt's regular expressions find nothing in a text with a lone half
/// of a surrogate pair.
QString withoutRedactedThoughts(const QString& text)
{
    static const QString opening = QStringLiteral("redacted_thinking");
    static const QString closing = QStringLiteral("/redacted_thinking");
    QString kept;
    qsizetype from = 0;
    while (true) {
        qsizetype begin = text.indexOf(opening, from);
        qsizetype end = begin < 0 ? -1 : text.indexOf(closing, begin + opening.size());
        if (end < 0) {
            return kept + text.sliced(from);
        }
        end += closing.size();
        if (begin > from && text[begin - 1] == u'[') {
            --begin;
        }
        if (end < text.size() && text[end] == u']') {
            ++end;
        }
        kept += QStringView(text).sliced(from, begin - from);
        from = end;
    }
}

bool hasRunOfEqual(const QStringList& items, qsizetype length)
{
    qsizetype run = 0;
    for (qsizetype i = 0; i < items.size(); ++i) {
        run = i > 0 && items[i] == items[i - 1] ? run + 1 : 1;
        if (run == length) {
            return true;
        }
    }
    return false;
}

bool oneRecurs(const QStringList& items, qsizetype times)
{
    QHash<QString, qsizetype> counts;
    return std::ranges::any_of(items, [&](const QString& item) { return ++counts[item] == times; });
}

/// The pieces of `text` between line feeds, without the fences that some models put around code.
QStringList answeredLines(const QString& text)
{
    QStringList lines;
    for (const QString& piece : text.split(u'\n')) {
        const QString line = text::trimmedWithinLine(piece);
        if (!line.isEmpty() && !line.startsWith(u"```")) {
            lines += line;
        }
    }
    return lines;
}

QStringList paragraphsOf(const QString& text)
{
    QStringList paragraphs;
    for (const QString& piece : text.split(QStringLiteral("\n\n"))) {
        const QString paragraph = text::trimmed(piece);
        if (!paragraph.isEmpty()) {
            paragraphs += paragraph;
        }
    }
    return paragraphs;
}

/// Puts one translation at each position.
std::optional<QStringList> filled(QStringList lines, const QList<qsizetype>& positions,
                                  const QStringList& translations)
{
    for (qsizetype i = 0; i < positions.size(); ++i) {
        lines[positions[i]] = translations[i];
    }
    if (!allTargetsFilled(lines, positions)) {
        return std::nullopt;
    }
    return lines;
}

} // namespace

std::optional<QString> extractMessageText(const QJsonObject& message)
{
    const QJsonValue content = message.value(u"content");
    const QString text = content.isArray() ? joinedParts(content.toArray()) : content.toString();
    if (!text::isBlank(text)) {
        return text;
    }
    // Some servers take the whole answer for thoughts.
    for (const QStringView key : {u"reasoning_content", u"reasoning", u"thinking"}) {
        const QString thoughts = message.value(key).toString();
        if (!text::isBlank(thoughts)) {
            return thoughts;
        }
    }
    return std::nullopt;
}

QString stripReasoning(const QString& text)
{
    static const QString opening = QStringLiteral("<think>");
    static const QString closing = QStringLiteral("</think>");
    QString kept = withoutThoughts(text);
    const qsizetype end = kept.indexOf(closing, 0, Qt::CaseInsensitive);
    if (end >= 0) { // the answer begins amid its thoughts
        kept.remove(0, end + closing.size());
    }
    const qsizetype begin = kept.indexOf(opening, 0, Qt::CaseInsensitive);
    if (begin >= 0) { // it was cut off while thinking
        kept.truncate(begin);
    }
    return text::trimmed(withoutRedactedThoughts(kept));
}

bool looksDegenerate(const QStringList& lines)
{
    if (lines.isEmpty()) {
        return true;
    }
    QStringList lower;
    for (const QString& line : lines) {
        lower += text::lowerCased(line);
    }
    if (hasRunOfEqual(lower, 3) || (lower.size() >= 6 && oneRecurs(lower, 4))) {
        return true;
    }
    return std::ranges::any_of(lower, [](const QString& line) {
        return hasRunOfEqual(line.split(u' ', Qt::SkipEmptyParts), 4);
    });
}

bool isPlausibleSingleLine(const QString& source, const QString& candidate)
{
    const qsizetype sourceLength = text::characterCount(text::trimmed(source));
    const qsizetype length = text::characterCount(text::trimmed(candidate));
    return sourceLength < 200 ? length > 0 : 3 * length >= sourceLength;
}

bool allTargetsFilled(const QStringList& lines, const QList<qsizetype>& positions)
{
    return std::ranges::none_of(positions,
                                [&](qsizetype position) { return text::isBlank(lines[position]); });
}

std::optional<QStringList> mergeModelOutput(const QString& answer, const QStringList& lines,
                                            const QList<qsizetype>& positions)
{
    const qsizetype count = positions.size();
    const QString cleaned = stripReasoning(answer);
    QStringList answered = answeredLines(cleaned);
    if (looksDegenerate(answered)) { // also if there are none
        return std::nullopt;
    }
    if (count == 1) {
        const QString joined = answered.join(u'\n');
        if (!isPlausibleSingleLine(lines[positions.first()], joined)) {
            return std::nullopt;
        }
        QStringList result = lines;
        result[positions.first()] = joined;
        return result;
    }
    if (answered.size() == count) {
        return filled(lines, positions, answered);
    }
    // A model may wrap its lines and yet keep one paragraph for each line it was given.
    const QStringList paragraphs = paragraphsOf(cleaned);
    if (paragraphs.size() == count && !looksDegenerate(paragraphs)) {
        return filled(lines, positions, paragraphs);
    }
    if (answered.size() < count) {
        return std::nullopt; // lines can't be invented
    }
    const QString rest = answered.sliced(count - 1).join(u'\n');
    answered.resize(count - 1);
    answered += rest;
    return filled(lines, positions, answered);
}

} // namespace zelvane
