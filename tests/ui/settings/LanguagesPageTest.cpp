#include "ui/settings/LanguagesPage.h"

#include "settings/FactorySettings.h"
#include "support/Await.h"
#include "ui/SettingsFixture.h"
#include "ui/components/Form.h"
#include "ui/glossary/GlossaryDownloadsView.h"
#include "ui/sheets/HotKeyBindSheet.h"
#include "ui/sheets/KeyCapture.h"
#include "ui/sheets/PromptEditSheet.h"

#include <QLineEdit>
#include <QTest>

namespace zelvane::test {
namespace {

constexpr KeyChord controlT{17, KeyChord::control};
constexpr KeyChord controlY{16, KeyChord::control};

class LanguagesPageTest : public SettingsTest
{
protected:
    LanguagesPageTest()
    {
        installKeyTranslation([](const QKeyEvent& event) -> std::optional<quint32> {
            switch (event.key()) {
            case Qt::Key_T:
                return 17;
            case Qt::Key_Y:
                return 16;
            default:
                return std::nullopt;
            }
        });
        settings.setPairs({});
        settings.addPair();
        settings.addPair();
    }
    ~LanguagesPageTest() override { installKeyTranslation({}); }

    void change(int pair, const std::function<void(LanguagePair&)>& apply)
    {
        QList<LanguagePair> pairs = settings.pairs();
        apply(pairs[pair]);
        settings.setPairs(pairs);
    }

    LanguagesPage& openPage()
    {
        return static_cast<LanguagesPage&>(
            *open(SettingsCategory::languages).pageOf(SettingsCategory::languages));
    }

    LanguagePairRow& row(int pair) { return *openPage().rows().at(pair); }

    /// The sheet in which the shortcut of a pair is bound.
    HotKeyBindSheet& bind(int pair)
    {
        row(pair).bindButton().click();
        return *view->findChild<HotKeyBindSheet*>();
    }

    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::ControlModifier)
    {
        QTest::keyClick(view.get(), key, modifiers);
    }

    /// Lets sheets that have closed go.
    static void settle() { QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete); }
};

TEST_F(LanguagesPageTest, saysWhatItIsAbout)
{
    openPage();
    EXPECT_TRUE(shows(QStringLiteral("Language pairs & hotkeys (up to 10)")));
    EXPECT_TRUE(shows(QStringLiteral(
        "Add or remove pairs as needed. Bind Keys → press your shortcut → Save. Hotkeys work "
        "globally (select text first). Needs Accessibility for replace.")));
    EXPECT_TRUE(shows(QStringLiteral("Translation glossaries")));
    EXPECT_TRUE(shows(QStringLiteral(
        "We also recommend downloading dictionaries for your language pairs. They help offline "
        "engines translate terms more accurately and consistently.")));
    EXPECT_NE(named<TextButton>(QStringLiteral("Add pair")), nullptr);
}

TEST_F(LanguagesPageTest, aRowShowsItsPair)
{
    change(1, [](LanguagePair& pair) {
        pair.source = QStringLiteral("German");
        pair.target = QStringLiteral("Xyzish");
        pair.enabled = false;
        pair.hotKey = KeyChord{17, KeyChord::command | KeyChord::option};
    });
    LanguagePairRow& shown = row(1);
    EXPECT_EQ(shown.pairID(), settings.pairs()[1].id);
    EXPECT_FALSE(shown.enabledSwitch().isChecked());
    EXPECT_EQ(shown.enabledSwitch().accessibleName(), QStringLiteral("Enable this pair"));
    EXPECT_EQ(shown.sourcePicker().valueText(), QStringLiteral("German"));
    EXPECT_EQ(shown.targetPicker().valueText(), QStringLiteral("Xyzish"));
    EXPECT_EQ(shown.removeButton().accessibleName(), QStringLiteral("Remove this pair"));
    EXPECT_TRUE(shows(QStringLiteral("Hotkey")));
    EXPECT_TRUE(shows(QStringLiteral("⌥⌘T")));
    EXPECT_TRUE(shows(QStringLiteral("Not set"))); // the first pair
}

TEST_F(LanguagesPageTest, onlyTheSourceMayBeAnyLanguage)
{
    LanguagePairRow& shown = row(0);
    shown.targetPicker().togglePopup();
    EXPECT_EQ(shown.targetPicker().list()->count(), 54);
    shown.sourcePicker().togglePopup();
    EXPECT_EQ(shown.sourcePicker().list()->count(), 55);
}

TEST_F(LanguagesPageTest, aTypedLanguageIsStoredInItsCanonicalSpelling)
{
    Q_EMIT row(0).sourcePicker().selectionChosen(QStringLiteral("mandarin"));
    Q_EMIT row(0).targetPicker().selectionChosen(QStringLiteral("Klingon"));
    EXPECT_EQ(settings.pairs()[0].source, QStringLiteral("Chinese (Simplified)"));
    EXPECT_EQ(settings.pairs()[0].target, QStringLiteral("Klingon"));
    EXPECT_EQ(row(0).sourcePicker().selection(), QStringLiteral("Chinese (Simplified)"));
}

TEST_F(LanguagesPageTest, everyChangeOfEnablementRegistersTheShortcutsAnew)
{
    row(1).enabledSwitch().click();
    EXPECT_FALSE(settings.pairs()[1].enabled);
    EXPECT_EQ(reloads, 1);
    row(1).enabledSwitch().click();
    EXPECT_TRUE(settings.pairs()[1].enabled);
    EXPECT_EQ(reloads, 2);
}

TEST_F(LanguagesPageTest, clearingAShortcutRegistersTheRest)
{
    change(0, [](LanguagePair& pair) { pair.hotKey = controlT; });
    row(0).clearButton().click();
    EXPECT_EQ(settings.pairs()[0].hotKey, std::nullopt);
    EXPECT_EQ(reloads, 1);
}

TEST_F(LanguagesPageTest, theShortcutSheetIsAboutThePair)
{
    change(0, [](LanguagePair& pair) {
        pair.source = QStringLiteral("German");
        pair.target = QStringLiteral("French");
    });
    bind(0);
    EXPECT_TRUE(shows(QStringLiteral("Bind keys")));
    EXPECT_TRUE(shows(QStringLiteral("DE-FR")));
    EXPECT_TRUE(shows(QStringLiteral("Listening…")));
    EXPECT_TRUE(shows(QStringLiteral("Press a shortcut (include ⌘ / ⌥ / ⌃)")));
}

TEST_F(LanguagesPageTest, aPairsOwnShortcutMayBeKeptButNotOneOfAnotherOrOfTheWindow)
{
    settings.setManualTranslationHotKey(controlY);
    change(0, [](LanguagePair& pair) { pair.hotKey = controlT; });
    HotKeyBindSheet* sheet = &bind(0);
    EXPECT_TRUE(sheet->saveButton().isEnabled());
    press(Qt::Key_T);
    EXPECT_TRUE(shows(QStringLiteral("Captured ⌃T. Press Save to keep it.")));
    EXPECT_TRUE(sheet->saveButton().isEnabled());
    press(Qt::Key_Y);
    EXPECT_TRUE(shows(QStringLiteral("⌃Y")));
    EXPECT_TRUE(shows(QStringLiteral("This shortcut is already used.")));
    EXPECT_FALSE(sheet->saveButton().isEnabled());
    press(Qt::Key_Escape, Qt::NoModifier);
    settle();

    sheet = &bind(1);
    press(Qt::Key_T);
    EXPECT_FALSE(sheet->saveButton().isEnabled());
}

TEST_F(LanguagesPageTest, savingAClearedShortcutRemovesIt)
{
    change(0, [](LanguagePair& pair) { pair.hotKey = controlT; });
    HotKeyBindSheet& sheet = bind(0);
    for (auto* button : sheet.findChildren<TextButton*>()) {
        if (button->text() == QStringLiteral("Clear")) {
            button->click();
        }
    }
    EXPECT_TRUE(shows(QStringLiteral("Shortcut cleared — press Save, or type a new combo")));
    EXPECT_TRUE(sheet.saveButton().isEnabled());
    EXPECT_EQ(settings.pairs()[0].hotKey, controlT);
    sheet.saveButton().click();
    EXPECT_EQ(settings.pairs()[0].hotKey, std::nullopt);
    settle();
    EXPECT_GE(reloads, 1);
}

TEST_F(LanguagesPageTest, aCaptureThatIsGivenUpChangesNothingAndBringsTheShortcutsBack)
{
    change(0, [](LanguagePair& pair) { pair.hotKey = controlT; });
    bind(0);
    EXPECT_EQ(suspensions, 1);
    EXPECT_EQ(reloads, 0);
    press(Qt::Key_Y);
    press(Qt::Key_Escape, Qt::NoModifier);
    settle();
    EXPECT_EQ(settings.pairs()[0].hotKey, controlT);
    EXPECT_EQ(reloads, 1);
}

TEST_F(LanguagesPageTest, aCaptureTakesTheKeysOfAllWindowsButEscape)
{
    QLineEdit another;
    another.show();
    HotKeyBindSheet& sheet = bind(0);
    QTest::keyClick(&another, Qt::Key_T, Qt::ControlModifier);
    EXPECT_EQ(sheet.model().draft(), controlT);
    QTest::keyClick(&another, Qt::Key_T);
    EXPECT_EQ(another.text(), QString());
    QTest::keyClick(&another, Qt::Key_Escape);
    EXPECT_FALSE(sheet.isHidden());
    press(Qt::Key_Escape, Qt::NoModifier);
    EXPECT_TRUE(sheet.isHidden());
}

TEST_F(LanguagesPageTest, closingTheSettingsGivesACaptureUp)
{
    bind(0);
    view->close();
    settle();
    EXPECT_EQ(reloads, 1);
    EXPECT_EQ(view->findChild<HotKeyBindSheet*>(), nullptr);
}

TEST_F(LanguagesPageTest, mayGoWithACaptureAndAListOfLanguagesOpen)
{
    row(1).sourcePicker().togglePopup();
    bind(0);
    view.reset();
    settings.setPairs({});
    EXPECT_TRUE(settings.pairs().isEmpty());
}

TEST_F(LanguagesPageTest, mayGoWhileADictionaryIsOnItsWay)
{
    settings.setPairs({});
    transport.holdDownloads();
    openPage();
    named<TextButton>(QStringLiteral("Download German → English (US)"))->click();
    ASSERT_TRUE(waitUntil([this] { return !transport.heldDownloads().empty(); }));
    view.reset();
    transport.heldDownloads().front().outcome.succeed(HttpResponse{404, {}, {}});
    EXPECT_TRUE(waitUntil([this] {
        const auto activities = glossaries.activities();
        return std::ranges::any_of(activities, [](const auto& activity) {
            return std::holds_alternative<GlossaryManager::Failed>(activity);
        });
    }));
}

TEST_F(LanguagesPageTest, aPairThatIsRemovedTakesItsShortcutAlong)
{
    const QUuid second = settings.pairs()[1].id;
    row(0).removeButton().click();
    ASSERT_EQ(settings.pairs().size(), 1);
    EXPECT_EQ(settings.pairs()[0].id, second);
    EXPECT_EQ(reloads, 1);
    ASSERT_EQ(openPage().rows().size(), 1);
    EXPECT_EQ(row(0).pairID(), second);
}

TEST_F(LanguagesPageTest, aPairsPromptIsSetWhetherItIsUsedOrNot)
{
    LanguagePairRow& shown = row(0);
    EXPECT_TRUE(shows(QStringLiteral("Using default text until Set Prompt")));
    auto* set = shown.findChildren<TextButton*>().last();
    ASSERT_EQ(set->text(), QStringLiteral("Set Prompt"));
    EXPECT_TRUE(set->isEnabled());
    set->click();
    auto* sheet = view->findChild<PromptEditSheet*>();
    ASSERT_NE(sheet, nullptr);
    EXPECT_TRUE(shows(QStringLiteral("ANY-EN-US")));
    EXPECT_EQ(sheet->editor().toPlainText(), defaultPromptTemplate());
    sheet->editor().setPlainText(QStringLiteral(" Be brief.\n"));
    sheet->saveButton().click();
    EXPECT_EQ(settings.pairs()[0].customPrompt, QStringLiteral(" Be brief.\n"));
    EXPECT_FALSE(settings.pairs()[0].useCustomPrompt);
    EXPECT_TRUE(shows(QStringLiteral("Custom prompt set")));

    named<Switch>(QStringLiteral("Use Custom prompt"))->click();
    EXPECT_TRUE(settings.pairs()[0].useCustomPrompt);
}

TEST_F(LanguagesPageTest, aBlankPromptIsNone)
{
    change(0, [](LanguagePair& pair) { pair.customPrompt = QStringLiteral(" \n"); });
    settings.removePair(settings.pairs()[1].id);
    openPage();
    EXPECT_TRUE(shows(QStringLiteral("Using default text until Set Prompt")));
    EXPECT_FALSE(shows(QStringLiteral("Custom prompt set")));
}

TEST_F(LanguagesPageTest, deepLHasNoPromptsOfPairs)
{
    openPage();
    EXPECT_TRUE(row(0).promptRow().isVisible());
    use(AIProvider::deepL);
    EXPECT_FALSE(row(0).promptRow().isVisible());
    EXPECT_FALSE(row(1).promptRow().isVisible());
    use(AIProvider::claude);
    EXPECT_TRUE(row(0).promptRow().isVisible());
}

TEST_F(LanguagesPageTest, aFailedDictionaryOffersToRetryWhichDoesNothing)
{
    settings.setPairs({});
    transport.answer(404, {});
    openPage();
    named<TextButton>(QStringLiteral("Download German → English (US)"))->click();
    ASSERT_TRUE(waitUntil([this] {
        return named<TextButton>(QStringLiteral("Retry German → English (US)")) != nullptr;
    }));
    const auto requests = transport.requests().size();
    named<TextButton>(QStringLiteral("Retry German → English (US)"))->click();
    QCoreApplication::processEvents();
    EXPECT_EQ(transport.requests().size(), requests);
}

TEST_F(LanguagesPageTest, noLineStandsBelowAListOfGlossariesThatIsEmpty)
{
    GlossaryManager english({defaults,
                             transport,
                             clock,
                             folder.path(),
                             {QStringLiteral("en-US"), QStringLiteral("English (US)")}});
    settings.setPairs({});
    GlossaryDownloadsView list(theme, settings, english);
    list.show();
    const auto* line = list.findChild<Divider*>();
    EXPECT_FALSE(line->isVisible());
    settings.addPair();
    change(0, [](LanguagePair& pair) { pair.target = QStringLiteral("German"); });
    EXPECT_TRUE(line->isVisible());
}

} // namespace
} // namespace zelvane::test
