#pragma once

#include "desktop/AccessibilityPermission.h"
#include "desktop/MouseTap.h"
#include "desktop/OptionClickMenu.h"
#include "desktop/OptionMenuPresenter.h"
#include "foundation/TaskScope.h"
#include "settings/AppSettings.h"

#include <QObject>

#include <memory>
#include <mutex>

namespace zelvane {

/// The menu at Option + right click: keeps the tap in line with the setting and the permission, and
/// turns a click into a choice of a pair and a mode.
///
/// While it is wanted and can't listen, it tries again every second. Main thread.
class OptionClickMenuManager final : public QObject, public OptionClickMenu
{
    Q_OBJECT

public:
    /// What the menu stands on. All must outlive it.
    struct Parts
    {
        const AppSettings& settings;
        const AccessibilityPermission& permission;
        MouseTap& tap;
        OptionMenuPresenter& presenter;
        Clock& clock;
    };

    explicit OptionClickMenuManager(const Parts& parts);
    ~OptionClickMenuManager() override;

    void setOnSelect(std::function<void(LanguagePair, TranslateOutputMode)> onSelect) override;
    void setOnActivated(std::function<void()> onActivated) override;
    void setWanted(bool wanted) override;
    void reconcile() override;
    [[nodiscard]] bool isListening() const override { return m_isListening; }
    [[nodiscard]] QString lastError() const override { return m_lastError; }

    /// The platform announced a change of permissions. It takes effect a moment later.
    void accessibilityApiChanged();
    /// This program has come to the front.
    void activated() { refreshTap(); }

Q_SIGNALS:
    /// A retry has succeeded: the menu listens now.
    void optionClickMenuDidActivate();

private:
    void refreshTap();
    [[nodiscard]] QCoro::Task<void> refreshAfterAnnouncement(std::stop_token stop);
    void installTap();
    [[nodiscard]] bool createTap();
    void removeTap();
    void installTapAndPoll();
    void enableTap();
    void startPolling();
    void stopPolling();
    void pollTick();

    [[nodiscard]] TapVerdict handleTapEvent(const TapEvent& event);
    void suppressUp();
    /// Whether the next release was to be swallowed; from now on it isn't.
    bool takeSuppressedUp();
    void showMenu(QPoint location);
    void handleChoice(const MenuChoice& choice);

    Parts m_parts;
    std::function<void(LanguagePair, TranslateOutputMode)> m_onSelect;
    std::function<void()> m_onActivated;
    bool m_isListening = false;
    QString m_lastError;
    bool m_hasTap = false;
    bool m_wantEnabled = false;
    std::unique_ptr<Timer> m_pollTimer;

    /// A tap of another platform may call from a thread of its own.
    std::mutex m_lock;
    /// The release that follows a swallowed press is to be swallowed too.
    bool m_suppressingUp = false;

    TaskScope m_tasks;
};

} // namespace zelvane
