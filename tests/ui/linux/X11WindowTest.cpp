// The windows as a real X server, window manager and compositor see them. The windows belong to the
// gallery, a program of its own.

#include "support/Await.h"
#include "support/DesktopSession.h"
#include "support/QtPrinters.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QRect>
#include <QRegularExpression>

namespace zelvane::test {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

class X11WindowTest : public ::testing::Test
{
protected:
    explicit X11WindowTest(bool windowManager = true)
        : m_session({.windowManager = windowManager,
                     .serverArguments = {QStringLiteral("-screen"), QStringLiteral("0"),
                                         QStringLiteral("1280x960x24")}})
    {
    }

    /// A window of another program, over the whole screen, that tells of each key and click.
    void startForeignProgram()
    {
        m_foreign = &m_session.start(QStringLiteral("xev"),
                                     {QStringLiteral("-name"), QStringLiteral("Foreign"),
                                      QStringLiteral("-geometry"), QStringLiteral("1280x960+0+0"),
                                      QStringLiteral("-event"), QStringLiteral("keyboard"),
                                      QStringLiteral("-event"), QStringLiteral("button")});
        m_foreignWindow = m_session.waitForWindow(QStringLiteral("Foreign"));
    }

    /// Asks until it is so: a window manager that has not taken the window over yet does not
    /// listen.
    void focusForeignProgram()
    {
        ASSERT_TRUE(waitUntil(
            [&] {
                m_session.run(QStringLiteral("xdotool"),
                              {QStringLiteral("windowactivate"), m_foreignWindow});
                return activeWindow() == m_foreignWindow.toLatin1();
            },
            5s));
    }

    QProcess& show(const QString& scene)
    {
        return m_session.start(QStringLiteral(ZELVANE_GALLERY), {QStringLiteral("--hold"), scene});
    }

    [[nodiscard]] QByteArray activeWindow() const
    {
        return m_session.run(QStringLiteral("xdotool"), {QStringLiteral("getactivewindow")})
            .output.trimmed();
    }

    [[nodiscard]] bool becomesActive(const QString& window) const
    {
        return waitUntil([&] { return activeWindow() == window.toLatin1(); }, 5s);
    }

    [[nodiscard]] QString property(const QString& window, const char* name) const
    {
        return QString::fromLatin1(
            m_session
                .run(QStringLiteral("xprop"), {QStringLiteral("-id"), window, QLatin1String(name)})
                .output);
    }

    [[nodiscard]] QRect geometry(const QString& window) const
    {
        const QString text = QString::fromLatin1(m_session.xdotool(
            {QStringLiteral("getwindowgeometry"), QStringLiteral("--shell"), window}));
        const auto number = [&](const char* name) {
            const QRegularExpression line(QStringLiteral("^%1=(-?\\d+)$").arg(QLatin1String(name)),
                                          QRegularExpression::MultilineOption);
            return line.match(text).captured(1).toInt();
        };
        return {number("X"), number("Y"), number("WIDTH"), number("HEIGHT")};
    }

    [[nodiscard]] QProcess& startCompositor()
    {
        return m_session.start(QStringLiteral("picom"),
                               {QStringLiteral("--backend"), QStringLiteral("xrender"),
                                QStringLiteral("--config"), QStringLiteral("/dev/null")});
    }

    [[nodiscard]] bool becomes(const QString& window, QSize size) const
    {
        return waitUntil([&] { return geometry(window).size() == size; }, 5s);
    }

    DesktopSession m_session;
    QProcess* m_foreign = nullptr;
    QString m_foreignWindow;
};

TEST_F(X11WindowTest, popupFloatsWithTheKeyboardAndOutOfTheTaskbar)
{
    startForeignProgram();
    focusForeignProgram();
    show(QStringLiteral("popup-short"));
    const QString popup = m_session.waitForWindow(QStringLiteral("^Translation$"));
    EXPECT_TRUE(becomesActive(popup));
    const std::string states = property(popup, "_NET_WM_STATE").toStdString();
    EXPECT_THAT(states, HasSubstr("_NET_WM_STATE_ABOVE"));
    EXPECT_THAT(states, HasSubstr("_NET_WM_STATE_SKIP_TASKBAR"));
    EXPECT_THAT(states, HasSubstr("_NET_WM_STATE_SKIP_PAGER"));

    // It stays above, also when the user goes on in the other program.
    focusForeignProgram();
    const QString stacking = QString::fromLatin1(
        m_session
            .run(QStringLiteral("xprop"),
                 {QStringLiteral("-root"), QStringLiteral("_NET_CLIENT_LIST_STACKING")})
            .output.trimmed());
    EXPECT_TRUE(stacking.endsWith(QStringLiteral("0x%1").arg(popup.toUInt(), 0, 16)))
        << stacking.toStdString();
}

TEST_F(X11WindowTest, escClosesThePopupAndGivesTheKeyboardBack)
{
    startForeignProgram();
    focusForeignProgram();
    QProcess& gallery = show(QStringLiteral("popup-short"));
    ASSERT_TRUE(becomesActive(m_session.waitForWindow(QStringLiteral("^Translation$"))));
    m_session.xdotool({QStringLiteral("key"), QStringLiteral("Escape")});
    EXPECT_TRUE(becomesActive(m_foreignWindow));
    EXPECT_TRUE(waitUntil([&] { return gallery.state() == QProcess::NotRunning; }, 5s));
    EXPECT_EQ(gallery.exitCode(), 0);
    // Nothing of the key press reached the other program.
    m_foreign->waitForReadyRead(100);
    EXPECT_FALSE(m_foreign->readAllStandardOutput().contains("Escape"));
}

TEST_F(X11WindowTest, alertIsInFrontAndReturnAnswersIt)
{
    startForeignProgram();
    focusForeignProgram();
    QProcess& gallery = show(QStringLiteral("alert-three"));
    ASSERT_TRUE(becomesActive(m_session.waitForWindow(QStringLiteral("^Translation failed$"))));
    m_session.xdotool({QStringLiteral("key"), QStringLiteral("Return")});
    EXPECT_TRUE(becomesActive(m_foreignWindow));
    EXPECT_TRUE(waitUntil([&] { return gallery.state() == QProcess::NotRunning; }, 5s));
}

TEST_F(X11WindowTest, shadowComesAndGoesWithTheCompositor)
{
    show(QStringLiteral("popup-short"));
    const QString popup = m_session.waitForWindow(QStringLiteral("^Translation$"));
    EXPECT_TRUE(becomes(popup, {520, 280}));
    const QPoint middle = geometry(popup).center();

    QProcess& compositor = startCompositor();
    EXPECT_TRUE(becomes(popup, {520 + 2 * 39, 280 + 2 * 39}));
    // The shadow lies lower than the panel, which itself has not moved.
    EXPECT_EQ(geometry(popup).center(), middle + QPoint(0, 7));
    EXPECT_THAT(property(popup, "_GTK_FRAME_EXTENTS").toStdString(), HasSubstr("39, 39, 32, 46"));

    DesktopSession::kill(compositor);
    EXPECT_TRUE(becomes(popup, {520, 280}));
}

TEST_F(X11WindowTest, panelsLetThroughWhatTheCompositorBlurs)
{
    (void)startCompositor();
    show(QStringLiteral("popup-short"));
    const QString popup = m_session.waitForWindow(QStringLiteral("^Translation$"));
    ASSERT_TRUE(becomes(popup, {598, 358}));
    const char* blur = "_KDE_NET_WM_BLUR_BEHIND_REGION";
    EXPECT_THAT(property(popup, blur).toStdString(), HasSubstr("not found"));

    const auto announce = [&](const QStringList& how) {
        m_session.run(QStringLiteral("xprop"), QStringList{QStringLiteral("-root")} + how);
    };
    announce({QStringLiteral("-f"), QLatin1String(blur), QStringLiteral("32c"),
              QStringLiteral("-set"), QLatin1String(blur), QStringLiteral("0")});
    // The middle of the panel, between its rounded upper and lower ends.
    EXPECT_TRUE(waitUntil(
        [&] { return property(popup, blur).contains(QStringLiteral(" 39, 48, 520, 249")); }, 5s))
        << property(popup, blur).toStdString();
    announce({QStringLiteral("-remove"), QLatin1String(blur)});
    EXPECT_TRUE(
        waitUntil([&] { return property(popup, blur).contains(QStringLiteral("not found")); }, 5s));
}

/// Some window managers put a frame of their own around each window, which stops clicks.
class FramelessX11WindowTest : public X11WindowTest
{
protected:
    FramelessX11WindowTest()
        : X11WindowTest(false)
    {
    }
};

TEST_F(FramelessX11WindowTest, clicksOnTheShadowFallThrough)
{
    (void)startCompositor();
    startForeignProgram();
    show(QStringLiteral("popup-short"));
    const QString popup = m_session.waitForWindow(QStringLiteral("^Translation$"));
    ASSERT_TRUE(becomes(popup, {598, 358}));
    m_foreign->readAllStandardOutput();
    const QRect window = geometry(popup);
    const auto click = [&](QPoint point) {
        m_session.xdotool({QStringLiteral("mousemove"), QString::number(point.x()),
                           QString::number(point.y()), QStringLiteral("click"),
                           QStringLiteral("1")});
    };
    const auto foreignClicks = [&] {
        m_foreign->waitForReadyRead(200);
        return m_foreign->readAllStandardOutput().count("ButtonPress");
    };
    click(window.center());
    EXPECT_EQ(foreignClicks(), 0);
    click(window.topLeft() + QPoint(12, 150));
    EXPECT_EQ(foreignClicks(), 1);
}

TEST_F(X11WindowTest, headerDragsThePopup)
{
    show(QStringLiteral("popup-short"));
    const QString popup = m_session.waitForWindow(QStringLiteral("^Translation$"));
    ASSERT_TRUE(becomes(popup, {520, 280}));
    const QRect before = geometry(popup);
    const auto move = [&](QPoint point) {
        m_session.xdotool(
            {QStringLiteral("mousemove"), QString::number(point.x()), QString::number(point.y())});
    };
    const QPoint grip = before.topLeft() + QPoint(300, 34);
    move(grip);
    m_session.xdotool({QStringLiteral("mousedown"), QStringLiteral("1")});
    for (int step = 1; step <= 10; ++step) {
        move(grip + QPoint(10 * step, 8 * step));
    }
    m_session.xdotool({QStringLiteral("mouseup"), QStringLiteral("1")});
    EXPECT_TRUE(waitUntil(
        [&] { return geometry(popup).topLeft() == before.topLeft() + QPoint(100, 80); }, 5s))
        << geometry(popup).x() << ' ' << geometry(popup).y();
}

/// A tray at the bottom of the screen, and the program's item in it.
class TrayTest : public X11WindowTest
{
protected:
    void startTray()
    {
        const QString panel = m_session.writeFile(
            QStringLiteral("tint2rc"),
            "panel_items = S\npanel_position = bottom right horizontal\npanel_size = 200 32\n"
            "systray_icon_size = 22\n");
        m_session.start(QStringLiteral("tint2"), {QStringLiteral("-c"), panel});
    }

    void startItem()
    {
        m_item = &m_session.start(QStringLiteral(ZELVANE_GALLERY), {QStringLiteral("--tray")});
    }

    /// What the item says next that begins with `beginning`; empty if it doesn't.
    [[nodiscard]] QString hear(const QString& beginning)
    {
        QString heard;
        waitUntil(
            [&] {
                m_item->waitForReadyRead(20);
                m_said += QString::fromUtf8(m_item->readAllStandardOutput()).split(u'\n');
                while (heard.isEmpty() && !m_said.isEmpty()) {
                    const QString line = m_said.takeFirst();
                    heard = line.startsWith(beginning) ? line : QString();
                }
                return !heard.isEmpty();
            },
            5s);
        return heard;
    }

    [[nodiscard]] QRect hearPlace(const QString& what)
    {
        static const QRegularExpression form(
            QStringLiteral(" at (-?\\d+),(-?\\d+) of (\\d+)x(\\d+)"));
        const auto match = form.match(hear(what + QStringLiteral(" at ")));
        const auto number = [&](int index) { return match.captured(index).toInt(); };
        return {number(1), number(2), number(3), number(4)};
    }

    void click(QPoint point)
    {
        m_session.xdotool({QStringLiteral("mousemove"), QString::number(point.x()),
                           QString::number(point.y()), QStringLiteral("click"),
                           QStringLiteral("1")});
    }

    void press(const QString& key) { m_session.xdotool({QStringLiteral("key"), key}); }

    /// Icon and open panel.
    void open()
    {
        startTray();
        startItem();
        m_icon = hearPlace(QStringLiteral("icon"));
        // The tray moves an icon about while it makes room.
        m_session.run(QStringLiteral("sleep"), {QStringLiteral("0.5")});
        while (m_item->bytesAvailable() > 0 || m_item->waitForReadyRead(50)) {
            const QRect later = hearPlace(QStringLiteral("icon"));
            m_icon = later.isValid() ? later : m_icon;
        }
        click(m_icon.center());
        m_panel = hearPlace(QStringLiteral("panel"));
    }

    QProcess* m_item = nullptr;
    QStringList m_said;
    QRect m_icon;
    QRect m_panel;
};

TEST_F(TrayTest, iconAppearsInATrayThatComesLate)
{
    startItem();
    ASSERT_FALSE(hear(QStringLiteral("no tray")).isEmpty());
    startTray();
    EXPECT_TRUE(hearPlace(QStringLiteral("icon")).isValid());
}

TEST_F(TrayTest, aClickOpensThePanelAboveTheIconAndAnotherOneClosesIt)
{
    open();
    ASSERT_TRUE(m_panel.isValid());
    EXPECT_EQ(m_panel.width(), 320);
    EXPECT_LT(m_panel.bottom(), m_icon.top());
    EXPECT_GT(m_panel.bottom(), m_icon.top() - 40);
    EXPECT_TRUE(QRect(0, 0, 1280, 960).contains(m_panel));
    click(m_icon.center());
    EXPECT_FALSE(hear(QStringLiteral("no panel")).isEmpty());
    // It stays closed: the click that closed it does not count twice.
    EXPECT_FALSE(m_item->waitForReadyRead(600));
    click(m_icon.center());
    EXPECT_TRUE(hearPlace(QStringLiteral("panel")).isValid());
}

TEST_F(TrayTest, aClickElsewhereClosesThePanel)
{
    startForeignProgram();
    open();
    ASSERT_TRUE(m_panel.isValid());
    click({100, 100});
    EXPECT_FALSE(hear(QStringLiteral("no panel")).isEmpty());
}

TEST_F(TrayTest, thePanelHasTheKeyboardAndGivesItBack)
{
    startForeignProgram();
    focusForeignProgram();
    open();
    ASSERT_TRUE(m_panel.isValid());
    m_foreign->readAllStandardOutput();
    press(QStringLiteral("Tab"));
    press(QStringLiteral("Escape"));
    EXPECT_FALSE(hear(QStringLiteral("no panel")).isEmpty());
    m_foreign->waitForReadyRead(100);
    EXPECT_FALSE(m_foreign->readAllStandardOutput().contains("KeyPress event"));
    press(QStringLiteral("a"));
    QByteArray typed;
    EXPECT_TRUE(waitUntil(
        [&] {
            m_foreign->waitForReadyRead(20);
            typed += m_foreign->readAllStandardOutput();
            return typed.contains("keysym 0x61, a");
        },
        5s));
}

TEST_F(TrayTest, keysOfThePanelRunItsCommands)
{
    open();
    ASSERT_TRUE(m_panel.isValid());
    press(QStringLiteral("Return"));
    EXPECT_FALSE(hear(QStringLiteral("translation window")).isEmpty());
    EXPECT_FALSE(hear(QStringLiteral("no panel")).isEmpty());
    click(m_icon.center());
    ASSERT_TRUE(hearPlace(QStringLiteral("panel")).isValid());
    press(QStringLiteral("ctrl+comma"));
    EXPECT_FALSE(hear(QStringLiteral("settings")).isEmpty());
    EXPECT_FALSE(hear(QStringLiteral("no panel")).isEmpty());
    click(m_icon.center());
    ASSERT_TRUE(hearPlace(QStringLiteral("panel")).isValid());
    press(QStringLiteral("ctrl+q"));
    EXPECT_TRUE(waitUntil([&] { return m_item->state() == QProcess::NotRunning; }, 5s));
}

} // namespace
} // namespace zelvane::test
