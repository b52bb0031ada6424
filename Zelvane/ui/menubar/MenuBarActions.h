#pragma once

#include <functional>

namespace zelvane {

/// What the item in the tray causes elsewhere. All are called on the main thread.
struct MenuBarActions
{
    /// The panel or the menu is about to show.
    std::function<void()> appeared = [] {};
    std::function<void()> manualTranslation = [] {};
    std::function<void()> settings = [] {};
    std::function<void()> quit = [] {};
};

} // namespace zelvane
