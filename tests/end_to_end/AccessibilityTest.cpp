// Every window of the program itself, for those who use it without a mouse or without seeing it.

#include "end_to_end/Tray.h"
#include "support/Await.h"
#include "support/TestRunner.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QRegularExpression>

namespace zelvane::test {
namespace {

using namespace std::chrono_literals;
using ::testing::Contains;
using ::testing::Each;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::UnorderedElementsAre;

const QString settingsTitle = QStringLiteral("^Settings$");

MATCHER(hasNoName, "")
{
    return arg.endsWith(u'\t') &&
           arg.contains(QRegularExpression(
               QStringLiteral("^(push button|check box|radio button|combo box|text|link|list)")));
}

class Accessibility : public ::testing::Test
{
protected:
    /// To go through a whole window takes its time.
    Accessibility() { allowThisTest(20s); }

    /// Goes through the window in front by Tab: what is wrong there. Its stops are in `stops`.
    QStringList faults()
    {
        const auto walk = session.askAsAScreenReader(QStringLiteral(ZELVANE_TAB_THROUGH));
        EXPECT_EQ(walk.exitCode, 0);
        const QStringList lines = QString::fromUtf8(walk.output).split(u'\n', Qt::SkipEmptyParts);
        stops = lines.filter(QStringLiteral("\t"));
        return lines.filter(
            QRegularExpression(QStringLiteral("^un(named|reached|marked|ordered) ")));
    }

    /// Presses Tab until this control has the focus.
    void goTo(const QString& control)
    {
        const auto walk =
            session.askAsAScreenReader(QStringLiteral(ZELVANE_TAB_THROUGH), {control});
        ASSERT_EQ(walk.exitCode, 0) << control.toStdString();
    }

    [[nodiscard]] bool hasFocus(const QString& control)
    {
        return waitUntil(
            [&] { return session.elements().contains(control + QStringLiteral(" *")); }, 5s);
    }

    void openSettings(const QString& page)
    {
        session.zelvane({QStringLiteral("show"), QStringLiteral("settings")});
        session.waitForKeyboard(settingsTitle);
        session.press(page);
    }

    [[nodiscard]] QByteArray setting(const QString& key)
    {
        return session.zelvane({QStringLiteral("defaults"), QStringLiteral("read"), key});
    }

    ZelvaneSession session;
    QStringList stops;
};

struct OpenSheet
{
    const char* name;
    const char* page;
    const char* button;
    const char* title;
};

class AccessiblePage : public Accessibility, public ::testing::WithParamInterface<const char*>
{
};

TEST_P(AccessiblePage, hasNamesAndIsReachedByTabWithTheFocusInSight)
{
    session.start();
    openSettings(QString::fromLatin1(GetParam()));
    EXPECT_THAT(faults(), IsEmpty());
    EXPECT_THAT(stops, Contains(QStringLiteral("combo box\tApp Language")));
}

INSTANTIATE_TEST_SUITE_P(OfTheSettings, AccessiblePage,
                         ::testing::Values("Translation", "Languages", "Behavior", "Accessibility",
                                           "About"),
                         [](const auto& info) { return info.param; });

class AccessibleSheet : public Accessibility, public ::testing::WithParamInterface<OpenSheet>
{
};

TEST_P(AccessibleSheet, hasNamesAndIsReachedByTabWithTheFocusInSightAndEscGivesTheFocusBack)
{
    session.start();
    openSettings(QString::fromLatin1(GetParam().page));
    const QString button = QString::fromUtf8(GetParam().button);
    session.press(button);
    ASSERT_TRUE(session.shows(QString::fromLatin1(GetParam().title)));
    EXPECT_THAT(faults(), IsEmpty());
    EXPECT_THAT(stops, Not(Contains(QStringLiteral("combo box\tApp Language"))));
    session.key("Escape");
    EXPECT_TRUE(hasFocus(QStringLiteral("push button\t") + button));
}

INSTANTIATE_TEST_SUITE_P(OfTheSettings, AccessibleSheet,
                         ::testing::Values(OpenSheet{"key", "Translation", "Edit Key", "API Key"},
                                           OpenSheet{"prompt", "Translation", "Edit prompt",
                                                     "Custom prompt"},
                                           OpenSheet{"licences", "About", "Third-Party Licenses…",
                                                     "Third-Party Licenses"}),
                         [](const auto& info) { return info.param.name; });

TEST_F(Accessibility, theSheetThatTakesEveryKeyGoesByEsc)
{
    session.start();
    openSettings(QStringLiteral("Languages"));
    session.press(QStringLiteral("Bind Keys"));
    ASSERT_TRUE(session.shows(QStringLiteral("Bind keys")));
    EXPECT_THAT(session.elements(), Each(Not(hasNoName())));
    session.key("Escape");
    EXPECT_TRUE(hasFocus(QStringLiteral("push button\tBind Keys")));
}

TEST_F(Accessibility, ofTheIntroduction)
{
    session.setDefault(QStringLiteral("zv.hasSeenOnboarding"), false);
    session.start();
    session.waitForKeyboard(QStringLiteral("^AI translation without limits$"));
    session.key("Right");
    session.waitForKeyboard(QStringLiteral("^Translate anywhere — even offline$"));
    EXPECT_THAT(faults(), IsEmpty());
    EXPECT_THAT(stops, Contains(QStringLiteral("push button\tPrevious page")));
    EXPECT_THAT(stops, Contains(QStringLiteral("push button\tNext page")));
}

TEST_F(Accessibility, ofThePanelOfTheTray)
{
    Tray tray(session);
    session.start();
    tray.openPanel();
    EXPECT_THAT(faults(), IsEmpty());
    EXPECT_EQ(stops.size(), 3);
}

TEST_F(Accessibility, ofTheListOfLanguages)
{
    session.start();
    openSettings(QStringLiteral("Languages"));
    session.press(QStringLiteral("Source"));
    ASSERT_TRUE(session.shows(QStringLiteral("Search or type custom…")));
    EXPECT_THAT(faults(), IsEmpty());
    EXPECT_THAT(stops, UnorderedElementsAre(QStringLiteral("text\tSearch or type custom…"),
                                            QStringLiteral("list\tSource")));
}

TEST_F(Accessibility, ofTheTranslationWindow)
{
    session.start();
    session.zelvane({QStringLiteral("show"), QStringLiteral("translation")});
    session.waitForKeyboard(QStringLiteral("^Translation Window$"));
    session.desktop.xdotool({QStringLiteral("type"), QStringLiteral("hello world")});
    session.key("ctrl+Return");
    // Until it is translated, there is nothing to copy.
    ASSERT_TRUE(waitUntil([this] {
        session.key("ctrl+c");
        return session.clipboard() == "Hallo Welt";
    }));
    EXPECT_THAT(faults(), IsEmpty());
    EXPECT_EQ(stops.size(), 8);
}

TEST_F(Accessibility, ofThePopup)
{
    session.start();
    session.openReader(QStringLiteral("hello reader"));
    session.selectAll();
    session.key(ZelvaneSession::toGerman);
    session.waitForKeyboard(QStringLiteral("^Translation$"));
    EXPECT_THAT(faults(), IsEmpty());
    EXPECT_EQ(stops.size(), 4);
}

TEST_F(Accessibility, ofTheAlert)
{
    session.provider.setHandler(
        [](const RecordedRequest&) { return Answer::json(401, R"({"error":"bad key"})"); });
    session.start();
    session.openEditor("hello world");
    session.key(ZelvaneSession::toGerman);
    session.waitForKeyboard(QStringLiteral("^Translation failed$"));
    EXPECT_THAT(faults(), IsEmpty());
    EXPECT_FALSE(stops.isEmpty());
}

TEST_F(Accessibility, settingsAreChangedByKeyboardAloneFromTheTrayOn)
{
    Tray tray(session);
    session.start();
    tray.openPanel();
    goTo(QStringLiteral("push button Settings"));
    session.key("Return");
    session.waitForKeyboard(settingsTitle);
    goTo(QStringLiteral("radio button Translation"));
    session.key("Down");
    ASSERT_TRUE(session.shows(QStringLiteral("Add pair")));

    goTo(QStringLiteral("check box Enable this pair"));
    session.key("space");
    EXPECT_TRUE(waitUntil(
        [this] { return setting(QStringLiteral("zv.pairs")).contains(R"("enabled":false)"); }));
    session.key("space");
}

TEST_F(Accessibility, aLanguageIsFoundAndChosenByKeyboardAlone)
{
    session.start();
    openSettings(QStringLiteral("Languages"));
    goTo(QStringLiteral("combo box Source"));
    session.key("space");
    ASSERT_TRUE(session.shows(QStringLiteral("Search or type custom…")));
    session.desktop.xdotool({QStringLiteral("type"), QStringLiteral("portug")});
    session.key("Down");
    session.key("Return");
    EXPECT_TRUE(waitUntil([this] {
        return setting(QStringLiteral("zv.pairs")).contains(R"("source":"Portuguese")");
    }));
    EXPECT_TRUE(hasFocus(QStringLiteral("combo box\tSource")));

    session.key("space");
    ASSERT_TRUE(session.shows(QStringLiteral("Search or type custom…")));
    session.key("Escape");
    EXPECT_TRUE(hasFocus(QStringLiteral("combo box\tSource")));
    session.key("Escape");
    session.waitUntilGone(settingsTitle);
}

TEST_F(Accessibility, aSizeIsChosenByKeyboardAlone)
{
    session.start();
    openSettings(QStringLiteral("Behavior"));
    goTo(QStringLiteral("combo box Classic Translation Window Size"));
    session.key("space");
    session.key("Down");
    session.key("Return");
    EXPECT_TRUE(waitUntil(
        [this] { return setting(QStringLiteral("zv.manualWindowSize")).trimmed() == "large"; }));
    EXPECT_TRUE(hasFocus(QStringLiteral("combo box\tClassic Translation Window Size")));
}

} // namespace
} // namespace zelvane::test
