#include "main/MachineEngines.h"

#include "main/Platform.h"

namespace zelvane {

MachineEngines::MachineEngines(const FileSystemLocations& locations, HttpTransport& transport,
                               Clock& clock, OfflineEngines::AtCreation atCreation)
    : m_launcher(openChildProcesses())
    , m_processes(openProcessTable(*m_launcher, clock))
    , m_sweep(*m_processes, clock)
    , m_engines(engineRootDirectory(locations), {*m_launcher, transport, clock, m_sweep},
                atCreation)
{
}

TranslationDispatch::Engines MachineEngines::among(TranslationDispatch::Engines engines)
{
    for (const SmartOfflineVariant variant : smartOfflineVariants()) {
        engines.own.insert(factsOf(variant).provider, &m_engines);
    }
    return engines;
}

} // namespace zelvane
