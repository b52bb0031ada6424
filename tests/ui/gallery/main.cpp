// Shows each window of the program in each state, with made-up texts, and saves what it looks like.
//
// zelvane_gallery --out DIR [--scheme light|dark|both] [--only PART-OF-A-NAME] [--language CODE]
//                 [--points SIZE-OF-THE-LETTERS]
// zelvane_gallery --hold NAME     shows one window and ends when it is closed
// zelvane_gallery --time NAME     prints how fast a window appears, --frames NAME how fast it moves
//                                 (bench/windows)
// zelvane_gallery --tray          shows the tray icon, as soon as there is a tray, for ever

#include "foundation/SystemClock.h"
#include "settings/Localization.h"
#include "support/FakeSecretBackend.h"
#include "ui/gallery/Scenes.h"
#include "ui/gallery/Setting.h"
#include "ui/gallery/StandIn.h"
#include "ui/gallery/Timing.h"
#include "ui/linux/TrayWatcher.h"
#include "ui/menubar/MenuBarController.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QCursor>
#include <QDir>
#include <QJsonDocument>
#include <QPainter>
#include <QScreen>
#include <QTest>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <functional>
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
    explicit Backdrop(ColorScheme scheme, bool isCalm)
        : QWidget(nullptr, Qt::FramelessWindowHint | Qt::WindowStaysOnBottomHint)
        , m_dark(scheme == ColorScheme::dark)
        , m_isCalm(isCalm)
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
        if (m_isCalm) {
            return;
        }
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
    bool m_isCalm;
};

/// The tables of the style page stand for themselves; windows float over something.
int surroundings(const Scene& scene)
{
    return scene.name.startsWith(QStringLiteral("style-")) ? 0 : 24;
}

/// What a picture of `window` shows of the screen.
QRect pictured(const QWidget& window, int around)
{
    const QRect screen = QGuiApplication::primaryScreen()->geometry();
    return window.frameGeometry().adjusted(-around, -around, around, around) & screen;
}

QPixmap pictureOf(QWidget& window, QWidget& backdrop, int around)
{
    const QRect area = pictured(window, around);
    if (QGuiApplication::platformName() == QStringLiteral("xcb")) {
        return QGuiApplication::primaryScreen()->grabWindow(0, area.x(), area.y(), area.width(),
                                                            area.height());
    }
    QPixmap picture = backdrop.grab(area.translated(-backdrop.pos()));
    QPainter painter(&picture);
    window.render(&painter, window.geometry().topLeft() - area.topLeft());
    return picture;
}

/// Waits until the screen shows more than it did without the window: on a busy machine the server
/// and the compositor take their time.
void waitUntilShown(QWidget& window, QWidget& backdrop, int around, const QImage& without)
{
    const QImage bare = without.copy(pictured(window, around));
    for (int i = 0; i < 50; ++i) {
        QTest::qWait(settlingTime);
        if (pictureOf(window, backdrop, around).toImage() != bare) {
            break;
        }
    }
    QTest::qWait(settlingTime);
}

void say(const QString& line)
{
    std::printf("%s\n", qPrintable(line));
    std::fflush(stdout);
}

using Work = std::function<int(const Scene&, const Stage&)>;

/// Does `work` with one scene and what it is made with; the exit status.
int withScene(const QString& name, const Work& work)
{
    const Setting setting;
    const QList<Scene> scenes = allScenes();
    const auto scene = std::ranges::find(scenes, name, &Scene::name);
    if (scene == scenes.end()) {
        std::fprintf(stderr, "there is no scene %s\n", qPrintable(name));
        return 1;
    }
    return work(*scene, {setting.theme, *setting.windows});
}

int hold(const Scene& scene, const Stage& stage)
{
    const auto exhibit = scene.show(stage);
    QTimer watch;
    QObject::connect(&watch, &QTimer::timeout, qApp, [&exhibit] {
        if (!exhibit->window()) {
            QCoreApplication::quit();
        }
    });
    watch.start(20);
    QTimer::singleShot(0, qApp, [&exhibit] { exhibit->takeStep(); });
    return QCoreApplication::exec();
}

int print(const QJsonObject& measured)
{
    say(QString::fromUtf8(QJsonDocument(measured).toJson(QJsonDocument::Compact)));
    return 0;
}

int printAppearance(const Scene& scene, const Stage& stage)
{
    return print(timeAppearance(scene, stage));
}

int printFrames(const Scene& scene, const Stage& stage)
{
    return print(timeFrames(scene, stage));
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

/// Windows with a frame stand where the desktop likes them, which may be half off the backdrop.
void centre(QWidget& window)
{
    if (!(window.windowFlags() & Qt::FramelessWindowHint)) {
        const QRect screen = QGuiApplication::primaryScreen()->geometry();
        window.move(screen.center() - QRect(QPoint(0, 0), window.size()).center());
    }
}

int run(const QString& folder, const QList<ColorScheme>& schemes, const QString& only, bool isCalm)
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
        Backdrop backdrop(scheme, isCalm);
        backdrop.show();
        QTest::qWait(settlingTime);
        const QImage without = QGuiApplication::primaryScreen()->grabWindow(0).toImage();
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
            exhibit->takeStep();
            const int around = surroundings(scene);
            waitUntilShown(*exhibit->window(), backdrop, around, without);
            const QString file = QStringLiteral("%1/%2-%3.png")
                                     .arg(folder, scene.name,
                                          scheme == ColorScheme::dark ? QStringLiteral("dark")
                                                                      : QStringLiteral("light"));
            if (!pictureOf(*exhibit->window(), backdrop, around).save(file)) {
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
    arguments.addOption({QStringLiteral("calm"), QStringLiteral("No text behind the windows.")});
    arguments.addOption({QStringLiteral("points"), QStringLiteral("The size of the letters."),
                         QStringLiteral("points")});
    arguments.addOption({QStringLiteral("hold"),
                         QStringLiteral("Show one scene until it is closed."),
                         QStringLiteral("name")});
    arguments.addOption({QStringLiteral("time"),
                         QStringLiteral("Print how fast one scene appears, in milliseconds."),
                         QStringLiteral("name")});
    arguments.addOption({QStringLiteral("frames"),
                         QStringLiteral("Print what each frame of a moving scene costs."),
                         QStringLiteral("name")});
    arguments.addOption({QStringLiteral("tray"), QStringLiteral("Show the tray icon.")});
    arguments.addOption({QStringLiteral("busy"), QStringLiteral("Let the tray icon pulse.")});
    arguments.process(application);
    if (arguments.isSet(QStringLiteral("points"))) {
        QFont font = QApplication::font();
        font.setPointSizeF(arguments.value(QStringLiteral("points")).toDouble());
        QApplication::setFont(font);
    }
    zelvane::OverlayUserDefaults language;
    language.setValue(QStringLiteral("zv.appLanguage"),
                      arguments.value(QStringLiteral("language")));
    zelvane::installLocalization(&language);
    const QList<std::pair<QString, zelvane::gallery::Work>> works{
        {QStringLiteral("hold"), zelvane::gallery::hold},
        {QStringLiteral("time"), zelvane::gallery::printAppearance},
        {QStringLiteral("frames"), zelvane::gallery::printFrames}};
    for (const auto& [option, work] : works) {
        if (arguments.isSet(option)) {
            return zelvane::gallery::withScene(arguments.value(option), work);
        }
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
                                 arguments.value(QStringLiteral("only")),
                                 arguments.isSet(QStringLiteral("calm")));
}
