#include "online/HostedService.h"

#include "online/CloudflareKeyError.h"
#include "pipeline/Endpoints.h"

#include <QJsonDocument>

#include <tuple>

namespace zelvane {

namespace {

using Code = CloudflareKeyError::Code;

const QString quotaKey = QStringLiteral("zv.cloudflare.quota.prod");

/// The service knows another installation by this id.
bool isIdTaken(const CloudflareKeyError& failure)
{
    return failure.code() == Code::http && failure.httpStatus() == 409;
}

} // namespace

HostedService::HostedService(HttpTransport& transport, UserDefaults& defaults, SecretStore& secrets,
                             const MachineIdentity& machine, ProgramVersion program)
    : m_transport(transport)
    , m_defaults(defaults)
    , m_program(std::move(program))
    , m_store(defaults, secrets, machine)
    , m_configs(defaults)
{
}

HostedService::~HostedService() = default;

ZelvaneClientConfig HostedService::currentConfig() const
{
    return m_configs.current();
}

QCoro::Task<ZelvaneClientConfig> HostedService::loadConfig(QString workerUrl, std::stop_token stop)
{
    if (const auto config = m_configs.known()) {
        co_return *config;
    }
    // None yet: the first start was without the network, or this is a command's first call.
    const auto ask = [this, workerUrl](std::stop_token token) {
        return fetchConfig(workerUrl, std::move(token));
    };
    co_return co_await m_configLoad.join(ask, stop);
}

QCoro::Task<ZelvaneClientConfig> HostedService::fetchConfig(QString workerUrl, std::stop_token stop)
{
    try {
        const CloudflareSyncResult result = co_await syncConfig(workerUrl, stop);
        co_return result.bootstrap.config;
    } catch (const CloudflareKeyError&) {
        throw;
    } catch (const CancellationError&) {
        throw;
    } catch (const DescribedError&) {
        throw CloudflareKeyError(Code::missingCachedConfig);
    }
}

QCoro::Task<QString> HostedService::translateHosted(TranslationRequest request, QString workerUrl,
                                                    std::stop_token stop)
{
    const QUrl url = operationUrl(workerUrl, QStringLiteral("/v1/translate"));
    const HostedText text{request.text, request.systemPrompt, request.model};
    const Call call = [url, text, program = m_program](const HostedInstallation& installation) {
        return translateRequest(url, program, installation, text);
    };
    const QByteArray answer = co_await authorisedExchange(call, workerUrl, stop);
    const QString translation = translationIn(answer);
    if (const auto quota = quotaIn(answer)) {
        storeQuota(*quota);
    }
    co_return translation;
}

QCoro::Task<CloudflareSyncResult> HostedService::syncConfig(QString workerUrl, std::stop_token stop)
{
    const QUrl url = operationUrl(workerUrl, QStringLiteral("/v1/bootstrap"));
    const Call call = [url, program = m_program](const HostedInstallation& installation) {
        return bootstrapRequest(url, program, installation);
    };
    const QByteArray answer = co_await authorisedExchange(call, workerUrl, stop);
    CloudflareSyncResult result;
    result.bootstrap = bootstrapIn(answer);
    if (m_configs.store(result.bootstrap.config)) {
        result.outcome = CloudflareSyncResult::Outcome::updated;
    }
    co_return result;
}

QCoro::Task<std::optional<CloudflareQuota>> HostedService::refreshQuota(QString workerUrl,
                                                                        std::stop_token stop)
{
    const QUrl url = operationUrl(workerUrl, QStringLiteral("/v1/quota"));
    const Call call = [url, program = m_program](const HostedInstallation& installation) {
        return quotaRequest(url, program, installation);
    };
    const QByteArray answer = co_await authorisedExchange(call, workerUrl, stop);
    const std::optional<CloudflareQuota> quota = quotaIn(answer);
    if (quota) {
        storeQuota(*quota);
    }
    co_return quota;
}

std::optional<CloudflareQuota> HostedService::cachedQuota() const
{
    const QByteArray json = m_defaults.data(quotaKey).value_or(QByteArray());
    return cloudflareQuotaFromJson(QJsonDocument::fromJson(json).object());
}

QCoro::Task<QString> HostedService::installId(std::stop_token stop)
{
    if (const auto installation = m_installation) {
        co_return installation->id;
    }
    co_return co_await m_worker.run([this] { return m_store.installId(); }, stop);
}

QCoro::Task<void> HostedService::clearRetired(std::stop_token stop)
{
    co_await m_worker.run([this] { m_store.clearRetired(); }, stop);
}

QUrl HostedService::operationUrl(const QString& workerUrl, const QString& path) const
{
    const QString address = hostedServiceUrl(workerUrl, path, m_defaults);
    if (address.isEmpty()) {
        throw CloudflareKeyError(Code::invalidURL);
    }
    return QUrl(address, QUrl::StrictMode);
}

QCoro::Task<QByteArray> HostedService::authorisedExchange(Call call, QString workerUrl,
                                                          std::stop_token stop)
{
    HostedInstallation installation = co_await ensureInstallation(workerUrl, stop);
    HttpResponse response = co_await m_transport.send(call(installation), stop);
    // A new installation would only evade a ban.
    if (response.status == 401 && !isInstallBan(response)) {
        installation = co_await replaceInstallation(installation, workerUrl, stop);
        response = co_await m_transport.send(call(installation), stop);
    }
    checkHostedResponse(response, installation.token);
    co_return response.body;
}

QCoro::Task<HostedInstallation> HostedService::ensureInstallation(QString workerUrl,
                                                                  std::stop_token stop)
{
    if (const auto installation = m_installation) {
        co_return *installation;
    }
    const auto start = [this, workerUrl](std::stop_token token) {
        return arrive(workerUrl, std::move(token));
    };
    co_return co_await m_arrival.join(start, stop);
}

QCoro::Task<HostedInstallation> HostedService::replaceInstallation(HostedInstallation refused,
                                                                   QString workerUrl,
                                                                   std::stop_token stop)
{
    if (const auto installation = m_installation; installation && *installation != refused) {
        co_return *installation; // another call has been refused before
    }
    m_installation.reset();
    const auto start = [this, workerUrl](std::stop_token token) {
        return arriveAnew(workerUrl, std::move(token));
    };
    co_return co_await m_arrival.join(start, stop);
}

QCoro::Task<HostedInstallation> HostedService::arrive(QString workerUrl, std::stop_token stop)
{
    const auto read = [this] {
        const QString token = m_store.token();
        return HostedInstallation{token.isEmpty() ? QString() : m_store.installId(), token};
    };
    const HostedInstallation stored = co_await m_worker.run(read, stop);
    if (stored.token.isEmpty()) {
        co_return co_await registerInstallation(workerUrl, stop);
    }
    m_installation = stored;
    co_return stored;
}

QCoro::Task<HostedInstallation> HostedService::arriveAnew(QString workerUrl, std::stop_token stop)
{
    co_await m_worker.run([this] { m_store.reset(); }, stop);
    co_return co_await registerInstallation(workerUrl, stop);
}

QCoro::Task<HostedInstallation> HostedService::registerInstallation(QString workerUrl,
                                                                    std::stop_token stop)
{
    try {
        co_return co_await registerOnce(workerUrl, stop);
    } catch (const CloudflareKeyError& failure) {
        if (!isIdTaken(failure)) {
            throw;
        }
    }
    co_await m_worker.run([this] { m_store.reset(); }, stop);
    co_return co_await registerOnce(workerUrl, stop);
}

QCoro::Task<HostedInstallation> HostedService::registerOnce(QString workerUrl, std::stop_token stop)
{
    const QUrl url = operationUrl(workerUrl, QStringLiteral("/v1/register"));
    const auto prepare = [this, url, program = m_program] {
        const QString id = m_store.installId();
        return std::pair(id, registerRequest(url, program, id, m_store.deviceFingerprint()));
    };
    const auto [id, request] = co_await m_worker.run(prepare, stop);
    const HttpResponse response = co_await m_transport.send(request, stop);
    checkHostedResponse(response, QString());
    const HostedInstallation installation{id, installTokenIn(response.body)};
    m_installation = installation;
    const auto keep = [this, token = installation.token] {
        std::ignore = m_store.storeToken(token);
    };
    co_await m_worker.run(keep, stop);
    co_return installation;
}

void HostedService::storeQuota(const CloudflareQuota& quota)
{
    m_defaults.setValue(quotaKey, QJsonDocument(toJson(quota)).toJson(QJsonDocument::Compact));
    QMetaObject::invokeMethod(this, &HostedService::cloudflareQuotaDidChange, Qt::QueuedConnection);
}

} // namespace zelvane
