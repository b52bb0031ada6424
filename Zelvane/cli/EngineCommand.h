#pragma once

#include "Services/ChildProcess.h"
#include "Services/ProcessTable.h"
#include "Services/SmartOfflineVariant.h"
#include "cli/CommandLine.h"
#include "cli/CommandStreams.h"
#include "cli/EngineOptions.h"
#include "cli/EngineProgress.h"
#include "foundation/Clock.h"
#include "http/HttpTransport.h"
#include "settings/UserDefaults.h"

#include <QStringList>

namespace zelvane {

/// What the command works with. All must outlive it.
struct EngineCommandParts
{
    QString root; ///< see `engineRootDirectory`
    HttpTransport& transport;
    ChildProcessLauncher& launcher;
    ProcessTable& processes;
    Clock& clock;
    const UserDefaults& defaults;
    QStringList archiveFolders; ///< see `runtimeArchiveFolders`
    std::function<SmartOfflineVariantFacts(SmartOfflineVariant)> facts = factsOf;
};

/// How long another process may take to cancel its installation.
inline constexpr std::chrono::seconds cancelPatience{15};

/// Runs `zelvane-desk engine`. A stop cancels an installation and leaves nothing of it. Never
/// throws.
[[nodiscard]] QCoro::Task<ExitStatus>
runEngineCommand(EngineOptions options, EngineCommandParts parts, CommandStreams streams,
                 EngineProgress::Style style, std::stop_token stop);

} // namespace zelvane
