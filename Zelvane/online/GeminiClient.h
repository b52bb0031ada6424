#pragma once

#include "http/HttpTransport.h"
#include "pipeline/Engines.h"
#include "settings/UserDefaults.h"

#include <QJsonObject>

namespace zelvane {

/// The path and the query of a translation. The model is percent-encoded for a path; the key goes
/// in as it is.
[[nodiscard]] QString geminiPath(const QString& model, const QString& apiKey);

/// The body of a request.
[[nodiscard]] QJsonObject geminiRequestBody(const QString& text, const QString& systemPrompt);

/// The trimmed text of the first part of the first candidate of an answer; it may be empty. Throws
/// `JsonError`, or `badResponse` for JSON of another shape, as an answer that was blocked has.
[[nodiscard]] QString geminiResponseText(const QByteArray& body);

/// Translates with Google's Generative Language API, POST .../models/<model>:generateContent.
class GeminiClient final : public TranslationEngine
{
public:
    /// Both must outlive this object and every call.
    GeminiClient(HttpTransport& transport, const UserDefaults& defaults);

    /// One exchange. Throws `TranslationError`, `TransportError`, `JsonError` or
    /// `CancellationError`. Nothing of what it throws shows the key, which is part of the address.
    [[nodiscard]] QCoro::Task<QString> translateWithGemini(QString text, QString systemPrompt,
                                                           QString apiKey, QString model,
                                                           std::stop_token stop);

    [[nodiscard]] QCoro::Task<QString> translate(TranslationRequest request,
                                                 std::stop_token stop) override;

private:
    HttpTransport& m_transport;
    const UserDefaults& m_defaults;
};

} // namespace zelvane
