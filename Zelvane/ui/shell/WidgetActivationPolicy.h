#pragma once

#include "desktop/ActivationPolicy.h"
#include "ui/panel/WindowSystem.h"
#include "ui/shell/WidgetWindows.h"

namespace zelvane {

/// The policy on desktops that list windows, not programs: it decides whether the windows that a
/// user works in show in the taskbar and in the switcher of Alt+Tab. Panels that float for a moment
/// never do.
class WidgetActivationPolicy final : public ActivationPolicy
{
public:
    /// Both must outlive this object.
    WidgetActivationPolicy(const WidgetWindows& windows, WindowSystem& system);

    [[nodiscard]] Kind current() const override { return m_kind; }
    void set(Kind kind) override;

private:
    const WidgetWindows& m_windows;
    WindowSystem& m_system;
    Kind m_kind = Kind::regular;
};

} // namespace zelvane
