#include "ui/components/LinkLabel.h"

#include "ui/components/FocusRing.h"
#include "ui/components/Styling.h"
#include "ui/components/ThemedLabel.h"

#include <QAccessibleWidget>
#include <QDesktopServices>
#include <QKeyEvent>
#include <QPainter>
#include <QStyle>

#include <cmath>

namespace zelvane {

namespace {

constexpr int padding = 2;
/// The letters line up with other texts, and the focus ring stands apart from them.
constexpr int ringOutset = 3;

QAccessibleInterface* makeAccessible(const QString&, QObject* object)
{
    auto* label = qobject_cast<LinkLabel*>(object);
    return label ? new QAccessibleWidget(label, QAccessible::Link) : nullptr;
}

} // namespace

LinkLabel::LinkLabel(const Theme& theme, QWidget* parent)
    : QAbstractButton(parent)
    , m_theme(theme)
{
    [[maybe_unused]] static const bool installed =
        (QAccessible::installFactory(makeAccessible), true);
    prepareControl(*this, theme);
    setProperty(focusOutsetProperty, ringOutset);
    setCursor(Qt::PointingHandCursor);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    keepStyled(*this, theme, [this] {
        setFont(m_theme.font(m_theme.tokens().typography().bodyHint));
        updateGeometry();
    });
    connect(this, &QAbstractButton::clicked, this,
            [this] { QDesktopServices::openUrl(m_address); });
}

void LinkLabel::setLink(const QString& text, const QUrl& address)
{
    setText(text);
    setAccessibleName(text);
    setToolTip(address.toDisplayString());
    m_address = address;
    updateGeometry();
}

QSize LinkLabel::sizeHint() const
{
    const QFontMetricsF metrics(font());
    return {int(std::ceil(metrics.horizontalAdvance(text()))),
            int(std::ceil(metrics.height())) + 2 * padding};
}

void LinkLabel::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    QFont shown = font();
    shown.setUnderline(underMouse());
    painter.setFont(shown);
    painter.setPen(toneColor(m_theme.colors(), TextTone::link));
    painter.drawText(rect(),
                     int(QStyle::visualAlignment(layoutDirection(), Qt::AlignLeft)) |
                         Qt::AlignVCenter | Qt::TextSingleLine,
                     text());
}

void LinkLabel::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        click();
        return;
    }
    QAbstractButton::keyPressEvent(event);
}

} // namespace zelvane
