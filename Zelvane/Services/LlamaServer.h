#pragma once

#include "Services/ChildProcess.h"
#include "Services/CompletionSource.h"
#include "Services/EndingProcesses.h"
#include "Services/ServerLog.h"
#include "Services/StraySweep.h"
#include "foundation/SharedRun.h"
#include "http/HttpTransport.h"

#include <QJsonObject>

#include <functional>
#include <memory>
#include <optional>

namespace zelvane {

/// What a server is reached by and lets in.
struct ServerAccess
{
    quint16 port = 0;
    QString key;

    friend bool operator==(const ServerAccess&, const ServerAccess&) = default;
};

/// A port from 49152 to 60000 and a key of 32 hexadecimal characters, both new.
[[nodiscard]] ServerAccess randomServerAccess();

/// Where the parts of an engine lie.
struct LlamaServerFiles
{
    QString program;
    /// Of the program and its libraries.
    QString folder;
    QString model;
};

/// The life of the server of one model: started when it is needed, left alone while it is used, and
/// stopped when it hasn't been for a while.
///
/// A start belongs to the server, not to who waits for it: it goes on when they leave, and all who
/// want the server meanwhile wait for the same one. Main thread.
class LlamaServer
{
public:
    /// All must outlive this object.
    struct Parts
    {
        ChildProcessLauncher& launcher;
        HttpTransport& transport;
        Clock& clock;
        StraySweep& sweep;
        std::function<ServerAccess()> newAccess = randomServerAccess;
    };

    /// Time without use after which the server is stopped, for the memory's sake.
    static constexpr std::chrono::seconds idleUnload{600};

    LlamaServer(LlamaServerFiles files, Parts parts);
    ~LlamaServer();
    Q_DISABLE_COPY_MOVE(LlamaServer)

    /// When it ends, the server answers. One that can't load on the graphics card is tried once
    /// more on the processor alone. Throws `ChildLaunchError`, `EngineError`,
    /// `TranslationError::offlineEngineBusy` if the server is stopped meanwhile, or
    /// `CancellationError` once `stop` is asked for.
    [[nodiscard]] QCoro::Task<void> ensure(GpuLayers layers, std::stop_token stop);

    /// Ends the server, a start that is under way, and the exchanges, which fail with
    /// `offlineEngineBusy`.
    void stop();

    /// Ends servers that an earlier run of the program left. Throws `CancellationError` only.
    [[nodiscard]] QCoro::Task<void> sweepStrays(std::stop_token stop);

    /// The body of the server's answer to one request for a completion; it proves the server to be
    /// in use. Throws `offlineEngineBusy` if there is no server, or none any more;
    /// `TranslationError::http`, `TransportError` or `CancellationError`.
    [[nodiscard]] QCoro::Task<QByteArray> completion(QJsonObject request, std::stop_token stop);

    /// Puts the stop for lack of use off.
    void touchIdleTimer();

    [[nodiscard]] bool isRunning() const { return m_process != nullptr && m_process->isRunning(); }
    /// Whether a server that was stopped is still there.
    [[nodiscard]] bool isEnding() const { return m_endings.areRunning(); }
    [[nodiscard]] std::optional<qint32> pid() const;
    /// From shortly before the launch until the stop, also after a crash.
    [[nodiscard]] const std::optional<ServerAccess>& access() const { return m_access; }
    [[nodiscard]] QString log() const { return m_log.text(); }

private:
    enum class Readiness { ready, ended, tooSlow };

    [[nodiscard]] QCoro::Task<bool> start(GpuLayers layers, std::stop_token life);
    [[nodiscard]] QCoro::Task<bool> sweepOnce(std::stop_token stop);
    [[nodiscard]] QCoro::Task<void> launch(GpuLayers layers, std::stop_token life);
    [[nodiscard]] QCoro::Task<Readiness> awaitReadiness(std::stop_token life);
    [[nodiscard]] QCoro::Task<bool> checkHealth(std::stop_token life);
    [[nodiscard]] ChildProcessCommand command(GpuLayers layers) const;
    [[nodiscard]] ChildProcess::Listener listener();
    [[nodiscard]] HttpRequest requestFor(const QString& path) const;
    void endProcess();

    const LlamaServerFiles m_files;
    Parts m_parts;
    std::unique_ptr<ChildProcess> m_process;
    /// True while the process that it was made for is the present one.
    std::shared_ptr<bool> m_isCurrent = std::make_shared<bool>(false);
    std::optional<ServerAccess> m_access;
    ServerLog m_log;
    std::unique_ptr<Timer> m_idleTimer;
    std::stop_source m_exchanges;
    EndingProcesses m_endings;
    SharedRun<bool> m_sweepRun;
    std::unique_ptr<SharedRun<bool>> m_startRun = std::make_unique<SharedRun<bool>>();
};

} // namespace zelvane
