#pragma once

#include "foundation/DescribedError.h"

#include <QByteArray>
#include <QCoroTask>
#include <QList>
#include <QPair>
#include <QString>
#include <QUrl>

#include <chrono>
#include <functional>
#include <optional>
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
    /// The longest whole exchange, however lively.
    std::chrono::milliseconds totalTimeout = std::chrono::minutes(10);
    /// A longer body fails the exchange instead of filling the memory, or the disk.
    qint64 maximalBodySize = qint64(32) * 1024 * 1024;
};

struct HttpResponse
{
    int status = 0;
    /// Names in lower case.
    QList<QPair<QByteArray, QByteArray>> headers;
    QByteArray body;
};

/// How much of a download has been written.
struct DownloadProgress
{
    qint64 writtenBytes = 0;
    std::optional<qint64> expectedBytes; ///< none if the server doesn't tell

    friend bool operator==(const DownloadProgress&, const DownloadProgress&) = default;
};

using DownloadListener = std::function<void(DownloadProgress)>;

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
        storage, ///< what came could not be written to the disk
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

    /// Sends `request` and writes the body of the answer to the file `destination`, in place of
    /// what is there, without ever holding it in memory. The folder must exist. The file is
    /// complete and on the disk when the task yields, and is gone when it throws, cancelled or not.
    ///
    /// Only an answer with a status from 200 to 299 becomes a file; its `body` is empty then. Of
    /// any other one `body` is the beginning, and `destination` is left alone. The request's
    /// `maximalBodySize` holds for the file too.
    ///
    /// Redirections are followed to other hosts, as hosts of files do, but never from HTTPS to
    /// HTTP; the headers of the request don't go along to another origin.
    ///
    /// `progress` may be empty. It is called on the thread of this object, a few times a second at
    /// most, and finally with the whole size. Throws like `send`.
    [[nodiscard]] virtual QCoro::Task<HttpResponse> download(HttpRequest request,
                                                             QString destination,
                                                             DownloadListener progress,
                                                             std::stop_token stop) = 0;
};

} // namespace zelvane
