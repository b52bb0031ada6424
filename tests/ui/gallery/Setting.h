#pragma once

#include "ui/linux/LinuxAppearance.h"
#include "ui/linux/X11WindowSystem.h"
#include "ui/style/InterfaceStyle.h"
#include "ui/style/Theme.h"

#include <QApplication>

namespace zelvane::gallery {

/// What the program's own start would set up.
struct Setting
{
    StyleTweaker tokens;
    DesktopAppearance appearance;
    LinuxAppearance desktop{appearance, QDBusConnection::sessionBus()};
    std::unique_ptr<WindowSystem> windows = sessionWindowSystem();
    Theme theme{tokens, appearance};

    Setting() { dressApplication(theme); }
    /// The style refers to the theme, and the application outlives both.
    ~Setting() { QApplication::setStyle(QStringLiteral("Fusion")); }
    Q_DISABLE_COPY_MOVE(Setting)
};

} // namespace zelvane::gallery
