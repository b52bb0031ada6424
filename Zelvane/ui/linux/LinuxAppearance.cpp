#include "ui/linux/LinuxAppearance.h"

#include "ui/linux/FontDescription.h"

#include <QDBusArgument>
#include <QGuiApplication>
#include <QPalette>

namespace zelvane {

namespace {

QString appearanceGroup()
{
    return QStringLiteral("org.freedesktop.appearance");
}

QString interfaceGroup()
{
    return QStringLiteral("org.gnome.desktop.interface");
}

/// Of the theme that Qt has found, by what is lighter: the window or its text.
ColorScheme schemeOfTheme()
{
    const QPalette palette = QGuiApplication::palette();
    const bool dark = palette.color(QPalette::Window).lightness() <
                      palette.color(QPalette::WindowText).lightness();
    return dark ? ColorScheme::dark : ColorScheme::light;
}

/// Three numbers from 0 to 1; anything outside means that the user has chosen none.
std::optional<QColor> accentFromPortal(const QVariant& value)
{
    if (value.metaType() != QMetaType::fromType<QDBusArgument>()) {
        return std::nullopt;
    }
    const auto argument = value.value<QDBusArgument>();
    if (argument.currentSignature() != QStringLiteral("(ddd)")) {
        return std::nullopt;
    }
    double red = -1;
    double green = -1;
    double blue = -1;
    argument.beginStructure();
    argument >> red >> green >> blue;
    argument.endStructure();
    for (const double channel : {red, green, blue}) {
        if (!(channel >= 0 && channel <= 1)) {
            return std::nullopt;
        }
    }
    return QColor::fromRgbF(float(red), float(green), float(blue));
}

} // namespace

ColorScheme colorSchemeFromPortal(uint number, ColorScheme otherwise)
{
    switch (number) {
    case 1:
        return ColorScheme::dark;
    case 2:
        return ColorScheme::light;
    default:
        return otherwise;
    }
}

LinuxAppearance::LinuxAppearance(DesktopAppearance& appearance, const QDBusConnection& bus)
    : m_appearance(appearance)
    , m_themeScheme(schemeOfTheme())
    , m_portal(bus)
{
    m_appearance.setColorScheme(m_themeScheme);
    watchPortal();
    if (const auto session = currentXcbSession()) {
        const QByteArray selection = "_NET_WM_CM_S" + QByteArray::number(session->screenNumber);
        m_compositor = std::make_unique<SelectionWatcher>(
            *session, selection, [this](bool runs) { m_appearance.setCompositing(runs); });
        m_blur = std::make_unique<BlurRequests>(
            *session, [this](bool blurs) { m_appearance.setBlursBehind(blurs); });
        m_appearance.setBlur(
            [this](QWindow& window, const QRegion& region) { m_blur->blurBehind(window, region); });
    }
}

LinuxAppearance::~LinuxAppearance()
{
    m_appearance.setBlur([](QWindow&, const QRegion&) {});
}

void LinuxAppearance::watchPortal()
{
    m_portal.watch(
        appearanceGroup(), QStringLiteral("color-scheme"), [this](const QVariant& value) {
            m_appearance.setColorScheme(colorSchemeFromPortal(value.toUInt(), m_themeScheme));
        });
    m_portal.watch(
        appearanceGroup(), QStringLiteral("accent-color"),
        [this](const QVariant& value) { m_appearance.setAccent(accentFromPortal(value)); });
    m_portal.watch(appearanceGroup(), QStringLiteral("contrast"), [this](const QVariant& value) {
        m_appearance.setHighContrast(value.toUInt() == 1);
    });
    m_portal.watch(
        interfaceGroup(), QStringLiteral("enable-animations"),
        [this](const QVariant& value) { m_appearance.setReducedMotion(!value.toBool()); });
    if (keepsFontInDescription(qEnvironmentVariable("XDG_CURRENT_DESKTOP"))) {
        watchFont();
    }
}

void LinuxAppearance::watchFont()
{
    m_portal.watch(interfaceGroup(), QStringLiteral("font-name"), [this](const QVariant& value) {
        m_font = fontFromDescription(value.toString());
        updateFont();
    });
    m_portal.watch(interfaceGroup(), QStringLiteral("text-scaling-factor"),
                   [this](const QVariant& value) {
                       const double factor = value.toDouble();
                       m_textScale = factor >= 0.5 && factor <= 3 ? factor : 1;
                       updateFont();
                   });
}

void LinuxAppearance::updateFont()
{
    std::optional<QFont> font = m_font;
    if (font) {
        font->setPointSizeF(font->pointSizeF() * m_textScale);
    }
    m_appearance.setSystemFont(font);
}

} // namespace zelvane
