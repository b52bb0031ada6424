#include "ui/components/Buttons.h"

#include "ui/components/Styling.h"
#include "ui/style/Symbols.h"

#include <QKeyEvent>
#include <QPainter>
#include <QStyle>

#include <cmath>

namespace zelvane {

namespace {

constexpr int textPadding = 14;
constexpr int plainPadding = 8;
constexpr int symbolGap = 6;
constexpr int keyHintGap = 10;
constexpr int minimalWidth = 76;
constexpr int iconButtonSide = 28;
constexpr int iconButtonSymbol = 16;

int advance(const QString& text, const QFont& font)
{
    // Rounded up: a text that gets a fraction of a pixel too little loses its end.
    return int(std::ceil(QFontMetricsF(font).horizontalAdvance(text)));
}

/// Return presses the button that has the keyboard. Whether it did.
bool pressedByReturn(QAbstractButton& button, const QKeyEvent& event)
{
    const bool isReturn = event.key() == Qt::Key_Return || event.key() == Qt::Key_Enter;
    const bool isPlain = (event.modifiers() & ~Qt::KeypadModifier) == Qt::NoModifier;
    if (!isReturn || !isPlain) {
        return false;
    }
    button.click();
    return true;
}

} // namespace

TextButton::TextButton(const Theme& theme, ControlKind kind, QWidget* parent)
    : QAbstractButton(parent)
    , m_theme(theme)
    , m_kind(kind)
{
    prepareControl(*this, theme);
    setSizePolicy(QSizePolicy::Minimum, QSizePolicy::Fixed);
    keepStyled(*this, theme, [this] { setFont(m_theme.font(StyleFontRole::body)); });
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

void TextButton::setKeyHint(const QString& hint)
{
    m_keyHint = hint;
    updateGeometry();
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
    const int padding = m_kind == ControlKind::plain ? plainPadding : textPadding;
    const int room = leadingWidth() + words + trailingWidth() + 2 * padding;
    return {m_kind == ControlKind::plain ? room : std::max(room, minimalWidth),
            controlHeight(m_theme)};
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

    const int around = leadingWidth() + trailingWidth();
    const QString shown = fontMetrics().elidedText(text(), Qt::ElideRight, width() - around);
    const int words = textWidth(shown);
    int x = (width() - around - words) / 2;
    const auto place = [&](int itemWidth) {
        const QRect item(x, 0, itemWidth, height());
        x += itemWidth;
        return QStyle::visualRect(layoutDirection(), rect(), item);
    };
    if (!m_symbol.isEmpty()) {
        const QRect room = place(leadingWidth());
        const int side = symbolSize();
        const QRect symbol = QStyle::visualRect(layoutDirection(), room,
                                                QRect(room.x(), (height() - side) / 2, side, side));
        painter.drawPixmap(symbol.topLeft(),
                           symbolPixmap(m_symbol, color, side, devicePixelRatioF()));
    }
    painter.drawText(place(words), Qt::AlignCenter | Qt::TextSingleLine, shown);
    if (!m_keyHint.isEmpty()) {
        // On the accent nothing fainter than the text itself could be read.
        const bool onPlainGround = isEnabled() && m_kind != ControlKind::prominent;
        painter.setPen(onPlainGround ? m_theme.colors().secondaryText : color);
        painter.setFont(keyHintFont());
        const auto end = QStyle::visualAlignment(layoutDirection(), Qt::AlignRight);
        painter.drawText(place(trailingWidth()), int(end | Qt::AlignVCenter) | Qt::TextSingleLine,
                         m_keyHint);
    }
}

void TextButton::keyPressEvent(QKeyEvent* event)
{
    if (!pressedByReturn(*this, *event)) {
        QAbstractButton::keyPressEvent(event);
    }
}

int TextButton::textWidth(const QString& text) const
{
    return advance(text, font());
}

int TextButton::symbolSize() const
{
    return fontMetrics().height();
}

int TextButton::leadingWidth() const
{
    return m_symbol.isEmpty() ? 0 : symbolSize() + symbolGap;
}

int TextButton::trailingWidth() const
{
    return m_keyHint.isEmpty() ? 0 : advance(m_keyHint, keyHintFont()) + keyHintGap;
}

QFont TextButton::keyHintFont() const
{
    return m_theme.font(StyleFontRole::caption);
}

IconButton::IconButton(const Theme& theme, QString symbol, QWidget* parent, ControlKind kind)
    : QAbstractButton(parent)
    , m_theme(theme)
    , m_symbol(std::move(symbol))
    , m_kind(kind)
{
    prepareControl(*this, theme);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void IconButton::setSymbol(const QString& name)
{
    m_symbol = name;
    update();
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

QColor IconButton::symbolColor() const
{
    const ThemeColors& colors = m_theme.colors();
    if (!isEnabled()) {
        return colors.disabledText;
    }
    if (isChecked()) {
        return colors.link;
    }
    if (m_kind == ControlKind::destructive) {
        return colors.danger;
    }
    return underMouse() ? colors.text : colors.secondaryText;
}

void IconButton::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    paintControl(painter, *this, m_theme, m_kind);
    const int inset = (width() - iconButtonSymbol) / 2;
    painter.drawPixmap(
        inset, inset, symbolPixmap(m_symbol, symbolColor(), iconButtonSymbol, devicePixelRatioF()));
}

void IconButton::keyPressEvent(QKeyEvent* event)
{
    if (!pressedByReturn(*this, *event)) {
        QAbstractButton::keyPressEvent(event);
    }
}

} // namespace zelvane
