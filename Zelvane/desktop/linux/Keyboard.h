#pragma once

#include "desktop/linux/XcbConnection.h"

#include <QList>

#include <memory>
#include <optional>

#include <xkbcommon/xkbcommon.h>

namespace zelvane {

/// The X server's keyboard: which key bears which symbol in which layout, and which modifier bits
/// stand for what. A picture of one moment; `reload` takes a new one. Main thread.
class Keyboard
{
public:
    /// `connection` must have XKB and outlive this object.
    explicit Keyboard(XcbConnection& connection);

    /// Asks the server for its present map. False if it gives none; the old one then stays.
    bool reload();

    /// The layout in use, counted from 0. Keys are looked up in it before the others.
    void setGroup(quint32 group) { m_group = group; }
    [[nodiscard]] quint32 group() const { return m_group; }

    /// The key that bears `symbol` without modifiers, in the layout in use or else in any other;
    /// a character only in a layout with Latin letters.
    [[nodiscard]] std::optional<xcb_keycode_t> keyForSymbol(xkb_keysym_t symbol) const;

    /// The key of a stored chord. Where no Latin layout has its letter it is the key at its place.
    /// Never 0, which would mean any key.
    [[nodiscard]] std::optional<xcb_keycode_t> keyForVirtualCode(quint32 virtualCode) const;

    /// The opposite, for recording a chord: `keyForVirtualCode` of the result is `key` again. None
    /// if no code leads to this key, like that of a letter which only this layout has.
    [[nodiscard]] std::optional<quint32> virtualCodeForKey(xcb_keycode_t key) const;

    /// The modifier bits of X for the modifiers of a stored chord; none if the keyboard lacks one
    /// of them.
    [[nodiscard]] std::optional<quint16> modifierMask(quint32 carbonModifiers) const;

    /// Every combination of the locks (Caps Lock, Num Lock, Scroll Lock) as modifier bits, the
    /// empty one first. A grab holds for exactly one combination of modifiers.
    [[nodiscard]] QList<quint16> lockCombinations() const;
    /// The bits of all locks.
    [[nodiscard]] quint16 lockMask() const { return m_lockMask; }

    /// Whether `key` acts as a modifier only while it is held, like Shift and unlike Caps Lock.
    [[nodiscard]] bool isHeldModifier(xcb_keycode_t key) const;

    /// The key to press for Control and for Shift; none if the keyboard has no such key.
    [[nodiscard]] std::optional<xcb_keycode_t> controlKey() const;
    [[nodiscard]] std::optional<xcb_keycode_t> shiftKey() const;

    /// The keys that are down at this moment.
    [[nodiscard]] QList<xcb_keycode_t> keysDown() const;

private:
    struct FreeKeymap
    {
        void operator()(xkb_context* context) const { xkb_context_unref(context); }
        void operator()(xkb_keymap* keymap) const { xkb_keymap_unref(keymap); }
    };

    void readGroup(qint32 device);
    void readModifiers();
    [[nodiscard]] bool bears(xcb_keycode_t key, xkb_layout_index_t layout,
                             xkb_keysym_t symbol) const;
    [[nodiscard]] std::optional<xcb_keycode_t> keyInLayout(xkb_layout_index_t layout,
                                                           xkb_keysym_t symbol) const;
    [[nodiscard]] bool isLatin(xkb_layout_index_t layout) const;
    [[nodiscard]] bool bearsAnywhere(xcb_keycode_t key, std::initializer_list<xkb_keysym_t>) const;
    [[nodiscard]] quint16 bitsOfKeys(std::initializer_list<xkb_keysym_t> symbols) const;
    [[nodiscard]] std::optional<xcb_keycode_t> modifierKey(quint16 bit, xkb_keysym_t first,
                                                           xkb_keysym_t second) const;
    /// The layouts in the order in which they are asked.
    [[nodiscard]] QList<xkb_layout_index_t> layouts() const;

    XcbConnection& m_connection;
    std::unique_ptr<xkb_context, FreeKeymap> m_context;
    std::unique_ptr<xkb_keymap, FreeKeymap> m_keymap;
    quint32 m_group = 0;
    /// The modifier bits that each key sets.
    QHash<xcb_keycode_t, quint16> m_modifierBits;
    quint16 m_lockMask = 0;
    quint16 m_altMask = 0;
    quint16 m_superMask = 0;
};

} // namespace zelvane
