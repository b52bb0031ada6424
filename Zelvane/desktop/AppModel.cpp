#include "desktop/AppModel.h"

#include "desktop/Logging.h"
#include "pipeline/TranslationError.h"
#include "settings/Localization.h"

#include <QPointer>

#include <algorithm>

namespace zelvane {

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

constexpr milliseconds doublePressWindow{1000};
constexpr milliseconds permissionInterval{3000};
constexpr milliseconds permissionTolerance{1000};
/// The system announces a change of permissions before it takes effect.
constexpr milliseconds announcementDelay{800};

// The hyphen of the option menu's statuses is U+2011, so that no line breaks in it.
const QString readyText = LOCALIZATION_KEY("Ready");
constexpr QStringView optionMenuPrefix = u"⌥\u2011menu";

const char* stateName(AccessibilityPermission::State state)
{
    switch (state) {
    case AccessibilityPermission::State::granted:
        return "granted";
    case AccessibilityPermission::State::denied:
        return "denied";
    case AccessibilityPermission::State::stale:
        return "stale";
    }
    Q_UNREACHABLE();
}

bool isAccessibilityDenied(const std::exception_ptr& error)
{
    try {
        std::rethrow_exception(error);
    } catch (const TranslationError& failure) {
        return failure.code() == TranslationError::Code::accessibilityDenied;
    } catch (...) {
        return false;
    }
}

} // namespace

AppModel::AppModel(const Parts& parts)
    : m_parts(parts)
{
    setStatus(readyText);
    m_accessibilityState = m_parts.permission.currentState();
    QMetaObject::invokeMethod(
        this,
        [this] {
            startHotKeys();
            m_parts.optionMenu.setWanted(m_parts.settings.optionRightClickMenu());
            refreshOptionMenuStatus();
        },
        Qt::QueuedConnection);
    m_parts.optionMenu.setOnActivated([model = QPointer(this)] {
        if (model) {
            model->refreshOptionMenuStatus();
        }
    });
    installAccessibilityWatchers();
    qCInfo(accessibilityLog, "launch state: %s", stateName(m_accessibilityState));
    QMetaObject::invokeMethod(
        this,
        [this] {
            if (m_parts.settings.hasSeenOnboarding()) {
                m_parts.windows.promptOnLaunchIfNeeded();
            } else {
                m_parts.windows.showOnboarding();
            }
        },
        Qt::QueuedConnection);
}

AppModel::~AppModel() = default;

void AppModel::installAccessibilityWatchers()
{
    m_accessibilityTimer = m_parts.clock.callEvery(permissionInterval, permissionTolerance,
                                                   [this] { refreshAccessibilityState(); });
}

void AppModel::accessibilityApiChanged()
{
    m_tasks.start(
        [this](std::stop_token stop) { return refreshAfterAnnouncement(std::move(stop)); });
}

QCoro::Task<void> AppModel::refreshAfterAnnouncement(std::stop_token stop)
{
    co_await m_parts.clock.sleep(announcementDelay, stop);
    refreshAccessibilityState();
}

void AppModel::activated()
{
    const auto refresh = [this] { refreshAccessibilityState(); };
    QMetaObject::invokeMethod(this, refresh, Qt::QueuedConnection);
}

void AppModel::refreshAccessibilityState()
{
    const AccessibilityPermission::State state = m_parts.permission.currentState();
    if (state == m_accessibilityState) {
        return;
    }
    qCInfo(accessibilityLog, "state changed: %s", stateName(state));
    m_accessibilityState = state;
    m_parts.optionMenu.reconcile();
    refreshOptionMenuStatus();
}

void AppModel::setStatus(const QString& key)
{
    m_status = localizedText(key);
}

void AppModel::setStatus(const QString& format, const LanguagePair& pair)
{
    m_status = localizedFormat(format, {pairLabel(pair)});
}

bool AppModel::statusIsOptionMenu() const
{
    return status().startsWith(optionMenuPrefix);
}

bool AppModel::statusIsIdle() const
{
    return status() == readyText || status() == localizedText(readyText) || statusIsOptionMenu();
}

void AppModel::refreshOptionMenuStatus()
{
    if (!m_parts.settings.optionRightClickMenu()) {
        if (statusIsOptionMenu() || status() == localizedText(readyText)) {
            setStatus(readyText);
        }
        return;
    }
    if (m_parts.optionMenu.isListening()) {
        if (statusIsIdle()) {
            setStatus(LOCALIZATION_KEY("⌥\u2011menu: active"));
        }
        return;
    }
    const QString error = m_parts.optionMenu.lastError();
    const QString required = LOCALIZATION_KEY("Accessibility required");
    if (error == required || error == localizedText(required)) {
        setStatus(LOCALIZATION_KEY("⌥\u2011menu: waiting for Accessibility…"));
    } else if (!error.isEmpty()) {
        m_status = localizedFormat(QStringLiteral("⌥\u2011menu: %@"), {error});
    }
}

void AppModel::refreshStatusText()
{
    if (!statusIsIdle()) {
        return;
    }
    refreshOptionMenuStatus();
    if (!m_parts.settings.optionRightClickMenu()) {
        setStatus(readyText);
    }
}

void AppModel::startHotKeys()
{
    if (!m_hotKeysStarted) {
        m_hotKeysStarted = true;
        const QPointer model(this);
        m_parts.hotKeys.onHotKey = [model](const QUuid& id) {
            if (model) {
                model->handleHotKey(id);
            }
        };
        m_parts.hotKeys.onManualTranslationHotKey = [&windows = m_parts.windows] {
            windows.showManualTranslationWindow();
        };
        m_parts.optionMenu.setOnSelect([model](const LanguagePair& pair, TranslateOutputMode mode) {
            if (model) {
                model->handleOptionMenuChoice(pair, mode);
            }
        });
    }
    reloadHotKeys();
}

void AppModel::reloadHotKeys()
{
    m_parts.hotKeys.reload(m_parts.settings.pairs(), m_parts.settings.manualTranslationHotKey());
    Q_EMIT hotKeysReloaded();
}

void AppModel::handleHotKey(const QUuid& pairId)
{
    const QList<LanguagePair> pairs = m_parts.settings.pairs();
    const auto found = std::ranges::find(pairs, pairId, &LanguagePair::id);
    if (found == pairs.end() || !found->enabled) {
        return;
    }
    const LanguagePair& pair = *found;
    const QString pressed = LOCALIZATION_KEY("Hotkey → %@");

    if (!m_parts.settings.autoReplace() || !m_parts.settings.doubleHotKeyWindow()) {
        setStatus(pressed, pair);
        runTranslation(pair, TranslateOutputMode::automatic);
        return;
    }
    if (m_pendingHotKey.erase(pairId) > 0) {
        setStatus(LOCALIZATION_KEY("Hotkey ×2 → %@"), pair);
        runTranslation(pair, TranslateOutputMode::autoAndWindow);
        return;
    }
    // The pair is copied: a change of the settings within the second doesn't reach a press made
    // before.
    m_pendingHotKey[pairId] = m_parts.clock.callLater(doublePressWindow, [this, pair, pressed] {
        m_pendingHotKey.erase(pair.id);
        setStatus(pressed, pair);
        runTranslation(pair, TranslateOutputMode::automatic);
    });
}

void AppModel::handleOptionMenuChoice(const LanguagePair& pair, TranslateOutputMode mode)
{
    setStatus(LOCALIZATION_KEY("⌥\u2011click → %@"), pair);
    runTranslation(pair, mode);
}

void AppModel::runTranslation(const LanguagePair& pair, TranslateOutputMode mode)
{
    if (m_isBusy) {
        return;
    }
    m_isBusy = true;
    setStatus(LOCALIZATION_KEY("Translating %@…"), pair);
    m_lastError = std::nullopt;
    const bool autoReplace = m_parts.settings.autoReplace();
    m_tasks.start([this, pair, mode, autoReplace](std::stop_token stop) {
        return run(pair, mode, autoReplace, std::move(stop));
    });
}

QCoro::Task<void> AppModel::run(LanguagePair pair, TranslateOutputMode mode, bool autoReplace,
                                std::stop_token stop)
{
    std::exception_ptr failure;
    try {
        const TranslateSelectionResult result =
            co_await m_parts.selection.translateSelection(pair, mode, autoReplace, stop);
        if (stop.stop_requested()) {
            co_return;
        }
        if (result.showWindow) {
            m_parts.windows.presentTranslationResult(result.original, result.translated,
                                                     result.diagnostics);
        }
        setStatus(result.replaced ? LOCALIZATION_KEY("Done · %@")
                                  : LOCALIZATION_KEY("Translated · %@"),
                  pair);
        m_isBusy = false;
        Q_EMIT translationDelivered(result.diagnostics);
    } catch (...) {
        failure = std::current_exception();
    }
    // Only the end of the program asks for a stop, and then there is nobody left to tell.
    if (failure && !stop.stop_requested()) {
        co_await deliverFailure(failure);
    }
}

QCoro::Task<void> AppModel::deliverFailure(std::exception_ptr error)
{
    const QPointer model(this);
    refreshAccessibilityState();
    m_lastError = describe(error);
    setStatus(LOCALIZATION_KEY("Error"));
    m_parts.alerts.activateApplication();
    co_await presentFailure(error);
    if (model) {
        m_isBusy = false;
    }
}

QCoro::Task<void> AppModel::presentFailure(std::exception_ptr error)
{
    const QPointer model(this);
    Alert alert{localizedText(QStringLiteral("Translation failed")), describe(error), {}};
    if (!isAccessibilityDenied(error)) {
        alert.buttons = {localizedText(QStringLiteral("OK"))};
        co_await m_parts.alerts.present(alert);
        co_return;
    }
    alert.buttons = {localizedText(QStringLiteral("Request Permission…")),
                     localizedText(QStringLiteral("Relaunch Zelvane Desk")),
                     localizedText(QStringLiteral("Cancel"))};
    const int pressed = co_await m_parts.alerts.present(alert);
    if (!model) {
        co_return;
    }
    if (pressed == 0) {
        m_parts.permission.requestPrompt();
    } else if (pressed == 1) {
        m_parts.permission.relaunch();
    }
}

} // namespace zelvane
