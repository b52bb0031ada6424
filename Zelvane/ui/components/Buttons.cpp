#include "ui/components/Buttons.h"

#include "ui/style/Symbols.h"

#include <QEvent>
#include <QPainter>

#include <cmath>

namespace zelvane {

namespace {

constexpr int textPadding = 14;
constexpr int minimalWidth = 76;
constexpr int iconButtonSide = 28;
constexpr int iconButtonSymbol = 16;

/// What every button of the program shares: it repaints under the pointer and takes the keyboard.
void prepare(QAbstractButton& button, const Theme& theme)
{
    button.setAttribute(Qt::WA_Hover);
    button.setFocusPolicy(Qt::StrongFocus);
    button.setProperty(focusRadiusProperty, theme.tokens().controlRadius());
    QObject::connect(&theme, &Theme::changed, &button, [&button, &theme] {
        button.setProperty(focusRadiusProperty, theme.tokens().controlRadius());
        button.update();
    });
}

} // namespace

TextButton::TextButton(const Theme& theme, ControlKind kind, QWidget* parent)
    : QAbstractButton(parent)
    , m_theme(theme)
    , m_kind(kind)
{
    prepare(*this, theme);
    setSizePolicy(QSizePolicy::Minimum, QSizePolicy::Fixed);
    connect(&theme, &Theme::changed, this, &TextButton::restyle);
    restyle();
}

void TextButton::setSymbol(const QString& name)
{
    if (m_symbol != name) {
        m_symbol = name;
        updateGeometry();
        update();
    }
}

void TextButton::setKind(ControlKind kind)
{
    m_kind = kind;
    update();
}

void TextButton::setAlternativeText(const QString& text)
{
    m_alternativeText = text;
    updateGeometry();
}

QSize TextButton::sizeHint() const
{
    const int words = std::max(textWidth(text()), textWidth(m_alternativeText));
    return {std::max(leadingWidth() + words + 2 * textPadding, minimalWidth),
            fontMetrics().height() + 13};
}

QSize TextButton::minimumSizeHint() const
{
    return sizeHint();
}

void TextButton::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    paintControl(painter, *this, m_theme, m_kind);
    const QColor color = controlTextColor(*this, m_theme, m_kind);
    painter.setPen(color);

    const int available = width() - leadingWidth() - 2 * textPadding;
    const QString shown = fontMetrics().elidedText(text(), Qt::ElideRight, available);
    const int words = textWidth(shown);
    const int start = (width() - leadingWidth() - words) / 2;
    const bool mirrored = layoutDirection() == Qt::RightToLeft;
    if (!m_symbol.isEmpty()) {
        const int x = mirrored ? width() - start - symbolSize() : start;
        painter.drawPixmap(x, (height() - symbolSize()) / 2,
                           symbolPixmap(m_symbol, color, symbolSize(), devicePixelRatioF()));
    }
    const int textX = mirrored ? start : start + leadingWidth();
    painter.drawText(QRect(textX, 0, words, height()), Qt::AlignCenter | Qt::TextSingleLine, shown);
}

void TextButton::changeEvent(QEvent* event)
{
    QAbstractButton::changeEvent(event);
    if (event->type() == QEvent::ApplicationFontChange) {
        restyle();
    }
}

void TextButton::restyle()
{
    setFont(m_theme.font(StyleFontRole::body));
}

int TextButton::textWidth(const QString& text) const
{
    // Rounded up: a text that gets a fraction of a pixel too little loses its end.
    return int(std::ceil(QFontMetricsF(font()).horizontalAdvance(text)));
}

int TextButton::symbolSize() const
{
    return fontMetrics().height();
}

int TextButton::leadingWidth() const
{
    return m_symbol.isEmpty() ? 0 : symbolSize() + 6;
}

IconButton::IconButton(const Theme& theme, QString symbol, QWidget* parent)
    : QAbstractButton(parent)
    , m_theme(theme)
    , m_symbol(std::move(symbol))
{
    prepare(*this, theme);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void IconButton::setLabel(const QString& label, const QString& hint)
{
    setAccessibleName(label);
    setToolTip(hint.isEmpty() ? label : label + hint);
}

QSize IconButton::sizeHint() const
{
    return {iconButtonSide, iconButtonSide};
}

void IconButton::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    paintControl(painter, *this, m_theme, ControlKind::bordered);
    const QColor color =
        underMouse() && isEnabled() ? m_theme.colors().text : m_theme.colors().secondaryText;
    const int inset = (width() - iconButtonSymbol) / 2;
    painter.drawPixmap(inset, inset,
                       symbolPixmap(m_symbol, color, iconButtonSymbol, devicePixelRatioF()));
}

} // namespace zelvane
