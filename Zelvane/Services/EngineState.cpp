#include "Services/EngineState.h"

#include "foundation/Text.h"

namespace zelvane {

void EngineState::appendInstallLog(const QString& text)
{
    const QString line = text::trimmed(text);
    if (!line.isEmpty()) {
        installLog = installLog.value() + line + u'\n';
    }
}

} // namespace zelvane
