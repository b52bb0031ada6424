#pragma once

#include "http/HttpTransport.h"
#include "pipeline/Engines.h"
#include "settings/UserDefaults.h"

#include <QJsonObject>

namespace zelvane {

/// The headers by which Anthropic's API knows the user and the protocol.
[[nodiscard]] QList<QPair<QByteArray, QByteArray>> claudeHeaders(const QString& apiKey);

/// The body of a request.
[[nodiscard]] QJsonObject claudeRequestBody(const QString& text, const QString& systemPrompt,
                                            const QString& model);

/// The texts of all text blocks of an answer, joined and trimmed. An answer that was cut at the
/// token limit counts as whole. Throws `JsonError`, or `badResponse` for JSON of another shape and
/// for an answer without text.
[[nodiscard]] QString claudeResponseText(const QByteArray& body);

/// Translates with Anthropic's Messages API, POST /v1/messages.
class AnthropicClient final : public TranslationEngine
{
public:
    /// Both must outlive this object and every call.
    AnthropicClient(HttpTransport& transport, const UserDefaults& defaults);

    /// One exchange. Throws `TranslationError`, `TransportError`, `JsonError` or
    /// `CancellationError`.
    [[nodiscard]] QCoro::Task<QString> translateWithClaude(QString text, QString systemPrompt,
                                                           QString apiKey, QString model,
                                                           std::stop_token stop);

    [[nodiscard]] QCoro::Task<QString> translate(TranslationRequest request,
                                                 std::stop_token stop) override;

private:
    HttpTransport& m_transport;
    const UserDefaults& m_defaults;
};

} // namespace zelvane
