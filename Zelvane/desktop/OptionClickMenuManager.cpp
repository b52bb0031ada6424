#include "desktop/OptionClickMenuManager.h"

#include "desktop/SelectionTranslation.h"
#include "settings/Localization.h"

#include <QPointer>

#include <algorithm>
#include <utility>

namespace zelvane {

namespace {

using std::chrono::milliseconds;

constexpr milliseconds pollInterval{1000};
/// The system announces a change of permissions before it takes effect.
constexpr milliseconds announcementDelay{800};

const QString automaticMode = QStringLiteral("auto");
const QString windowMode = QStringLiteral("window");

QList<OptionMenuContent::Item> itemsFor(const QList<LanguagePair>& pairs, const QString& format,
                                        const QString& mode)
{
    QList<OptionMenuContent::Item> items;
    for (const LanguagePair& pair : pairs) {
        const QString direction = pair.source + QStringLiteral(" → ") + pair.target;
        items += {localizedFormat(format, {direction}), {pair.id, mode}};
    }
    return items;
}

} // namespace

OptionClickMenuManager::OptionClickMenuManager(const Parts& parts)
    : m_parts(parts)
{
}

OptionClickMenuManager::~OptionClickMenuManager()
{
    m_parts.tap.remove();
}

void OptionClickMenuManager::setOnSelect(
    std::function<void(LanguagePair, TranslateOutputMode)> onSelect)
{
    m_onSelect = std::move(onSelect);
}

void OptionClickMenuManager::setOnActivated(std::function<void()> onActivated)
{
    m_onActivated = std::move(onActivated);
}

void OptionClickMenuManager::setWanted(bool wanted)
{
    m_wantEnabled = wanted;
    if (!wanted) {
        stopPolling();
        removeTap();
        return;
    }
    installTapAndPoll();
}

void OptionClickMenuManager::reconcile()
{
    if (!m_wantEnabled) {
        stopPolling();
        removeTap();
        return;
    }
    removeTap();
    installTapAndPoll();
}

void OptionClickMenuManager::accessibilityApiChanged()
{
    m_tasks.start(
        [this](std::stop_token stop) { return refreshAfterAnnouncement(std::move(stop)); });
}

QCoro::Task<void> OptionClickMenuManager::refreshAfterAnnouncement(std::stop_token stop)
{
    co_await m_parts.clock.sleep(announcementDelay, stop);
    refreshTap();
}

void OptionClickMenuManager::refreshTap()
{
    if (!m_wantEnabled) {
        stopPolling();
        removeTap();
        return;
    }
    if (!m_hasTap) {
        installTapAndPoll();
        return;
    }
    if (!m_parts.permission.isEffectivelyTrusted()) {
        removeTap();
        startPolling();
        return;
    }
    m_isListening = true;
    m_lastError.clear();
    stopPolling();
}

void OptionClickMenuManager::installTap()
{
    if (!m_hasTap) {
        if (!m_parts.permission.isEffectivelyTrusted()) {
            m_isListening = false;
            m_lastError = localizedText(LOCALIZATION_KEY("Accessibility required"));
            return;
        }
        if (!createTap()) {
            m_isListening = false;
            const QString refusal = m_parts.tap.refusal();
            m_lastError = refusal.isEmpty() ? QStringLiteral("Event tap failed (Input Monitoring?)")
                                            : refusal;
            return;
        }
        m_hasTap = true;
    }
    m_isListening = true;
    m_lastError.clear();
}

bool OptionClickMenuManager::createTap()
{
    const auto handler = [this](const TapEvent& event) { return handleTapEvent(event); };
    return m_parts.tap.create(MouseTap::Place::hardware, handler) ||
           m_parts.tap.create(MouseTap::Place::session, handler);
}

void OptionClickMenuManager::removeTap()
{
    if (std::exchange(m_hasTap, false)) {
        m_parts.tap.remove();
    }
    takeSuppressedUp();
    m_isListening = false;
    if (!m_wantEnabled) {
        m_lastError.clear();
    }
}

void OptionClickMenuManager::installTapAndPoll()
{
    installTap();
    if (m_isListening) {
        stopPolling();
    } else {
        startPolling();
    }
}

void OptionClickMenuManager::enableTap()
{
    // A tap that can't be switched on again is of no use; the retries make a new one.
    if (m_hasTap && !m_parts.tap.enable()) {
        QMetaObject::invokeMethod(this, &OptionClickMenuManager::reconcile, Qt::QueuedConnection);
    }
}

void OptionClickMenuManager::startPolling()
{
    if (!m_wantEnabled || m_isListening) {
        stopPolling();
        return;
    }
    if (!m_pollTimer) {
        m_pollTimer = m_parts.clock.callEvery(pollInterval, {}, [this] { pollTick(); });
    }
}

void OptionClickMenuManager::stopPolling()
{
    m_pollTimer.reset();
}

void OptionClickMenuManager::pollTick()
{
    if (!m_wantEnabled || m_isListening) {
        stopPolling();
        return;
    }
    installTap();
    if (!m_isListening) {
        return;
    }
    stopPolling();
    Q_EMIT optionClickMenuDidActivate();
    if (m_onActivated) {
        m_onActivated();
    }
}

TapVerdict OptionClickMenuManager::handleTapEvent(const TapEvent& event)
{
    switch (event.type) {
    case TapEvent::Type::disabledByTimeout:
    case TapEvent::Type::disabledByUserInput:
        enableTap();
        return TapVerdict::pass;
    case TapEvent::Type::rightMouseUp:
        return takeSuppressedUp() ? TapVerdict::swallow : TapVerdict::pass;
    case TapEvent::Type::rightMouseDown: {
        if ((event.flags & TapEvent::optionFlag) == 0) {
            return TapVerdict::pass;
        }
        suppressUp();
        const QPoint location = event.location;
        QMetaObject::invokeMethod(
            this, [this, location] { showMenu(location); }, Qt::QueuedConnection);
        return TapVerdict::swallow;
    }
    case TapEvent::Type::other:
        break;
    }
    return TapVerdict::pass;
}

void OptionClickMenuManager::suppressUp()
{
    const std::scoped_lock lock(m_lock);
    m_suppressingUp = true;
}

bool OptionClickMenuManager::takeSuppressedUp()
{
    const std::scoped_lock lock(m_lock);
    return std::exchange(m_suppressingUp, false);
}

void OptionClickMenuManager::showMenu(QPoint location)
{
    const QList<LanguagePair> pairs = m_parts.settings.enabledPairs();
    if (pairs.isEmpty()) {
        return;
    }
    const OptionMenuContent content{
        QStringLiteral("Zelvane Desk"),
        {itemsFor(pairs, LOCALIZATION_KEY("Translate %@"), automaticMode),
         itemsFor(pairs, LOCALIZATION_KEY("Translate %@ (window)"), windowMode)}};
    const QPointer owner(this);
    m_parts.presenter.popUp(content, location, [owner](const MenuChoice& choice) {
        // Later, from the event loop: the menu is still closing.
        if (owner) {
            QMetaObject::invokeMethod(
                owner.data(), [owner, choice] { owner->handleChoice(choice); },
                Qt::QueuedConnection);
        }
    });
}

void OptionClickMenuManager::handleChoice(const MenuChoice& choice)
{
    const QList<LanguagePair> pairs = m_parts.settings.pairs();
    const auto pair = std::ranges::find(pairs, choice.pairID, &LanguagePair::id);
    if (pair == pairs.end() || !pair->enabled) {
        return;
    }
    const auto mode = choice.modeRaw == windowMode ? TranslateOutputMode::windowOnly
                                                   : TranslateOutputMode::automatic;
    if (m_onSelect) {
        const auto onSelect = m_onSelect;
        onSelect(*pair, mode);
    }
}

} // namespace zelvane
