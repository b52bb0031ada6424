#pragma once

#include "desktop/LoginItem.h"
#include "foundation/TaskScope.h"
#include "settings/AppSettings.h"

#include <QObject>
#include <QPropertyNotifier>

namespace zelvane {

/// Keeps the setting and the desktop's record of it the same. At the start the record counts: the
/// user may have changed it in the desktop's own settings meanwhile. From then on the setting does.
///
/// Main thread.
class StartAtLogin
{
public:
    /// Both must outlive this object. Looks at the record at once.
    StartAtLogin(AppSettings& settings, LoginItem& item);
    Q_DISABLE_COPY_MOVE(StartAtLogin)

private:
    [[nodiscard]] QCoro::Task<void> adopt(std::stop_token stop);
    [[nodiscard]] QCoro::Task<void> store(std::stop_token stop);
    void noteChange();

    AppSettings& m_settings;
    LoginItem& m_item;
    /// What the record is known to say.
    bool m_recorded = false;
    bool m_isBusy = true;
    QPropertyNotifier m_change;
    TaskScope m_tasks;
};

} // namespace zelvane
