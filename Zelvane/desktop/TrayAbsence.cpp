#include "desktop/TrayAbsence.h"

#include "settings/Localization.h"

#include <utility>

namespace zelvane {

namespace {

const QString toldKey = QStringLiteral("zv.toldOfMissingTray");

} // namespace

TrayAbsence::TrayAbsence(QBindable<bool> available, UserDefaults& defaults, Clock& clock,
                         std::chrono::seconds limit, Ways ways)
    : m_available(available)
    , m_defaults(defaults)
    , m_ways(std::move(ways))
    , m_change(m_available.addNotifier([this] { watch(); }))
    , m_timer(clock.callLater(limit, [this] { judge(); }))
{
    watch();
}

void TrayAbsence::watch()
{
    m_wasSeen = m_wasSeen || m_available.value();
}

void TrayAbsence::judge()
{
    const bool told = m_defaults.boolean(toldKey).value_or(false);
    if (m_wasSeen) {
        if (told) {
            m_defaults.remove(toldKey);
        }
    } else if (!told) {
        m_defaults.setValue(toldKey, true);
        m_tasks.start([this](std::stop_token stop) { return tell(std::move(stop)); });
        m_ways.openSettings();
    }
}

QCoro::Task<void> TrayAbsence::tell(std::stop_token stop)
{
    const QString title = localizedText(QStringLiteral("No place for the tray icon"));
    const QString body = localizedText(
        QStringLiteral("This desktop has no system tray. Zelvane Desk runs all the same: use your "
                       "shortcuts, or start it again to open its panel."));
    const bool shown = co_await m_ways.notifications.post(title, body);
    if (!shown && !stop.stop_requested()) {
        m_ways.complain(title + QStringLiteral(": ") + body);
    }
}

} // namespace zelvane
