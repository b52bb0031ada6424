#include "settings/AppSettings.h"

#include "support/Await.h"
#include "support/FakeSecretBackend.h"

#include <QMap>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace zelvane::test {
namespace {

using Contents = QMap<QString, DefaultsValue>;

const QByteArray onePair =
    R"([{"id":"e621e1f8-c36c-495a-93fc-0c247a3e6e5f","enabled":true,"source":"mandarin",)"
    R"("target":"british english"}])";

/// A list of pairs as older versions stored it, without shortcuts.
QByteArray pairsJson(const std::vector<std::pair<QString, QString>>& languages)
{
    QList<LanguagePair> pairs;
    for (const auto& [source, target] : languages) {
        LanguagePair pair = pairFromAnyLanguage(target);
        pair.source = source;
        pairs += pair;
    }
    return encodePairs(pairs);
}

class AppSettingsTest : public ::testing::Test
{
protected:
    /// Reads what stands in `defaults` and `backend`.
    AppSettings& load(const QString& systemLanguage = QStringLiteral("German"))
    {
        settings = std::make_unique<AppSettings>(defaults, secrets, systemLanguage);
        return *settings;
    }

    void store(const char* key, const DefaultsValue& value)
    {
        defaults.setValue(QString::fromUtf8(key), value);
    }
    void storeText(const char* key, const char* text) { store(key, QString::fromUtf8(text)); }
    void storeSecret(const char* account, const char* secret)
    {
        backend.items.insert(QString::fromUtf8(account), secret);
        store((std::string("zv.keychain.has.") + account).c_str(), true);
    }
    [[nodiscard]] std::optional<QString> stored(const char* key) const
    {
        return defaults.string(QString::fromUtf8(key));
    }
    [[nodiscard]] std::optional<bool> storedFlag(const char* key) const
    {
        return defaults.boolean(QString::fromUtf8(key));
    }
    [[nodiscard]] Contents contents() const
    {
        Contents all;
        for (const QString& key : defaults.keys()) {
            all.insert(key, *defaults.value(key));
        }
        return all;
    }
    /// Delivers the switch that follows a change of the provider.
    static void finishSwitch() { QCoreApplication::sendPostedEvents(); }

    OverlayUserDefaults defaults;
    FakeSecretBackend backend;
    SecretStore secrets{defaults, backend};
    std::unique_ptr<AppSettings> settings;
};

class Load : public AppSettingsTest
{
};

TEST_F(Load, givesANewInstallationItsDefaults)
{
    const AppSettings& fresh = load();
    EXPECT_EQ(fresh.provider(), AIProvider::smartOffline);
    EXPECT_EQ(fresh.model(), QStringLiteral("hymt2-7b-q4-k-m"));
    EXPECT_EQ(fresh.promptTemplate(),
              QStringLiteral(
                  "Translate the text below from {{source}} to {{target}}.\n\n"
                  "Rules, most important first:\n"
                  "1. Output the translation only. No preamble, no notes, no surrounding quotes.\n"
                  "2. Leave nothing in {{source}}. Translate quoted phrases."));
    EXPECT_EQ(fresh.promptTemplate().size(), 221);
    EXPECT_EQ(fresh.pairs().size(), 2);
    EXPECT_EQ(fresh.apiKey(), QString());
    EXPECT_TRUE(fresh.autoReplace());
    EXPECT_TRUE(fresh.doubleHotKeyWindow());
    EXPECT_TRUE(fresh.optionRightClickMenu());
    EXPECT_FALSE(fresh.startAtLogin());
    EXPECT_FALSE(fresh.useOwnAI());
    EXPECT_EQ(fresh.manualTranslationHotKey(), std::nullopt);
    EXPECT_EQ(fresh.manualWindowSize(), TranslationWindowSize::medium);
    EXPECT_EQ(fresh.resultWindowSize(), TranslationWindowSize::medium);
    EXPECT_EQ(fresh.appLanguage(), AppLanguage::system);
    EXPECT_FALSE(fresh.hasSeenOnboarding());
    EXPECT_EQ(fresh.cloudflareWorkerURL(), QString());
    EXPECT_EQ(fresh.cloudflareAccessToken(), QString());
    EXPECT_EQ(backend.calls, QStringList());
}

TEST_F(Load, writesOnlyTheModelAndTheMarkOfTheMoveInANewInstallation)
{
    load();
    EXPECT_EQ(contents(), (Contents{{QStringLiteral("zv.model.Smart Offline"),
                                     QStringLiteral("hymt2-7b-q4-k-m")},
                                    {QStringLiteral("zv.keychain.presenceMigrated"), true}}));
}

TEST_F(Load, changesNothingTheSecondTime)
{
    storeText("zv.provider", "ChatGPT");
    storeText("zv.model", "gpt-4o-mini");
    store("zv.pairs", onePair);
    load();
    const Contents first = contents();
    load();
    EXPECT_EQ(contents(), first);
}

TEST_F(Load, rewritesTheProvidersOlderName)
{
    storeText("zv.provider", "Offline (MADLAD)");
    EXPECT_EQ(load().provider(), AIProvider::fastOffline);
    EXPECT_EQ(stored("zv.provider"), QStringLiteral("Fast Offline"));
}

TEST_F(Load, takesTheDisplayNameOfTheHostedServiceAndWritesItsStoredName)
{
    storeText("zv.provider", "Zelvane Best&Fast (Online)");
    EXPECT_EQ(load().provider(), AIProvider::zelvane);
    EXPECT_EQ(stored("zv.provider"), QStringLiteral("Zelvane"));
}

TEST_F(Load, leavesAnUnknownProviderInTheStore)
{
    storeText("zv.provider", "chatgpt");
    EXPECT_EQ(load().provider(), AIProvider::smartOffline);
    EXPECT_EQ(stored("zv.provider"), QStringLiteral("chatgpt"));
}

TEST_F(Load, readsTheModelOfTheProvider)
{
    storeText("zv.provider", "Claude");
    storeText("zv.model.Claude", "claude-x");
    storeText("zv.model.ChatGPT", "gpt-x");
    storeText("zv.model", "older");
    EXPECT_EQ(load().model(), QStringLiteral("claude-x"));
    EXPECT_EQ(stored("zv.model"), std::nullopt);
    EXPECT_EQ(stored("zv.model.ChatGPT"), QStringLiteral("gpt-x"));
}

TEST_F(Load, givesTheOldModelToTheProviderOfTheFirstLoadOnce)
{
    storeText("zv.provider", "Mistral");
    storeText("zv.model.Mistral", "");
    storeText("zv.model", "mistral-large");
    EXPECT_EQ(load().model(), QStringLiteral("mistral-large"));
    EXPECT_EQ(stored("zv.model.Mistral"), QStringLiteral("mistral-large"));
    EXPECT_EQ(stored("zv.model"), std::nullopt);
    storeText("zv.provider", "Grok");
    EXPECT_EQ(load().model(), QStringLiteral("grok-2-latest"));
}

TEST_F(Load, replacesTheRetiredModelOfChatGPT)
{
    storeText("zv.provider", "ChatGPT");
    storeText("zv.model", "gpt-4o-mini");
    EXPECT_EQ(load().model(), QStringLiteral("gpt-5-nano"));
    EXPECT_EQ(stored("zv.model.ChatGPT"), QStringLiteral("gpt-5-nano"));
    EXPECT_EQ(stored("zv.model"), std::nullopt);
}

TEST_F(Load, keepsTheRetiredModelsNameForOtherProviders)
{
    storeText("zv.provider", "Mistral");
    storeText("zv.model.Mistral", "gpt-4o-mini");
    EXPECT_EQ(load().model(), QStringLiteral("gpt-4o-mini"));
}

TEST_F(Load, takesTheDefaultModelForAnEmptyOldOne)
{
    storeText("zv.provider", "DeepSeek");
    storeText("zv.model", "");
    EXPECT_EQ(load().model(), QStringLiteral("deepseek-chat"));
    EXPECT_EQ(stored("zv.model.DeepSeek"), QStringLiteral("deepseek-chat"));
}

const char* const earlierPrompts[] = {
    "Translate the following text from {{source}} to {{target}}.\n"
    "If the source is auto-detected, identify the language of the text first, then translate.\n"
    "Return ONLY the translation — no quotes, no explanations, no preamble.\n"
    "Preserve meaning, tone, line breaks, and proper names when appropriate.",
    "Translate the following text from {{source}} to {{target}}.\n"
    "If the source is auto-detected, identify the language of the text first, then translate.\n"
    "Return ONLY the translation — no quotes, no explanations, no preamble.\n"
    "Preserve the exact meaning, tone, register, emotional force, irony, line breaks, and proper "
    "names.\n"
    "Render slang, colloquialisms, contractions, filler words, profanity, fragments, and "
    "deliberate repetition with natural functional equivalents in the target language. Do not "
    "sanitize, formalize, normalize, or explain them.\n"
    "Translate every passage and quotation written in the source language; never leave "
    "source-language text untranslated unless it is a proper name or inherently untranslatable "
    "token.\n"
    "Prefer idiomatic target-language phrasing over literal calques, but do not omit details or "
    "add information.",
    "Translate the text below from {{source}} to {{target}}.\n\n"
    "Rules, most important first:\n"
    "1. Output the translation only. No preamble, no notes, no surrounding quotes.\n"
    "2. Leave nothing in {{source}}. Translate quoted phrases, single words, examples, slang and "
    "filler words too. Only proper names may stay unchanged.\n"
    "3. Use {{target}} punctuation and {{target}} quotation marks, never the source ones.\n"
    "4. Keep the register. Slang stays slang, crude stays crude, sloppy stays sloppy. Never make "
    "the text more formal, more polite, or more literary than the original.\n"
    "5. Use natural {{target}} idioms. Never render an idiom or a set phrase word by word.\n"
    "6. Keep every detail, add nothing, and keep the original line breaks.\n\n"
    "If the source language is auto-detected, identify it first, then translate."};

TEST_F(Load, replacesAPromptThatAnEarlierVersionCameWith)
{
    for (const char* prompt : earlierPrompts) {
        storeText("zv.prompt", prompt);
        EXPECT_EQ(load().promptTemplate(), defaultPromptTemplate());
        EXPECT_EQ(stored("zv.prompt"), QString::fromUtf8(prompt)) << "rewritten";
    }
}

TEST_F(Load, keepsAPromptThatDiffersByOneCharacter)
{
    for (const char* prompt : earlierPrompts) {
        const QString changed = QString::fromUtf8(prompt) + u' ';
        store("zv.prompt", changed);
        EXPECT_EQ(load().promptTemplate(), changed);
    }
    storeText("zv.prompt", "");
    EXPECT_EQ(load().promptTemplate(), QString());
}

TEST_F(Load, countsAKeyProviderAsTheUseOfOwnKeys)
{
    storeText("zv.provider", "Grok");
    store("zv.useOwnAI", false);
    EXPECT_TRUE(load().useOwnAI());
    EXPECT_EQ(storedFlag("zv.useOwnAI"), true);
}

TEST_F(Load, keepsTheStoredUseOfOwnKeys)
{
    storeText("zv.provider", "Zelvane");
    store("zv.useOwnAI", true);
    EXPECT_TRUE(load().useOwnAI());
    store("zv.useOwnAI", false);
    EXPECT_FALSE(load().useOwnAI());
    store("zv.useOwnAI", qint64(1));
    EXPECT_FALSE(load().useOwnAI());
}

TEST_F(Load, permitsTheReadOfKeysFromBeforeThePresenceFlags)
{
    storeText("zv.provider", "Claude");
    backend.items.insert(QStringLiteral("zv.apiKey.Claude"), "sk-claude");
    EXPECT_EQ(load().apiKey(), QStringLiteral("sk-claude"));
    // The wrong guess has been corrected by the read.
    EXPECT_EQ(storedFlag("zv.keychain.has.zv.apiKey"), std::nullopt);
    EXPECT_EQ(storedFlag("zv.keychain.has.zv.apiKey.Claude"), true);
}

TEST_F(Load, readsTheKeyOfTheProvider)
{
    storeText("zv.provider", "Gemini");
    store("zv.keychain.presenceMigrated", true);
    storeSecret("zv.apiKey.Gemini", "own");
    storeSecret("zv.apiKey", "older");
    EXPECT_EQ(load().apiKey(), QStringLiteral("own"));
    EXPECT_EQ(backend.items.value(QStringLiteral("zv.apiKey")), QByteArray("older"));
}

TEST_F(Load, givesTheOldKeyToTheProviderOfTheFirstLoad)
{
    storeText("zv.provider", "Gemini");
    storeSecret("zv.apiKey", "older");
    EXPECT_EQ(load().apiKey(), QStringLiteral("older"));
    EXPECT_EQ(backend.items,
              (QMap<QString, QByteArray>{{QStringLiteral("zv.apiKey.Gemini"), "older"}}));
    EXPECT_EQ(storedFlag("zv.keychain.has.zv.apiKey.Gemini"), true);
    EXPECT_EQ(storedFlag("zv.keychain.has.zv.apiKey"), std::nullopt);
}

TEST_F(Load, keepsTheOldKeyWhereItStandsIfItCannotBeMoved)
{
    storeText("zv.provider", "Gemini");
    storeSecret("zv.apiKey", "older");
    backend.addStatus = SecretStatus::otherFailure;
    EXPECT_EQ(load().apiKey(), QStringLiteral("older"));
    EXPECT_EQ(backend.items, (QMap<QString, QByteArray>{{QStringLiteral("zv.apiKey"), "older"}}));
}

TEST_F(Load, readsNoKeyForAProviderThatNeedsNone)
{
    storeText("zv.provider", "Zelvane");
    store("zv.useOwnAI", true);
    storeSecret("zv.apiKey", "older");
    EXPECT_EQ(load().apiKey(), QString());
    EXPECT_EQ(backend.calls, QStringList());
}

TEST_F(Load, readsTheBooleansThatAreOnByDefault)
{
    store("zv.autoReplace", false);
    store("zv.doubleHotKeyWindow", false);
    store("zv.optionRightClickMenu", false);
    store("zv.startAtLogin", true);
    load();
    EXPECT_FALSE(settings->autoReplace());
    EXPECT_FALSE(settings->doubleHotKeyWindow());
    EXPECT_FALSE(settings->optionRightClickMenu());
    EXPECT_TRUE(settings->startAtLogin());
    store("zv.autoReplace", qint64(0));
    storeText("zv.doubleHotKeyWindow", "false");
    store("zv.optionRightClickMenu", 0.0);
    load();
    EXPECT_TRUE(settings->autoReplace());
    EXPECT_TRUE(settings->doubleHotKeyWindow());
    EXPECT_TRUE(settings->optionRightClickMenu());
}

TEST_F(Load, readsTheChordOfTheManualWindow)
{
    store("zv.manualTranslationHotKey", QByteArray(R"({"keyCode":17,"carbonModifiers":2304})"));
    EXPECT_EQ(load().manualTranslationHotKey(), (KeyChord{17, 2304}));
}

TEST_F(Load, takesAnUndecodableChordForNone)
{
    for (const char* json : {R"({"keyCode":17})", "[17,2304]", "", "\xff"}) {
        store("zv.manualTranslationHotKey", QByteArray(json));
        EXPECT_EQ(load().manualTranslationHotKey(), std::nullopt) << json;
    }
    storeText("zv.manualTranslationHotKey", R"({"keyCode":17,"carbonModifiers":2304})");
    EXPECT_EQ(load().manualTranslationHotKey(), std::nullopt);
}

TEST_F(Load, readsTheWindowSizesAndTheInterfaceLanguage)
{
    storeText("zv.manualWindowSize", "extraSmall");
    storeText("zv.resultWindowSize", "extraLarge");
    storeText("zv.appLanguage", "zh-Hans");
    load();
    EXPECT_EQ(settings->manualWindowSize(), TranslationWindowSize::extraSmall);
    EXPECT_EQ(settings->resultWindowSize(), TranslationWindowSize::extraLarge);
    EXPECT_EQ(settings->appLanguage(), AppLanguage::chineseSimplified);
}

TEST_F(Load, takesUnknownChoicesForTheDefaults)
{
    storeText("zv.manualWindowSize", "Extra Small");
    storeText("zv.resultWindowSize", "huge");
    storeText("zv.appLanguage", "tlh");
    load();
    EXPECT_EQ(settings->manualWindowSize(), TranslationWindowSize::medium);
    EXPECT_EQ(settings->resultWindowSize(), TranslationWindowSize::medium);
    EXPECT_EQ(settings->appLanguage(), AppLanguage::system);
}

TEST_F(Load, writesLanguagesInTheirCanonicalSpelling)
{
    store("zv.pairs", onePair);
    load();
    ASSERT_EQ(settings->pairs().size(), 1);
    EXPECT_EQ(settings->pairs().at(0).source, QStringLiteral("Chinese (Simplified)"));
    EXPECT_EQ(settings->pairs().at(0).target, QStringLiteral("English (UK)"));
    EXPECT_FALSE(settings->pairs().at(0).useCustomPrompt);
}

TEST_F(Load, keepsTheFirstTenPairs)
{
    std::vector<std::pair<QString, QString>> languages;
    for (int i = 0; i < 12; ++i) {
        languages.emplace_back(QString::number(i), QStringLiteral("Polish"));
    }
    store("zv.pairs", pairsJson(languages));
    load();
    ASSERT_EQ(settings->pairs().size(), 10);
    EXPECT_EQ(settings->pairs().at(9).source, QStringLiteral("9"));
    settings->addPair();
    EXPECT_EQ(settings->pairs().size(), 10);
}

TEST_F(Load, takesTheDefaultPairsForAnUndecodableList)
{
    store("zv.pairs", QByteArray(R"([{"enabled":true,"source":"a","target":"b"}])"));
    load();
    ASSERT_EQ(settings->pairs().size(), 2);
    EXPECT_EQ(settings->pairs().at(1).target, QStringLiteral("German"));
    storeText("zv.pairs", "[]");
    EXPECT_EQ(load().pairs().size(), 2);
}

TEST_F(Load, keepsAnEmptyList)
{
    store("zv.pairs", QByteArray("[]"));
    EXPECT_EQ(load().pairs().size(), 0);
}

TEST_F(Load, replacesThePairsThatAnEarlierVersionCameWith)
{
    const QString any = QStringLiteral("Any Language");
    const std::vector<QByteArray> earlier{
        pairsJson({{any, QStringLiteral("English")},
                   {QStringLiteral("English"), QStringLiteral("Polish")},
                   {QStringLiteral("Russian"), QStringLiteral("Polish")},
                   {QStringLiteral("Polish"), QStringLiteral("Russian")}}),
        pairsJson({{any, QStringLiteral("english")},
                   {QStringLiteral("any language"), QStringLiteral("polish")}})};
    for (const QByteArray& json : earlier) {
        store("zv.pairs", json);
        load();
        ASSERT_EQ(settings->pairs().size(), 2);
        EXPECT_EQ(settings->pairs().at(0).target, QStringLiteral("English (US)"));
        EXPECT_EQ(settings->pairs().at(1).target, QStringLiteral("German"));
    }
}

TEST_F(Load, keepsPairsThatOnlyResembleAnEarlierSet)
{
    const QString any = QStringLiteral("Any Language");
    store("zv.pairs",
          pairsJson({{any, QStringLiteral("Polish")}, {any, QStringLiteral("English")}}));
    EXPECT_EQ(load().pairs().at(0).target, QStringLiteral("Polish"));
    store("zv.pairs", pairsJson({{any, QStringLiteral("English")}}));
    EXPECT_EQ(load().pairs().size(), 1);
}

TEST_F(Load, readsWhatOlderVersionsKeptForTheHostedService)
{
    store("zv.hasSeenOnboarding", true);
    storeText("zv.cloudflareWorkerURL", "https://w.example");
    storeSecret("zv.cloudflareAccessToken", "token");
    load();
    EXPECT_TRUE(settings->hasSeenOnboarding());
    EXPECT_EQ(settings->cloudflareWorkerURL(), QStringLiteral("https://w.example"));
    EXPECT_EQ(settings->cloudflareAccessToken(), QStringLiteral("token"));
}

TEST_F(Load, remembersTheKeyThatStandsInTheSecretStore)
{
    storeText("zv.provider", "Gemini");
    storeSecret("zv.apiKey.Gemini", "own");
    load();
    backend.calls.clear();
    EXPECT_TRUE(await(settings->saveKey()));
    EXPECT_EQ(backend.calls, QStringList());
}

TEST_F(Load, asksTheSecretStoreInItsOrder)
{
    storeText("zv.provider", "Gemini");
    storeText("zv.cloudflareWorkerURL", "https://w.example");
    load();
    EXPECT_EQ(backend.calls, (QStringList{QStringLiteral("find zv.apiKey.Gemini"),
                                          QStringLiteral("find zv.apiKey"),
                                          QStringLiteral("find zv.cloudflareAccessToken")}));
}

class Setters : public AppSettingsTest
{
protected:
    void SetUp() override { load(); }
};

TEST_F(Setters, writeThroughAtOnce)
{
    settings->setPromptTemplate(QStringLiteral("P"));
    settings->setAutoReplace(false);
    settings->setDoubleHotKeyWindow(false);
    settings->setOptionRightClickMenu(false);
    settings->setStartAtLogin(true);
    settings->setHasSeenOnboarding(true);
    settings->setManualWindowSize(TranslationWindowSize::small);
    settings->setResultWindowSize(TranslationWindowSize::large);
    settings->setAppLanguage(AppLanguage::hindi);
    settings->setCloudflareWorkerURL(QStringLiteral("https://w"));
    settings->setModel(QStringLiteral("M"));
    settings->setUseOwnAI(true);

    EXPECT_EQ(stored("zv.prompt"), QStringLiteral("P"));
    EXPECT_EQ(storedFlag("zv.autoReplace"), false);
    EXPECT_EQ(storedFlag("zv.doubleHotKeyWindow"), false);
    EXPECT_EQ(storedFlag("zv.optionRightClickMenu"), false);
    EXPECT_EQ(storedFlag("zv.startAtLogin"), true);
    EXPECT_EQ(storedFlag("zv.hasSeenOnboarding"), true);
    EXPECT_EQ(stored("zv.manualWindowSize"), QStringLiteral("small"));
    EXPECT_EQ(stored("zv.resultWindowSize"), QStringLiteral("large"));
    EXPECT_EQ(stored("zv.appLanguage"), QStringLiteral("hi"));
    EXPECT_EQ(stored("zv.cloudflareWorkerURL"), QStringLiteral("https://w"));
    EXPECT_EQ(stored("zv.model.Smart Offline"), QStringLiteral("M"));
    EXPECT_EQ(storedFlag("zv.useOwnAI"), true);
}

TEST_F(Setters, areReadBackByTheNextLoad)
{
    settings->setPromptTemplate(QStringLiteral("P"));
    settings->setAutoReplace(false);
    settings->setManualTranslationHotKey(KeyChord{17, 0x900});
    settings->setManualWindowSize(TranslationWindowSize::small);
    settings->setAppLanguage(AppLanguage::french);
    settings->addPair();
    const QList<LanguagePair> pairs = settings->pairs();
    load();
    EXPECT_EQ(settings->promptTemplate(), QStringLiteral("P"));
    EXPECT_FALSE(settings->autoReplace());
    EXPECT_EQ(settings->manualTranslationHotKey(), (KeyChord{17, 0x900}));
    EXPECT_EQ(settings->manualWindowSize(), TranslationWindowSize::small);
    EXPECT_EQ(settings->appLanguage(), AppLanguage::french);
    EXPECT_EQ(settings->pairs(), pairs);
}

TEST_F(Setters, tellTheObserversOfTheirSetting)
{
    QStringList seen;
    const auto prompt =
        settings->bindablePromptTemplate().addNotifier([&] { seen += settings->promptTemplate(); });
    const auto replace = settings->bindableAutoReplace().addNotifier(
        [&] { seen += settings->autoReplace() ? QStringLiteral("on") : QStringLiteral("off"); });
    settings->setPromptTemplate(QStringLiteral("P"));
    settings->setPromptTemplate(QStringLiteral("P"));
    settings->setAutoReplace(false);
    EXPECT_EQ(seen, (QStringList{QStringLiteral("P"), QStringLiteral("off")}));
}

TEST_F(Setters, cannotBeGoneRoundThroughABindable)
{
    EXPECT_TRUE(settings->bindableProvider().isReadOnly());
    EXPECT_TRUE(settings->bindablePairs().isReadOnly());
    EXPECT_TRUE(settings->bindableApiKey().isReadOnly());
}

TEST_F(Setters, removeAChordThatIsTakenAway)
{
    settings->setManualTranslationHotKey(KeyChord{17, 0x900});
    settings->setManualTranslationHotKey(std::nullopt);
    EXPECT_EQ(settings->manualTranslationHotKey(), std::nullopt);
    EXPECT_EQ(load().manualTranslationHotKey(), std::nullopt);
}

TEST_F(Setters, keepAKeyInMemoryOnly)
{
    settings->setProvider(AIProvider::claude);
    finishSwitch();
    const Contents before = contents();
    settings->setApiKey(QStringLiteral("sk-1"));
    EXPECT_EQ(settings->apiKey(), QStringLiteral("sk-1"));
    EXPECT_EQ(contents(), before);
    EXPECT_EQ(backend.calls, QStringList());
}

TEST_F(Setters, keepNoMoreThanTenPairs)
{
    QList<LanguagePair> pairs;
    for (int i = 0; i < 12; ++i) {
        pairs += pairFromAnyLanguage(QString::number(i));
    }
    settings->setPairs(pairs);
    EXPECT_EQ(settings->pairs(), pairs.first(10));
    EXPECT_EQ(load().pairs(), pairs.first(10));
}

class Pairs : public Setters
{
};

TEST_F(Pairs, areAddedFromAnyLanguageToEnglish)
{
    settings->addPair();
    ASSERT_EQ(settings->pairs().size(), 3);
    const LanguagePair added = settings->pairs().at(2);
    EXPECT_EQ(added,
              (LanguagePair{added.id, true, QStringLiteral("Any Language"),
                            QStringLiteral("English (US)"), std::nullopt, false, QString()}));
    EXPECT_FALSE(added.id.isNull());
    EXPECT_NE(added.id, settings->pairs().at(0).id);
}

TEST_F(Pairs, areRemovedByTheirId)
{
    settings->addPair();
    const QList<LanguagePair> pairs = settings->pairs();
    settings->removePair(pairs.at(1).id);
    EXPECT_EQ(settings->pairs(), (QList<LanguagePair>{pairs.at(0), pairs.at(2)}));
    settings->removePair(QUuid::createUuid());
    EXPECT_EQ(settings->pairs().size(), 2);
}

TEST_F(Pairs, areEnabledOrLeftOut)
{
    QList<LanguagePair> pairs = settings->pairs();
    pairs[0].enabled = false;
    settings->setPairs(pairs);
    EXPECT_EQ(settings->enabledPairs(), QList<LanguagePair>{pairs.at(1)});
}

class ProviderSwitch : public Setters
{
protected:
    void SetUp() override
    {
        storeSecret("zv.apiKey.Claude", "sk-claude");
        storeText("zv.model.Claude", "claude-x");
        Setters::SetUp();
        QObject::connect(settings.get(), &AppSettings::providerSwitched,
                         [this](AIProvider provider) { switched.push_back(provider); });
    }

    std::vector<AIProvider> switched;
};

TEST_F(ProviderSwitch, bringsTheKeyAndTheModelOfTheNewProvider)
{
    settings->setProvider(AIProvider::claude);
    EXPECT_EQ(settings->provider(), AIProvider::claude);
    EXPECT_EQ(stored("zv.provider"), QStringLiteral("Claude"));
    EXPECT_EQ(settings->model(), QStringLiteral("hymt2-7b-q4-k-m")) << "moved inside the setter";

    finishSwitch();
    EXPECT_EQ(settings->apiKey(), QStringLiteral("sk-claude"));
    EXPECT_EQ(settings->model(), QStringLiteral("claude-x"));
    EXPECT_EQ(stored("zv.model.Smart Offline"), QStringLiteral("hymt2-7b-q4-k-m"));
    EXPECT_THAT(switched, ::testing::ElementsAre(AIProvider::claude));
}

TEST_F(ProviderSwitch, storesTheDefaultModelOfAProviderThatIsNew)
{
    settings->setProvider(AIProvider::grok);
    finishSwitch();
    EXPECT_EQ(settings->model(), QStringLiteral("grok-2-latest"));
    EXPECT_EQ(stored("zv.model.Grok"), QStringLiteral("grok-2-latest"));
    EXPECT_EQ(settings->apiKey(), QString());
}

TEST_F(ProviderSwitch, dropsTheKeyForAProviderThatNeedsNone)
{
    settings->setProvider(AIProvider::claude);
    finishSwitch();
    backend.calls.clear();
    settings->setProvider(AIProvider::zelvane);
    finishSwitch();
    EXPECT_EQ(settings->apiKey(), QString());
    EXPECT_EQ(settings->model(), QStringLiteral("gemini-3.1-flash-lite"));
    EXPECT_EQ(backend.calls, QStringList());
}

TEST_F(ProviderSwitch, runsForTheLastOfSeveralProvidersOnly)
{
    settings->setProvider(AIProvider::claude);
    settings->setProvider(AIProvider::mistral);
    finishSwitch();
    EXPECT_THAT(switched, ::testing::ElementsAre(AIProvider::mistral));
    EXPECT_EQ(settings->model(), QStringLiteral("mistral-small-latest"));
    EXPECT_EQ(stored("zv.model.Claude"), QStringLiteral("claude-x"));
    EXPECT_EQ(backend.calls, QStringList());
}

TEST_F(ProviderSwitch, isForgottenWithTheSettings)
{
    settings->setProvider(AIProvider::claude);
    settings.reset();
    finishSwitch();
    EXPECT_THAT(switched, ::testing::IsEmpty());
}

TEST_F(ProviderSwitch, followsWhenOwnKeysAreGivenUp)
{
    settings->setProvider(AIProvider::claude);
    settings->setUseOwnAI(true);
    finishSwitch();
    settings->setUseOwnAI(false);
    EXPECT_EQ(settings->provider(), AIProvider::zelvane);
    EXPECT_EQ(stored("zv.provider"), QStringLiteral("Zelvane"));
    EXPECT_EQ(storedFlag("zv.useOwnAI"), false);
    finishSwitch();
    EXPECT_EQ(backend.items.value(QStringLiteral("zv.apiKey.Claude")), QByteArray("sk-claude"));
}

TEST_F(ProviderSwitch, doesNotFollowForAProviderWithoutAKey)
{
    settings->setUseOwnAI(true);
    settings->setUseOwnAI(false);
    EXPECT_EQ(settings->provider(), AIProvider::smartOffline);
    finishSwitch();
    EXPECT_THAT(switched, ::testing::IsEmpty());
}

class Key : public Setters
{
protected:
    void SetUp() override
    {
        storeText("zv.provider", "ChatGPT");
        store("zv.keychain.presenceMigrated", true);
        Setters::SetUp();
    }
};

TEST_F(Key, isSavedTrimmed)
{
    settings->setApiKey(QStringLiteral(" sk-1\n"));
    EXPECT_TRUE(await(settings->saveKey()));
    EXPECT_EQ(backend.items.value(QStringLiteral("zv.apiKey.ChatGPT")), QByteArray("sk-1"));
    EXPECT_EQ(storedFlag("zv.keychain.has.zv.apiKey.ChatGPT"), true);
}

TEST_F(Key, isNotSavedWhenNothingIsLeftOfIt)
{
    settings->setApiKey(QStringLiteral(" \n"));
    EXPECT_FALSE(await(settings->saveKey()));
    EXPECT_EQ(backend.calls, QStringList());
}

TEST_F(Key, isSavedOnce)
{
    settings->setApiKey(QStringLiteral("sk-1"));
    EXPECT_TRUE(await(settings->saveKey()));
    backend.calls.clear();
    EXPECT_TRUE(await(settings->saveKey()));
    EXPECT_EQ(backend.calls, QStringList());
    settings->setApiKey(QStringLiteral("sk-2"));
    EXPECT_TRUE(await(settings->saveKey()));
    EXPECT_EQ(backend.items.value(QStringLiteral("zv.apiKey.ChatGPT")), QByteArray("sk-2"));
}

TEST_F(Key, thatTheStoreRefusedIsTriedAgain)
{
    settings->setApiKey(QStringLiteral("sk-1"));
    backend.addStatus = SecretStatus::refused;
    EXPECT_FALSE(await(settings->saveKey()));
    backend.addStatus = SecretStatus::success;
    EXPECT_TRUE(await(settings->saveKey()));
    EXPECT_EQ(backend.items.value(QStringLiteral("zv.apiKey.ChatGPT")), QByteArray("sk-1"));
}

TEST_F(Key, isNotSavedForAProviderThatNeedsNone)
{
    settings->setProvider(AIProvider::zelvane);
    finishSwitch();
    settings->setApiKey(QStringLiteral("sk-1"));
    EXPECT_FALSE(await(settings->saveKey()));
    EXPECT_EQ(backend.items.size(), 0);
}

TEST_F(Key, isWrittenAgainAfterItWasCleared)
{
    settings->setApiKey(QStringLiteral("sk-1"));
    EXPECT_TRUE(await(settings->saveKey()));
    settings->clearKey(AIProvider::chatGPT);
    EXPECT_EQ(backend.items.size(), 0);
    EXPECT_EQ(storedFlag("zv.keychain.has.zv.apiKey.ChatGPT"), std::nullopt);
    EXPECT_TRUE(await(settings->saveKey()));
    EXPECT_EQ(backend.items.value(QStringLiteral("zv.apiKey.ChatGPT")), QByteArray("sk-1"));
}

TEST_F(Key, isNowhereAmongThePlainSettings)
{
    settings->setApiKey(QStringLiteral("sk-very-secret"));
    EXPECT_TRUE(await(settings->saveKey()));
    for (const QString& key : defaults.keys()) {
        EXPECT_FALSE(defaults.string(key).value_or(QString()).contains(u"sk-very-secret"));
        EXPECT_FALSE(defaults.data(key).value_or(QByteArray()).contains("sk-very-secret"));
    }
}

} // namespace
} // namespace zelvane::test
