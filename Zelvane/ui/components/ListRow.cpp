#include "ui/components/ListRow.h"

#include "ui/components/Styling.h"
#include "ui/style/Symbols.h"
#include "ui/style/ViewStyles.h"

#include <QKeyEvent>
#include <QPainter>
#include <QStyle>

#include <cmath>

namespace zelvane {

namespace {

constexpr int rowInset = 10;
constexpr int symbolSide = 16;
constexpr int symbolGap = 8;

TranslatorListRowButtonStyle styleOf(const QAbstractButton& row, const Theme& theme)
{
    return {.isSelected = row.isChecked(),
            .hovering = row.isEnabled() && row.underMouse(),
            .tweaker = theme.tokens(),
            .reduceMotion = theme.appearance().reducedMotion()};
}

int advance(const QFont& font, const QString& text)
{
    return int(std::ceil(QFontMetricsF(font).horizontalAdvance(text)));
}

} // namespace

void paintRowContent(QPainter& painter, const QRect& row, const RowContent& content,
                     Qt::LayoutDirection direction)
{
    QRect room = row.adjusted(rowInset, 0, -rowInset, 0);
    const double ratio = painter.device()->devicePixelRatioF();
    const auto mirrored = [&](const QRect& place) {
        return QStyle::visualRect(direction, row, place);
    };
    const auto symbolAt = [&](int x, const QString& name, const QColor& color) {
        const QRect place(x, row.center().y() - symbolSide / 2 + 1, symbolSide, symbolSide);
        painter.drawPixmap(mirrored(place).topLeft(), symbolPixmap(name, color, symbolSide, ratio));
    };
    if (!content.symbol.isEmpty()) {
        symbolAt(room.left(), content.symbol, content.color);
        room.setLeft(room.left() + symbolSide + symbolGap);
    }
    if (!content.trailingSymbol.isEmpty()) {
        symbolAt(room.right() + 1 - symbolSide, content.trailingSymbol, content.trailingColor);
        room.setRight(room.right() - symbolSide - symbolGap);
    }
    const int flags = Qt::AlignVCenter | Qt::TextSingleLine;
    if (!content.trailing.isEmpty()) {
        const auto end = QStyle::visualAlignment(direction, Qt::AlignRight);
        painter.setPen(content.trailingColor);
        painter.drawText(mirrored(room), flags | int(end), content.trailing);
        room.setRight(room.right() - advance(painter.font(), content.trailing) - symbolGap);
    }
    const auto begin = QStyle::visualAlignment(direction, Qt::AlignLeft);
    painter.setPen(content.color);
    painter.drawText(mirrored(room), flags | int(begin),
                     painter.fontMetrics().elidedText(content.text, Qt::ElideRight, room.width()));
}

ListRow::ListRow(const Theme& theme, const QString& text, QWidget* parent)
    : QAbstractButton(parent)
    , m_theme(theme)
    , m_hover(*this, theme,
              TranslatorListRowButtonStyle{false, true, theme.tokens(), false}.hoverDuration())
{
    setText(text);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    prepareControl(*this, theme, [&theme] { return theme.tokens().listRowRadius(); });
    keepStyled(*this, theme, [this] {
        setFont(m_theme.font(StyleFontRole::body));
        updateGeometry();
    });
}

void ListRow::setSymbol(const QString& name)
{
    m_symbol = name;
    update();
}

void ListRow::setTrailing(const QString& text, const QString& symbol)
{
    m_trailing = text;
    m_trailingSymbol = symbol;
    updateGeometry();
    update();
}

QSize ListRow::sizeHint() const
{
    int width = 2 * rowInset + advance(font(), text());
    for (const QString& symbol : {m_symbol, m_trailingSymbol}) {
        width += symbol.isEmpty() ? 0 : symbolSide + symbolGap;
    }
    if (!m_trailing.isEmpty()) {
        width += advance(font(), m_trailing) + 2 * symbolGap;
    }
    return {width, controlHeight(m_theme)};
}

QSize ListRow::minimumSizeHint() const
{
    return {60, controlHeight(m_theme)};
}

void ListRow::paintEvent(QPaintEvent*)
{
    const ThemeColors& colors = m_theme.colors();
    QPainter painter(this);
    TranslatorListRowButtonStyle style = styleOf(*this, m_theme);
    style.hovering = true;
    style.paint(painter, rect(), colors, isDown() ? 1.6 : m_hover.value());
    const QColor color = isEnabled() ? colors.text : colors.disabledText;
    const QColor faint = isEnabled() ? colors.secondaryText : colors.disabledText;
    painter.setFont(font());
    paintRowContent(painter, rect(),
                    {.symbol = m_symbol,
                     .text = text(),
                     .trailing = m_trailing,
                     .trailingSymbol = m_trailingSymbol,
                     .color = color,
                     .trailingColor = faint},
                    layoutDirection());
}

void ListRow::enterEvent(QEnterEvent* event)
{
    QAbstractButton::enterEvent(event);
    m_hover.moveTo(isEnabled() ? 1 : 0);
}

void ListRow::leaveEvent(QEvent* event)
{
    QAbstractButton::leaveEvent(event);
    m_hover.moveTo(0);
}

void ListRow::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        click();
        return;
    }
    QAbstractButton::keyPressEvent(event);
}

} // namespace zelvane
