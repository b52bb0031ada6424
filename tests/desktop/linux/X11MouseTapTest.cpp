#include "desktop/linux/X11MouseTap.h"

#include "ForeignWindow.h"
#include "foundation/SystemClock.h"
#include "support/Await.h"
#include "support/DesktopSession.h"
#include "support/QtPrinters.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace zelvane::test {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Type = TapEvent::Type;

/// One tap with the connection that the interface would have.
class Tap
{
public:
    Tap(const QByteArray& display, SystemClock& clock)
        : m_clock(clock)
        , m_session(std::move(*X11Session::open(display)))
        , m_connection(std::move(*XcbConnection::open(display, {XExtension::xinput2})))
        , m_events(
              *m_connection,
              [this](const xcb_generic_event_t& event) {
                  if (tap->handleEvent(event)) {
                      ++taken;
                  }
              },
              [] {})
        , tap(std::make_unique<X11MouseTap>(*m_session, m_connection->get()))
    {
    }

    bool create()
    {
        return tap->create(MouseTap::Place::hardware, [this](const TapEvent& event) {
            events << event.type;
            last = event;
            if (onEvent) {
                onEvent(event);
            }
            return TapVerdict::swallow;
        });
    }

    /// The events that a moment brings.
    QList<Type> arrived(std::chrono::milliseconds moment = 60ms)
    {
        await(m_clock.sleep(moment));
        return std::exchange(events, {});
    }

private:
    SystemClock& m_clock;
    std::unique_ptr<X11Session> m_session;
    std::unique_ptr<XcbConnection> m_connection;
    XcbEvents m_events;

public:
    std::unique_ptr<X11MouseTap> tap;
    QList<Type> events;
    TapEvent last;
    std::function<void(const TapEvent&)> onEvent;
    int taken = 0;
};

class X11MouseTapTest : public ::testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        desktop = std::make_unique<DesktopSession>(DesktopSession::Options{.windowManager = false});
        window = std::make_unique<ForeignWindow>(desktop->display(), "Below");
        const quint32 geometry[] = {0, 0, 1280, 800};
        xcb_configure_window(window->connection(), window->window(),
                             XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y | XCB_CONFIG_WINDOW_WIDTH |
                                 XCB_CONFIG_WINDOW_HEIGHT,
                             geometry);
        (void)window->clicks();
    }
    static void TearDownTestSuite()
    {
        window.reset();
        desktop.reset();
    }

    void SetUp() override
    {
        setLayout({QStringLiteral("us"), QStringLiteral("-option"), QString()});
        tap = std::make_unique<Tap>(desktop->display(), clock);
        (void)window->clicks();
    }
    void TearDown() override
    {
        // What a failed test left down would fail the next one.
        desktop->xdotool({QStringLiteral("keyup"), QStringLiteral("ctrl"), QStringLiteral("alt"),
                          QStringLiteral("shift"), QStringLiteral("super")});
        for (const char* button : {"1", "3"}) {
            desktop->xdotool({QStringLiteral("mouseup"), QString::fromLatin1(button)});
        }
    }

    static void setLayout(const QStringList& arguments)
    {
        ASSERT_EQ(desktop->run(QStringLiteral("setxkbmap"), arguments).exitCode, 0);
    }

    /// A click with these modifiers, such as "ctrl alt".
    static void click(const char* modifiers, int button = 3, QPoint at = {200, 300})
    {
        const QStringList keys = QString::fromLatin1(modifiers).split(u' ', Qt::SkipEmptyParts);
        QStringList words{QStringLiteral("mousemove"), QString::number(at.x()),
                          QString::number(at.y())};
        for (const QString& key : keys) {
            words << QStringLiteral("keydown") << key;
        }
        words << QStringLiteral("click") << QString::number(button);
        for (const QString& key : keys) {
            words << QStringLiteral("keyup") << key;
        }
        desktop->xdotool(words);
    }
    static void tapKey(const char* key)
    {
        desktop->xdotool({QStringLiteral("key"), QString::fromLatin1(key)});
    }

    static std::unique_ptr<DesktopSession> desktop;
    static std::unique_ptr<ForeignWindow> window;
    SystemClock clock;
    std::unique_ptr<Tap> tap;
};

std::unique_ptr<DesktopSession> X11MouseTapTest::desktop;
std::unique_ptr<ForeignWindow> X11MouseTapTest::window;

TEST_F(X11MouseTapTest, takesPressAndReleaseFromTheWindowBelow)
{
    ASSERT_TRUE(tap->create());
    click("alt", 3, {321, 456});
    EXPECT_THAT(tap->arrived(), ElementsAre(Type::rightMouseDown, Type::rightMouseUp));
    EXPECT_EQ(tap->last.flags, TapEvent::optionFlag);
    EXPECT_EQ(tap->last.location, QPoint(321, 456));
    EXPECT_THAT(window->clicks(), IsEmpty());
}

TEST_F(X11MouseTapTest, leavesAllOtherClicksToTheWindowBelow)
{
    ASSERT_TRUE(tap->create());
    click("");
    click("ctrl alt");
    click("shift");
    click("super");
    click("alt", 1);
    EXPECT_THAT(tap->arrived(), IsEmpty());
    EXPECT_EQ(tap->taken, 0);
    EXPECT_THAT(window->clicks(),
                ElementsAre(QStringLiteral("+3:0"), QStringLiteral("-3:0"), QStringLiteral("+3:12"),
                            QStringLiteral("-3:12"), QStringLiteral("+3:1"), QStringLiteral("-3:1"),
                            QStringLiteral("+3:64"), QStringLiteral("-3:64"),
                            QStringLiteral("+1:8"), QStringLiteral("-1:8")));
}

TEST_F(X11MouseTapTest, locksDoNotMatter)
{
    ASSERT_TRUE(tap->create());
    tapKey("Caps_Lock");
    click("alt");
    tapKey("Num_Lock");
    click("alt");
    tapKey("Caps_Lock");
    click("alt");
    tapKey("Num_Lock");
    EXPECT_EQ(tap->arrived().size(), 6);
    EXPECT_THAT(window->clicks(), IsEmpty());
}

TEST_F(X11MouseTapTest, followsLocksThatMoveToOtherModifiers)
{
    ASSERT_TRUE(tap->create());
    desktop->run(QStringLiteral("xmodmap"),
                 {QStringLiteral("-e"), QStringLiteral("clear mod2"), QStringLiteral("-e"),
                  QStringLiteral("clear mod3"), QStringLiteral("-e"),
                  QStringLiteral("add mod3 = Num_Lock")});
    EXPECT_THAT(tap->arrived(), IsEmpty());
    tapKey("Num_Lock");
    click("alt");
    tapKey("Num_Lock");
    EXPECT_EQ(tap->arrived().size(), 2);
    EXPECT_THAT(window->clicks(), IsEmpty());
}

TEST_F(X11MouseTapTest, followsAltToAnotherKey)
{
    ASSERT_TRUE(tap->create());
    setLayout(
        {QStringLiteral("us"), QStringLiteral("-option"), QStringLiteral("altwin:swap_alt_win")});
    EXPECT_THAT(tap->arrived(), IsEmpty());
    click("alt");
    EXPECT_EQ(tap->arrived().size(), 2);
    EXPECT_THAT(window->clicks(), IsEmpty());
}

TEST_F(X11MouseTapTest, aDragTellsOfItsEndAsWell)
{
    ASSERT_TRUE(tap->create());
    desktop->xdotool({QStringLiteral("keydown"), QStringLiteral("alt"), QStringLiteral("mousedown"),
                      QStringLiteral("3"), QStringLiteral("keyup"), QStringLiteral("alt"),
                      QStringLiteral("mousemove"), QStringLiteral("500"), QStringLiteral("500")});
    EXPECT_THAT(tap->arrived(), ElementsAre(Type::rightMouseDown));
    desktop->xdotool({QStringLiteral("mouseup"), QStringLiteral("3")});
    EXPECT_THAT(tap->arrived(), ElementsAre(Type::rightMouseUp));
    EXPECT_THAT(window->clicks(), IsEmpty());
}

TEST_F(X11MouseTapTest, givesTheClicksBackWhenItIsRemoved)
{
    ASSERT_TRUE(tap->create());
    tap->tap->remove();
    (void)tap->arrived();
    click("alt");
    EXPECT_THAT(tap->arrived(), IsEmpty());
    EXPECT_THAT(window->clicks(), ElementsAre(QStringLiteral("+3:8"), QStringLiteral("-3:8")));
    EXPECT_FALSE(tap->tap->enable());
    ASSERT_TRUE(tap->create());
    click("alt");
    EXPECT_EQ(tap->arrived().size(), 2);
}

TEST_F(X11MouseTapTest, doesNotFightAnotherProgramForTheClick)
{
    Tap other(desktop->display(), clock);
    ASSERT_TRUE(other.create());
    EXPECT_FALSE(tap->create());
    EXPECT_EQ(tap->tap->refusal(), QStringLiteral("Alt + right click belongs to another program"));
    EXPECT_FALSE(tap->tap->create(MouseTap::Place::session, {}));
    EXPECT_EQ(tap->tap->refusal(), QStringLiteral("Alt + right click belongs to another program"));
    click("alt");
    EXPECT_EQ(other.arrived().size(), 2);
    EXPECT_THAT(tap->arrived(), IsEmpty());

    other.tap->remove();
    ASSERT_TRUE(tap->create());
    EXPECT_EQ(tap->tap->refusal(), QString());
    click("alt");
    EXPECT_EQ(tap->arrived().size(), 2);
}

TEST_F(X11MouseTapTest, aRefusedTapTakesNoClickAtAll)
{
    // Only with Caps Lock does the click belong to another program.
    const ForeignProgram other(desktop->display());
    xcb_grab_button(other.connection(), 0, other.root(), XCB_EVENT_MASK_BUTTON_PRESS,
                    XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC, XCB_NONE, XCB_NONE, 3,
                    XCB_MOD_MASK_1 | XCB_MOD_MASK_LOCK);
    (void)other.clipboardOwner();
    EXPECT_FALSE(tap->create());
    click("alt");
    EXPECT_THAT(window->clicks(), ElementsAre(QStringLiteral("+3:8"), QStringLiteral("-3:8")));
}

TEST_F(X11MouseTapTest, tellsOfAGrabThatAChangeOfTheKeyboardCostIt)
{
    ASSERT_TRUE(tap->create());
    // Another program has what the tap will need once Num Lock sits on the third modifier.
    const ForeignProgram other(desktop->display());
    xcb_grab_button(other.connection(), 0, other.root(), XCB_EVENT_MASK_BUTTON_PRESS,
                    XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC, XCB_NONE, XCB_NONE, 3,
                    XCB_MOD_MASK_1 | XCB_MOD_MASK_3);
    (void)other.clipboardOwner();
    bool enabled = true;
    tap->onEvent = [&](const TapEvent&) { enabled = tap->tap->enable(); };
    desktop->run(QStringLiteral("xmodmap"),
                 {QStringLiteral("-e"), QStringLiteral("clear mod2"), QStringLiteral("-e"),
                  QStringLiteral("clear mod3"), QStringLiteral("-e"),
                  QStringLiteral("add mod3 = Num_Lock")});
    EXPECT_TRUE(waitUntil([&] { return tap->events.contains(Type::disabledByUserInput); }));
    EXPECT_FALSE(enabled);

    xcb_ungrab_button(other.connection(), 3, other.root(), XCB_MOD_MASK_ANY);
    (void)other.clipboardOwner();
    EXPECT_TRUE(tap->tap->enable());
    tap->onEvent = {};
    (void)tap->arrived();
    click("alt");
    EXPECT_EQ(tap->arrived().size(), 2);
}

TEST_F(X11MouseTapTest, aKeyboardWithoutAltIsRefusedRatherThanEveryClickTaken)
{
    desktop->run(QStringLiteral("xmodmap"), {QStringLiteral("-e"), QStringLiteral("clear mod1")});
    EXPECT_FALSE(tap->create());
    click("");
    EXPECT_THAT(window->clicks(), ElementsAre(QStringLiteral("+3:0"), QStringLiteral("-3:0")));
}

TEST_F(X11MouseTapTest, isRefusedWhereTheInterfaceIsNotOnX11)
{
    const auto session = X11Session::open(desktop->display());
    X11MouseTap none(**session, nullptr);
    EXPECT_FALSE(none.create(MouseTap::Place::hardware, {}));
    EXPECT_EQ(none.refusal(), QString());
    none.remove();
}

TEST(X11MouseTapScreens, coversEveryScreen)
{
    DesktopSession desktop({.windowManager = false,
                            .serverArguments = {QStringLiteral("-screen"), QStringLiteral("1"),
                                                QStringLiteral("800x600x24")}});
    SystemClock clock;
    Tap tap(desktop.display(), clock);
    ASSERT_TRUE(tap.create());
    desktop.xdotool({QStringLiteral("mousemove"), QStringLiteral("--screen"), QStringLiteral("1"),
                     QStringLiteral("50"), QStringLiteral("60"), QStringLiteral("keydown"),
                     QStringLiteral("alt"), QStringLiteral("click"), QStringLiteral("3"),
                     QStringLiteral("keyup"), QStringLiteral("alt")});
    EXPECT_THAT(tap.arrived(), ElementsAre(Type::rightMouseDown, Type::rightMouseUp));
    EXPECT_EQ(tap.last.location, QPoint(50, 60));
}

TEST(X11MouseTapLoss, aLostServerIsToldAndDoesNoHarm)
{
    DesktopSession desktop({.windowManager = false});
    SystemClock clock;
    Tap tap(desktop.display(), clock);
    ASSERT_TRUE(tap.create());
    desktop.killServer();
    EXPECT_TRUE(waitUntil([&] { return tap.events.contains(Type::disabledByUserInput); }));
    EXPECT_FALSE(tap.tap->enable());
    tap.tap->remove();
    EXPECT_FALSE(tap.create());
}

} // namespace
} // namespace zelvane::test
