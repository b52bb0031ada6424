#pragma once

#include "ui/style/Theme.h"

#include <QProxyStyle>

class QStyleOptionMenuItem;

namespace zelvane {

/// Draws the menus and tool tips that Qt makes in the look of the program's own windows.
class InterfaceStyle final : public QProxyStyle
{
    Q_OBJECT

public:
    /// `theme` must outlive the style.
    explicit InterfaceStyle(const Theme& theme);

    using QProxyStyle::polish;
    void polish(QWidget* widget) override;
    using QProxyStyle::unpolish;
    void unpolish(QWidget* widget) override;

    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget) const override;
    void drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget) const override;
    [[nodiscard]] QSize sizeFromContents(ContentsType type, const QStyleOption* option,
                                         const QSize& size, const QWidget* widget) const override;
    [[nodiscard]] int pixelMetric(PixelMetric metric, const QStyleOption* option,
                                  const QWidget* widget) const override;
    [[nodiscard]] int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                                QStyleHintReturn* data) const override;

private:
    void drawMenuItem(const QStyleOptionMenuItem& item, QPainter& painter) const;

    const Theme& m_theme;
};

/// Gives the running application this style, its icon, and the palette and font of the theme, now
/// and after each change of it. `theme` must outlive the application's windows.
void dressApplication(const Theme& theme);

} // namespace zelvane
