#include "ui/menubar/MenuBarPanel.h"

#include <QKeyEvent>

#include <utility>

namespace zelvane {

namespace {

constexpr int gap = 6;
/// Between the panel and the edge of the screen.
constexpr int screenMargin = 8;

} // namespace

QPoint menuBarPanelOrigin(const MenuBarAnchor& anchor, QSize size)
{
    const QRect room =
        anchor.frame.adjusted(screenMargin, screenMargin, -screenMargin, -screenMargin);
    const int mostRight = room.right() + 1 - size.width();
    const int lowest = room.bottom() + 1 - size.height();
    if (!anchor.place) {
        return {anchor.direction == Qt::RightToLeft ? room.left() : mostRight, room.top()};
    }
    const QPoint middle = anchor.place->center();
    const bool inUpperHalf = middle.y() < anchor.frame.center().y();
    const int x = middle.x() - size.width() / 2;
    const int y =
        inUpperHalf ? anchor.place->bottom() + 1 + gap : anchor.place->top() - gap - size.height();
    return {std::max(std::min(x, mostRight), room.left()),
            std::max(std::min(y, lowest), room.top())};
}

MenuBarPanel::MenuBarPanel(MenuBarModel& model, const Theme& theme, MenuBarActions actions)
    : Popover(theme)
    , m_actions(std::move(actions))
    , m_content(new MenuBarTrayContent(model, theme))
{
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(model.title());
    setAccessibleName(model.title());
    setContent(m_content);
    connect(m_content, &MenuBarTrayContent::manualTranslationRequested, this,
            [this] { run(m_actions.manualTranslation); });
    connect(m_content, &MenuBarTrayContent::settingsRequested, this,
            [this] { run(m_actions.settings); });
    connect(m_content, &MenuBarTrayContent::quitRequested, this, [this] { run(m_actions.quit); });
    connect(m_content, &MenuBarTrayContent::fittingSizeChanged, this, &MenuBarPanel::fit);
}

void MenuBarPanel::present(const MenuBarAnchor& anchor)
{
    m_anchor = anchor;
    fit();
    show();
    m_content->translationButton().setFocus(Qt::PopupFocusReason);
}

void MenuBarPanel::fit()
{
    const QSize size = m_content->fittingSize();
    if (size != panelFrame().size()) {
        setContentSize(size);
    }
    setPanelOrigin(menuBarPanelOrigin(m_anchor, size));
}

void MenuBarPanel::run(const std::function<void()>& command)
{
    // Outlives the panel, which may be gone at the end of its closing.
    const std::function<void()> kept = command;
    close();
    kept();
}

void MenuBarPanel::keyPressEvent(QKeyEvent* event)
{
    if (event->modifiers() == Qt::ControlModifier) {
        if (event->key() == Qt::Key_Comma) {
            run(m_actions.settings);
            return;
        }
        if (event->key() == Qt::Key_Q) {
            run(m_actions.quit);
            return;
        }
    }
    Popover::keyPressEvent(event);
}

} // namespace zelvane
