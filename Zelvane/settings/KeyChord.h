#pragma once

#include <QHashFunctions>
#include <QJsonObject>
#include <QString>

#include <optional>

namespace zelvane {

/// A global shortcut: one key with its modifiers.
///
/// Both numbers are those of the stored format on every platform: the virtual key codes of Apple's
/// HIToolbox/Events.h and the modifier bits of Carbon's event manager.
struct KeyChord
{
    static constexpr quint32 command = 0x100;
    static constexpr quint32 shift = 0x200;
    static constexpr quint32 option = 0x800;
    static constexpr quint32 control = 0x1000;

    quint32 keyCode = 0;
    quint32 carbonModifiers = 0;

    friend bool operator==(const KeyChord&, const KeyChord&) = default;
};

[[nodiscard]] size_t qHash(const KeyChord& chord, size_t seed = 0);

/// The chord of a key-down event, or none if the key is itself a modifier or none is held.
///
/// `eventFlags` are the device-independent flags of AppKit's `NSEvent.modifierFlags`: Command
/// 0x100000, Shift 0x20000, Option 0x80000, Control 0x40000. Platform adapters translate into them.
[[nodiscard]] std::optional<KeyChord> chordFromKeyEvent(quint32 keyCode, quint64 eventFlags);

/// The symbols of the modifiers in the order ⌃ ⌥ ⇧ ⌘, then the key's name.
[[nodiscard]] QString displayText(const KeyChord& chord);

[[nodiscard]] QJsonObject toJson(const KeyChord& chord);

/// None if a member is missing, not a whole number or outside 32 bits.
[[nodiscard]] std::optional<KeyChord> keyChordFromJson(const QJsonValue& value);

} // namespace zelvane
