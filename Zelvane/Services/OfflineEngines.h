#pragma once

#include "Services/LocalEngineManager.h"
#include "Services/SmartOfflineEngineManager.h"
#include "pipeline/Engines.h"

#include <QString>

#include <map>
#include <memory>
#include <optional>

namespace zelvane {

/// The engines on this machine, each made when it is first asked for. At most one of them has its
/// model in memory. Main thread.
class OfflineEngines final : public TranslationEngine
{
public:
    /// What an engine does as it is made about servers that an earlier run left.
    enum class AtCreation { sweep, nothing };

    /// All must outlive this object.
    struct Parts
    {
        QString root; ///< see `engineRootDirectory`
        LlamaServer::Parts server;
        const UserDefaults& defaults; ///< may name a mirror of the models
        QStringList archiveFolders;   ///< see `runtimeArchiveFolders`
        std::function<AIProvider()> selectedProvider;
        AtCreation atCreation = AtCreation::sweep;
    };

    explicit OfflineEngines(Parts parts);
    ~OfflineEngines() override;

    [[nodiscard]] SmartOfflineEngineManager& engine(SmartOfflineVariant variant);
    /// Null for a provider whose model runs elsewhere.
    [[nodiscard]] SmartOfflineEngineManager* engineOf(AIProvider provider);
    [[nodiscard]] LocalEngineManager& localEngine(LocalEngineManager::Variant variant);

    /// Ends the warm-up and the server of each engine but one. Makes the engines if need be.
    void stopAllOfflineEngines(std::optional<SmartOfflineVariant> except = std::nullopt);
    /// Ends what is left of the earlier kind of engine.
    void stopLocalEngines();

    /// Stops everything because the program is about to end, and waits until the servers have gone,
    /// for a little more than two seconds at most.
    [[nodiscard]] QCoro::Task<void> shutDown();

    /// The settings have another provider for good: only its engine may go on.
    void providerSwitched(AIProvider provider);
    /// The user has picked a provider: its model is loaded in advance, if it is one of these.
    void providerPicked(AIProvider provider);

    /// Translates with the engine of the request's provider, which is one of these.
    [[nodiscard]] QCoro::Task<QString> translate(TranslationRequest request,
                                                 std::stop_token stop) override;

private:
    [[nodiscard]] std::unique_ptr<SmartOfflineEngineManager> make(SmartOfflineVariant variant);
    /// Of the engines that were made, those that were never have no server.
    void stopAllBut(std::optional<SmartOfflineVariant> variant);
    [[nodiscard]] bool isEnding() const;

    const Parts m_parts;
    std::map<LocalEngineManager::Variant, std::unique_ptr<LocalEngineManager>> m_localEngines;
    std::map<SmartOfflineVariant, std::unique_ptr<SmartOfflineEngineManager>> m_engines;
};

} // namespace zelvane
