#include "ui/sheets/HotKeyBindModel.h"

#include "settings/Localization.h"

#include <utility>

namespace zelvane {

HotKeyBindModel::HotKeyBindModel(QString pairLabel, std::optional<KeyChord> initial,
                                 QSet<KeyChord> reserved,
                                 std::function<bool(const KeyChord&)> isHeldElsewhere)
    : m_pairLabel(std::move(pairLabel))
    , m_reserved(std::move(reserved))
    , m_isHeldElsewhere(std::move(isHeldElsewhere))
    , m_draft(initial)
{
}

QString HotKeyBindModel::chordText() const
{
    const std::optional<KeyChord> chord = m_draft;
    return chord ? displayText(*chord) : localizedText(QStringLiteral("Listening…"));
}

QString HotKeyBindModel::hint() const
{
    switch (m_guidance) {
    case Guidance::idle:
        return localizedText(QStringLiteral("Press a shortcut (include ⌘ / ⌥ / ⌃)"));
    case Guidance::needsModifier:
        return localizedText(QStringLiteral("Add at least ⌘, ⌥ or ⌃ plus a key"));
    case Guidance::reserved:
        return localizedText(QStringLiteral("This shortcut is already used."));
    case Guidance::heldElsewhere:
        return localizedFormat(
            QStringLiteral(
                "Captured %@, which another program seems to use. Press Save to keep it."),
            {chordText()});
    case Guidance::captured:
        return localizedFormat(QStringLiteral("Captured %@. Press Save to keep it."),
                               {chordText()});
    case Guidance::cleared:
        return localizedText(QStringLiteral("Shortcut cleared — press Save, or type a new combo"));
    }
    Q_UNREACHABLE();
}

bool HotKeyBindModel::canSave() const
{
    const std::optional<KeyChord> chord = m_draft;
    return !chord || (chord->carbonModifiers != 0 && !m_reserved.contains(*chord));
}

KeyPressFate HotKeyBindModel::keyPressed(quint32 keyCode, quint64 eventFlags)
{
    if (keyCode == escapeKeyCode) {
        return KeyPressFate::passes;
    }
    const std::optional<KeyChord> chord = chordFromKeyEvent(keyCode, eventFlags);
    if (!chord) {
        guide(Guidance::needsModifier);
        return KeyPressFate::swallowed;
    }
    m_draft = chord;
    if (m_reserved.contains(*chord)) {
        guide(Guidance::reserved);
    } else if (m_isHeldElsewhere && m_isHeldElsewhere(*chord)) {
        guide(Guidance::heldElsewhere);
    } else {
        guide(Guidance::captured);
    }
    return KeyPressFate::swallowed;
}

void HotKeyBindModel::clear()
{
    m_draft = std::nullopt;
    guide(Guidance::cleared);
}

void HotKeyBindModel::guide(Guidance guidance)
{
    m_guidance = guidance;
    m_revision = m_revision + 1;
}

} // namespace zelvane
