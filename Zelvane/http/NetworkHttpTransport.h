#pragma once

#include "foundation/Clock.h"
#include "foundation/Completion.h"
#include "http/HttpTransport.h"

#include <QHash>
#include <QObject>
#include <QThread>

#include <memory>

namespace zelvane {

class NetworkThread;

/// Carries exchanges over the network, HTTP/1.1 with kept connections.
///
/// Everything that can take time (name lookup, the choice of a proxy, TLS, unpacking) happens on a
/// thread of its own, which starts with the first exchange.
///
/// HTTPS is verified against the system's certificates, always. Plain HTTP goes to loopback
/// addresses only, and those never through a proxy. A redirection is followed only within its
/// origin and only if it keeps the request as it is; any other one is the answer, so that a key
/// never reaches another host. No cookies, no cache. A request is repeated only if a kept
/// connection turns out dead before anything of the answer has come.
///
/// Used on the thread that made it. A stop must be asked for on that thread.
class NetworkHttpTransport final : public HttpTransport
{
public:
    /// The longest whole exchange, however lively.
    static constexpr std::chrono::minutes totalLimit{10};

    /// How long an unused connection is kept. A later request opens a new one: after the machine
    /// has slept, or a router has forgotten the connection, nothing would answer on the old one.
    static constexpr std::chrono::seconds keptFor{60};

    /// `clock` measures the time limits and must outlive this object.
    explicit NetworkHttpTransport(Clock& clock);
    /// Ends the exchanges that still run with `CancellationError`.
    ~NetworkHttpTransport() override;

    [[nodiscard]] QCoro::Task<HttpResponse> send(HttpRequest request,
                                                 std::stop_token stop) override;

private:
    struct Call
    {
        Completion<HttpResponse> outcome;
        QString host;
        std::chrono::milliseconds timeout{};
        std::unique_ptr<Timer> silence;
    };

    void startThread();
    void startOnNetwork(quint64 id, const HttpRequest& request);
    void abortOnNetwork(quint64 id);
    void dropOldConnections();
    void limitSilence(Call& call);
    [[nodiscard]] std::shared_ptr<Call> callOf(quint64 id) const { return m_calls.value(id); }

    Clock& m_clock;
    QHash<quint64, std::shared_ptr<Call>> m_calls;
    quint64 m_nextId = 1;
    /// By the calendar, which goes on while the machine sleeps.
    QDateTime m_lastUse;
    /// Receives, on this object's thread, what the network thread reports.
    QObject m_mailbox;
    QThread m_thread;
    NetworkThread* m_network = nullptr; ///< lives on m_thread and goes with it
};

} // namespace zelvane
