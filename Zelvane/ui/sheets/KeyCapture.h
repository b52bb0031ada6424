#pragma once

#include <QKeyEvent>

#include <functional>
#include <optional>

namespace zelvane {

/// A key press in the terms of stored chords.
struct CapturedKey
{
    quint32 code = 0;
    /// As `chordFromKeyEvent` takes them.
    quint64 eventFlags = 0;
    bool isModifier = false;
};

/// Finds the virtual key code of a press; none for a key that chords can't be made of. The key's
/// own meaning in this platform's terms is in the event's native members.
using VirtualCodeOf = std::function<std::optional<quint32>(const QKeyEvent&)>;

/// Has presses translated by this platform's tables. Without one, only Esc is known.
void installKeyTranslation(VirtualCodeOf virtualCodeOf);

[[nodiscard]] CapturedKey capturedKey(const QKeyEvent& event);

} // namespace zelvane
