#include "ui/sheets/HotKeyBindModel.h"

#include <gtest/gtest.h>

namespace zelvane::test {
namespace {

// The flags of key events, as `chordFromKeyEvent` takes them.
constexpr quint64 commandFlag = 0x100000;
constexpr quint64 optionFlag = 0x80000;
constexpr quint64 shiftFlag = 0x20000;

constexpr quint32 keyT = 17;
constexpr quint32 keyEsc = 53;
constexpr quint32 leftCommand = 55;

const KeyChord commandOptionT{keyT, KeyChord::command | KeyChord::option};

TEST(HotKeyBindModel, listensUntilAChordIsPressed)
{
    HotKeyBindModel model(QStringLiteral("EN-DE"), std::nullopt, {});
    EXPECT_EQ(model.pairLabel(), QStringLiteral("EN-DE"));
    EXPECT_EQ(model.chordText(), QStringLiteral("Listening…"));
    EXPECT_EQ(model.hint(), QStringLiteral("Press a shortcut (include ⌘ / ⌥ / ⌃)"));

    EXPECT_EQ(model.keyPressed(keyT, commandFlag | optionFlag), KeyPressFate::swallowed);
    EXPECT_EQ(model.draft(), commandOptionT);
    EXPECT_EQ(model.chordText(), QStringLiteral("⌥⌘T"));
    EXPECT_EQ(model.hint(), QStringLiteral("Captured ⌥⌘T. Press Save to keep it."));
    EXPECT_TRUE(model.canSave());
}

TEST(HotKeyBindModel, startsWithThePresentChord)
{
    const HotKeyBindModel model(QStringLiteral("EN-DE"), commandOptionT, {});
    EXPECT_EQ(model.chordText(), QStringLiteral("⌥⌘T"));
    EXPECT_TRUE(model.canSave());
}

TEST(HotKeyBindModel, refusesAChordThatIsInUseAndShowsItAllTheSame)
{
    HotKeyBindModel model(QStringLiteral("EN-DE"), std::nullopt, {commandOptionT});
    model.keyPressed(keyT, commandFlag | optionFlag);
    EXPECT_EQ(model.chordText(), QStringLiteral("⌥⌘T"));
    EXPECT_EQ(model.hint(), QStringLiteral("This shortcut is already used."));
    EXPECT_FALSE(model.canSave());
}

TEST(HotKeyBindModel, warnsOfAChordThatAnotherProgramHoldsAndLetsItBeSaved)
{
    HotKeyBindModel model(QStringLiteral("EN-DE"), std::nullopt, {},
                          [](const KeyChord& chord) { return chord == commandOptionT; });
    model.keyPressed(keyT, commandFlag | optionFlag);
    EXPECT_EQ(
        model.hint(),
        QStringLiteral("Captured ⌥⌘T, which another program seems to use. Press Save to keep it."));
    EXPECT_TRUE(model.canSave());
}

TEST(HotKeyBindModel, asksForAModifierAndKeepsTheDraft)
{
    HotKeyBindModel model(QStringLiteral("EN-DE"), commandOptionT, {});
    EXPECT_EQ(model.keyPressed(keyT, 0), KeyPressFate::swallowed);
    EXPECT_EQ(model.hint(), QStringLiteral("Add at least ⌘, ⌥ or ⌃ plus a key"));
    EXPECT_EQ(model.draft(), commandOptionT);

    EXPECT_EQ(model.keyPressed(leftCommand, commandFlag), KeyPressFate::swallowed);
    EXPECT_EQ(model.draft(), commandOptionT);
}

TEST(HotKeyBindModel, takesShiftAloneForAModifier)
{
    HotKeyBindModel model(QStringLiteral("EN-DE"), std::nullopt, {});
    model.keyPressed(keyT, shiftFlag);
    EXPECT_EQ(model.chordText(), QStringLiteral("⇧T"));
    EXPECT_TRUE(model.canSave());
}

TEST(HotKeyBindModel, leavesEscToTheCancelButton)
{
    HotKeyBindModel model(QStringLiteral("EN-DE"), commandOptionT, {});
    EXPECT_EQ(model.keyPressed(keyEsc, 0), KeyPressFate::passes);
    EXPECT_EQ(model.keyPressed(keyEsc, commandFlag), KeyPressFate::passes);
    EXPECT_EQ(model.draft(), commandOptionT);
    EXPECT_EQ(model.hint(), QStringLiteral("Press a shortcut (include ⌘ / ⌥ / ⌃)"));
}

TEST(HotKeyBindModel, clearsAndListensOn)
{
    HotKeyBindModel model(QStringLiteral("EN-DE"), commandOptionT, {});
    model.clear();
    EXPECT_EQ(model.draft(), std::nullopt);
    EXPECT_EQ(model.chordText(), QStringLiteral("Listening…"));
    EXPECT_EQ(model.hint(), QStringLiteral("Shortcut cleared — press Save, or type a new combo"));
    EXPECT_TRUE(model.canSave());

    model.keyPressed(keyT, commandFlag | optionFlag);
    EXPECT_EQ(model.draft(), commandOptionT);
}

TEST(HotKeyBindModel, doesNotSaveAStoredChordWithoutModifiers)
{
    const HotKeyBindModel model(QStringLiteral("EN-DE"), KeyChord{keyT, 0}, {});
    EXPECT_FALSE(model.canSave());
}

TEST(HotKeyBindModel, tellsOfEachHint)
{
    HotKeyBindModel model(QStringLiteral("EN-DE"), std::nullopt, {});
    int changes = 0;
    const auto notifier = model.bindableRevision().addNotifier([&] { ++changes; });
    model.keyPressed(keyT, 0);
    model.keyPressed(keyT, 0);
    model.clear();
    EXPECT_EQ(changes, 3);
}

} // namespace
} // namespace zelvane::test
