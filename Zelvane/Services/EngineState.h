#pragma once

#include "Services/EngineStatus.h"

#include <QProperty>

#include <optional>

namespace zelvane {

/// What is known of an engine on this machine, for those who show it. A value that is set is told
/// only if it differs. Main thread.
struct EngineState
{
    QProperty<EngineStatus> status;
    QProperty<qint64> diskUsageBytes; ///< of the engine's folder
    QProperty<std::optional<EngineDownloadProgress>> downloadProgress;
    QProperty<QString> installLog;

    template <typename Status>
    [[nodiscard]] bool is() const
    {
        return std::holds_alternative<Status>(status.value());
    }

    /// Appends a line to the log: `text`, trimmed, unless nothing is left of it.
    void appendInstallLog(const QString& text);
};

} // namespace zelvane
