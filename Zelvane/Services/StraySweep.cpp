#include "Services/StraySweep.h"

#include "foundation/Text.h"

#include <QCoreApplication>
#include <QStringDecoder>

#include <algorithm>

namespace zelvane {

namespace {

constexpr std::chrono::milliseconds grace{2000};

/// The identifier of the process that a line tells of, if its command mentions `executablePath`.
std::optional<qint32> matchingPid(const QString& line, const QString& executablePath)
{
    const QString entry = text::trimmedWithinLine(line);
    const auto isBlank = [](QChar c) { return c == u' ' || c == u'\t'; };
    const qsizetype at = std::ranges::find_if(entry, isBlank) - entry.begin();
    if (at == entry.size() || !entry.sliced(at + 1).contains(executablePath)) {
        return std::nullopt;
    }
    bool isNumber = false;
    const qint32 pid = entry.first(at).toInt(&isNumber);
    return isNumber ? std::optional(pid) : std::nullopt;
}

} // namespace

QList<qint32> strayServers(const QByteArray& listing, const QString& executablePath,
                           std::optional<qint32> exemptPid)
{
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString table = decoder.decode(listing);
    if (decoder.hasError()) {
        return {};
    }
    constexpr qint32 firstOrdinaryPid = 2; // 1 is the system's own, 0 and less mean whole groups
    QList<qint32> found;
    for (const QString& line : table.split(u'\n', Qt::SkipEmptyParts)) {
        const std::optional<qint32> pid = matchingPid(line, executablePath);
        if (pid && *pid >= firstOrdinaryPid && pid != exemptPid) {
            found += *pid;
        }
    }
    return found;
}

StraySweep::StraySweep(ProcessTable& processes, Clock& clock)
    : m_processes(processes)
    , m_clock(clock)
{
}

QCoro::Task<void> StraySweep::sweepStrayServers(QString executablePath,
                                                std::optional<qint32> exemptPid,
                                                std::stop_token stop)
{
    const std::optional<QByteArray> listing = co_await m_processes.listing(stop);
    for (const qint32 pid :
         strayServers(listing.value_or(QByteArray()), executablePath, exemptPid)) {
        // The text to translate may stand in this program's own command line, and name the server.
        if (pid != QCoreApplication::applicationPid()) {
            end(pid);
        }
    }
}

void StraySweep::end(qint32 pid)
{
    m_processes.terminate(pid);
    m_lastResorts.start(
        [this, pid](std::stop_token stop) { return killLater(pid, std::move(stop)); });
}

QCoro::Task<void> StraySweep::killLater(qint32 pid, std::stop_token stop)
{
    co_await m_clock.sleep(grace, std::move(stop));
    if (m_processes.isRunning(pid)) {
        m_processes.kill(pid);
    }
}

} // namespace zelvane
