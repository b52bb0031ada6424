#include "ui/settings/BehaviorPage.h"

#include "ui/SettingsFixture.h"
#include "ui/components/Picker.h"
#include "ui/sheets/HotKeyBindSheet.h"
#include "ui/sheets/KeyCapture.h"

#include <gmock/gmock.h>

#include <QTest>

namespace zelvane::test {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;

constexpr KeyChord controlT{17, KeyChord::control};

class BehaviorPageTest : public SettingsTest
{
protected:
    BehaviorPageTest()
    {
        installKeyTranslation(
            [](const QKeyEvent&) -> std::optional<quint32> { return quint32(17); });
    }
    ~BehaviorPageTest() override { installKeyTranslation({}); }

    void openPage() { open(SettingsCategory::behavior); }

    HotKeyBindSheet& bind()
    {
        named<TextButton>(QStringLiteral("Bind Keys"))->click();
        return *view->findChild<HotKeyBindSheet*>();
    }

    static void settle() { QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete); }
};

TEST_F(BehaviorPageTest, theMenuAtTheRightClickFollowsItsSwitch)
{
    int told = 0;
    services.optionMenuChanged = [&told] { ++told; };
    openPage();
    EXPECT_TRUE(
        shows(QStringLiteral("Needs Accessibility (and sometimes Input Monitoring). Ordinary "
                             "right-click is unchanged.")));
    told = 0;
    named<Switch>(QStringLiteral("⌥ + right-click translation menu"))->click();
    EXPECT_FALSE(settings.optionRightClickMenu());
    EXPECT_EQ(defaults.boolean(QStringLiteral("zv.optionRightClickMenu")), false);
    EXPECT_EQ(told, 1);
}

TEST_F(BehaviorPageTest, theExplanationDependsOnBothSwitches)
{
    openPage();
    settings.setAutoReplace(false);
    const QString window = QStringLiteral("Hotkey always opens the translation window with a Copy "
                                          "button — the selected text is never replaced.");
    EXPECT_TRUE(shows(window));
    settings.setDoubleHotKeyWindow(false);
    EXPECT_TRUE(shows(window));
    settings.setAutoReplace(true);
    EXPECT_TRUE(shows(QStringLiteral("Hotkey replaces the selected text immediately. Use the menu "
                                     "bar item to show a translation in a window instead.")));
    settings.setDoubleHotKeyWindow(true);
    EXPECT_TRUE(shows(QStringLiteral(
        "Press once to replace the selected text; press twice within 1 second to replace it and "
        "also open the translation window. A single press waits ~1 second before acting.")));
}

TEST_F(BehaviorPageTest, theExplanationStandsBelowTheSwitchesThatItIsAbout)
{
    openPage();
    const auto heightOf = [this](const QWidget* part) {
        return part->mapTo(view.get(), QPoint(0, 0)).y();
    };
    const ThemedLabel* explanation = nullptr;
    for (const auto* label : view->findChildren<ThemedLabel*>()) {
        if (label->text().startsWith(QStringLiteral("Press once to replace"))) {
            explanation = label;
        }
    }
    ASSERT_NE(explanation, nullptr);
    EXPECT_GT(heightOf(explanation),
              heightOf(named<Switch>(QStringLiteral("Auto-replace translated text"))));
    EXPECT_LT(heightOf(explanation),
              heightOf(named<Switch>(QStringLiteral("⌥ + right-click translation menu"))));
}

TEST_F(BehaviorPageTest, theWindowsShortcutIsBoundBesideThoseOfThePairs)
{
    QList<LanguagePair> pairs = settings.pairs();
    pairs[0].hotKey = controlT;
    pairs[0].enabled = false;
    settings.setPairs(pairs);
    openPage();
    EXPECT_TRUE(shows(QStringLiteral("Open Text Translation")));
    EXPECT_TRUE(shows(QStringLiteral("Not set")));

    HotKeyBindSheet& sheet = bind();
    EXPECT_TRUE(shows(QStringLiteral("Open Translation Window")));
    EXPECT_TRUE(shows(QStringLiteral("Press a shortcut (include ⌘ / ⌥ / ⌃)")));
    QTest::keyClick(view.get(), Qt::Key_T, Qt::ControlModifier);
    EXPECT_TRUE(shows(QStringLiteral("This shortcut is already used.")));
    EXPECT_FALSE(sheet.saveButton().isEnabled());

    QTest::keyClick(view.get(), Qt::Key_T, Qt::ControlModifier | Qt::AltModifier);
    sheet.saveButton().click();
    EXPECT_EQ(settings.manualTranslationHotKey(),
              (KeyChord{17, KeyChord::control | KeyChord::option}));
    settle();
    EXPECT_EQ(reloads, 1);
    EXPECT_TRUE(shows(QStringLiteral("⌃⌥T")));
}

TEST_F(BehaviorPageTest, theWindowsShortcutMayStayAsItIs)
{
    settings.setManualTranslationHotKey(controlT);
    openPage();
    HotKeyBindSheet& sheet = bind();
    QTest::keyClick(view.get(), Qt::Key_T, Qt::ControlModifier);
    EXPECT_TRUE(shows(QStringLiteral("Captured ⌃T. Press Save to keep it.")));
    EXPECT_TRUE(sheet.saveButton().isEnabled());
}

TEST_F(BehaviorPageTest, clearingTheWindowsShortcutGivesItUp)
{
    settings.setManualTranslationHotKey(controlT);
    openPage();
    named<TextButton>(QStringLiteral("Clear"))->click();
    EXPECT_EQ(settings.manualTranslationHotKey(), std::nullopt);
    EXPECT_EQ(reloads, 1);
    EXPECT_TRUE(shows(QStringLiteral("Not set")));
}

TEST_F(BehaviorPageTest, eachWindowHasASizeOfItsOwn)
{
    openPage();
    EXPECT_TRUE(shows(QStringLiteral("Translation Windows")));
    EXPECT_TRUE(
        shows(QStringLiteral("The text input window translates typed or pasted text without "
                             "Accessibility permission. Window sizes are stored independently.")));
    auto* manual = named<Picker>(QStringLiteral("Classic Translation Window Size"));
    auto* result = named<Picker>(QStringLiteral("Translation Result Popup Size"));
    ASSERT_NE(manual, nullptr);
    ASSERT_NE(result, nullptr);
    EXPECT_THAT(manual->items(), ElementsAre(QStringLiteral("Extra Small"), QStringLiteral("Small"),
                                             QStringLiteral("Medium"), QStringLiteral("Large"),
                                             QStringLiteral("Extra Large")));
    EXPECT_EQ(result->items(), manual->items());
    EXPECT_EQ(manual->valueText(), QStringLiteral("Medium"));

    Q_EMIT manual->activated(0);
    Q_EMIT result->activated(4);
    EXPECT_EQ(settings.manualWindowSize(), TranslationWindowSize::extraSmall);
    EXPECT_EQ(settings.resultWindowSize(), TranslationWindowSize::extraLarge);
    EXPECT_EQ(manual->valueText(), QStringLiteral("Extra Small"));
    EXPECT_EQ(result->valueText(), QStringLiteral("Extra Large"));
}

TEST_F(BehaviorPageTest, windowsThatWereLostComeBackToTheMiddle)
{
    openPage();
    EXPECT_TRUE(
        shows(QStringLiteral("Use this button if you lost your translation window or result popup "
                             "and want to return it to the center of the screen.")));
    named<TextButton>(QStringLiteral("Reset translation windows location"))->click();
    EXPECT_EQ(resets, 1);
    EXPECT_TRUE(shows(QStringLiteral("Done")));
    clock.advance(1999ms);
    EXPECT_TRUE(shows(QStringLiteral("Done")));
    clock.advance(1ms);
    EXPECT_FALSE(shows(QStringLiteral("Done")));
}

TEST_F(BehaviorPageTest, mayGoBeforeItsWordDoes)
{
    openPage();
    named<TextButton>(QStringLiteral("Reset translation windows location"))->click();
    view.reset();
    clock.advance(5s);
    EXPECT_EQ(clock.pendingTimers(), 0);
}

} // namespace
} // namespace zelvane::test
