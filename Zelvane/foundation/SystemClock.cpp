#include "foundation/SystemClock.h"

#include <QTimer>

namespace zelvane {

namespace {

using std::chrono::milliseconds;

class QtTimer final : public Timer
{
public:
    QtTimer(milliseconds interval, Qt::TimerType type, std::function<void()> callback)
    {
        m_timer.setTimerType(type);
        m_timer.setInterval(interval);
        // A copy runs: the callback may destroy this timer.
        QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [callback = std::move(callback)] {
            const auto copy = callback;
            copy();
        });
    }

    void start(bool singleShot)
    {
        m_timer.setSingleShot(singleShot);
        m_timer.start();
    }

private:
    QTimer m_timer;
};

} // namespace

std::chrono::nanoseconds SystemClock::monotonicNow() const
{
    return std::chrono::steady_clock::now().time_since_epoch();
}

QDateTime SystemClock::now() const
{
    return QDateTime::currentDateTimeUtc();
}

std::unique_ptr<Timer> SystemClock::callLater(milliseconds delay, std::function<void()> callback)
{
    // Coarse timers may be off by 5 %, which a wait of 180 ms between two programs would notice.
    auto timer = std::make_unique<QtTimer>(delay, Qt::PreciseTimer, std::move(callback));
    timer->start(true);
    return timer;
}

std::unique_ptr<Timer> SystemClock::callEvery(milliseconds interval, milliseconds tolerance,
                                              std::function<void()> callback)
{
    const auto type = tolerance.count() > 0 ? Qt::CoarseTimer : Qt::PreciseTimer;
    auto timer = std::make_unique<QtTimer>(interval, type, std::move(callback));
    timer->start(false);
    return timer;
}

} // namespace zelvane
