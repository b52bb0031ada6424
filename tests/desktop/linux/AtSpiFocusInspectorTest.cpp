#include "desktop/linux/atspi/AtSpiFocusInspector.h"

#include "foundation/SystemClock.h"
#include "support/Await.h"
#include "support/DesktopSession.h"

#include <QDeadlineTimer>
#include <QElapsedTimer>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <iostream>
#include <memory>

namespace zelvane {

void PrintTo(const FocusedElement& element, std::ostream* out)
{
    const std::string_view editable = !element.editable   ? "unknown"
                                      : *element.editable ? "yes"
                                                          : "no";
    *out << element.role.toStdString() << ", editable: " << editable
         << ", selection settable: " << element.selectedTextSettable
         << ", value settable: " << element.valueSettable;
}

} // namespace zelvane

namespace zelvane::test {

namespace {

using namespace std::chrono_literals;

using Element = std::optional<FocusedElement>;

FocusedElement editableElement(const QString& role)
{
    return {true, true, true, role};
}

FocusedElement readOnlyElement(const QString& role)
{
    return {false, false, false, role};
}

FocusedElement silentElement(const QString& role)
{
    return {std::nullopt, false, false, role};
}

/// One desktop for all tests of a group; each has an inspector of its own and ends its programs.
class AtSpiDesktop : public ::testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        DesktopSession::Options options;
        options.sessionBus = true;
        options.accessibilityBus = true;
        s_session = std::make_unique<DesktopSession>(options);
    }

    static void TearDownTestSuite() { s_session.reset(); }

    void TearDown() override
    {
        for (QProcess* program : m_programs) {
            DesktopSession::thaw(*program);
            DesktopSession::kill(*program);
        }
    }

    static DesktopSession& session() { return *s_session; }

    std::unique_ptr<AtSpiFocusInspector> makeInspector()
    {
        return std::make_unique<AtSpiFocusInspector>(m_clock, session().sessionBusAddress());
    }

    /// The inspector, made at first use: programs that only look whether accessibility is on when
    /// they start must be started after it.
    AtSpiFocusInspector& inspector()
    {
        if (!m_inspector) {
            m_inspector = makeInspector();
            await(m_inspector->focusedElement());
        }
        return *m_inspector;
    }

    QProcess& start(const QString& program, const QStringList& arguments)
    {
        QProcess& process = session().start(program, arguments);
        m_programs.append(&process);
        return process;
    }

    /// Starts a program that prints a line when its window is up.
    QProcess& launch(const QString& program, const QStringList& arguments)
    {
        inspector();
        return start(program, arguments);
    }

    QProcess& launchGtk(const QString& title, const QStringList& kinds)
    {
        return launch(QStringLiteral("/usr/bin/python3"),
                      QStringList{QStringLiteral(ZELVANE_GTK_WINDOW), title} + kinds);
    }

    /// Waits for the window of a program that was launched, and gives it the focus.
    static void show(QProcess& process, const QString& title)
    {
        if (!waitUntil([&] { return process.canReadLine(); })) {
            throw std::runtime_error("the window did not come up");
        }
        session().focusWindow(session().waitForWindow(title));
    }

    QProcess& startGtk(const QString& title, const QStringList& kinds)
    {
        QProcess& process = launchGtk(title, kinds);
        show(process, title);
        return process;
    }

    QProcess& startQt(const QString& title, const QString& kind)
    {
        QProcess& process = launch(QStringLiteral(ZELVANE_QT_WINDOW), {title, kind});
        show(process, title);
        return process;
    }

    static void moveFocus(QProcess& gtkWindow, int widget)
    {
        gtkWindow.write("focus " + QByteArray::number(widget) + "\n");
        gtkWindow.waitForBytesWritten();
    }

    Element inspect() { return await(inspector().focusedElement()); }

    /// The first answer that is as expected, or the last one of several seconds: a program's focus
    /// arrives some moments after its window.
    Element inspectUntil(const Element& expected)
    {
        QDeadlineTimer deadline(5s);
        Element element = inspect();
        while (element != expected && !deadline.hasExpired()) {
            waitUntil([] { return false; }, 20ms);
            element = inspect();
        }
        return element;
    }

    SystemClock m_clock;

private:
    static inline std::unique_ptr<DesktopSession> s_session;
    std::unique_ptr<AtSpiFocusInspector> m_inspector;
    QList<QProcess*> m_programs;
};

// What programs say ---------------------------------------------------------------------------

struct WidgetCase
{
    const char* kind;
    FocusedElement expected;
    bool isStatic;
};

void PrintTo(const WidgetCase& widget, std::ostream* out)
{
    *out << widget.kind;
}

std::string nameOf(const ::testing::TestParamInfo<WidgetCase>& info)
{
    std::string name = info.param.kind;
    std::ranges::replace(name, '-', '_');
    return name;
}

class AtSpiGtkWidget : public AtSpiDesktop, public ::testing::WithParamInterface<WidgetCase>
{
};

TEST_P(AtSpiGtkWidget, isToldAsWhatItTakes)
{
    const WidgetCase& widget = GetParam();
    startGtk(QStringLiteral("A window"), {QString::fromLatin1(widget.kind)});

    const Element element = inspectUntil(widget.expected);

    EXPECT_EQ(element, widget.expected);
    EXPECT_EQ(isStatic(element), widget.isStatic);
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, AtSpiGtkWidget,
    ::testing::Values(
        WidgetCase{"entry", editableElement(QStringLiteral("AXTextField")), false},
        WidgetCase{"password", editableElement(QStringLiteral("AXTextField")), false},
        WidgetCase{"text", editableElement(QStringLiteral("AXTextArea")), false},
        WidgetCase{"spin-button", editableElement(QStringLiteral("AXIncrementor")), false},
        WidgetCase{"web-editor", editableElement(QStringLiteral("AXWebArea")), false},
        WidgetCase{"read-only-entry", readOnlyElement(QStringLiteral("AXTextField")), true},
        WidgetCase{"read-only-text", readOnlyElement(QStringLiteral("AXTextArea")), true},
        WidgetCase{"label", readOnlyElement(QStringLiteral("AXStaticText")), true},
        WidgetCase{"heading", readOnlyElement(QStringLiteral("AXHeading")), true},
        WidgetCase{"web-page", readOnlyElement(QStringLiteral("AXWebArea")), true},
        WidgetCase{"link", silentElement(QStringLiteral("AXLink")), true},
        WidgetCase{"check-box", silentElement(QStringLiteral("AXCheckBox")), true},
        WidgetCase{"radio-button", silentElement(QStringLiteral("AXRadioButton")), true},
        WidgetCase{"toggle-button", silentElement(QStringLiteral("AXCheckBox")), true},
        WidgetCase{"button", silentElement(QStringLiteral("AXButton")), false},
        WidgetCase{"slider", silentElement(QStringLiteral("AXSlider")), false},
        WidgetCase{"terminal", silentElement(QStringLiteral("AXTextArea")), false},
        WidgetCase{"sheet", silentElement(QStringLiteral("AXTable")), false}),
    nameOf);

class AtSpiQtWidget : public AtSpiDesktop, public ::testing::WithParamInterface<WidgetCase>
{
};

TEST_P(AtSpiQtWidget, isToldAsWhatItTakes)
{
    const WidgetCase& widget = GetParam();
    startQt(QStringLiteral("A window"), QString::fromLatin1(widget.kind));

    const Element element = inspectUntil(widget.expected);

    EXPECT_EQ(element, widget.expected);
    EXPECT_EQ(isStatic(element), widget.isStatic);
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, AtSpiQtWidget,
    ::testing::Values(
        WidgetCase{"entry", editableElement(QStringLiteral("AXTextField")), false},
        WidgetCase{"text", editableElement(QStringLiteral("AXTextArea")), false},
        WidgetCase{"combo-box", silentElement(QStringLiteral("AXPopUpButton")), false},
        WidgetCase{"spin-box", silentElement(QStringLiteral("AXIncrementor")), false},
        WidgetCase{"dialog", editableElement(QStringLiteral("AXTextField")), false},
        WidgetCase{"read-only-entry", readOnlyElement(QStringLiteral("AXTextField")), true},
        WidgetCase{"text-browser", readOnlyElement(QStringLiteral("AXStaticText")), true},
        WidgetCase{"label", readOnlyElement(QStringLiteral("AXStaticText")), true}),
    nameOf);

// Where the focus is ---------------------------------------------------------------------------

const Element editor = editableElement(QStringLiteral("AXTextArea"));
const Element entry = editableElement(QStringLiteral("AXTextField"));
const Element readOnlyText = readOnlyElement(QStringLiteral("AXTextArea"));

class AtSpiFocus : public AtSpiDesktop
{
protected:
    std::chrono::milliseconds timeOf(const std::function<void()>& action)
    {
        QElapsedTimer timer;
        timer.start();
        action();
        return std::chrono::milliseconds(timer.elapsed());
    }

    QString window(const QString& title) { return session().waitForWindow(title); }
};

TEST_F(AtSpiFocus, anEditorTakesText)
{
    inspector();
    start(QStringLiteral("mousepad"), {QStringLiteral("--disable-server")});
    session().focusWindow(window(QStringLiteral("Mousepad")));

    EXPECT_EQ(inspectUntil(editor), editor);
}

TEST_F(AtSpiFocus, theEntryOfADialogTakesText)
{
    inspector();
    start(QStringLiteral("zenity"),
          {QStringLiteral("--entry"), QStringLiteral("--title=A question")});
    session().focusWindow(window(QStringLiteral("A question")));

    EXPECT_EQ(inspectUntil(entry), entry);
}

TEST_F(AtSpiFocus, withoutAnyWindowThereIsNone)
{
    EXPECT_EQ(inspect(), std::nullopt);
}

TEST_F(AtSpiFocus, isFollowedFromWidgetToWidget)
{
    QProcess& program = startGtk(QStringLiteral("A window"),
                                 {QStringLiteral("read-only-text"), QStringLiteral("entry")});
    EXPECT_EQ(inspectUntil(readOnlyText), readOnlyText);

    moveFocus(program, 1);
    EXPECT_EQ(inspectUntil(entry), entry);

    moveFocus(program, 0);
    EXPECT_EQ(inspectUntil(readOnlyText), readOnlyText);
}

TEST_F(AtSpiFocus, isFollowedFromWindowToWindow)
{
    QProcess& first = launchGtk(QStringLiteral("First window"), {QStringLiteral("read-only-text")});
    QProcess& second = launchGtk(QStringLiteral("Second window"), {QStringLiteral("entry")});
    show(first, QStringLiteral("First window"));
    show(second, QStringLiteral("Second window"));
    EXPECT_EQ(inspectUntil(entry), entry);

    session().focusWindow(window(QStringLiteral("First window")));
    EXPECT_EQ(inspectUntil(readOnlyText), readOnlyText);

    session().focusWindow(window(QStringLiteral("Second window")));
    EXPECT_EQ(inspectUntil(entry), entry);
}

TEST_F(AtSpiFocus, inAWindowThatTellsNothingIsNone)
{
    startGtk(QStringLiteral("A window"), {QStringLiteral("read-only-text")});
    EXPECT_EQ(inspectUntil(readOnlyText), readOnlyText);

    start(QStringLiteral("xev"), {QStringLiteral("-name"), QStringLiteral("Silent")});
    session().focusWindow(window(QStringLiteral("Silent")));

    EXPECT_EQ(inspectUntil(std::nullopt), std::nullopt);
}

TEST_F(AtSpiFocus, isFoundAmongManyObjectsIfItCameBeforeTheInspector)
{
    inspector(); // so that the bus is up
    startGtk(QStringLiteral("A window"),
             {QStringLiteral("read-only-text"), QStringLiteral("tree"), QStringLiteral("entry")});
    EXPECT_EQ(inspectUntil(readOnlyText), readOnlyText);
    const auto late = makeInspector();

    Element found;
    const auto time = timeOf([&] { found = await(late->focusedElement()); });

    EXPECT_EQ(found, readOnlyText);
    std::cout << "connected and searched the tree in " << time.count() << " ms\n";
}

TEST_F(AtSpiFocus, ofAFrozenProgramIsNoneWithinTheLimit)
{
    QProcess& program = startGtk(QStringLiteral("A window"), {QStringLiteral("entry")});
    EXPECT_EQ(inspectUntil(entry), entry);
    DesktopSession::freeze(program);

    Element found;
    const auto time = timeOf([&] { found = inspect(); });

    EXPECT_EQ(found, std::nullopt);
    EXPECT_LT(time, 1s);

    DesktopSession::thaw(program);
    EXPECT_EQ(inspectUntil(entry), entry);
}

TEST_F(AtSpiFocus, isFoundBesideAFrozenProgram)
{
    QProcess& frozen = launchGtk(QStringLiteral("Frozen window"), {QStringLiteral("entry")});
    QProcess& other = launchGtk(QStringLiteral("A window"), {QStringLiteral("read-only-text")});
    show(frozen, QStringLiteral("Frozen window"));
    show(other, QStringLiteral("A window"));
    EXPECT_EQ(inspectUntil(readOnlyText), readOnlyText);
    DesktopSession::freeze(frozen);
    const auto late = makeInspector();
    waitUntil([] { return false; }, 100ms); // for its connection

    EXPECT_EQ(inspect(), readOnlyText);
    EXPECT_EQ(await(late->focusedElement()), readOnlyText);
}

TEST_F(AtSpiFocus, endsWithItsProgram)
{
    QProcess& first = launchGtk(QStringLiteral("First window"), {QStringLiteral("read-only-text")});
    QProcess& second = launchGtk(QStringLiteral("Second window"), {QStringLiteral("entry")});
    show(first, QStringLiteral("First window"));
    show(second, QStringLiteral("Second window"));
    EXPECT_EQ(inspectUntil(entry), entry);

    DesktopSession::kill(second);

    EXPECT_NE(inspect(), entry);
    session().focusWindow(window(QStringLiteral("First window")));
    EXPECT_EQ(inspectUntil(readOnlyText), readOnlyText);
}

TEST_F(AtSpiFocus, isToldAgainAndAgain)
{
    constexpr int times = 50;
    startGtk(QStringLiteral("A window"), {QStringLiteral("text")});
    EXPECT_EQ(inspectUntil(editor), editor);
    QList<qint64> microseconds;

    for (int i = 0; i < times; ++i) {
        QElapsedTimer timer;
        timer.start();
        EXPECT_EQ(inspect(), editor);
        microseconds.append(timer.nsecsElapsed() / 1000);
    }

    std::ranges::sort(microseconds);
    std::cout << "inspections: median " << microseconds[times / 2] << " us, 95th percentile "
              << microseconds[times * 95 / 100] << " us, longest " << microseconds.last()
              << " us\n";
}

TEST_F(AtSpiFocus, callsAtTheSameTimeAllGetTheirAnswer)
{
    startGtk(QStringLiteral("A window"), {QStringLiteral("entry")});
    EXPECT_EQ(inspectUntil(entry), entry);

    auto first = inspector().focusedElement();
    auto second = inspector().focusedElement();

    EXPECT_EQ(await(std::move(first)), entry);
    EXPECT_EQ(await(std::move(second)), entry);
}

TEST_F(AtSpiFocus, callsThatWaitWhenTheInspectorGoesGetNone)
{
    QProcess& program = startGtk(QStringLiteral("A window"), {QStringLiteral("entry")});
    EXPECT_EQ(inspectUntil(entry), entry);
    DesktopSession::freeze(program);
    auto doomed = makeInspector();
    auto answer = doomed->focusedElement();

    const auto time = timeOf([&] { doomed.reset(); });

    EXPECT_LT(time, 250ms);
    EXPECT_EQ(await(std::move(answer)), std::nullopt);
}

TEST_F(AtSpiFocus, accessibilityIsSwitchedOnForTheSession)
{
    inspector();

    const auto outcome = session().run(
        QStringLiteral("dbus-send"),
        {QStringLiteral("--session"), QStringLiteral("--print-reply=literal"),
         QStringLiteral("--dest=org.a11y.Bus"), QStringLiteral("/org/a11y/bus"),
         QStringLiteral("org.freedesktop.DBus.Properties.Get"),
         QStringLiteral("string:org.a11y.Status"), QStringLiteral("string:IsEnabled")});

    EXPECT_THAT(outcome.output.toStdString(), ::testing::HasSubstr("boolean true"));
    EXPECT_EQ(inspector().unavailable(), std::nullopt);
}

class AtSpiOddProgram : public AtSpiFocus
{
protected:
    QProcess& startFake(const QString& kind)
    {
        QProcess& process = start(QStringLiteral("/usr/bin/python3"),
                                  {QStringLiteral(ZELVANE_FAKE_ACCESSIBLE), kind});
        if (!waitUntil([&] { return process.canReadLine(); })) {
            throw std::runtime_error("the fake did not come up");
        }
        return process;
    }

    static void announceFocus(QProcess& fake)
    {
        fake.write("\n");
        fake.waitForBytesWritten();
    }
};

TEST_F(AtSpiOddProgram, theEntryInAPageOfAnotherProcessIsFound)
{
    startFake(QStringLiteral("embedded"));

    EXPECT_EQ(inspectUntil(entry), entry);
}

TEST_F(AtSpiOddProgram, theEntryInAPageThatNoListNamesIsFoundOnceItIsAnnounced)
{
    inspector();
    QProcess& fake = startFake(QStringLiteral("secluded"));
    EXPECT_EQ(inspect(), std::nullopt);

    announceFocus(fake);

    EXPECT_EQ(inspectUntil(entry), entry);
    EXPECT_EQ(inspect(), entry);
}

TEST_F(AtSpiOddProgram, objectsThatAreEachOthersChildrenEndInNone)
{
    inspector();
    QProcess& fake = startFake(QStringLiteral("loop"));
    announceFocus(fake);

    const auto time = timeOf([&] { EXPECT_EQ(inspect(), std::nullopt); });

    EXPECT_LT(time, 1s);
}

TEST_F(AtSpiOddProgram, referencesToNothingAndWrongTypesEndInNone)
{
    inspector();
    QProcess& fake = startFake(QStringLiteral("garbage"));
    EXPECT_EQ(inspect(), std::nullopt);

    announceFocus(fake);
    waitUntil([] { return false; }, 50ms);

    EXPECT_EQ(inspect(), silentElement(QStringLiteral("AXGroup")));
}

/// Apart from the others, since it ends what they share.
class AtSpiBus : public AtSpiFocus
{
protected:
    static QByteArray address()
    {
        return session()
            .run(QStringLiteral("dbus-send"),
                 {QStringLiteral("--session"), QStringLiteral("--print-reply=literal"),
                  QStringLiteral("--dest=org.a11y.Bus"), QStringLiteral("/org/a11y/bus"),
                  QStringLiteral("org.a11y.Bus.GetAddress")})
            .output.trimmed();
    }

    /// The process that owns a name on a bus.
    static pid_t processOf(const QString& bus, const QString& name)
    {
        const QByteArray reply =
            session()
                .run(QStringLiteral("dbus-send"),
                     {bus, QStringLiteral("--print-reply=literal"),
                      QStringLiteral("--dest=org.freedesktop.DBus"), QStringLiteral("/"),
                      QStringLiteral("org.freedesktop.DBus."
                                     "GetConnectionUnixProcessID"),
                      QStringLiteral("string:") + name})
                .output.trimmed();
        const pid_t process = reply.split(' ').last().toInt();
        if (process <= 1) {
            throw std::runtime_error("no process owns " + name.toStdString());
        }
        return process;
    }

    static pid_t launcher()
    {
        return processOf(QStringLiteral("--session"), QStringLiteral("org.a11y.Bus"));
    }

    static pid_t accessibilityBus()
    {
        return processOf(QStringLiteral("--bus=") + QString::fromUtf8(address()),
                         QStringLiteral("org.freedesktop.DBus"));
    }
};

TEST_F(AtSpiBus, thatCrashesIsReachedAgain)
{
    QProcess& before = startGtk(QStringLiteral("A window"), {QStringLiteral("entry")});
    EXPECT_EQ(inspectUntil(entry), entry);
    const QByteArray oldAddress = address();
    DesktopSession::kill(before);

    ::kill(accessibilityBus(), SIGKILL);

    EXPECT_TRUE(waitUntil([&] { return address() != oldAddress; }));
    startGtk(QStringLiteral("A window"), {QStringLiteral("read-only-text")});
    EXPECT_EQ(inspectUntil(readOnlyText), readOnlyText);
}

TEST_F(AtSpiBus, whoseLauncherCrashesIsLeftForTheNewOne)
{
    QProcess& before = startGtk(QStringLiteral("A window"), {QStringLiteral("entry")});
    EXPECT_EQ(inspectUntil(entry), entry);
    const QByteArray oldAddress = address();
    const pid_t orphan = accessibilityBus();
    DesktopSession::kill(before);

    ::kill(launcher(), SIGKILL);

    EXPECT_TRUE(waitUntil([&] { return address() != oldAddress; }));
    startGtk(QStringLiteral("A window"), {QStringLiteral("read-only-text")});
    EXPECT_EQ(inspectUntil(readOnlyText), readOnlyText);
    ::kill(orphan, SIGKILL); // asked to end, it would take the new one's socket away
}

// What may be missing --------------------------------------------------------------------------

constexpr auto noSessionBus =
    "There is no session bus, so Zelvane Desk can't tell text that can be edited from text that "
    "can't, and pastes into both. Everything else works.";
constexpr auto noAccessibilityBus =
    "There is no accessibility bus (at-spi2-core), so Zelvane Desk can't tell text that can be "
    "edited from text that can't, and pastes into both. Everything else works.";

class AtSpiWithoutABus : public ::testing::Test
{
protected:
    static DesktopSession::Options withoutAccessibility()
    {
        DesktopSession::Options options;
        options.windowManager = false;
        return options;
    }

    static DesktopSession::Options withAccessibility()
    {
        DesktopSession::Options options;
        options.sessionBus = true;
        options.accessibilityBus = true;
        return options;
    }

    /// A session bus that starts no services, and so no accessibility bus either. Yields its
    /// address.
    static QString startBareBus(DesktopSession& session, QProcess*& bus)
    {
        const QString socket = session.home() + QStringLiteral("/bare-bus");
        const QString configuration = session.writeFile(
            QStringLiteral("bare-bus.conf"),
            "<!DOCTYPE busconfig PUBLIC \"-//freedesktop//DTD D-BUS Bus Configuration 1.0//EN\" "
            "\"http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd\">\n"
            "<busconfig><type>session</type><listen>unix:path=" +
                socket.toUtf8() +
                "</listen><auth>EXTERNAL</auth><policy context=\"default\">"
                "<allow send_destination=\"*\"/><allow eavesdrop=\"false\"/><allow own=\"*\"/>"
                "</policy></busconfig>\n");
        bus = &session.start(QStringLiteral("dbus-daemon"),
                             {QStringLiteral("--nofork"), QStringLiteral("--print-address=1"),
                              QStringLiteral("--config-file=") + configuration});
        if (!waitUntil([&] { return bus->canReadLine(); })) {
            throw std::runtime_error("the bus did not come up");
        }
        return QStringLiteral("unix:path=") + socket;
    }

    static bool isUnavailable(const AtSpiFocusInspector& inspector, const char* sentence)
    {
        return waitUntil([&] { return inspector.unavailable() == QString::fromUtf8(sentence); });
    }

    static void expectNoneAtOnce(AtSpiFocusInspector& inspector)
    {
        QElapsedTimer timer;
        timer.start();
        EXPECT_EQ(await(inspector.focusedElement()), std::nullopt);
        EXPECT_LT(timer.elapsed(), 150);
    }

    SystemClock m_clock;
};

TEST_F(AtSpiWithoutABus, noAddressMeansNoneAtOnceAndASentence)
{
    AtSpiFocusInspector inspector(m_clock, QString());

    EXPECT_TRUE(isUnavailable(inspector, noSessionBus));
    expectNoneAtOnce(inspector);
}

TEST_F(AtSpiWithoutABus, anAddressWithNothingBehindItMeansNoneAtOnceAndASentence)
{
    for (const char* address :
         {"unix:path=/nonexistent/bus", "nonsense", "tcp:host=127.0.0.1,port=1"}) {
        AtSpiFocusInspector inspector(m_clock, QString::fromUtf8(address));

        EXPECT_TRUE(isUnavailable(inspector, noSessionBus)) << address;
        expectNoneAtOnce(inspector);
    }
}

TEST_F(AtSpiWithoutABus, aSessionWithoutAccessibilityMeansNoneAtOnceAndASentence)
{
    DesktopSession session(withoutAccessibility());
    QProcess* bus = nullptr;
    AtSpiFocusInspector inspector(m_clock, startBareBus(session, bus));

    EXPECT_TRUE(isUnavailable(inspector, noAccessibilityBus));
    expectNoneAtOnce(inspector);
}

TEST_F(AtSpiWithoutABus, aSessionBusThatHangsHoldsNobody)
{
    DesktopSession session(withoutAccessibility());
    QProcess* bus = nullptr;
    const QString address = startBareBus(session, bus);
    DesktopSession::freeze(*bus);
    QElapsedTimer timer;
    timer.start();
    {
        AtSpiFocusInspector inspector(m_clock, address);
        EXPECT_EQ(await(inspector.focusedElement()), std::nullopt);
    }
    EXPECT_LT(timer.elapsed(), 1000);
    DesktopSession::thaw(*bus);
}

TEST_F(AtSpiWithoutABus, aSessionThatEndsMeansNoneAndASentence)
{
    auto session = std::make_unique<DesktopSession>(withAccessibility());
    AtSpiFocusInspector inspector(m_clock, session->sessionBusAddress());
    await(inspector.focusedElement());
    EXPECT_EQ(inspector.unavailable(), std::nullopt);

    session.reset();

    EXPECT_TRUE(waitUntil([&] { return inspector.unavailable().has_value(); }));
    expectNoneAtOnce(inspector);
    EXPECT_TRUE(isUnavailable(inspector, noSessionBus));
}

} // namespace
} // namespace zelvane::test
