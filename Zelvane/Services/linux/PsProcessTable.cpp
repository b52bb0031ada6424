#include "Services/linux/PsProcessTable.h"

#include <csignal>

namespace zelvane {

namespace {

constexpr qsizetype maximalListing = qsizetype(16) * 1024 * 1024;

ChildProcessCommand listAll()
{
    ChildProcessCommand command;
    command.executable = QStringLiteral("/bin/ps");
    command.arguments = {QStringLiteral("-axo"), QStringLiteral("pid=,command=")};
    command.standardError = ChildProcessCommand::StandardError::discarded;
    // Otherwise it cuts its lines, or writes question marks for letters outside ASCII.
    command.environment.remove(QStringLiteral("COLUMNS"));
    command.environment.insert(QStringLiteral("LC_ALL"), QStringLiteral("C.UTF-8"));
    return command;
}

} // namespace

PsProcessTable::PsProcessTable(ChildProcessLauncher& launcher, Clock& clock)
    : m_launcher(launcher)
    , m_clock(clock)
{
}

QCoro::Task<std::optional<QByteArray>> PsProcessTable::listing(std::stop_token stop)
{
    try {
        const ChildProcessOutcome outcome =
            co_await runChildProcess(m_launcher, m_clock, listAll(), maximalListing, stop);
        // The first line of a listing that was cut would name a wrong process.
        if (!outcome.isCut) {
            co_return outcome.output;
        }
    } catch (const ChildLaunchError&) {
        // Without the tool there is no table.
    }
    co_return std::nullopt;
}

bool PsProcessTable::isRunning(qint32 pid) const
{
    return ::kill(pid, 0) == 0;
}

void PsProcessTable::terminate(qint32 pid)
{
    ::kill(pid, SIGTERM);
}

void PsProcessTable::kill(qint32 pid)
{
    ::kill(pid, SIGKILL);
}

} // namespace zelvane
