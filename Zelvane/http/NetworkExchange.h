#pragma once

#include "http/HttpTransport.h"
#include "http/NetworkFailure.h"

#include <QNetworkReply>
#include <QObject>

#include <functional>
#include <optional>

class QNetworkAccessManager;

namespace zelvane {

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

    /// Starts at once. `manager` must outlive this object. After `succeeded` or `failed` nothing
    /// more is reported; they may schedule this object's deletion but not delete it.
    NetworkExchange(QNetworkAccessManager& manager, HttpRequest request, Listener listener);
    ~NetworkExchange() override;

private:
    void sendRequest();
    void dropReply();
    void readHead();
    void readBody();
    void finish();
    void fail(NetworkFailure failure);
    /// Whether the connection was a kept one that the server had given up meanwhile.
    [[nodiscard]] bool diedOnKeptConnection() const;
    /// Turns the request into the one that the answer redirects to, if that may be followed.
    [[nodiscard]] bool redirect();
    [[nodiscard]] std::optional<NetworkFailure> failure() const;
    [[nodiscard]] bool isTruncated() const;
    /// 0 as long as no head has arrived.
    [[nodiscard]] int statusCode() const;

    QNetworkAccessManager& m_manager;
    HttpRequest m_request;
    Listener m_listener;
    QNetworkReply* m_reply = nullptr; ///< owned, see dropReply
    QByteArray m_body;
    int m_redirects = 0;
    bool m_newConnection = false;
    bool m_untrusted = false;
};

} // namespace zelvane
