#pragma once

#include "http/HttpTransport.h"
#include "pipeline/TranslationError.h"
#include "pipeline/TranslationTrace.h"

#include <QJsonObject>
#include <QMap>

#include <optional>

namespace zelvane {

/// The optional members of a request, by name. They shrink as a provider refuses them.
using ChatParameters = QMap<QString, QJsonValue>;

/// The part of a model identifier that says what it accepts: the last path component, lower case.
[[nodiscard]] QString modelFamily(const QString& model);

/// The optional members that the model's family is known to understand.
[[nodiscard]] ChatParameters chatParameters(const QString& model);

/// The parameter that an answer of status 400 names, if it is still in the map.
[[nodiscard]] std::optional<QString> droppableParameter(const TranslationError& failure,
                                                        const ChatParameters& parameters);

/// The body of a request.
[[nodiscard]] QJsonObject chatRequestBody(const QString& text, const QString& systemPrompt,
                                          const QString& model, const ChatParameters& parameters);

/// The trimmed content of the first choice of an answer. Throws `JsonError`, or `badResponse` for
/// JSON of another shape.
[[nodiscard]] QString chatResponseText(const QByteArray& body);

/// Translates with a server that speaks the chat completions format of OpenAI's API reference,
/// POST .../chat/completions.
class ChatCompletionsClient
{
public:
    /// Both must outlive this object and every call.
    ChatCompletionsClient(HttpTransport& transport, TranslationTrace& trace);

    /// One translation, repeated without a parameter that the server refuses by name. The text
    /// comes back trimmed and may be empty. Throws `TranslationError`, `TransportError`,
    /// `JsonError` or `CancellationError`.
    [[nodiscard]] QCoro::Task<QString> chatCompletion(QString text, QString systemPrompt,
                                                      QString apiKey, QString model,
                                                      QString urlText, std::stop_token stop);

    /// One exchange with exactly these parameters.
    [[nodiscard]] QCoro::Task<QString> sendChatRequest(QString text, QString systemPrompt,
                                                       QString apiKey, QString model, QUrl url,
                                                       ChatParameters parameters,
                                                       std::stop_token stop);

private:
    HttpTransport& m_transport;
    TranslationTrace& m_trace;
};

} // namespace zelvane
