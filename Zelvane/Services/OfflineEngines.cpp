#include "Services/OfflineEngines.h"

#include "pipeline/TranslationError.h"

#include <algorithm>

namespace zelvane {

OfflineEngines::OfflineEngines(Parts parts)
    : m_parts(std::move(parts))
{
}

OfflineEngines::~OfflineEngines() = default;

SmartOfflineEngineManager& OfflineEngines::engine(SmartOfflineVariant variant)
{
    auto& engine = m_engines[variant];
    if (!engine) {
        engine = make(variant);
    }
    return *engine;
}

std::unique_ptr<SmartOfflineEngineManager> OfflineEngines::make(SmartOfflineVariant variant)
{
    const SmartOfflineVariantFacts& facts = factsOf(variant);
    const SmartOfflineEngineManager::Parts parts{
        .server = m_parts.server,
        .defaults = m_parts.defaults,
        .archiveFolders = m_parts.archiveFolders,
        .isSelected = [this, &facts] { return m_parts.selectedProvider() == facts.provider; },
        .stopOthers = [this, variant] { stopAllBut(variant); }};
    auto engine = std::make_unique<SmartOfflineEngineManager>(
        variant, EngineFiles(m_parts.root, facts), parts);
    if (m_parts.atCreation == AtCreation::sweep) {
        engine->sweepStrays();
    }
    return engine;
}

SmartOfflineEngineManager* OfflineEngines::engineOf(AIProvider provider)
{
    const auto variant = smartOfflineVariantOf(provider);
    return variant ? &engine(*variant) : nullptr;
}

LocalEngineManager& OfflineEngines::localEngine(LocalEngineManager::Variant variant)
{
    auto& engine = m_localEngines[variant];
    if (!engine) {
        engine = std::make_unique<LocalEngineManager>(variant, m_parts.root);
    }
    return *engine;
}

void OfflineEngines::stopAllOfflineEngines(std::optional<SmartOfflineVariant> except)
{
    for (const SmartOfflineVariant variant : smartOfflineVariants()) {
        if (variant != except) {
            engine(variant).cancelWarmUp();
            engine(variant).stopServer();
        }
    }
}

void OfflineEngines::stopLocalEngines()
{
    localEngine(LocalEngineManager::Variant::standard).stop();
    localEngine(LocalEngineManager::Variant::large).stop();
}

void OfflineEngines::stopAllBut(std::optional<SmartOfflineVariant> variant)
{
    for (const auto& [other, engine] : m_engines) {
        if (other != variant && engine) {
            engine->cancelWarmUp();
            engine->stopServer();
        }
    }
    for (const auto& [kind, engine] : m_localEngines) {
        engine->stop();
    }
}

QCoro::Task<void> OfflineEngines::shutDown()
{
    constexpr std::chrono::milliseconds interval{10};
    stopAllBut(std::nullopt);
    while (isEnding()) {
        co_await m_parts.server.clock.sleep(interval);
    }
}

bool OfflineEngines::isEnding() const
{
    return std::ranges::any_of(m_engines, [](const auto& entry) {
        return entry.second && entry.second->server().isEnding();
    });
}

void OfflineEngines::providerSwitched(AIProvider provider)
{
    stopAllOfflineEngines(smartOfflineVariantOf(provider));
}

void OfflineEngines::providerPicked(AIProvider provider)
{
    if (SmartOfflineEngineManager* engine = engineOf(provider)) {
        engine->refreshStatus();
        engine->scheduleWarmUp();
    } else {
        stopAllOfflineEngines();
    }
}

QCoro::Task<QString> OfflineEngines::translate(TranslationRequest request, std::stop_token stop)
{
    SmartOfflineEngineManager* engine = engineOf(request.provider);
    if (engine == nullptr) {
        throw TranslationError(TranslationError::Code::offlineEngineMissing);
    }
    co_return co_await engine->translator().translate(std::move(request), std::move(stop));
}

} // namespace zelvane
