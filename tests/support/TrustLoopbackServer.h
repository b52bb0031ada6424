#pragma once

#include "support/LoopbackHttpServer.h"

#include <QSslCertificate>
#include <QSslConfiguration>

namespace zelvane::test {

/// Makes the process trust the loopback server's certificate while it lives.
class TrustLoopbackServer
{
public:
    TrustLoopbackServer()
    {
        QSslConfiguration trusting = m_before;
        trusting.setCaCertificates({QSslCertificate(LoopbackHttpServer::certificate())});
        QSslConfiguration::setDefaultConfiguration(trusting);
    }
    ~TrustLoopbackServer() { QSslConfiguration::setDefaultConfiguration(m_before); }
    Q_DISABLE_COPY_MOVE(TrustLoopbackServer)

private:
    QSslConfiguration m_before = QSslConfiguration::defaultConfiguration();
};

} // namespace zelvane::test
