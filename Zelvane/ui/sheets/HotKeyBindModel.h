#pragma once

#include "settings/KeyChord.h"

#include <QObject>
#include <QProperty>
#include <QSet>
#include <QString>

#include <functional>
#include <optional>

namespace zelvane {

/// What is to become of a key press that the sheet has seen first.
enum class KeyPressFate { passes, swallowed };

/// Captures a new shortcut. Needs no display.
class HotKeyBindModel final : public QObject
{
    Q_OBJECT

public:
    /// The virtual key code of Esc, as `KeyChord` counts.
    static constexpr quint32 escapeKeyCode = 53;

    /// `reserved` are the chords that this program uses for something else. `isHeldElsewhere`,
    /// which may be empty, tells whether another program holds a chord: the user is warned, and
    /// free to keep it, since that program may be gone tomorrow.
    HotKeyBindModel(QString pairLabel, std::optional<KeyChord> initial, QSet<KeyChord> reserved,
                    std::function<bool(const KeyChord&)> isHeldElsewhere = {});

    /// What is being bound.
    [[nodiscard]] const QString& pairLabel() const { return m_pairLabel; }

    [[nodiscard]] std::optional<KeyChord> draft() const { return m_draft; }
    [[nodiscard]] QBindable<std::optional<KeyChord>> bindableDraft() const { return &m_draft; }

    /// The chord in the program's symbols, or that it is being waited for.
    [[nodiscard]] QString chordText() const;
    /// What the user can do next.
    [[nodiscard]] QString hint() const;
    /// Changes with everything that `hint` says, the draft's mere repetition included.
    [[nodiscard]] QBindable<int> bindableRevision() const { return &m_revision; }

    [[nodiscard]] bool canSave() const;

    /// Takes a key press before any control does. The flags are those of `chordFromKeyEvent`.
    KeyPressFate keyPressed(quint32 keyCode, quint64 eventFlags);

    /// Empties the draft; saving that removes the shortcut.
    void clear();

private:
    enum class Guidance { idle, needsModifier, reserved, heldElsewhere, captured, cleared };

    void guide(Guidance guidance);

    QString m_pairLabel;
    QSet<KeyChord> m_reserved;
    std::function<bool(const KeyChord&)> m_isHeldElsewhere;
    Guidance m_guidance = Guidance::idle;
    Q_OBJECT_BINDABLE_PROPERTY(HotKeyBindModel, std::optional<KeyChord>, m_draft)
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(HotKeyBindModel, int, m_revision, 0)
};

} // namespace zelvane
