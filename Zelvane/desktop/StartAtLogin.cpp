#include "desktop/StartAtLogin.h"

namespace zelvane {

StartAtLogin::StartAtLogin(AppSettings& settings, LoginItem& item)
    : m_settings(settings)
    , m_item(item)
    , m_change(settings.bindableStartAtLogin().addNotifier([this] { noteChange(); }))
{
    m_tasks.start([this](std::stop_token stop) { return adopt(std::move(stop)); });
}

QCoro::Task<void> StartAtLogin::adopt(std::stop_token stop)
{
    const bool before = m_settings.startAtLogin();
    const LoginItem::State state = co_await m_item.look();
    if (stop.stop_requested()) {
        co_return;
    }
    m_recorded = state == LoginItem::State::on;
    // A change that the user made meanwhile is newer than the record.
    if (state != LoginItem::State::absent && m_settings.startAtLogin() == before) {
        m_settings.setStartAtLogin(m_recorded);
    }
    co_await store(stop);
}

QCoro::Task<void> StartAtLogin::store(std::stop_token stop)
{
    m_isBusy = true;
    while (m_settings.startAtLogin() != m_recorded) {
        const bool wanted = m_settings.startAtLogin();
        const bool stored = co_await m_item.set(wanted);
        if (stop.stop_requested()) {
            co_return;
        }
        if (!stored) {
            m_settings.setStartAtLogin(m_recorded); // what is so, not what was wished for
            break;
        }
        m_recorded = wanted;
    }
    m_isBusy = false;
}

void StartAtLogin::noteChange()
{
    if (!m_isBusy) {
        m_tasks.start([this](std::stop_token stop) { return store(std::move(stop)); });
    }
}

} // namespace zelvane
