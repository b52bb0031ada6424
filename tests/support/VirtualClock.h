#pragma once

#include "foundation/Clock.h"

#include <map>

namespace zelvane::test {

/// A clock that stands still until a test moves it. Main thread only, but for reading the time.
class VirtualClock final : public Clock
{
public:
    [[nodiscard]] std::chrono::nanoseconds monotonicNow() const override { return m_now; }
    [[nodiscard]] QDateTime now() const override;
    [[nodiscard]] std::unique_ptr<Timer> callLater(std::chrono::milliseconds delay,
                                                   std::function<void()> callback) override;
    [[nodiscard]] std::unique_ptr<Timer> callEvery(std::chrono::milliseconds interval,
                                                   std::chrono::milliseconds tolerance,
                                                   std::function<void()> callback) override;

    /// Moves the time on, stopping at each timer that falls due on the way, in their order; timers
    /// of the same moment run in the order in which they were made. Delivers posted events in
    /// between.
    void advance(std::chrono::milliseconds duration);

    /// The calendar time at the start of the test. UTC.
    void setStart(const QDateTime& start) { m_start = start; }

    /// The number of callbacks that wait for their moment.
    [[nodiscard]] qsizetype pendingTimers() const { return qsizetype(m_timers.size()); }

private:
    class Registration;
    struct Entry
    {
        std::function<void()> callback;
        std::chrono::nanoseconds interval{0};
    };
    using Key = std::pair<std::chrono::nanoseconds, quint64>;

    std::unique_ptr<Timer> add(std::chrono::milliseconds delay, Entry entry);

    std::chrono::nanoseconds m_now = std::chrono::hours(1);
    QDateTime m_start{QDate(2026, 1, 2), QTime(3, 4, 5), Qt::UTC};
    quint64 m_nextId = 1;
    std::map<Key, Entry> m_timers;
};

} // namespace zelvane::test
