#include "ui/menubar/MenuBarStatusIcon.h"

#include "ui/components/Observe.h"
#include "ui/style/Symbols.h"

namespace zelvane {

namespace {

/// The sizes in which trays show icons, in pixels.
constexpr std::array iconSizes{16, 18, 22, 24, 32, 44, 48, 64};

QIcon picture(double opacity)
{
    QIcon icon;
    for (const int size : iconSizes) {
        icon.addPixmap(picturePixmap(QStringLiteral("MenuBarIcon"), size, 1, opacity));
    }
    return icon;
}

} // namespace

MenuBarStatusIcon::MenuBarStatusIcon(MenuBarModel& model, const Theme& theme, Clock& clock)
    : m_pulse(clock, [this](double) { Q_EMIT changed(); })
{
    const auto followMotion = [this, &theme] {
        m_pulse.setReducedMotion(theme.appearance().reducedMotion());
    };
    followMotion();
    connect(&theme, &Theme::changed, this, followMotion);
    observe(this, model.bindableIsBusy(), [this](bool busy) { m_pulse.setBusy(busy); });
}

QIcon MenuBarStatusIcon::icon()
{
    const double opacity = m_pulse.opacity();
    QIcon& icon = m_icons[qRound(opacity * 100)];
    if (icon.isNull()) {
        icon = picture(opacity);
    }
    return icon;
}

} // namespace zelvane
