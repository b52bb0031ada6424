#pragma once

#include "Services/LlamaServer.h"
#include "Services/linux/LinuxChildProcesses.h"
#include "Services/linux/PsProcessTable.h"
#include "foundation/SystemClock.h"
#include "http/NetworkHttpTransport.h"
#include "support/Await.h"

#include <gtest/gtest.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <csignal>

namespace zelvane::test {

inline bool isAlive(qint32 pid)
{
    return ::kill(pid, 0) == 0;
}

/// A request for the translation of `text`.
inline QJsonObject requestFor(const QString& text)
{
    const QJsonObject message{{QStringLiteral("role"), QStringLiteral("user")},
                              {QStringLiteral("content"), text}};
    return {{QStringLiteral("messages"), QJsonArray{message}}};
}

/// The message in the body of an answer.
inline QJsonValue messageIn(const QByteArray& body)
{
    return QJsonDocument::fromJson(body).object()[u"choices"][0][u"message"];
}

/// A server as a process, with real sockets and signals.
class LlamaServerFixture : public ::testing::Test
{
protected:
    std::unique_ptr<LlamaServer> makeServer(const LlamaServerFiles& files)
    {
        return std::make_unique<LlamaServer>(
            files, LlamaServer::Parts{launcher, transport, clock, sweep, [this] {
                                          ServerAccess access = randomServerAccess();
                                          access.port = port.value_or(access.port);
                                          return access;
                                      }});
    }

    SystemClock clock;
    NetworkHttpTransport transport{clock};
    LinuxChildProcesses launcher;
    PsProcessTable table{launcher, clock};
    StraySweep sweep{table, clock};
    std::optional<quint16> port; ///< instead of a random one
};

} // namespace zelvane::test
