#include "Services/LlamaServer.h"

#include "Services/EngineError.h"
#include "foundation/Text.h"
#include "http/ApiExchange.h"
#include "pipeline/TranslationError.h"
#include "settings/Localization.h"

#include <QRandomGenerator>
#include <QUuid>

namespace zelvane {

namespace {

using namespace std::chrono_literals;

constexpr int readinessAttempts = 480;
constexpr auto readinessInterval = 250ms;
constexpr auto healthTimeout = 1s;
constexpr auto completionTimeout = 180s;

/// The variable that names folders of libraries to the system's loader.
constexpr auto libraryVariable =
#ifdef Q_OS_MACOS
    "DYLD_LIBRARY_PATH";
#else
    "LD_LIBRARY_PATH";
#endif

TranslationError stopped()
{
    return TranslationError(TranslationError::Code::offlineEngineBusy);
}

/// Is asked to stop as soon as either of two is.
class EitherStop
{
public:
    EitherStop(const std::stop_token& one, const std::stop_token& other)
        : m_one(one, [this] { m_source.request_stop(); })
        , m_other(other, [this] { m_source.request_stop(); })
    {
    }

    [[nodiscard]] std::stop_token token() const { return m_source.get_token(); }

private:
    std::stop_source m_source;
    std::stop_callback<std::function<void()>> m_one;
    std::stop_callback<std::function<void()>> m_other;
};

/// Waits for a start that nobody else may be waiting for any more.
QCoro::Task<void> hold(QCoro::Task<bool> start)
{
    try {
        co_await start;
    } catch (const std::exception&) {
        // Whoever wanted the server has been told.
    }
}

} // namespace

ServerAccess randomServerAccess()
{
    constexpr int firstPort = 49152;
    constexpr int lastPort = 60000;
    const int port = QRandomGenerator::system()->bounded(firstPort, lastPort + 1);
    return {static_cast<quint16>(port), QUuid::createUuid().toString(QUuid::Id128)};
}

LlamaServer::LlamaServer(LlamaServerFiles files, Parts parts)
    : m_files(std::move(files))
    , m_parts(std::move(parts))
    , m_endings(m_parts.clock)
{
}

LlamaServer::~LlamaServer()
{
    stop();
}

std::optional<qint32> LlamaServer::pid() const
{
    return isRunning() ? std::optional(m_process->pid()) : std::nullopt;
}

QCoro::Task<void> LlamaServer::ensure(GpuLayers layers, std::stop_token stop)
{
    SharedRun<bool>& run = *m_startRun;
    const auto begin = [this, layers](std::stop_token life) {
        return start(layers, std::move(life));
    };
    QCoro::Task<bool> result = run.join(begin, stop);
    if (run.isRunning()) {
        hold(run.join(begin, {}));
    }
    try {
        co_await result;
    } catch (const CancellationError&) {
        if (stop.stop_requested()) {
            throw;
        }
        throw stopped();
    }
}

void LlamaServer::stop()
{
    // Going, a run stops, and what it has started is left to the lines below.
    m_startRun = std::make_unique<SharedRun<bool>>();
    endProcess();
}

QCoro::Task<bool> LlamaServer::start(GpuLayers layers, std::stop_token life)
{
    if (isRunning() && m_access && co_await checkHealth(life)) {
        touchIdleTimer();
        co_return true;
    }
    endProcess();
    co_await sweepStrays(life);
    co_await launch(layers, life);
    const Readiness readiness = co_await awaitReadiness(life);
    if (readiness == Readiness::ready) {
        touchIdleTimer();
        co_return true;
    }
    const QString lastWords = text::trimmed(m_log.text());
    if (readiness == Readiness::tooSlow || layers == GpuLayers::all) {
        endProcess();
    }
    if (layers == GpuLayers::all) {
        co_return co_await start(GpuLayers::none, life);
    }
    if (readiness == Readiness::tooSlow) {
        throw EngineError(EngineError::serverTooSlow,
                          LOCALIZATION_KEY("Smart Offline engine took too long to load."));
    }
    throw EngineError(EngineError::serverEnded,
                      lastWords.isEmpty() ? LOCALIZATION_KEY("Smart Offline engine stopped.")
                                          : lastWords);
}

QCoro::Task<void> LlamaServer::sweepStrays(std::stop_token stop)
{
    // One at a time: a sweep that began before a launch would not know the new server as ours.
    const auto begin = [this](std::stop_token run) { return sweepOnce(std::move(run)); };
    co_await m_sweepRun.join(begin, std::move(stop));
}

QCoro::Task<bool> LlamaServer::sweepOnce(std::stop_token stop)
{
    co_await m_parts.sweep.sweepStrayServers(m_files.program, pid(), std::move(stop));
    co_return true;
}

QCoro::Task<void> LlamaServer::launch(GpuLayers layers, std::stop_token life)
{
    m_access = m_parts.newAccess();
    m_log.begin(m_access->key);
    std::unique_ptr<ChildProcess> process =
        co_await m_parts.launcher.launch(command(layers), listener());
    if (life.stop_requested()) {
        throw CancellationError(); // this object may have gone; the process goes with its own
    }
    m_process = std::move(process);
}

ChildProcessCommand LlamaServer::command(GpuLayers layers) const
{
    ChildProcessCommand command;
    command.executable = m_files.program;
    command.arguments = {
        QStringLiteral("-m"),
        m_files.model,
        QStringLiteral("--host"),
        QStringLiteral("127.0.0.1"),
        QStringLiteral("--port"),
        QString::number(m_access->port),
        QStringLiteral("-ngl"),
        layers == GpuLayers::all ? QStringLiteral("99") : QStringLiteral("0"),
        QStringLiteral("-c"),
        QStringLiteral("12288"),
        QStringLiteral("-np"),
        QStringLiteral("4"),
        QStringLiteral("--jinja"),
        QStringLiteral("--api-key"),
        m_access->key,
    };
    command.workingDirectory = m_files.folder;
    command.environment.insert(QLatin1String(libraryVariable), m_files.folder);
    return command;
}

ChildProcess::Listener LlamaServer::listener()
{
    const auto isCurrent = std::make_shared<bool>(true);
    m_isCurrent = isCurrent;
    return {
        .output =
            [this, isCurrent](const QByteArray& bytes) {
                if (*isCurrent) {
                    m_log.append(bytes);
                }
            },
        .ended =
            [this, isCurrent](ChildProcessEnd) {
                // The way in stays set: what asks there fails, and the next job starts anew.
                if (*isCurrent) {
                    m_process.reset();
                }
            },
    };
}

QCoro::Task<LlamaServer::Readiness> LlamaServer::awaitReadiness(std::stop_token life)
{
    for (int attempt = 0; attempt < readinessAttempts; ++attempt) {
        if (!isRunning()) {
            co_return Readiness::ended;
        }
        // Anyone may answer on the port. A server that can't have it because of that ends before
        // long, and ours has loaded nothing yet when it is asked for the first time.
        if (co_await checkHealth(life) && isRunning() && attempt > 0) {
            co_return Readiness::ready;
        }
        co_await m_parts.clock.sleep(readinessInterval, life);
    }
    co_return Readiness::tooSlow;
}

HttpRequest LlamaServer::requestFor(const QString& path) const
{
    HttpRequest request;
    request.url = QUrl(QStringLiteral("http://127.0.0.1:%1%2").arg(m_access->port).arg(path));
    request.headers = {{"Authorization", "Bearer " + m_access->key.toUtf8()}};
    return request;
}

QCoro::Task<bool> LlamaServer::checkHealth(std::stop_token life)
{
    constexpr qint64 maximalAnswer = qint64(64) * 1024;
    HttpRequest health = requestFor(QStringLiteral("/health"));
    health.timeout = healthTimeout;
    health.totalTimeout = healthTimeout;
    health.maximalBodySize = maximalAnswer;
    try {
        const HttpResponse response = co_await m_parts.transport.send(health, life);
        co_return response.status >= 200 && response.status <= 299;
    } catch (const TransportError&) {
        co_return false;
    }
}

QCoro::Task<QByteArray> LlamaServer::completion(QJsonObject request, std::stop_token stop)
{
    if (!m_access) {
        throw stopped();
    }
    const HttpRequest bare = requestFor(QStringLiteral("/v1/chat/completions"));
    HttpRequest post = jsonPost(bare.url, bare.headers, request);
    post.timeout = completionTimeout;
    const EitherStop either(stop, m_exchanges.get_token());
    QByteArray answer;
    try {
        answer = co_await answerBody(m_parts.transport, post, m_access->key, either.token());
    } catch (const CancellationError&) {
        if (stop.stop_requested()) {
            throw;
        }
        throw stopped();
    }
    touchIdleTimer();
    co_return answer;
}

void LlamaServer::touchIdleTimer()
{
    m_idleTimer = m_parts.clock.callLater(idleUnload, [this] { stop(); });
}

void LlamaServer::endProcess()
{
    m_idleTimer.reset();
    *m_isCurrent = false;
    // Cleared first: who was in an exchange goes on at once when that is cut.
    std::unique_ptr<ChildProcess> process = std::move(m_process);
    m_access.reset();
    // A server that is asked to end while a client waits for its answer waits for that client.
    std::exchange(m_exchanges, std::stop_source()).request_stop();
    if (process && process->isRunning()) {
        m_endings.end(std::move(process));
    }
}

} // namespace zelvane
