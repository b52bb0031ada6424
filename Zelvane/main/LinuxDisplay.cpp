#include "main/Platform.h"

#include <QDir>
#include <QFile>
#include <QLibraryInfo>

#include <algorithm>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <xcb/xcb.h>

namespace zelvane {

namespace {

const char* const platformVariable = "QT_QPA_PLATFORM";

QString whatStillWorks()
{
    return QStringLiteral("; \"zelvane-desk translate\" and \"zelvane-desk defaults\" work "
                          "without one");
}

bool xAnswers()
{
    xcb_connection_t* connection = xcb_connect(nullptr, nullptr);
    const bool reached = xcb_connection_has_error(connection) == 0;
    xcb_disconnect(connection);
    return reached;
}

bool somethingListensAt(const QString& socketPath)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const QByteArray path = QFile::encodeName(socketPath);
    if (path.size() >= qsizetype(sizeof address.sun_path)) {
        return false;
    }
    std::ranges::copy(path, address.sun_path);
    const int descriptor = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const bool reached =
        ::connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    ::close(descriptor);
    return reached;
}

bool waylandAnswers()
{
    const QString name = qEnvironmentVariable("WAYLAND_DISPLAY", QStringLiteral("wayland-0"));
    return somethingListensAt(QDir(qEnvironmentVariable("XDG_RUNTIME_DIR")).filePath(name));
}

bool qtSpeaksWayland()
{
    QStringList folders = qEnvironmentVariable("QT_PLUGIN_PATH").split(u':', Qt::SkipEmptyParts);
    folders << QLibraryInfo::path(QLibraryInfo::PluginsPath);
    return std::ranges::any_of(folders, [](const QString& folder) {
        const QDir platforms(folder + QStringLiteral("/platforms"));
        return !platforms.entryList({QStringLiteral("libqwayland*")}, QDir::Files).isEmpty();
    });
}

} // namespace

std::optional<QString> chooseDisplay()
{
    if (qEnvironmentVariableIsSet(platformVariable)) {
        return std::nullopt; // the user knows better
    }
    if (xAnswers()) {
        // Also beside Wayland: panels that belong at the pointer can be placed nowhere there.
        qputenv(platformVariable, "xcb");
        return std::nullopt;
    }
    if (waylandAnswers()) {
        if (qtSpeaksWayland()) {
            return std::nullopt;
        }
        return QStringLiteral("this Wayland session has no X display, and Qt's plugin for Wayland "
                              "(qt6-wayland) is missing") +
               whatStillWorks();
    }
    const QString display = qEnvironmentVariable("DISPLAY");
    const QString what = display.isEmpty()
                             ? QStringLiteral("there is no X display (DISPLAY is not set)")
                             : QStringLiteral("the X display \"%1\" can't be reached").arg(display);
    return what + whatStillWorks();
}

} // namespace zelvane
