#include "ui/shell/WidgetActivationPolicy.h"

#include <QApplication>

namespace zelvane {

WidgetActivationPolicy::WidgetActivationPolicy(const WidgetWindows& windows, WindowSystem& system)
    : m_windows(windows)
    , m_system(system)
{
}

void WidgetActivationPolicy::set(Kind kind)
{
    m_kind = kind;
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        if (!WidgetWindows::isApplicationWindow(*widget) || !widget->windowHandle()) {
            continue;
        }
        const ApplicationWindow window = m_windows.describe(*widget);
        const bool floats = window.level >= ApplicationWindow::floatingLevel;
        const bool isWorkedIn = window.promotesDockIcon.value_or(window.isTitled && !floats);
        m_system.setSkipsTaskbar(*widget->windowHandle(), kind == Kind::accessory || !isWorkedIn);
    }
}

} // namespace zelvane
