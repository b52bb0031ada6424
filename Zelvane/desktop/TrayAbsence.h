#pragma once

#include "desktop/Notifications.h"
#include "foundation/Clock.h"
#include "foundation/TaskScope.h"
#include "settings/UserDefaults.h"

#include <QBindable>
#include <QPropertyNotifier>
#include <QString>

#include <chrono>
#include <functional>
#include <memory>

namespace zelvane {

/// Tells the user, once, that the desktop has no place for the program's icon: somebody who doesn't
/// see it can't know that the program runs, nor how to reach it. Main thread.
class TrayAbsence
{
public:
    /// How long a tray may take to come: panels often start after the programs of the session.
    static constexpr std::chrono::seconds patience{5};
    static constexpr std::chrono::seconds patienceAtLogin{60};

    struct Ways
    {
        Notifications& notifications;
        /// Where nobody shows messages.
        std::function<void(const QString&)> complain;
        /// The one window in which everything can be done without a tray.
        std::function<void()> openSettings;
    };

    /// Waits for `limit` from now on. The defaults keep that the user has been told; a desktop that
    /// has a tray later, and then none, is a new case. All must outlive this object.
    TrayAbsence(QBindable<bool> available, UserDefaults& defaults, Clock& clock,
                std::chrono::seconds limit, Ways ways);

private:
    void watch();
    void judge();
    [[nodiscard]] QCoro::Task<void> tell(std::stop_token stop);

    QBindable<bool> m_available;
    UserDefaults& m_defaults;
    Ways m_ways;
    /// A tray that has been there and goes for a moment, as its panel restarts, isn't missing.
    bool m_wasSeen = false;
    QPropertyNotifier m_change;
    std::unique_ptr<Timer> m_timer;
    TaskScope m_tasks;
};

} // namespace zelvane
