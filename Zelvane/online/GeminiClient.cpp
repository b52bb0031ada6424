#include "online/GeminiClient.h"

#include "foundation/Text.h"
#include "http/ApiExchange.h"
#include "http/JsonError.h"
#include "online/JsonShape.h"
#include "pipeline/Endpoints.h"

namespace zelvane {

namespace {

/// A member `parts` that holds nothing but a text.
QJsonArray oneTextPart(const QString& text)
{
    return {QJsonObject{{QStringLiteral("text"), text::wellFormed(text)}}};
}

} // namespace

QString geminiPath(const QString& model, const QString& apiKey)
{
    // What a path may hold besides letters, digits and "-._~".
    constexpr char otherPathCharacters[] = "!$&'()*+,/:=@";
    const QByteArray encoded =
        QUrl::toPercentEncoding(text::wellFormed(model), otherPathCharacters);
    return QStringLiteral("/v1beta/models/") + QString::fromLatin1(encoded) +
           QStringLiteral(":generateContent?key=") + apiKey;
}

QJsonObject geminiRequestBody(const QString& text, const QString& systemPrompt)
{
    const QJsonObject instruction{{QStringLiteral("parts"), oneTextPart(systemPrompt)}};
    const QJsonObject content{{QStringLiteral("role"), QStringLiteral("user")},
                              {QStringLiteral("parts"), oneTextPart(text)}};
    return {
        {QStringLiteral("system_instruction"), instruction},
        {QStringLiteral("contents"), QJsonArray{content}},
        {QStringLiteral("generationConfig"), QJsonObject{{QStringLiteral("temperature"), 0.2}}}};
}

QString geminiResponseText(const QByteArray& body)
{
    const QJsonObject answer = parsedJson(body).object();
    const QJsonObject candidate = firstObjectIn(answer.value(u"candidates"));
    const QJsonObject content = candidate.value(u"content").toObject();
    const QJsonObject part = firstObjectIn(content.value(u"parts"));
    return text::trimmed(stringIn(part.value(u"text")));
}

GeminiClient::GeminiClient(HttpTransport& transport, const UserDefaults& defaults)
    : m_transport(transport)
    , m_defaults(defaults)
{
}

QCoro::Task<QString> GeminiClient::translateWithGemini(QString text, QString systemPrompt,
                                                       QString apiKey, QString model,
                                                       std::stop_token stop)
{
    const QUrl url =
        checkedUrl(endpointUrl(AIProvider::gemini, geminiPath(model, apiKey), m_defaults));
    const HttpRequest request = jsonPost(url, {}, geminiRequestBody(text, systemPrompt));
    const QByteArray answer = co_await answerBody(m_transport, request, apiKey, stop);
    co_return geminiResponseText(answer);
}

QCoro::Task<QString> GeminiClient::translate(TranslationRequest request, std::stop_token stop)
{
    return translateWithGemini(request.text, request.systemPrompt, request.apiKey, request.model,
                               stop);
}

} // namespace zelvane
