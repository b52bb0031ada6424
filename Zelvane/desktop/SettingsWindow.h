#pragma once

#include "desktop/ActivationPolicy.h"
#include "desktop/ApplicationWindows.h"
#include "foundation/Clock.h"
#include "foundation/TaskScope.h"

#include <QObject>

#include <functional>
#include <optional>

namespace zelvane {

/// Finds, opens and hides the settings window, and decides when the program shows among the running
/// ones.
///
/// The window itself is made when it is first wanted. Until then nobody but its maker can open it;
/// once it is there it registers an action that does. Main thread.
class SettingsWindow
{
public:
    /// A section that the window is to show.
    enum class PendingSection {
        accessibility,
    };

    /// The window's own name, and an older one that counts as well.
    [[nodiscard]] static QString identifier();
    [[nodiscard]] static QString olderIdentifier();

    /// All must outlive this object. `openFirst` makes the settings window for the first time and
    /// opens it; false if it can't.
    SettingsWindow(ApplicationWindows& windows, ActivationPolicy& policy, Clock& clock,
                   std::function<bool()> openFirst);
    Q_DISABLE_COPY_MOVE(SettingsWindow)

    /// From the window when it appears: what opens it from now on.
    void registerOpenAction(std::function<void()> action);

    /// The one way to show settings. Returns at once; the window comes a moment later.
    void requestOpen(std::optional<PendingSection> section = std::nullopt);

    /// The section that was asked for last, once: for the window when it appears.
    [[nodiscard]] std::optional<PendingSection> takePendingSection();

    [[nodiscard]] static bool isSettingsWindow(const ApplicationWindow& window);
    /// The first of the program's windows that is one.
    [[nodiscard]] std::optional<ApplicationWindow> findSettingsWindow() const;

    /// False if the settings window isn't visible.
    bool bringSettingsToFront();
    /// Takes the window off the screen, for another one that takes over.
    void hideSettings();
    /// To be called when the content of the settings window has gone from the screen.
    void contentDisappeared();

    /// Has the policy follow the windows from now on. Once in the life of this object.
    void installPolicyObservers();
    /// Has the closing of the settings window take the request for it back. Once.
    void installCloseObserver();

    /// Decides anew. `closing` is a window that is about to go and no longer counts.
    void updateActivationPolicy(std::optional<ApplicationWindow::Id> closing = std::nullopt);

    /// Whether the window is wanted, even if it doesn't show yet.
    [[nodiscard]] bool settingsRequested() const { return m_settingsRequested; }

private:
    [[nodiscard]] QCoro::Task<void> presentWithAction(std::optional<PendingSection> section,
                                                      std::stop_token stop);
    void present(std::optional<PendingSection> section);
    void openViaMenu();
    /// Listens to the windows for as long as this object lives.
    void observe(
        const std::function<void(std::optional<ApplicationWindow::Id>)>& willClose,
        const std::function<void()>& becameKeyOrMain = [] {});
    void updateNowAndLater(std::optional<ApplicationWindow::Id> closing);
    void makeRegular();
    [[nodiscard]] bool anyWindowPromotes(std::optional<ApplicationWindow::Id> closing) const;

    ApplicationWindows& m_windows;
    ActivationPolicy& m_policy;
    Clock& m_clock;
    std::function<bool()> m_openFirst;

    bool m_settingsRequested = false;
    std::optional<PendingSection> m_pendingSection;
    std::function<void()> m_openSettingsAction;
    std::optional<PendingSection> m_requestedSection;
    bool m_presentAfterRegistration = false;
    bool m_watchesPolicy = false;
    bool m_watchesClose = false;

    /// Receives what is queued for a later turn of the event loop.
    QObject m_queue;
    TaskScope m_tasks;
};

} // namespace zelvane
