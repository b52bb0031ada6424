#include "ui/components/PanelSurface.h"

#include "ui/style/Shadow.h"
#include "ui/style/ViewStyles.h"

#include <QPainterPath>
#include <QWindow>

namespace zelvane {

QMargins panelMargins(const Theme& theme)
{
    return theme.appearance().compositing() ? shadowMargins() : QMargins();
}

void paintPanelSurface(QPainter& painter, const QRect& panel, const Theme& theme,
                       std::optional<double> cornerRadius)
{
    const ThemeColors& colors = theme.colors();
    if (!theme.appearance().compositing()) {
        painter.fillRect(panel, colors.window);
        painter.setPen(blended(colors.controlBorder, colors.window));
        painter.drawRect(panel.adjusted(0, 0, -1, -1));
        return;
    }
    const TranslatorFloatingGlassModifier glass{theme.tokens(), theme.opaquePanels(), cornerRadius};
    paintShadow(painter, panel, glass.radius());
    if (!theme.opaquePanels()) {
        // The shadow lies around the panel, not behind it.
        painter.save();
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setCompositionMode(QPainter::CompositionMode_Clear);
        painter.setPen(Qt::NoPen);
        painter.setBrush(Qt::black);
        painter.drawRoundedRect(panel, glass.radius(), glass.radius());
        painter.restore();
    }
    glass.paint(painter, panel, colors);
}

void describePanelSurface(QWidget& window, const QRect& panel, const Theme& theme,
                          std::optional<double> cornerRadius)
{
    QWindow* handle = window.windowHandle();
    if (!handle) {
        return;
    }
    QRegion behind;
    if (!theme.opaquePanels()) {
        const double radius =
            TranslatorFloatingGlassModifier{theme.tokens(), false, cornerRadius}.radius();
        QPainterPath outline;
        outline.addRoundedRect(panel, radius, radius);
        behind = QRegion(outline.toFillPolygon().toPolygon());
    }
    theme.appearance().blurBehind(*handle, behind);
}

} // namespace zelvane
