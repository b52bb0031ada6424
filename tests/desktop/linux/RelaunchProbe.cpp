// Relaunches itself through the adapter. The first instance holds a hotkey and ends by the
// relaunch; the second says how it was started and whether the hotkey is free.

#include "desktop/linux/X11AccessibilityPlatform.h"
#include "desktop/linux/X11HotKeyRegistrar.h"

#include <QCoreApplication>
#include <QFile>
#include <QThread>
#include <QTimer>

namespace {

constexpr int ownExit = 7;
constexpr zelvane::KeyChord chord{17, zelvane::KeyChord::control | zelvane::KeyChord::option};

void report(const QString& path, const QStringList& lines)
{
    QFile unfinished(path + QStringLiteral(".new"));
    if (unfinished.open(QIODevice::WriteOnly)) {
        unfinished.write(lines.join(u'\n').toUtf8());
        unfinished.close();
        unfinished.rename(path);
    }
}

} // namespace

/// Arguments: a file that marks the first instance, the file for the report, and any others.
int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    auto session = zelvane::X11Session::open();
    if (!session || arguments.size() < 3) {
        return 1;
    }
    zelvane::X11HotKeyRegistrar registrar(**session);
    const bool hasHotKey = registrar.registerHotKey(chord, {1, 1}).has_value();

    const QString& marker = arguments[1];
    if (!QFile::remove(marker)) {
        report(arguments[2], arguments.sliced(3)
                                 << (hasHotKey ? QStringLiteral("has the hotkey")
                                               : QStringLiteral("lacks the hotkey")));
        return 0;
    }
    QTimer::singleShot(0, &application, [&] {
        zelvane::X11AccessibilityPlatform platform(session->get(), nullptr);
        platform.relaunch();
    });
    // Ends late, so that both instances live at the same time.
    QObject::connect(&application, &QCoreApplication::aboutToQuit, &application, [&] {
        QFile done(arguments[2]);
        for (int i = 0; i < 300 && !done.exists(); ++i) {
            QThread::msleep(10);
        }
    });
    QCoreApplication::exec();
    return ownExit;
}
