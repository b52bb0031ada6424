#pragma once

#include "Services/OfflineEngines.h"
#include "Services/StraySweep.h"
#include "pipeline/TranslationDispatch.h"
#include "settings/AppSettings.h"
#include "settings/FileSystemLocations.h"

#include <memory>

namespace zelvane {

/// The engines that run on this machine, on this platform's processes.
class MachineEngines
{
public:
    /// All must outlive this object.
    struct Parts
    {
        const FileSystemLocations& locations;
        HttpTransport& transport;
        Clock& clock;
        const UserDefaults& defaults;
        const AppSettings& settings;
        OfflineEngines::AtCreation atCreation;
    };

    explicit MachineEngines(const Parts& parts);

    /// Puts the engines, which stay owned by this object, among those of a dispatch.
    [[nodiscard]] TranslationDispatch::Engines among(TranslationDispatch::Engines engines);
    [[nodiscard]] OfflineEngines& engines() { return m_engines; }

private:
    std::unique_ptr<ChildProcessLauncher> m_launcher;
    std::unique_ptr<ProcessTable> m_processes;
    StraySweep m_sweep;
    OfflineEngines m_engines;
};

} // namespace zelvane
