#pragma once

#include "ui/components/Popover.h"
#include "ui/menubar/MenuBarActions.h"
#include "ui/menubar/MenuBarTrayContent.h"

#include <optional>

namespace zelvane {

/// What the panel opens at.
struct MenuBarAnchor
{
    /// The icon, or the pointer where it was clicked but can't be seen; none for a corner of the
    /// screen.
    std::optional<QRect> place;
    /// What windows may cover of the screen.
    QRect frame;
    Qt::LayoutDirection direction = Qt::LeftToRight;
};

/// Where a panel of `size` goes: below the icon where that is in the upper half of the screen, else
/// above it, in line with its middle; without an icon into the corner where trays usually are.
[[nodiscard]] QPoint menuBarPanelOrigin(const MenuBarAnchor& anchor, QSize size);

/// The panel at the tray icon. It goes by itself when it closes.
class MenuBarPanel final : public Popover
{
    Q_OBJECT

public:
    /// Model and theme must outlive the panel.
    MenuBarPanel(MenuBarModel& model, const Theme& theme, MenuBarActions actions);

    /// Shows the panel at `anchor`.
    void present(const MenuBarAnchor& anchor);

    [[nodiscard]] MenuBarTrayContent& content() { return *m_content; }

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    /// Closes the panel first: what the command opens must not lie behind it.
    void run(const std::function<void()>& command);
    void fit();

    MenuBarActions m_actions;
    MenuBarAnchor m_anchor;
    MenuBarTrayContent* m_content; ///< owned by Qt's tree
};

} // namespace zelvane
