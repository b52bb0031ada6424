#pragma once

#include "http/HttpTransport.h"
#include "pipeline/Engines.h"
#include "settings/UserDefaults.h"

namespace zelvane {

/// A model that a provider offers to the holder of a key.
struct RemoteModel
{
    /// What a request names it by.
    QString apiID;
    /// What the user knows it by.
    QString label;

    friend bool operator==(const RemoteModel&, const RemoteModel&) = default;
};

/// The models of a provider's listing that can translate. Anthropic's keep the listing's order, all
/// others are sorted by identifier. Throws `JsonError`, or `badResponse` for JSON of another shape.
[[nodiscard]] QList<RemoteModel> listedModels(AIProvider provider, const QByteArray& body);

/// Asks the providers for their models.
class RemoteModels
{
public:
    /// `hosted` may be null; all must outlive this object and every call.
    RemoteModels(HttpTransport& transport, const UserDefaults& defaults,
                 const HostedEngine* hosted);

    /// The models that `apiKey` can reach, in one exchange. Without any for providers that list
    /// none: the hosted service's one model, and nothing for DeepL and the engines on this machine.
    ///
    /// Throws `TranslationError` (`missingAPIKey` for a blank key), `TransportError`, `JsonError`,
    /// `CancellationError`, or `EngineUnavailableError` where there is no hosted service.
    [[nodiscard]] QCoro::Task<QList<RemoteModel>>
    fetchRemoteModels(AIProvider provider, QString apiKey, std::stop_token stop);

private:
    [[nodiscard]] QList<RemoteModel> hostedModel() const;

    HttpTransport& m_transport;
    const UserDefaults& m_defaults;
    const HostedEngine* m_hosted;
};

} // namespace zelvane
