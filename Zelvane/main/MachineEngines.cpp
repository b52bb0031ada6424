#include "main/MachineEngines.h"

#include "Services/RuntimeArchive.h"
#include "main/Platform.h"

namespace zelvane {

MachineEngines::MachineEngines(const Parts& parts)
    : m_launcher(openChildProcesses())
    , m_processes(openProcessTable(*m_launcher, parts.clock))
    , m_sweep(*m_processes, parts.clock)
    , m_engines({.root = engineRootDirectory(parts.locations),
                 .server = {*m_launcher, parts.transport, parts.clock, m_sweep},
                 .defaults = parts.defaults,
                 .archiveFolders = runtimeArchiveFolders(),
                 .selectedProvider = [&settings = parts.settings] { return settings.provider(); },
                 .atCreation = parts.atCreation})
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
