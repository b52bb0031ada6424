#include "settings/Localization.h"
#include "support/Await.h"
#include "ui/AccessibleWalk.h"
#include "ui/SettingsFixture.h"
#include "ui/settings/LanguagesPage.h"
#include "ui/settings/TranslationPage.h"
#include "ui/sheets/APIKeyEditSheet.h"
#include "ui/sheets/HotKeyBindSheet.h"
#include "ui/sheets/KeyCapture.h"
#include "ui/sheets/PromptEditSheet.h"

#include <gmock/gmock.h>

#include <QDir>
#include <QTest>

namespace zelvane::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST_F(SettingsTest, openAtTheFirstCategoryAndMakeNoPageBeforeItIsWanted)
{
    open();
    EXPECT_EQ(view->selectedCategory(), SettingsCategory::translation);
    EXPECT_NE(view->pageOf(SettingsCategory::translation), nullptr);
    EXPECT_EQ(view->pageOf(SettingsCategory::languages), nullptr);
    EXPECT_EQ(view->size(), QSize(820, 580));
    EXPECT_EQ(view->windowTitle(), QStringLiteral("Settings"));
}

TEST_F(SettingsTest, fitOnALowScreen)
{
    EXPECT_EQ(SettingsView::leastSize(tokens.settings(), 1040), QSize(820, 580));
    EXPECT_EQ(SettingsView::leastSize(tokens.settings(), 600), QSize(820, 560));
}

TEST_F(SettingsTest, theSidebarLeadsToEachPage)
{
    open();
    for (const SettingsCategory category : allSettingsCategories) {
        QTest::mouseClick(&view->rowOf(category), Qt::LeftButton);
        EXPECT_EQ(view->selectedCategory(), category);
        EXPECT_TRUE(shows(title(category)));
        EXPECT_TRUE(view->rowOf(category).isChecked());
    }
}

TEST_F(SettingsTest, everyControlOfEveryPageHasAName)
{
    engine.status = engine_status::Ready{};
    for (const SettingsCategory category : allSettingsCategories) {
        open(category);
        EXPECT_THAT(unnamedControls(*view), IsEmpty()) << qPrintable(rawValue(category));
    }
}

TEST_F(SettingsTest, aMissingPermissionIsToldOnEveryOtherPageAndLeadsToItsOwn)
{
    open(SettingsCategory::behavior);
    EXPECT_FALSE(view->banner().isVisible());
    permissionState = State::denied;
    EXPECT_TRUE(view->banner().isVisible());
    named<TextButton>(QStringLiteral("Accessibility"))->click();
    EXPECT_EQ(view->selectedCategory(), SettingsCategory::accessibility);
    EXPECT_FALSE(view->banner().isVisible());
}

TEST_F(SettingsTest, switchesWriteThroughAtOnceAndTheExplanationFollows)
{
    open(SettingsCategory::behavior);
    EXPECT_TRUE(shows(QStringLiteral(
        "Press once to replace the selected text; press twice within 1 second to replace it and "
        "also open the translation window. A single press waits ~1 second before acting.")));
    named<Switch>(QStringLiteral("Double-press hotkey also opens the window"))->click();
    EXPECT_FALSE(settings.doubleHotKeyWindow());
    EXPECT_TRUE(shows(QStringLiteral("Hotkey replaces the selected text immediately. Use the menu "
                                     "bar item to show a translation in a window instead.")));
    named<Switch>(QStringLiteral("Auto-replace translated text"))->click();
    EXPECT_FALSE(settings.autoReplace());
    EXPECT_TRUE(
        shows(QStringLiteral("Hotkey always opens the translation window with a Copy button — the "
                             "selected text is never replaced.")));
}

TEST_F(SettingsTest, aSecondResetKeepsItsWordForTwoSecondsAfterIt)
{
    open(SettingsCategory::behavior);
    auto* reset = named<TextButton>(QStringLiteral("Reset translation windows location"));
    EXPECT_FALSE(shows(QStringLiteral("Done")));
    const QPoint place = reset->mapTo(view.get(), QPoint(0, 0));
    reset->click();
    EXPECT_TRUE(shows(QStringLiteral("Done")));
    QCoreApplication::processEvents();
    EXPECT_EQ(reset->mapTo(view.get(), QPoint(0, 0)), place);
    clock.advance(std::chrono::milliseconds(1500));
    reset->click();
    clock.advance(std::chrono::milliseconds(1999));
    EXPECT_TRUE(shows(QStringLiteral("Done")));
    clock.advance(std::chrono::milliseconds(1));
    EXPECT_FALSE(shows(QStringLiteral("Done")));
    EXPECT_EQ(resets, 2);
}

TEST_F(SettingsTest, aKeyThatIsTypedInIsTriedAndStored)
{
    use(AIProvider::chatGPT);
    open();
    EXPECT_TRUE(shows(QStringLiteral("No API key set")));
    named<TextButton>(QStringLiteral("Edit Key"))->click();
    auto* sheet = view->findChild<APIKeyEditSheet*>();
    ASSERT_NE(sheet, nullptr);
    EXPECT_EQ(sheet->field().echoMode(), QLineEdit::Password);
    EXPECT_EQ(view->focusWidget(), &sheet->field());
    QTest::keyClicks(&sheet->field(), QStringLiteral(" sk-0123456789 "));
    QTest::keyClick(&sheet->field(), Qt::Key_Return);

    EXPECT_THAT(asked, ElementsAre(QStringLiteral("ChatGPT sk-0123456789")));
    EXPECT_EQ(settings.apiKey(), QStringLiteral("sk-0123456789"));
    EXPECT_TRUE(shows(QStringLiteral("•••••••••6789")));
    EXPECT_EQ(backend.items.value(QStringLiteral("zv.apiKey.ChatGPT")),
              QByteArray("sk-0123456789"));
}

TEST_F(SettingsTest, aModelThatIsNoLongerListedStaysAsSaved)
{
    use(AIProvider::chatGPT);
    settings.setModel(QStringLiteral("gpt-old"));
    settings.setApiKey(QStringLiteral("sk-1"));
    open();
    auto& page = static_cast<TranslationPage&>(*view->pageOf(SettingsCategory::translation));
    EXPECT_THAT(page.modelPicker().items(),
                ElementsAre(QStringLiteral("GPT A"), QStringLiteral("gpt-old (saved)")));
    EXPECT_EQ(page.modelPicker().valueText(), QStringLiteral("gpt-old (saved)"));
    EXPECT_EQ(settings.model(), QStringLiteral("gpt-old"));
}

TEST_F(SettingsTest, aPlatformThatIsPickedIsStoredAndPrepared)
{
    open();
    auto& page = static_cast<TranslationPage&>(*view->pageOf(SettingsCategory::translation));
    const auto fast = page.platformPicker().items().indexOf(displayName(AIProvider::fastOffline));
    ASSERT_GE(fast, 0);
    Q_EMIT page.platformPicker().activated(int(fast));
    EXPECT_EQ(settings.provider(), AIProvider::fastOffline);
    EXPECT_THAT(picked, ElementsAre(AIProvider::fastOffline));
}

TEST_F(SettingsTest, deepLHasNoPrompts)
{
    use(AIProvider::deepL);
    open();
    EXPECT_TRUE(shows(
        QStringLiteral("DeepL uses its own translation engine. The custom prompt is not sent.")));
    EXPECT_EQ(named<TextButton>(QStringLiteral("Edit prompt")), nullptr);
    open(SettingsCategory::languages);
    EXPECT_EQ(named<TextButton>(QStringLiteral("Set Prompt")), nullptr);
}

TEST_F(SettingsTest, thePromptIsEditedInASheet)
{
    open();
    named<TextButton>(QStringLiteral("Edit prompt"))->click();
    auto* sheet = view->findChild<PromptEditSheet*>();
    ASSERT_NE(sheet, nullptr);
    sheet->editor().setPlainText(QStringLiteral("  "));
    EXPECT_FALSE(sheet->saveButton().isEnabled());
    sheet->editor().setPlainText(QStringLiteral("Be brief. "));
    sheet->saveButton().click();
    EXPECT_EQ(settings.promptTemplate(), QStringLiteral("Be brief. "));
}

TEST_F(SettingsTest, anEngineIsInstalledCancelledAndDeleted)
{
    open();
    EXPECT_TRUE(shows(QStringLiteral("Offline engine not installed")));
    named<TextButton>(QStringLiteral("Install Offline Engine…"))->click();

    engine.status = engine_status::Installing{QStringLiteral("Unpacking llama.cpp…"), 0.04};
    EXPECT_TRUE(shows(QStringLiteral("Installing offline engine…")));
    EXPECT_TRUE(shows(QStringLiteral("Unpacking llama.cpp…")));
    EXPECT_EQ(named<TextButton>(QStringLiteral("Install Offline Engine…")), nullptr);
    named<TextButton>(QStringLiteral("Cancel"))->click();

    EngineDownloadProgress progress;
    progress.downloadedBytes = 1'900'000'000;
    progress.totalBytes = 4'624'648'896;
    progress.bytesPerSecond = 11'500'000;
    progress.remainingBytes = 2'724'648'896;
    progress.etaSeconds = 236;
    progress.elapsedSeconds = 165;
    engine.downloadProgress = progress;
    engine.status = engine_status::Installing{QStringLiteral("Downloading Hy-MT2 model…"), 0.449};
    for (const char* text :
         {"Downloading Hy-MT2 model…", "41%", "1.9 GB of 4.6 GB downloaded", "11.5 MB/s",
          "2.7 GB remaining", "About 3:56 remaining", "Elapsed: 2:45"}) {
        EXPECT_TRUE(shows(QString::fromUtf8(text))) << text;
    }
    engine.downloadProgress = std::nullopt;
    EXPECT_FALSE(shows(QStringLiteral("41%")));
    EXPECT_FALSE(shows(QStringLiteral("11.5 MB/s")));

    engine.status = engine_status::Failed{QStringLiteral("Bundled llama.cpp was not found.")};
    EXPECT_TRUE(shows(QStringLiteral("Offline install failed")));
    EXPECT_TRUE(shows(QStringLiteral("Bundled llama.cpp was not found.")));

    engine.status = engine_status::Ready{};
    EXPECT_TRUE(shows(QStringLiteral("Offline engine ready")));
    named<TextButton>(QStringLiteral("Delete Offline Engine"))->click();
    EXPECT_THAT(engineCalls, ElementsAre(QStringLiteral("install"), QStringLiteral("cancel"),
                                         QStringLiteral("delete")));
}

TEST_F(SettingsTest, pairsAreAddedUpToTenAndRemoved)
{
    open(SettingsCategory::languages);
    auto& page = static_cast<LanguagesPage&>(*view->pageOf(SettingsCategory::languages));
    for (int i = 0; i < 12; ++i) {
        page.addButton().click();
    }
    EXPECT_EQ(settings.pairs().size(), 10);
    EXPECT_EQ(page.rows().size(), 10);
    EXPECT_FALSE(page.addButton().isEnabled());
    page.rows()[3]->removeButton().click();
    EXPECT_EQ(settings.pairs().size(), 9);
    EXPECT_EQ(page.rows().size(), 9);
    EXPECT_TRUE(page.addButton().isEnabled());
    EXPECT_EQ(reloads, 1);
}

TEST_F(SettingsTest, aPairsSwitchAndLanguagesWriteThrough)
{
    open(SettingsCategory::languages);
    auto& page = static_cast<LanguagesPage&>(*view->pageOf(SettingsCategory::languages));
    LanguagePairRow& row = *page.rows()[0];
    row.enabledSwitch().click();
    EXPECT_FALSE(settings.pairs()[0].enabled);
    EXPECT_EQ(reloads, 1);
    Q_EMIT row.targetPicker().selectionChosen(QStringLiteral("Polish"));
    EXPECT_EQ(settings.pairs()[0].target, QStringLiteral("Polish"));
}

TEST_F(SettingsTest, aShortcutIsCapturedWithTheProgramsOwnSuspended)
{
    installKeyTranslation([](const QKeyEvent& event) -> std::optional<quint32> {
        return event.key() == Qt::Key_T ? std::optional<quint32>(17) : std::nullopt;
    });
    open(SettingsCategory::languages);
    auto& page = static_cast<LanguagesPage&>(*view->pageOf(SettingsCategory::languages));
    page.rows()[0]->bindButton().click();
    auto* sheet = view->findChild<HotKeyBindSheet*>();
    ASSERT_NE(sheet, nullptr);
    EXPECT_EQ(suspensions, 1);

    QTest::keyClick(view.get(), Qt::Key_T);
    EXPECT_TRUE(shows(QStringLiteral("Add at least ⌘, ⌥ or ⌃ plus a key")));
    QTest::keyClick(view.get(), Qt::Key_T, Qt::ControlModifier | Qt::AltModifier);
    EXPECT_TRUE(shows(QStringLiteral("⌃⌥T")));
    sheet->saveButton().click();
    EXPECT_EQ(settings.pairs()[0].hotKey, (KeyChord{17, KeyChord::control | KeyChord::option}));
    EXPECT_TRUE(waitUntil([this] { return reloads > 0; }));
    installKeyTranslation({});
}

TEST_F(SettingsTest, theButtonsStayUnderThePointerWhateverIsSaidAboutAShortcut)
{
    installKeyTranslation([](const QKeyEvent&) { return std::optional<quint32>(17); });
    services.isHeldElsewhere = [](const KeyChord&) { return true; };
    open(SettingsCategory::languages);
    auto& page = static_cast<LanguagesPage&>(*view->pageOf(SettingsCategory::languages));
    page.rows()[0]->bindButton().click();
    const auto* sheet = view->findChild<HotKeyBindSheet*>();
    ASSERT_NE(sheet, nullptr);
    QCoreApplication::processEvents();
    const QRect before = sheet->panelRect();
    QTest::keyClick(view.get(), Qt::Key_T, Qt::ControlModifier | Qt::AltModifier);
    ASSERT_TRUE(shows(QStringLiteral(
        "Captured ⌃⌥T, which another program seems to use. Press Save to keep it.")));
    QCoreApplication::processEvents();
    EXPECT_EQ(sheet->panelRect(), before);
    installKeyTranslation({});
}

TEST_F(SettingsTest, aShortcutOfAnotherPairCannotBeSaved)
{
    installKeyTranslation([](const QKeyEvent&) -> std::optional<quint32> { return quint32(17); });
    settings.addPair();
    QList<LanguagePair> pairs = settings.pairs();
    pairs[1].hotKey = KeyChord{17, KeyChord::control};
    settings.setPairs(pairs);
    open(SettingsCategory::languages);
    auto& page = static_cast<LanguagesPage&>(*view->pageOf(SettingsCategory::languages));
    page.rows()[0]->bindButton().click();
    auto* sheet = view->findChild<HotKeyBindSheet*>();
    QTest::keyClick(view.get(), Qt::Key_T, Qt::ControlModifier);
    EXPECT_TRUE(shows(QStringLiteral("This shortcut is already used.")));
    EXPECT_FALSE(sheet->saveButton().isEnabled());
    QTest::keyClick(view.get(), Qt::Key_Escape);
    EXPECT_FALSE(settings.pairs()[0].hotKey.has_value());
    installKeyTranslation({});
}

TEST_F(SettingsTest, aChangeOfLanguageRedrawsEverything)
{
    installLocalization(&defaults);
    open(SettingsCategory::behavior);
    settings.setAppLanguage(AppLanguage::german);
    QCoreApplication::postEvent(qApp, new QEvent(QEvent::LanguageChange));
    EXPECT_TRUE(waitUntil([this] { return shows(QStringLiteral("Verhalten")); }));
    EXPECT_EQ(view->rowOf(SettingsCategory::languages).text(), QStringLiteral("Sprachen"));
    EXPECT_EQ(view->windowTitle(), QStringLiteral("Einstellungen"));
    settings.setAppLanguage(AppLanguage::english);
    installLocalization(nullptr);
}

TEST_F(SettingsTest, theInstallIdCanBeCopied)
{
    open(SettingsCategory::general);
    EXPECT_TRUE(shows(QStringLiteral("an-install-id")));
    named<TextButton>(QStringLiteral("Copy"))->click();
    EXPECT_EQ(clipboard, QStringLiteral("an-install-id"));
}

TEST_F(SettingsTest, theUsersLanguageProposesItsGlossary)
{
    settings.setPairs({});
    open(SettingsCategory::languages);
    EXPECT_TRUE(shows(QStringLiteral("German → English (US)")));
    EXPECT_NE(named<TextButton>(QStringLiteral("Download German → English (US)")), nullptr);
}

TEST_F(SettingsTest, tabGoesThroughTheLanguagesFromTheTopDown)
{
    settings.setPairs({});
    open(SettingsCategory::languages);
    named<TextButton>(QStringLiteral("Add pair"))->click();
    LanguagePair french = settings.pairs().constFirst();
    french.target = QStringLiteral("French");
    settings.setPairs({french}); // proposes another glossary
    view->resize(820, 2000);
    QCoreApplication::processEvents();
    QStringList names;
    int y = 0;
    auto* begin = &view->rowOf(SettingsCategory::languages);
    begin->setFocus();
    for (int i = 0; i < 40; ++i) {
        QTest::keyClick(view.get(), Qt::Key_Tab);
        const QWidget* now = view->focusWidget();
        if (!view->pageOf(SettingsCategory::languages)->isAncestorOf(now)) {
            continue;
        }
        const int middle = now->mapTo(view.get(), now->rect().center()).y();
        EXPECT_GE(middle, y - 2) << qPrintable(now->accessibleName());
        y = middle;
        names += now->accessibleName();
        if (names.last() == QStringLiteral("Download")) {
            break;
        }
    }
    EXPECT_TRUE(names.contains(QStringLiteral("Download German → French")))
        << qPrintable(names.join(u'|'));
    EXPECT_EQ(names.last(), QStringLiteral("Download"));
}

TEST_F(SettingsTest, theEngineIsLookedAtEachTimeItShows)
{
    open();
    EXPECT_GE(engineLooks, 1);
    view->hide();
    engineLooks = 0;
    view->show();
    EXPECT_GE(engineLooks, 1);
    view->select(SettingsCategory::general);
    engineLooks = 0;
    view->select(SettingsCategory::translation);
    EXPECT_GE(engineLooks, 1);
}

TEST_F(SettingsTest, glossariesOfOtherProcessesShowWhenTheirPageDoes)
{
    settings.setPairs({});
    open(SettingsCategory::languages);
    ASSERT_NE(named<TextButton>(QStringLiteral("Download German → English (US)")), nullptr);
    view->hide();
    const QString edition = folder.filePath(QStringLiteral("glossaries/wikdict-2_2026-06"));
    ASSERT_TRUE(QDir().mkpath(edition));
    for (const char* name : {"/de-en.tsv", "/en-de.tsv"}) {
        QFile file(edition + QString::fromUtf8(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("Haus\thouse\t20.5\n");
    }
    defaults.setValue(QStringLiteral("zv.glossaryPackages.wikdict-2_2026-06"),
                      QByteArrayLiteral(R"([{"sourceCode":"de","targetCode":"en-US"}])"));
    view->show();
    EXPECT_TRUE(waitUntil([&] {
        return named<TextButton>(QStringLiteral("Delete German → English (US)")) != nullptr;
    }));
}

TEST_F(SettingsTest, tabGoesThroughTheLanguagesThatAreThereFromTheTopDown)
{
    open(SettingsCategory::languages);
    view->resize(820, 2000);
    QCoreApplication::processEvents();
    const QWidget* page = view->pageOf(SettingsCategory::languages);
    view->rowOf(SettingsCategory::languages).setFocus();
    int y = 0;
    for (int i = 0; i < 12; ++i) {
        QTest::keyClick(view.get(), Qt::Key_Tab);
        const QWidget* now = view->focusWidget();
        if (page->isAncestorOf(now)) {
            const int middle = now->mapTo(view.get(), now->rect().center()).y();
            EXPECT_GE(middle, y - 2) << qPrintable(now->accessibleName());
            y = middle;
        }
    }
    EXPECT_GT(y, 0);
}

TEST_F(SettingsTest, tellWhenTheyComeAndGo)
{
    int appeared = 0;
    int disappeared = 0;
    view = std::make_unique<SettingsView>(theme, services, clock);
    QObject::connect(view.get(), &SettingsView::appeared, [&] { ++appeared; });
    QObject::connect(view.get(), &SettingsView::disappeared, [&] { ++disappeared; });
    view->show();
    QTest::keyClick(view.get(), Qt::Key_Escape);
    EXPECT_EQ(appeared, 1);
    EXPECT_EQ(disappeared, 1);
}

TEST_F(SettingsTest, theLanguageOfTheInterfaceIsChosenBelowTheCategories)
{
    QList<AppLanguage> chosen;
    services.languageChosen = [&] { chosen += settings.appLanguage(); };
    open();
    Picker& picker = view->languagePicker();
    EXPECT_TRUE(shows(QStringLiteral("App Language")));
    EXPECT_EQ(picker.accessibleName(), QStringLiteral("App Language"));
    EXPECT_THAT(picker.items(),
                ElementsAre(QStringLiteral("System"), QStringLiteral("English"),
                            QStringLiteral("Русский"), QStringLiteral("中文（简体）"),
                            QStringLiteral("Español"), QStringLiteral("हिन्दी"),
                            QStringLiteral("Deutsch"), QStringLiteral("Français")));
    EXPECT_EQ(picker.valueText(), QStringLiteral("System"));
    Q_EMIT picker.activated(6);
    EXPECT_EQ(settings.appLanguage(), AppLanguage::german);
    EXPECT_EQ(defaults.string(QStringLiteral("zv.appLanguage")), QStringLiteral("de"));
    EXPECT_EQ(picker.valueText(), QStringLiteral("Deutsch"));
    EXPECT_THAT(chosen, ElementsAre(AppLanguage::german));
}

TEST_F(SettingsTest, theBannerSaysWhatIsMissing)
{
    permissionState = State::stale;
    for (const SettingsCategory category : allSettingsCategories) {
        open(category);
        const bool isItsOwn = category == SettingsCategory::accessibility;
        EXPECT_EQ(shows(QStringLiteral("Accessibility permission required")), !isItsOwn);
        EXPECT_EQ(shows(QStringLiteral("Hotkeys and in-place translation need Accessibility before "
                                       "they can read selected text.")),
                  !isItsOwn);
    }
}

TEST_F(SettingsTest, thePageOfThePermissionSaysWhyItIsNeededAndWhetherItIsThere)
{
    open(SettingsCategory::accessibility);
    EXPECT_TRUE(shows(QStringLiteral(
        "Zelvane Desk copies your selection with ⌘C and pastes the translation back with ⌘V, "
        "which macOS only allows for apps trusted in Privacy & Security → Accessibility. Without "
        "it, hotkeys and the ⌥ + right-click menu cannot read the selected text.")));
    EXPECT_TRUE(shows(QStringLiteral("Permission granted")));
    EXPECT_EQ(named<TextButton>(QStringLiteral("Request Permission…")), nullptr);
    permissionState = State::denied;
    EXPECT_TRUE(shows(QStringLiteral("Permission not granted")));
    EXPECT_FALSE(shows(QStringLiteral("Permission granted")));
    EXPECT_NE(named<TextButton>(QStringLiteral("Request Permission…")), nullptr);
}

} // namespace
} // namespace zelvane::test
