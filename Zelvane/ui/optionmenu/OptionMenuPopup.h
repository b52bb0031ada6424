#pragma once

#include "desktop/OptionMenuPresenter.h"

#include <QMenu>

#include <functional>
#include <memory>

namespace zelvane {

/// The menu at Option + right click as a pop-up menu, which takes the pointer and the keyboard
/// while it is open and leaves the focus where it is.
///
/// Made when it is first opened. Main thread.
class OptionMenuPopup final : public OptionMenuPresenter
{
public:
    /// `toInterface` turns the platform's coordinates into those of windows.
    explicit OptionMenuPopup(std::function<QPoint(QPoint)> toInterface);
    ~OptionMenuPopup() override;

    void popUp(const OptionMenuContent& content, QPoint location,
               std::function<void(const MenuChoice&)> onChosen) override;

    /// Null before it was first opened.
    [[nodiscard]] QMenu* menu() const { return m_menu.get(); }

private:
    void fill(const OptionMenuContent& content);
    void addItem(const OptionMenuContent::Item& item);

    std::function<QPoint(QPoint)> m_toInterface;
    std::function<void(const MenuChoice&)> m_onChosen;
    std::unique_ptr<QMenu> m_menu;
};

} // namespace zelvane
