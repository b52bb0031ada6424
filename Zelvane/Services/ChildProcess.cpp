#include "Services/ChildProcess.h"

#include "foundation/Completion.h"
#include "settings/Localization.h"

#include <QFileInfo>

namespace zelvane {

ChildLaunchError::ChildLaunchError(QString executable, QString reason)
    : m_executable(std::move(executable))
    , m_reason(std::move(reason))
{
}

QString ChildLaunchError::description() const
{
    return localizedFormat(QStringLiteral("%@ could not be started: %@"),
                           {QFileInfo(m_executable).fileName(), m_reason});
}

QCoro::Task<ChildProcessOutcome> runChildProcess(ChildProcessLauncher& launcher, Clock& clock,
                                                 ChildProcessCommand command,
                                                 qsizetype maximalOutput, std::stop_token stop)
{
    if (stop.stop_requested()) {
        throw CancellationError();
    }
    // One byte more tells whether anything was lost.
    const qsizetype kept = maximalOutput + 1;
    command.maximalUnread = kept;
    const auto output = std::make_shared<QByteArray>();
    const Completion<ChildProcessEnd> ended;
    ChildProcess::Listener listener{
        .output =
            [output, kept](const QByteArray& bytes) {
                *output += bytes;
                if (output->size() > kept) {
                    *output = output->right(kept);
                }
            },
        .ended = [ended](ChildProcessEnd end) { ended.succeed(end); },
    };
    const std::unique_ptr<ChildProcess> process =
        co_await launcher.launch(std::move(command), std::move(listener));

    std::unique_ptr<Timer> lastResort;
    const std::stop_callback onStop(stop, [&clock, &lastResort, child = process.get()] {
        child->terminate();
        lastResort = clock.callLater(terminationGrace, [child] { child->kill(); });
    });
    const ChildProcessEnd end = co_await ended.result();
    if (stop.stop_requested()) {
        throw CancellationError();
    }
    co_return ChildProcessOutcome{end, output->right(maximalOutput),
                                  output->size() > maximalOutput};
}

} // namespace zelvane
