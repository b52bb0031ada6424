#include "ui/menubar/MenuBarController.h"

#include "support/Await.h"
#include "ui/AccessibleWalk.h"
#include "ui/UiFixture.h"
#include "ui/style/InterfaceStyle.h"

#include <gmock/gmock.h>

namespace zelvane::test {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;

TEST(PulseOpacity, sinksToAQuarterAndComesBack)
{
    EXPECT_DOUBLE_EQ(pulseOpacity(0ms), 1);
    EXPECT_DOUBLE_EQ(pulseOpacity(350ms), 0.625);
    EXPECT_DOUBLE_EQ(pulseOpacity(700ms), 0.25);
    EXPECT_DOUBLE_EQ(pulseOpacity(1050ms), 0.625);
    EXPECT_NEAR(pulseOpacity(1400ms), 1, 1e-9);
    EXPECT_NEAR(pulseOpacity(1400ms * 50 + 700ms), 0.25, 1e-9);
}

class IconPulseTest : public ::testing::Test
{
protected:
    VirtualClock clock;
    QList<double> seen;
    IconPulse pulse{clock, [this](double opacity) { seen.append(opacity); }};
};

TEST_F(IconPulseTest, runsOnlyWhileBusyAndEndsSoonAfter)
{
    EXPECT_EQ(clock.pendingTimers(), 0);
    pulse.setBusy(true);
    clock.advance(10s);
    EXPECT_EQ(*std::ranges::min_element(seen), 0.25);
    pulse.setBusy(false);
    clock.advance(240ms);
    EXPECT_EQ(pulse.opacity(), 1);
    EXPECT_EQ(clock.pendingTimers(), 0);
}

TEST_F(IconPulseTest, drawsAtMostThirteenTimesASecond)
{
    pulse.setBusy(true);
    clock.advance(10s);
    EXPECT_LE(seen.size(), 130);
    EXPECT_GE(seen.size(), 60);
}

TEST_F(IconPulseTest, dimsSteadilyWhereMotionIsUnwanted)
{
    pulse.setReducedMotion(true);
    pulse.setBusy(true);
    EXPECT_EQ(clock.pendingTimers(), 0);
    EXPECT_THAT(seen, ElementsAre(0.55));
    pulse.setBusy(false);
    EXPECT_THAT(seen, ElementsAre(0.55, 1.0));
}

/// The controller's state as the tray sees it.
class FakeController final : public QObject
{
public:
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(FakeController, QString, status, QStringLiteral("Ready"))
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(FakeController, bool, isBusy, false)
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(FakeController, bool, trayAvailable, false)
};

class MenuBarTest : public UiTest
{
protected:
    MenuBarTest()
    {
        LanguagePair german;
        german.id = QUuid::createUuid();
        german.source = QStringLiteral("English (US)");
        german.target = QStringLiteral("German");
        german.hotKey = KeyChord{2, KeyChord::control | KeyChord::option};
        LanguagePair disabled = german;
        disabled.id = QUuid::createUuid();
        disabled.enabled = false;
        LanguagePair silent = german;
        silent.id = QUuid::createUuid();
        silent.target = QStringLiteral("Hindi");
        silent.hotKey.reset();
        settings.setPairs({german, disabled, silent});
    }

    [[nodiscard]] QStringList entries(MenuBarController& controller) const
    {
        QStringList texts;
        for (const QAction* action : controller.menu().actions()) {
            texts += action->isSeparator() ? QStringLiteral("-") : action->text();
        }
        return texts;
    }

    [[nodiscard]] MenuBarController::Actions actions()
    {
        return {[this] { ++openings; }, [this] { ++quits; }};
    }

    FakeController app;
    MenuBarModel model{settings, QBindable<QString>(&app.status), QBindable<bool>(&app.isBusy)};
    int openings = 0;
    int quits = 0;
};

TEST_F(MenuBarTest, listsTheEnabledPairsWithTheirShortcuts)
{
    EXPECT_THAT(
        model.rows(),
        ElementsAre(MenuBarRow{QStringLiteral("English → German"), QStringLiteral("⌃⌥D"), true},
                    MenuBarRow{QStringLiteral("English → Hindi"), QStringLiteral("—"), false}));
}

TEST_F(MenuBarTest, menuHasTheStatusThePairsAndQuit)
{
    MenuBarController controller(model, theme, clock, &app.trayAvailable, actions());
    EXPECT_THAT(entries(controller), ElementsAre(QStringLiteral("Ready"), QStringLiteral("-"),
                                                 QStringLiteral("English → German\t⌃⌥D"),
                                                 QStringLiteral("English → Hindi\t—"),
                                                 QStringLiteral("-"), QStringLiteral("Quit")));
    controller.menu().actions().constLast()->trigger();
    EXPECT_EQ(quits, 1);
}

TEST_F(MenuBarTest, menuFollowsTheStatusAndThePairs)
{
    MenuBarController controller(model, theme, clock, &app.trayAvailable, actions());
    app.status = QStringLiteral("Translating EN-DE & more…");
    EXPECT_EQ(entries(controller).first(), QStringLiteral("Translating EN-DE && more…"));
    settings.setPairs({});
    EXPECT_EQ(entries(controller)[2], QStringLiteral("No language pairs enabled"));
    EXPECT_EQ(entries(controller).constLast(), QStringLiteral("Quit"));
}

TEST_F(MenuBarTest, showsNoIconBeforeThereIsATray)
{
    MenuBarController controller(model, theme, clock, &app.trayAvailable, actions());
    EXPECT_EQ(controller.trayIcon(), nullptr);
    app.trayAvailable = true;
    ASSERT_NE(controller.trayIcon(), nullptr);
    EXPECT_TRUE(controller.trayIcon()->isVisible());
    EXPECT_FALSE(controller.trayIcon()->icon().isNull());
    const QSystemTrayIcon* icon = controller.trayIcon();
    app.trayAvailable = false;
    app.trayAvailable = true;
    EXPECT_EQ(controller.trayIcon(), icon);
}

TEST_F(MenuBarTest, canBeOpenedAndClosedWithoutATray)
{
    MenuBarController controller(model, theme, clock, &app.trayAvailable, actions());
    controller.togglePanel();
    EXPECT_TRUE(controller.menu().isVisible());
    EXPECT_EQ(openings, 1);
    controller.togglePanel();
    EXPECT_FALSE(controller.menu().isVisible());
    EXPECT_EQ(openings, 1);
}

TEST_F(MenuBarTest, iconPulsesWhileTheProgramIsBusy)
{
    app.trayAvailable = true;
    MenuBarController controller(model, theme, clock, &app.trayAvailable, actions());
    const auto alphaOfMiddle = [&] {
        const QImage image = controller.trayIcon()->icon().pixmap(QSize(18, 18), 1.0).toImage();
        return image.pixelColor(9, 2).alpha();
    };
    EXPECT_EQ(alphaOfMiddle(), 255);
    app.isBusy = true;
    clock.advance(720ms);
    EXPECT_NEAR(alphaOfMiddle(), 64, 4);
    app.isBusy = false;
    clock.advance(240ms);
    EXPECT_EQ(alphaOfMiddle(), 255);
}

TEST_F(MenuBarTest, menuHasTheColoursOfTheTheme)
{
    dressApplication(theme);
    appearance.setColorScheme(ColorScheme::dark);
    MenuBarController controller(model, theme, clock, &app.trayAvailable, actions());
    controller.togglePanel();
    controller.menu().setActiveAction(controller.menu().actions().constLast());
    const QImage image = controller.menu().grab().toImage();
    EXPECT_EQ(image.pixelColor(image.width() / 2, 2), theme.colors().window);
    const QRect quit = controller.menu().actionGeometry(controller.menu().actions().constLast());
    EXPECT_EQ(image.pixelColor(quit.right() - 20, quit.center().y()), theme.colors().accent);
    controller.togglePanel();
    QApplication::setStyle(QStringLiteral("Fusion"));
}

TEST_F(MenuBarTest, namesEveryEntryForScreenReaders)
{
    MenuBarController controller(model, theme, clock, &app.trayAvailable, actions());
    controller.togglePanel();
    EXPECT_EQ(unnamedControls(controller.menu()).join(u' ').toStdString(), "");
    controller.togglePanel();
}

} // namespace
} // namespace zelvane::test
