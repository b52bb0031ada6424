#include "http/NetworkHttpTransport.h"

#include "http/NetworkExchange.h"
#include "http/NetworkFailure.h"
#include "pipeline/Loopback.h"

#include <QNetworkAccessManager>
#include <QNetworkProxyFactory>
#include <QScopeGuard>

#include <algorithm>

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

} // namespace

/// The network's side: owns Qt's network access and the exchanges on it.
class NetworkThread final : public QObject
{
public:
    void start(quint64 id, const HttpRequest& request, NetworkExchange::Listener listener)
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
        m_exchanges.insert(id, new NetworkExchange(*m_manager, request, std::move(listener)));
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
{
}

NetworkHttpTransport::~NetworkHttpTransport()
{
    for (const auto calls = m_calls; const auto& call : calls) {
        call->outcome.fail(CancellationError());
    }
    m_thread.quit();
    m_thread.wait();
}

QCoro::Task<HttpResponse> NetworkHttpTransport::send(HttpRequest request, std::stop_token stop)
{
    if (stop.stop_requested()) {
        throw CancellationError();
    }
    check(request);
    const quint64 id = m_nextId++;
    const auto call = std::make_shared<Call>();
    call->host = request.url.host();
    call->timeout = request.timeout;
    m_calls.insert(id, call);
    const auto forget = qScopeGuard([this, id] {
        m_calls.remove(id);
        m_lastUse = m_clock.now();
        abortOnNetwork(id);
    });
    dropOldConnections();
    startOnNetwork(id, request);
    limitSilence(*call);
    const auto total = m_clock.callLater(totalLimit, [outcome = call->outcome, host = call->host] {
        outcome.fail(transportError(NetworkFailure::tooLong, host));
    });
    const std::stop_callback onStop(
        stop, [outcome = call->outcome] { outcome.fail(CancellationError()); });
    co_return co_await call->outcome.result();
}

void NetworkHttpTransport::startThread()
{
    m_network = new NetworkThread;
    m_network->moveToThread(&m_thread);
    QObject::connect(&m_thread, &QThread::finished, m_network, &QObject::deleteLater);
    m_thread.setObjectName(QStringLiteral("http"));
    m_thread.start();
}

void NetworkHttpTransport::startOnNetwork(quint64 id, const HttpRequest& request)
{
    if (m_network == nullptr) {
        startThread();
    }
    // Runs a report on this object's thread, unless the call has ended meanwhile.
    const auto report = [this, id](auto effect) {
        QMetaObject::invokeMethod(
            &m_mailbox,
            [this, id, effect = std::move(effect)] {
                if (const auto call = callOf(id)) {
                    effect(*call);
                }
            },
            Qt::QueuedConnection);
    };
    NetworkExchange::Listener listener{
        .heard = [this, report] { report([this](Call& call) { limitSilence(call); }); },
        .succeeded =
            [report](HttpResponse response) {
                report([response](Call& call) { call.outcome.succeed(response); });
            },
        .failed =
            [report](NetworkFailure failure) {
                report([failure](Call& call) {
                    call.outcome.fail(transportError(failure, call.host));
                });
            },
    };
    QMetaObject::invokeMethod(
        m_network,
        [network = m_network, id, request, listener] { network->start(id, request, listener); },
        Qt::QueuedConnection);
}

void NetworkHttpTransport::abortOnNetwork(quint64 id)
{
    QMetaObject::invokeMethod(
        m_network, [network = m_network, id] { network->abort(id); }, Qt::QueuedConnection);
}

void NetworkHttpTransport::dropOldConnections()
{
    const qint64 unused = m_lastUse.secsTo(m_clock.now());
    const bool isOld = unused < 0 || unused >= keptFor.count();
    if (m_network != nullptr && isOld) {
        QMetaObject::invokeMethod(
            m_network, [network = m_network] { network->dropConnections(); }, Qt::QueuedConnection);
    }
}

void NetworkHttpTransport::limitSilence(Call& call)
{
    call.silence = m_clock.callLater(call.timeout, [outcome = call.outcome, host = call.host] {
        outcome.fail(transportError(NetworkFailure::silence, host));
    });
}

} // namespace zelvane
