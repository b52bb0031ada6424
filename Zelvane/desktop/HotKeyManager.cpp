#include "desktop/HotKeyManager.h"

#include <algorithm>

namespace zelvane {

HotKeyManager::HotKeyManager(HotKeyRegistrar& registrar)
    : m_registrar(registrar)
{
}

HotKeyManager::~HotKeyManager()
{
    unregisterAll();
}

void HotKeyManager::reload(const QList<LanguagePair>& pairs,
                           const std::optional<KeyChord>& manualHotKey)
{
    installHandler();
    unregisterAll();

    quint32 position = 0;
    for (const LanguagePair& pair : pairs) {
        ++position;
        if (!pair.enabled || !pair.hotKey || pair.hotKey->carbonModifiers == 0) {
            continue;
        }
        if (registerHotKey(*pair.hotKey, position)) {
            m_pairByHotKeyID.insert(position, pair.id);
        }
    }

    if (!manualHotKey || manualHotKey->carbonModifiers == 0) {
        return;
    }
    const bool taken = std::ranges::any_of(pairs, [&](const LanguagePair& pair) {
        return pair.enabled && pair.hotKey == manualHotKey;
    });
    if (!taken) {
        registerHotKey(*manualHotKey, manualHotKeyID);
    }
}

void HotKeyManager::installHandler()
{
    if (!m_installed) {
        m_installed = m_registrar.installHandler([this](HotKeyID hotKey) { dispatch(hotKey); });
    }
}

void HotKeyManager::unregisterAll()
{
    for (const HotKeyRegistrar::Reference reference : std::as_const(m_hotKeyRefs)) {
        m_registrar.unregisterHotKey(reference);
    }
    m_hotKeyRefs.clear();
    m_pairByHotKeyID.clear();
}

bool HotKeyManager::registerHotKey(const KeyChord& chord, quint32 id)
{
    const auto reference = m_registrar.registerHotKey(chord, {hotKeySignature, id});
    if (!reference) {
        return false;
    }
    m_hotKeyRefs.insert(id, *reference);
    return true;
}

void HotKeyManager::dispatch(HotKeyID hotKey) const
{
    if (hotKey.id == manualHotKeyID) {
        if (onManualTranslationHotKey) {
            onManualTranslationHotKey();
        }
        return;
    }
    const auto pair = m_pairByHotKeyID.constFind(hotKey.id);
    if (pair != m_pairByHotKeyID.constEnd() && onHotKey) {
        onHotKey(*pair);
    }
}

} // namespace zelvane
