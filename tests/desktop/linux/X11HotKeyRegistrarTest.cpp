#include "desktop/linux/X11HotKeyRegistrar.h"

#include "ForeignWindow.h"
#include "desktop/linux/XkbProtocol.h"
#include "foundation/SystemClock.h"
#include "support/Await.h"
#include "support/DesktopSession.h"
#include "support/QtPrinters.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QAbstractEventDispatcher>

#include <xcb/xtest.h>

namespace zelvane::test {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr quint32 keyT = 17;
constexpr quint32 keyY = 16;
constexpr quint32 controlAlt = KeyChord::control | KeyChord::option;

class X11HotKeyRegistrarTest : public ::testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        desktop = std::make_unique<DesktopSession>(DesktopSession::Options{.windowManager = false});
    }
    static void TearDownTestSuite() { desktop.reset(); }

    void SetUp() override
    {
        setLayout({QStringLiteral("us"), QStringLiteral("-variant"), QString()});
        session = open();
        useGroup(0);
        registrar = makeRegistrar(*session, presses);
    }
    void TearDown() override
    {
        // What a failed test left down would fail the next one.
        keys({QStringLiteral("keyup"), QStringLiteral("t"), QStringLiteral("ctrl"),
              QStringLiteral("alt"), QStringLiteral("shift"), QStringLiteral("super")});
    }

    static std::unique_ptr<X11Session> open()
    {
        auto opened = X11Session::open(desktop->display());
        return opened ? std::move(*opened) : nullptr;
    }
    static std::unique_ptr<X11HotKeyRegistrar> makeRegistrar(X11Session& of, QList<quint32>& into)
    {
        auto made = std::make_unique<X11HotKeyRegistrar>(of);
        EXPECT_TRUE(made->installHandler([&into](HotKeyID id) { into.append(id.id); }));
        return made;
    }

    static void keys(const QStringList& arguments) { desktop->xdotool(arguments); }
    static void press(const char* chord)
    {
        keys({QStringLiteral("key"), QString::fromLatin1(chord)});
    }
    /// Control, Alt and the key with this code, whatever it bears. xdotool won't do here: it
    /// switches to the first layout for a moment.
    static void pressKey(xcb_keycode_t key)
    {
        constexpr xcb_keycode_t control = 37;
        constexpr xcb_keycode_t alt = 64;
        const ForeignProgram typist(desktop->display());
        for (const auto pressed : {control, alt, key}) {
            xcb_test_fake_input(typist.connection(), XCB_KEY_PRESS, pressed, 0, 0, 0, 0, 0);
        }
        for (const auto released : {key, alt, control}) {
            xcb_test_fake_input(typist.connection(), XCB_KEY_RELEASE, released, 0, 0, 0, 0, 0);
        }
        (void)typist.clipboardOwner();
    }
    /// Switches to another of the layouts.
    void useGroup(quint8 group)
    {
        xcb_xkb_latch_lock_state(session->connection().get(), XCB_XKB_ID_USE_CORE_KBD, 0, 0, 1,
                                 group, 0, 0, 0);
        session->connection().sync();
    }
    static void setLayout(const QStringList& arguments)
    {
        const auto outcome = desktop->run(QStringLiteral("setxkbmap"), arguments);
        ASSERT_EQ(outcome.exitCode, 0) << outcome.errors.toStdString();
    }

    /// Runs the event loop for a moment, and yields the presses that it brought.
    QList<quint32> arrived(std::chrono::milliseconds moment = 60ms)
    {
        await(clock.sleep(moment));
        return std::exchange(presses, {});
    }

    static std::unique_ptr<DesktopSession> desktop;
    SystemClock clock;
    QList<quint32> presses;
    std::unique_ptr<X11Session> session;
    std::unique_ptr<X11HotKeyRegistrar> registrar;
};

std::unique_ptr<DesktopSession> X11HotKeyRegistrarTest::desktop;

TEST_F(X11HotKeyRegistrarTest, aPressArrivesWithItsIdAndReleasesDoNot)
{
    ASSERT_TRUE(registrar->registerHotKey({keyT, controlAlt}, {1, 3}));
    ASSERT_TRUE(registrar->registerHotKey({keyY, controlAlt | KeyChord::shift}, {1, 4}));
    press("ctrl+alt+t");
    press("ctrl+alt+shift+y");
    press("ctrl+alt+t");
    EXPECT_THAT(arrived(), ElementsAre(3U, 4U, 3U));
}

TEST_F(X11HotKeyRegistrarTest, otherModifiersAreAnotherChord)
{
    ASSERT_TRUE(registrar->registerHotKey({keyT, controlAlt}, {1, 3}));
    for (const char* chord : {"t", "ctrl+t", "alt+t", "ctrl+alt+shift+t", "ctrl+alt+super+t"}) {
        press(chord);
    }
    EXPECT_THAT(arrived(), IsEmpty());
}

TEST_F(X11HotKeyRegistrarTest, everyModifierOfStoredChordsWorks)
{
    ASSERT_TRUE(registrar->registerHotKey({keyT, KeyChord::command}, {1, 1}));
    ASSERT_TRUE(registrar->registerHotKey({keyT, KeyChord::option}, {1, 2}));
    ASSERT_TRUE(registrar->registerHotKey({keyT, KeyChord::shift}, {1, 3}));
    ASSERT_TRUE(registrar->registerHotKey({keyT, KeyChord::control}, {1, 4}));
    for (const char* chord : {"super+t", "alt+t", "shift+t", "ctrl+t"}) {
        press(chord);
    }
    EXPECT_THAT(arrived(), ElementsAre(1U, 2U, 3U, 4U));
}

TEST_F(X11HotKeyRegistrarTest, keysBesideTheLettersWork)
{
    const std::pair<quint32, const char*> table[] = {
        {49, "ctrl+space"},   {36, "ctrl+Return"}, {123, "ctrl+Left"},   {122, "ctrl+F1"},
        {114, "ctrl+Insert"}, {50, "ctrl+grave"},  {117, "ctrl+Delete"}, {67, "ctrl+KP_Multiply"},
    };
    for (const auto& [code, chord] : table) {
        ASSERT_TRUE(registrar->registerHotKey({code, KeyChord::control}, {1, code})) << chord;
        press(chord);
        EXPECT_THAT(arrived(), ElementsAre(code)) << chord;
    }
}

TEST_F(X11HotKeyRegistrarTest, locksDoNotMatter)
{
    ASSERT_TRUE(registrar->registerHotKey({keyT, controlAlt}, {1, 3}));
    press("Caps_Lock");
    press("ctrl+alt+t");
    press("Num_Lock");
    press("ctrl+alt+t");
    press("Caps_Lock");
    press("ctrl+alt+t");
    press("Num_Lock");
    EXPECT_THAT(arrived(), ElementsAre(3U, 3U, 3U));
}

TEST_F(X11HotKeyRegistrarTest, locksOnUnusualModifiersAreFound)
{
    desktop->run(QStringLiteral("xmodmap"),
                 {QStringLiteral("-e"), QStringLiteral("clear mod2"), QStringLiteral("-e"),
                  QStringLiteral("clear mod3"), QStringLiteral("-e"),
                  QStringLiteral("add mod3 = Num_Lock"), QStringLiteral("-e"),
                  QStringLiteral("add mod2 = Scroll_Lock")});
    ASSERT_TRUE(registrar->registerHotKey({keyT, controlAlt}, {1, 3}));
    EXPECT_EQ(session->keyboard().lockMask(), XCB_MOD_MASK_LOCK | XCB_MOD_MASK_2 | XCB_MOD_MASK_3);
    EXPECT_EQ(session->keyboard().lockCombinations().size(), 8);
    press("Num_Lock");
    press("ctrl+alt+t");
    press("Num_Lock");
    EXPECT_THAT(arrived(), ElementsAre(3U));
}

TEST_F(X11HotKeyRegistrarTest, aHeldHotKeyIsPressedOnce)
{
    ASSERT_TRUE(registrar->registerHotKey({keyT, controlAlt}, {1, 3}));
    keys({QStringLiteral("keydown"), QStringLiteral("ctrl+alt+t")});
    EXPECT_THAT(arrived(1300ms), ElementsAre(3U)); // the server repeats after 660 ms
    EXPECT_EQ(session->heldHotKey(), xcb_keycode_t(28));
    keys({QStringLiteral("keyup"), QStringLiteral("ctrl+alt+t")});
    EXPECT_THAT(arrived(), IsEmpty());
    EXPECT_EQ(session->heldHotKey(), std::nullopt);
    press("ctrl+alt+t");
    EXPECT_THAT(arrived(), ElementsAre(3U));
}

TEST_F(X11HotKeyRegistrarTest, aChordThatAnotherProgramHoldsIsRefusedAsAWhole)
{
    const auto otherSession = open();
    QList<quint32> otherPresses;
    const auto other = makeRegistrar(*otherSession, otherPresses);
    const auto held = other->registerHotKey({keyT, controlAlt}, {1, 7});
    ASSERT_TRUE(held);

    EXPECT_EQ(registrar->registerHotKey({keyT, controlAlt}, {1, 3}), std::nullopt);
    press("ctrl+alt+t");
    EXPECT_THAT(arrived(), IsEmpty());
    EXPECT_THAT(otherPresses, ElementsAre(7U));

    other->unregisterHotKey(*held);
    EXPECT_TRUE(registrar->registerHotKey({keyT, controlAlt}, {1, 3}));
}

TEST_F(X11HotKeyRegistrarTest, aRefusedChordLeavesNoPartOfItselfBehind)
{
    // The other program holds the chord for one state of the locks only.
    const ForeignProgram other(desktop->display());
    const quint16 withCapsLock = XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_1 | XCB_MOD_MASK_LOCK;
    xcb_grab_key(other.connection(), 0, other.root(), withCapsLock, 28, XCB_GRAB_MODE_ASYNC,
                 XCB_GRAB_MODE_ASYNC);
    (void)other.clipboardOwner();
    EXPECT_EQ(registrar->registerHotKey({keyT, controlAlt}, {1, 3}), std::nullopt);

    const auto thirdSession = open();
    QList<quint32> thirdPresses;
    xcb_ungrab_key(other.connection(), 28, other.root(), withCapsLock);
    (void)other.clipboardOwner();
    const auto third = makeRegistrar(*thirdSession, thirdPresses);
    EXPECT_TRUE(third->registerHotKey({keyT, controlAlt}, {1, 9}));
}

TEST_F(X11HotKeyRegistrarTest, theSameChordIsNotGivenTwice)
{
    ASSERT_TRUE(registrar->registerHotKey({keyT, controlAlt}, {1, 3}));
    EXPECT_EQ(registrar->registerHotKey({keyT, controlAlt}, {1, 4}), std::nullopt);
    press("ctrl+alt+t");
    EXPECT_THAT(arrived(), ElementsAre(3U));
}

TEST_F(X11HotKeyRegistrarTest, anUnregisteredChordGoesToTheProgramInFrontAgain)
{
    const ForeignWindow window(desktop->display(), "front");
    window.focus();
    const auto reference = registrar->registerHotKey({keyT, KeyChord::shift}, {1, 3});
    ASSERT_TRUE(reference);
    press("shift+t");
    EXPECT_THAT(arrived(), ElementsAre(3U));
    // The program in front sees Shift, but not the key.
    EXPECT_THAT(window.keys().filter(QStringLiteral("28")), IsEmpty());

    registrar->unregisterHotKey(*reference);
    press("shift+t");
    EXPECT_THAT(arrived(), IsEmpty());
    EXPECT_EQ(window.keys().filter(QStringLiteral("28")).size(), 2);
}

TEST_F(X11HotKeyRegistrarTest, aHandlerMayUnregisterAndRegister)
{
    std::optional<HotKeyRegistrar::Reference> reference =
        registrar->registerHotKey({keyT, controlAlt}, {1, 3});
    ASSERT_TRUE(reference);
    ASSERT_TRUE(registrar->installHandler([&](HotKeyID id) {
        presses.append(id.id);
        registrar->unregisterHotKey(*reference);
        reference = registrar->registerHotKey({keyY, controlAlt}, {1, 4});
    }));
    press("ctrl+alt+t");
    EXPECT_THAT(arrived(), ElementsAre(3U));
    press("ctrl+alt+t");
    press("ctrl+alt+y");
    EXPECT_THAT(arrived(), ElementsAre(4U));
}

TEST_F(X11HotKeyRegistrarTest, aPressIsDeliveredByTheEventLoop)
{
    ASSERT_TRUE(registrar->registerHotKey({keyT, controlAlt}, {1, 3}));
    press("ctrl+alt+t");
    session->connection().sync();
    EXPECT_THAT(presses, IsEmpty());
    EXPECT_THAT(arrived(), ElementsAre(3U));
}

TEST_F(X11HotKeyRegistrarTest, unknownKeysAreRefused)
{
    EXPECT_EQ(registrar->registerHotKey({55, controlAlt}, {1, 3}), std::nullopt);
    EXPECT_EQ(registrar->registerHotKey({9999, controlAlt}, {1, 3}), std::nullopt);
}

TEST_F(X11HotKeyRegistrarTest, aModifierThatTheKeyboardLacksIsRefused)
{
    desktop->run(QStringLiteral("xmodmap"), {QStringLiteral("-e"), QStringLiteral("clear mod4")});
    EXPECT_EQ(registrar->registerHotKey({keyT, KeyChord::command}, {1, 3}), std::nullopt);
}

TEST_F(X11HotKeyRegistrarTest, withALayoutWithoutLatinLettersAKeyIsFoundByItsPlace)
{
    setLayout({QStringLiteral("ru")});
    ASSERT_TRUE(registrar->registerHotKey({keyT, controlAlt}, {1, 3}));
    keys({QStringLiteral("key"), QStringLiteral("ctrl+alt+Cyrillic_ie")}); // at the place of T
    EXPECT_THAT(arrived(), ElementsAre(3U));
    keys({QStringLiteral("key"), QStringLiteral("ctrl+alt+Cyrillic_ka")});
    EXPECT_THAT(arrived(), IsEmpty());
}

TEST_F(X11HotKeyRegistrarTest, aChordWorksInTheSecondLayoutToo)
{
    setLayout({QStringLiteral("us,ru")});
    ASSERT_TRUE(registrar->registerHotKey({keyT, controlAlt}, {1, 3}));
    pressKey(28);
    EXPECT_THAT(arrived(), ElementsAre(3U));
    useGroup(1);
    EXPECT_THAT(arrived(), IsEmpty());
    EXPECT_EQ(session->keyboard().group(), 1U);
    pressKey(28);
    EXPECT_THAT(arrived(), ElementsAre(3U));
}

TEST_F(X11HotKeyRegistrarTest, aChordFollowsItsLetterWhenAnotherLayoutIsInUse)
{
    setLayout({QStringLiteral("us,us"), QStringLiteral("-variant"), QStringLiteral(",dvorak")});
    ASSERT_TRUE(registrar->registerHotKey({keyT, controlAlt}, {1, 3}));
    pressKey(28);
    EXPECT_THAT(arrived(), ElementsAre(3U));
    useGroup(1);
    EXPECT_THAT(arrived(), IsEmpty());
    pressKey(28);
    EXPECT_THAT(arrived(), IsEmpty());
    pressKey(45); // Dvorak has its T where K is
    EXPECT_THAT(arrived(), ElementsAre(3U));
}

TEST_F(X11HotKeyRegistrarTest, aChordFollowsItsLetterWhenTheLayoutChanges)
{
    ASSERT_TRUE(registrar->registerHotKey({keyT, controlAlt}, {1, 3}));
    setLayout({QStringLiteral("us"), QStringLiteral("-variant"), QStringLiteral("dvorak")});
    EXPECT_THAT(arrived(), IsEmpty());
    pressKey(45);
    EXPECT_THAT(arrived(), ElementsAre(3U));
    pressKey(28);
    EXPECT_THAT(arrived(), IsEmpty());
    setLayout({QStringLiteral("us")});
    EXPECT_THAT(arrived(), IsEmpty());
    pressKey(28);
    EXPECT_THAT(arrived(), ElementsAre(3U));
}

TEST_F(X11HotKeyRegistrarTest, recordingAndRegisteringAgreeOnEveryKeyOfEveryLayout)
{
    const QStringList layouts[] = {
        {QStringLiteral("us")},
        {QStringLiteral("ru")},
        {QStringLiteral("de")},
        {QStringLiteral("fr")},
        {QStringLiteral("us"), QStringLiteral("-variant"), QStringLiteral("dvorak")},
        {QStringLiteral("ru,us"), QStringLiteral("-variant"), QStringLiteral(",dvorak")},
    };
    for (const QStringList& layout : layouts) {
        setLayout(layout);
        await(clock.sleep(40ms));
        const Keyboard& keyboard = session->keyboard();
        int keysWithCode = 0;
        for (xcb_keycode_t key = 9; key < 120; ++key) {
            if (const auto code = keyboard.virtualCodeForKey(key)) {
                ++keysWithCode;
                EXPECT_EQ(keyboard.keyForVirtualCode(*code), key)
                    << layout.join(u' ').toStdString() << " key " << int(key);
            }
        }
        EXPECT_GT(keysWithCode, 80) << layout.join(u' ').toStdString();
    }
}

TEST(X11SessionWithoutServer, sayWhatIsMissingAndWhatStillWorks)
{
    const auto opened = X11Session::open(":59999");
    ASSERT_FALSE(opened);
    EXPECT_TRUE(opened.error().startsWith(QStringLiteral("No X display can be opened")));
}

TEST(X11SessionWithoutServer, saysThatTheExtensionForKeysIsMissing)
{
    const DesktopSession desktop(
        {.windowManager = false, .serverArguments = {QStringLiteral("-tst")}});
    const auto opened = X11Session::open(desktop.display());
    ASSERT_FALSE(opened);
    EXPECT_EQ(opened.error(),
              QStringLiteral("The X server lacks the extension XTEST, so Zelvane Desk can't press "
                             "keys for you. The commands translate and defaults still work."));
}

TEST(X11SessionWithoutServer, aServerThatEndsIsToldOnceAndRefusesChords)
{
    DesktopSession desktop({.windowManager = false});
    auto opened = X11Session::open(desktop.display());
    ASSERT_TRUE(opened);
    const auto session = std::move(*opened);
    X11HotKeyRegistrar registrar(*session);
    ASSERT_TRUE(registrar.registerHotKey({keyT, controlAlt}, {1, 3}));
    int losses = 0;
    QObject::connect(session.get(), &X11Session::lost, session.get(), [&] { ++losses; });

    desktop.killServer();
    EXPECT_TRUE(waitUntil([&] { return losses > 0; }));
    EXPECT_TRUE(session->isLost());
    EXPECT_EQ(registrar.registerHotKey({keyY, controlAlt}, {1, 4}), std::nullopt);
    EXPECT_FALSE(registrar.installHandler([](HotKeyID) {}));

    // The dead connection doesn't keep the event loop awake.
    SystemClock clock;
    int wakeUps = 0;
    const auto counting =
        QObject::connect(QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::awake,
                         session.get(), [&] { ++wakeUps; });
    await(clock.sleep(200ms));
    QObject::disconnect(counting);
    EXPECT_LT(wakeUps, 100); // the wait itself takes about 20
    EXPECT_EQ(losses, 1);
}

} // namespace
} // namespace zelvane::test
