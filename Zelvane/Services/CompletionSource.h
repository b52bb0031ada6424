#pragma once

#include "Services/EngineStatus.h"
#include "Services/ModelJob.h"

#include <QCoroTask>

#include <optional>
#include <stop_token>

namespace zelvane {

/// Which layers of a model go to the graphics card.
enum class GpuLayers { all, none };

/// How a model is to answer: as it thinks best, or loosened by sampling after an answer that was no
/// use.
enum class Attempt { first, retry };

/// A local model that can be asked, as the translation of whole texts needs it. Main thread.
class CompletionSource
{
public:
    CompletionSource() = default;
    virtual ~CompletionSource() = default;
    Q_DISABLE_COPY_MOVE(CompletionSource)

    [[nodiscard]] virtual SmartOfflineVariant variant() const = 0;

    /// What was last known of the files; it may be stale.
    [[nodiscard]] virtual EngineStatus status() const = 0;

    /// The `engine_revision` of the record of a finished installation, read afresh from the disk.
    /// None without a valid record.
    [[nodiscard]] virtual QCoro::Task<std::optional<int>>
    recordedRevision(std::stop_token stop) = 0;

    /// When it ends, the server answers. Throws a `DescribedError`; `CancellationError` once `stop`
    /// is asked for.
    [[nodiscard]] virtual QCoro::Task<void> ensureServer(GpuLayers layers,
                                                         std::stop_token stop) = 0;

    /// One exchange with the server: the model's answer as it came, never blank. Up to four are
    /// under way at once. Throws a `DescribedError`; `CancellationError` once `stop` is asked for,
    /// which ends the exchange on the wire.
    [[nodiscard]] virtual QCoro::Task<QString> requestCompletion(ModelJob job, Attempt attempt,
                                                                 std::stop_token stop) = 0;
};

} // namespace zelvane
