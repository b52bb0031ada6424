#include "Services/EndingProcesses.h"

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

} // namespace zelvane
