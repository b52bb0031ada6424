#include "desktop/linux/KeyCodes.h"

#include "settings/KeyChord.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QSet>

namespace zelvane::test {
namespace {

TEST(KeyCodes, virtualCodesStandForTheirKeys)
{
    const struct
    {
        quint32 virtualCode;
        xkb_keysym_t symbol;
        xcb_keycode_t position;
    } table[] = {
        {0, XKB_KEY_a, 38},          {8, XKB_KEY_c, 54},          {9, XKB_KEY_v, 55},
        {17, XKB_KEY_t, 28},         {18, XKB_KEY_1, 10},         {22, XKB_KEY_6, 15},
        {23, XKB_KEY_5, 14},         {29, XKB_KEY_0, 19},         {36, XKB_KEY_Return, 36},
        {43, XKB_KEY_comma, 59},     {48, XKB_KEY_Tab, 23},       {49, XKB_KEY_space, 65},
        {50, XKB_KEY_grave, 49},     {51, XKB_KEY_BackSpace, 22}, {53, XKB_KEY_Escape, 9},
        {82, XKB_KEY_KP_Insert, 90}, {96, XKB_KEY_F5, 71},        {105, XKB_KEY_F13, 191},
        {114, XKB_KEY_Insert, 118},  {115, XKB_KEY_Home, 110},    {116, XKB_KEY_Prior, 112},
        {117, XKB_KEY_Delete, 119},  {119, XKB_KEY_End, 115},     {121, XKB_KEY_Next, 117},
        {122, XKB_KEY_F1, 67},       {123, XKB_KEY_Left, 113},    {126, XKB_KEY_Up, 111},
    };
    for (const auto& row : table) {
        const auto key = keyCodeForVirtualCode(row.virtualCode);
        ASSERT_TRUE(key) << row.virtualCode;
        EXPECT_EQ(key->symbol, row.symbol) << row.virtualCode;
        EXPECT_EQ(key->position, row.position) << row.virtualCode;
        EXPECT_EQ(virtualCodeForSymbol(row.symbol), row.virtualCode);
        EXPECT_EQ(virtualCodeForPosition(row.position), row.virtualCode);
    }
}

TEST(KeyCodes, eachKeyStandsThereOnce)
{
    QSet<quint32> codes;
    QSet<xkb_keysym_t> symbols;
    QSet<int> positions;
    for (const KeyCode& key : keyCodes()) {
        codes.insert(key.virtualCode);
        symbols.insert(key.symbol);
        positions.insert(key.position);
        EXPECT_NE(key.position, 0);
    }
    const auto count = qsizetype(keyCodes().size());
    EXPECT_EQ(codes.size(), count);
    EXPECT_EQ(symbols.size(), count);
    EXPECT_EQ(positions.size(), count);
}

TEST(KeyCodes, aCapitalIsTheKeyOfItsLetter)
{
    EXPECT_EQ(virtualCodeForSymbol(XKB_KEY_T), 17U);
    EXPECT_EQ(virtualCodeForSymbol(XKB_KEY_KP_0), 82U);
}

TEST(KeyCodes, modifiersAndForeignLettersHaveNoCode)
{
    for (quint32 modifier = 54; modifier <= 63; ++modifier) {
        EXPECT_EQ(keyCodeForVirtualCode(modifier), std::nullopt) << modifier;
    }
    EXPECT_EQ(virtualCodeForSymbol(XKB_KEY_Control_L), std::nullopt);
    EXPECT_EQ(virtualCodeForSymbol(XKB_KEY_Cyrillic_es), std::nullopt);
    EXPECT_EQ(virtualCodeForSymbol(XKB_KEY_NoSymbol), std::nullopt);
    EXPECT_EQ(virtualCodeForPosition(37), std::nullopt);
    EXPECT_EQ(virtualCodeForPosition(0), std::nullopt);
}

TEST(KeyCodes, everyKeyThatHasANameOnScreenCanBeRegistered)
{
    for (quint32 code = 0; code < 128; ++code) {
        const bool hasName =
            !displayText({code, KeyChord::control}).startsWith(QStringLiteral("⌃Key"));
        EXPECT_TRUE(!hasName || keyCodeForVirtualCode(code)) << code;
    }
}

} // namespace

void PrintTo(const KeyCode& key, std::ostream* stream)
{
    *stream << "virtual code " << key.virtualCode;
}

} // namespace zelvane::test
