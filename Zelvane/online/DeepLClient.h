#pragma once

#include "http/HttpTransport.h"
#include "pipeline/Endpoints.h"
#include "pipeline/Engines.h"

#include <QJsonObject>

namespace zelvane {

/// DeepL's code of a language text. Empty for one that asks for automatic detection; a text that
/// DeepL may not know gets its short code.
[[nodiscard]] QString deepLCode(const QString& language);

/// The plan that a key belongs to.
[[nodiscard]] DeepLPlan deepLPlan(const QString& apiKey);

/// The body of a request.
[[nodiscard]] QJsonObject deepLRequestBody(const QString& text, const QString& sourceLanguage,
                                           const QString& targetLanguage);

/// The trimmed text of the first translation of an answer; it may be empty. Throws `JsonError`, or
/// `badResponse` for JSON of another shape.
[[nodiscard]] QString deepLResponseText(const QByteArray& body);

/// Translates with DeepL, POST /v2/translate. It is no language model: there is no prompt, and no
/// choice of models.
class DeepLClient final : public TranslationEngine
{
public:
    /// Both must outlive this object and every call.
    DeepLClient(HttpTransport& transport, const UserDefaults& defaults);

    /// One exchange. Throws `TranslationError`, `TransportError`, `JsonError` or
    /// `CancellationError`.
    [[nodiscard]] QCoro::Task<QString> translateWithDeepL(QString text, QString sourceLanguage,
                                                          QString targetLanguage, QString apiKey,
                                                          std::stop_token stop);

    [[nodiscard]] QCoro::Task<QString> translate(TranslationRequest request,
                                                 std::stop_token stop) override;

private:
    HttpTransport& m_transport;
    const UserDefaults& m_defaults;
};

} // namespace zelvane
