#pragma once

#include "http/HttpTransport.h"

#include <QJsonObject>

namespace zelvane {

/// The address that a text means. Throws `TranslationError::invalidURL` if it isn't a strictly
/// written one with a scheme and a host.
[[nodiscard]] QUrl checkedUrl(const QString& urlText);

/// `{"role": role, "content": text}`, as conversations are made of it.
[[nodiscard]] QJsonObject conversationMessage(const QString& role, const QString& text);

/// A POST of `body` as compact JSON, with `headers` before the one that says so.
[[nodiscard]] HttpRequest jsonPost(const QUrl& url, QList<QPair<QByteArray, QByteArray>> headers,
                                   const QJsonObject& body);

/// Sends `request` and returns the body of a successful answer, of at most 8 MiB. Throws
/// `TranslationError::http` for any other status, `TransportError` or `CancellationError`.
///
/// A server may quote the request in its complaint; what is thrown doesn't show `key` with it.
///
/// `transport` must outlive the call.
[[nodiscard]] QCoro::Task<QByteArray> answerBody(HttpTransport& transport, HttpRequest request,
                                                 QString key, std::stop_token stop);

} // namespace zelvane
