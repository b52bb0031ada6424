#include "desktop/linux/session/PrivateBus.h"

#include <QDBusMessage>
#include <QDir>
#include <QFile>

#include <stdexcept>

namespace zelvane::test {

namespace {

constexpr int limit = 5000;

/// Only services of the test's own can be started.
const char* const configuration = R"(<!DOCTYPE busconfig PUBLIC
  "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
  "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <listen>unix:dir=%1</listen>
  <servicedir>%1/services</servicedir>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
)";

void write(const QString& path, const QString& content)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content.toUtf8()) < 0) {
        throw std::runtime_error("private bus: cannot write a file");
    }
}

} // namespace

PrivateBus::PrivateBus()
{
    QDir(m_folder.path()).mkdir(QStringLiteral("services"));
    const QString file = m_folder.filePath(QStringLiteral("bus.conf"));
    write(file, QString::fromLatin1(configuration).arg(m_folder.path()));
    m_daemon.setStandardErrorFile(QProcess::nullDevice());
    m_daemon.start(QStringLiteral("dbus-daemon"),
                   {QStringLiteral("--config-file=") + file, QStringLiteral("--nofork"),
                    QStringLiteral("--print-address=1")});
    while (!m_daemon.canReadLine()) {
        if (!m_daemon.waitForReadyRead(limit)) {
            throw std::runtime_error("private bus: it did not come up");
        }
    }
    m_address = QString::fromLatin1(m_daemon.readLine().trimmed());
}

PrivateBus::~PrivateBus()
{
    for (const QString& name : std::as_const(m_connections)) {
        QDBusConnection::disconnectFromBus(name);
    }
    m_daemon.terminate();
    if (!m_daemon.waitForFinished(limit)) {
        kill();
    }
}

QDBusConnection PrivateBus::connect()
{
    static int count = 0;
    const QString name = QStringLiteral("private-bus-%1").arg(++count);
    m_connections << name;
    return QDBusConnection::connectToBus(m_address, name);
}

void PrivateBus::disconnect(const QDBusConnection& connection)
{
    QDBusConnection::disconnectFromBus(connection.name());
}

void PrivateBus::kill()
{
    m_daemon.kill();
    m_daemon.waitForFinished(limit);
}

void PrivateBus::makeActivatable(const QString& name, const QString& command)
{
    write(m_folder.filePath(QStringLiteral("services/%1.service").arg(name)),
          QStringLiteral("[D-BUS Service]\nName=%1\nExec=%2\n").arg(name, command));
    QDBusConnection connection = connect();
    connection.call(QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("ReloadConfig")));
}

QDBusConnection noBus()
{
    return QDBusConnection(QStringLiteral("there is no such connection"));
}

} // namespace zelvane::test
