#pragma once

#include "http/DownloadFile.h"
#include "http/HttpTransport.h"
#include "http/NetworkFailure.h"

#include <QNetworkReply>
#include <QObject>

#include <atomic>
#include <functional>
#include <memory>
#include <optional>

class QNetworkAccessManager;

namespace zelvane {

/// How far a download is, for other threads to look at.
struct DownloadState
{
    std::atomic<qint64> writtenBytes = 0;
    std::atomic<qint64> expectedBytes = -1; ///< -1 if unknown
    std::atomic<quint32> signsOfLife = 0;   ///< grows with whatever comes
    /// All has arrived, and is on its way to the disk.
    std::atomic<bool> isComplete = false;
};

/// Where the body of an answer goes if it isn't to be kept in memory.
struct DownloadTarget
{
    QString path;
    std::shared_ptr<DownloadState> state;
};

/// Runs one request to its end over Qt's network access. Destroying it ends the exchange on the
/// wire. All on one thread.
class NetworkExchange final : public QObject
{
    Q_OBJECT

public:
    struct Listener
    {
        /// The server sent something.
        std::function<void()> heard;
        std::function<void(HttpResponse)> succeeded;
        std::function<void(NetworkFailure)> failed;
    };

    /// Starts at once. With a `target` it is a download. `manager` must outlive this object. After
    /// `succeeded` or `failed` nothing more is reported; they may schedule this object's deletion
    /// but not delete it.
    NetworkExchange(QNetworkAccessManager& manager, HttpRequest request,
                    std::optional<DownloadTarget> target, Listener listener);
    ~NetworkExchange() override;

private:
    void sendRequest();
    void dropReply();
    void readHead();
    void readBody();
    /// Writes what has come of a download to its file.
    void storeBody();
    /// Takes what has come of an answer that the download can't use.
    void readRefusal();
    void finish();
    void deliver();
    /// The body of the download is whole.
    [[nodiscard]] std::expected<void, NetworkFailure> keepFile();
    void fail(NetworkFailure failure);
    /// Whether the connection was a kept one that the server had given up meanwhile.
    [[nodiscard]] bool diedOnKeptConnection() const;
    /// Turns the request into the one that the answer redirects to, if that may be followed.
    [[nodiscard]] bool redirect();
    [[nodiscard]] std::optional<NetworkFailure> failure() const;
    [[nodiscard]] bool isTruncated() const;
    /// Whether the body of this answer is the file of a download.
    [[nodiscard]] bool isFile() const;
    /// 0 as long as no head has arrived.
    [[nodiscard]] int statusCode() const;

    QNetworkAccessManager& m_manager;
    HttpRequest m_request;
    std::optional<DownloadTarget> m_target;
    Listener m_listener;
    QNetworkReply* m_reply = nullptr; ///< owned, see dropReply
    QByteArray m_body;
    qint64 m_received = 0; ///< bytes of the body
    std::optional<DownloadFile> m_file;
    int m_redirects = 0;
    /// Lets the server wait for the disk. With that, Qt can't tell whether a body of unannounced
    /// size is whole, and so such a one is asked for again without it.
    bool m_limitsBuffer = true;
    bool m_newConnection = false;
    bool m_untrusted = false;
};

} // namespace zelvane
