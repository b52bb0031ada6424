#pragma once

#include "cli/CommandLine.h"
#include "cli/CommandStreams.h"
#include "settings/UserDefaults.h"

namespace zelvane {

/// Runs `zelvane-desk defaults` with the arguments behind that word. Changes are in `defaults` when
/// it returns; bringing them to the disk is the caller's part.
[[nodiscard]] ExitStatus runDefaultsCommand(const QStringList& arguments, UserDefaults& defaults,
                                            const CommandStreams& streams);

} // namespace zelvane
