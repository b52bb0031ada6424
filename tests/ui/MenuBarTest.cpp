#include "ui/menubar/MenuBarController.h"

#include "settings/Localization.h"
#include "support/Await.h"
#include "ui/AccessibleWalk.h"
#include "ui/UiFixture.h"
#include "ui/components/FocusRing.h"
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

TEST_F(IconPulseTest, runsOnlyWhileBusy)
{
    EXPECT_EQ(clock.pendingTimers(), 0);
    pulse.setBusy(true);
    clock.advance(10s);
    EXPECT_EQ(*std::ranges::min_element(seen), 0.25);
    EXPECT_EQ(clock.pendingTimers(), 1);
}

TEST_F(IconPulseTest, showsWithinAFifthOfASecondThatTheProgramIsBusy)
{
    pulse.setBusy(true);
    clock.advance(200ms);
    EXPECT_LT(pulse.opacity(), 1);
    EXPECT_GT(pulse.opacity(), 0.25);
}

TEST_F(IconPulseTest, comesBackWithinAFifthOfASecond)
{
    pulse.setBusy(true);
    clock.advance(720ms);
    const double lowest = pulse.opacity();
    EXPECT_NEAR(lowest, 0.25, 0.01);
    pulse.setBusy(false);
    clock.advance(100ms);
    EXPECT_GT(pulse.opacity(), lowest);
    EXPECT_LT(pulse.opacity(), 1);
    clock.advance(100ms);
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

    void SetUp() override
    {
        // A change of the active window closes popups; those of earlier tests may still come.
        QApplication::processEvents();
    }

    [[nodiscard]] QStringList entries(MenuBarController& controller) const
    {
        QStringList texts;
        for (const QAction* action : controller.menu().actions()) {
            texts += action->isSeparator() ? QStringLiteral("-") : action->text();
        }
        return texts;
    }

    [[nodiscard]] MenuBarActions actions()
    {
        return {.appeared = [this] { events += QStringLiteral("appeared"); },
                .manualTranslation = [this] { events += QStringLiteral("window"); },
                .settings = [this] { events += QStringLiteral("settings"); },
                .quit = [this] { events += QStringLiteral("quit"); }};
    }

    /// The texts that the open panel shows, from top to bottom.
    [[nodiscard]] static QStringList shownTexts(const MenuBarController& controller)
    {
        QList<std::pair<QPoint, QString>> found;
        for (const QLabel* label : controller.panel()->findChildren<QLabel*>()) {
            if (label->isVisible()) {
                const QPoint place = label->mapTo(controller.panel(), QPoint(0, 0));
                found.append({QPoint(place.y(), place.x()), label->text()});
            }
        }
        std::ranges::sort(found, [](const auto& a, const auto& b) {
            return std::pair(a.first.x(), a.first.y()) < std::pair(b.first.x(), b.first.y());
        });
        QStringList texts;
        for (const auto& [place, text] : found) {
            texts += text;
        }
        return texts;
    }

    FakeController app;
    MenuBarModel model{settings, QBindable<QString>(&app.status), QBindable<bool>(&app.isBusy)};
    QStringList events;
};

TEST_F(MenuBarTest, listsTheEnabledPairsWithTheirShortcuts)
{
    EXPECT_THAT(
        model.rows(),
        ElementsAre(MenuBarRow{QStringLiteral("English → German"), QStringLiteral("⌃⌥D"), true},
                    MenuBarRow{QStringLiteral("English → Hindi"), QStringLiteral("—"), false}));
}

TEST_F(MenuBarTest, menuHasTheStatusThePairsAndTheCommands)
{
    MenuBarController controller(model, theme, clock, &app.trayAvailable, actions());
    EXPECT_THAT(entries(controller),
                ElementsAre(QStringLiteral("Ready"), QStringLiteral("-"),
                            QStringLiteral("English → German\t⌃⌥D"),
                            QStringLiteral("English → Hindi\t—"), QStringLiteral("-"),
                            QStringLiteral("Translation Window"), QStringLiteral("Settings"),
                            QStringLiteral("-"), QStringLiteral("Quit")));
    for (QAction* action : controller.menu().actions()) {
        action->trigger();
    }
    EXPECT_THAT(events, ElementsAre(QStringLiteral("window"), QStringLiteral("settings"),
                                    QStringLiteral("quit")));
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

TEST_F(MenuBarTest, menuTellsThatItAppears)
{
    MenuBarController controller(model, theme, clock, &app.trayAvailable, actions());
    controller.menu().popup({100, 100});
    EXPECT_THAT(events, ElementsAre(QStringLiteral("appeared")));
    controller.menu().close();
}

TEST_F(MenuBarTest, makesNoPanelBeforeItIsWanted)
{
    app.trayAvailable = true;
    const auto windowsBefore = QApplication::topLevelWidgets().size();
    MenuBarController controller(model, theme, clock, &app.trayAvailable, actions());
    EXPECT_EQ(controller.panel(), nullptr);
    EXPECT_TRUE(events.isEmpty());
    // The menu, which shows nothing yet.
    EXPECT_LE(QApplication::topLevelWidgets().size(), windowsBefore + 2);
}

TEST_F(MenuBarTest, panelHasTheStatusThePairsAndTheirShortcuts)
{
    MenuBarController controller(model, theme, clock, &app.trayAvailable, actions());
    controller.togglePanel();
    EXPECT_THAT(shownTexts(controller),
                ElementsAre(QStringLiteral("Zelvane Desk"), QStringLiteral("Ready"),
                            QStringLiteral("English → German"), QStringLiteral("⌃⌥D"),
                            QStringLiteral("English → Hindi"), QStringLiteral("—")));
    EXPECT_EQ(controller.panel()->findChildren<Divider*>().size(), 1);
}

TEST_F(MenuBarTest, aMissingShortcutIsFainterThanAShortcut)
{
    MenuBarController controller(model, theme, clock, &app.trayAvailable, actions());
    controller.togglePanel();
    const auto colorOf = [&](const QString& text) {
        for (const QLabel* label : controller.panel()->findChildren<QLabel*>()) {
            if (label->text() == text) {
                return label->palette().color(QPalette::WindowText);
            }
        }
        return QColor();
    };
    EXPECT_EQ(colorOf(QStringLiteral("⌃⌥D")), theme.colors().secondaryText);
    EXPECT_EQ(colorOf(QStringLiteral("—")), theme.colors().tertiaryText);
    EXPECT_EQ(colorOf(QStringLiteral("Ready")), theme.colors().secondaryText);
}

TEST_F(MenuBarTest, panelFollowsTheStatusAndThePairsWhileItIsOpen)
{
    MenuBarController controller(model, theme, clock, &app.trayAvailable, actions());
    controller.togglePanel();
    const int height = controller.panel()->panelFrame().height();
    app.status = QStringLiteral("Translating EN-DE…");
    EXPECT_EQ(shownTexts(controller)[1], QStringLiteral("Translating EN-DE…"));
    settings.setPairs({});
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QApplication::processEvents();
    EXPECT_THAT(shownTexts(controller),
                ElementsAre(QStringLiteral("Zelvane Desk"), QStringLiteral("Translating EN-DE…"),
                            QStringLiteral("No language pairs enabled")));
    EXPECT_LT(controller.panel()->panelFrame().height(), height);
}

TEST_F(MenuBarTest, translationWindowOpensWithoutAnyPair)
{
    settings.setPairs({});
    MenuBarController controller(model, theme, clock, &app.trayAvailable, actions());
    controller.togglePanel();
    QTest::mouseClick(&controller.panel()->content().translationButton(), Qt::LeftButton);
    EXPECT_EQ(events.constLast(), QStringLiteral("window"));
    EXPECT_EQ(controller.panel(), nullptr);
}

TEST_F(MenuBarTest, commandsCloseThePanelFirst)
{
    MenuBarController* opened = nullptr;
    QStringList seen;
    const auto note = [&](const QString& name) {
        seen += name + (opened->panel() ? QStringLiteral(" over the panel") : QString());
    };
    MenuBarController controller(model, theme, clock, &app.trayAvailable,
                                 {.settings = [&] { note(QStringLiteral("settings")); },
                                  .quit = [&] { note(QStringLiteral("quit")); }});
    opened = &controller;
    controller.togglePanel();
    QTest::mouseClick(&controller.panel()->content().settingsButton(), Qt::LeftButton);
    controller.togglePanel();
    QTest::mouseClick(&controller.panel()->content().quitButton(), Qt::LeftButton);
    EXPECT_THAT(seen, ElementsAre(QStringLiteral("settings"), QStringLiteral("quit")));
}

TEST_F(MenuBarTest, commandsHaveTheirKeys)
{
    MenuBarController controller(model, theme, clock, &app.trayAvailable, actions());
    controller.togglePanel();
    EXPECT_EQ(controller.panel()->content().settingsButton().toolTip(), QStringLiteral("Ctrl+,"));
    EXPECT_EQ(controller.panel()->content().quitButton().toolTip(), QStringLiteral("Ctrl+Q"));
    QTest::keyClick(controller.panel()->focusWidget(), Qt::Key_Comma, Qt::ControlModifier);
    EXPECT_EQ(controller.panel(), nullptr);
    controller.togglePanel();
    QTest::keyClick(controller.panel()->focusWidget(), Qt::Key_Q, Qt::ControlModifier);
    EXPECT_EQ(controller.panel(), nullptr);
    controller.togglePanel();
    QTest::keyClick(controller.panel()->focusWidget(), Qt::Key_Return);
    EXPECT_EQ(controller.panel(), nullptr);
    EXPECT_THAT(events, ElementsAre(QStringLiteral("appeared"), QStringLiteral("settings"),
                                    QStringLiteral("appeared"), QStringLiteral("quit"),
                                    QStringLiteral("appeared"), QStringLiteral("window")));
}

TEST_F(MenuBarTest, escClosesThePanel)
{
    MenuBarController controller(model, theme, clock, &app.trayAvailable, actions());
    controller.togglePanel();
    QTest::keyClick(controller.panel()->focusWidget(), Qt::Key_Escape);
    EXPECT_EQ(controller.panel(), nullptr);
}

TEST_F(MenuBarTest, aClickElsewhereClosesThePanel)
{
    MenuBarController controller(model, theme, clock, &app.trayAvailable, actions());
    controller.togglePanel();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(controller.panel()));
    QTest::mouseClick(controller.panel()->windowHandle(), Qt::LeftButton, {}, QPoint(-40, -40));
    EXPECT_EQ(controller.panel(), nullptr);
}

TEST_F(MenuBarTest, aClickOnTheShadowIsAClickElsewhere)
{
    appearance.setCompositing(true);
    MenuBarController controller(model, theme, clock, &app.trayAvailable, actions());
    controller.togglePanel();
    QTest::mouseClick(controller.panel(), Qt::LeftButton, {}, QPoint(3, 100));
    EXPECT_EQ(controller.panel(), nullptr);
}

TEST_F(MenuBarTest, aClickOnTheIconClosesThePanelAndDoesNotOpenItAgain)
{
    QWidget other;
    other.show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&other));
    app.trayAvailable = true;
    MenuBarController controller(model, theme, clock, &app.trayAvailable, actions());
    const auto clickIcon = [&] {
        Q_EMIT controller.trayIcon()->activated(QSystemTrayIcon::Trigger);
    };
    clickIcon();
    ASSERT_NE(controller.panel(), nullptr);
    // The click arrives while the panel is open,
    clickIcon();
    EXPECT_EQ(controller.panel(), nullptr);
    clock.advance(1s);
    QApplication::processEvents();
    // or right after it has closed the panel by being a click elsewhere.
    clickIcon();
    ASSERT_NE(controller.panel(), nullptr);
    ASSERT_TRUE(QTest::qWaitForWindowExposed(controller.panel()));
    QTest::mousePress(controller.panel()->windowHandle(), Qt::LeftButton, {}, QPoint(-40, -40));
    ASSERT_EQ(controller.panel(), nullptr);
    clickIcon();
    EXPECT_EQ(controller.panel(), nullptr);
    QTest::mouseRelease(other.windowHandle(), Qt::LeftButton);
    clock.advance(301ms);
    clickIcon();
    EXPECT_NE(controller.panel(), nullptr);
    // One that a key has closed opens again at once.
    QTest::keyClick(controller.panel()->focusWidget(), Qt::Key_Escape);
    clock.advance(301ms);
    clickIcon();
    QTest::keyClick(controller.panel()->focusWidget(), Qt::Key_Escape);
    clickIcon();
    EXPECT_NE(controller.panel(), nullptr);
}

TEST_F(MenuBarTest, theOtherButtonLeavesThePanelAlone)
{
    app.trayAvailable = true;
    MenuBarController controller(model, theme, clock, &app.trayAvailable, actions());
    Q_EMIT controller.trayIcon()->activated(QSystemTrayIcon::Context);
    EXPECT_EQ(controller.panel(), nullptr);
}

TEST_F(MenuBarTest, eachOpeningTellsThatThePanelAppears)
{
    MenuBarController controller(model, theme, clock, &app.trayAvailable, actions());
    for (int i = 0; i < 2; ++i) {
        controller.togglePanel();
        controller.togglePanel();
    }
    EXPECT_THAT(events, ElementsAre(QStringLiteral("appeared"), QStringLiteral("appeared")));
}

TEST_F(MenuBarTest, panelIsAsWideAsTheTokensSayButNotTooNarrow)
{
    MenuBarController controller(model, theme, clock, &app.trayAvailable, actions());
    controller.togglePanel();
    EXPECT_EQ(controller.panel()->panelFrame().width(), 320);
    TrayLayoutTokens tray = tokens.tray();
    tray.width = 400;
    tokens.setTray(tray);
    EXPECT_EQ(controller.panel()->panelFrame().width(), 400);
    tray.width = 100;
    tokens.setTray(tray);
    EXPECT_EQ(controller.panel()->panelFrame().width(), 260);
}

TEST_F(MenuBarTest, panelTakesItsPaddingAndSpacingFromTheTokens)
{
    MenuBarController controller(model, theme, clock, &app.trayAvailable, actions());
    controller.togglePanel();
    const int height = controller.panel()->panelFrame().height();
    TrayLayoutTokens tray = tokens.tray();
    tray.padding = 24;
    tray.contentSpacing = 22;
    tokens.setTray(tray);
    QApplication::processEvents();
    // Twice 10 more around, three times 10 more between the four parts.
    EXPECT_EQ(controller.panel()->panelFrame().height(), height + 50);
}

TEST_F(MenuBarTest, wheelTurnsWhileTheProgramIsBusy)
{
    MenuBarController controller(model, theme, clock, &app.trayAvailable, actions());
    controller.togglePanel();
    const auto* wheel = controller.panel()->findChild<Spinner*>();
    EXPECT_FALSE(wheel->isVisible());
    app.isBusy = true;
    EXPECT_TRUE(wheel->isVisible());
    app.isBusy = false;
    EXPECT_FALSE(wheel->isVisible());
}

TEST_F(MenuBarTest, panelSpeaksTheLanguageThatIsChosenWhileItIsOpen)
{
    installLocalization(&defaults);
    MenuBarController controller(model, theme, clock, &app.trayAvailable, actions());
    controller.togglePanel();
    settings.setAppLanguage(AppLanguage::german);
    QEvent change(QEvent::LanguageChange);
    QApplication::sendEvent(&controller.panel()->content(), &change);
    QApplication::processEvents();
    EXPECT_EQ(controller.panel()->content().quitButton().text(), QStringLiteral("Beenden"));
    EXPECT_EQ(shownTexts(controller)[2], QStringLiteral("Englisch (USA) → Deutsch"));
    installLocalization(nullptr);
}

TEST_F(MenuBarTest, tabReachesEveryCommandWithAVisibleRing)
{
    MenuBarController controller(model, theme, clock, &app.trayAvailable, actions());
    controller.togglePanel();
    const auto* ring = controller.panel()->findChild<FocusRing*>();
    QStringList visited{controller.panel()->focusWidget()->property("text").toString()};
    EXPECT_FALSE(ring->isVisible());
    for (int i = 0; i < 3; ++i) {
        QTest::keyClick(controller.panel()->focusWidget(), Qt::Key_Tab);
        EXPECT_TRUE(ring->isVisible());
        visited += controller.panel()->focusWidget()->property("text").toString();
    }
    EXPECT_THAT(visited,
                ElementsAre(QStringLiteral("Translation Window"), QStringLiteral("Settings"),
                            QStringLiteral("Quit"), QStringLiteral("Translation Window")));
}

TEST_F(MenuBarTest, namesEveryControlOfThePanelForScreenReaders)
{
    MenuBarController controller(model, theme, clock, &app.trayAvailable, actions());
    controller.togglePanel();
    EXPECT_EQ(unnamedControls(*controller.panel()).join(u' ').toStdString(), "");
    EXPECT_THAT(controlNames(*controller.panel()),
                ElementsAre(QStringLiteral("Zelvane Desk"), QStringLiteral("Translation Window"),
                            QStringLiteral("Settings"), QStringLiteral("Quit")));
}

struct OriginCase
{
    const char* name;
    std::optional<QRect> icon;
    QPoint expected;
    Qt::LayoutDirection direction = Qt::LeftToRight;
};

class MenuBarPanelOrigin : public ::testing::TestWithParam<OriginCase>
{
};

TEST_P(MenuBarPanelOrigin, isAtTheIconAndOnTheScreen)
{
    const QRect frame(0, 30, 1600, 970);
    EXPECT_EQ(menuBarPanelOrigin({GetParam().icon, frame, GetParam().direction}, {320, 240}),
              GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Places, MenuBarPanelOrigin,
    ::testing::Values(
        OriginCase{"belowAnIconAtTheTop", QRect(800, 4, 22, 22), {650, 38}},
        OriginCase{"aboveAnIconAtTheBottom", QRect(800, 970, 22, 22), {650, 724}},
        OriginCase{"notOverTheRightEdge", QRect(1570, 4, 22, 22), {1272, 38}},
        OriginCase{"notOverTheLeftEdge", QRect(0, 970, 22, 22), {8, 724}},
        OriginCase{"inTheCornerWithoutAnIcon", std::nullopt, {1272, 38}},
        OriginCase{"inTheOtherCornerFromRightToLeft", std::nullopt, {8, 38}, Qt::RightToLeft},
        OriginCase{"besideAnIconAtTheSide", QRect(4, 500, 22, 22), {8, 528}}),
    [](const auto& info) { return info.param.name; });

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
    clock.advance(200ms);
    EXPECT_EQ(alphaOfMiddle(), 255);
}

TEST_F(MenuBarTest, iconPulsesFromTheStartOfAProgramThatIsBusyAlready)
{
    app.isBusy = true;
    MenuBarStatusIcon icon(model, theme, clock);
    int pictures = 0;
    QObject::connect(&icon, &MenuBarStatusIcon::changed, &icon, [&] { ++pictures; });
    clock.advance(1s);
    EXPECT_GT(pictures, 5);
}

TEST_F(MenuBarTest, menuHasTheColoursOfTheTheme)
{
    dressApplication(theme);
    appearance.setColorScheme(ColorScheme::dark);
    MenuBarController controller(model, theme, clock, &app.trayAvailable, actions());
    controller.menu().popup({100, 100});
    controller.menu().setActiveAction(controller.menu().actions().constLast());
    const QImage image = controller.menu().grab().toImage();
    EXPECT_EQ(image.pixelColor(image.width() / 2, 2), theme.colors().window);
    const QRect quit = controller.menu().actionGeometry(controller.menu().actions().constLast());
    EXPECT_EQ(image.pixelColor(quit.right() - 20, quit.center().y()), theme.colors().accent);
    controller.menu().close();
    QApplication::setStyle(QStringLiteral("Fusion"));
}

TEST_F(MenuBarTest, namesEveryEntryOfTheMenuForScreenReaders)
{
    MenuBarController controller(model, theme, clock, &app.trayAvailable, actions());
    controller.menu().popup({100, 100});
    EXPECT_EQ(unnamedControls(controller.menu()).join(u' ').toStdString(), "");
    controller.menu().close();
}

} // namespace
} // namespace zelvane::test
