#include "online/AnthropicClient.h"

#include "foundation/Text.h"
#include "http/ApiExchange.h"
#include "http/JsonError.h"
#include "online/JsonShape.h"
#include "pipeline/Endpoints.h"
#include "pipeline/TranslationError.h"

namespace zelvane {

QList<QPair<QByteArray, QByteArray>> claudeHeaders(const QString& apiKey)
{
    return {{"x-api-key", apiKey.toUtf8()}, {"anthropic-version", "2023-06-01"}};
}

QJsonObject claudeRequestBody(const QString& text, const QString& systemPrompt,
                              const QString& model)
{
    constexpr int maximalTokens = 4096;
    const QJsonArray messages{conversationMessage(QStringLiteral("user"), text)};
    return {{QStringLiteral("model"), text::wellFormed(model)},
            {QStringLiteral("max_tokens"), maximalTokens},
            {QStringLiteral("temperature"), 0.2},
            {QStringLiteral("system"), text::wellFormed(systemPrompt)},
            {QStringLiteral("messages"), messages}};
}

QString claudeResponseText(const QByteArray& body)
{
    QString texts;
    for (const QJsonValue& block : objectsIn(parsedJson(body).object().value(u"content"))) {
        if (block[u"type"] == QStringLiteral("text")) {
            texts += block[u"text"].toString();
        }
    }
    const QString translation = text::trimmed(texts);
    if (translation.isEmpty()) {
        throw TranslationError(TranslationError::Code::badResponse);
    }
    return translation;
}

AnthropicClient::AnthropicClient(HttpTransport& transport, const UserDefaults& defaults)
    : m_transport(transport)
    , m_defaults(defaults)
{
}

QCoro::Task<QString> AnthropicClient::translateWithClaude(QString text, QString systemPrompt,
                                                          QString apiKey, QString model,
                                                          std::stop_token stop)
{
    const QUrl url =
        checkedUrl(endpointUrl(AIProvider::claude, QStringLiteral("/v1/messages"), m_defaults));
    const HttpRequest request =
        jsonPost(url, claudeHeaders(apiKey), claudeRequestBody(text, systemPrompt, model));
    const QByteArray answer = co_await answerBody(m_transport, request, apiKey, stop);
    co_return claudeResponseText(answer);
}

QCoro::Task<QString> AnthropicClient::translate(TranslationRequest request, std::stop_token stop)
{
    return translateWithClaude(request.text, request.systemPrompt, request.apiKey, request.model,
                               stop);
}

} // namespace zelvane
