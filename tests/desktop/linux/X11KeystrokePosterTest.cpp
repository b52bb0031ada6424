#include "desktop/linux/X11KeystrokePoster.h"

#include "ForeignWindow.h"
#include "desktop/linux/X11HotKeyRegistrar.h"
#include "desktop/linux/X11Pasteboard.h"
#include "desktop/linux/XkbProtocol.h"
#include "foundation/SystemClock.h"
#include "support/Await.h"
#include "support/DesktopSession.h"
#include "support/QtPrinters.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QFile>

#include <xcb/xtest.h>

namespace zelvane::test {
namespace {

using namespace std::chrono_literals;
using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::Ge;
using ::testing::IsEmpty;
using ::testing::Lt;

constexpr xcb_keycode_t codeT = 28;
constexpr xcb_keycode_t codeShift = 50;
constexpr xcb_keycode_t codeControl = 37;
constexpr xcb_keycode_t codeAlt = 64;
constexpr xcb_keycode_t codeSuper = 133;
constexpr xcb_keycode_t codeCapsLock = 66;
constexpr xcb_keycode_t codeNumLock = 77;

QByteArray contentOfFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// The adapters for keys on a desktop of the suite, with helpers that act as the user.
class PosterTest : public ::testing::Test
{
protected:
    void connectTo(DesktopSession& to)
    {
        desktop = &to;
        setLayout({QStringLiteral("us")});
        auto opened = X11Session::open(desktop->display());
        ASSERT_TRUE(opened);
        session = std::move(*opened);
        poster = std::make_unique<X11KeystrokePoster>(*session, exchange, clock);
        typist = std::make_unique<ForeignProgram>(desktop->display());
    }
    void TearDown() override
    {
        for (const auto key : {codeT, codeShift, codeControl, codeAlt, codeSuper}) {
            type(XCB_KEY_RELEASE, key);
        }
    }

    void setLayout(const QStringList& arguments) const
    {
        ASSERT_EQ(desktop->run(QStringLiteral("setxkbmap"), arguments).exitCode, 0);
    }
    void type(quint8 kind, xcb_keycode_t key) const
    {
        xcb_test_fake_input(typist->connection(), kind, key, 0, 0, 0, 0, 0);
        (void)typist->clipboardOwner();
    }
    void down(std::initializer_list<xcb_keycode_t> keys) const
    {
        for (const auto key : keys) {
            type(XCB_KEY_PRESS, key);
        }
    }
    void up(std::initializer_list<xcb_keycode_t> keys) const
    {
        for (const auto key : keys) {
            type(XCB_KEY_RELEASE, key);
        }
    }
    PostResult post(CommandKey key) { return await(poster->postCommandKey(key)); }
    QList<xcb_keycode_t> keysDown() { return session->keyboard().keysDown(); }

    DesktopSession* desktop = nullptr;
    SystemClock clock;
    ClipboardExchange exchange;
    std::unique_ptr<X11Session> session;
    std::unique_ptr<X11KeystrokePoster> poster;
    std::unique_ptr<ForeignProgram> typist;
};

/// Without a window manager, where each event that reaches the window in front can be told.
class X11KeystrokePosterKeysTest : public PosterTest
{
protected:
    static void SetUpTestSuite()
    {
        bareDesktop =
            std::make_unique<DesktopSession>(DesktopSession::Options{.windowManager = false});
    }
    static void TearDownTestSuite() { bareDesktop.reset(); }

    void SetUp() override
    {
        connectTo(*bareDesktop);
        window = std::make_unique<ForeignWindow>(desktop->display(), "front");
        window->focus();
        registrar = std::make_unique<X11HotKeyRegistrar>(*session);
        ASSERT_TRUE(registrar->installHandler([this](HotKeyID) { ++presses; }));
    }

    /// Presses Control+Alt+T as a registered hotkey and waits until it has arrived.
    void pressHotKey()
    {
        ASSERT_TRUE(registrar->registerHotKey({17, KeyChord::control | KeyChord::option}, {1, 1}));
        down({codeControl, codeAlt, codeT});
        ASSERT_TRUE(waitUntil([this] { return presses == 1; }));
        (void)window->keys();
    }

    static std::unique_ptr<DesktopSession> bareDesktop;
    std::unique_ptr<ForeignWindow> window;
    std::unique_ptr<X11HotKeyRegistrar> registrar;
    int presses = 0;
};

std::unique_ptr<DesktopSession> X11KeystrokePosterKeysTest::bareDesktop;

const auto controlC = ElementsAre(QStringLiteral("+37:0"), QStringLiteral("+54:4"),
                                  QStringLiteral("-54:4"), QStringLiteral("-37:4"));

TEST_F(X11KeystrokePosterKeysTest, copyIsControlCAndPasteIsControlV)
{
    EXPECT_EQ(post(CommandKey::copy), PostResult::posted);
    EXPECT_THAT(window->keys(), controlC);
    EXPECT_EQ(post(CommandKey::paste), PostResult::posted);
    EXPECT_THAT(window->keys(), ElementsAre(QStringLiteral("+37:0"), QStringLiteral("+55:4"),
                                            QStringLiteral("-55:4"), QStringLiteral("-37:4")));
}

TEST_F(X11KeystrokePosterKeysTest, heldModifiersAreReleasedAndNotPressedAgain)
{
    down({codeControl, codeShift, codeAlt, codeSuper});
    (void)window->keys();
    EXPECT_EQ(post(CommandKey::copy), PostResult::posted);
    EXPECT_THAT(window->keys().mid(4), controlC);
    EXPECT_THAT(keysDown(), IsEmpty());
}

TEST_F(X11KeystrokePosterKeysTest, locksAreNeitherReleasedNorToggled)
{
    type(XCB_KEY_PRESS, codeCapsLock);
    type(XCB_KEY_RELEASE, codeCapsLock);
    type(XCB_KEY_PRESS, codeNumLock);
    (void)window->keys();
    EXPECT_EQ(post(CommandKey::copy), PostResult::posted);
    EXPECT_THAT(keysDown(), ElementsAre(codeNumLock));
    type(XCB_KEY_RELEASE, codeNumLock);
    EXPECT_THAT(window->keys(), ElementsAre(QStringLiteral("+37:18"), QStringLiteral("+54:22"),
                                            QStringLiteral("-54:22"), QStringLiteral("-37:22"),
                                            QStringLiteral("-77:18")));
    for (const auto lock : {codeCapsLock, codeNumLock}) {
        type(XCB_KEY_PRESS, lock);
        type(XCB_KEY_RELEASE, lock);
    }
}

TEST_F(X11KeystrokePosterKeysTest, waitsForTheHotKeysKeyAndNotForItsModifiers)
{
    pressHotKey();
    bool ended = false;
    const auto task = [](QCoro::Task<PostResult> posting, bool* flag) -> QCoro::Task<void> {
        co_await posting;
        *flag = true;
    }(poster->postCommandKey(CommandKey::copy), &ended);

    await(clock.sleep(900ms)); // long enough for the key to repeat
    EXPECT_FALSE(ended);
    EXPECT_THAT(keysDown(), ElementsAre(codeT));
    EXPECT_THAT(window->keys(), IsEmpty()); // neither the key nor the modifiers going up

    up({codeT});
    EXPECT_TRUE(waitUntil([&] { return ended; }));
    EXPECT_THAT(window->keys(), controlC);
    EXPECT_THAT(keysDown(), IsEmpty());
    EXPECT_EQ(presses, 1);
}

TEST_F(X11KeystrokePosterKeysTest, aHotKeyHeldForeverIsReleasedAfterTwoSeconds)
{
    pressHotKey();
    QElapsedTimer time;
    time.start();
    EXPECT_EQ(post(CommandKey::copy), PostResult::posted);
    EXPECT_THAT(time.elapsed(), AllOf(Ge(1990), Lt(2300)));
    EXPECT_THAT(window->keys(), controlC);
    EXPECT_THAT(keysDown(), IsEmpty());
}

TEST_F(X11KeystrokePosterKeysTest, theHotKeyWorksAgainAfterItWasReleasedForTheUser)
{
    pressHotKey();
    EXPECT_EQ(post(CommandKey::copy), PostResult::posted);
    up({codeT, codeAlt, codeControl});
    await(clock.sleep(1100ms));
    down({codeControl, codeAlt, codeT});
    EXPECT_TRUE(waitUntil([this] { return presses == 2; }));
}

TEST_F(X11KeystrokePosterKeysTest, lettersAreFoundInEveryLayout)
{
    const struct
    {
        QStringList layout;
        QString copy;
        QString paste;
    } table[] = {
        {{QStringLiteral("us"), QStringLiteral("-variant"), QStringLiteral("dvorak")},
         QStringLiteral("+31:4"),
         QStringLiteral("+60:4")},
        {{QStringLiteral("ru,us"), QStringLiteral("-variant"), QString()},
         QStringLiteral("+54:4"),
         QStringLiteral("+55:4")},
        // Control+Insert and Shift+Insert.
        {{QStringLiteral("ru"), QStringLiteral("-variant"), QString()},
         QStringLiteral("+118:4"),
         QStringLiteral("+118:1")},
    };
    for (const auto& row : table) {
        setLayout(row.layout);
        await(clock.sleep(30ms));
        (void)window->keys();
        EXPECT_EQ(post(CommandKey::copy), PostResult::posted);
        EXPECT_EQ(window->keys().value(1), row.copy) << row.layout.join(u' ').toStdString();
        EXPECT_EQ(post(CommandKey::paste), PostResult::posted);
        EXPECT_EQ(window->keys().value(1), row.paste) << row.layout.join(u' ').toStdString();
    }
}

TEST_F(X11KeystrokePosterKeysTest, theLayoutInUseComesFirst)
{
    setLayout({QStringLiteral("us,us"), QStringLiteral("-variant"), QStringLiteral(",dvorak")});
    xcb_xkb_latch_lock_state(session->connection().get(), XCB_XKB_ID_USE_CORE_KBD, 0, 0, 1, 1, 0, 0,
                             0);
    await(clock.sleep(30ms));
    (void)window->keys();
    EXPECT_EQ(post(CommandKey::copy), PostResult::posted);
    // For programs without XKB the server marks the second layout with the fifth modifier.
    EXPECT_EQ(window->keys().value(1), QStringLiteral("+31:132"));
    xcb_xkb_latch_lock_state(session->connection().get(), XCB_XKB_ID_USE_CORE_KBD, 0, 0, 1, 0, 0, 0,
                             0);
    session->connection().sync();
}

TEST_F(X11KeystrokePosterKeysTest, withoutLettersAndInsertTheKeysPlacesAreUsed)
{
    setLayout({QStringLiteral("ru"), QStringLiteral("-variant"), QString()});
    desktop->run(QStringLiteral("xmodmap"),
                 {QStringLiteral("-e"), QStringLiteral("keycode 118 = NoSymbol")});
    await(clock.sleep(30ms));
    (void)window->keys();
    EXPECT_EQ(post(CommandKey::copy), PostResult::posted);
    EXPECT_EQ(window->keys().value(1), QStringLiteral("+54:4"));
    EXPECT_EQ(post(CommandKey::paste), PostResult::posted);
    EXPECT_EQ(window->keys().value(1), QStringLiteral("+55:4"));
}

TEST_F(X11KeystrokePosterKeysTest, keysWaitUntilTheClipboardIsReady)
{
    exchange.changeBegun();
    const auto release = clock.callLater(100ms, [this] { exchange.changeDone(); });
    QElapsedTimer time;
    time.start();
    EXPECT_EQ(post(CommandKey::copy), PostResult::posted);
    EXPECT_THAT(time.elapsed(), AllOf(Ge(95), Lt(400)));
}

TEST_F(X11KeystrokePosterKeysTest, aClipboardThatNeverGetsReadyHoldsUpTheKeysForHalfASecondOnly)
{
    exchange.changeBegun();
    QElapsedTimer time;
    time.start();
    EXPECT_EQ(post(CommandKey::copy), PostResult::posted);
    EXPECT_THAT(time.elapsed(), AllOf(Ge(490), Lt(900)));
    exchange.changeDone();
}

TEST_F(X11KeystrokePosterKeysTest, thePasteboardLearnsOfTheKeysAndTheirTarget)
{
    EXPECT_EQ(post(CommandKey::copy), PostResult::posted);
    EXPECT_TRUE(exchange.copyAt());
    EXPECT_FALSE(exchange.paste());
    exchange.contentReplaced();
    EXPECT_EQ(post(CommandKey::paste), PostResult::posted);
    ASSERT_TRUE(exchange.paste());
    EXPECT_EQ(exchange.paste()->target, window->window());
}

TEST_F(X11KeystrokePosterKeysTest, aWindowThatIsGoneGetsNoPasteAndNeitherDoesTheNextOne)
{
    EXPECT_EQ(post(CommandKey::copy), PostResult::posted);
    const ForeignWindow other(desktop->display(), "other");
    window->close();
    other.focus();
    EXPECT_EQ(post(CommandKey::paste), PostResult::targetGone);
    EXPECT_THAT(other.keys(), IsEmpty());
    EXPECT_FALSE(exchange.paste());
}

TEST_F(X11KeystrokePosterKeysTest, aPosterThatGoesWhileItWaitsPressesNothing)
{
    pressHotKey();
    bool ended = false;
    const auto task = [](QCoro::Task<PostResult> posting, bool* flag) -> QCoro::Task<void> {
        *flag = co_await posting == PostResult::targetGone;
    }(poster->postCommandKey(CommandKey::copy), &ended);
    poster.reset();
    EXPECT_TRUE(waitUntil([&] { return ended; }));
    EXPECT_THAT(window->keys(), IsEmpty());
}

TEST(X11KeystrokePosterWithoutServer, aServerThatEndsIsNoTarget)
{
    DesktopSession desktop({.windowManager = false});
    auto session = X11Session::open(desktop.display());
    ASSERT_TRUE(session);
    ClipboardExchange exchange;
    SystemClock clock;
    X11KeystrokePoster poster(**session, exchange, clock);
    desktop.killServer();
    EXPECT_EQ(await(poster.postCommandKey(CommandKey::copy)), PostResult::targetGone);
    EXPECT_EQ(await(poster.postCommandKey(CommandKey::paste)), PostResult::targetGone);
}

/// With a window manager and a real editor.
class X11KeystrokePosterDesktopTest : public PosterTest
{
protected:
    static void SetUpTestSuite()
    {
        managedDesktop =
            std::make_unique<DesktopSession>(DesktopSession::Options{.sessionBus = true});
    }
    static void TearDownTestSuite() { managedDesktop.reset(); }

    void SetUp() override { connectTo(*managedDesktop); }

    static QString idOf(const ForeignWindow& window) { return QString::number(window.window()); }

    static std::unique_ptr<DesktopSession> managedDesktop;
};

std::unique_ptr<DesktopSession> X11KeystrokePosterDesktopTest::managedDesktop;

TEST_F(X11KeystrokePosterDesktopTest, thePasteGoesToTheWindowOfTheCopyThoughAnotherIsInFront)
{
    const ForeignWindow first(desktop->display(), "first");
    desktop->focusWindow(idOf(first));
    EXPECT_EQ(post(CommandKey::copy), PostResult::posted);
    EXPECT_EQ(first.keys().size(), 4);

    const ForeignWindow second(desktop->display(), "second");
    desktop->focusWindow(idOf(second));
    EXPECT_EQ(post(CommandKey::paste), PostResult::posted);
    EXPECT_EQ(first.keys().size(), 4);
    EXPECT_THAT(second.keys(), IsEmpty());
    EXPECT_EQ(exchange.paste()->target, first.window());
}

TEST_F(X11KeystrokePosterDesktopTest, aMinimisedWindowComesBackForThePaste)
{
    const ForeignWindow first(desktop->display(), "first");
    desktop->focusWindow(idOf(first));
    EXPECT_EQ(post(CommandKey::copy), PostResult::posted);
    (void)first.keys();
    desktop->xdotool({QStringLiteral("windowminimize"), QStringLiteral("--sync"), idOf(first)});
    EXPECT_EQ(post(CommandKey::paste), PostResult::posted);
    EXPECT_EQ(first.keys().size(), 4);
}

TEST_F(X11KeystrokePosterDesktopTest, aWindowThatIsOnlyHiddenWhenClosedIsGone)
{
    const ForeignWindow second(desktop->display(), "second");
    const ForeignWindow first(desktop->display(), "first");
    desktop->focusWindow(idOf(first));
    EXPECT_EQ(post(CommandKey::copy), PostResult::posted);
    xcb_unmap_window(first.connection(), first.window());
    (void)first.clipboardOwner();
    desktop->focusWindow(idOf(second));
    EXPECT_EQ(post(CommandKey::paste), PostResult::targetGone);
    EXPECT_THAT(second.keys(), IsEmpty());
}

/// What the whole program does, with a GTK editor: the selection is copied and pasted over.
TEST_F(X11KeystrokePosterDesktopTest, aSelectionInAnEditorIsReplacedWithTheHotKeyHeldDown)
{
    const QString file = desktop->writeFile(QStringLiteral("letter.txt"), "guten Morgen\n");
    desktop->start(QStringLiteral("mousepad"), {file});
    const QString editor = desktop->waitForWindow(QStringLiteral("letter.txt"));
    desktop->focusWindow(editor);
    auto opened = X11Pasteboard::open(exchange, desktop->display());
    ASSERT_TRUE(opened);
    const auto pasteboard = std::move(*opened);
    const ForeignOwner owner(desktop->display(),
                             {{"UTF8_STRING", {"UTF8_STRING", 8, "the user's"}}});
    X11HotKeyRegistrar registrar(*session);
    int presses = 0;
    ASSERT_TRUE(registrar.installHandler([&](HotKeyID) { ++presses; }));
    ASSERT_TRUE(registrar.registerHotKey({17, KeyChord::control | KeyChord::option}, {1, 1}));
    desktop->xdotool({QStringLiteral("key"), QStringLiteral("ctrl+a")});

    down({codeControl, codeAlt, codeT});
    ASSERT_TRUE(waitUntil([&] { return presses == 1; }));
    const auto fingerUp = clock.callLater(120ms, [this] { up({codeT}); });
    const PasteboardSnapshot saved = await(pasteboard->snapshot());
    pasteboard->clear();
    EXPECT_EQ(post(CommandKey::copy), PostResult::posted);
    await(clock.sleep(180ms));
    EXPECT_EQ(await(pasteboard->string()), QStringLiteral("guten Morgen\n"));
    pasteboard->clear();
    pasteboard->setString(QStringLiteral("good morning"));
    await(clock.sleep(80ms));
    EXPECT_EQ(post(CommandKey::paste), PostResult::posted);
    await(clock.sleep(120ms));
    pasteboard->restore(saved);
    await(exchange.settled(clock));
    up({codeAlt, codeControl});

    desktop->xdotool({QStringLiteral("key"), QStringLiteral("ctrl+s")});
    EXPECT_TRUE(waitUntil([&] { return contentOfFile(file) == "good morning"; }));
    EXPECT_EQ(ForeignProgram(desktop->display()).fetchText(), "the user's");
}

} // namespace
} // namespace zelvane::test
