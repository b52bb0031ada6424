#include "ui/components/TextMeasure.h"

#include <QFontMetricsF>
#include <QTextLayout>

#include <cmath>

namespace zelvane {

namespace {

/// The height of one paragraph, as the layout of a plain text document makes it.
double paragraphHeight(const QString& paragraph, const QFont& font, double width, double limit)
{
    QTextOption option;
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    QTextLayout layout(paragraph, font);
    layout.setTextOption(option);
    double height = 0;
    layout.beginLayout();
    for (QTextLine line = layout.createLine(); line.isValid() && height <= limit;
         line = layout.createLine()) {
        line.setLeadingIncluded(true);
        line.setLineWidth(width);
        height += std::ceil(line.height());
    }
    layout.endLayout();
    return height;
}

bool endsParagraph(QChar c)
{
    return c == u'\n' || c == u'\r' || c == QChar::ParagraphSeparator;
}

} // namespace

double wrappedTextHeight(const QString& text, const QFont& font, double width, double limit)
{
    // No line holds more characters than this, so that only the beginning of a paragraph that fills
    // the window by itself has to be looked at.
    const double narrowest = std::max(1.0, QFontMetricsF(font).horizontalAdvance(u'i') / 2);
    const double lines = limit / std::max(1.0, QFontMetricsF(font).height()) + 2;
    const auto enough = qsizetype(lines * (width / narrowest + 1));

    double height = 0;
    qsizetype start = 0;
    while (start <= text.size() && height <= limit) {
        const qsizetype last = std::min(text.size(), start + enough);
        qsizetype end = start;
        while (end < last && !endsParagraph(text[end])) {
            ++end;
        }
        height += paragraphHeight(text.sliced(start, end - start), font, width, limit - height);
        const bool pair = end + 1 < text.size() && text[end] == u'\r' && text[end + 1] == u'\n';
        start = end + (pair ? 2 : 1);
    }
    return height;
}

} // namespace zelvane
