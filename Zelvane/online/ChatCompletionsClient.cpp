#include "online/ChatCompletionsClient.h"

#include "foundation/Text.h"
#include "online/JsonError.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <array>

namespace zelvane {

namespace {

/// More than any translation; small enough to be parsed without anyone noticing.
constexpr qint64 maximalAnswerSize = qint64(8) * 1024 * 1024;

QUrl checkedUrl(const QString& urlText)
{
    QUrl url(urlText, QUrl::StrictMode);
    if (!url.isValid() || url.scheme().isEmpty() || url.host().isEmpty()) {
        throw TranslationError(TranslationError::Code::invalidURL);
    }
    return url;
}

QJsonObject message(const QString& role, const QString& content)
{
    return {{QStringLiteral("role"), role}, {QStringLiteral("content"), text::wellFormed(content)}};
}

/// The names as the trace lists them.
QString joinedNames(const ChatParameters& parameters)
{
    return parameters.keys().join(u',');
}

QString attemptText(int attempt)
{
    return QStringLiteral("attempt ") + QString::number(attempt);
}

QJsonValue firstChoice(const QJsonDocument& answer)
{
    const QJsonArray choices = answer.object().value(u"choices").toArray();
    const bool areObjects =
        std::ranges::all_of(choices, [](const QJsonValue& choice) { return choice.isObject(); });
    return areObjects && !choices.isEmpty() ? choices.first() : QJsonValue();
}

/// A server may quote the request in its complaint; the key must not be shown with it.
QByteArray withoutKey(QByteArray body, const QByteArray& key)
{
    constexpr qsizetype shortestKey = 8; // a shorter one would also cut ordinary words
    return key.size() < shortestKey ? body : body.replace(key, "***");
}

} // namespace

QString modelFamily(const QString& model)
{
    const QStringList pieces = model.split(u'/', Qt::SkipEmptyParts);
    return (pieces.isEmpty() ? model : pieces.last()).toLower();
}

ChatParameters chatParameters(const QString& model)
{
    const QString family = modelFamily(model);
    const auto beginsWith = [&](QStringView prefix) { return family.startsWith(prefix); };
    ChatParameters parameters;
    constexpr std::array withoutTemperature{u"gpt-5", u"o1", u"o3", u"o4"};
    if (std::ranges::none_of(withoutTemperature, beginsWith)) {
        parameters.insert(QStringLiteral("temperature"), 0.2);
    }
    if (family == QStringLiteral("gpt-5") || beginsWith(u"gpt-5-")) {
        parameters.insert(QStringLiteral("reasoning_effort"), QStringLiteral("minimal"));
    }
    if (beginsWith(u"deepseek") && !family.contains(u"reasoner")) {
        parameters.insert(QStringLiteral("thinking"),
                          QJsonObject{{QStringLiteral("type"), QStringLiteral("disabled")}});
    }
    return parameters;
}

std::optional<QString> droppableParameter(const TranslationError& failure,
                                          const ChatParameters& parameters)
{
    if (failure.code() != TranslationError::Code::http || failure.httpStatus() != 400) {
        return std::nullopt;
    }
    const QStringList names = parameters.keys();
    const auto named = std::ranges::find_if(
        names, [&](const QString& name) { return failure.payload().contains(name); });
    return named == names.end() ? std::nullopt : std::optional(*named);
}

QByteArray chatRequestBody(const QString& text, const QString& systemPrompt, const QString& model,
                           const ChatParameters& parameters)
{
    const QJsonArray messages{message(QStringLiteral("system"), systemPrompt),
                              message(QStringLiteral("user"), text)};
    QJsonObject body{{QStringLiteral("model"), model}, {QStringLiteral("messages"), messages}};
    for (auto parameter = parameters.cbegin(); parameter != parameters.cend(); ++parameter) {
        body.insert(parameter.key(), parameter.value());
    }
    return QJsonDocument(body).toJson(QJsonDocument::Compact);
}

QString chatResponseText(const QByteArray& body)
{
    const QJsonDocument answer = parsedJson(body);
    const QJsonValue content =
        firstChoice(answer).toObject().value(u"message").toObject().value(u"content");
    if (!content.isString()) {
        throw TranslationError(TranslationError::Code::badResponse);
    }
    return text::trimmed(content.toString());
}

ChatCompletionsClient::ChatCompletionsClient(HttpTransport& transport, TranslationTrace& trace)
    : m_transport(transport)
    , m_trace(trace)
{
}

QCoro::Task<QString> ChatCompletionsClient::chatCompletion(QString text, QString systemPrompt,
                                                           QString apiKey, QString model,
                                                           QString urlText, std::stop_token stop)
{
    const QUrl url = checkedUrl(urlText);
    ChatParameters parameters = chatParameters(model);
    TranslationTrace& trace = m_trace;
    for (int attempt = 1;; ++attempt) {
        trace.mark(QStringLiteral("API HTTP begin"),
                   attemptText(attempt) + QStringLiteral("; params ") + joinedNames(parameters));
        try {
            const QString translation =
                co_await sendChatRequest(text, systemPrompt, apiKey, model, url, parameters, stop);
            trace.mark(QStringLiteral("API HTTP end"),
                       attemptText(attempt) + QStringLiteral(" ok"));
            co_return translation;
        } catch (const TranslationError& failure) {
            const std::optional<QString> refused = droppableParameter(failure, parameters);
            if (!refused) {
                trace.mark(QStringLiteral("API HTTP end"), attemptText(attempt) +
                                                               QStringLiteral(" failed: ") +
                                                               failure.description());
                throw;
            }
            trace.mark(QStringLiteral("API HTTP retry"), QStringLiteral("drop ") + *refused +
                                                             QStringLiteral("; ") +
                                                             attemptText(attempt));
            parameters.remove(*refused);
        }
    }
}

QCoro::Task<QString> ChatCompletionsClient::sendChatRequest(QString text, QString systemPrompt,
                                                            QString apiKey, QString model, QUrl url,
                                                            ChatParameters parameters,
                                                            std::stop_token stop)
{
    const QByteArray key = apiKey.toUtf8();
    HttpRequest request;
    request.method = "POST";
    request.url = url;
    request.headers = {{"Authorization", "Bearer " + key}, {"Content-Type", "application/json"}};
    request.body = chatRequestBody(text, systemPrompt, model, parameters);
    request.maximalBodySize = maximalAnswerSize;
    const HttpResponse response = co_await m_transport.send(request, stop);
    validateHTTPResponse(response.status, withoutKey(response.body, key));
    co_return chatResponseText(response.body);
}

} // namespace zelvane
