#include "desktop/linux/KeyCodes.h"

#include <algorithm>

namespace zelvane {

namespace {

constexpr xkb_keysym_t none = XKB_KEY_NoSymbol;

constexpr KeyCode table[] = {
    {0, XKB_KEY_a, none, 38},
    {1, XKB_KEY_s, none, 39},
    {2, XKB_KEY_d, none, 40},
    {3, XKB_KEY_f, none, 41},
    {4, XKB_KEY_h, none, 43},
    {5, XKB_KEY_g, none, 42},
    {6, XKB_KEY_z, none, 52},
    {7, XKB_KEY_x, none, 53},
    {8, XKB_KEY_c, none, 54},
    {9, XKB_KEY_v, none, 55},
    {10, XKB_KEY_less, none, 94},
    {11, XKB_KEY_b, none, 56},
    {12, XKB_KEY_q, none, 24},
    {13, XKB_KEY_w, none, 25},
    {14, XKB_KEY_e, none, 26},
    {15, XKB_KEY_r, none, 27},
    {16, XKB_KEY_y, none, 29},
    {17, XKB_KEY_t, none, 28},
    {18, XKB_KEY_1, none, 10},
    {19, XKB_KEY_2, none, 11},
    {20, XKB_KEY_3, none, 12},
    {21, XKB_KEY_4, none, 13},
    {22, XKB_KEY_6, none, 15},
    {23, XKB_KEY_5, none, 14},
    {24, XKB_KEY_equal, none, 21},
    {25, XKB_KEY_9, none, 18},
    {26, XKB_KEY_7, none, 16},
    {27, XKB_KEY_minus, none, 20},
    {28, XKB_KEY_8, none, 17},
    {29, XKB_KEY_0, none, 19},
    {30, XKB_KEY_bracketright, none, 35},
    {31, XKB_KEY_o, none, 32},
    {32, XKB_KEY_u, none, 30},
    {33, XKB_KEY_bracketleft, none, 34},
    {34, XKB_KEY_i, none, 31},
    {35, XKB_KEY_p, none, 33},
    {36, XKB_KEY_Return, none, 36},
    {37, XKB_KEY_l, none, 46},
    {38, XKB_KEY_j, none, 44},
    {39, XKB_KEY_apostrophe, none, 48},
    {40, XKB_KEY_k, none, 45},
    {41, XKB_KEY_semicolon, none, 47},
    {42, XKB_KEY_backslash, none, 51},
    {43, XKB_KEY_comma, none, 59},
    {44, XKB_KEY_slash, none, 61},
    {45, XKB_KEY_n, none, 57},
    {46, XKB_KEY_m, none, 58},
    {47, XKB_KEY_period, none, 60},
    {48, XKB_KEY_Tab, XKB_KEY_ISO_Left_Tab, 23},
    {49, XKB_KEY_space, none, 65},
    {50, XKB_KEY_grave, none, 49},
    {51, XKB_KEY_BackSpace, none, 22},
    {53, XKB_KEY_Escape, none, 9},
    {64, XKB_KEY_F17, none, 195},
    {65, XKB_KEY_KP_Delete, XKB_KEY_KP_Decimal, 91},
    {67, XKB_KEY_KP_Multiply, none, 63},
    {69, XKB_KEY_KP_Add, none, 86},
    {75, XKB_KEY_KP_Divide, none, 106},
    {76, XKB_KEY_KP_Enter, none, 104},
    {78, XKB_KEY_KP_Subtract, none, 82},
    {79, XKB_KEY_F18, none, 196},
    {80, XKB_KEY_F19, none, 197},
    {81, XKB_KEY_KP_Equal, none, 125},
    {82, XKB_KEY_KP_Insert, XKB_KEY_KP_0, 90},
    {83, XKB_KEY_KP_End, XKB_KEY_KP_1, 87},
    {84, XKB_KEY_KP_Down, XKB_KEY_KP_2, 88},
    {85, XKB_KEY_KP_Next, XKB_KEY_KP_3, 89},
    {86, XKB_KEY_KP_Left, XKB_KEY_KP_4, 83},
    {87, XKB_KEY_KP_Begin, XKB_KEY_KP_5, 84},
    {88, XKB_KEY_KP_Right, XKB_KEY_KP_6, 85},
    {89, XKB_KEY_KP_Home, XKB_KEY_KP_7, 79},
    {90, XKB_KEY_F20, none, 198},
    {91, XKB_KEY_KP_Up, XKB_KEY_KP_8, 80},
    {92, XKB_KEY_KP_Prior, XKB_KEY_KP_9, 81},
    {96, XKB_KEY_F5, none, 71},
    {97, XKB_KEY_F6, none, 72},
    {98, XKB_KEY_F7, none, 73},
    {99, XKB_KEY_F3, none, 69},
    {100, XKB_KEY_F8, none, 74},
    {101, XKB_KEY_F9, none, 75},
    {103, XKB_KEY_F11, none, 95},
    {105, XKB_KEY_F13, none, 191},
    {106, XKB_KEY_F16, none, 194},
    {107, XKB_KEY_F14, none, 192},
    {109, XKB_KEY_F10, none, 76},
    {110, XKB_KEY_Menu, none, 135},
    {111, XKB_KEY_F12, none, 96},
    {113, XKB_KEY_F15, none, 193},
    {114, XKB_KEY_Insert, XKB_KEY_Help, 118},
    {115, XKB_KEY_Home, none, 110},
    {116, XKB_KEY_Prior, none, 112},
    {117, XKB_KEY_Delete, none, 119},
    {118, XKB_KEY_F4, none, 70},
    {119, XKB_KEY_End, none, 115},
    {120, XKB_KEY_F2, none, 68},
    {121, XKB_KEY_Next, none, 117},
    {122, XKB_KEY_F1, none, 67},
    {123, XKB_KEY_Left, none, 113},
    {124, XKB_KEY_Right, none, 114},
    {125, XKB_KEY_Down, none, 116},
    {126, XKB_KEY_Up, none, 111},
};

template <typename Predicate>
std::optional<KeyCode> firstWhere(Predicate matches)
{
    const auto* found = std::ranges::find_if(table, matches);
    return found == std::end(table) ? std::nullopt : std::optional(*found);
}

std::optional<quint32> virtualCodeOf(const std::optional<KeyCode>& key)
{
    return key ? std::optional(key->virtualCode) : std::nullopt;
}

} // namespace

std::span<const KeyCode> keyCodes()
{
    return table;
}

std::optional<KeyCode> keyCodeForVirtualCode(quint32 virtualCode)
{
    return firstWhere([=](const KeyCode& key) { return key.virtualCode == virtualCode; });
}

std::optional<quint32> virtualCodeForSymbol(xkb_keysym_t symbol)
{
    if (symbol == XKB_KEY_NoSymbol) {
        return std::nullopt;
    }
    const xkb_keysym_t lower = xkb_keysym_to_lower(symbol);
    return virtualCodeOf(firstWhere(
        [=](const KeyCode& key) { return key.symbol == lower || key.otherSymbol == lower; }));
}

std::optional<quint32> virtualCodeForPosition(xcb_keycode_t position)
{
    return virtualCodeOf(firstWhere([=](const KeyCode& key) { return key.position == position; }));
}

} // namespace zelvane
