#include "online/RemoteModels.h"

#include "foundation/Text.h"
#include "http/ApiExchange.h"
#include "http/JsonError.h"
#include "online/AnthropicClient.h"
#include "online/JsonShape.h"
#include "pipeline/Endpoints.h"
#include "pipeline/TranslationError.h"

#include <algorithm>
#include <initializer_list>

namespace zelvane {

namespace {

bool containsAny(const QString& text, std::initializer_list<QStringView> pieces)
{
    return std::ranges::any_of(pieces, [&](QStringView piece) { return text.contains(piece); });
}

bool beginsWithAny(const QString& text, std::initializer_list<QStringView> starts)
{
    return std::ranges::any_of(starts, [&](QStringView start) { return text.startsWith(start); });
}

/// Whether a model can translate, as far as its name tells.
bool isTranslator(AIProvider provider, const QString& id)
{
    const QString name = text::lowerCased(id);
    switch (provider) {
    case AIProvider::chatGPT:
        return beginsWithAny(name, {u"gpt-", u"o1", u"o3", u"o4", u"chatgpt"}) &&
               !containsAny(name, {u"instruct", u"realtime", u"audio", u"tts", u"whisper", u"image",
                                   u"transcribe", u"search"});
    case AIProvider::mistral:
        return !containsAny(name, {u"embed", u"moderation"});
    case AIProvider::grok:
        return name.contains(u"grok");
    case AIProvider::gemini:
        return containsAny(name, {u"gemini", u"gemma"});
    default:
        return true;
    }
}

/// Whether a model answers the operation that translations are made with.
bool generatesContent(const QJsonObject& model)
{
    const QJsonArray methods = model.value(u"supportedGenerationMethods").toArray();
    return methods.contains(QStringLiteral("generateContent")) &&
           std::ranges::all_of(methods, [](const QJsonValue& method) { return method.isString(); });
}

/// The entry of a listing, unless it isn't a translator.
std::optional<RemoteModel> listedModel(AIProvider provider, const QJsonObject& entry)
{
    const bool isGemini = provider == AIProvider::gemini;
    const QJsonValue name = entry.value(isGemini ? u"name" : u"id");
    if (!name.isString() || (isGemini && !generatesContent(entry))) {
        return std::nullopt;
    }
    QString id = name.toString();
    if (isGemini && id.startsWith(u"models/")) {
        id = id.sliced(7);
    }
    if (!isTranslator(provider, id)) {
        return std::nullopt;
    }
    switch (provider) {
    case AIProvider::claude:
        return RemoteModel{id, entry.value(u"display_name").toString(id)};
    case AIProvider::gemini:
        return RemoteModel{id, entry.value(u"displayName").toString(id)};
    default:
        return RemoteModel{id, id};
    }
}

QString listingPath(AIProvider provider, const QString& apiKey)
{
    switch (provider) {
    case AIProvider::deepSeek:
        return QStringLiteral("/models");
    case AIProvider::claude:
        return QStringLiteral("/v1/models?limit=100");
    case AIProvider::gemini:
        return QStringLiteral("/v1beta/models?key=") +
               QString::fromLatin1(QUrl::toPercentEncoding(apiKey));
    default:
        return QStringLiteral("/v1/models");
    }
}

HttpRequest listingRequest(AIProvider provider, const QString& apiKey, const UserDefaults& defaults)
{
    HttpRequest request;
    request.url = checkedUrl(endpointUrl(provider, listingPath(provider, apiKey), defaults));
    request.timeout = std::chrono::seconds(30);
    if (provider == AIProvider::claude) {
        request.headers = claudeHeaders(apiKey);
    } else if (provider != AIProvider::gemini) {
        request.headers = {{"Authorization", "Bearer " + apiKey.toUtf8()}};
    }
    return request;
}

} // namespace

QList<RemoteModel> listedModels(AIProvider provider, const QByteArray& body)
{
    const QJsonObject listing = parsedJson(body).object();
    const bool isGemini = provider == AIProvider::gemini;
    QList<RemoteModel> models;
    for (const QJsonValue& entry : objectsIn(listing.value(isGemini ? u"models" : u"data"))) {
        if (auto model = listedModel(provider, entry.toObject())) {
            models.append(*std::move(model));
        }
    }
    if (provider != AIProvider::claude) {
        std::ranges::sort(models, {}, &RemoteModel::apiID);
    }
    return models;
}

RemoteModels::RemoteModels(HttpTransport& transport, const UserDefaults& defaults,
                           const HostedEngine* hosted)
    : m_transport(transport)
    , m_defaults(defaults)
    , m_hosted(hosted)
{
}

QCoro::Task<QList<RemoteModel>> RemoteModels::fetchRemoteModels(AIProvider provider, QString apiKey,
                                                                std::stop_token stop)
{
    if (provider == AIProvider::zelvane) {
        co_return hostedModel();
    }
    if (provider == AIProvider::deepL || isOffline(provider)) {
        co_return {};
    }
    const QString key = text::trimmed(apiKey);
    if (key.isEmpty()) {
        throw TranslationError(TranslationError::Code::missingAPIKey);
    }
    const HttpRequest request = listingRequest(provider, key, m_defaults);
    const QByteArray answer = co_await answerBody(m_transport, request, key, stop);
    co_return listedModels(provider, answer);
}

QList<RemoteModel> RemoteModels::hostedModel() const
{
    if (m_hosted == nullptr) {
        throw EngineUnavailableError(displayName(AIProvider::zelvane));
    }
    const QString model = m_hosted->currentConfig().model;
    return {{model, model}};
}

} // namespace zelvane
