#pragma once

#include "foundation/Clock.h"
#include "foundation/TaskScope.h"

#include <chrono>
#include <functional>
#include <memory>
#include <vector>

namespace zelvane {

/// What is to be done in order before the program ends: servers are told to stop, and so on.
///
/// Main thread only.
class StopSequence
{
public:
    /// How long all steps together may take. The end doesn't wait for one that takes longer.
    static constexpr std::chrono::milliseconds limit{1500};

    using Step = std::function<QCoro::Task<void>()>;

    /// `end` ends the event loop. `clock` must outlive this object.
    StopSequence(Clock& clock, std::function<void()> end);
    Q_DISABLE_COPY_MOVE(StopSequence)

    /// Has `step` run when the program is about to stop. All steps start at once, in the order in
    /// which they were added; nobody hears of a failure. What a step uses must live as long as the
    /// event loop runs.
    void aboutToStop(Step step);

    /// Runs the steps, then the end; both once, however often this is called.
    void begin();
    [[nodiscard]] bool hasBegun() const { return m_hasBegun; }

private:
    [[nodiscard]] QCoro::Task<void> run(Step step, std::stop_token stop);
    void noteEndOfStep();
    void finish();

    Clock& m_clock;
    std::function<void()> m_end;
    std::vector<Step> m_steps;
    bool m_hasBegun = false;
    size_t m_running = 0;
    std::unique_ptr<Timer> m_timeOut;
    TaskScope m_tasks;
};

} // namespace zelvane
