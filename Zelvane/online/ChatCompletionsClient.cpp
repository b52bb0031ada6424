#include "online/ChatCompletionsClient.h"

#include "foundation/Text.h"
#include "http/ApiExchange.h"
#include "http/JsonError.h"
#include "online/JsonShape.h"

#include <algorithm>
#include <array>

namespace zelvane {

namespace {

/// The names as the trace lists them.
QString joinedNames(const ChatParameters& parameters)
{
    return parameters.keys().join(u',');
}

QString attemptText(int attempt)
{
    return QStringLiteral("attempt ") + QString::number(attempt);
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

QJsonObject chatRequestBody(const QString& text, const QString& systemPrompt, const QString& model,
                            const ChatParameters& parameters)
{
    const QJsonArray messages{conversationMessage(QStringLiteral("system"), systemPrompt),
                              conversationMessage(QStringLiteral("user"), text)};
    QJsonObject body{{QStringLiteral("model"), model}, {QStringLiteral("messages"), messages}};
    for (auto parameter = parameters.cbegin(); parameter != parameters.cend(); ++parameter) {
        body.insert(parameter.key(), parameter.value());
    }
    return body;
}

QString chatResponseText(const QByteArray& body)
{
    const QJsonObject answer = parsedJson(body).object();
    const QJsonObject choice = firstObjectIn(answer.value(u"choices"));
    return text::trimmed(stringIn(choice.value(u"message").toObject().value(u"content")));
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
    const HttpRequest request = jsonPost(url, {{"Authorization", "Bearer " + apiKey.toUtf8()}},
                                         chatRequestBody(text, systemPrompt, model, parameters));
    const QByteArray answer = co_await answerBody(m_transport, request, apiKey, stop);
    co_return chatResponseText(answer);
}

} // namespace zelvane
