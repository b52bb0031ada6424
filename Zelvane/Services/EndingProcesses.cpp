#include "Services/EndingProcesses.h"

#include <algorithm>

namespace zelvane {

EndingProcesses::EndingProcesses(Clock& clock)
    : m_clock(clock)
{
}

void EndingProcesses::end(std::unique_ptr<ChildProcess> process)
{
    process->terminate();
    const quint64 id = ++m_lastId;
    // A process that still runs is killed as its object goes.
    auto lastResort = m_clock.callLater(terminationGrace, [this, id] { m_endings.erase(id); });
    m_endings.emplace(id, Ending{std::move(process), std::move(lastResort)});
}

bool EndingProcesses::areRunning() const
{
    return std::ranges::any_of(m_endings,
                               [](const auto& entry) { return entry.second.process->isRunning(); });
}

} // namespace zelvane
