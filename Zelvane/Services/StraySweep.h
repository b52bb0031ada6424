#pragma once

#include "Services/ProcessTable.h"
#include "foundation/Clock.h"
#include "foundation/TaskScope.h"

#include <QList>
#include <QString>

#include <optional>

namespace zelvane {

/// The processes of `listing` whose command line mentions `executablePath`: the identifiers of
/// those that may be ended. `listing` that isn't UTF-8 has none.
[[nodiscard]] QList<qint32> strayServers(const QByteArray& listing, const QString& executablePath,
                                         std::optional<qint32> exemptPid);

/// Ends servers that an earlier run of the program left: nobody else remembers them, and each fills
/// gigabytes of memory. Main thread.
class StraySweep
{
public:
    /// Both must outlive this object and its sweeps.
    StraySweep(ProcessTable& processes, Clock& clock);

    /// Asks the servers that were started from `executablePath` to end, all but `exemptPid`, and
    /// kills those that are still there after two seconds; the sweep doesn't wait for that. Throws
    /// `CancellationError` only.
    [[nodiscard]] QCoro::Task<void> sweepStrayServers(QString executablePath,
                                                      std::optional<qint32> exemptPid,
                                                      std::stop_token stop);

private:
    void end(qint32 pid);
    [[nodiscard]] QCoro::Task<void> killLater(qint32 pid, std::stop_token stop);

    ProcessTable& m_processes;
    Clock& m_clock;
    TaskScope m_lastResorts;
};

} // namespace zelvane
