#include "ui/components/Sheet.h"

#include "ui/components/FocusRing.h"
#include "ui/components/Styling.h"
#include "ui/style/Shadow.h"
#include "ui/style/ViewStyles.h"

#include <QAccessibleWidget>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QPainter>
#include <QVBoxLayout>

namespace zelvane {

namespace {

/// Between the panel and the window's edge.
constexpr int windowMargin = 20;
/// Smaller than that of a panel of its own: the sheet lies in one.
constexpr double sheetRadius = 14;

QAccessibleInterface* makeAccessible(const QString&, QObject* object)
{
    auto* sheet = qobject_cast<Sheet*>(object);
    return sheet ? new QAccessibleWidget(sheet, QAccessible::Dialog) : nullptr;
}

} // namespace

Sheet::Sheet(const Theme& theme, QWidget& over)
    : QWidget(over.window())
    , m_theme(theme)
    , m_panel(new QWidget(this))
    , m_layout(new QVBoxLayout(m_panel))
    , m_title(new ThemedLabel(theme, &TypographyTokens::sheetTitle, TextTone::primary))
    , m_subtitle(new ThemedLabel(theme, &TypographyTokens::bodyHint, TextTone::secondary))
    , m_content(new QVBoxLayout)
    , m_buttons(new QHBoxLayout)
{
    [[maybe_unused]] static const bool installed =
        (QAccessible::installFactory(makeAccessible), true);
    m_title->setWordWrap(true);
    m_subtitle->setWordWrap(true);
    m_subtitle->hide();
    m_layout->addWidget(m_title);
    m_layout->addWidget(m_subtitle);
    m_layout->addLayout(m_content, 1);
    m_layout->addLayout(m_buttons);
    m_buttons->addStretch(1);
    hide();
    window()->installEventFilter(this);
    keepStyled(*this, theme, [this] { restyle(); });
}

Sheet::~Sheet() = default;

void Sheet::setTitle(const QString& title)
{
    m_title->setText(title);
    setAccessibleName(title);
}

void Sheet::setSubtitle(const QString& subtitle)
{
    m_subtitle->setText(subtitle);
    m_subtitle->setVisible(!subtitle.isEmpty());
    setAccessibleDescription(subtitle);
}

void Sheet::setContent(QWidget* content)
{
    m_content->addWidget(content);
}

void Sheet::setMinimumContentSize(QSize size)
{
    m_minimumContent = size;
    restyle();
}

TextButton* Sheet::addButton(ControlKind kind)
{
    auto* button = new TextButton(m_theme, kind);
    m_buttons->addWidget(button);
    return button;
}

TextButton* Sheet::addLeadingButton(ControlKind kind)
{
    auto* button = new TextButton(m_theme, kind);
    int leading = 0;
    while (m_buttons->itemAt(leading)->widget()) {
        ++leading;
    }
    m_buttons->insertWidget(leading, button);
    return button;
}

void Sheet::present()
{
    m_before = window()->focusWidget();
    setGeometry(window()->rect());
    place();
    show();
    raise();
    // Above the dimmed window, where the ring of the window itself would be covered.
    for (auto* ring : window()->findChildren<FocusRing*>(Qt::FindDirectChildrenOnly)) {
        ring->raise();
    }
    if (!isAncestorOf(window()->focusWidget())) {
        setFocus(Qt::OtherFocusReason);
        if (!focusProxy()) { // what a sheet is about has the keyboard, or else its first control
            focusNextPrevChild(true);
        }
    }
    QAccessibleEvent event(this, QAccessible::DialogStart);
    QAccessible::updateAccessibility(&event);
}

void Sheet::dismiss()
{
    if (isHidden()) {
        return;
    }
    const bool hadFocus = isAncestorOf(window()->focusWidget()) || hasFocus();
    hide();
    QAccessibleEvent event(this, QAccessible::DialogEnd);
    QAccessible::updateAccessibility(&event);
    if (hadFocus && m_before) {
        m_before->setFocus(Qt::OtherFocusReason);
    }
    deleteLater();
}

QRect Sheet::panelRect() const
{
    return m_panel->geometry();
}

bool Sheet::eventFilter(QObject*, QEvent* event)
{
    if (event->type() == QEvent::Resize && isVisible()) {
        setGeometry(window()->rect());
        place();
    }
    // Nothing that a sheet holds back meanwhile may stay so behind a closed window.
    if (event->type() == QEvent::Hide && !event->spontaneous()) {
        dismiss();
    }
    return false;
}

void Sheet::restyle()
{
    const SheetLayoutTokens sheets = m_theme.tokens().sheets();
    const SpacingTokens spacing = m_theme.tokens().spacing();
    const int padding = qRound(sheets.padding);
    m_layout->setContentsMargins(padding, padding, padding, padding);
    m_layout->setSpacing(qRound(spacing.xs));
    m_content->setContentsMargins(0, qRound(spacing.md), 0, qRound(spacing.lg));
    m_buttons->setSpacing(qRound(spacing.footerSpacing));
    m_panel->setMinimumWidth(
        std::max(qRound(sheets.minWidth), m_minimumContent.width() + 2 * padding));
    place();
    update();
}

void Sheet::place()
{
    m_layout->activate();
    const QSize room = size() - QSize(2 * windowMargin, 2 * windowMargin);
    QSize wanted = m_layout->sizeHint().expandedTo(m_panel->minimumSize());
    if (m_layout->hasHeightForWidth()) {
        wanted.setHeight(m_layout->totalHeightForWidth(wanted.width()));
    }
    const QSize given = wanted.boundedTo(room);
    m_panel->setGeometry((width() - given.width()) / 2, (height() - given.height()) / 2,
                         given.width(), given.height());
    update();
}

void Sheet::paintEvent(QPaintEvent*)
{
    const ThemeColors& colors = m_theme.colors();
    QPainter painter(this);
    painter.fillRect(rect(), colors.scrim);
    paintShadow(painter, panelRect(), sheetRadius);
    paintRounded(painter, panelRect(), sheetRadius, colors.window, colors.windowRim);
}

void Sheet::keyPressEvent(QKeyEvent* event)
{
    if (isHidden()) {
        return; // the key has just closed the sheet
    }
    const bool confirms = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (event->key() == Qt::Key_Escape && m_cancel) {
        m_cancel->click();
    } else if (confirms) {
        // The default, unless the user has gone on to another button.
        auto* focused = qobject_cast<TextButton*>(window()->focusWidget());
        if (TextButton* button = focused && isAncestorOf(focused) ? focused : m_default.data()) {
            button->click();
        }
    }
    // No key goes through to the window below.
    event->accept();
}

void Sheet::mousePressEvent(QMouseEvent* event)
{
    event->accept();
}

bool Sheet::focusNextPrevChild(bool next)
{
    QWidget* const start = window()->focusWidget() ? window()->focusWidget() : this;
    QWidget* candidate = start;
    do {
        candidate = next ? candidate->nextInFocusChain() : candidate->previousInFocusChain();
        const bool takesTab = (candidate->focusPolicy() & Qt::TabFocus) == Qt::TabFocus;
        if (isAncestorOf(candidate) && takesTab && candidate->isEnabled() &&
            candidate->isVisibleTo(this) && !candidate->focusProxy()) {
            candidate->setFocus(next ? Qt::TabFocusReason : Qt::BacktabFocusReason);
            return true;
        }
    } while (candidate != start);
    return true;
}

bool Sheet::event(QEvent* event)
{
    if (event->type() == QEvent::LayoutRequest) {
        place();
    }
    return QWidget::event(event);
}

} // namespace zelvane
