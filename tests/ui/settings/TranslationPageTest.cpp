#include "ui/settings/TranslationPage.h"
#include "pipeline/TranslationError.h"
#include "settings/FactorySettings.h"
#include "ui/SettingsFixture.h"
#include "ui/components/LinkLabel.h"
#include "ui/sheets/APIKeyEditSheet.h"
#include "ui/sheets/PromptEditSheet.h"

#include <gmock/gmock.h>

#include <QTest>

namespace zelvane::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

class TranslationPageTest : public SettingsTest
{
protected:
    TranslationPage& openPage()
    {
        return static_cast<TranslationPage&>(*open().pageOf(SettingsCategory::translation));
    }

    /// What the user picks of the platforms.
    void pick(AIProvider provider)
    {
        Picker& picker = openPage().platformPicker();
        const auto row = picker.items().indexOf(displayName(provider));
        ASSERT_GE(row, 0);
        picker.setCurrentIndex(int(row));
        Q_EMIT picker.activated(int(row));
        QCoreApplication::processEvents();
    }

    static QCoro::Task<QList<RemoteModel>> refused()
    {
        throw TranslationError::http(401, QStringLiteral("no such key"));
        co_return QList<RemoteModel>();
    }
};

TEST_F(TranslationPageTest, offersTheEnginesThatNeedNoKeyUntilTheUserWantsOnesOwn)
{
    settings.setProvider(AIProvider::zelvane);
    TranslationPage& page = openPage();
    EXPECT_THAT(page.platformPicker().items(),
                ElementsAre(QStringLiteral("Zelvane Best&Fast (Online)"),
                            QStringLiteral("Smart Offline"), QStringLiteral("Balanced Offline"),
                            QStringLiteral("Fast Offline")));
    EXPECT_EQ(page.platformPicker().valueText(), QStringLiteral("Zelvane Best&Fast (Online)"));

    named<Switch>(QStringLiteral("I want to use my own AI models"))->click();
    EXPECT_TRUE(settings.useOwnAI());
    EXPECT_THAT(page.platformPicker().items(),
                ElementsAre(QStringLiteral("ChatGPT"), QStringLiteral("Gemini"),
                            QStringLiteral("Claude"), QStringLiteral("DeepSeek"),
                            QStringLiteral("Mistral"), QStringLiteral("Grok"),
                            QStringLiteral("DeepL")));
    EXPECT_TRUE(shows(QStringLiteral("When this is on, more platforms appear in the Platform menu "
                                     "and you can enter your personal API key.")));
    // The engine stays until another one is picked.
    EXPECT_EQ(settings.provider(), AIProvider::zelvane);
    EXPECT_EQ(page.platformPicker().valueText(), QStringLiteral("Zelvane Best&Fast (Online)"));
}

TEST_F(TranslationPageTest, givingUpOnesOwnKeyGoesBackToTheHostedEngine)
{
    use(AIProvider::claude);
    TranslationPage& page = openPage();
    named<Switch>(QStringLiteral("I want to use my own AI models"))->click();
    EXPECT_EQ(settings.provider(), AIProvider::zelvane);
    EXPECT_EQ(page.platformPicker().valueText(), QStringLiteral("Zelvane Best&Fast (Online)"));
}

TEST_F(TranslationPageTest, eachPlatformTellsWhatItIsGoodFor)
{
    settings.setProvider(AIProvider::fastOffline);
    openPage();
    EXPECT_TRUE(shows(QStringLiteral(
        "Fastest and lightest offline option. Fine for short, simple phrases; weaker on long "
        "texts, slang, and specialist terms. Choose when speed and disk space matter most.")));
}

TEST_F(TranslationPageTest, pickingWhatIsPickedChangesNothing)
{
    use(AIProvider::chatGPT);
    openPage();
    backend.addStatus = SecretStatus::otherFailure;
    settings.setApiKey(QStringLiteral("sk-not-stored"));
    pick(AIProvider::chatGPT);
    EXPECT_EQ(settings.apiKey(), QStringLiteral("sk-not-stored"));
    EXPECT_THAT(picked, IsEmpty());
}

TEST_F(TranslationPageTest, aKeyBelongsToEveryPlatformOfOnesOwn)
{
    openPage();
    EXPECT_EQ(named<TextButton>(QStringLiteral("Edit Key")), nullptr);
    for (const AIProvider provider :
         {AIProvider::chatGPT, AIProvider::gemini, AIProvider::claude, AIProvider::deepSeek,
          AIProvider::mistral, AIProvider::grok, AIProvider::deepL}) {
        use(provider);
        EXPECT_TRUE(shows(QStringLiteral("API Key status")));
        EXPECT_TRUE(shows(QStringLiteral("No API key set")));
        EXPECT_NE(named<TextButton>(QStringLiteral("Edit Key")), nullptr);
        auto* page = named<LinkLabel>(pageLinkLabel(provider));
        ASSERT_NE(page, nullptr) << qPrintable(displayName(provider));
        EXPECT_EQ(page->address(), userFacingPage(provider));
        EXPECT_EQ(named<TextButton>(QStringLiteral("Refresh models")) != nullptr,
                  provider != AIProvider::deepL);
    }
    EXPECT_NE(named<LinkLabel>(QStringLiteral("Get a DeepL API key")), nullptr);
}

TEST_F(TranslationPageTest, anEmptiedKeyIsClearedAndNoLongerVerified)
{
    use(AIProvider::chatGPT);
    settings.setApiKey(QStringLiteral("sk-1"));
    TranslationPage& page = openPage();
    EXPECT_TRUE(page.models().apiKeyVerified());
    EXPECT_TRUE(backend.items.contains(QStringLiteral("zv.apiKey.ChatGPT")));

    named<TextButton>(QStringLiteral("Edit Key"))->click();
    auto* sheet = view->findChild<APIKeyEditSheet*>();
    ASSERT_NE(sheet, nullptr);
    EXPECT_TRUE(shows(QStringLiteral("API Key")));
    EXPECT_TRUE(shows(QStringLiteral("ChatGPT")));
    EXPECT_EQ(sheet->field().placeholderText(), QStringLiteral("Paste API key"));
    EXPECT_EQ(sheet->field().text(), QStringLiteral("sk-1"));
    sheet->field().setText(QStringLiteral("  "));
    sheet->saveButton().click();

    EXPECT_EQ(settings.apiKey(), QString());
    EXPECT_FALSE(page.models().apiKeyVerified());
    EXPECT_FALSE(backend.items.contains(QStringLiteral("zv.apiKey.ChatGPT")));
    EXPECT_TRUE(shows(QStringLiteral("No API key set")));
}

TEST_F(TranslationPageTest, aKeyThatIsNotSavedStaysAsItWas)
{
    use(AIProvider::deepL);
    settings.setApiKey(QStringLiteral("deepl-key-1"));
    openPage();
    named<TextButton>(QStringLiteral("Edit Key"))->click();
    auto* sheet = view->findChild<APIKeyEditSheet*>();
    sheet->field().setText(QStringLiteral("another"));
    QTest::keyClick(&sheet->field(), Qt::Key_Escape);
    EXPECT_EQ(settings.apiKey(), QStringLiteral("deepl-key-1"));
}

TEST_F(TranslationPageTest, theListOfModelsFollowsTheKey)
{
    use(AIProvider::chatGPT);
    settings.setModel(QStringLiteral("gpt-a"));
    TranslationPage& page = openPage();
    EXPECT_TRUE(shows(QStringLiteral("No model loaded")));
    EXPECT_THAT(page.modelPicker().items(), ElementsAre(QStringLiteral("gpt-a (saved)")));

    page.models().saveKey(QStringLiteral("sk-1"));
    EXPECT_FALSE(shows(QStringLiteral("No model loaded")));
    EXPECT_THAT(page.modelPicker().items(), ElementsAre(QStringLiteral("GPT A")));
    EXPECT_EQ(page.modelPicker().valueText(), QStringLiteral("GPT A"));
}

TEST_F(TranslationPageTest, withoutAnyModelThePickerSaysSo)
{
    use(AIProvider::chatGPT);
    settings.setModel(QString());
    EXPECT_EQ(openPage().modelPicker().valueText(), QStringLiteral("No model loaded"));
}

TEST_F(TranslationPageTest, aModelIsPickedByItsName)
{
    listed = {{QStringLiteral("gpt-a"), QStringLiteral("GPT A")},
              {QStringLiteral("gpt-b"), QStringLiteral("GPT B")}};
    use(AIProvider::chatGPT);
    settings.setApiKey(QStringLiteral("sk-1"));
    Q_EMIT openPage().modelPicker().activated(1);
    EXPECT_EQ(settings.model(), QStringLiteral("gpt-b"));
    EXPECT_EQ(defaults.string(QStringLiteral("zv.model.ChatGPT")), QStringLiteral("gpt-b"));
}

TEST_F(TranslationPageTest, refreshingAsksAgainAndSaysThatItLoads)
{
    QList<Completion<QList<RemoteModel>>> answers;
    use(AIProvider::chatGPT);
    settings.setApiKey(QStringLiteral("sk-1"));
    services.fetchModels = [&answers](AIProvider, QString, std::stop_token) {
        answers.emplaceBack();
        return waited(answers.last());
    };
    openPage();
    EXPECT_THAT(answers, SizeIs(1));
    EXPECT_TRUE(shows(QStringLiteral("Loading models…")));
    named<TextButton>(QStringLiteral("Refresh models"))->click();
    ASSERT_THAT(answers, SizeIs(2));
    answers[0].succeed(QList<RemoteModel>());
    EXPECT_TRUE(shows(QStringLiteral("Loading models…")));
    answers[1].succeed(listed);
    EXPECT_FALSE(shows(QStringLiteral("Loading models…")));
    EXPECT_FALSE(shows(QStringLiteral("Custom model ID")));
}

TEST_F(TranslationPageTest, anEmptyListTurnsOnTheFieldForAModel)
{
    listed.clear();
    use(AIProvider::chatGPT);
    openPage();
    EXPECT_FALSE(shows(QStringLiteral("Custom model ID")));
    openPage().models().saveKey(QStringLiteral("sk-1"));
    EXPECT_TRUE(shows(QStringLiteral("No models returned. You can type a model ID manually.")));
    auto* field = named<TextField>(QStringLiteral("Custom model ID"));
    ASSERT_NE(field, nullptr);
    EXPECT_EQ(field->text(), QStringLiteral("gpt-5-nano"));
    field->selectAll();
    QTest::keyClicks(field, QStringLiteral("my-model"));
    EXPECT_EQ(settings.model(), QStringLiteral("my-model"));
}

TEST_F(TranslationPageTest, aRefusedKeyIsToldUnderTheModelsAndNotOfAnotherPlatform)
{
    use(AIProvider::chatGPT);
    settings.setApiKey(QStringLiteral("sk-secret"));
    services.fetchModels = [](AIProvider, QString, std::stop_token) { return refused(); };
    openPage();
    const QString told = TranslationError::http(401, QStringLiteral("no such key")).description();
    EXPECT_TRUE(shows(told));
    EXPECT_FALSE(told.contains(QStringLiteral("sk-secret")));
    pick(AIProvider::deepL);
    EXPECT_FALSE(shows(told));
}

TEST_F(TranslationPageTest, aKeyThatWorksAndCannotBeStoredIsToldAndStaysVerified)
{
    backend.addStatus = SecretStatus::otherFailure;
    use(AIProvider::chatGPT);
    TranslationPage& page = openPage();
    page.models().saveKey(QStringLiteral("sk-1"));
    EXPECT_TRUE(page.models().apiKeyVerified());
    EXPECT_TRUE(shows(QStringLiteral(
        "API key works, but it could not be saved to Keychain. Try saving the key again.")));
}

TEST_F(TranslationPageTest, looksAnewEachTimeTheSettingsAppear)
{
    use(AIProvider::chatGPT);
    settings.setApiKey(QStringLiteral("sk-1"));
    openPage();
    EXPECT_THAT(asked, SizeIs(1));
    view->select(SettingsCategory::behavior);
    view->select(SettingsCategory::translation);
    EXPECT_THAT(asked, SizeIs(1));
    view->hide();
    view->show();
    EXPECT_THAT(asked, SizeIs(2));
}

TEST_F(TranslationPageTest, looksWhatIsInstalledEachTimeTheSettingsAppear)
{
    settings.setProvider(AIProvider::smartOffline);
    openPage();
    const int before = engineLooks;
    view->hide();
    EXPECT_EQ(engineLooks, before);
    view->show();
    EXPECT_EQ(engineLooks, before + 1);
}

TEST_F(TranslationPageTest, thePromptIsShownAndGoesBackToTheDefault)
{
    settings.setPromptTemplate(QStringLiteral("Be brief."));
    openPage();
    EXPECT_TRUE(shows(QStringLiteral("Placeholders: {{source}} {{target}}")));
    auto* reset = named<TextButton>(QStringLiteral("Reset to default"));
    ASSERT_NE(reset, nullptr);
    reset->click();
    EXPECT_EQ(settings.promptTemplate(), defaultPromptTemplate());
    EXPECT_EQ(defaults.string(QStringLiteral("zv.prompt")), defaultPromptTemplate());
}

TEST_F(TranslationPageTest, thePromptStandsBelowItsTitleAndAboveWhatCanBeDoneToIt)
{
    TranslationPage& page = openPage();
    const auto heightOf = [&page](const QWidget* part) {
        return part ? part->mapTo(&page, QPoint(0, 0)).y() : -1;
    };
    const ThemedLabel* title = nullptr;
    for (const auto* label : page.findChildren<ThemedLabel*>()) {
        if (label->text() == QStringLiteral("Current translation prompt")) {
            EXPECT_EQ(title, nullptr);
            title = label;
        }
    }
    const auto* text = page.findChild<TextWell*>();
    EXPECT_LT(0, heightOf(title));
    EXPECT_LT(heightOf(title), heightOf(text));
    EXPECT_LT(heightOf(text), heightOf(named<TextButton>(QStringLiteral("Edit prompt"))));
    EXPECT_TRUE(text->editor().isReadOnly());
    EXPECT_EQ(text->editor().toPlainText(), settings.promptTemplate());
}

TEST_F(TranslationPageTest, thePromptSheetNamesWhatItIsAboutAndForgetsItsDraft)
{
    settings.setPromptTemplate(QStringLiteral(" \n"));
    openPage();
    named<TextButton>(QStringLiteral("Edit prompt"))->click();
    auto* sheet = view->findChild<PromptEditSheet*>();
    ASSERT_NE(sheet, nullptr);
    EXPECT_TRUE(shows(QStringLiteral("Custom prompt")));
    EXPECT_TRUE(shows(QStringLiteral("Global translation prompt")));
    EXPECT_TRUE(sheet->editor().hasFocus());
    EXPECT_EQ(sheet->editor().toPlainText(), defaultPromptTemplate());
    sheet->editor().setPlainText(QStringLiteral("Another."));
    QTest::keyClick(&sheet->editor(), Qt::Key_Escape);
    EXPECT_EQ(settings.promptTemplate(), QStringLiteral(" \n"));

    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    named<TextButton>(QStringLiteral("Edit prompt"))->click();
    sheet = view->findChild<PromptEditSheet*>();
    sheet->editor().setPlainText(QStringLiteral("Another."));
    sheet->resetButton().click();
    EXPECT_EQ(sheet->editor().toPlainText(), defaultPromptTemplate());
}

TEST_F(TranslationPageTest, mayGoWithASheetOpenAndModelsOnTheirWay)
{
    const Completion<QList<RemoteModel>> answer;
    use(AIProvider::chatGPT);
    settings.setApiKey(QStringLiteral("sk-1"));
    services.fetchModels = [answer](AIProvider, QString, std::stop_token) {
        return waited(answer);
    };
    openPage();
    named<TextButton>(QStringLiteral("Edit Key"))->click();
    ASSERT_NE(view->findChild<APIKeyEditSheet*>(), nullptr);
    view.reset();
    answer.succeed(listed);
    settings.setModel(QStringLiteral("another"));
    settings.setProvider(AIProvider::zelvane);
    QCoreApplication::processEvents();
    EXPECT_FALSE(backend.items.contains(QStringLiteral("zv.apiKey.ChatGPT")));
}

TEST_F(TranslationPageTest, anUninstalledEngineOffersItsInstallation)
{
    openPage();
    auto* install = named<TextButton>(QStringLiteral("Install Offline Engine…"));
    ASSERT_NE(install, nullptr);
    EXPECT_EQ(named<TextButton>(QStringLiteral("Delete Offline Engine")), nullptr);
    engine.status = engine_status::Failed{QStringLiteral("No room.")};
    EXPECT_NE(named<TextButton>(QStringLiteral("Install Offline Engine…")), nullptr);
    engine.status = engine_status::Ready{};
    EXPECT_NE(named<TextButton>(QStringLiteral("Reinstall")), nullptr);
    EXPECT_NE(named<TextButton>(QStringLiteral("Delete Offline Engine")), nullptr);
    use(AIProvider::chatGPT);
    EXPECT_EQ(named<TextButton>(QStringLiteral("Reinstall")), nullptr);
}

} // namespace
} // namespace zelvane::test
