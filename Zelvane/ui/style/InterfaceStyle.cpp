#include "ui/style/InterfaceStyle.h"

#include "ui/style/MenuShadow.h"
#include "ui/style/Shadow.h"
#include "ui/style/Symbols.h"

#include <QApplication>
#include <QIcon>
#include <QMenu>
#include <QPainter>
#include <QStyleFactory>
#include <QStyleOption>

namespace zelvane {

namespace {

constexpr int menuMargin = 5;
constexpr int menuRadius = 10;
constexpr int itemRadius = menuRadius - menuMargin;
constexpr int itemPadding = 10;
constexpr int checkRoom = 18;
constexpr int checkSize = 14;

/// Text and shortcut of an entry, which Qt joins with a tab.
std::pair<QString, QString> textParts(const QStyleOptionMenuItem& item)
{
    const qsizetype tab = item.text.indexOf(u'\t');
    return tab < 0 ? std::pair(item.text, QString())
                   : std::pair(item.text.first(tab), item.text.sliced(tab + 1));
}

/// Each window hands all sizes to the X server, twice, and the window manager reads them before it
/// shows the window: what taskbars use, and no more.
QIcon applicationIcon()
{
    QIcon icon;
    for (const int size : {16, 24, 32, 48, 64, 96}) {
        icon.addPixmap(picturePixmap(QStringLiteral("org.zelvane.desk"), size, 1));
    }
    return icon;
}

} // namespace

InterfaceStyle::InterfaceStyle(const Theme& theme)
    : QProxyStyle(QStyleFactory::create(QStringLiteral("Fusion")))
    , m_theme(theme)
{
}

void InterfaceStyle::polish(QWidget* widget)
{
    QProxyStyle::polish(widget);
    if (auto* menu = qobject_cast<QMenu*>(widget)) {
        // Always with an alpha channel, which menus use where the desktop composes windows.
        widget->setWindowFlag(Qt::FramelessWindowHint);
        widget->setWindowFlag(Qt::NoDropShadowWindowHint);
        widget->setAttribute(Qt::WA_TranslucentBackground);
        if (!menu->findChild<MenuShadow*>()) {
            new MenuShadow(*menu, m_theme);
        }
    }
}

void InterfaceStyle::unpolish(QWidget* widget)
{
    if (qobject_cast<QMenu*>(widget)) {
        delete widget->findChild<MenuShadow*>();
        widget->setContentsMargins({});
    }
    QProxyStyle::unpolish(widget);
}

void InterfaceStyle::drawPrimitive(PrimitiveElement element, const QStyleOption* option,
                                   QPainter* painter, const QWidget* widget) const
{
    const ThemeColors& colors = m_theme.colors();
    switch (element) {
    case PE_PanelMenu: {
        const bool composed = m_theme.appearance().compositing();
        const double radius = composed ? menuRadius : 0;
        const QRect panel = widget ? widget->contentsRect() : option->rect;
        painter->save();
        if (composed) {
            paintShadow(*painter, panel, radius);
        }
        painter->setRenderHint(QPainter::Antialiasing);
        painter->setPen(blended(colors.controlBorder, colors.window));
        painter->setBrush(colors.window);
        painter->drawRoundedRect(QRectF(panel).adjusted(0.5, 0.5, -0.5, -0.5), radius, radius);
        painter->restore();
        return;
    }
    case PE_FrameMenu:
        return;
    case PE_PanelTipLabel:
        painter->fillRect(option->rect, blended(colors.controlBorder, colors.control));
        painter->fillRect(option->rect.adjusted(1, 1, -1, -1), colors.control);
        return;
    default:
        QProxyStyle::drawPrimitive(element, option, painter, widget);
    }
}

void InterfaceStyle::drawControl(ControlElement element, const QStyleOption* option,
                                 QPainter* painter, const QWidget* widget) const
{
    const auto* item = qstyleoption_cast<const QStyleOptionMenuItem*>(option);
    if (element == CE_MenuEmptyArea) {
        return;
    }
    if (element == CE_MenuItem && item && item->menuItemType != QStyleOptionMenuItem::SubMenu) {
        painter->save();
        drawMenuItem(*item, *painter);
        painter->restore();
        return;
    }
    QProxyStyle::drawControl(element, option, painter, widget);
}

void InterfaceStyle::drawMenuItem(const QStyleOptionMenuItem& item, QPainter& painter) const
{
    const ThemeColors& colors = m_theme.colors();
    painter.setRenderHint(QPainter::Antialiasing);
    if (item.menuItemType == QStyleOptionMenuItem::Separator) {
        const QRect line(item.rect.left() + itemPadding, item.rect.center().y(),
                         item.rect.width() - 2 * itemPadding, 1);
        painter.fillRect(line, colors.hairline);
        return;
    }
    const bool enabled = item.state.testFlag(State_Enabled);
    const bool selected = enabled && item.state.testFlag(State_Selected);
    if (selected) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(colors.accent);
        painter.drawRoundedRect(item.rect, itemRadius, itemRadius);
    }
    QColor color = enabled ? colors.text : colors.secondaryText;
    if (selected) {
        color = colors.onAccent;
    }
    QRect room = item.rect.adjusted(itemPadding, 0, -itemPadding, 0);
    if (item.menuHasCheckableItems) {
        const QRect mark =
            visualRect(item.direction, room,
                       QRect(room.left(), room.center().y() - checkSize / 2, checkSize, checkSize));
        if (item.checked) {
            painter.drawPixmap(mark.topLeft(),
                               symbolPixmap(QStringLiteral("checkmark"), color, checkSize,
                                            painter.device()->devicePixelRatioF()));
        }
        room = visualRect(item.direction, room, room.adjusted(checkRoom, 0, 0, 0));
    }
    const auto [text, shortcut] = textParts(item);
    const int flags = Qt::AlignVCenter | Qt::TextSingleLine | Qt::TextHideMnemonic;
    const auto begin = visualAlignment(item.direction, Qt::AlignLeft);
    const auto end = visualAlignment(item.direction, Qt::AlignRight);
    painter.setFont(item.font);
    painter.setPen(color);
    painter.drawText(room, flags | int(begin), text);
    painter.setPen(selected ? colors.onAccent : colors.secondaryText);
    painter.drawText(room, flags | int(end), shortcut);
}

QSize InterfaceStyle::sizeFromContents(ContentsType type, const QStyleOption* option,
                                       const QSize& size, const QWidget* widget) const
{
    const auto* item = qstyleoption_cast<const QStyleOptionMenuItem*>(option);
    if (type != CT_MenuItem || !item) {
        return QProxyStyle::sizeFromContents(type, option, size, widget);
    }
    if (item->menuItemType == QStyleOptionMenuItem::Separator) {
        return {size.width(), 9};
    }
    const QFontMetrics metrics(item->font);
    const auto [text, shortcut] = textParts(*item);
    int width = metrics.horizontalAdvance(text) + 2 * itemPadding + 4;
    if (!shortcut.isEmpty()) {
        width += metrics.horizontalAdvance(shortcut) + 3 * itemPadding;
    }
    if (item->menuHasCheckableItems) {
        width += checkRoom;
    }
    if (item->menuItemType == QStyleOptionMenuItem::SubMenu) {
        width += checkRoom;
    }
    return {width, metrics.height() + 10};
}

int InterfaceStyle::pixelMetric(PixelMetric metric, const QStyleOption* option,
                                const QWidget* widget) const
{
    switch (metric) {
    case PM_MenuPanelWidth:
        return 0;
    case PM_MenuHMargin:
    case PM_MenuVMargin:
        return menuMargin;
    case PM_ToolTipLabelFrameWidth:
        return 6;
    default:
        return QProxyStyle::pixelMetric(metric, option, widget);
    }
}

int InterfaceStyle::styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                              QStyleHintReturn* data) const
{
    switch (hint) {
    case SH_EtchDisabledText:
        return 0;
    case SH_ToolTipLabel_Opacity:
        return 255;
    default:
        return QProxyStyle::styleHint(hint, option, widget, data);
    }
}

void dressApplication(const Theme& theme)
{
    QApplication::setStyle(new InterfaceStyle(theme));
    QApplication::setWindowIcon(applicationIcon());
    const auto apply = [&theme] {
        QApplication::setPalette(toPalette(theme.colors()));
        if (const auto font = theme.appearance().systemFont()) {
            QApplication::setFont(*font);
        }
    };
    apply();
    QObject::connect(&theme, &Theme::changed, qApp, apply);
}

} // namespace zelvane
