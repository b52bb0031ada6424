#include "http/NetworkExchange.h"

#include "pipeline/Loopback.h"

#include <QNetworkAccessManager>
#include <QNetworkRequest>
#include <QSslConfiguration>

#include <algorithm>
#include <cstring>

namespace zelvane {

namespace {

constexpr int maximalRedirects = 5;

/// How much of a download waits between Qt's threads. The rest stays with the server.
constexpr qint64 downloadBuffer = qint64(1) << 20;

/// How much is kept of an answer that explains why there is no download.
constexpr qint64 maximalRefusal = qint64(64) << 10;

/// A request's body that can't be rewound, even if it is empty. Qt repeats a request by itself, up
/// to three times, when the server closes the connection; a translation is paid for, so it must not
/// do that. It would also take a body that was cut short for a whole one, if its size was not
/// announced.
class SentOnceBody final : public QIODevice
{
public:
    explicit SentOnceBody(QByteArray body)
        : m_body(std::move(body))
    {
        open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    }

    [[nodiscard]] bool isSequential() const override { return true; }
    [[nodiscard]] bool atEnd() const override { return m_sent == m_body.size(); }
    bool reset() override { return m_sent == 0 && !m_body.isEmpty(); }

protected:
    qint64 readData(char* data, qint64 maxSize) override
    {
        const qint64 size = std::min<qint64>(maxSize, m_body.size() - m_sent);
        std::memcpy(data, m_body.constData() + m_sent, static_cast<std::size_t>(size));
        m_sent += size;
        return size > 0 ? size : -1;
    }
    qint64 writeData(const char* /*data*/, qint64 /*maxSize*/) override { return -1; }

private:
    QByteArray m_body;
    qint64 m_sent = 0;
};

QNetworkRequest networkRequest(const HttpRequest& request)
{
    QUrl url = request.url;
    url.setUserInfo(QString());
    QNetworkRequest result(url);
    result.setRawHeader("User-Agent", "Zelvane-Desk");
    // Answers are short, and of a packed one it can't be told whether it is complete.
    result.setRawHeader("Accept-Encoding", "identity");
    for (const auto& [name, value] : request.headers) {
        result.setRawHeader(name, value);
    }
    result.setAttribute(QNetworkRequest::RedirectPolicyAttribute,
                        QNetworkRequest::ManualRedirectPolicy);
    for (const auto attribute :
         {QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::CookieSaveControlAttribute,
          QNetworkRequest::AuthenticationReuseAttribute}) {
        result.setAttribute(attribute, QNetworkRequest::Manual);
    }
    result.setAttribute(QNetworkRequest::DoNotBufferUploadDataAttribute, true);
    // One exchange for one connection: closing it is how a server learns of a cancellation.
    result.setAttribute(QNetworkRequest::Http2AllowedAttribute, false);

    // Explicit, so that no default that anything in the process sets can weaken it.
    QSslConfiguration tls = QSslConfiguration::defaultConfiguration();
    tls.setPeerVerifyMode(QSslSocket::VerifyPeer);
    tls.setProtocol(QSsl::TlsV1_2OrLater);
    result.setSslConfiguration(tls);
    return result;
}

bool isSameOrigin(const QUrl& a, const QUrl& b)
{
    const int defaultPort = a.scheme() == QStringLiteral("https") ? 443 : 80;
    return a.scheme() == b.scheme() && a.host() == b.host() &&
           a.port(defaultPort) == b.port(defaultPort);
}

/// Whether a download may be continued at `target`, another origin than that of `current`.
bool maySendTo(const QUrl& target, const QUrl& current)
{
    const bool isHttps = target.scheme() == QStringLiteral("https");
    const bool staysPlain = current.scheme() == QStringLiteral("http") &&
                            target.scheme() == QStringLiteral("http") && isLoopback(target);
    return !target.host().isEmpty() && (isHttps || staysPlain);
}

/// The failures below the level of HTTP; none for those that stand for a status of the answer.
std::optional<NetworkFailure> connectionFailure(QNetworkReply::NetworkError error)
{
    switch (error) {
    case QNetworkReply::NoError:
        return std::nullopt;
    case QNetworkReply::ConnectionRefusedError:
        return NetworkFailure::refused;
    case QNetworkReply::RemoteHostClosedError:
    case QNetworkReply::ContentReSendError:
        return NetworkFailure::dropped;
    case QNetworkReply::HostNotFoundError:
        return NetworkFailure::hostNotFound;
    case QNetworkReply::TimeoutError:
        return NetworkFailure::silence;
    case QNetworkReply::SslHandshakeFailedError:
        return NetworkFailure::noTls;
    case QNetworkReply::ProxyConnectionRefusedError:
    case QNetworkReply::ProxyConnectionClosedError:
    case QNetworkReply::ProxyNotFoundError:
    case QNetworkReply::ProxyTimeoutError:
    case QNetworkReply::ProxyAuthenticationRequiredError:
    case QNetworkReply::UnknownProxyError:
        return NetworkFailure::proxy;
    case QNetworkReply::ProtocolFailure:
        return NetworkFailure::dropped;
    default:
        if (error < QNetworkReply::ContentAccessDenied) {
            return NetworkFailure::otherConnection;
        }
        return std::nullopt;
    }
}

} // namespace

NetworkExchange::NetworkExchange(QNetworkAccessManager& manager, HttpRequest request,
                                 std::optional<DownloadTarget> target, Listener listener)
    : m_manager(manager)
    , m_request(std::move(request))
    , m_target(std::move(target))
    , m_listener(std::move(listener))
{
    sendRequest();
}

NetworkExchange::~NetworkExchange()
{
    dropReply();
}

void NetworkExchange::dropReply()
{
    if (QNetworkReply* reply = std::exchange(m_reply, nullptr)) {
        // Its own connections stay: aborting on the wire goes through them.
        disconnect(reply, nullptr, this, nullptr);
        reply->abort();
        reply->deleteLater();
    }
}

void NetworkExchange::sendRequest()
{
    dropReply();
    m_newConnection = false;
    m_body.clear();
    m_received = 0;
    QNetworkRequest request = networkRequest(m_request);
    request.setHeader(QNetworkRequest::ContentLengthHeader, m_request.body.size());
    auto* body = new SentOnceBody(m_request.body);
    m_reply = m_manager.sendCustomRequest(request, m_request.method, body);
    body->setParent(m_reply);
    if (m_target && m_limitsBuffer) {
        // Later, since it has no effect on a request that has a body and hasn't started.
        QMetaObject::invokeMethod(
            m_reply, [reply = m_reply] { reply->setReadBufferSize(downloadBuffer); },
            Qt::QueuedConnection);
    }
    connect(m_reply, &QNetworkReply::socketStartedConnecting, this,
            [this] { m_newConnection = true; });
    connect(m_reply, &QNetworkReply::sslErrors, this, [this] { m_untrusted = true; });
    connect(m_reply, &QNetworkReply::metaDataChanged, this, &NetworkExchange::readHead);
    connect(m_reply, &QNetworkReply::readyRead, this, &NetworkExchange::readBody);
    connect(m_reply, &QNetworkReply::finished, this, &NetworkExchange::finish);
}

void NetworkExchange::readHead()
{
    m_listener.heard();
    const QVariant length = m_reply->header(QNetworkRequest::ContentLengthHeader);
    if (length.toLongLong() > m_request.maximalBodySize) {
        fail(NetworkFailure::tooLarge);
        return;
    }
    if (isFile() && !length.isValid() && m_limitsBuffer) {
        m_limitsBuffer = false;
        sendRequest();
        return;
    }
    if (isFile() && !m_file) {
        auto file = DownloadFile::create(m_target->path);
        if (!file) {
            fail(file.error());
            return;
        }
        m_file.emplace(std::move(*file));
        m_target->state->expectedBytes = length.isValid() ? length.toLongLong() : -1;
    }
}

void NetworkExchange::readBody()
{
    m_listener.heard();
    if (m_target) {
        isFile() ? storeBody() : readRefusal();
        return;
    }
    // One byte more than allowed tells the difference.
    const qint64 room = m_request.maximalBodySize - m_received;
    m_body += m_reply->read(room + 1);
    m_received = m_body.size();
    if (m_received > m_request.maximalBodySize) {
        fail(NetworkFailure::tooLarge);
    }
}

void NetworkExchange::storeBody()
{
    while (m_reply->bytesAvailable() > 0) {
        const QByteArray bytes = m_reply->read(downloadBuffer);
        m_received += bytes.size();
        if (m_received > m_request.maximalBodySize) {
            fail(NetworkFailure::tooLarge);
            return;
        }
        if (const auto stored = m_file->append(bytes); !stored) {
            fail(stored.error());
            return;
        }
        m_target->state->writtenBytes = m_received;
    }
}

void NetworkExchange::readRefusal()
{
    m_body += m_reply->read(maximalRefusal - m_body.size());
    m_received = m_body.size();
    if (m_body.size() < maximalRefusal) {
        return;
    }
    if (redirect()) {
        sendRequest();
    } else {
        deliver();
    }
}

void NetworkExchange::finish()
{
    readBody();
    if (m_reply == nullptr) {
        return;
    }
    if (diedOnKeptConnection() || redirect()) {
        sendRequest();
        return;
    }
    if (const auto reason = failure()) {
        fail(*reason);
        return;
    }
    if (const auto kept = keepFile(); !kept) {
        fail(kept.error());
        return;
    }
    deliver();
}

std::expected<void, NetworkFailure> NetworkExchange::keepFile()
{
    if (!m_file) {
        return {};
    }
    m_target->state->isComplete = true;
    return m_file->keep();
}

void NetworkExchange::deliver()
{
    HttpResponse response;
    response.status = statusCode();
    for (const auto& [name, value] : m_reply->rawHeaderPairs()) {
        response.headers.append({name.toLower(), value});
    }
    response.body = std::move(m_body);
    dropReply();
    m_listener.succeeded(std::move(response));
}

void NetworkExchange::fail(NetworkFailure failure)
{
    dropReply();
    m_file.reset();
    m_listener.failed(failure);
}

bool NetworkExchange::diedOnKeptConnection() const
{
    return !m_newConnection && failure() == NetworkFailure::dropped;
}

bool NetworkExchange::redirect()
{
    const int status = statusCode();
    const bool keepsMethod = status == 307 || status == 308;
    const bool isGet = m_request.method == "GET" || m_request.method == "HEAD";
    const bool redirects =
        keepsMethod || (isGet && (status == 301 || status == 302 || status == 303));
    const QByteArray location = m_reply->rawHeader("Location");
    if (!redirects || location.isEmpty() || m_redirects == maximalRedirects) {
        return false;
    }
    const QUrl target = m_request.url.resolved(QUrl::fromEncoded(location));
    if (!isSameOrigin(m_request.url, target)) {
        if (!m_target || !maySendTo(target, m_request.url)) {
            return false;
        }
        m_request.headers.clear();
    }
    ++m_redirects;
    m_request.url = target;
    return true;
}

std::optional<NetworkFailure> NetworkExchange::failure() const
{
    const int status = statusCode();
    // Qt wants to rewind the body for a redirection that it isn't to follow, and when the server
    // closes the connection right behind its answer. In both cases the answer is there.
    const bool isAnswered = status != 0 && m_reply->error() == QNetworkReply::ContentReSendError;
    if (isAnswered && (status == 307 || status == 308)) {
        return std::nullopt;
    }
    if (const auto reason = connectionFailure(m_reply->error()); reason && !isAnswered) {
        if (*reason == NetworkFailure::dropped && status != 0) {
            return NetworkFailure::truncated;
        }
        return m_untrusted ? NetworkFailure::untrustedCertificate : *reason;
    }
    if (status == 0) {
        return NetworkFailure::dropped;
    }
    const QByteArray encoding = m_reply->rawHeader("Content-Encoding");
    if (!encoding.isEmpty() && encoding.compare("identity", Qt::CaseInsensitive) != 0) {
        return NetworkFailure::packed;
    }
    return isTruncated() ? std::optional(NetworkFailure::truncated) : std::nullopt;
}

bool NetworkExchange::isTruncated() const
{
    const bool hasUnknownEnd = m_reply->error() == QNetworkReply::ContentReSendError &&
                               m_reply->hasRawHeader("Transfer-Encoding");
    const QVariant length = m_reply->header(QNetworkRequest::ContentLengthHeader);
    return hasUnknownEnd || (m_request.method != "HEAD" && m_received < length.toLongLong());
}

bool NetworkExchange::isFile() const
{
    const int status = statusCode();
    return m_target && status >= 200 && status < 300;
}

int NetworkExchange::statusCode() const
{
    return m_reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
}

} // namespace zelvane
