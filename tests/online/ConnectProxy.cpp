#include "online/ConnectProxy.h"

#include <QHostAddress>
#include <QTcpSocket>

namespace zelvane::test {

ConnectProxy::ConnectProxy(quint16 targetPort, QByteArray authorization)
    : m_targetPort(targetPort)
    , m_authorization(std::move(authorization))
{
    m_server.listen(QHostAddress::LocalHost);
    QObject::connect(&m_server, &QTcpServer::newConnection, &m_server, [this] {
        while (QTcpSocket* client = m_server.nextPendingConnection()) {
            QObject::connect(client, &QTcpSocket::readyRead, &m_server,
                             [this, client] { readHead(client); });
        }
    });
}

void ConnectProxy::readHead(QTcpSocket* client)
{
    // A client waits for the answer before it sends more, so that there is nothing behind the head.
    const QByteArray head = client->peek(client->bytesAvailable());
    if (!head.endsWith("\r\n\r\n")) {
        return;
    }
    client->readAll();
    m_heads.append(head);
    if (mayPass(head)) {
        openTunnel(client);
    } else {
        client->write("HTTP/1.1 407 Proxy Authentication Required\r\n"
                      "Proxy-Authenticate: Basic realm=\"proxy\"\r\nContent-Length: 0\r\n\r\n");
    }
}

void ConnectProxy::openTunnel(QTcpSocket* client)
{
    auto* server = new QTcpSocket(client);
    client->disconnect(&m_server);
    const auto carry = [](QTcpSocket* from, QTcpSocket* to) {
        QObject::connect(from, &QTcpSocket::readyRead, to,
                         [from, to] { to->write(from->readAll()); });
        QObject::connect(from, &QTcpSocket::disconnected, to, &QTcpSocket::disconnectFromHost);
    };
    carry(client, server);
    carry(server, client);
    QObject::connect(server, &QTcpSocket::connected, client,
                     [client] { client->write("HTTP/1.1 200 Connection established\r\n\r\n"); });
    server->connectToHost(QHostAddress(QHostAddress::LocalHost), m_targetPort);
}

bool ConnectProxy::mayPass(const QByteArray& head) const
{
    return m_authorization.isEmpty() ||
           head.contains("\r\nProxy-Authorization: " + m_authorization + "\r\n");
}

} // namespace zelvane::test
