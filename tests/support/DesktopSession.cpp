#include "support/DesktopSession.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QThread>

#include <csignal>
#include <ranges>
#include <stdexcept>

#include <sys/prctl.h>

namespace zelvane::test {

namespace {

using namespace std::chrono_literals;

[[noreturn]] void giveUp(const QString& what)
{
    throw std::runtime_error("desktop session: " + what.toStdString());
}

/// In the child, before it becomes the program: it must not outlive a test program that crashes,
/// and it heads a group so that its own children end with it.
void bindToParent()
{
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    setpgid(0, 0);
}

void signalGroup(const QProcess& process, int signal)
{
    if (process.state() == QProcess::Running) {
        ::kill(-pid_t(process.processId()), signal);
    }
}

QSize deskAround(const QList<QRect>& monitors)
{
    QRect desk;
    for (const QRect& monitor : monitors) {
        desk |= monitor;
    }
    return desk.isNull() ? QSize(1280, 800) : desk.size();
}

QString asText(QSize size)
{
    return QStringLiteral("%1x%2").arg(size.width()).arg(size.height());
}

QString monitorName(int number)
{
    return QStringLiteral("monitor-%1").arg(number);
}

QByteArray readLine(QProcess& process, std::chrono::milliseconds limit)
{
    QDeadlineTimer deadline(limit);
    while (!process.canReadLine()) {
        if (deadline.hasExpired() || !process.waitForReadyRead(int(deadline.remainingTime()))) {
            giveUp(process.program() + QStringLiteral(" did not announce itself"));
        }
    }
    return process.readLine().trimmed();
}

} // namespace

DesktopSession::DesktopSession()
    : DesktopSession(Options{})
{
}

DesktopSession::DesktopSession(const Options& options)
    : DesktopSession(Bare())
{
    // From here on the destructor ends what was started, also if the next thing doesn't start.
    startServer(options);
    if (options.sessionBus) {
        startBus();
    }
    if (options.accessibilityBus) {
        startAccessibilityBus();
    }
    if (options.windowManager) {
        startWindowManager();
    }
}

DesktopSession::DesktopSession(Bare /*tag*/)
    : m_environment(QProcessEnvironment::systemEnvironment())
{
    for (const char* name :
         {"DBUS_SESSION_BUS_ADDRESS", "WAYLAND_DISPLAY", "XAUTHORITY", "AT_SPI_BUS_ADDRESS",
          "NO_AT_BRIDGE", "QT_QPA_PLATFORM", "SESSION_MANAGER"}) {
        m_environment.remove(QString::fromLatin1(name));
    }
    const QDir home(m_home.path());
    for (const char* folder : {"run", "config", "share", "cache"}) {
        home.mkpath(QString::fromLatin1(folder));
    }
    QFile::setPermissions(home.filePath(QStringLiteral("run")),
                          QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    setVariable(QStringLiteral("HOME"), m_home.path());
    setVariable(QStringLiteral("XDG_RUNTIME_DIR"), home.filePath(QStringLiteral("run")));
    setVariable(QStringLiteral("XDG_CONFIG_HOME"), home.filePath(QStringLiteral("config")));
    setVariable(QStringLiteral("XDG_DATA_HOME"), home.filePath(QStringLiteral("share")));
    setVariable(QStringLiteral("XDG_CACHE_HOME"), home.filePath(QStringLiteral("cache")));
    // Programs must not ask a settings service or a portal that isn't there.
    setVariable(QStringLiteral("GSETTINGS_BACKEND"), QStringLiteral("memory"));
    setVariable(QStringLiteral("GTK_USE_PORTAL"), QStringLiteral("0"));
}

DesktopSession::~DesktopSession()
{
    for (const auto& process : m_processes | std::views::reverse) {
        // Stopped programs don't hear the polite signal.
        signalGroup(*process, SIGCONT);
        signalGroup(*process, SIGTERM);
        if (!process->waitForFinished(300)) {
            kill(*process);
        }
    }
}

QString DesktopSession::writeFile(const QString& name, const QByteArray& content) const
{
    QFile file(QDir(m_home.path()).filePath(name));
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size()) {
        giveUp(QStringLiteral("cannot write ") + name);
    }
    return file.fileName();
}

void DesktopSession::setVariable(const QString& name, const QString& value)
{
    m_environment.insert(name, value);
}

std::unique_ptr<QProcess> DesktopSession::prepare(const QString& program,
                                                  const QStringList& arguments) const
{
    auto process = std::make_unique<QProcess>();
    process->setProgram(program);
    process->setArguments(arguments);
    process->setProcessEnvironment(m_environment);
    process->setWorkingDirectory(m_home.path());
    process->setChildProcessModifier(bindToParent);
    return process;
}

QProcess& DesktopSession::start(const QString& program, const QStringList& arguments)
{
    auto process = prepare(program, arguments);
    if (qEnvironmentVariableIsSet("ZELVANE_SESSION_VERBOSE")) {
        process->setProcessChannelMode(QProcess::ForwardedErrorChannel);
    } else {
        process->setStandardErrorFile(QProcess::nullDevice());
    }
    process->start();
    if (!process->waitForStarted(int(programLimit.count()))) {
        giveUp(program + QStringLiteral(" cannot be started: ") + process->errorString());
    }
    m_processes.push_back(std::move(process));
    return *m_processes.back();
}

DesktopSession::Outcome DesktopSession::run(const QString& program, const QStringList& arguments,
                                            const QByteArray& input,
                                            std::chrono::milliseconds limit) const
{
    const auto process = prepare(program, arguments);
    process->start();
    process->write(input);
    process->closeWriteChannel();
    if (!process->waitForFinished(int(limit.count()))) {
        const QString why = process->errorString();
        kill(*process);
        giveUp(program + QStringLiteral(" did not end: ") + why);
    }
    return {process->exitCode(), process->readAllStandardOutput(), process->readAllStandardError()};
}

QByteArray DesktopSession::xdotool(const QStringList& arguments) const
{
    const Outcome outcome = run(QStringLiteral("xdotool"), arguments);
    if (outcome.exitCode != 0) {
        giveUp(QStringLiteral("xdotool failed: ") + QString::fromUtf8(outcome.errors));
    }
    return outcome.output.trimmed();
}

QString DesktopSession::waitForWindow(const QString& title) const
{
    const QByteArray found =
        xdotool({QStringLiteral("search"), QStringLiteral("--sync"),
                 QStringLiteral("--onlyvisible"), QStringLiteral("--name"), title});
    return QString::fromLatin1(found.split('\n').first());
}

void DesktopSession::focusWindow(const QString& window) const
{
    xdotool({QStringLiteral("windowactivate"), QStringLiteral("--sync"), window});
}

void DesktopSession::screenshot(const QString& path) const
{
    const Outcome outcome =
        run(QStringLiteral("import"), {QStringLiteral("-window"), QStringLiteral("root"), path});
    if (outcome.exitCode != 0) {
        giveUp(QStringLiteral("no screenshot: ") + QString::fromUtf8(outcome.errors));
    }
}

void DesktopSession::unplugMonitor(int number) const
{
    runXrandr({QStringLiteral("--delmonitor"), monitorName(number)});
}

void DesktopSession::plugMonitor(int number, const QRect& place) const
{
    // The server's only output belongs to the first one.
    const QString output = number == 0 ? QStringLiteral("screen") : QStringLiteral("none");
    const QString geometry = QStringLiteral("%1/300x%2/200+%3+%4")
                                 .arg(place.width())
                                 .arg(place.height())
                                 .arg(place.x())
                                 .arg(place.y());
    runXrandr({QStringLiteral("--setmonitor"), monitorName(number), geometry, output});
}

void DesktopSession::runXrandr(const QStringList& arguments) const
{
    const Outcome outcome = run(QStringLiteral("xrandr"), arguments);
    if (outcome.exitCode != 0) {
        giveUp(QStringLiteral("xrandr failed: ") + QString::fromUtf8(outcome.errors));
    }
}

void DesktopSession::freeze(const QProcess& process)
{
    signalGroup(process, SIGSTOP);
}

void DesktopSession::thaw(const QProcess& process)
{
    signalGroup(process, SIGCONT);
}

void DesktopSession::kill(QProcess& process)
{
    signalGroup(process, SIGKILL);
    process.waitForFinished(int(programLimit.count()));
}

void DesktopSession::killServer()
{
    kill(*m_server);
}

void DesktopSession::killBus()
{
    kill(*m_bus);
}

void DesktopSession::startServer(const Options& options)
{
    const QSize desk = deskAround(options.monitors);
    const QStringList all{QStringLiteral("-displayfd"),
                          QStringLiteral("1"),
                          QStringLiteral("-screen"),
                          QStringLiteral("0"),
                          asText(desk) + QStringLiteral("x24"),
                          QStringLiteral("-nolisten"),
                          QStringLiteral("tcp"),
                          QStringLiteral("-noreset")};
    m_server = &start(QStringLiteral("Xvfb"), all + options.serverArguments);
    m_display = ":" + readLine(*m_server, programLimit);
    setVariable(QStringLiteral("DISPLAY"), QString::fromLatin1(m_display));
    for (int number = 0; number < options.monitors.size(); ++number) {
        plugMonitor(number, options.monitors[number]);
    }
}

void DesktopSession::startBus()
{
    QProcess& bus = start(QStringLiteral("dbus-daemon"),
                          {QStringLiteral("--session"), QStringLiteral("--nofork"),
                           QStringLiteral("--print-address=1")});
    m_bus = &bus;
    m_busAddress = QString::fromLatin1(readLine(bus, programLimit));
    setVariable(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), m_busAddress);
}

void DesktopSession::startAccessibilityBus()
{
    start(QStringLiteral("/usr/libexec/at-spi-bus-launcher"),
          {QStringLiteral("--launch-immediately")});
    const Outcome address =
        run(QStringLiteral("dbus-send"),
            {QStringLiteral("--session"), QStringLiteral("--print-reply=literal"),
             QStringLiteral("--dest=org.a11y.Bus"), QStringLiteral("/org/a11y/bus"),
             QStringLiteral("org.a11y.Bus.GetAddress")});
    if (address.exitCode != 0) {
        giveUp(QStringLiteral("no accessibility bus"));
    }
}

void DesktopSession::startWindowManager()
{
    start(QStringLiteral("openbox"), {QStringLiteral("--sm-disable")});
    QDeadlineTimer deadline(programLimit);
    while (
        !run(QStringLiteral("xprop"), {QStringLiteral("-root"), QStringLiteral("_NET_CLIENT_LIST")})
             .output.contains("window id")) {
        if (deadline.hasExpired()) {
            giveUp(QStringLiteral("the window manager did not come up"));
        }
        QThread::msleep(10);
    }
}

} // namespace zelvane::test
