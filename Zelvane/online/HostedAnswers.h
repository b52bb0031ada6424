#pragma once

#include "http/HttpTransport.h"
#include "online/CloudflareQuota.h"
#include "pipeline/Engines.h"

#include <optional>

// What the hosted service answers.

namespace zelvane {

/// What the service tells a client that starts.
struct CloudflareBootstrap
{
    ZelvaneClientConfig config;
    QString environment = QStringLiteral("prod");

    friend bool operator==(const CloudflareBootstrap&, const CloudflareBootstrap&) = default;
};

/// Throws `CloudflareKeyError` unless the status is in 200 to 299. What it shows of the body is cut
/// to 200 user-perceived characters and doesn't hold `token`.
void checkHostedResponse(const HttpResponse& response, const QString& token);

/// Whether a refusal says that the installation is blocked.
[[nodiscard]] bool isInstallBan(const HttpResponse& response);

/// The seconds that an answer of status 429 asks to wait, 60 if it doesn't say.
[[nodiscard]] qint64 retryDelay(const HttpResponse& response);

/// The token of a registration. Throws `CloudflareKeyError::badResponse` if there is none.
[[nodiscard]] QString installTokenIn(const QByteArray& body);

/// Throws `JsonError`, or `CloudflareKeyError::badResponse` for JSON of another shape.
[[nodiscard]] CloudflareBootstrap bootstrapIn(const QByteArray& body);

/// The quota, none if there is no valid one.
[[nodiscard]] std::optional<CloudflareQuota> quotaIn(const QByteArray& body);

/// The trimmed translation. Throws `JsonError`, or `CloudflareKeyError::emptyTranslation` if there
/// is none.
[[nodiscard]] QString translationIn(const QByteArray& body);

} // namespace zelvane
