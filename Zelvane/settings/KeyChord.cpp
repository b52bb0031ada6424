#include "settings/KeyChord.h"

#include <array>
#include <cmath>
#include <limits>
#include <utility>

namespace zelvane {

namespace {

/// The names of the keys from code 0; an empty one has no name.
constexpr std::array keyNames{// 0 to 9
                              u"A", u"S", u"D", u"F", u"H", u"G", u"Z", u"X", u"C", u"V",
                              // 10 to 19
                              u"", u"B", u"Q", u"W", u"E", u"R", u"Y", u"T", u"1", u"2",
                              // 20 to 29
                              u"3", u"4", u"6", u"5", u"=", u"9", u"7", u"-", u"8", u"0",
                              // 30 to 39
                              u"]", u"O", u"U", u"[", u"I", u"P", u"↩", u"L", u"J", u"'",
                              // 40 to 49
                              u"K", u";", u"\\", u",", u"/", u"N", u"M", u".", u"⇥", u"Space",
                              // 50 to 53
                              u"", u"⌫", u"", u"Esc"};

/// The names of the keys beyond the main block.
constexpr std::array<std::pair<quint32, const char16_t*>, 18> farKeyNames{{
    {96, u"F5"},
    {97, u"F6"},
    {98, u"F7"},
    {99, u"F3"},
    {100, u"F8"},
    {101, u"F9"},
    {103, u"F11"},
    {105, u"F13"},
    {107, u"F14"},
    {109, u"F10"},
    {111, u"F12"},
    {118, u"F4"},
    {120, u"F2"},
    {122, u"F1"},
    {123, u"←"},
    {124, u"→"},
    {125, u"↓"},
    {126, u"↑"},
}};

constexpr quint32 firstModifierKey = 54;
constexpr quint32 lastModifierKey = 63;

constexpr quint64 eventShift = 0x20000;
constexpr quint64 eventControl = 0x40000;
constexpr quint64 eventOption = 0x80000;
constexpr quint64 eventCommand = 0x100000;

QString keyName(quint32 keyCode)
{
    if (keyCode < keyNames.size() && keyNames.at(keyCode)[0] != u'\0') {
        return QStringView(keyNames.at(keyCode)).toString();
    }
    for (const auto& [code, name] : farKeyNames) {
        if (code == keyCode) {
            return QStringView(name).toString();
        }
    }
    return QStringLiteral("Key") + QString::number(keyCode);
}

std::optional<quint32> wholeNumber(const QJsonValue& value)
{
    const double number = value.toDouble(-1);
    if (number < 0 || number > std::numeric_limits<quint32>::max() ||
        number != std::floor(number)) {
        return std::nullopt;
    }
    return static_cast<quint32>(number);
}

} // namespace

size_t qHash(const KeyChord& chord, size_t seed)
{
    return qHashMulti(seed, chord.keyCode, chord.carbonModifiers);
}

std::optional<KeyChord> chordFromKeyEvent(quint32 keyCode, quint64 eventFlags)
{
    if (keyCode >= firstModifierKey && keyCode <= lastModifierKey) {
        return std::nullopt;
    }
    quint32 modifiers = 0;
    modifiers |= (eventFlags & eventCommand) != 0 ? KeyChord::command : 0;
    modifiers |= (eventFlags & eventShift) != 0 ? KeyChord::shift : 0;
    modifiers |= (eventFlags & eventOption) != 0 ? KeyChord::option : 0;
    modifiers |= (eventFlags & eventControl) != 0 ? KeyChord::control : 0;
    if (modifiers == 0) {
        return std::nullopt;
    }
    return KeyChord{keyCode, modifiers};
}

QString displayText(const KeyChord& chord)
{
    QString text;
    if ((chord.carbonModifiers & KeyChord::control) != 0) {
        text += u'⌃';
    }
    if ((chord.carbonModifiers & KeyChord::option) != 0) {
        text += u'⌥';
    }
    if ((chord.carbonModifiers & KeyChord::shift) != 0) {
        text += u'⇧';
    }
    if ((chord.carbonModifiers & KeyChord::command) != 0) {
        text += u'⌘';
    }
    return text + keyName(chord.keyCode);
}

QJsonObject toJson(const KeyChord& chord)
{
    return {{QStringLiteral("keyCode"), static_cast<qint64>(chord.keyCode)},
            {QStringLiteral("carbonModifiers"), static_cast<qint64>(chord.carbonModifiers)}};
}

std::optional<KeyChord> keyChordFromJson(const QJsonValue& value)
{
    const QJsonObject object = value.toObject();
    const auto keyCode = wholeNumber(object.value(QStringLiteral("keyCode")));
    const auto modifiers = wholeNumber(object.value(QStringLiteral("carbonModifiers")));
    if (!keyCode || !modifiers) {
        return std::nullopt;
    }
    return KeyChord{*keyCode, *modifiers};
}

} // namespace zelvane
