#include "Services/CompletionRequest.h"

#include "Services/LocalModelPrompts.h"
#include "Services/ModelOutput.h"
#include "foundation/Text.h"
#include "http/ApiExchange.h"
#include "http/JsonError.h"
#include "pipeline/TranslationError.h"

#include <QJsonArray>

#include <algorithm>

namespace zelvane {

namespace {

/// How freely the model chooses its words.
struct Sampling
{
    double temperature;
    double topP;
    double presencePenalty;
    double frequencyPenalty;
};

/// The likeliest words at first; then away from whatever loop that ended in.
Sampling samplingOf(Attempt attempt)
{
    return attempt == Attempt::first ? Sampling{0, 1.0, 0, 0} : Sampling{0.3, 0.8, 0.6, 0.4};
}

/// Twice the source, and some more: a translation that needs more than that has gone astray.
qint64 maximalTokens(const QStringList& lines)
{
    const qint64 wanted = 2 * text::characterCount(lines.join(u'\n')) + 512;
    return std::clamp<qint64>(wanted, 768, 4096);
}

QJsonArray messagesFor(const ModelJob& job)
{
    const ChatMessages messages = buildChatMessages(job);
    QJsonArray array;
    if (!text::isBlank(messages.system)) {
        array += conversationMessage(QStringLiteral("system"), messages.system);
    }
    array += conversationMessage(QStringLiteral("user"), messages.user);
    return array;
}

} // namespace

QJsonObject completionRequest(const ModelJob& job, Attempt attempt)
{
    const Sampling sampling = samplingOf(attempt);
    return {
        {QStringLiteral("model"), factsOf(job.variant).requestModel},
        {QStringLiteral("messages"), messagesFor(job)},
        {QStringLiteral("temperature"), sampling.temperature},
        {QStringLiteral("top_p"), sampling.topP},
        {QStringLiteral("presence_penalty"), sampling.presencePenalty},
        {QStringLiteral("frequency_penalty"), sampling.frequencyPenalty},
        {QStringLiteral("max_tokens"), maximalTokens(job.lines)},
        {QStringLiteral("stream"), false},
    };
}

QString completionText(const QByteArray& body)
{
    const QJsonDocument answer = parsedJson(body);
    const QJsonArray choices = answer.object().value(u"choices").toArray();
    const bool areObjects =
        std::ranges::all_of(choices, [](const QJsonValue& choice) { return choice.isObject(); });
    const QJsonValue message = choices.isEmpty() ? QJsonValue() : choices.first()[u"message"];
    if (!areObjects || !message.isObject()) {
        throw TranslationError(TranslationError::Code::badResponse);
    }
    const std::optional<QString> found = extractMessageText(message.toObject());
    if (!found) {
        throw TranslationError(TranslationError::Code::badResponse);
    }
    return *found;
}

} // namespace zelvane
