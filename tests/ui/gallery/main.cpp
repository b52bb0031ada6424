// Shows each window of the program in each state, with made-up texts, and saves what it looks like.
//
// zelvane_gallery --out DIR [--scheme light|dark|both] [--only PART-OF-A-NAME] [--language CODE]
// zelvane_gallery --hold NAME     shows one window and ends when it is closed
// zelvane_gallery --time [--only PART-OF-A-NAME]      prints how fast windows appear
// zelvane_gallery --tray          shows the tray icon, as soon as there is a tray, for ever

#include "foundation/SystemClock.h"
#include "settings/Localization.h"
#include "support/FakeSecretBackend.h"
#include "ui/gallery/Scenes.h"
#include "ui/gallery/StandIn.h"
#include "ui/linux/LinuxAppearance.h"
#include "ui/linux/TrayWatcher.h"
#include "ui/linux/X11WindowSystem.h"
#include "ui/menubar/MenuBarController.h"
#include "ui/style/InterfaceStyle.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QCursor>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QPainter>
#include <QPainterPath>
#include <QScreen>
#include <QTest>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <utility>

namespace zelvane::gallery {

namespace {

/// For the desktop to show a window and its compositor to paint it.
constexpr int settlingTime = 350;

/// What lies behind the windows: a calm picture with some text, so that shadows and translucency
/// can be judged.
class Backdrop final : public QWidget
{
public:
    explicit Backdrop(ColorScheme scheme)
        : QWidget(nullptr, Qt::FramelessWindowHint | Qt::WindowStaysOnBottomHint)
        , m_dark(scheme == ColorScheme::dark)
    {
        setGeometry(QGuiApplication::primaryScreen()->geometry());
    }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        QLinearGradient sky(0, 0, width(), height());
        sky.setColorAt(0, m_dark ? QColor(0x1d, 0x23, 0x35) : QColor(0xd5, 0xe3, 0xf5));
        sky.setColorAt(1, m_dark ? QColor(0x3a, 0x2a, 0x3d) : QColor(0xf3, 0xdf, 0xd6));
        painter.fillRect(rect(), sky);
        const QRect page = rect().adjusted(60, 60, -60, -60);
        painter.fillRect(page, m_dark ? QColor(0x17, 0x17, 0x1a) : QColor(Qt::white));
        painter.setPen(m_dark ? QColor(0xc8, 0xc8, 0xd0) : QColor(0x33, 0x33, 0x38));
        QString text;
        for (int i = 0; i < 120; ++i) {
            text += QStringLiteral("The tide came in over the flats and took the footprints. ");
        }
        painter.drawText(page.adjusted(24, 20, -24, -20), Qt::TextWordWrap, text);
    }

private:
    bool m_dark;
};

/// The tables of the style page stand for themselves; windows float over something.
int surroundings(const Scene& scene)
{
    return scene.name.startsWith(QStringLiteral("style-")) ? 0 : 24;
}

QPixmap pictureOf(QWidget& window, QWidget& backdrop, int around)
{
    const QRect area = window.frameGeometry().adjusted(-around, -around, around, around);
    if (QGuiApplication::platformName() == QStringLiteral("xcb")) {
        return QGuiApplication::primaryScreen()->grabWindow(0, area.x(), area.y(), area.width(),
                                                            area.height());
    }
    QPixmap picture = backdrop.grab(area.translated(-backdrop.pos()));
    QPainter painter(&picture);
    window.render(&painter, window.geometry().topLeft() - area.topLeft());
    return picture;
}

/// What the program's own start would set up.
struct Setting
{
    StyleTweaker tokens;
    DesktopAppearance appearance;
    LinuxAppearance desktop{appearance, QDBusConnection::sessionBus()};
    std::unique_ptr<WindowSystem> windows = sessionWindowSystem();
    Theme theme{tokens, appearance};

    Setting() { dressApplication(theme); }
    /// The style refers to the theme, and the application outlives both.
    ~Setting() { QApplication::setStyle(QStringLiteral("Fusion")); }
    Q_DISABLE_COPY_MOVE(Setting)
};

void say(const QString& line)
{
    std::printf("%s\n", qPrintable(line));
    std::fflush(stdout);
}

int hold(const QString& name)
{
    const Setting setting;
    const QList<Scene> scenes = allScenes();
    const auto scene = std::ranges::find(scenes, name, &Scene::name);
    if (scene == scenes.end()) {
        std::fprintf(stderr, "there is no scene %s\n", qPrintable(name));
        return 1;
    }
    const auto exhibit = scene->show({setting.theme, *setting.windows});
    QTimer watch;
    QObject::connect(&watch, &QTimer::timeout, qApp, [&exhibit] {
        if (!exhibit->window()) {
            QCoreApplication::quit();
        }
    });
    watch.start(20);
    return QCoreApplication::exec();
}

QString described(const QString& what, const QRect& place)
{
    return QStringLiteral("%1 at %2,%3 of %4x%5")
        .arg(what)
        .arg(place.x())
        .arg(place.y())
        .arg(place.width())
        .arg(place.height());
}

void sayIfNew(QString& last, const QString& now)
{
    if (std::exchange(last, now) != now) {
        say(now);
    }
}

/// Tells where icon and panel are, and what the user chooses.
int showTray(bool busy)
{
    const Setting setting;
    OverlayUserDefaults defaults;
    test::FakeSecretBackend backend;
    SecretStore secrets(defaults, backend);
    const AppSettings settings(defaults, secrets, QStringLiteral("German"));
    StandIn state;
    state.isBusy = busy;
    const TrayWatcher tray(QDBusConnection::sessionBus());
    MenuBarModel model(settings, &state.status, &state.isBusy);
    SystemClock clock;
    const MenuBarController controller(
        model, setting.theme, clock, tray.bindableAvailable(),
        {.manualTranslation = [] { say(QStringLiteral("translation window")); },
         .settings = [] { say(QStringLiteral("settings")); },
         .quit = [] { QCoreApplication::quit(); }});
    say(tray.available() ? QStringLiteral("there is a tray") : QStringLiteral("no tray"));
    QTimer watch;
    const auto icon = [&] {
        const QRect place = controller.trayIcon() ? controller.trayIcon()->geometry() : QRect();
        return place.isValid() ? described(QStringLiteral("icon"), place) : QString();
    };
    const auto panel = [&] {
        return controller.panel()
                   ? described(QStringLiteral("panel"), controller.panel()->panelFrame())
                   : QStringLiteral("no panel");
    };
    QObject::connect(&watch, &QTimer::timeout, qApp,
                     [&, lastIcon = QString(), lastPanel = panel()]() mutable {
                         sayIfNew(lastIcon, icon());
                         sayIfNew(lastPanel, panel());
                     });
    watch.start(50);
    return QCoreApplication::exec();
}

/// Notes when a window has painted its content for the first time.
class FirstPaint final : public QObject
{
public:
    using QObject::QObject;

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        const auto* widget = qobject_cast<QWidget*>(watched);
        if (event->type() == QEvent::Paint && widget && widget->isWindow() && !painted) {
            // The window is painted from the back to the front; this very turn paints it all.
            QTimer::singleShot(0, this, [this] { painted = true; });
        }
        return false;
    }

    bool painted = false;
};

double processorMilliseconds()
{
    return double(std::clock()) * 1000 / CLOCKS_PER_SEC;
}

/// The memory that is this process's own, in megabytes.
double privateMegabytes()
{
    QFile rollup(QStringLiteral("/proc/self/smaps_rollup"));
    double kilobytes = 0;
    if (rollup.open(QIODevice::ReadOnly)) {
        for (const QByteArray& line : rollup.readAll().split('\n')) {
            if (line.startsWith("Private_")) {
                kilobytes += line.simplified().split(' ').value(1).toDouble();
            }
        }
    }
    return kilobytes / 1024;
}

/// From the request for a window to its first frame.
struct Appearance
{
    double milliseconds = 0;
    double processor = 0;
};

Appearance appear(const Scene& scene, const Setting& setting, std::unique_ptr<Exhibit>& exhibit)
{
    FirstPaint paint;
    qApp->installEventFilter(&paint);
    QElapsedTimer timer;
    timer.start();
    const double before = processorMilliseconds();
    exhibit = scene.show({setting.theme, *setting.windows});
    while (!paint.painted && timer.elapsed() < 5000) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return {double(timer.nsecsElapsed()) / 1e6, processorMilliseconds() - before};
}

/// Prints for each scene how long it takes from the request for a window to its first frame, in all
/// and of this program's processor time: once cold, and the median of ten times warm. Then the
/// memory before the first window, with one open, and after the last.
int measure(const QString& only)
{
    const Setting setting;
    QTest::qWait(settlingTime);
    for (const Scene& scene : allScenes()) {
        if (!scene.name.contains(only)) {
            continue;
        }
        const double before = privateMegabytes();
        double open = 0;
        QList<double> times;
        QList<double> processor;
        for (int i = 0; i < 11; ++i) {
            std::unique_ptr<Exhibit> exhibit;
            const Appearance appearance = appear(scene, setting, exhibit);
            times.append(appearance.milliseconds);
            processor.append(appearance.processor);
            // The window manager and the compositor have to be done with it as well.
            QTest::qWait(settlingTime);
            open = privateMegabytes();
            exhibit.reset();
            QTest::qWait(settlingTime);
        }
        const double cold = times.takeFirst();
        const double coldProcessor = processor.takeFirst();
        std::ranges::sort(times);
        std::ranges::sort(processor);
        const auto number = [](double value) { return QString::number(value, 'f', 1); };
        say(QStringLiteral("%1: %2 ms cold (processor %3), %4 ms warm (processor %5); "
                           "%6 MB before, %7 open, %8 closed")
                .arg(scene.name, number(cold), number(coldProcessor),
                     number(times[times.size() / 2]), number(processor[processor.size() / 2]),
                     number(before), number(open), number(privateMegabytes())));
    }
    return 0;
}

/// Windows with a frame stand where the desktop likes them, which may be half off the backdrop.
void centre(QWidget& window)
{
    if (!(window.windowFlags() & Qt::FramelessWindowHint)) {
        const QRect screen = QGuiApplication::primaryScreen()->geometry();
        window.move(screen.center() - QRect(QPoint(0, 0), window.size()).center());
    }
}

int run(const QString& folder, const QList<ColorScheme>& schemes, const QString& only)
{
    Setting setting;
    DesktopAppearance& appearance = setting.appearance;
    const Theme& theme = setting.theme;
    if (QGuiApplication::platformName() != QStringLiteral("xcb")) {
        appearance.setCompositing(true);
    }
    if (!QDir().mkpath(folder)) {
        std::fprintf(stderr, "cannot make the folder %s\n", qPrintable(folder));
        return 1;
    }
    // Nothing shall be hovered over.
    QCursor::setPos(QGuiApplication::primaryScreen()->geometry().bottomRight());
    for (const ColorScheme scheme : schemes) {
        appearance.setColorScheme(scheme);
        Backdrop backdrop(scheme);
        backdrop.show();
        QTest::qWait(settlingTime);
        for (const Scene& scene : allScenes()) {
            if (!scene.name.contains(only)) {
                continue;
            }
            const auto exhibit = scene.show({theme, *setting.windows});
            if (!QTest::qWaitForWindowExposed(exhibit->window())) {
                std::fprintf(stderr, "%s did not appear\n", qPrintable(scene.name));
                return 1;
            }
            centre(*exhibit->window());
            QTest::qWait(settlingTime);
            const QString file = QStringLiteral("%1/%2-%3.png")
                                     .arg(folder, scene.name,
                                          scheme == ColorScheme::dark ? QStringLiteral("dark")
                                                                      : QStringLiteral("light"));
            if (!pictureOf(*exhibit->window(), backdrop, surroundings(scene)).save(file)) {
                std::fprintf(stderr, "cannot write %s\n", qPrintable(file));
                return 1;
            }
            say(file);
        }
    }
    return 0;
}

} // namespace

} // namespace zelvane::gallery

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    QCoreApplication::setApplicationVersion(QStringLiteral("1.0.0"));
    QCommandLineParser arguments;
    arguments.addHelpOption();
    arguments.addOption({QStringLiteral("out"), QStringLiteral("Where the pictures go."),
                         QStringLiteral("folder"), QStringLiteral("build/screenshots")});
    arguments.addOption({QStringLiteral("scheme"), QStringLiteral("light, dark or both."),
                         QStringLiteral("scheme"), QStringLiteral("both")});
    arguments.addOption({QStringLiteral("only"), QStringLiteral("A part of the scenes' names."),
                         QStringLiteral("name")});
    arguments.addOption({QStringLiteral("language"),
                         QStringLiteral("The interface's language, as it is stored: de, hi."),
                         QStringLiteral("language"), QStringLiteral("en")});
    arguments.addOption({QStringLiteral("hold"),
                         QStringLiteral("Show one scene until it is closed."),
                         QStringLiteral("name")});
    arguments.addOption({QStringLiteral("time"), QStringLiteral("Print how fast windows appear.")});
    arguments.addOption({QStringLiteral("tray"), QStringLiteral("Show the tray icon.")});
    arguments.addOption({QStringLiteral("busy"), QStringLiteral("Let the tray icon pulse.")});
    arguments.process(application);
    zelvane::OverlayUserDefaults language;
    language.setValue(QStringLiteral("zv.appLanguage"),
                      arguments.value(QStringLiteral("language")));
    zelvane::installLocalization(&language);
    if (arguments.isSet(QStringLiteral("hold"))) {
        return zelvane::gallery::hold(arguments.value(QStringLiteral("hold")));
    }
    if (arguments.isSet(QStringLiteral("time"))) {
        return zelvane::gallery::measure(arguments.value(QStringLiteral("only")));
    }
    if (arguments.isSet(QStringLiteral("tray"))) {
        QApplication::setQuitOnLastWindowClosed(false);
        return zelvane::gallery::showTray(arguments.isSet(QStringLiteral("busy")));
    }

    using zelvane::ColorScheme;
    const QString scheme = arguments.value(QStringLiteral("scheme"));
    QList<ColorScheme> schemes{ColorScheme::light, ColorScheme::dark};
    if (scheme == QStringLiteral("light")) {
        schemes = {ColorScheme::light};
    } else if (scheme == QStringLiteral("dark")) {
        schemes = {ColorScheme::dark};
    }
    return zelvane::gallery::run(arguments.value(QStringLiteral("out")), schemes,
                                 arguments.value(QStringLiteral("only")));
}
