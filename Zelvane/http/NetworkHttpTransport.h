#pragma once

#include "foundation/Clock.h"
#include "foundation/Completion.h"
#include "http/HttpTransport.h"
#include "http/NetworkExchange.h"

#include <QHash>
#include <QObject>
#include <QThread>

#include <memory>
#include <optional>

namespace zelvane {

class NetworkThread;

/// Carries exchanges over the network, HTTP/1.1 with kept connections.
///
/// Everything that can take time (name lookup, the choice of a proxy, TLS, unpacking) happens on a
/// thread of its own, which starts with the first exchange. Downloads have another one, so that a
/// busy disk holds up no translation.
///
/// HTTPS is verified against the system's certificates, always. Plain HTTP goes to loopback
/// addresses only, and those never through a proxy. A redirection is followed only within its
/// origin (but for downloads) and only if it keeps the request as it is; any other one is the
/// answer, so that a key never reaches another host. No cookies, no cache. A request is repeated
/// only if a kept connection turns out dead before anything of the answer has come.
///
/// Used on the thread that made it. A stop must be asked for on that thread.
class NetworkHttpTransport final : public HttpTransport
{
public:
    /// How long an unused connection is kept. A later request opens a new one: after the machine
    /// has slept, or a router has forgotten the connection, nothing would answer on the old one.
    static constexpr std::chrono::seconds keptFor{60};

    /// The time between two reports of a download's progress.
    static constexpr std::chrono::milliseconds progressInterval{200};

    /// `clock` measures the time limits and must outlive this object.
    explicit NetworkHttpTransport(Clock& clock);
    /// Ends the exchanges that still run with `CancellationError`. Waits for its threads, but no
    /// longer than `longestGoodbye` together: one that hangs in the system's name lookup or in the
    /// choice of a proxy is left to the end of the process.
    ~NetworkHttpTransport() override;
    static constexpr std::chrono::milliseconds longestGoodbye{500};

    [[nodiscard]] QCoro::Task<HttpResponse> send(HttpRequest request,
                                                 std::stop_token stop) override;
    [[nodiscard]] QCoro::Task<HttpResponse> download(HttpRequest request, QString destination,
                                                     DownloadListener progress,
                                                     std::stop_token stop) override;

private:
    struct Call
    {
        Completion<HttpResponse> outcome;
        /// The network thread has let go of the exchange and of its file.
        Completion<void> ended;
        QString host;
        std::chrono::milliseconds timeout{};
        std::unique_ptr<Timer> silence;
    };

    /// Where exchanges run, beside this object's thread.
    struct Lane
    {
        QThread thread;
        NetworkThread* network = nullptr; ///< lives on the thread and goes with it
        QDateTime lastUse; ///< by the calendar, which goes on while the machine sleeps
    };

    [[nodiscard]] std::shared_ptr<Call> makeCall(quint64 id, const HttpRequest& request);
    [[nodiscard]] std::unique_ptr<Timer> limitWhole(const HttpRequest& request, const Call& call);
    [[nodiscard]] NetworkExchange::Listener listenerOf(quint64 id);

    /// Receives, on the thread of its owner, what the network threads report. Such a thread may
    /// outlive the owner, which is null then.
    struct Mailbox
    {
        QObject receiver;
        NetworkHttpTransport* owner = nullptr; ///< touched on its own thread alone
    };

    /// From any thread: has `effect` run on the owner's, unless the call has ended meanwhile.
    static void report(const std::shared_ptr<Mailbox>& mailbox, quint64 id,
                       std::function<void(Call&)> effect);
    /// False if a thread hangs.
    [[nodiscard]] bool endThreads();
    void startThread(Lane& lane);
    void startOnNetwork(Lane& lane, quint64 id, const HttpRequest& request,
                        const std::optional<DownloadTarget>& target,
                        const NetworkExchange::Listener& listener);
    /// The call's `ended` is decided once nothing of the exchange is left.
    void abortOnNetwork(Lane& lane, quint64 id);
    void dropOldConnections(Lane& lane);
    void limitSilence(Call& call);

    Clock& m_clock;
    QHash<quint64, std::shared_ptr<Call>> m_calls;
    quint64 m_nextId = 1;
    std::shared_ptr<Mailbox> m_mailbox;
    std::unique_ptr<Lane> m_exchanges;
    std::unique_ptr<Lane> m_downloads;
};

} // namespace zelvane
