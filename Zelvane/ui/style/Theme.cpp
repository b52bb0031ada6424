#include "ui/style/Theme.h"

#include <QFontDatabase>
#include <QGuiApplication>

namespace zelvane {

namespace {

struct RoleStyle
{
    /// The size beside that of a body text.
    double scale;
    QFont::Weight weight;
    bool monospaced = false;
};

RoleStyle styleOf(StyleFontRole role)
{
    switch (role) {
    case StyleFontRole::headline:
    case StyleFontRole::bodySemibold:
        return {1, QFont::DemiBold};
    case StyleFontRole::title2:
        return {1.31, QFont::Bold};
    case StyleFontRole::title3:
        return {1.16, QFont::DemiBold};
    case StyleFontRole::body:
        return {1, QFont::Normal};
    case StyleFontRole::callout:
        return {0.93, QFont::Normal};
    case StyleFontRole::calloutSemibold:
        return {0.93, QFont::DemiBold};
    case StyleFontRole::caption:
        return {0.85, QFont::Normal};
    case StyleFontRole::captionSemibold:
        return {0.85, QFont::DemiBold};
    case StyleFontRole::monospacedCaption:
        return {0.85, QFont::Normal, true};
    case StyleFontRole::monospacedBody:
        return {1, QFont::Normal, true};
    }
    Q_UNREACHABLE();
}

} // namespace

QFont fontForRole(StyleFontRole role, const QFont& systemFont, const QFont& monospacedFont)
{
    const RoleStyle style = styleOf(role);
    QFont font = style.monospaced ? monospacedFont : systemFont;
    if (systemFont.pixelSize() > 0) {
        font.setPixelSize(qRound(systemFont.pixelSize() * style.scale));
    } else {
        font.setPointSizeF(systemFont.pointSizeF() * style.scale);
    }
    font.setWeight(style.weight);
    return font;
}

Theme::Theme(StyleTweaker& tokens, DesktopAppearance& appearance)
    : m_tokens(tokens)
    , m_appearance(appearance)
{
    update();
    connect(&tokens, &StyleTweaker::changed, this, &Theme::changed);
    connect(&appearance, &DesktopAppearance::changed, this, [this] {
        update();
        Q_EMIT changed();
    });
}

bool Theme::opaquePanels() const
{
    return !m_appearance.compositing() || !m_appearance.blursBehind() ||
           m_appearance.reducedTransparency() || m_appearance.highContrast();
}

QFont Theme::font(StyleFontRole role) const
{
    return fontForRole(role, QGuiApplication::font(),
                       QFontDatabase::systemFont(QFontDatabase::FixedFont));
}

void Theme::update()
{
    m_colors = themeColors({.scheme = m_appearance.colorScheme(),
                            .accent = m_appearance.accent(),
                            .highContrast = m_appearance.highContrast()});
}

} // namespace zelvane
