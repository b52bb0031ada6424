#include "foundation/StopSequence.h"

#include <utility>

namespace zelvane {

StopSequence::StopSequence(Clock& clock, std::function<void()> end)
    : m_clock(clock)
    , m_end(std::move(end))
{
}

void StopSequence::aboutToStop(Step step)
{
    m_steps.push_back(std::move(step));
}

void StopSequence::begin()
{
    if (std::exchange(m_hasBegun, true)) {
        return;
    }
    m_timeOut = m_clock.callLater(limit, [this] { finish(); });
    m_running = m_steps.size() + 1; // one for this call, so that no step is the last too early
    for (const Step& step : m_steps) {
        m_tasks.start([this, step](std::stop_token stop) { return run(step, std::move(stop)); });
    }
    noteEndOfStep();
}

QCoro::Task<void> StopSequence::run(Step step, std::stop_token stop)
{
    try {
        co_await step();
    } catch (...) {
        // The program ends all the same.
    }
    if (!stop.stop_requested()) {
        noteEndOfStep();
    }
}

void StopSequence::noteEndOfStep()
{
    if (--m_running == 0) {
        finish();
    }
}

void StopSequence::finish()
{
    m_timeOut.reset();
    if (const auto end = std::exchange(m_end, nullptr)) {
        end();
    }
}

} // namespace zelvane
