#pragma once

#include "Services/EngineFiles.h"
#include "Services/EngineState.h"

namespace zelvane {

/// Brings the size and the status of an engine up to what the disk tells. An installation under way
/// stays what it is, and a failed one too unless all is there. Looks at a handful of files.
void refreshStatus(EngineState& state, const EngineFiles& files);

} // namespace zelvane
