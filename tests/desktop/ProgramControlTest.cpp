#include "desktop/ProgramControl.h"

#include "desktop/FlowFixture.h"

#include <gmock/gmock.h>

namespace zelvane::test {
namespace {

using namespace std::chrono_literals;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class Control : public FlowFixture
{
protected:
    Control()
    {
        settings.setPairs({pair, disabled});
        settings.setDoubleHotKeyWindow(false);
        QCoreApplication::sendPostedEvents();
        log.clear();
    }

    [[nodiscard]] ProgramControl::Actions actions()
    {
        return {[this] { log << QStringLiteral("reopen"); }, [this] { return windowShows; },
                [this] { return hasTray; }, [this] { log << QStringLiteral("panel"); },
                [this] { log << QStringLiteral("settings"); }};
    }
    static LanguagePair off(LanguagePair made)
    {
        made.enabled = false;
        return made;
    }
    [[nodiscard]] QString problemOf(const QString& which)
    {
        const auto outcome = control.triggerPair(which);
        return outcome ? QString() : outcome.error();
    }

    LanguagePair disabled = off(makePair(QStringLiteral("German"), QStringLiteral("French")));
    FakeHotKeyRegistrar registrar;
    HotKeyManager hotKeys{registrar};
    FakeOptionClickMenu optionMenu{log};
    FakeAlertPresenter alerts{log};
    FakeWindows windows{log};
    AppModel model{{settings, flow, hotKeys, optionMenu, permission, alerts, windows, clock}};
    bool windowShows = false;
    bool hasTray = true;
    ProgramControl control{{settings, model, windows}, actions()};
};

TEST_F(Control, aPairIsTriggeredByItsPlace)
{
    EXPECT_EQ(problemOf(QStringLiteral("1")), QString());
    EXPECT_TRUE(model.isBusy());
    clock.advance(1s);
    EXPECT_THAT(log, Contains(QStringLiteral("translate hello world")));
    EXPECT_THAT(log, Contains(QStringLiteral("post paste")));
}

TEST_F(Control, aPairIsTriggeredByItsIdentifier)
{
    for (const auto format : {QUuid::WithoutBraces, QUuid::WithBraces}) {
        log.clear();
        EXPECT_EQ(problemOf(u' ' + pair.id.toString(format).toUpper() + u'\n'), QString());
        clock.advance(1s);
        EXPECT_THAT(log, Contains(QStringLiteral("translate hello world")));
    }
}

TEST_F(Control, triggeringIsAPressWithItsWaitForASecondOne)
{
    settings.setDoubleHotKeyWindow(true);
    EXPECT_EQ(problemOf(QStringLiteral("1")), QString());
    EXPECT_FALSE(model.isBusy());
    EXPECT_EQ(problemOf(QStringLiteral("1")), QString());
    EXPECT_TRUE(model.isBusy());
    clock.advance(1s);
    EXPECT_THAT(log, Contains(QStringLiteral("popup hello world | Hallo Welt")));
}

TEST_F(Control, anythingElseIsRefusedInASentence)
{
    const std::pair<const char*, const char*> table[] = {
        {"0", "Language pair slot 0 is not configured."},
        {"3", "Language pair slot 3 is not configured."},
        {"-1", "Language pair slot -1 is not configured."},
        {"2", "Language pair German → French is disabled in Settings."},
        {"", "There is no language pair \"\"."},
        {"German", "There is no language pair \"German\"."},
        {"99999999999999999999", "There is no language pair \"99999999999999999999\"."},
        {"00000000-0000-0000-0000-000000000000",
         "There is no language pair \"00000000-0000-0000-0000-000000000000\"."},
    };
    for (const auto& [which, problem] : table) {
        EXPECT_EQ(problemOf(QString::fromUtf8(which)), QString::fromUtf8(problem)) << which;
    }
    EXPECT_FALSE(model.isBusy());
}

TEST_F(Control, aSecondStartOpensNothingWhereThereIsATray)
{
    control.activate();
    EXPECT_THAT(log, ElementsAre(QStringLiteral("reopen")));
}

TEST_F(Control, withoutATrayASecondStartOpensThePanel)
{
    hasTray = false;
    control.activate();
    EXPECT_THAT(log, ElementsAre(QStringLiteral("reopen"), QStringLiteral("panel")));
    log.clear();
    windowShows = true;
    control.activate();
    EXPECT_THAT(log, ElementsAre(QStringLiteral("reopen")));
}

TEST_F(Control, opensTheWindows)
{
    control.showTranslationWindow();
    control.showSettings();
    EXPECT_THAT(log, ElementsAre(QStringLiteral("manual window"), QStringLiteral("settings")));
}

TEST_F(Control, tellsTheStatusAndThePairs)
{
    ProgramControl::Status status = control.status();
    EXPECT_EQ(status.status, QStringLiteral("Ready"));
    EXPECT_FALSE(status.isBusy);
    EXPECT_EQ(status.lastError, QString());
    EXPECT_THAT(status.pairs, ElementsAre(QStringLiteral("Any Language → German"),
                                          QStringLiteral("German → French")));
    EXPECT_THAT(status.pairIDs, ElementsAre(pair.id.toString(QUuid::WithoutBraces),
                                            disabled.id.toString(QUuid::WithoutBraces)));
    selection = QString();
    EXPECT_TRUE(control.triggerPair(QStringLiteral("1")));
    clock.advance(1s);
    status = control.status();
    EXPECT_EQ(status.status, QStringLiteral("Error"));
    EXPECT_TRUE(status.isBusy);
    EXPECT_EQ(status.lastError, QStringLiteral("No text selected."));
}

} // namespace
} // namespace zelvane::test
