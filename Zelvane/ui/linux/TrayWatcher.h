#pragma once

#include "foundation/TaskScope.h"
#include "ui/linux/SelectionWatcher.h"

#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QProperty>

#include <memory>

namespace zelvane {

/// Tells whether the desktop has a place for tray icons, also one that comes late: programs that
/// start with the session are often there before the panel is. Main thread only.
class TrayWatcher final : public QObject
{
    Q_OBJECT

public:
    explicit TrayWatcher(const QDBusConnection& bus);

    [[nodiscard]] bool available() const { return m_available; }
    [[nodiscard]] QBindable<bool> bindableAvailable() const { return &m_available; }

private Q_SLOTS:
    // Qt finds slots for the messages of a bus by their names.
    void askForHost();

private:
    void watchBus();
    [[nodiscard]] QCoro::Task<void> findHost(std::stop_token stop);
    void update();

    QDBusConnection m_bus;
    QDBusServiceWatcher m_services;
    std::unique_ptr<SelectionWatcher> m_selection;
    bool m_onBus = false;
    bool m_onScreen = false;
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(TrayWatcher, bool, m_available, false)
    TaskScope m_questions;
};

} // namespace zelvane
