#include "ui/components/Popover.h"

#include "ui/components/FocusRing.h"
#include "ui/components/PanelSurface.h"

#include <QAccessibleObject>
#include <QAccessibleWidget>
#include <QApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QScreen>
#include <QVBoxLayout>

namespace zelvane {

namespace {

constexpr int gap = 4;
/// Between a popover and the edge of the screen.
constexpr int screenMargin = 6;

QAccessibleInterface* makeAccessible(const QString&, QObject* object)
{
    auto* popover = qobject_cast<Popover*>(object);
    return popover ? new QAccessibleWidget(popover, QAccessible::Dialog) : nullptr;
}

/// Qt's own root of all windows leaves popups out.
class ApplicationWithPopovers final : public QAccessibleApplication
{
public:
    [[nodiscard]] int childCount() const override
    {
        return QAccessibleApplication::childCount() + int(Popover::openOnTheirOwn().size());
    }

    [[nodiscard]] QAccessibleInterface* child(int index) const override
    {
        const int windows = QAccessibleApplication::childCount();
        return index < windows ? QAccessibleApplication::child(index)
                               : QAccessible::queryAccessibleInterface(
                                     Popover::openOnTheirOwn().value(index - windows));
    }

    [[nodiscard]] int indexOfChild(const QAccessibleInterface* child) const override
    {
        const auto* popover = child ? qobject_cast<Popover*>(child->object()) : nullptr;
        const qsizetype place = Popover::openOnTheirOwn().indexOf(popover);
        return place >= 0 ? QAccessibleApplication::childCount() + int(place)
                          : QAccessibleApplication::indexOfChild(child);
    }
};

QAccessibleInterface* makeAccessibleApplication(const QString&, QObject* object)
{
    return object == qApp ? new ApplicationWithPopovers : nullptr;
}

void exposeToScreenReaders()
{
    QAccessible::installFactory(makeAccessible);
    QAccessible::installFactory(makeAccessibleApplication);
    // A root that was made before would be kept.
    if (QAccessibleInterface* root = QAccessible::queryAccessibleInterface(qApp)) {
        if (!dynamic_cast<ApplicationWithPopovers*>(root)) {
            QAccessible::deleteAccessibleInterface(QAccessible::uniqueId(root));
        }
    }
}

} // namespace

QList<Popover*> Popover::openOnTheirOwn()
{
    QList<Popover*> popovers;
    for (QWidget* window : QApplication::topLevelWidgets()) {
        auto* popover = qobject_cast<Popover*>(window);
        if (popover && popover->isVisible() && !popover->parentWidget()) {
            popovers.append(popover);
        }
    }
    return popovers;
}

QPoint popoverOrigin(const QRect& anchor, QSize size, const QRect& frame,
                     Qt::LayoutDirection direction)
{
    const QRect room = frame.adjusted(screenMargin, screenMargin, -screenMargin, -screenMargin);
    const bool fitsBelow = anchor.bottom() + gap + size.height() <= room.bottom();
    const bool fitsAbove = anchor.top() - gap - size.height() >= room.top();
    const int x = direction == Qt::RightToLeft ? anchor.right() + 1 - size.width() : anchor.left();
    const int y =
        fitsBelow || !fitsAbove ? anchor.bottom() + 1 + gap : anchor.top() - gap - size.height();
    const int mostRight = room.right() + 1 - size.width();
    const int lowest = room.bottom() + 1 - size.height();
    return {std::max(std::min(x, mostRight), room.left()),
            std::max(std::min(y, lowest), room.top())};
}

Popover::Popover(const Theme& theme, QWidget* parent, std::optional<double> cornerRadius)
    : QWidget(parent, Qt::Popup | Qt::FramelessWindowHint | Qt::NoDropShadowWindowHint)
    , m_theme(theme)
    , m_cornerRadius(cornerRadius)
    , m_layout(new QVBoxLayout(this))
{
    setAttribute(Qt::WA_TranslucentBackground);
    [[maybe_unused]] static const bool exposed = (exposeToScreenReaders(), true);
    m_layout->setSpacing(0);
    m_layout->setContentsMargins(panelMargins(theme));
    new FocusRing(theme, *this);
    connect(&theme, &Theme::changed, this, &Popover::adoptMargins);
}

void Popover::setContent(QWidget* content)
{
    m_layout->addWidget(content);
}

QRect Popover::panelFrame() const
{
    return geometry().marginsRemoved(m_layout->contentsMargins());
}

void Popover::setContentSize(QSize size)
{
    setFixedSize(size.grownBy(m_layout->contentsMargins()));
}

void Popover::setPanelOrigin(QPoint origin)
{
    const QMargins margins = m_layout->contentsMargins();
    move(origin - QPoint(margins.left(), margins.top()));
}

void Popover::openAt(const QRect& anchor)
{
    const QScreen* screen = QGuiApplication::screenAt(anchor.center());
    if (!screen) {
        screen = QGuiApplication::primaryScreen();
    }
    if (screen) {
        setPanelOrigin(popoverOrigin(anchor, panelFrame().size(), screen->availableGeometry(),
                                     layoutDirection()));
    }
    show();
}

void Popover::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    paintPanelSurface(painter, panelRect(), m_theme, m_cornerRadius);
}

void Popover::mousePressEvent(QMouseEvent* event)
{
    // A click on the shadow is a click elsewhere.
    if (!panelRect().contains(event->position().toPoint())) {
        close();
    }
}

void Popover::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape) {
        close();
        return;
    }
    QWidget::keyPressEvent(event);
}

void Popover::hideEvent(QHideEvent* event)
{
    QWidget::hideEvent(event);
    Q_EMIT closed();
}

void Popover::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    describe();
}

void Popover::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    describe();
}

void Popover::describe()
{
    describePanelSurface(*this, panelRect(), m_theme, m_cornerRadius);
}

QRect Popover::panelRect() const
{
    return rect().marginsRemoved(m_layout->contentsMargins());
}

void Popover::adoptMargins()
{
    const QMargins margins = panelMargins(m_theme);
    if (margins != m_layout->contentsMargins()) {
        const QRect frame = panelFrame();
        m_layout->setContentsMargins(margins);
        setContentSize(frame.size());
        setPanelOrigin(frame.topLeft());
    }
    describe();
    update();
}

} // namespace zelvane
