#pragma once

#include "desktop/HotKeyRegistrar.h"
#include "settings/LanguagePair.h"

#include <QHash>
#include <QList>
#include <QUuid>

#include <functional>
#include <optional>

namespace zelvane {

/// Binds one global shortcut to each enabled pair, and one to the translation window.
///
/// Main thread. A shortcut that the platform refuses does nothing, without a word.
class HotKeyManager
{
public:
    /// "ZLVN", the signature of all registrations.
    static constexpr quint32 hotKeySignature = 0x5A4C564E;
    /// The id of the translation window's shortcut; pairs have their position in the list, from 1.
    static constexpr quint32 manualHotKeyID = 10001;

    /// `registrar` must outlive this object.
    explicit HotKeyManager(HotKeyRegistrar& registrar);
    ~HotKeyManager();
    Q_DISABLE_COPY_MOVE(HotKeyManager)

    /// Called with the pair whose shortcut was pressed.
    std::function<void(QUuid)> onHotKey;
    /// Called when the translation window's shortcut was pressed.
    std::function<void()> onManualTranslationHotKey;

    /// Replaces all registrations. A pair goes before the translation window where both have the
    /// same shortcut.
    void reload(const QList<LanguagePair>& pairs, const std::optional<KeyChord>& manualHotKey);

private:
    void installHandler();
    void unregisterAll();
    bool registerHotKey(const KeyChord& chord, quint32 id);
    void dispatch(HotKeyID hotKey) const;

    HotKeyRegistrar& m_registrar;
    QHash<quint32, HotKeyRegistrar::Reference> m_hotKeyRefs;
    QHash<quint32, QUuid> m_pairByHotKeyID;
    bool m_installed = false;
};

} // namespace zelvane
