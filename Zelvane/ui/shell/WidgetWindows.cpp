#include "ui/shell/WidgetWindows.h"

#include "ui/panel/TranslatorKeyablePanel.h"

#include <QApplication>
#include <QEvent>

#include <algorithm>
#include <utility>

namespace zelvane {

WidgetWindows::WidgetWindows(WindowSystem& system)
    : m_system(system)
{
    qApp->installEventFilter(this);
}

WidgetWindows::~WidgetWindows() = default;

bool WidgetWindows::isApplicationWindow(const QWidget& widget)
{
    const Qt::WindowType type = widget.windowType();
    return widget.isWindow() && (type == Qt::Window || type == Qt::Dialog || type == Qt::Tool);
}

WidgetWindows::Id WidgetWindows::idOf(QWidget& window) const
{
    Id& id = m_ids[&window];
    if (id == 0) {
        id = ++m_lastId;
        connect(&window, &QObject::destroyed, this,
                [this](const QObject* gone) { m_ids.remove(gone); });
    }
    return id;
}

ApplicationWindow WidgetWindows::describe(QWidget& window) const
{
    const auto* panel = qobject_cast<const TranslatorKeyablePanel*>(&window);
    const Qt::WindowFlags flags = window.windowFlags();
    const bool isTool = window.windowType() == Qt::Tool;
    const bool floats = isTool || flags.testFlag(Qt::WindowStaysOnTopHint);
    return {
        .id = idOf(window),
        .identifier = window.objectName(),
        .title = window.windowTitle(),
        .contentTypeName = QString::fromLatin1(window.metaObject()->className()),
        .isVisible = window.isVisible(),
        .isTitled = !flags.testFlag(Qt::FramelessWindowHint),
        .level = floats ? ApplicationWindow::floatingLevel : 0,
        .canBecomeMain = !isTool && !flags.testFlag(Qt::WindowDoesNotAcceptFocus),
        .promotesDockIcon = panel ? std::optional(panel->promotesDockIcon()) : std::nullopt,
    };
}

QList<ApplicationWindow> WidgetWindows::windows() const
{
    QList<ApplicationWindow> list;
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        if (isApplicationWindow(*widget)) {
            list << describe(*widget);
        }
    }
    std::ranges::sort(list, {}, &ApplicationWindow::id); // Qt's own order changes
    return list;
}

void WidgetWindows::addObserver(Observer observer)
{
    m_observers << std::move(observer);
}

void WidgetWindows::activateApplication()
{
    // Windows come to the front one by one on the desktops served here.
}

void WidgetWindows::makeKeyAndOrderFront(Id window)
{
    if (QWidget* widget = windowOf(window)) {
        widget->show();
        widget->raise();
        widget->activateWindow();
        m_system.activate(*widget->windowHandle());
    }
}

void WidgetWindows::orderFrontRegardless(Id window)
{
    if (QWidget* widget = windowOf(window)) {
        widget->show();
        widget->raise();
    }
}

void WidgetWindows::orderOut(Id window)
{
    if (QWidget* widget = windowOf(window)) {
        widget->hide();
    }
}

QWidget* WidgetWindows::windowOf(Id id) const
{
    const QWidgetList widgets = QApplication::topLevelWidgets();
    const auto found = std::ranges::find_if(
        widgets, [&](const QWidget* widget) { return m_ids.value(widget) == id; });
    return found == widgets.end() ? nullptr : *found;
}

bool WidgetWindows::eventFilter(QObject* watched, QEvent* event)
{
    const QEvent::Type type = event->type();
    if (type != QEvent::Show && type != QEvent::Hide && type != QEvent::WindowActivate) {
        return false;
    }
    auto* widget = qobject_cast<QWidget*>(watched);
    // What the desktop does to a window, such as minimising it, neither opens nor closes it.
    if (!widget || event->spontaneous() || !isApplicationWindow(*widget)) {
        return false;
    }
    // Copied: an observer may bring another one.
    for (const auto observers = m_observers; const Observer& observer : observers) {
        if (type == QEvent::Hide) {
            observer.willClose(idOf(*widget));
        } else {
            observer.becameKeyOrMain();
        }
    }
    return false;
}

} // namespace zelvane
