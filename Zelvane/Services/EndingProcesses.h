#pragma once

#include "Services/ChildProcess.h"

#include <memory>
#include <unordered_map>

namespace zelvane {

/// Children that are on their way out: asked to end, and killed if they take too long. Those that
/// are still there when this object goes are killed at once. Main thread.
class EndingProcesses
{
public:
    /// `clock` must outlive this object.
    explicit EndingProcesses(Clock& clock);

    /// Asks `process` to end and gives it `terminationGrace`.
    void end(std::unique_ptr<ChildProcess> process);
    /// Whether one of them is still there.
    [[nodiscard]] bool areRunning() const;

private:
    struct Ending
    {
        std::unique_ptr<ChildProcess> process;
        std::unique_ptr<Timer> lastResort;
    };

    Clock& m_clock;
    quint64 m_lastId = 0;
    std::unordered_map<quint64, Ending> m_endings;
};

} // namespace zelvane
