#pragma once

#include <QDBusConnection>
#include <QProcess>
#include <QTemporaryDir>

namespace zelvane::test {

/// A session bus of a test's own. All waits are bounded; a bus that doesn't come up throws
/// `std::runtime_error`.
class PrivateBus
{
public:
    PrivateBus();
    ~PrivateBus();
    Q_DISABLE_COPY_MOVE(PrivateBus)

    [[nodiscard]] QString address() const { return m_address; }
    /// A new connection, as another program has one.
    [[nodiscard]] QDBusConnection connect();
    /// Ends a connection, as the end of its program does.
    static void disconnect(const QDBusConnection& connection);
    /// Ends the bus, as a crash does.
    void kill();

    /// Has the bus start a program for a name, from now on. `command` is its absolute path, with
    /// arguments.
    void makeActivatable(const QString& name, const QString& command);

private:
    QTemporaryDir m_folder;
    QProcess m_daemon;
    QString m_address;
    QStringList m_connections;
};

/// A connection to no bus at all.
[[nodiscard]] QDBusConnection noBus();

} // namespace zelvane::test
