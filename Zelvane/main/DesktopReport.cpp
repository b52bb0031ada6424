#include "main/DesktopReport.h"

#include "main/UserStore.h"

#include <cstdio>

namespace zelvane {

void reportOn(AppModel& model)
{
    const auto print = [](const QString& text) {
        std::fputs((text.toUtf8() + '\n').constData(), stdout);
        std::fflush(stdout);
    };
    QObject::connect(
        &model, &AppModel::hotKeysReloaded, &model, [print] { print(QStringLiteral("ready")); },
        Qt::SingleShotConnection);
    QObject::connect(&model, &AppModel::translationDelivered, &model, print);
}

ShortcomingNotice::ShortcomingNotice(const Desktop& desktop, Clock& clock)
    : m_desktop(desktop)
    , m_timer(clock.callEvery(std::chrono::seconds(1), {}, [this] { look(); }))
{
}

void ShortcomingNotice::look()
{
    constexpr int mostLooks = 10;
    const auto shortcoming = m_desktop.shortcoming();
    if (shortcoming) {
        complain(*shortcoming);
    }
    if (shortcoming || ++m_looks == mostLooks) {
        m_timer.reset();
    }
}

} // namespace zelvane
