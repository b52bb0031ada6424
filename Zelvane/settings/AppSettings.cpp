#include "settings/AppSettings.h"

#include "foundation/Text.h"
#include "settings/LanguageNames.h"

#include <QJsonDocument>
#include <QPointer>

#include <algorithm>
#include <tuple>

namespace zelvane {

namespace {

const QString providerKey = QStringLiteral("zv.provider");
const QString legacyModelKey = QStringLiteral("zv.model");
const QString promptKey = QStringLiteral("zv.prompt");
const QString pairsKey = QStringLiteral("zv.pairs");
const QString autoReplaceKey = QStringLiteral("zv.autoReplace");
const QString doubleHotKeyWindowKey = QStringLiteral("zv.doubleHotKeyWindow");
const QString optionRightClickMenuKey = QStringLiteral("zv.optionRightClickMenu");
const QString startAtLoginKey = QStringLiteral("zv.startAtLogin");
const QString useOwnAIKey = QStringLiteral("zv.useOwnAI");
const QString manualTranslationHotKeyKey = QStringLiteral("zv.manualTranslationHotKey");
const QString manualWindowSizeKey = QStringLiteral("zv.manualWindowSize");
const QString resultWindowSizeKey = QStringLiteral("zv.resultWindowSize");
const QString appLanguageKey = QStringLiteral("zv.appLanguage");
const QString hasSeenOnboardingKey = QStringLiteral("zv.hasSeenOnboarding");
const QString cloudflareWorkerURLKey = QStringLiteral("zv.cloudflareWorkerURL");

QString modelKey(AIProvider provider)
{
    return QStringLiteral("zv.model.") + rawValue(provider);
}

/// The stored text, or none if it is missing or empty.
std::optional<QString> nonEmptyString(const UserDefaults& defaults, const QString& key)
{
    std::optional<QString> text = defaults.string(key);
    return text && !text->isEmpty() ? text : std::nullopt;
}

TranslationWindowSize storedWindowSize(const UserDefaults& defaults, const QString& key)
{
    return windowSizeFromStoredName(defaults.string(key).value_or(QString()));
}

std::optional<KeyChord> storedChord(const UserDefaults& defaults, const QString& key)
{
    const QByteArray json = defaults.data(key).value_or(QByteArray());
    return keyChordFromJson(QJsonDocument::fromJson(json).object());
}

QCoro::Task<void> finish(QCoro::Task<bool> task)
{
    co_await task;
}

QCoro::Task<void> deliver(QCoro::Task<QString> value, std::function<void(QString)> take)
{
    take(co_await value);
}

} // namespace

AppSettings::AppSettings(UserDefaults& defaults, SecretStore& secrets,
                         const QString& systemLanguage, Worker* worker)
    : m_defaults(defaults)
    , m_secrets(secrets)
    , m_worker(worker)
{
    load(systemLanguage);
}

AppSettings::~AppSettings() = default;

void AppSettings::load(const QString& systemLanguage)
{
    loadProvider();
    loadModel();
    loadPrompt();

    const bool storedUseOwnAI = m_defaults.boolean(useOwnAIKey).value_or(false);
    const bool useOwnAI = storedUseOwnAI || isKeyProvider(m_provider);
    m_secrets.migratePresence(m_provider, useOwnAI);
    loadKey();

    m_autoReplace = m_defaults.boolean(autoReplaceKey).value_or(true);
    m_doubleHotKeyWindow = m_defaults.boolean(doubleHotKeyWindowKey).value_or(true);
    m_optionRightClickMenu = m_defaults.boolean(optionRightClickMenuKey).value_or(true);
    m_startAtLogin = m_defaults.boolean(startAtLoginKey).value_or(false);
    m_useOwnAI = useOwnAI;
    if (useOwnAI) {
        m_defaults.setValue(useOwnAIKey, true);
    }
    m_manualTranslationHotKey = storedChord(m_defaults, manualTranslationHotKeyKey);
    m_manualWindowSize = storedWindowSize(m_defaults, manualWindowSizeKey);
    m_resultWindowSize = storedWindowSize(m_defaults, resultWindowSizeKey);
    m_appLanguage =
        appLanguageFromStoredName(m_defaults.string(appLanguageKey).value_or(QString()));
    loadPairs(systemLanguage);
    m_hasSeenOnboarding = m_defaults.boolean(hasSeenOnboardingKey).value_or(false);
    m_cloudflareWorkerURL = m_defaults.string(cloudflareWorkerURLKey).value_or(QString());
    loadAccessToken();
    m_isLoaded = true;
}

/// Names of older versions are rewritten; an unknown one stays, for the version that wrote it.
void AppSettings::loadProvider()
{
    const std::optional<QString> stored = m_defaults.string(providerKey);
    const std::optional<AIProvider> known = stored ? providerFromStoredName(*stored) : std::nullopt;
    m_provider = known.value_or(AIProvider::smartOffline);
    if (known && rawValue(*known) != *stored) {
        m_defaults.setValue(providerKey, rawValue(*known));
    }
}

/// Older versions kept one model for all providers: the provider of this load adopts it.
void AppSettings::loadModel()
{
    std::optional<QString> model = nonEmptyString(m_defaults, modelKey(m_provider));
    if (!model) {
        model = nonEmptyString(m_defaults, legacyModelKey);
    }
    if (m_provider == AIProvider::chatGPT && model == QStringLiteral("gpt-4o-mini")) {
        model = QStringLiteral("gpt-5-nano");
    }
    m_model = model.value_or(defaultModel(m_provider));
    m_defaults.setValue(modelKey(m_provider), m_model.value());
    m_defaults.remove(legacyModelKey);
}

void AppSettings::loadPrompt()
{
    const std::optional<QString> stored = m_defaults.string(promptKey);
    const bool isFactory = !stored || isEarlierFactoryPrompt(*stored);
    m_promptTemplate = isFactory ? defaultPromptTemplate() : *stored;
}

/// Older versions kept one key for all providers: the provider of this load adopts it.
void AppSettings::loadKey()
{
    if (!needsKey(m_provider)) {
        return;
    }
    const auto adopted = [&secrets = m_secrets, account = apiKeyAccount(m_provider)] {
        const std::optional<QString> own = secrets.read(account);
        const std::optional<QString> legacy = secrets.read(legacyApiKeyAccount());
        if (!own && legacy && secrets.write(*legacy, account)) {
            std::ignore = secrets.write(QString(), legacyApiKeyAccount());
        }
        return own ? *own : legacy.value_or(QString());
    };
    fetch(adopted,
          [this, provider = m_provider.value(), changes = m_keyChanges](const QString& key) {
              if (changes == m_keyChanges) {
                  takeKey(provider, key);
              }
          });
}

void AppSettings::loadAccessToken()
{
    const auto token = [&secrets = m_secrets] {
        return secrets.read(cloudflareAccessTokenAccount()).value_or(QString());
    };
    fetch(token, [this](const QString& value) { m_cloudflareAccessToken = value; });
}

/// The key as it stands in the secret store.
void AppSettings::takeKey(AIProvider provider, const QString& key)
{
    if (m_provider != provider) {
        return; // the switch to the present provider fetches its own
    }
    if (!key.isEmpty()) {
        m_lastPersistedAPIKeyByAccount.insert(apiKeyAccount(provider), key);
    }
    setApiKey(key);
}

void AppSettings::fetch(std::function<QString()> secret, std::function<void(QString)> take)
{
    if (!m_worker) {
        take(secret());
        return;
    }
    m_fetches.start([this, secret, take](std::stop_token stop) {
        return deliver(m_worker->run(secret, std::move(stop)), take);
    });
}

void AppSettings::loadPairs(const QString& systemLanguage)
{
    const std::optional<QByteArray> stored = m_defaults.data(pairsKey);
    std::optional<QList<LanguagePair>> pairs = stored ? decodePairs(*stored) : std::nullopt;
    if (!pairs || isEarlierFactoryPairSet(*pairs)) {
        m_pairs = defaultPairs(systemLanguage);
        return;
    }
    pairs = pairs->first(std::min(pairs->size(), maximalPairCount));
    for (LanguagePair& pair : *pairs) {
        pair.source = canonicalSpelling(pair.source);
        pair.target = canonicalSpelling(pair.target);
    }
    m_pairs = *pairs;
}

void AppSettings::setProvider(AIProvider provider)
{
    m_defaults.setValue(providerKey, rawValue(provider));
    m_provider = provider;
    const auto applySwitch = [this, provider] { switchTo(provider); };
    QMetaObject::invokeMethod(this, applySwitch, Qt::QueuedConnection);
}

/// Runs in a later turn, so that the setter has ended before the dependent settings move.
void AppSettings::switchTo(AIProvider provider)
{
    if (m_provider != provider) {
        return; // changed again since: the later switch does the work
    }
    Q_EMIT providerSwitched(provider);
    if (needsKey(provider)) {
        const auto stored = [&secrets = m_secrets, account = apiKeyAccount(provider)] {
            return secrets.read(account).value_or(QString());
        };
        if (m_worker) {
            setApiKey(QString()); // until its own arrives, not that of another provider
        }
        fetch(stored, [this, provider, changes = m_keyChanges](const QString& key) {
            if (changes == m_keyChanges) {
                takeKey(provider, key);
            }
        });
    } else {
        setApiKey(QString());
    }
    const QString model =
        nonEmptyString(m_defaults, modelKey(provider)).value_or(defaultModel(provider));
    if (model != m_model) {
        setModel(model);
    }
}

void AppSettings::setModel(const QString& model)
{
    m_defaults.setValue(modelKey(m_provider), model);
    m_model = model;
}

void AppSettings::setPromptTemplate(const QString& promptTemplate)
{
    m_defaults.setValue(promptKey, promptTemplate);
    m_promptTemplate = promptTemplate;
}

void AppSettings::setPairs(const QList<LanguagePair>& pairs)
{
    const QList<LanguagePair> kept = pairs.first(std::min(pairs.size(), maximalPairCount));
    m_defaults.setValue(pairsKey, encodePairs(kept));
    m_pairs = kept;
}

QList<LanguagePair> AppSettings::enabledPairs() const
{
    QList<LanguagePair> enabled = m_pairs;
    enabled.removeIf([](const LanguagePair& pair) { return !pair.enabled; });
    return enabled;
}

void AppSettings::addPair()
{
    if (m_pairs.value().size() >= maximalPairCount) {
        return;
    }
    setPairs(pairs() << pairFromAnyLanguage(QStringLiteral("English (US)")));
}

void AppSettings::removePair(const QUuid& id)
{
    QList<LanguagePair> rest = m_pairs;
    rest.removeIf([&](const LanguagePair& pair) { return pair.id == id; });
    setPairs(rest);
}

void AppSettings::setApiKey(const QString& key)
{
    ++m_keyChanges;
    m_apiKey = key;
}

QCoro::Task<bool> AppSettings::saveKey()
{
    if (!m_isLoaded || !needsKey(m_provider)) {
        co_return false;
    }
    const QString account = apiKeyAccount(m_provider);
    const QString key = text::trimmed(m_apiKey);
    if (key.isEmpty()) {
        co_return false;
    }
    if (m_lastPersistedAPIKeyByAccount.value(account) == key) {
        co_return true;
    }
    const QPointer self(this);
    const quint64 changes = m_keyChanges;
    const auto write = [&secrets = m_secrets, key, account] { return secrets.write(key, account); };
    bool stored = false;
    if (m_worker) {
        stored = co_await m_worker->run(write, {});
    } else {
        stored = write();
    }
    // A key that was changed meanwhile may have been cleared as well.
    if (self && stored && changes == m_keyChanges) {
        m_lastPersistedAPIKeyByAccount.insert(account, key);
    }
    co_return stored;
}

void AppSettings::clearKey(AIProvider provider)
{
    const QString account = apiKeyAccount(provider);
    m_lastPersistedAPIKeyByAccount.remove(account);
    const auto erase = [&secrets = m_secrets, account] {
        return secrets.write(QString(), account);
    };
    if (!m_worker) {
        std::ignore = erase();
        return;
    }
    m_fetches.start([this, erase](std::stop_token stop) {
        return finish(m_worker->run(erase, std::move(stop)));
    });
}

void AppSettings::setUseOwnAI(bool on)
{
    m_defaults.setValue(useOwnAIKey, on);
    m_useOwnAI = on;
    if (!on && isKeyProvider(m_provider)) {
        setProvider(AIProvider::zelvane);
    }
}

void AppSettings::setManualTranslationHotKey(const std::optional<KeyChord>& chord)
{
    if (chord) {
        const QJsonDocument json(toJson(*chord));
        m_defaults.setValue(manualTranslationHotKeyKey, json.toJson(QJsonDocument::Compact));
    } else {
        m_defaults.remove(manualTranslationHotKeyKey);
    }
    m_manualTranslationHotKey = chord;
}

void AppSettings::setManualWindowSize(TranslationWindowSize size)
{
    m_defaults.setValue(manualWindowSizeKey, rawValue(size));
    m_manualWindowSize = size;
}

void AppSettings::setResultWindowSize(TranslationWindowSize size)
{
    m_defaults.setValue(resultWindowSizeKey, rawValue(size));
    m_resultWindowSize = size;
}

void AppSettings::setAppLanguage(AppLanguage language)
{
    m_defaults.setValue(appLanguageKey, rawValue(language));
    m_appLanguage = language;
}

void AppSettings::setAutoReplace(bool on)
{
    m_defaults.setValue(autoReplaceKey, on);
    m_autoReplace = on;
}

void AppSettings::setDoubleHotKeyWindow(bool on)
{
    m_defaults.setValue(doubleHotKeyWindowKey, on);
    m_doubleHotKeyWindow = on;
}

void AppSettings::setStartAtLogin(bool on)
{
    if (on != m_startAtLogin) {
        m_defaults.setValue(startAtLoginKey, on);
        m_startAtLogin = on;
    }
}

void AppSettings::setOptionRightClickMenu(bool on)
{
    m_defaults.setValue(optionRightClickMenuKey, on);
    m_optionRightClickMenu = on;
}

void AppSettings::setHasSeenOnboarding(bool seen)
{
    m_defaults.setValue(hasSeenOnboardingKey, seen);
    m_hasSeenOnboarding = seen;
}

void AppSettings::setCloudflareWorkerURL(const QString& url)
{
    m_defaults.setValue(cloudflareWorkerURLKey, url);
    m_cloudflareWorkerURL = url;
}

} // namespace zelvane
