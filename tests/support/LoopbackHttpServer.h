#pragma once

#include <QByteArray>
#include <QList>
#include <QObject>
#include <QPair>
#include <QUrl>

#include <chrono>
#include <deque>
#include <functional>
#include <memory>
#include <vector>

class QTcpServer;
class QTcpSocket;

namespace zelvane::test {

using HttpHeaders = QList<QPair<QByteArray, QByteArray>>;

/// A request as it arrived, byte for byte.
struct RecordedRequest
{
    QByteArray requestLine;
    /// In the order and spelling of the client.
    HttpHeaders headers;
    QByteArray body;
    /// The connection that it came on, counted from 1.
    int connection = 0;

    [[nodiscard]] QByteArray method() const;
    [[nodiscard]] QByteArray target() const;
    /// The value of the first header of this name, in whatever case, or the null byte array.
    [[nodiscard]] QByteArray header(const QByteArray& name) const;
};

/// An HTTP/1.1 message with a Content-Length, as JSON unless `headers` say otherwise.
[[nodiscard]] QByteArray httpMessage(int status, const QByteArray& body,
                                     const HttpHeaders& headers = {
                                         {"Content-Type", "application/json"}});

/// `bytes` in the gzip format.
[[nodiscard]] QByteArray gzipped(const QByteArray& bytes);

/// A body of which no client that gives up early takes half, however late a busy machine lets it
/// notice: what has come in meanwhile counts as sent.
inline constexpr qint64 hugeBody = qint64(1) << 30;

/// What the server does about one request: steps, one after the other. An answer that doesn't end
/// in `close` leaves the connection open for the next request; one without any step keeps silent.
class Answer
{
public:
    /// A complete JSON answer.
    [[nodiscard]] static Answer json(int status, const QByteArray& body);

    /// Sends bytes as they are.
    Answer& send(const QByteArray& bytes);
    /// Sends `count` letters, no faster than the client takes them.
    Answer& flood(qint64 count);
    /// Waits for the server's `release`.
    Answer& hold();
    /// Waits for a time by the real clock.
    Answer& pause(std::chrono::milliseconds time);
    /// Closes the connection once all is sent.
    Answer& close();

private:
    friend class LoopbackHttpServer;
    struct Step
    {
        enum class Kind { send, flood, hold, pause, close };
        Kind kind;
        QByteArray bytes;
        qint64 amount = 0;
    };
    std::deque<Step> m_steps;
};

/// A real HTTP server on 127.0.0.1, at a port of its own, in the event loop of the test.
class LoopbackHttpServer final : public QObject
{
    Q_OBJECT

public:
    enum class Security {
        plain,
        selfSigned, ///< TLS with `certificate()`, for localhost and provider.invalid
    };

    /// Listens at once. `port` 0 takes a free one; check `isListening` for any other.
    explicit LoopbackHttpServer(Security security = Security::plain, quint16 port = 0);
    ~LoopbackHttpServer() override;

    /// The certificate of `Security::selfSigned` in the PEM format.
    [[nodiscard]] static QByteArray certificate();

    [[nodiscard]] bool isListening() const;
    [[nodiscard]] quint16 port() const;
    /// The address of `path` at this server.
    [[nodiscard]] QUrl url(const QString& path = QStringLiteral("/")) const;

    /// Appends to the answers that are given out in order.
    void enqueue(const Answer& answer) { m_script.push_back(answer); }
    /// Answers what no enqueued answer is left for; without one, that gets status 500.
    void setHandler(std::function<Answer(const RecordedRequest&)> handler)
    {
        m_handler = std::move(handler);
    }
    /// What every client is sent before it has asked for anything, as other protocols do.
    void setGreeting(const QByteArray& bytes) { m_greeting = bytes; }
    /// Lets every answer that waits in a `hold` go on.
    void release();

    [[nodiscard]] const std::vector<RecordedRequest>& requests() const { return m_requests; }
    [[nodiscard]] int acceptedConnections() const { return m_accepted; }
    [[nodiscard]] int openConnections() const;
    /// The number of answers that wait in a `hold`.
    [[nodiscard]] int heldAnswers() const;
    /// The bytes handed to the system by `flood` steps.
    [[nodiscard]] qint64 floodedBytes() const { return m_flooded; }
    /// Closes every connection, as a server does with idle ones.
    void closeConnections();

private:
    class Connection;

    void accept();
    [[nodiscard]] Answer answerTo(const RecordedRequest& request);

    std::unique_ptr<QTcpServer> m_server;
    QString m_origin;
    QByteArray m_greeting;
    std::vector<std::unique_ptr<Connection>> m_connections;
    std::deque<Answer> m_script;
    std::function<Answer(const RecordedRequest&)> m_handler;
    std::vector<RecordedRequest> m_requests;
    int m_accepted = 0;
    qint64 m_flooded = 0;
};

} // namespace zelvane::test
