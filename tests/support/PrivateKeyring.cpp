#include "support/PrivateKeyring.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QThread>
#include <QUuid>

#include <csignal>

#include <sys/prctl.h>

namespace zelvane::test {

namespace {

/// No folders of services: whatever is not started by a test is not there.
const char* const busConfiguration = R"(<busconfig>
  <type>session</type>
  <listen>unix:path=%1</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow send_destination="*"/>
    <allow receive_sender="*"/>
    <allow own="*"/>
  </policy>
</busconfig>
)";

void write(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    if (file.open(QFile::WriteOnly)) {
        file.write(bytes);
    }
}

/// Children must not outlive a test program that is ended from outside.
void bindToThisProcess(QProcess& process)
{
    process.setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGKILL); });
}

void end(QProcess& process)
{
    if (process.state() != QProcess::NotRunning) {
        process.kill();
        process.waitForFinished(2000);
    }
}

} // namespace

PrivateKeyring::PrivateKeyring()
    : m_environment(QProcessEnvironment::systemEnvironment())
{
    prepareHome();
    const QString socket = m_home.filePath(QStringLiteral("bus"));
    m_environment.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"),
                         QStringLiteral("unix:path=") + socket);
    const QString configuration = m_home.filePath(QStringLiteral("bus.conf"));
    write(configuration, QString::fromUtf8(busConfiguration).arg(socket).toUtf8());
    m_bus.setProcessEnvironment(m_environment);
    m_bus.start(QStringLiteral("dbus-daemon"),
                {QStringLiteral("--nofork"), QStringLiteral("--print-address"),
                 QStringLiteral("--config-file=") + configuration});
    m_bus.waitForReadyRead(5000); // prints its address once it listens
}

PrivateKeyring::PrivateKeyring(const QString& busAddress)
    : m_environment(QProcessEnvironment::systemEnvironment())
{
    prepareHome();
    m_environment.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), busAddress);
}

void PrivateKeyring::prepareHome()
{
    const QString run = m_home.filePath(QStringLiteral("run"));
    QDir().mkpath(run);
    QFile::setPermissions(run, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    m_environment.remove(QStringLiteral("DISPLAY"));
    m_environment.remove(QStringLiteral("GNOME_KEYRING_CONTROL"));
    m_environment.insert(QStringLiteral("HOME"), m_home.path());
    m_environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), run);
    m_environment.insert(QStringLiteral("XDG_DATA_HOME"), m_home.filePath(QStringLiteral("share")));
    bindToThisProcess(m_bus);
    bindToThisProcess(m_daemon);
}

PrivateKeyring::~PrivateKeyring()
{
    stop();
    stopBus();
}

bool PrivateKeyring::hasService() const
{
    const QString name = QUuid::createUuid().toString(QUuid::WithoutBraces);
    const QString address = m_environment.value(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"));
    bool isThere = false;
    {
        const QDBusConnection bus = QDBusConnection::connectToBus(address, name);
        isThere = bus.isConnected() &&
                  bus.interface()->isServiceRegistered(QStringLiteral("org.freedesktop.secrets"));
    }
    QDBusConnection::disconnectFromBus(name);
    return isThere;
}

bool PrivateKeyring::start(State state)
{
    QStringList arguments{QStringLiteral("--foreground"), QStringLiteral("--components=secrets"),
                          QStringLiteral("--control-directory=") + m_home.path() +
                              QStringLiteral("/run/keyring")};
    if (state == State::unlocked) {
        arguments += QStringLiteral("--unlock"); // with the password from its standard input
    }
    m_daemon.setProcessEnvironment(m_environment);
    m_daemon.start(QStringLiteral("gnome-keyring-daemon"), arguments);
    m_daemon.write("password");
    m_daemon.waitForBytesWritten(2000); // nothing else writes while no event loop runs
    m_daemon.closeWriteChannel();
    QElapsedTimer waited;
    waited.start();
    while (!hasService() && waited.elapsed() < 5000) {
        QThread::msleep(10);
    }
    return hasService();
}

void PrivateKeyring::stop()
{
    thaw();
    end(m_daemon);
}

void PrivateKeyring::stopBus()
{
    end(m_bus);
}

void PrivateKeyring::freeze()
{
    ::kill(static_cast<pid_t>(m_daemon.processId()), SIGSTOP);
}

void PrivateKeyring::thaw()
{
    if (m_daemon.processId() > 0) {
        ::kill(static_cast<pid_t>(m_daemon.processId()), SIGCONT);
    }
}

} // namespace zelvane::test
