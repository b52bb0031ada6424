#include "ui/components/FocusRing.h"

#include "ui/components/Styling.h"

#include <QApplication>
#include <QFocusEvent>
#include <QKeyEvent>

namespace zelvane {

namespace {

constexpr double ringWidth = 2;
/// The gap between the widget and its ring.
constexpr double ringGap = 1.5;
constexpr int ringReach = 4;

/// The last key press may have found no other control to go to.
bool isTab(const QKeyEvent& event)
{
    const bool isPlain = (event.modifiers() & ~Qt::ShiftModifier) == Qt::NoModifier;
    return isPlain && (event.key() == Qt::Key_Tab || event.key() == Qt::Key_Backtab);
}

bool cameFromKeyboard(Qt::FocusReason reason)
{
    return reason == Qt::TabFocusReason || reason == Qt::BacktabFocusReason ||
           reason == Qt::ShortcutFocusReason;
}

} // namespace

double focusRadius(const QWidget& widget, const Theme& theme)
{
    const QVariant radius = widget.property(focusRadiusProperty);
    return radius.isValid() ? radius.toDouble() : theme.tokens().controlRadius();
}

void paintFocusRing(QPainter& painter, const QRectF& rect, double radius, const Theme& theme)
{
    constexpr double outset = ringGap + ringWidth / 2;
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(theme.colors().focusRing, ringWidth));
    painter.drawRoundedRect(rect.adjusted(-outset, -outset, outset, outset), radius + outset,
                            radius + outset);
}

FocusRing::FocusRing(const Theme& theme, QWidget& parent)
    : QWidget(&parent)
    , m_theme(theme)
{
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setAttribute(Qt::WA_NoSystemBackground);
    setFocusPolicy(Qt::NoFocus);
    hide();
    connect(&theme, &Theme::changed, this, [this] { update(); });
    qApp->installEventFilter(this);
}

FocusRing::~FocusRing() = default;

bool FocusRing::eventFilter(QObject* watched, QEvent* event)
{
    switch (event->type()) {
    case QEvent::FocusIn: {
        auto* widget = qobject_cast<QWidget*>(watched);
        const auto reason = static_cast<QFocusEvent*>(event)->reason();
        if (widget && parentWidget()->isAncestorOf(widget) &&
            reason != Qt::ActiveWindowFocusReason && reason != Qt::PopupFocusReason) {
            follow(cameFromKeyboard(reason) ? widget : nullptr);
        }
        break;
    }
    case QEvent::KeyRelease: {
        auto* widget = qobject_cast<QWidget*>(watched);
        if (widget && widget->hasFocus() && parentWidget()->isAncestorOf(widget) &&
            isTab(*static_cast<QKeyEvent*>(event))) {
            follow(widget);
        }
        break;
    }
    case QEvent::Move:
    case QEvent::Resize:
    case QEvent::Show:
    case QEvent::Hide:
        if (m_target && (watched == m_target || watched == parentWidget() ||
                         static_cast<QWidget*>(parentWidget())
                             ->isAncestorOf(qobject_cast<QWidget*>(watched)))) {
            place();
        }
        break;
    case QEvent::WindowActivate:
    case QEvent::WindowDeactivate:
        if (watched == window()) {
            place();
        }
        break;
    default:
        break;
    }
    return false;
}

void FocusRing::follow(QWidget* focused)
{
    m_target = focused;
    // A control may be made of several widgets: the ring goes around the one that is seen as it.
    for (QWidget* outer = focused; outer && outer != parentWidget();
         outer = outer->parentWidget()) {
        if (outer->property(focusRadiusProperty).isValid()) {
            m_target = outer;
            break;
        }
    }
    place();
}

void FocusRing::place()
{
    if (!m_target || !m_target->isVisible() || !window()->isActiveWindow()) {
        hide();
        return;
    }
    const QRect rect(m_target->mapTo(parentWidget(), QPoint(0, 0)), m_target->size());
    const int reach = ringReach + m_target->property(focusOutsetProperty).toInt();
    setGeometry(rect.adjusted(-reach, -reach, reach, reach));
    raise();
    show();
    update();
}

void FocusRing::paintEvent(QPaintEvent*)
{
    if (m_target) {
        QPainter painter(this);
        const QRectF inner = QRectF(rect()).adjusted(ringReach, ringReach, -ringReach, -ringReach);
        paintFocusRing(painter, inner, focusRadius(*m_target, m_theme), m_theme);
    }
}

} // namespace zelvane
