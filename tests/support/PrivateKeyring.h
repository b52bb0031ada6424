#pragma once

#include <QProcess>
#include <QProcessEnvironment>
#include <QString>
#include <QTemporaryDir>

namespace zelvane::test {

/// A session bus with a home folder of its own, and a real keyring daemon on it.
///
/// Nothing on such a bus is started by being asked for: without `start` there is no secret service.
/// Everything ends with the object.
class PrivateKeyring
{
public:
    enum class State { locked, unlocked };

    /// Starts the bus.
    PrivateKeyring();
    /// Joins a bus that is there, whose owner outlives this object.
    explicit PrivateKeyring(const QString& busAddress);
    ~PrivateKeyring();
    Q_DISABLE_COPY_MOVE(PrivateKeyring)

    /// Starts the daemon; unlocked, it makes the keyring if there is none. False if it doesn't come
    /// up.
    bool start(State state);
    void stop();
    void stopBus();
    /// Makes the daemon hang, or wakes it up again.
    void freeze();
    void thaw();

    /// For a process that is to use this bus and this home folder.
    [[nodiscard]] const QProcessEnvironment& environment() const { return m_environment; }

private:
    void prepareHome();
    [[nodiscard]] bool hasService() const;

    QTemporaryDir m_home;
    QProcessEnvironment m_environment;
    QProcess m_bus;
    QProcess m_daemon;
};

} // namespace zelvane::test
