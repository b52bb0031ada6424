#include "Services/linux/LinuxChildProcesses.h"

#include "foundation/Completion.h"

#include <QHash>
#include <QMutex>
#include <QPointer>
#include <QProcess>

#include <csignal>
#include <sys/prctl.h>
#include <unistd.h>

namespace zelvane {

namespace {

/// The output on its way from one thread to the other: a child that writes faster than it is read
/// must neither wait nor fill the memory.
class OutputBuffer
{
public:
    explicit OutputBuffer(qsizetype maximalUnread)
        : m_maximalUnread(maximalUnread)
    {
    }

    /// Whether nothing was on its way before, so that the other side has to be told.
    [[nodiscard]] bool append(const QByteArray& bytes)
    {
        const QMutexLocker lock(&m_lock);
        const bool wasEmpty = m_unread.isEmpty();
        m_unread += bytes;
        if (m_unread.size() > m_maximalUnread) {
            m_unread = m_unread.right(m_maximalUnread);
        }
        return wasEmpty && !bytes.isEmpty();
    }

    [[nodiscard]] QByteArray take()
    {
        const QMutexLocker lock(&m_lock);
        return std::exchange(m_unread, {});
    }

private:
    const qsizetype m_maximalUnread;
    QMutex m_lock;
    QByteArray m_unread;
};

/// What a child has to tell; called on the thread of the children.
struct Reports
{
    std::function<void(qint32)> started;
    std::function<void(QString)> failed;
    std::function<void(QByteArray)> output;
    std::function<void(ChildProcessEnd)> ended;
};

/// Runs in the child before its program does: only what is safe between fork and exec.
void prepareChild(pid_t parent)
{
    ::setpgid(0, 0);
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (::getppid() != parent) {
        ::_exit(127); // the parent went before the kernel was told what to do then
    }
    ::close_range(STDERR_FILENO + 1, ~0U, CLOSE_RANGE_CLOEXEC);
}

/// The system's reason without the name of the call that failed.
QString reasonOf(const QProcess& process)
{
    const QString text = process.errorString();
    const qsizetype callEnd = text.indexOf(QStringLiteral(": "));
    return callEnd < 0 ? text : text.sliced(callEnd + 2);
}

} // namespace

/// The children's side. All but the constructor is called on their thread.
class Nursery final : public QObject
{
public:
    void start(quint64 id, const ChildProcessCommand& command, const Reports& reports)
    {
        auto* process = new QProcess(this);
        m_children.insert(id, process);
        configure(*process, command);
        connect(process, &QProcess::started, process,
                [process, reports] { reports.started(static_cast<qint32>(process->processId())); });
        connect(process, &QProcess::readyRead, process,
                [process, reports] { reports.output(process->readAll()); });
        connect(process, &QProcess::errorOccurred, process,
                [this, id, process, reports](QProcess::ProcessError error) {
                    if (error == QProcess::FailedToStart) {
                        reports.failed(reasonOf(*process));
                        forget(id);
                    }
                });
        connect(process, &QProcess::finished, process,
                [this, id, process, reports](int code, QProcess::ExitStatus status) {
                    reports.output(process->readAll());
                    reports.ended({status == QProcess::NormalExit
                                       ? ChildProcessEnd::Kind::exited
                                       : ChildProcessEnd::Kind::signalled,
                                   code});
                    forget(id);
                });
        process->start(command.executable, command.arguments, QIODevice::ReadOnly);
    }

    void signal(quint64 id, int number)
    {
        // The process identifier stays the child's own until QProcess has taken note of its end.
        if (const QProcess* process = m_children.value(id)) {
            if (process->processId() > 0) {
                ::kill(static_cast<pid_t>(process->processId()), number);
            }
        }
    }

    ~Nursery() override
    {
        constexpr int longestGoingMs = 1000;
        for (QProcess* process : std::as_const(m_children)) {
            process->disconnect();
            process->kill();
            process->waitForFinished(longestGoingMs);
        }
    }

private:
    static void configure(QProcess& process, const ChildProcessCommand& command)
    {
        if (command.standardError == ChildProcessCommand::StandardError::withOutput) {
            process.setProcessChannelMode(QProcess::MergedChannels);
        } else {
            process.setStandardErrorFile(QProcess::nullDevice());
        }
        process.setStandardInputFile(QProcess::nullDevice());
        process.setWorkingDirectory(command.workingDirectory);
        process.setProcessEnvironment(command.environment);
        process.setChildProcessModifier([parent = ::getpid()] { prepareChild(parent); });
    }

    void forget(quint64 id)
    {
        if (QProcess* process = m_children.take(id)) {
            process->deleteLater();
        }
    }

    QHash<quint64, QProcess*> m_children; ///< owned as children of this object
};

namespace {

/// What is known of a child on this side, shared by its object and the reports on their way.
struct Child
{
    Child(quint64 ownId, Nursery* ownNursery, ChildProcess::Listener ownListener,
          qsizetype maximalUnread)
        : id(ownId)
        , nursery(ownNursery)
        , listener(std::move(ownListener))
        , output(maximalUnread)
    {
    }

    const quint64 id;
    QPointer<Nursery> nursery; ///< of another thread: only to be told to
    ChildProcess::Listener listener;
    OutputBuffer output;
    bool isRunning = true;
};

void signalChild(const Child& child, int number)
{
    if (child.nursery && child.isRunning) {
        QMetaObject::invokeMethod(
            child.nursery,
            [nursery = child.nursery.data(), id = child.id, number] {
                nursery->signal(id, number);
            },
            Qt::QueuedConnection);
    }
}

/// The listeners are copied: each may destroy the process object, and itself with it.
void reportOutput(Child& child)
{
    const auto listener = child.listener.output;
    const QByteArray bytes = child.output.take();
    if (listener && !bytes.isEmpty()) {
        listener(bytes);
    }
}

void reportEnd(Child& child, ChildProcessEnd end)
{
    child.isRunning = false;
    if (const auto listener = child.listener.ended) {
        listener(end);
    }
}

class LinuxChildProcess final : public ChildProcess
{
public:
    LinuxChildProcess(std::shared_ptr<Child> child, qint32 pid)
        : m_child(std::move(child))
        , m_pid(pid)
    {
    }
    ~LinuxChildProcess() override
    {
        m_child->listener = {};
        signalChild(*m_child, SIGKILL);
    }

    [[nodiscard]] bool isRunning() const override { return m_child->isRunning; }
    [[nodiscard]] qint32 pid() const override { return m_pid; }
    void terminate() override { signalChild(*m_child, SIGTERM); }
    void kill() override { signalChild(*m_child, SIGKILL); }

private:
    std::shared_ptr<Child> m_child;
    qint32 m_pid;
};

} // namespace

LinuxChildProcesses::~LinuxChildProcesses()
{
    m_end.request_stop();
    m_thread.quit();
    m_thread.wait();
}

void LinuxChildProcesses::startThread()
{
    if (m_nursery != nullptr) {
        return;
    }
    m_nursery = new Nursery;
    m_nursery->moveToThread(&m_thread);
    QObject::connect(&m_thread, &QThread::finished, m_nursery, &QObject::deleteLater);
    m_thread.setObjectName(QStringLiteral("children"));
    m_thread.start();
}

QCoro::Task<std::unique_ptr<ChildProcess>>
LinuxChildProcesses::launch(ChildProcessCommand command, ChildProcess::Listener listener)
{
    startThread();
    const auto child =
        std::make_shared<Child>(++m_lastId, m_nursery, std::move(listener), command.maximalUnread);
    const Completion<qint32> outcome;

    const auto report = [this](auto effect) {
        QMetaObject::invokeMethod(&m_mailbox, std::move(effect), Qt::QueuedConnection);
    };
    const Reports reports{
        .started = [report,
                    outcome](qint32 pid) { report([outcome, pid] { outcome.succeed(pid); }); },
        .failed =
            [report, outcome, executable = command.executable](const QString& reason) {
                report([outcome, error = ChildLaunchError(executable, reason)] {
                    outcome.fail(error);
                });
            },
        .output =
            [report, child](const QByteArray& bytes) {
                if (child->output.append(bytes)) {
                    report([child] { reportOutput(*child); });
                }
            },
        .ended = [report,
                  child](ChildProcessEnd end) { report([child, end] { reportEnd(*child, end); }); },
    };
    QMetaObject::invokeMethod(
        m_nursery,
        [nursery = m_nursery, id = child->id, command, reports] {
            nursery->start(id, command, reports);
        },
        Qt::QueuedConnection);
    const std::stop_callback onEnd(m_end.get_token(),
                                   [outcome] { outcome.fail(CancellationError()); });
    const qint32 pid = co_await outcome.result();
    co_return std::make_unique<LinuxChildProcess>(child, pid);
}

} // namespace zelvane
