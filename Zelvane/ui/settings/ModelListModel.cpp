#include "ui/settings/ModelListModel.h"

#include "foundation/DescribedError.h"
#include "foundation/Text.h"
#include "settings/Localization.h"

#include <algorithm>
#include <utility>

namespace zelvane {

namespace {

bool listsModels(AIProvider provider)
{
    return needsKey(provider) && provider != AIProvider::deepL;
}

} // namespace

ModelListModel::ModelListModel(AppSettings& settings, Fetch fetch, QString keyOfThisRun)
    : m_settings(settings)
    , m_fetch(std::move(fetch))
    , m_keyOfThisRun(text::trimmed(keyOfThisRun))
{
    m_providerChange = settings.bindableProvider().addNotifier([this] { providerChanged(); });
    m_keyChange = settings.bindableApiKey().addNotifier([this] { keyArrived(); });
    // By the turn after the switch, the key is no longer that of the provider before.
    connect(
        &settings, &AppSettings::providerSwitched, this,
        [this] {
            m_awaitsKey = true;
            load(Force::no);
        },
        Qt::QueuedConnection);
}

void ModelListModel::saveKey(const QString& key)
{
    const QString trimmed = text::trimmed(key);
    m_awaitsKey = false;        // this one is tried below
    m_keyOfThisRun = QString(); // the user wants to keep what was typed
    m_settings.setApiKey(trimmed);
    if (trimmed.isEmpty()) {
        m_settings.clearKey(m_settings.provider());
    }
    load(Force::yes);
    if (!trimmed.isEmpty() && !listsModels(m_settings.provider())) {
        // No listing will prove it.
        m_loads.start([this](std::stop_token stop) { return storeUnproved(std::move(stop)); });
    }
}

QCoro::Task<void> ModelListModel::storeUnproved(std::stop_token stop)
{
    const bool saved = co_await m_settings.saveKey();
    if (!stop.stop_requested() && !saved) {
        m_modelsError = localizedText(
            QStringLiteral("The API key could not be saved. Try saving the key again."));
    }
}

void ModelListModel::providerChanged()
{
    // The answer that may be on its way is another provider's.
    m_loads.cancelAll();
    m_isLoadingModels = false;
    m_remoteModels = QList<RemoteModel>();
    m_modelsError = QString();
    m_apiKeyVerified = false;
    // The key is still that of the provider before, which is nobody else's business.
    m_awaitsKey = false;
}

void ModelListModel::keyArrived()
{
    if (m_awaitsKey && !text::isBlank(m_settings.apiKey())) {
        load(Force::no);
    }
}

void ModelListModel::load(Force force)
{
    const AIProvider provider = m_settings.provider();
    const QString key = text::trimmed(m_settings.apiKey());
    if (!listsModels(provider) || key.isEmpty()) {
        m_loads.cancelAll();
        m_isLoadingModels = false;
        m_remoteModels = QList<RemoteModel>();
        m_modelsError = QString();
        m_apiKeyVerified = false;
        return;
    }
    if (m_isLoadingModels && force == Force::no) {
        return;
    }
    m_loads.cancelAll();
    m_awaitsKey = false;
    m_isLoadingModels = true;
    m_modelsError = QString();
    m_loads.start([this, provider, key](std::stop_token stop) {
        return fetch(provider, key, std::move(stop));
    });
}

QCoro::Task<void> ModelListModel::fetch(AIProvider provider, QString key, std::stop_token stop)
{
    std::exception_ptr failure;
    try {
        QList<RemoteModel> models = co_await m_fetch(provider, std::move(key), stop);
        if (stop.stop_requested()) {
            co_return;
        }
        co_await take(std::move(models), stop);
    } catch (...) {
        failure = std::current_exception();
    }
    if (stop.stop_requested()) {
        co_return;
    }
    if (failure) {
        m_remoteModels = QList<RemoteModel>();
        m_apiKeyVerified = false;
        m_modelsError = describe(failure);
    }
    m_isLoadingModels = false;
}

QCoro::Task<void> ModelListModel::take(QList<RemoteModel> models, std::stop_token stop)
{
    m_remoteModels = models;
    m_apiKeyVerified = true;
    // The key has proved itself.
    const bool isLent =
        !m_keyOfThisRun.isEmpty() && text::trimmed(m_settings.apiKey()) == m_keyOfThisRun;
    const bool saved = isLent || co_await m_settings.saveKey();
    if (stop.stop_requested()) {
        co_return;
    }
    if (!saved) {
        m_modelsError = localizedText(QStringLiteral(
            "API key works, but it could not be saved to Keychain. Try saving the key again."));
    }
    if (models.isEmpty()) {
        m_modelsError =
            localizedText(QStringLiteral("No models returned. You can type a model ID manually."));
        m_allowCustomModel = true;
        co_return;
    }
    settleModel();
}

void ModelListModel::settleModel()
{
    // A model that isn't listed stays: the user chose it.
    if (m_settings.model().isEmpty()) {
        m_settings.setModel(defaultModel(m_settings.provider()));
    }
}

} // namespace zelvane
