#include "desktop/linux/atspi/AtSpiFocusInspector.h"

#include "foundation/SystemClock.h"
#include "support/Await.h"
#include "support/DesktopSession.h"

#include <QDeadlineTimer>
#include <QElapsedTimer>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
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

    ~AtSpiDesktop() override
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

    /// Starts a program that prints a line when its window is up, and gives that the focus.
    QProcess& startWindow(const QString& program, const QString& title,
                          const QStringList& arguments)
    {
        inspector();
        QProcess& process = start(program, arguments);
        if (!waitUntil([&] { return process.canReadLine(); })) {
            throw std::runtime_error("the window did not come up");
        }
        session().focusWindow(session().waitForWindow(title));
        return process;
    }

    QProcess& startGtk(const QString& title, const QStringList& kinds)
    {
        return startWindow(QStringLiteral("/usr/bin/python3"), title,
                           QStringList{QStringLiteral(ZELVANE_GTK_WINDOW), title} + kinds);
    }

    QProcess& startQt(const QString& title, const QString& kind)
    {
        return startWindow(QStringLiteral(ZELVANE_QT_WINDOW), title, {title, kind});
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

} // namespace
} // namespace zelvane::test
