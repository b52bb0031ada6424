#pragma once

#include "ui/linux/BlurRequests.h"
#include "ui/linux/SelectionWatcher.h"
#include "ui/linux/SettingsPortal.h"
#include "ui/style/DesktopAppearance.h"

#include <memory>

namespace zelvane {

/// Keeps a `DesktopAppearance` in step with the desktop: the portal's settings for colours, motion
/// and contrast, whether a compositor runs, and whether it blurs.
///
/// Where no portal answers, the colours of Qt's own theme tell light from dark. Main thread only.
class LinuxAppearance final
{
public:
    /// `appearance` must outlive this object. Made before the program sets a palette of its own.
    LinuxAppearance(DesktopAppearance& appearance, const QDBusConnection& bus);
    ~LinuxAppearance();
    Q_DISABLE_COPY_MOVE(LinuxAppearance)

private:
    void watchPortal();
    void watchFont();
    void updateFont();

    DesktopAppearance& m_appearance;
    ColorScheme m_themeScheme;
    std::optional<QFont> m_font;
    double m_textScale = 1;
    SettingsPortal m_portal;
    std::unique_ptr<SelectionWatcher> m_compositor;
    std::unique_ptr<BlurRequests> m_blur;
};

/// The scheme of the portal's number; `otherwise` if the user has no preference.
[[nodiscard]] ColorScheme colorSchemeFromPortal(uint number, ColorScheme otherwise);

} // namespace zelvane
