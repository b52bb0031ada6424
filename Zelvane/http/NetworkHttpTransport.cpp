#include "http/NetworkHttpTransport.h"

#include "http/NetworkExchange.h"
#include "http/NetworkFailure.h"
#include "pipeline/Loopback.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QNetworkAccessManager>
#include <QNetworkProxyFactory>
#include <QScopeGuard>

#include <algorithm>
#include <vector>

namespace zelvane {

namespace {

/// The proxies of the application, but none for this machine's own servers.
class Proxies final : public QNetworkProxyFactory
{
public:
    QList<QNetworkProxy> queryProxy(const QNetworkProxyQuery& query) override
    {
        if (isLoopback(query.url())) {
            return {QNetworkProxy(QNetworkProxy::NoProxy)};
        }
        return proxyForQuery(query);
    }
};

bool hasLineBreak(const QByteArray& text)
{
    return std::ranges::any_of(text, [](char c) { return c == '\r' || c == '\n' || c == '\0'; });
}

/// Refuses what must not leave this machine.
void check(const HttpRequest& request)
{
    const QUrl& url = request.url;
    const bool isHttps = url.scheme() == QStringLiteral("https");
    if (!url.isValid() || url.host().isEmpty() ||
        (!isHttps && url.scheme() != QStringLiteral("http"))) {
        throw transportError(NetworkFailure::notAnAddress, url.host());
    }
    if (!isHttps && !isLoopback(url)) {
        throw transportError(NetworkFailure::plainHttp, url.host());
    }
    for (const auto& [name, value] : request.headers) {
        if (hasLineBreak(name) || hasLineBreak(value)) {
            throw transportError(NetworkFailure::unsendableHeader, url.host());
        }
    }
}

/// Reports a download's progress from time to time.
class ProgressReport
{
public:
    ProgressReport(std::shared_ptr<const DownloadState> state, DownloadListener listener)
        : m_state(std::move(state))
        , m_listener(std::move(listener))
    {
    }

    /// Whether the server has been heard of, or need not be, since the last call.
    [[nodiscard]] bool isAlive()
    {
        const quint32 signs = m_state->signsOfLife;
        return std::exchange(m_signs, signs) != signs || m_state->isComplete;
    }

    void tell()
    {
        const qint64 written = m_state->writtenBytes;
        if (!m_listener || std::exchange(m_told, written) == written) {
            return;
        }
        const qint64 expected = m_state->expectedBytes;
        m_listener({written, expected < 0 ? std::nullopt : std::optional(expected)});
    }

private:
    std::shared_ptr<const DownloadState> m_state;
    DownloadListener m_listener;
    quint32 m_signs = 0;
    qint64 m_told = 0;
};

} // namespace

/// The network's side: owns Qt's network access and the exchanges on it.
class NetworkThread final : public QObject
{
public:
    void start(quint64 id, const HttpRequest& request, const std::optional<DownloadTarget>& target,
               NetworkExchange::Listener listener)
    {
        if (!m_manager) {
            m_manager = std::make_unique<QNetworkAccessManager>();
            m_manager->setProxyFactory(new Proxies); // taken over by the manager
        }
        auto end = [this, id] {
            if (QObject* exchange = m_exchanges.take(id)) {
                exchange->deleteLater();
            }
        };
        listener.succeeded = [end, next = listener.succeeded](HttpResponse response) {
            end();
            next(std::move(response));
        };
        listener.failed = [end, next = listener.failed](NetworkFailure failure) {
            end();
            next(failure);
        };
        m_exchanges.insert(id,
                           new NetworkExchange(*m_manager, request, target, std::move(listener)));
    }

    void dropConnections()
    {
        if (m_manager && m_exchanges.isEmpty()) {
            m_manager->clearConnectionCache();
        }
    }

    void abort(quint64 id) { delete m_exchanges.take(id); }

    ~NetworkThread() override { qDeleteAll(m_exchanges); }

private:
    std::unique_ptr<QNetworkAccessManager> m_manager;
    QHash<quint64, NetworkExchange*> m_exchanges;
};

NetworkHttpTransport::NetworkHttpTransport(Clock& clock)
    : m_clock(clock)
    , m_mailbox(std::make_shared<Mailbox>())
    , m_exchanges(std::make_unique<Lane>())
    , m_downloads(std::make_unique<Lane>())
{
    m_mailbox->owner = this;
}

NetworkHttpTransport::~NetworkHttpTransport()
{
    const auto calls = m_calls;
    for (const auto& call : calls) {
        call->outcome.fail(CancellationError());
    }
    const bool ended = endThreads();
    for (const auto& call : calls) {
        call->ended.succeed();
    }
    m_mailbox->owner = nullptr;
    QCoreApplication::removePostedEvents(&m_mailbox->receiver);
    if (!ended) {
        // Destroying a thread that runs would end the process on the spot.
        struct Abandoned
        {
            std::shared_ptr<Mailbox> mailbox;
            std::unique_ptr<Lane> exchanges;
            std::unique_ptr<Lane> downloads;
        };
        static auto* const abandoned = new std::vector<Abandoned>;
        abandoned->push_back({m_mailbox, std::move(m_exchanges), std::move(m_downloads)});
    }
}

bool NetworkHttpTransport::endThreads()
{
    m_exchanges->thread.quit();
    m_downloads->thread.quit();
    const QDeadlineTimer deadline(longestGoodbye);
    const bool exchangesEnded = m_exchanges->thread.wait(deadline);
    return m_downloads->thread.wait(deadline) && exchangesEnded;
}

QCoro::Task<HttpResponse> NetworkHttpTransport::send(HttpRequest request, std::stop_token stop)
{
    if (stop.stop_requested()) {
        throw CancellationError();
    }
    check(request);
    const quint64 id = m_nextId++;
    const auto call = makeCall(id, request);
    const auto forget = qScopeGuard([this, id] {
        m_calls.remove(id);
        m_exchanges->lastUse = m_clock.now();
        abortOnNetwork(*m_exchanges, id);
    });
    startOnNetwork(*m_exchanges, id, request, std::nullopt, listenerOf(id));
    limitSilence(*call);
    const auto total = limitWhole(request, *call);
    const std::stop_callback onStop(
        stop, [outcome = call->outcome] { outcome.fail(CancellationError()); });
    co_return co_await call->outcome.result();
}

QCoro::Task<HttpResponse> NetworkHttpTransport::download(HttpRequest request, QString destination,
                                                         DownloadListener progress,
                                                         std::stop_token stop)
{
    if (stop.stop_requested()) {
        throw CancellationError();
    }
    check(request);
    const quint64 id = m_nextId++;
    const auto call = makeCall(id, request);
    const auto forget = qScopeGuard([this, id] {
        m_calls.remove(id);
        m_downloads->lastUse = m_clock.now();
    });
    const auto state = std::make_shared<DownloadState>();
    NetworkExchange::Listener listener = listenerOf(id);
    listener.heard = [state] { ++state->signsOfLife; };
    startOnNetwork(*m_downloads, id, request, DownloadTarget{destination, state}, listener);
    limitSilence(*call);
    const auto total = limitWhole(request, *call);
    ProgressReport report(state, std::move(progress));
    const auto tick = m_clock.callEvery(progressInterval, progressInterval / 4, [&] {
        if (report.isAlive()) {
            limitSilence(*call);
        }
        if (!call->outcome.isDecided()) {
            report.tell();
        }
    });
    const std::stop_callback onStop(
        stop, [outcome = call->outcome] { outcome.fail(CancellationError()); });

    std::exception_ptr failure;
    HttpResponse response;
    try {
        response = co_await call->outcome.result();
    } catch (...) {
        failure = std::current_exception();
    }
    abortOnNetwork(*m_downloads, id);
    co_await call->ended.result();
    if (failure) {
        std::rethrow_exception(failure);
    }
    report.tell();
    co_return response;
}

std::shared_ptr<NetworkHttpTransport::Call>
NetworkHttpTransport::makeCall(quint64 id, const HttpRequest& request)
{
    const auto call = std::make_shared<Call>();
    call->host = request.url.host();
    call->timeout = request.timeout;
    m_calls.insert(id, call);
    return call;
}

std::unique_ptr<Timer> NetworkHttpTransport::limitWhole(const HttpRequest& request,
                                                        const Call& call)
{
    return m_clock.callLater(request.totalTimeout, [outcome = call.outcome, host = call.host] {
        outcome.fail(transportError(NetworkFailure::tooLong, host));
    });
}

void NetworkHttpTransport::limitSilence(Call& call)
{
    call.silence = m_clock.callLater(call.timeout, [outcome = call.outcome, host = call.host] {
        outcome.fail(transportError(NetworkFailure::silence, host));
    });
}

NetworkExchange::Listener NetworkHttpTransport::listenerOf(quint64 id)
{
    return {
        .heard = [this, mailbox = m_mailbox,
                  id] { report(mailbox, id, [this](Call& call) { limitSilence(call); }); },
        .succeeded =
            [mailbox = m_mailbox, id](HttpResponse response) {
                report(mailbox, id, [response](Call& call) { call.outcome.succeed(response); });
            },
        .failed =
            [mailbox = m_mailbox, id](NetworkFailure failure) {
                report(mailbox, id, [failure](Call& call) {
                    call.outcome.fail(transportError(failure, call.host));
                });
            },
    };
}

void NetworkHttpTransport::report(const std::shared_ptr<Mailbox>& mailbox, quint64 id,
                                  std::function<void(Call&)> effect)
{
    QMetaObject::invokeMethod(
        &mailbox->receiver,
        [mailbox, id, effect = std::move(effect)] {
            if (!mailbox->owner) {
                return;
            }
            if (const auto call = mailbox->owner->m_calls.value(id)) {
                effect(*call);
            }
        },
        Qt::QueuedConnection);
}

void NetworkHttpTransport::startThread(Lane& lane)
{
    lane.network = new NetworkThread;
    lane.network->moveToThread(&lane.thread);
    QObject::connect(&lane.thread, &QThread::finished, lane.network, &QObject::deleteLater);
    lane.thread.setObjectName(&lane == m_downloads.get() ? QStringLiteral("downloads")
                                                         : QStringLiteral("http"));
    lane.thread.start();
}

void NetworkHttpTransport::startOnNetwork(Lane& lane, quint64 id, const HttpRequest& request,
                                          const std::optional<DownloadTarget>& target,
                                          const NetworkExchange::Listener& listener)
{
    if (lane.network == nullptr) {
        startThread(lane);
    } else {
        dropOldConnections(lane);
    }
    QMetaObject::invokeMethod(
        lane.network,
        [network = lane.network, id, request, target, listener] {
            network->start(id, request, target, listener);
        },
        Qt::QueuedConnection);
}

void NetworkHttpTransport::abortOnNetwork(Lane& lane, quint64 id)
{
    QMetaObject::invokeMethod(
        lane.network,
        [mailbox = m_mailbox, network = lane.network, id] {
            network->abort(id);
            report(mailbox, id, [](Call& call) { call.ended.succeed(); });
        },
        Qt::QueuedConnection);
}

void NetworkHttpTransport::dropOldConnections(Lane& lane)
{
    const qint64 unused = lane.lastUse.secsTo(m_clock.now());
    const bool isOld = unused < 0 || unused >= keptFor.count();
    if (isOld) {
        QMetaObject::invokeMethod(
            lane.network, [network = lane.network] { network->dropConnections(); },
            Qt::QueuedConnection);
    }
}

} // namespace zelvane
