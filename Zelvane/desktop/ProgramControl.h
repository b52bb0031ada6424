#pragma once

#include "desktop/AppModel.h"
#include "desktop/AppModelWindows.h"
#include "settings/AppSettings.h"

#include <QStringList>

#include <expected>
#include <functional>

namespace zelvane {

/// What other programs of the user may have the running program do: scripts, keys that the desktop
/// itself binds, a second start. Main thread.
class ProgramControl
{
public:
    /// What the control stands on. All must outlive it.
    struct Parts
    {
        const AppSettings& settings;
        AppModel& model;
        AppModelWindows& windows;
    };

    /// What is beyond the controller.
    struct Actions
    {
        /// What a user means who starts the program again: brings an open window to the front.
        std::function<void()> reopen;
        std::function<bool()> anyWindowIsVisible;
        std::function<bool()> hasTrayIcon;
        /// Opens what a click on the tray icon opens.
        std::function<void()> openPanel;
        std::function<void()> showSettings;
    };

    struct Status
    {
        /// The line for the user, in the interface language.
        QString status;
        bool isBusy = false;
        /// Empty if the last translation has not failed.
        QString lastError;
        /// Source and target of all pairs, in their order, and their identifiers.
        QStringList pairs;
        QStringList pairIDs;

        friend bool operator==(const Status&, const Status&) = default;
    };

    ProgramControl(const Parts& parts, Actions actions);

    /// The program was started again. Without a tray, where nothing else shows that it runs, it
    /// opens the panel if no window is open.
    void activate();

    /// Does what a press of a pair's shortcut does. `which` is the pair's place in the list, all
    /// pairs counted from 1, or its identifier. The error is a sentence in English.
    std::expected<void, QString> triggerPair(const QString& which);

    void showTranslationWindow();
    void showSettings();

    [[nodiscard]] Status status() const;

private:
    Parts m_parts;
    Actions m_actions;
};

} // namespace zelvane
