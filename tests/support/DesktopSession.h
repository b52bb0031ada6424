#pragma once

#include <QByteArray>
#include <QList>
#include <QProcess>
#include <QProcessEnvironment>
#include <QRect>
#include <QStringList>
#include <QTemporaryDir>

#include <chrono>
#include <memory>
#include <vector>

namespace zelvane::test {

/// A desktop of a test's own: an X server without a screen on a free display, and on wish a window
/// manager, a session bus and an accessibility bus, with a home folder that is thrown away.
///
/// Everything started through it is ended with it, also if the test program dies. All waits are
/// bounded; a program that doesn't come up throws `std::runtime_error`. Main thread.
class DesktopSession
{
public:
    struct Options
    {
        bool windowManager = true;
        bool sessionBus = false;
        /// Needs the session bus.
        bool accessibilityBus = false;
        QStringList serverArguments = {}; // NOLINT(readability-redundant-member-init)
        /// The monitors of the desk, numbered from 0; none is one of 1280 by 800.
        QList<QRect> monitors = {}; // NOLINT(readability-redundant-member-init)
    };

    struct Outcome
    {
        int exitCode = 0;
        QByteArray output;
        QByteArray errors;
    };

    static constexpr std::chrono::milliseconds programLimit{5000};

    DesktopSession();
    explicit DesktopSession(const Options& options);
    ~DesktopSession();
    Q_DISABLE_COPY_MOVE(DesktopSession)

    /// The name of the display, ":1".
    [[nodiscard]] QByteArray display() const { return m_display; }
    /// The address of the session bus, empty without one.
    [[nodiscard]] QString sessionBusAddress() const { return m_busAddress; }
    /// What programs of this session get as their environment.
    [[nodiscard]] QProcessEnvironment environment() const { return m_environment; }
    /// The home folder of the session.
    [[nodiscard]] QString home() const { return m_home.path(); }
    /// The path of a file in the home folder, after writing `content` to it.
    [[nodiscard]] QString writeFile(const QString& name, const QByteArray& content) const;

    void setVariable(const QString& name, const QString& value);

    /// Starts a program that runs until it ends by itself or the session does.
    QProcess& start(const QString& program, const QStringList& arguments = {});

    /// Runs a program to its end, without running this thread's event loop.
    Outcome run(const QString& program, const QStringList& arguments = {},
                const QByteArray& input = {}, std::chrono::milliseconds limit = programLimit) const;

    /// Runs xdotool; throws if it fails. Yields what it printed, trimmed.
    QByteArray xdotool(const QStringList& arguments) const;

    /// The X window whose title matches the regular expression, as soon as it is visible.
    [[nodiscard]] QString waitForWindow(const QString& title) const;
    /// Gives the window the focus and waits until it has it.
    void focusWindow(const QString& window) const;

    /// Takes a monitor off the desk, or puts it there again, while everything runs.
    void unplugMonitor(int number) const;
    void plugMonitor(int number, const QRect& place) const;

    /// Saves what the screen shows as a PNG file.
    void screenshot(const QString& path) const;

    /// Stops a program without ending it, or lets it go on.
    static void freeze(const QProcess& process);
    static void thaw(const QProcess& process);
    /// Ends a program as a crash would.
    static void kill(QProcess& process);

    [[nodiscard]] QProcess& server() { return *m_server; }
    /// Ends the X server, as a crash of it would.
    void killServer();
    /// The same for the session bus.
    void killBus();

private:
    struct Bare
    {
    };

    explicit DesktopSession(Bare tag);
    void startServer(const Options& options);
    void runXrandr(const QStringList& arguments) const;
    void startBus();
    void startAccessibilityBus();
    void startWindowManager();
    std::unique_ptr<QProcess> prepare(const QString& program, const QStringList& arguments) const;

    QTemporaryDir m_home;
    QProcessEnvironment m_environment;
    QByteArray m_display;
    QString m_busAddress;
    QProcess* m_server = nullptr;
    QProcess* m_bus = nullptr;
    /// In the order of their start; ended in the opposite order.
    std::vector<std::unique_ptr<QProcess>> m_processes;
};

} // namespace zelvane::test
