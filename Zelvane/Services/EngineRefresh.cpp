#include "Services/EngineRefresh.h"

namespace zelvane {

void refreshStatus(EngineState& state, const EngineFiles& files)
{
    const bool isInstalling = state.is<engine_status::Installing>();
    state.diskUsageBytes = folderSize(files.folder());
    if (files.isComplete()) {
        if (!isInstalling) {
            state.status = engine_status::Ready{};
        }
    } else if (!isInstalling && !state.is<engine_status::Failed>()) {
        state.status = engine_status::NotInstalled{};
    }
}

} // namespace zelvane
