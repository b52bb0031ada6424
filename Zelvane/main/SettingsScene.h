#pragma once

#include "desktop/AccessibilityPermission.h"
#include "desktop/AppModel.h"
#include "desktop/HotKeyManager.h"
#include "desktop/OptionClickMenu.h"
#include "desktop/SettingsWindow.h"
#include "main/Platform.h"
#include "main/ProgramCore.h"
#include "main/UserInterface.h"

#include <functional>
#include <memory>

namespace zelvane {

/// The settings' window, made when it is first wanted.
class SettingsScene
{
public:
    struct Links
    {
        ProgramCore& core;
        SettingsWindow& settings;
        AppModel& model;
        HotKeyManager& hotKeys;
        OptionClickMenu& optionMenu;
        Desktop& desktop;
        AccessibilityPermission& permission;
        /// The window has gone from the screen.
        std::function<void()> disappeared;
    };

    /// All must outlive this object.
    SettingsScene(UserInterface& interface, Links links);
    ~SettingsScene();
    Q_DISABLE_COPY_MOVE(SettingsScene)

    /// Makes the window and lets the settings open it from now on; false if it could not be made.
    bool openFirst();

private:
    struct Parts;

    UserInterface& m_interface;
    Links m_links;
    std::unique_ptr<Parts> m_parts;
};

} // namespace zelvane
