#pragma once

#include "foundation/SharedRun.h"
#include "foundation/Worker.h"
#include "http/HttpTransport.h"
#include "online/CloudflareQuota.h"
#include "online/HostedAnswers.h"
#include "online/HostedConfigCache.h"
#include "online/HostedInstallStore.h"
#include "online/HostedRequests.h"
#include "pipeline/Engines.h"

#include <QObject>

#include <functional>
#include <optional>

namespace zelvane {

/// What the service's answer to a start has changed.
struct CloudflareSyncResult
{
    enum class Outcome {
        updated,
        unchanged,
    };

    Outcome outcome = Outcome::unchanged;
    CloudflareBootstrap bootstrap;
};

/// The client of the program's own translation service.
///
/// The installation registers itself before its first call, and proves itself with the token that
/// it is given. One that the service no longer accepts (401) is replaced by a new installation,
/// once for each call; a blocked one stays blocked. Nothing else is repeated, and nothing waits.
///
/// The calls throw `CloudflareKeyError`, `TransportError`, `JsonError` or `CancellationError`. In
/// each of them `workerUrl` is the user's setting, which may be empty.
///
/// Main thread. What may block, such as the secret store, runs on a thread of its own.
class HostedService final : public QObject, public HostedEngine
{
    Q_OBJECT

public:
    /// All must outlive this object and its calls. `defaults` and `secrets` are used from another
    /// thread too.
    HostedService(HttpTransport& transport, UserDefaults& defaults, SecretStore& secrets,
                  const MachineIdentity& machine, ProgramVersion program);
    /// Waits for what is being stored.
    ~HostedService() override;

    /// Callable from any thread.
    [[nodiscard]] ZelvaneClientConfig currentConfig() const override;

    /// The cached configuration. If there is none, asks for it; whatever prevents the answer, the
    /// service's own refusals apart, is `missingCachedConfig`.
    [[nodiscard]] QCoro::Task<ZelvaneClientConfig> loadConfig(QString workerUrl,
                                                              std::stop_token stop) override;

    /// The trimmed translation, never empty.
    [[nodiscard]] QCoro::Task<QString>
    translateHosted(TranslationRequest request, QString workerUrl, std::stop_token stop) override;

    /// Asks for the configuration and keeps it.
    [[nodiscard]] QCoro::Task<CloudflareSyncResult> syncConfig(QString workerUrl,
                                                               std::stop_token stop);

    /// Asks for the quota and keeps it; none if the answer has no valid one.
    [[nodiscard]] QCoro::Task<std::optional<CloudflareQuota>> refreshQuota(QString workerUrl,
                                                                           std::stop_token stop);

    /// The last quota that the service told.
    [[nodiscard]] std::optional<CloudflareQuota> cachedQuota() const;

    /// The name of this installation, made if there is none.
    [[nodiscard]] QCoro::Task<QString> installId(std::stop_token stop);

    /// Clears and moves what older versions stored.
    [[nodiscard]] QCoro::Task<void> clearRetired(std::stop_token stop);

Q_SIGNALS:
    /// A quota has been stored. Comes in a later turn of the event loop.
    void cloudflareQuotaDidChange();

private:
    using Call = std::function<HttpRequest(const HostedInstallation&)>;

    [[nodiscard]] QCoro::Task<ZelvaneClientConfig> fetchConfig(QString workerUrl,
                                                               std::stop_token stop);
    [[nodiscard]] QUrl operationUrl(const QString& workerUrl, const QString& path) const;
    /// The body of a successful answer.
    [[nodiscard]] QCoro::Task<QByteArray> authorisedExchange(Call call, QString workerUrl,
                                                             std::stop_token stop);
    [[nodiscard]] QCoro::Task<HostedInstallation> ensureInstallation(QString workerUrl,
                                                                     std::stop_token stop);
    /// An installation other than the refused one.
    [[nodiscard]] QCoro::Task<HostedInstallation>
    replaceInstallation(HostedInstallation refused, QString workerUrl, std::stop_token stop);
    [[nodiscard]] QCoro::Task<HostedInstallation> arrive(QString workerUrl, std::stop_token stop);
    [[nodiscard]] QCoro::Task<HostedInstallation> arriveAnew(QString workerUrl,
                                                             std::stop_token stop);
    [[nodiscard]] QCoro::Task<HostedInstallation> registerInstallation(QString workerUrl,
                                                                       std::stop_token stop);
    [[nodiscard]] QCoro::Task<HostedInstallation> registerOnce(QString workerUrl,
                                                               std::stop_token stop);
    void storeQuota(const CloudflareQuota& quota);

    HttpTransport& m_transport;
    UserDefaults& m_defaults;
    ProgramVersion m_program;
    HostedInstallStore m_store; ///< of the worker
    HostedConfigCache m_configs;
    /// Id and token as one, so that they stay together whatever other processes store meanwhile;
    /// and they serve on where the secret store takes no token.
    std::optional<HostedInstallation> m_installation;
    Worker m_worker;
    SharedRun<HostedInstallation> m_arrival;
    SharedRun<ZelvaneClientConfig> m_configLoad;
};

} // namespace zelvane
