#pragma once

#include <QByteArray>
#include <QList>
#include <QTcpServer>

class QTcpSocket;

namespace zelvane::test {

/// A proxy on 127.0.0.1 whose tunnels all end at one port of this machine, whatever host they are
/// asked for.
class ConnectProxy
{
public:
    /// Unless `authorization` is empty, a tunnel needs it as the value of Proxy-Authorization.
    explicit ConnectProxy(quint16 targetPort, QByteArray authorization = {});

    [[nodiscard]] quint16 port() const { return m_server.serverPort(); }
    /// The head of each request for a tunnel, as it came.
    [[nodiscard]] const QList<QByteArray>& heads() const { return m_heads; }

private:
    void readHead(QTcpSocket* client);
    void openTunnel(QTcpSocket* client);
    [[nodiscard]] bool mayPass(const QByteArray& head) const;

    quint16 m_targetPort;
    QByteArray m_authorization;
    QList<QByteArray> m_heads;
    QTcpServer m_server; ///< last, so that its clients end before what they report to
};

} // namespace zelvane::test
