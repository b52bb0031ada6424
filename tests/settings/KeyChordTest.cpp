#include "settings/KeyChord.h"

#include <QJsonDocument>
#include <QSet>

#include <gtest/gtest.h>

#include <array>

namespace zelvane::test {
namespace {

/// The names of all key codes from 0; an empty one stands for a key without a name.
constexpr std::array<const char*, 128> names{
    "A",  "S",   "D",  "F",   "H", "G",   "Z",  "X",   "C",  "V",     // 0
    "",   "B",   "Q",  "W",   "E", "R",   "Y",  "T",   "1",  "2",     // 10
    "3",  "4",   "6",  "5",   "=", "9",   "7",  "-",   "8",  "0",     // 20
    "]",  "O",   "U",  "[",   "I", "P",   "↩",  "L",   "J",  "'",     // 30
    "K",  ";",   "\\", ",",   "/", "N",   "M",  ".",   "⇥",  "Space", // 40
    "",   "⌫",   "",   "Esc", "",  "",    "",   "",    "",   "",      // 50
    "",   "",    "",   "",    "",  "",    "",   "",    "",   "",      // 60
    "",   "",    "",   "",    "",  "",    "",   "",    "",   "",      // 70
    "",   "",    "",   "",    "",  "",    "",   "",    "",   "",      // 80
    "",   "",    "",   "",    "",  "",    "F5", "F6",  "F7", "F3",    // 90
    "F8", "F9",  "",   "F11", "",  "F13", "",   "F14", "",   "F10",   // 100
    "",   "F12", "",   "",    "",  "",    "",   "",    "F4", "",      // 110
    "F2", "",    "F1", "←",   "→", "↓",   "↑",  ""};                  // 120

TEST(KeyChord, showsTheNameOfEachKeyAndTheNumberOfTheOthers)
{
    for (quint32 code = 0; code < names.size(); ++code) {
        const QString name = QString::fromUtf8(names.at(code));
        const QString expected = name.isEmpty() ? QStringLiteral("Key%1").arg(code) : name;
        EXPECT_EQ(displayText({code, 0}), expected) << code;
    }
    EXPECT_EQ(displayText({50, 0}), QStringLiteral("Key50"));
    EXPECT_EQ(displayText({4294967295, 0}), QStringLiteral("Key4294967295"));
}

TEST(KeyChord, showsModifiersInAFixedOrderBeforeTheKey)
{
    EXPECT_EQ(displayText({17, 0x1000}), QStringLiteral("⌃T"));
    EXPECT_EQ(displayText({17, 0x800}), QStringLiteral("⌥T"));
    EXPECT_EQ(displayText({17, 0x200}), QStringLiteral("⇧T"));
    EXPECT_EQ(displayText({17, 0x100}), QStringLiteral("⌘T"));
    EXPECT_EQ(displayText({49, 0x1b00}), QStringLiteral("⌃⌥⇧⌘Space"));
}

TEST(KeyChord, translatesTheModifiersOfAKeyEvent)
{
    EXPECT_EQ(chordFromKeyEvent(17, 0x100000), (KeyChord{17, 0x100}));
    EXPECT_EQ(chordFromKeyEvent(17, 0x20000), (KeyChord{17, 0x200}));
    EXPECT_EQ(chordFromKeyEvent(17, 0x80000), (KeyChord{17, 0x800}));
    EXPECT_EQ(chordFromKeyEvent(17, 0x40000), (KeyChord{17, 0x1000}));
    EXPECT_EQ(chordFromKeyEvent(0, 0x1e0000), (KeyChord{0, 0x1b00}));
    // Other flags, such as Caps Lock, the function key and device bits, leave no trace.
    EXPECT_EQ(chordFromKeyEvent(17, 0x100000 | 0x10000 | 0x800000 | 0x108), (KeyChord{17, 0x100}));
}

TEST(KeyChord, needsAModifier)
{
    EXPECT_EQ(chordFromKeyEvent(17, 0), std::nullopt);
    EXPECT_EQ(chordFromKeyEvent(17, 0x10000), std::nullopt);
}

TEST(KeyChord, isNotMadeOfAModifierKeyAlone)
{
    EXPECT_EQ(chordFromKeyEvent(53, 0x100000), (KeyChord{53, 0x100}));
    for (quint32 code = 54; code <= 63; ++code) {
        EXPECT_EQ(chordFromKeyEvent(code, 0x100000), std::nullopt) << code;
    }
    EXPECT_EQ(chordFromKeyEvent(64, 0x100000), (KeyChord{64, 0x100}));
}

TEST(KeyChord, isStoredUnderItsMemberNames)
{
    const QByteArray json = QJsonDocument(toJson({17, 0x1800})).toJson(QJsonDocument::Compact);
    EXPECT_EQ(json, QByteArray(R"({"carbonModifiers":6144,"keyCode":17})"));
    EXPECT_EQ(keyChordFromJson(QJsonDocument::fromJson(json).object()), (KeyChord{17, 0x1800}));
}

TEST(KeyChord, isReadOnlyFromTwoUnsignedNumbersOf32Bits)
{
    const auto read = [](const char* json) {
        return keyChordFromJson(QJsonDocument::fromJson(json).object());
    };
    EXPECT_EQ(read(R"({"keyCode":4294967295,"carbonModifiers":0})"), (KeyChord{4294967295, 0}));
    EXPECT_EQ(read(R"({"keyCode":4294967296,"carbonModifiers":0})"), std::nullopt);
    EXPECT_EQ(read(R"({"keyCode":-1,"carbonModifiers":0})"), std::nullopt);
    EXPECT_EQ(read(R"({"keyCode":1.5,"carbonModifiers":0})"), std::nullopt);
    EXPECT_EQ(read(R"({"keyCode":"1","carbonModifiers":0})"), std::nullopt);
    EXPECT_EQ(read(R"({"keyCode":null,"carbonModifiers":0})"), std::nullopt);
    EXPECT_EQ(read(R"({"keyCode":1})"), std::nullopt);
    EXPECT_EQ(read(R"({"carbonModifiers":256})"), std::nullopt);
    EXPECT_EQ(keyChordFromJson(QJsonValue(17)), std::nullopt);
}

TEST(KeyChord, worksAsTheKeyOfASet)
{
    const QSet<KeyChord> chords{{17, 0x100}, {17, 0x200}, {18, 0x100}, {17, 0x100}};
    EXPECT_EQ(chords.size(), 3);
    EXPECT_TRUE(chords.contains({17, 0x200}));
    EXPECT_FALSE(chords.contains({18, 0x200}));
}

} // namespace
} // namespace zelvane::test
