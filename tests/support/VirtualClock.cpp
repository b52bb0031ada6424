#include "support/VirtualClock.h"

#include <QCoreApplication>

namespace zelvane::test {

using std::chrono::milliseconds;
using std::chrono::nanoseconds;

/// Finds its entry by id: a repeating timer moves along the map.
class VirtualClock::Registration final : public Timer
{
public:
    Registration(VirtualClock& clock, quint64 id)
        : m_clock(clock)
        , m_id(id)
    {
    }
    ~Registration() override
    {
        std::erase_if(m_clock.m_timers, [this](const auto& e) { return e.first.second == m_id; });
    }
    Q_DISABLE_COPY_MOVE(Registration)

private:
    VirtualClock& m_clock;
    quint64 m_id;
};

QDateTime VirtualClock::now() const
{
    const auto passed = std::chrono::duration_cast<milliseconds>(m_now - std::chrono::hours(1));
    return m_start.addMSecs(passed.count());
}

std::unique_ptr<Timer> VirtualClock::add(milliseconds delay, Entry entry)
{
    const quint64 id = m_nextId++;
    m_timers.emplace(Key{m_now + delay, id}, std::move(entry));
    return std::make_unique<Registration>(*this, id);
}

std::unique_ptr<Timer> VirtualClock::callLater(milliseconds delay, std::function<void()> callback)
{
    return add(delay, {std::move(callback), nanoseconds(0)});
}

std::unique_ptr<Timer> VirtualClock::callEvery(milliseconds interval, milliseconds /*tolerance*/,
                                               std::function<void()> callback)
{
    return add(interval, {std::move(callback), interval});
}

void VirtualClock::advance(milliseconds duration)
{
    const nanoseconds end = m_now + duration;
    QCoreApplication::sendPostedEvents();
    while (!m_timers.empty() && m_timers.begin()->first.first <= end) {
        auto node = m_timers.extract(m_timers.begin());
        m_now = node.key().first;
        const auto callback = node.mapped().callback;
        if (node.mapped().interval.count() > 0) {
            node.key().first += node.mapped().interval;
            m_timers.insert(std::move(node));
        }
        callback();
        QCoreApplication::sendPostedEvents();
    }
    m_now = end;
}

} // namespace zelvane::test
