#include "ui/components/ThemedLabel.h"

#include "ui/components/Styling.h"

#include <QPainter>
#include <QStyle>

namespace zelvane {

QColor toneColor(const ThemeColors& colors, TextTone tone)
{
    switch (tone) {
    case TextTone::primary:
        return colors.text;
    case TextTone::secondary:
        return colors.secondaryText;
    case TextTone::tertiary:
        return colors.tertiaryText;
    case TextTone::success:
        return colors.success;
    case TextTone::warning:
        return colors.warningText;
    case TextTone::danger:
        return colors.danger;
    case TextTone::link:
        return colors.link;
    }
    Q_UNREACHABLE();
}

ThemedLabel::ThemedLabel(const Theme& theme, Role role, TextTone tone, QWidget* parent)
    : QLabel(parent)
    , m_theme(theme)
    , m_role([&theme, role] { return theme.tokens().typography().*role; })
    , m_tone(tone)
{
    setTextFormat(Qt::PlainText);
    keepStyled(*this, theme, [this] { restyle(); });
}

ThemedLabel::ThemedLabel(const Theme& theme, StyleFontRole role, TextTone tone, QWidget* parent)
    : QLabel(parent)
    , m_theme(theme)
    , m_role([role] { return role; })
    , m_tone(tone)
{
    setTextFormat(Qt::PlainText);
    keepStyled(*this, theme, [this] { restyle(); });
}

void ThemedLabel::setElides(bool elides)
{
    m_elides = elides;
    updateGeometry();
}

QSize ThemedLabel::minimumSizeHint() const
{
    return m_elides ? QSize(0, QLabel::minimumSizeHint().height()) : QLabel::minimumSizeHint();
}

void ThemedLabel::paintEvent(QPaintEvent* event)
{
    const QString shown =
        m_elides ? fontMetrics().elidedText(text(), Qt::ElideRight, width()) : text();
    if (m_elides) {
        setToolTip(shown == text() ? QString() : text());
    }
    if (shown == text()) {
        QLabel::paintEvent(event);
        return;
    }
    QPainter painter(this);
    painter.setPen(palette().color(QPalette::WindowText));
    const auto place = QStyle::visualAlignment(layoutDirection(), alignment());
    painter.drawText(rect(), int(place) | Qt::TextSingleLine, shown);
}

void ThemedLabel::setTone(TextTone tone)
{
    m_tone = tone;
    restyle();
}

void ThemedLabel::restyle()
{
    setFont(m_theme.font(m_role()));
    QPalette colors = palette();
    const QColor color = toneColor(m_theme.colors(), m_tone);
    colors.setColor(QPalette::WindowText, color);
    colors.setColor(QPalette::Text, color);
    colors.setColor(QPalette::Highlight, m_theme.colors().textSelection);
    colors.setColor(QPalette::HighlightedText, color);
    setPalette(colors);
}

} // namespace zelvane
