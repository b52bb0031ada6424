#pragma once

#include <QtGlobal>

#include <optional>
#include <span>

#include <xcb/xcb.h>
#include <xkbcommon/xkbcommon.h>

namespace zelvane {

/// One key of the stored format and what it is under X.
struct KeyCode
{
    /// The virtual key code of stored chords: Apple's HIToolbox/Events.h.
    quint32 virtualCode;
    /// The symbol that the key bears without modifiers, and another one for the same key.
    xkb_keysym_t symbol;
    xkb_keysym_t otherSymbol;
    /// Where the key sits: its X key code with the evdev rules, on a keyboard with US labels.
    xcb_keycode_t position;
};

/// All keys that chords can be made of.
[[nodiscard]] std::span<const KeyCode> keyCodes();

/// None for a code that no key has, and for modifier keys.
[[nodiscard]] std::optional<KeyCode> keyCodeForVirtualCode(quint32 virtualCode);

/// The virtual code of the key that bears `symbol`; a letter's case doesn't matter.
[[nodiscard]] std::optional<quint32> virtualCodeForSymbol(xkb_keysym_t symbol);

/// The virtual code of the key at this place of the keyboard.
[[nodiscard]] std::optional<quint32> virtualCodeForPosition(xcb_keycode_t position);

} // namespace zelvane
