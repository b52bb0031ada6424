#pragma once

#include "desktop/AccessibilityPermission.h"
#include "desktop/AlertPresenter.h"
#include "desktop/AppModelWindows.h"
#include "desktop/HotKeyManager.h"
#include "desktop/OptionClickMenu.h"
#include "desktop/SelectionTranslation.h"
#include "foundation/TaskScope.h"

#include <QHash>
#include <QObject>
#include <QProperty>

#include <exception>
#include <map>
#include <memory>

namespace zelvane {

/// The controller: takes every shortcut and menu choice, lets one translation run at a time,
/// delivers its outcome, and keeps the one status line.
///
/// Main thread only.
class AppModel final : public QObject
{
    Q_OBJECT

public:
    /// What the controller stands on. All must outlive it.
    struct Parts
    {
        const AppSettings& settings;
        SelectionTranslation& selection;
        HotKeyManager& hotKeys;
        OptionClickMenu& optionMenu;
        AccessibilityPermission& permission;
        AlertPresenter& alerts;
        AppModelWindows& windows;
        Clock& clock;
    };

    /// Queues the start of the shortcuts and of the first window for the next turn of the event
    /// loop.
    explicit AppModel(const Parts& parts);
    ~AppModel() override;

    /// One line for the user, in the interface language.
    [[nodiscard]] QString status() const { return m_status; }
    [[nodiscard]] QBindable<QString> bindableStatus() const { return &m_status; }

    /// From the acceptance of a translation until its outcome is delivered; an open failure alert
    /// counts as undelivered.
    [[nodiscard]] bool isBusy() const { return m_isBusy; }
    [[nodiscard]] QBindable<bool> bindableIsBusy() const { return &m_isBusy; }

    /// The last failure, until the next translation starts.
    [[nodiscard]] std::optional<QString> lastError() const { return m_lastError; }
    [[nodiscard]] QBindable<std::optional<QString>> bindableLastError() const
    {
        return &m_lastError;
    }

    [[nodiscard]] AccessibilityPermission::State accessibilityState() const
    {
        return m_accessibilityState;
    }
    [[nodiscard]] QBindable<AccessibilityPermission::State> bindableAccessibilityState() const
    {
        return &m_accessibilityState;
    }

    /// Connects the shortcuts and the option menu on the first call; registers anew on every call.
    void startHotKeys();
    void reloadHotKeys();

    /// A press of a pair's shortcut. Waits for a second press if the settings ask for that.
    void handleHotKey(const QUuid& pairId);
    void handleOptionMenuChoice(const LanguagePair& pair, TranslateOutputMode mode);
    /// Starts a translation, or drops the request if one is running.
    void runTranslation(const LanguagePair& pair, TranslateOutputMode mode);

    void refreshAccessibilityState();
    void refreshOptionMenuStatus();
    /// To be called after a change of the interface language.
    void refreshStatusText();

    /// The platform announced a change of permissions. It takes effect a moment later.
    void accessibilityApiChanged();
    /// This program or one of its windows has come to the front.
    void activated();

Q_SIGNALS:
    /// The shortcuts are registered, for the first time or anew.
    void hotKeysReloaded();
    /// A translation was delivered; `diagnostics` is its timing report.
    void translationDelivered(const QString& diagnostics);

private:
    void installAccessibilityWatchers();
    [[nodiscard]] QCoro::Task<void> refreshAfterAnnouncement(std::stop_token stop);
    void setStatus(const QString& key);
    void setStatus(const QString& format, const LanguagePair& pair);
    [[nodiscard]] bool statusIsIdle() const;
    [[nodiscard]] bool statusIsOptionMenu() const;

    [[nodiscard]] QCoro::Task<void> run(LanguagePair pair, TranslateOutputMode mode,
                                        bool autoReplace, std::stop_token stop);
    [[nodiscard]] QCoro::Task<void> deliverFailure(std::exception_ptr error);
    [[nodiscard]] QCoro::Task<void> presentFailure(std::exception_ptr error);

    Parts m_parts;
    Q_OBJECT_BINDABLE_PROPERTY(AppModel, QString, m_status)
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(AppModel, bool, m_isBusy, false)
    Q_OBJECT_BINDABLE_PROPERTY(AppModel, std::optional<QString>, m_lastError)
    Q_OBJECT_BINDABLE_PROPERTY(AppModel, AccessibilityPermission::State, m_accessibilityState)
    bool m_hotKeysStarted = false;
    /// First presses that wait for a second one, by pair.
    std::map<QUuid, std::unique_ptr<Timer>> m_pendingHotKey;
    std::unique_ptr<Timer> m_accessibilityTimer;
    TaskScope m_tasks;
};

} // namespace zelvane
