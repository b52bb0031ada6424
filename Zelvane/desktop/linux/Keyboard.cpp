#include "desktop/linux/Keyboard.h"

#include "desktop/linux/KeyCodes.h"
#include "desktop/linux/XkbProtocol.h"
#include "settings/KeyChord.h"

#include <algorithm>

#include <xkbcommon/xkbcommon-x11.h>

namespace zelvane {

namespace {

/// The protocol's key codes end here, those of a key map need not.
constexpr xkb_keycode_t lastKeyCode = 255;

constexpr xkb_keysym_t lockSymbols[] = {
    XKB_KEY_Caps_Lock,   XKB_KEY_Shift_Lock,      XKB_KEY_Num_Lock,
    XKB_KEY_Scroll_Lock, XKB_KEY_ISO_Level3_Lock, XKB_KEY_ISO_Level5_Lock,
};

/// A key may stand for two modifiers at once; a chord then asks for the first.
quint16 lowestBit(quint16 bits)
{
    return quint16(bits & -bits);
}

} // namespace

Keyboard::Keyboard(XcbConnection& connection)
    : m_connection(connection)
    , m_context(xkb_context_new(XKB_CONTEXT_NO_FLAGS))
{
    reload();
}

bool Keyboard::reload()
{
    const qint32 device = xkb_x11_get_core_keyboard_device_id(m_connection.get());
    if (!m_context || device < 0) {
        return false;
    }
    std::unique_ptr<xkb_keymap, FreeKeymap> keymap(xkb_x11_keymap_new_from_device(
        m_context.get(), m_connection.get(), device, XKB_KEYMAP_COMPILE_NO_FLAGS));
    if (!keymap) {
        return false;
    }
    m_keymap = std::move(keymap);
    readGroup(device);
    readModifiers();
    return true;
}

void Keyboard::readGroup(qint32 device)
{
    const auto cookie = xcb_xkb_get_state(m_connection.get(), xcb_xkb_device_spec_t(device));
    const XcbOwned<xcb_xkb_get_state_reply_t> state(
        xcb_xkb_get_state_reply(m_connection.get(), cookie, nullptr));
    if (state) {
        m_group = state->group;
    }
}

void Keyboard::readModifiers()
{
    const XcbOwned<xcb_get_modifier_mapping_reply_t> mapping(xcb_get_modifier_mapping_reply(
        m_connection.get(), xcb_get_modifier_mapping(m_connection.get()), nullptr));
    if (!mapping) {
        return;
    }
    m_modifierBits.clear();
    const xcb_keycode_t* keys = xcb_get_modifier_mapping_keycodes(mapping.get());
    for (int bit = 0; bit < 8; ++bit) {
        for (int i = 0; i < mapping->keycodes_per_modifier; ++i) {
            if (const xcb_keycode_t key = keys[bit * mapping->keycodes_per_modifier + i]) {
                m_modifierBits[key] |= quint16(1U << bit);
            }
        }
    }
    m_lockMask = bitsOfKeys({XKB_KEY_Num_Lock, XKB_KEY_Scroll_Lock}) | XCB_MOD_MASK_LOCK;
    m_altMask = lowestBit(bitsOfKeys({XKB_KEY_Alt_L, XKB_KEY_Alt_R}));
    m_superMask = lowestBit(bitsOfKeys({XKB_KEY_Super_L, XKB_KEY_Super_R}));
}

bool Keyboard::bears(xcb_keycode_t key, xkb_layout_index_t layout, xkb_keysym_t symbol) const
{
    const xkb_keysym_t* symbols = nullptr;
    const int count = xkb_keymap_key_get_syms_by_level(m_keymap.get(), key, layout, 0, &symbols);
    return count == 1 && symbols[0] == symbol;
}

bool Keyboard::bearsAnywhere(xcb_keycode_t key, std::initializer_list<xkb_keysym_t> wanted) const
{
    if (!m_keymap) {
        return false;
    }
    const auto layoutCount = xkb_keymap_num_layouts_for_key(m_keymap.get(), key);
    for (xkb_layout_index_t layout = 0; layout < layoutCount; ++layout) {
        const auto levels = xkb_keymap_num_levels_for_key(m_keymap.get(), key, layout);
        for (xkb_level_index_t level = 0; level < levels; ++level) {
            const xkb_keysym_t* symbols = nullptr;
            const int count =
                xkb_keymap_key_get_syms_by_level(m_keymap.get(), key, layout, level, &symbols);
            if (std::any_of(symbols, symbols + count, [&](xkb_keysym_t symbol) {
                    return std::ranges::find(wanted, symbol) != wanted.end();
                })) {
                return true;
            }
        }
    }
    return false;
}

quint16 Keyboard::bitsOfKeys(std::initializer_list<xkb_keysym_t> symbols) const
{
    quint16 bits = 0;
    for (auto key = m_modifierBits.cbegin(); key != m_modifierBits.cend(); ++key) {
        if (bearsAnywhere(key.key(), symbols)) {
            bits |= key.value();
        }
    }
    return bits;
}

QList<xkb_layout_index_t> Keyboard::layouts() const
{
    const auto count = xkb_keymap_num_layouts(m_keymap.get());
    QList<xkb_layout_index_t> ordered;
    if (m_group < count) {
        ordered.append(m_group);
    }
    for (xkb_layout_index_t layout = 0; layout < count; ++layout) {
        if (layout != m_group) {
            ordered.append(layout);
        }
    }
    return ordered;
}

std::optional<xcb_keycode_t> Keyboard::keyInLayout(xkb_layout_index_t layout,
                                                   xkb_keysym_t symbol) const
{
    const auto first = std::max<xkb_keycode_t>(1, xkb_keymap_min_keycode(m_keymap.get()));
    const auto last = std::min(lastKeyCode, xkb_keymap_max_keycode(m_keymap.get()));
    for (xkb_keycode_t key = first; key <= last; ++key) {
        if (bears(xcb_keycode_t(key), layout, symbol)) {
            return xcb_keycode_t(key);
        }
    }
    return std::nullopt;
}

bool Keyboard::isLatin(xkb_layout_index_t layout) const
{
    return keyInLayout(layout, XKB_KEY_a).has_value();
}

std::optional<xcb_keycode_t> Keyboard::keyForSymbol(xkb_keysym_t symbol) const
{
    if (!m_keymap || symbol == XKB_KEY_NoSymbol) {
        return std::nullopt;
    }
    const bool isCharacter = symbol > XKB_KEY_space && symbol <= XKB_KEY_asciitilde;
    for (const xkb_layout_index_t layout : layouts()) {
        // A Russian layout has its full stop where others have the slash. Its keys are known by
        // their places, all of them, lest two chords end on one key.
        if (!isCharacter || isLatin(layout)) {
            if (const auto key = keyInLayout(layout, symbol)) {
                return key;
            }
        }
    }
    return std::nullopt;
}

std::optional<xcb_keycode_t> Keyboard::keyForVirtualCode(quint32 virtualCode) const
{
    const std::optional<KeyCode> key = keyCodeForVirtualCode(virtualCode);
    if (!key) {
        return std::nullopt;
    }
    for (const xkb_keysym_t symbol : {key->symbol, key->otherSymbol}) {
        if (const auto bearer = keyForSymbol(symbol)) {
            return bearer;
        }
    }
    return key->position;
}

std::optional<quint32> Keyboard::virtualCodeForKey(xcb_keycode_t key) const
{
    const auto leadsBack = [&](std::optional<quint32> code) {
        return code && keyForVirtualCode(*code) == key;
    };
    if (m_keymap) {
        for (const xkb_layout_index_t layout : layouts()) {
            const xkb_keysym_t* symbols = nullptr;
            const int count =
                xkb_keymap_key_get_syms_by_level(m_keymap.get(), key, layout, 0, &symbols);
            const auto code = count == 1 ? virtualCodeForSymbol(symbols[0]) : std::nullopt;
            if (leadsBack(code)) {
                return code;
            }
        }
    }
    const auto code = virtualCodeForPosition(key);
    return leadsBack(code) ? code : std::nullopt;
}

std::optional<quint16> Keyboard::modifierMask(quint32 carbonModifiers) const
{
    const std::pair<quint32, quint16> table[] = {
        {KeyChord::shift, quint16(XCB_MOD_MASK_SHIFT)},
        {KeyChord::control, quint16(XCB_MOD_MASK_CONTROL)},
        {KeyChord::option, m_altMask},
        {KeyChord::command, m_superMask},
    };
    quint16 mask = 0;
    for (const auto& [carbon, bits] : table) {
        if ((carbonModifiers & carbon) != 0) {
            if (bits == 0) {
                return std::nullopt;
            }
            mask |= bits;
        }
    }
    return mask;
}

QList<quint16> Keyboard::lockCombinations() const
{
    QList<quint16> combinations;
    // Every subset of the mask's bits, by counting through them.
    quint16 subset = 0;
    do {
        combinations.append(subset);
        subset = quint16((subset - m_lockMask) & m_lockMask);
    } while (subset != 0);
    return combinations;
}

bool Keyboard::isHeldModifier(xcb_keycode_t key) const
{
    if (!m_keymap || !m_modifierBits.contains(key)) {
        return false;
    }
    // Only what the key bears alone counts: with an option of the layout Shift bears Caps Lock too.
    return std::ranges::none_of(layouts(), [&](xkb_layout_index_t layout) {
        return std::ranges::any_of(lockSymbols,
                                   [&](xkb_keysym_t symbol) { return bears(key, layout, symbol); });
    });
}

std::optional<xcb_keycode_t> Keyboard::modifierKey(quint16 bit, xkb_keysym_t first,
                                                   xkb_keysym_t second) const
{
    for (const xkb_keysym_t symbol : {first, second}) {
        const auto key = keyForSymbol(symbol);
        if (key && (m_modifierBits.value(*key) & bit) != 0) {
            return key;
        }
    }
    for (auto key = m_modifierBits.cbegin(); key != m_modifierBits.cend(); ++key) {
        if (key.value() == bit && isHeldModifier(key.key())) {
            return key.key();
        }
    }
    return std::nullopt;
}

std::optional<xcb_keycode_t> Keyboard::controlKey() const
{
    return modifierKey(XCB_MOD_MASK_CONTROL, XKB_KEY_Control_L, XKB_KEY_Control_R);
}

std::optional<xcb_keycode_t> Keyboard::shiftKey() const
{
    return modifierKey(XCB_MOD_MASK_SHIFT, XKB_KEY_Shift_L, XKB_KEY_Shift_R);
}

QList<xcb_keycode_t> Keyboard::keysDown() const
{
    const XcbOwned<xcb_query_keymap_reply_t> reply(
        xcb_query_keymap_reply(m_connection.get(), xcb_query_keymap(m_connection.get()), nullptr));
    QList<xcb_keycode_t> down;
    if (reply) {
        for (unsigned key = 8; key < 256; ++key) {
            if ((reply->keys[key / 8] & (1U << (key % 8))) != 0) {
                down.append(xcb_keycode_t(key));
            }
        }
    }
    return down;
}

} // namespace zelvane
