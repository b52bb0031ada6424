#pragma once

#include "foundation/Clock.h"
#include "foundation/DescribedError.h"

#include <QByteArray>
#include <QCoroTask>
#include <QProcessEnvironment>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <stop_token>

namespace zelvane {

/// A program to run, and what it sees of this one. It gets no input.
struct ChildProcessCommand
{
    enum class StandardError {
        withOutput, ///< in one pipe with the standard output
        discarded,
    };

    QString executable; ///< a path, or a name that is looked up in PATH
    QStringList arguments;
    QString workingDirectory; ///< this program's own if empty
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    StandardError standardError = StandardError::withOutput;
    /// How much of the output is kept for this program while it is busy with something else.
    qsizetype maximalUnread = qsizetype(256) * 1024;
};

/// How a process ended.
struct ChildProcessEnd
{
    enum class Kind { exited, signalled };

    Kind kind = Kind::exited;
    int code = 0; ///< the exit status, or the number of the signal

    [[nodiscard]] bool isSuccess() const { return kind == Kind::exited && code == 0; }

    friend bool operator==(const ChildProcessEnd&, const ChildProcessEnd&) = default;
};

/// A program that could not be started.
class ChildLaunchError final : public DescribedError
{
public:
    /// `reason` is the system's own text.
    ChildLaunchError(QString executable, QString reason);

    [[nodiscard]] QString description() const override;

private:
    QString m_executable;
    QString m_reason;
};

/// A program that was started. Destroying it kills the program if it still runs, and ends the
/// reports.
class ChildProcess
{
public:
    /// Called on the thread of the launcher, and never from within a call to this object.
    struct Listener
    {
        /// Bytes of the output, cut anywhere. Of what exceeds `maximalUnread` only the end is
        /// reported.
        std::function<void(const QByteArray&)> output;
        /// Once, after all output. May destroy the process object.
        std::function<void(ChildProcessEnd)> ended;
    };

    ChildProcess() = default;
    virtual ~ChildProcess() = default;
    Q_DISABLE_COPY_MOVE(ChildProcess)

    /// False from the moment at which the end is reported.
    [[nodiscard]] virtual bool isRunning() const = 0;
    [[nodiscard]] virtual qint32 pid() const = 0;
    /// Asks the program to end; it may take its time, or ignore it.
    virtual void terminate() = 0;
    /// Ends the program at once.
    virtual void kill() = 0;
};

/// Starts programs as children of this one.
///
/// A child leads a process group of its own, gets no descriptor but its standard ones, and goes
/// with this program whatever ends that. Its output is always read, whether or not anyone wants it:
/// a child whose pipe is full stands still.
class ChildProcessLauncher
{
public:
    ChildProcessLauncher() = default;
    virtual ~ChildProcessLauncher() = default;
    Q_DISABLE_COPY_MOVE(ChildProcessLauncher)

    /// The program, once it runs. Throws `ChildLaunchError`. Main thread, which is not held up.
    [[nodiscard]] virtual QCoro::Task<std::unique_ptr<ChildProcess>>
    launch(ChildProcessCommand command, ChildProcess::Listener listener) = 0;
};

/// What a program that has ended left.
struct ChildProcessOutcome
{
    ChildProcessEnd end;
    QByteArray output;
    bool isCut = false; ///< whether the beginning of the output is missing
};

/// How long a program that was asked to end may take before it is killed.
inline constexpr std::chrono::milliseconds terminationGrace{2000};

/// Runs a program to its end, keeping at most the last `maximalOutput` bytes of its output. Throws
/// `ChildLaunchError`. Once `stop` is asked for, asks the program to end, kills it after
/// `terminationGrace`, and throws `CancellationError` when it has gone: it changes no file after
/// that.
///
/// `launcher` and `clock` must outlive the call.
[[nodiscard]] QCoro::Task<ChildProcessOutcome>
runChildProcess(ChildProcessLauncher& launcher, Clock& clock, ChildProcessCommand command,
                qsizetype maximalOutput, std::stop_token stop);

} // namespace zelvane
