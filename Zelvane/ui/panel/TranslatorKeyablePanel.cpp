#include "ui/panel/TranslatorKeyablePanel.h"

#include "ui/components/FocusRing.h"
#include "ui/components/PanelSurface.h"

#include <QAccessibleWidget>
#include <QCloseEvent>
#include <QPainter>
#include <QVBoxLayout>
#include <QWindow>

namespace zelvane {

namespace {

Qt::WindowFlags flagsOf(PanelRole role)
{
    const Qt::WindowFlags plain = Qt::FramelessWindowHint | Qt::NoDropShadowWindowHint;
    switch (role) {
    case PanelRole::floating:
        return Qt::Tool | Qt::WindowStaysOnTopHint | plain;
    case PanelRole::alert:
        return Qt::Dialog | Qt::WindowStaysOnTopHint | plain;
    case PanelRole::window:
        return Qt::Window | plain;
    }
    Q_UNREACHABLE();
}

/// What screen readers take a panel for. They read an alert out at once.
QAccessibleInterface* makeAccessible(const QString&, QObject* object)
{
    auto* panel = qobject_cast<TranslatorKeyablePanel*>(object);
    if (!panel) {
        return nullptr;
    }
    return new QAccessibleWidget(
        panel, panel->role() == PanelRole::alert ? QAccessible::AlertMessage : QAccessible::Dialog);
}

} // namespace

TranslatorKeyablePanel::TranslatorKeyablePanel(const Theme& theme, WindowSystem& windows,
                                               PanelRole role)
    : QWidget(nullptr, flagsOf(role))
    , m_theme(theme)
    , m_windows(windows)
    , m_role(role)
    , m_layout(new QVBoxLayout(this))
{
    // Always with an alpha channel: whether it is used may change while the window lives.
    setAttribute(Qt::WA_TranslucentBackground);
    setAttribute(Qt::WA_MacAlwaysShowToolWindow);
    setAttribute(Qt::WA_QuitOnClose, false);
    [[maybe_unused]] static const bool installed =
        (QAccessible::installFactory(makeAccessible), true);
    m_layout->setSpacing(0);
    m_layout->setContentsMargins(panelMargins(m_theme));
    new FocusRing(theme, *this);
    connect(&theme, &Theme::changed, this, &TranslatorKeyablePanel::adoptMargins);
}

TranslatorKeyablePanel::~TranslatorKeyablePanel() = default;

void TranslatorKeyablePanel::setContent(QWidget* content)
{
    m_layout->addWidget(content);
}

QRect TranslatorKeyablePanel::panelFrame() const
{
    return geometry().marginsRemoved(m_layout->contentsMargins());
}

void TranslatorKeyablePanel::setPromotesDockIcon(bool promotes)
{
    m_promotesDockIcon = promotes;
    describe();
}

bool TranslatorKeyablePanel::isFloating() const
{
    return windowFlags().testFlag(Qt::WindowStaysOnTopHint);
}

void TranslatorKeyablePanel::setFloating(bool floating)
{
    // The widget's own setter would hide the window and make another one.
    Qt::WindowFlags flags = windowFlags();
    flags.setFlag(Qt::WindowStaysOnTopHint, floating);
    overrideWindowFlags(flags);
    if (QWindow* window = windowHandle()) {
        window->setFlag(Qt::WindowStaysOnTopHint, floating);
    }
}

void TranslatorKeyablePanel::setContentSize(QSize size)
{
    const QMargins margins = m_layout->contentsMargins();
    // Fixed, so that no window manager offers to resize it.
    setFixedSize(size.grownBy(margins));
}

void TranslatorKeyablePanel::setPanelOrigin(QPoint origin)
{
    const QMargins margins = m_layout->contentsMargins();
    move(origin - QPoint(margins.left(), margins.top()));
}

void TranslatorKeyablePanel::presentInFront()
{
    show();
    raise();
    activateWindow();
    m_windows.activate(*windowHandle());
}

void TranslatorKeyablePanel::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    paintPanelSurface(painter, panelRect(), m_theme);
}

void TranslatorKeyablePanel::showEvent(QShowEvent* event)
{
    describe();
    QWidget::showEvent(event);
}

void TranslatorKeyablePanel::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    // What takes clicks has another size as well.
    describe();
}

void TranslatorKeyablePanel::closeEvent(QCloseEvent* event)
{
    event->ignore();
    Q_EMIT closeRequested();
}

void TranslatorKeyablePanel::adoptMargins()
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

void TranslatorKeyablePanel::describe()
{
    if (QWindow* window = windowHandle()) {
        m_windows.describe(
            *window, {.shadow = m_layout->contentsMargins(), .skipsTaskbar = !m_promotesDockIcon});
        describePanelSurface(*this, panelRect(), m_theme);
    }
}

QRect TranslatorKeyablePanel::panelRect() const
{
    return rect().marginsRemoved(m_layout->contentsMargins());
}

} // namespace zelvane
