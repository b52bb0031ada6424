#include "support/Await.h"
#include "support/PrivateKeyring.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusReply>
#include <QDBusVirtualObject>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>

#include <gtest/gtest.h>

namespace zelvane::test {
namespace {

using namespace std::chrono_literals;
using State = PrivateKeyring::State;

/// The process that makes the calls.
class Probe
{
public:
    explicit Probe(const QProcessEnvironment& environment, int limit = 2000)
    {
        m_process.setProcessEnvironment(environment);
        m_process.start(QStringLiteral(SECRET_PROBE), {QString::number(limit)});
        m_process.waitForStarted();
    }
    ~Probe()
    {
        m_process.closeWriteChannel();
        if (!m_process.waitForFinished(3000)) {
            m_process.kill();
            m_process.waitForFinished();
        }
    }
    Q_DISABLE_COPY_MOVE(Probe)

    QByteArray call(const QByteArray& line)
    {
        m_process.write(line + '\n');
        while (!m_process.canReadLine()) {
            if (!m_process.waitForReadyRead(8000)) {
                return "(no answer)";
            }
        }
        return m_process.readLine().chopped(1);
    }

    [[nodiscard]] bool isRunning() const { return m_process.state() == QProcess::Running; }
    [[nodiscard]] qint64 id() const { return m_process.processId(); }
    QByteArray errorOutput() { return m_process.readAllStandardError(); }

private:
    QProcess m_process;
};

TEST(LibSecretBackend, keepsSecretsInAnUnlockedKeyring)
{
    PrivateKeyring keyring;
    ASSERT_TRUE(keyring.start(State::unlocked));
    Probe probe(keyring.environment());
    EXPECT_EQ(probe.call("find zv.apiKey.ChatGPT"), QByteArray("notFound "));
    EXPECT_EQ(probe.call("add zv.apiKey.ChatGPT schlüssel"), QByteArray("success"));
    EXPECT_EQ(probe.call("add zv.apiKey.Claude other"), QByteArray("success"));
    EXPECT_EQ(probe.call("find zv.apiKey.ChatGPT"), QByteArray("success schlüssel"));
    EXPECT_EQ(Probe(keyring.environment()).call("find zv.apiKey.Claude"),
              QByteArray("success other"));
    EXPECT_EQ(probe.call("remove zv.apiKey.ChatGPT"), QByteArray("success"));
    EXPECT_EQ(probe.call("remove zv.apiKey.ChatGPT"), QByteArray("notFound"));
    EXPECT_EQ(probe.call("find zv.apiKey.ChatGPT"), QByteArray("notFound "));
    EXPECT_EQ(probe.call("find zv.apiKey.Claude"), QByteArray("success other"));
}

using Attributes = QMap<QString, QString>;

QDBusMessage call(const QDBusConnection& bus, const QString& path, const char* interface,
                  const char* method, const QVariantList& arguments)
{
    QDBusMessage message =
        QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.secrets"), path,
                                       QString::fromUtf8(interface), QString::fromUtf8(method));
    message.setArguments(arguments);
    return bus.call(message);
}

/// The items of the keyring with these attributes, as any other program sees them.
QList<QDBusObjectPath> itemsWith(const QDBusConnection& bus, const Attributes& attributes)
{
    const QDBusReply<QList<QDBusObjectPath>> unlocked =
        call(bus, QStringLiteral("/org/freedesktop/secrets"), "org.freedesktop.Secret.Service",
             "SearchItems", {QVariant::fromValue(attributes)});
    return unlocked;
}

QString labelOf(const QDBusConnection& bus, const QDBusObjectPath& item)
{
    const QDBusReply<QVariant> label =
        call(bus, item.path(), "org.freedesktop.DBus.Properties", "Get",
             {QStringLiteral("org.freedesktop.Secret.Item"), QStringLiteral("Label")});
    return label.value().toString();
}

TEST(LibSecretBackend, namesItsItemsForOtherPrograms)
{
    qDBusRegisterMetaType<Attributes>();
    PrivateKeyring keyring;
    ASSERT_TRUE(keyring.start(State::unlocked));
    Probe probe(keyring.environment());
    ASSERT_EQ(probe.call("add zv.apiKey.Grok secret"), QByteArray("success"));

    const QString address = keyring.environment().value(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"));
    const QString name = QStringLiteral("namesItsItems");
    {
        const QDBusConnection bus = QDBusConnection::connectToBus(address, name);
        const auto items =
            itemsWith(bus, {{QStringLiteral("service"), QStringLiteral("Zelvane")},
                            {QStringLiteral("account"), QStringLiteral("zv.apiKey.Grok")}});
        ASSERT_EQ(items.size(), 1);
        EXPECT_EQ(labelOf(bus, items[0]), QStringLiteral("Zelvane Desk"));
    }
    QDBusConnection::disconnectFromBus(name);
}

TEST(LibSecretBackend, keepsOneSecretForAnAccount)
{
    PrivateKeyring keyring;
    ASSERT_TRUE(keyring.start(State::unlocked));
    Probe probe(keyring.environment());
    EXPECT_EQ(probe.call("add a first"), QByteArray("success"));
    EXPECT_EQ(probe.call("add a second"), QByteArray("success"));
    EXPECT_EQ(probe.call("find a"), QByteArray("success second"));
    EXPECT_EQ(probe.call("remove a"), QByteArray("success"));
    EXPECT_EQ(probe.call("find a"), QByteArray("notFound "));
}

TEST(LibSecretBackend, takesALockedKeyringNeitherForEmptyNorForRefusing)
{
    PrivateKeyring keyring;
    ASSERT_TRUE(keyring.start(State::unlocked));
    ASSERT_EQ(Probe(keyring.environment()).call("add a secret"), QByteArray("success"));
    keyring.stop();
    ASSERT_TRUE(keyring.start(State::locked));
    {
        Probe probe(keyring.environment());
        EXPECT_EQ(probe.call("find a"), QByteArray("otherFailure "));
        EXPECT_EQ(probe.call("find unknown"), QByteArray("otherFailure "));
        EXPECT_EQ(probe.call("remove a"), QByteArray("otherFailure"));
        EXPECT_EQ(probe.call("add a other"), QByteArray("otherFailure"));
    }
    keyring.stop();
    ASSERT_TRUE(keyring.start(State::unlocked));
    EXPECT_EQ(Probe(keyring.environment()).call("find a"), QByteArray("success secret"));
}

TEST(LibSecretBackend, outlivesARestartOfTheService)
{
    PrivateKeyring keyring;
    ASSERT_TRUE(keyring.start(State::unlocked));
    Probe probe(keyring.environment());
    EXPECT_EQ(probe.call("add a secret"), QByteArray("success"));
    keyring.stop();
    EXPECT_EQ(probe.call("find a"), QByteArray("otherFailure "));
    ASSERT_TRUE(keyring.start(State::unlocked));
    EXPECT_EQ(probe.call("find a"), QByteArray("success secret"));
}

TEST(LibSecretBackend, failsAtOnceWithoutAService)
{
    PrivateKeyring keyring;
    Probe probe(keyring.environment());
    QElapsedTimer timer;
    timer.start();
    EXPECT_EQ(probe.call("find a"), QByteArray("otherFailure "));
    EXPECT_EQ(probe.call("add a secret"), QByteArray("otherFailure"));
    EXPECT_EQ(probe.call("remove a"), QByteArray("otherFailure"));
    EXPECT_LT(timer.elapsed(), 2000);
}

TEST(LibSecretBackend, failsAtOnceWithoutABus)
{
    QProcessEnvironment environment = PrivateKeyring().environment();
    Probe dead(environment); // a socket that nobody listens on any more
    EXPECT_EQ(dead.call("find a"), QByteArray("otherFailure "));
    environment.remove(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"));
    Probe probe(environment);
    QElapsedTimer timer;
    timer.start();
    EXPECT_EQ(probe.call("find a"), QByteArray("otherFailure "));
    EXPECT_EQ(probe.call("add a secret"), QByteArray("otherFailure"));
    EXPECT_LT(timer.elapsed(), 1000);
}

TEST(LibSecretBackend, outlivesItsBus)
{
    PrivateKeyring keyring;
    ASSERT_TRUE(keyring.start(State::unlocked));
    Probe probe(keyring.environment());
    EXPECT_EQ(probe.call("add a secret"), QByteArray("success"));
    keyring.stopBus();
    EXPECT_EQ(probe.call("find a"), QByteArray("otherFailure "));
    EXPECT_EQ(probe.call("find a"), QByteArray("otherFailure "));
    EXPECT_TRUE(probe.isRunning());
}

TEST(LibSecretBackend, givesUpOnAServiceThatHangs)
{
    PrivateKeyring keyring;
    ASSERT_TRUE(keyring.start(State::unlocked));
    Probe probe(keyring.environment(), 300);
    EXPECT_EQ(probe.call("add a secret"), QByteArray("success"));
    keyring.freeze();
    QElapsedTimer timer;
    timer.start();
    EXPECT_EQ(probe.call("find a"), QByteArray("otherFailure "));
    EXPECT_EQ(probe.call("add a other"), QByteArray("otherFailure"));
    EXPECT_EQ(probe.call("remove a"), QByteArray("otherFailure"));
    EXPECT_LT(timer.elapsed(), 3000);
    keyring.thaw();
    EXPECT_TRUE(probe.isRunning());
    EXPECT_EQ(Probe(keyring.environment()).call("find a").left(7), QByteArray("success"));
}

/// Stands in for the desktop's dialog: notes that it is asked for, and stays silent.
class Prompter final : public QDBusVirtualObject
{
public:
    [[nodiscard]] QString introspect(const QString&) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection&) override
    {
        calls += message.member();
        message.setDelayedReply(true);
        return true;
    }

    QStringList calls;
};

TEST(LibSecretBackend, raisesADialogOnlyWhereOneIsAllowed)
{
    PrivateKeyring keyring;
    ASSERT_TRUE(keyring.start(State::locked));
    const QString connection = QStringLiteral("prompter");
    QDBusConnection bus = QDBusConnection::connectToBus(
        keyring.environment().value(QStringLiteral("DBUS_SESSION_BUS_ADDRESS")), connection);
    Prompter prompter;
    ASSERT_TRUE(bus.registerVirtualObject(QStringLiteral("/org/gnome/keyring/Prompter"), &prompter,
                                          QDBusConnection::SubPath));
    ASSERT_TRUE(bus.registerService(QStringLiteral("org.gnome.keyring.SystemPrompter")));
    {
        Probe probe(keyring.environment());
        EXPECT_EQ(probe.call("add-quietly a secret"), QByteArray("otherFailure"));
        EXPECT_FALSE(waitUntil([&] { return !prompter.calls.isEmpty(); }, 500ms));
        EXPECT_EQ(probe.call("add a secret"), QByteArray("otherFailure"));
        EXPECT_TRUE(waitUntil([&] { return !prompter.calls.isEmpty(); }));
    }
    bus.unregisterObject(QStringLiteral("/org/gnome/keyring/Prompter"));
    QDBusConnection::disconnectFromBus(connection);
}

TEST(LibSecretBackend, showsASecretToNobodyElse)
{
    PrivateKeyring keyring;
    ASSERT_TRUE(keyring.start(State::unlocked));
    Probe probe(keyring.environment());
    EXPECT_EQ(probe.call("add zv.apiKey.ChatGPT sk-very-secret"), QByteArray("success"));
    EXPECT_EQ(probe.call("find zv.apiKey.ChatGPT"), QByteArray("success sk-very-secret"));
    EXPECT_EQ(probe.errorOutput(), QByteArray());
    const QStringList processes = QDir(QStringLiteral("/proc")).entryList(QDir::Dirs);
    for (const QString& process : processes) {
        for (const char* part : {"cmdline", "environ"}) {
            QFile file(QStringLiteral("/proc/%1/%2").arg(process, QString::fromUtf8(part)));
            if (file.open(QFile::ReadOnly)) {
                EXPECT_FALSE(file.readAll().contains("sk-very-secret")) << process.toStdString();
            }
        }
    }
}

} // namespace
} // namespace zelvane::test
