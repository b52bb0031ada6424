#pragma once

#include "foundation/TaskScope.h"
#include "online/RemoteModels.h"
#include "settings/AppSettings.h"

#include <QObject>
#include <QProperty>
#include <QPropertyNotifier>

#include <functional>
#include <stop_token>

namespace zelvane {

/// The models that the selected provider offers, and whether its key has proved itself. Needs no
/// display. Main thread.
class ModelListModel final : public QObject
{
    Q_OBJECT

public:
    /// Asks a provider for its models; see `RemoteModels::fetchRemoteModels`.
    using Fetch =
        std::function<QCoro::Task<QList<RemoteModel>>(AIProvider, QString, std::stop_token)>;

    /// Loads after each change of the provider. `settings` must outlive this object.
    /// `keyOfThisRun` is a key that the program was given for this run only, and that is not stored
    /// when it works; empty if there is none.
    ModelListModel(AppSettings& settings, Fetch fetch, QString keyOfThisRun = {});

    [[nodiscard]] QList<RemoteModel> remoteModels() const { return m_remoteModels; }
    [[nodiscard]] QBindable<QList<RemoteModel>> bindableRemoteModels() const
    {
        return &m_remoteModels;
    }
    [[nodiscard]] bool isLoadingModels() const { return m_isLoadingModels; }
    [[nodiscard]] QBindable<bool> bindableIsLoadingModels() const { return &m_isLoadingModels; }
    /// What went wrong, in the interface language of that moment; empty if nothing did.
    [[nodiscard]] QString modelsError() const { return m_modelsError; }
    [[nodiscard]] QBindable<QString> bindableModelsError() const { return &m_modelsError; }
    /// Whether the user may type a model that no listing names.
    [[nodiscard]] bool allowCustomModel() const { return m_allowCustomModel; }
    [[nodiscard]] QBindable<bool> bindableAllowCustomModel() const { return &m_allowCustomModel; }
    [[nodiscard]] bool apiKeyVerified() const { return m_apiKeyVerified; }
    [[nodiscard]] QBindable<bool> bindableApiKeyVerified() const { return &m_apiKeyVerified; }

    /// Loads unless a load is on its way. To be called when the user sees the list.
    void load() { load(Force::no); }
    /// Loads afresh, in place of a load that may be on its way.
    void refresh() { load(Force::yes); }

    /// What the user typed as the provider's key, without white space at its ends. A key is tried
    /// at once and stored when it works, or as it is where nothing can be tried; an empty one
    /// clears the stored key.
    void saveKey(const QString& key);

private:
    enum class Force { no, yes };

    void providerChanged();
    void keyArrived();
    void load(Force force);
    [[nodiscard]] QCoro::Task<void> fetch(AIProvider provider, QString key, std::stop_token stop);
    [[nodiscard]] QCoro::Task<void> take(QList<RemoteModel> models, std::stop_token stop);
    [[nodiscard]] QCoro::Task<void> storeUnproved(std::stop_token stop);
    void settleModel();

    AppSettings& m_settings;
    Fetch m_fetch;
    QString m_keyOfThisRun;
    TaskScope m_loads;
    /// The key of a new provider comes later than the provider.
    bool m_awaitsKey = true;
    QPropertyNotifier m_providerChange;
    QPropertyNotifier m_keyChange;
    Q_OBJECT_BINDABLE_PROPERTY(ModelListModel, QList<RemoteModel>, m_remoteModels)
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(ModelListModel, bool, m_isLoadingModels, false)
    Q_OBJECT_BINDABLE_PROPERTY(ModelListModel, QString, m_modelsError)
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(ModelListModel, bool, m_allowCustomModel, false)
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(ModelListModel, bool, m_apiKeyVerified, false)
};

} // namespace zelvane
