#pragma once

#include "foundation/TaskScope.h"
#include "foundation/Worker.h"
#include "settings/AIProvider.h"
#include "settings/AppLanguage.h"
#include "settings/FactorySettings.h"
#include "settings/KeyChord.h"
#include "settings/LanguagePair.h"
#include "settings/SecretStore.h"
#include "settings/TranslationWindowSize.h"
#include "settings/UserDefaults.h"

#include <QHash>
#include <QObject>
#include <QProperty>

#include <functional>
#include <optional>

namespace zelvane {

/// Every setting of the program, observable, each written through to the store when it is set.
///
/// Main thread only. Nothing here fails: a value that can't be read takes its default.
class AppSettings final : public QObject
{
    Q_OBJECT

public:
    /// Loads, and moves what older versions stored. `systemLanguage` is the name of the user's
    /// language, "English (US)" if none fits.
    ///
    /// Secrets may have to be waited for: with a `worker` they are fetched there, and the key and
    /// the access token arrive in a later turn of the event loop; without one they are fetched at
    /// once, on the calling thread. All must outlive this object.
    AppSettings(UserDefaults& defaults, SecretStore& secrets, const QString& systemLanguage,
                Worker* worker = nullptr);
    ~AppSettings() override;

    [[nodiscard]] AIProvider provider() const { return m_provider; }
    /// The key and the model of the new provider follow in a later turn of the event loop.
    void setProvider(AIProvider provider);
    [[nodiscard]] QBindable<AIProvider> bindableProvider() const { return &m_provider; }

    [[nodiscard]] QString model() const { return m_model; }
    void setModel(const QString& model);
    [[nodiscard]] QBindable<QString> bindableModel() const { return &m_model; }

    [[nodiscard]] QString promptTemplate() const { return m_promptTemplate; }
    void setPromptTemplate(const QString& promptTemplate);
    [[nodiscard]] QBindable<QString> bindablePromptTemplate() const { return &m_promptTemplate; }

    [[nodiscard]] QList<LanguagePair> pairs() const { return m_pairs; }
    void setPairs(const QList<LanguagePair>& pairs);
    [[nodiscard]] QBindable<QList<LanguagePair>> bindablePairs() const { return &m_pairs; }
    [[nodiscard]] QList<LanguagePair> enabledPairs() const;
    /// Appends a new pair from any language to English, unless there are already ten.
    void addPair();
    void removePair(const QUuid& id);

    /// The key of the current provider as the user edits it: kept in memory until `saveKey`.
    [[nodiscard]] QString apiKey() const { return m_apiKey; }
    void setApiKey(const QString& key);
    [[nodiscard]] QBindable<QString> bindableApiKey() const { return &m_apiKey; }
    /// Whether the trimmed key now stands in the secret store. Ends with `CancellationError` if the
    /// worker goes first.
    [[nodiscard]] QCoro::Task<bool> saveKey();
    /// Deletes the provider's key from the secret store, in the background if there is a worker.
    void clearKey(AIProvider provider);

    [[nodiscard]] bool autoReplace() const { return m_autoReplace; }
    void setAutoReplace(bool on);
    [[nodiscard]] QBindable<bool> bindableAutoReplace() const { return &m_autoReplace; }

    [[nodiscard]] bool doubleHotKeyWindow() const { return m_doubleHotKeyWindow; }
    void setDoubleHotKeyWindow(bool on);
    [[nodiscard]] QBindable<bool> bindableDoubleHotKeyWindow() const
    {
        return &m_doubleHotKeyWindow;
    }

    [[nodiscard]] bool optionRightClickMenu() const { return m_optionRightClickMenu; }
    void setOptionRightClickMenu(bool on);
    [[nodiscard]] QBindable<bool> bindableOptionRightClickMenu() const
    {
        return &m_optionRightClickMenu;
    }

    /// Whether the program starts with the desktop session.
    [[nodiscard]] bool startAtLogin() const { return m_startAtLogin; }
    void setStartAtLogin(bool on);
    [[nodiscard]] QBindable<bool> bindableStartAtLogin() const { return &m_startAtLogin; }

    /// Whether the user works with keys of their own.
    [[nodiscard]] bool useOwnAI() const { return m_useOwnAI; }
    void setUseOwnAI(bool on);
    [[nodiscard]] QBindable<bool> bindableUseOwnAI() const { return &m_useOwnAI; }

    [[nodiscard]] std::optional<KeyChord> manualTranslationHotKey() const
    {
        return m_manualTranslationHotKey;
    }
    void setManualTranslationHotKey(const std::optional<KeyChord>& chord);
    [[nodiscard]] QBindable<std::optional<KeyChord>> bindableManualTranslationHotKey() const
    {
        return &m_manualTranslationHotKey;
    }

    [[nodiscard]] TranslationWindowSize manualWindowSize() const { return m_manualWindowSize; }
    void setManualWindowSize(TranslationWindowSize size);
    [[nodiscard]] QBindable<TranslationWindowSize> bindableManualWindowSize() const
    {
        return &m_manualWindowSize;
    }

    [[nodiscard]] TranslationWindowSize resultWindowSize() const { return m_resultWindowSize; }
    void setResultWindowSize(TranslationWindowSize size);
    [[nodiscard]] QBindable<TranslationWindowSize> bindableResultWindowSize() const
    {
        return &m_resultWindowSize;
    }

    [[nodiscard]] AppLanguage appLanguage() const { return m_appLanguage; }
    void setAppLanguage(AppLanguage language);
    [[nodiscard]] QBindable<AppLanguage> bindableAppLanguage() const { return &m_appLanguage; }

    [[nodiscard]] bool hasSeenOnboarding() const { return m_hasSeenOnboarding; }
    void setHasSeenOnboarding(bool seen);
    [[nodiscard]] QBindable<bool> bindableHasSeenOnboarding() const { return &m_hasSeenOnboarding; }

    [[nodiscard]] QString cloudflareWorkerURL() const { return m_cloudflareWorkerURL; }
    void setCloudflareWorkerURL(const QString& url);
    [[nodiscard]] QBindable<QString> bindableCloudflareWorkerURL() const
    {
        return &m_cloudflareWorkerURL;
    }

    /// A token that older versions stored. Read once, at the load.
    [[nodiscard]] QString cloudflareAccessToken() const { return m_cloudflareAccessToken; }

Q_SIGNALS:
    /// The provider has changed for good: every offline engine is to stop, but the new provider's.
    void providerSwitched(zelvane::AIProvider provider);

private:
    void load(const QString& systemLanguage);
    void loadProvider();
    void loadModel();
    void loadPrompt();
    void loadKey();
    void loadAccessToken();
    void loadPairs(const QString& systemLanguage);
    void switchTo(AIProvider provider);
    void takeKey(AIProvider provider, const QString& key);
    /// Fetches a secret, on the worker if there is one, and hands it over on this thread.
    void fetch(std::function<QString()> secret, std::function<void(QString)> take);

    UserDefaults& m_defaults;
    SecretStore& m_secrets;
    Worker* m_worker;
    TaskScope m_fetches;
    /// Counts the keys that were set, so that one fetched before doesn't replace a later one.
    quint64 m_keyChanges = 0;
    /// What is known to stand in the secret store: a key that is already there is not written
    /// again, since each write may raise a dialog.
    QHash<QString, QString> m_lastPersistedAPIKeyByAccount;
    /// Separates the load from use: some setters have effects that would undo the load.
    bool m_isLoaded = false;

    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(AppSettings, AIProvider, m_provider,
                                         AIProvider::smartOffline)
    Q_OBJECT_BINDABLE_PROPERTY(AppSettings, QString, m_model)
    Q_OBJECT_BINDABLE_PROPERTY(AppSettings, QString, m_promptTemplate)
    Q_OBJECT_BINDABLE_PROPERTY(AppSettings, QList<LanguagePair>, m_pairs)
    Q_OBJECT_BINDABLE_PROPERTY(AppSettings, QString, m_apiKey)
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(AppSettings, bool, m_autoReplace, true)
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(AppSettings, bool, m_doubleHotKeyWindow, true)
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(AppSettings, bool, m_optionRightClickMenu, true)
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(AppSettings, bool, m_startAtLogin, false)
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(AppSettings, bool, m_useOwnAI, false)
    Q_OBJECT_BINDABLE_PROPERTY(AppSettings, std::optional<KeyChord>, m_manualTranslationHotKey)
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(AppSettings, TranslationWindowSize, m_manualWindowSize,
                                         TranslationWindowSize::medium)
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(AppSettings, TranslationWindowSize, m_resultWindowSize,
                                         TranslationWindowSize::medium)
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(AppSettings, AppLanguage, m_appLanguage,
                                         AppLanguage::system)
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(AppSettings, bool, m_hasSeenOnboarding, false)
    Q_OBJECT_BINDABLE_PROPERTY(AppSettings, QString, m_cloudflareWorkerURL)
    QString m_cloudflareAccessToken;
};

} // namespace zelvane
