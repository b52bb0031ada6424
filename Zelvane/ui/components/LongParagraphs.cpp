#include "ui/components/LongParagraphs.h"

#include <QTextBoundaryFinder>

namespace zelvane {

namespace {

/// Two characters that are seen nowhere and mean nothing together. Then the line breaks.
QString breakMark()
{
    return QStringLiteral("\u2060\u200B\n");
}

/// How far before the limit a better place for a break is looked for.
constexpr qsizetype tolerance = 256;

bool endsParagraph(QChar c)
{
    return c == u'\n' || c == u'\r' || c == QChar::ParagraphSeparator;
}

/// Where to break `paragraph`, which is too long, so that no word is cut, or at least no character.
qsizetype breakPlace(QStringView paragraph)
{
    // A little of what follows tells whether the place is within a word.
    const qsizetype from = longestParagraph - tolerance;
    const QStringView end =
        paragraph.sliced(from, std::min(2 * tolerance, paragraph.size() - from));
    for (const auto type : {QTextBoundaryFinder::Line, QTextBoundaryFinder::Grapheme}) {
        QTextBoundaryFinder finder(type, end.toString());
        finder.setPosition(tolerance);
        if (!finder.isAtBoundary()) {
            finder.toPreviousBoundary();
        }
        if (finder.position() > 0) {
            return from + finder.position();
        }
    }
    return longestParagraph;
}

void appendBroken(QString& result, QStringView paragraph)
{
    while (paragraph.size() > longestParagraph) {
        const qsizetype place = breakPlace(paragraph);
        result += paragraph.first(place);
        result += breakMark();
        paragraph = paragraph.sliced(place);
    }
    result += paragraph;
}

} // namespace

QString withLongParagraphsBroken(const QString& text)
{
    if (text.size() <= longestParagraph) {
        return text;
    }
    QString result;
    result.reserve(text.size() + text.size() / longestParagraph * 4);
    qsizetype start = 0;
    while (start < text.size()) {
        qsizetype end = start;
        while (end < text.size() && !endsParagraph(text[end])) {
            ++end;
        }
        appendBroken(result, QStringView(text).sliced(start, end - start));
        while (end < text.size() && endsParagraph(text[end])) {
            result += text[end++];
        }
        start = end;
    }
    return result;
}

QString withParagraphsJoined(QString text)
{
    return text.remove(breakMark());
}

} // namespace zelvane
