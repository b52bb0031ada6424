#include "http/ApiExchange.h"

#include "foundation/Text.h"
#include "pipeline/TranslationError.h"

#include <QJsonDocument>

namespace zelvane {

namespace {

/// More than any translation; small enough to be parsed without anyone noticing.
constexpr qint64 maximalAnswerSize = qint64(8) * 1024 * 1024;

/// The body without the key, as it is and as it stands in addresses.
QByteArray withoutKey(QByteArray body, const QString& key)
{
    constexpr qsizetype shortestKey = 8; // a shorter one would also cut ordinary words
    if (key.size() < shortestKey) {
        return body;
    }
    return body.replace(key.toUtf8(), "***").replace(QUrl::toPercentEncoding(key), "***");
}

} // namespace

QUrl checkedUrl(const QString& urlText)
{
    QUrl url(urlText, QUrl::StrictMode);
    if (!url.isValid() || url.scheme().isEmpty() || url.host().isEmpty()) {
        throw TranslationError(TranslationError::Code::invalidURL);
    }
    return url;
}

QJsonObject conversationMessage(const QString& role, const QString& text)
{
    return {{QStringLiteral("role"), role}, {QStringLiteral("content"), text::wellFormed(text)}};
}

HttpRequest jsonPost(const QUrl& url, QList<QPair<QByteArray, QByteArray>> headers,
                     const QJsonObject& body)
{
    headers += QPair<QByteArray, QByteArray>("Content-Type", "application/json");
    HttpRequest request;
    request.method = "POST";
    request.url = url;
    request.headers = std::move(headers);
    request.body = QJsonDocument(body).toJson(QJsonDocument::Compact);
    return request;
}

QCoro::Task<QByteArray> answerBody(HttpTransport& transport, HttpRequest request, QString key,
                                   std::stop_token stop)
{
    request.maximalBodySize = maximalAnswerSize;
    const HttpResponse response = co_await transport.send(request, stop);
    validateHTTPResponse(response.status, withoutKey(response.body, key));
    co_return response.body;
}

} // namespace zelvane
