#include "ui/style/MenuShadow.h"

#include "ui/style/Shadow.h"

#include <QCursor>
#include <QMenu>
#include <QMouseEvent>
#include <QScreen>

namespace zelvane {

namespace {

/// One direction of a window with a margin at both ends.
struct Extent
{
    int begin;
    int end;
    int beginMargin;
    int endMargin;
};

/// How far to move a menu that Qt has placed with its shadow, so that the menu itself is there: it
/// begins at the pointer, or ends there or at the screen's end where it has no room.
int shift(const Extent& menu, int pointer, int screenEnd)
{
    constexpr int near = 2;
    const bool endsHere = menu.end >= screenEnd || std::abs(menu.end - pointer) <= near;
    return endsHere ? menu.endMargin : -menu.beginMargin;
}

} // namespace

MenuShadow::MenuShadow(QMenu& menu, const Theme& theme)
    : QObject(&menu)
    , m_menu(menu)
    , m_theme(theme)
{
    fit();
    connect(&theme, &Theme::changed, this, &MenuShadow::fit);
    menu.installEventFilter(this);
}

bool MenuShadow::eventFilter(QObject*, QEvent* event)
{
    if (event->type() == QEvent::Show) {
        place();
    } else if (event->type() == QEvent::MouseButtonPress) {
        const QPoint point = static_cast<QMouseEvent*>(event)->position().toPoint();
        if (m_menu.rect().contains(point) && !m_menu.contentsRect().contains(point)) {
            m_menu.close();
            return true;
        }
    }
    return false;
}

void MenuShadow::fit()
{
    m_menu.setContentsMargins(m_theme.appearance().compositing() ? shadowMargins() : QMargins());
    m_menu.update();
}

void MenuShadow::place()
{
    const QMargins shadow = m_menu.contentsMargins();
    const QRect window = m_menu.geometry();
    const QRect screen = m_menu.screen()->availableGeometry();
    const QPoint pointer = QCursor::pos();
    const Extent across{window.left(), window.right(), shadow.left(), shadow.right()};
    const Extent down{window.top(), window.bottom(), shadow.top(), shadow.bottom()};
    m_menu.move(window.topLeft() + QPoint(shift(across, pointer.x(), screen.right()),
                                          shift(down, pointer.y(), screen.bottom())));
}

} // namespace zelvane
