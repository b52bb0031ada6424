#pragma once

#include "desktop/ApplicationWindows.h"
#include "ui/panel/WindowSystem.h"

#include <QHash>
#include <QList>
#include <QObject>
#include <QWidget>

namespace zelvane {

/// The program's windows as Qt's widgets. Menus, lists that drop down and tool tips don't count.
///
/// A widget's object name is the window's identifier. Needs the application object.
class WidgetWindows final : public QObject, public ApplicationWindows
{
    Q_OBJECT

public:
    /// `system` must outlive this object.
    explicit WidgetWindows(WindowSystem& system);
    ~WidgetWindows() override;

    [[nodiscard]] QList<ApplicationWindow> windows() const override;
    void addObserver(Observer observer) override;
    void activateApplication() override;
    void makeKeyAndOrderFront(Id window) override;
    void orderFrontRegardless(Id window) override;
    void orderOut(Id window) override;

    /// The window's name in this interface, for as long as it lives.
    [[nodiscard]] Id idOf(QWidget& window) const;

    /// Whether a widget counts as one of the program's windows.
    [[nodiscard]] static bool isApplicationWindow(const QWidget& widget);
    [[nodiscard]] ApplicationWindow describe(QWidget& window) const;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    [[nodiscard]] QWidget* windowOf(Id id) const;

    WindowSystem& m_system;
    QList<Observer> m_observers;
    mutable QHash<const QObject*, Id> m_ids;
    mutable Id m_lastId = 0;
};

} // namespace zelvane
