#pragma once

#include "foundation/DescribedError.h"

#include <QByteArray>
#include <QCoroTask>
#include <QList>
#include <QPair>
#include <QUrl>

#include <chrono>
#include <stop_token>

namespace zelvane {

struct HttpRequest
{
    QByteArray method = "GET";
    QUrl url;
    /// Sent in this order, names as they are written here.
    QList<QPair<QByteArray, QByteArray>> headers;
    QByteArray body;
    /// The longest silence: time without a byte from the server.
    std::chrono::milliseconds timeout = std::chrono::seconds(180);
    /// A longer body fails the exchange instead of filling the memory.
    qint64 maximalBodySize = qint64(32) * 1024 * 1024;
};

struct HttpResponse
{
    int status = 0;
    /// Names in lower case.
    QList<QPair<QByteArray, QByteArray>> headers;
    QByteArray body;
};

/// An exchange that brought no complete answer.
class TransportError final : public DescribedError
{
public:
    enum class Kind {
        connection,
        timeout,
        insecure, ///< TLS is required and missing, or the certificate is not trusted
        tooLarge,
        truncated,
    };

    /// `reason` is shown to the user and must hold no key, not even one in a URL's query.
    TransportError(Kind kind, QString reason);

    [[nodiscard]] Kind kind() const { return m_kind; }
    [[nodiscard]] QString description() const override;

private:
    Kind m_kind;
    QString m_reason;
};

/// Carries HTTP exchanges.
class HttpTransport
{
public:
    HttpTransport() = default;
    virtual ~HttpTransport() = default;
    Q_DISABLE_COPY_MOVE(HttpTransport)

    /// Sends `request` and delivers the whole answer, whatever its status. Throws `TransportError`,
    /// or `CancellationError` once `stop` is asked for, which ends the exchange on the wire. Called
    /// and stopped on the thread of this object.
    [[nodiscard]] virtual QCoro::Task<HttpResponse> send(HttpRequest request,
                                                         std::stop_token stop) = 0;
};

} // namespace zelvane
