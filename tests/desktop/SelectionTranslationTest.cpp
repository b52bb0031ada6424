#include "desktop/FlowFixture.h"
#include "pipeline/TranslationError.h"
#include "support/Await.h"

#include <gmock/gmock.h>

namespace zelvane::test {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;

/// The labels of a report's timeline, without times, with details.
QStringList timeline(const QString& report)
{
    QStringList events;
    bool inTimeline = false;
    for (const QString& line : report.split(u'\n')) {
        if (line == QStringLiteral("timeline (ms from start):")) {
            inTimeline = true;
        } else if (inTimeline && line.isEmpty()) {
            break;
        } else if (inTimeline) {
            events << line.mid(10);
        }
    }
    return events;
}

class SelectionFlow : public FlowFixture
{
protected:
    /// Starts a run and moves the time on until it has ended.
    void run(TranslateOutputMode mode = TranslateOutputMode::automatic, bool autoReplace = true)
    {
        start(mode, autoReplace);
        for (int i = 0; i < 1000 && !ended; ++i) {
            clock.advance(1ms);
        }
        ASSERT_TRUE(ended);
    }

    void start(TranslateOutputMode mode = TranslateOutputMode::automatic, bool autoReplace = true,
               std::stop_token stop = {})
    {
        ended = false;
        failure.clear();
        errorCode.reset();
        result = {};
        capture(flow.translateSelection(pair, mode, autoReplace, stop), this);
    }

    static QCoro::Task<void> capture(QCoro::Task<TranslateSelectionResult> task,
                                     SelectionFlow* self)
    {
        try {
            self->result = co_await task;
        } catch (const TranslationError& error) {
            self->failure = error.description();
            self->errorCode = error.code();
        } catch (...) {
            self->failure = describe(std::current_exception());
        }
        self->ended = true;
    }

    bool ended = false;
    QString failure;
    std::optional<TranslationError::Code> errorCode;
    TranslateSelectionResult result;
};

TEST_F(SelectionFlow, replacesTheSelectionAndPutsTheClipboardBack)
{
    run();
    EXPECT_THAT(log, ElementsAre(QStringLiteral("snapshot"), QStringLiteral("clear"),
                                 QStringLiteral("post copy"), QStringLiteral("read string"),
                                 QStringLiteral("translate hello world"), QStringLiteral("clear"),
                                 QStringLiteral("set string Hallo Welt"),
                                 QStringLiteral("post paste"), QStringLiteral("restore")));
    EXPECT_EQ(result.original, QStringLiteral("hello world"));
    EXPECT_EQ(result.translated, QStringLiteral("Hallo Welt"));
    EXPECT_TRUE(result.replaced);
    EXPECT_FALSE(result.showWindow);
    EXPECT_EQ(clipboardText(), QStringLiteral("the user's own"));
}

TEST_F(SelectionFlow, marksEveryStepAtItsTime)
{
    settings.setModel(QStringLiteral("mistral-large-latest"));
    run();
    EXPECT_EQ(result.diagnostics, QStringLiteral("Zelvane · translation timing\n"
                                                 "generated: 2026-01-02T03:04:05Z\n"
                                                 "autoReplace: true\n"
                                                 "chars: 11\n"
                                                 "mode: auto\n"
                                                 "model: mistral-large-latest\n"
                                                 "pair: ANY-DE\n"
                                                 "provider: Mistral\n"
                                                 "replaced: true\n"
                                                 "showWindow: false\n"
                                                 "\n"
                                                 "timeline (ms from start):\n"
                                                 "       0  start\n"
                                                 "       0  accessibility ok\n"
                                                 "       0  pasteboard backed up\n"
                                                 "       0  Cmd+C posted\n"
                                                 "     180  Cmd+C wait done · 180 ms\n"
                                                 "     180  selection read · 11 chars\n"
                                                 "     180  editable detect · editable\n"
                                                 "     180  API begin\n"
                                                 "     180  API end · 10 chars\n"
                                                 "     260  pre-paste wait done · 80 ms\n"
                                                 "     260  Cmd+V posted\n"
                                                 "     380  post-paste wait done · 120 ms\n"
                                                 "     380  pasteboard restored\n"
                                                 "     380  done\n"
                                                 "\n"
                                                 "durations:\n"
                                                 "  app before API: 180 ms\n"
                                                 "  API / model: 0 ms\n"
                                                 "  app after API: 200 ms\n"
                                                 "  total: 380 ms\n"
                                                 "\n"
                                                 "verdict: delay is mostly in the app (capture / "
                                                 "paste / waits)"));
}

TEST_F(SelectionFlow, anEmptyModelSettingIsTracedAsTheProvidersDefault)
{
    settings.setModel(QString());
    run();
    EXPECT_TRUE(result.diagnostics.contains(QStringLiteral("model: mistral-small-latest\n")));
}

TEST_F(SelectionFlow, waitsExactlyThreeTimesAroundAnEngineThatTakesItsTime)
{
    translator.answer.reset();
    start();
    clock.advance(179ms);
    EXPECT_EQ(log.last(), QStringLiteral("post copy"));
    clock.advance(1ms);
    EXPECT_EQ(log.last(), QStringLiteral("translate hello world"));
    clock.advance(5s);
    EXPECT_EQ(clipboardText(), QStringLiteral("hello world"));
    translator.pending.succeed(QStringLiteral("Hallo"));
    EXPECT_EQ(log.last(), QStringLiteral("set string Hallo"));
    clock.advance(79ms);
    EXPECT_EQ(log.last(), QStringLiteral("set string Hallo"));
    clock.advance(1ms);
    EXPECT_EQ(log.last(), QStringLiteral("post paste"));
    clock.advance(119ms);
    EXPECT_EQ(log.last(), QStringLiteral("post paste"));
    clock.advance(1ms);
    EXPECT_EQ(log.last(), QStringLiteral("restore"));
    EXPECT_TRUE(ended);
}

struct OutcomeCase
{
    const char* name;
    TranslateOutputMode mode;
    bool autoReplace;
    bool staticElement;
    bool replaced;
    bool showWindow;
};

class FlowOutcome : public SelectionFlow, public ::testing::WithParamInterface<OutcomeCase>
{
};

TEST_P(FlowOutcome, dependsOnModeSettingAndElement)
{
    const OutcomeCase& given = GetParam();
    if (given.staticElement) {
        focus.element = FocusedElement{std::nullopt, false, false, QStringLiteral("AXStaticText")};
    }
    run(given.mode, given.autoReplace);
    EXPECT_EQ(result.replaced, given.replaced);
    EXPECT_EQ(result.showWindow, given.showWindow);
    EXPECT_EQ(log.contains(QStringLiteral("post paste")), given.replaced);
    EXPECT_EQ(log.last(), QStringLiteral("restore"));
    EXPECT_EQ(clipboardText(), QStringLiteral("the user's own"));
    const QString shown = given.showWindow ? QStringLiteral("true") : QStringLiteral("false");
    EXPECT_TRUE(result.diagnostics.contains(QStringLiteral("showWindow: ") + shown));
    const QString pasted = given.replaced ? QStringLiteral("true") : QStringLiteral("false");
    EXPECT_TRUE(result.diagnostics.contains(QStringLiteral("replaced: ") + pasted));
    const QString detected = given.staticElement ? QStringLiteral("editable detect · static")
                                                 : QStringLiteral("editable detect · editable");
    EXPECT_TRUE(result.diagnostics.contains(detected));
}

using Mode = TranslateOutputMode;
INSTANTIATE_TEST_SUITE_P(
    Flow, FlowOutcome,
    ::testing::Values(OutcomeCase{"auto", Mode::automatic, true, false, true, false},
                      OutcomeCase{"autoStatic", Mode::automatic, true, true, false, true},
                      OutcomeCase{"autoOff", Mode::automatic, false, false, false, true},
                      OutcomeCase{"autoOffStatic", Mode::automatic, false, true, false, true},
                      OutcomeCase{"andWindow", Mode::autoAndWindow, true, false, true, true},
                      OutcomeCase{"andWindowStatic", Mode::autoAndWindow, true, true, false, true},
                      OutcomeCase{"andWindowOff", Mode::autoAndWindow, false, false, false, true},
                      OutcomeCase{"windowOnly", Mode::windowOnly, true, false, false, true},
                      OutcomeCase{"windowOnlyStatic", Mode::windowOnly, true, true, false, true},
                      OutcomeCase{"windowOnlyOff", Mode::windowOnly, false, false, false, true}),
    [](const auto& info) { return info.param.name; });

TEST_F(SelectionFlow, withoutPasteThereIsOnlyTheFirstWait)
{
    run(Mode::windowOnly);
    EXPECT_THAT(timeline(result.diagnostics),
                ElementsAre(QStringLiteral("start"), QStringLiteral("accessibility ok"),
                            QStringLiteral("pasteboard backed up"), QStringLiteral("Cmd+C posted"),
                            QStringLiteral("Cmd+C wait done · 180 ms"),
                            QStringLiteral("selection read · 11 chars"),
                            QStringLiteral("editable detect · editable"),
                            QStringLiteral("API begin"), QStringLiteral("API end · 10 chars"),
                            QStringLiteral("pasteboard restored"), QStringLiteral("done")));
    EXPECT_TRUE(result.diagnostics.contains(QStringLiteral("  total: 180 ms")));
    EXPECT_TRUE(result.diagnostics.contains(QStringLiteral("mode: windowOnly")));
}

TEST_F(SelectionFlow, anElementThatSaysReadOnlyGetsThePopup)
{
    focus.element = FocusedElement{false, false, false, QStringLiteral("AXTextArea")};
    run();
    EXPECT_FALSE(result.replaced);
    EXPECT_TRUE(result.showWindow);
}

TEST_F(SelectionFlow, noFocusedElementCountsAsEditable)
{
    focus.element.reset();
    run();
    EXPECT_TRUE(result.replaced);
}

TEST_F(SelectionFlow, withoutPermissionTheClipboardIsNotTouched)
{
    platform.trusted = false;
    run();
    EXPECT_EQ(errorCode, TranslationError::Code::accessibilityDenied);
    EXPECT_THAT(log, ElementsAre(QStringLiteral("permission prompt")));
    EXPECT_EQ(clipboardText(), QStringLiteral("the user's own"));
    EXPECT_THAT(timeline(trace.report()),
                ElementsAre(QStringLiteral("start"), QStringLiteral("accessibility denied")));
}

TEST_F(SelectionFlow, aStalePermissionIsNoPermission)
{
    platform.tapWorks = false;
    run();
    EXPECT_EQ(errorCode, TranslationError::Code::accessibilityDenied);
    EXPECT_THAT(log, ElementsAre(QStringLiteral("permission prompt")));
}

TEST_F(SelectionFlow, nothingSelectedPutsTheClipboardBackAndSaysSo)
{
    selection = QString();
    run();
    EXPECT_EQ(errorCode, TranslationError::Code::emptyText);
    EXPECT_EQ(failure, QStringLiteral("No text selected."));
    EXPECT_THAT(log, ElementsAre(QStringLiteral("snapshot"), QStringLiteral("clear"),
                                 QStringLiteral("post copy"), QStringLiteral("read string"),
                                 QStringLiteral("restore")));
    EXPECT_EQ(clipboardText(), QStringLiteral("the user's own"));
    EXPECT_THAT(timeline(trace.report()),
                ElementsAre(QStringLiteral("start"), QStringLiteral("accessibility ok"),
                            QStringLiteral("pasteboard backed up"), QStringLiteral("Cmd+C posted"),
                            QStringLiteral("Cmd+C wait done · 180 ms"),
                            QStringLiteral("selection empty")));
}

TEST_F(SelectionFlow, aSelectionOfSpacesIsNoSelection)
{
    selection = QStringLiteral(" \u00a0\t\r\n ");
    run();
    EXPECT_EQ(errorCode, TranslationError::Code::emptyText);
    EXPECT_EQ(clipboardText(), QStringLiteral("the user's own"));
}

TEST_F(SelectionFlow, blankLinesAroundTheSelectionAreNotTranslated)
{
    selection = QStringLiteral("\n\n  hello world \n\n");
    run();
    EXPECT_THAT(translator.texts, ElementsAre(QStringLiteral("hello world")));
    EXPECT_EQ(result.original, QStringLiteral("hello world"));
    EXPECT_TRUE(result.diagnostics.contains(QStringLiteral("chars: 11\n")));
}

TEST_F(SelectionFlow, countsCharactersAsTheReaderSeesThem)
{
    selection = QStringLiteral("👨‍👩‍👧‍👦e\u0301");
    translator.answer = QStringLiteral("🇩🇪");
    run();
    EXPECT_TRUE(result.diagnostics.contains(QStringLiteral("selection read · 2 chars")));
    EXPECT_TRUE(result.diagnostics.contains(QStringLiteral("API end · 1 chars")));
}

TEST_F(SelectionFlow, anEngineFailurePastesNothingAndPutsTheClipboardBack)
{
    translator.failure = std::make_exception_ptr(
        TranslationError::http(500, QStringLiteral("down for maintenance")));
    run();
    EXPECT_EQ(failure, QStringLiteral("API error 500: down for maintenance"));
    EXPECT_EQ(errorCode, TranslationError::Code::http);
    EXPECT_EQ(log.last(), QStringLiteral("restore"));
    EXPECT_FALSE(log.contains(QStringLiteral("post paste")));
    EXPECT_EQ(clipboardText(), QStringLiteral("the user's own"));
    EXPECT_EQ(timeline(trace.report()).last(),
              QStringLiteral("error · API error 500: down for maintenance"));
}

TEST_F(SelectionFlow, aClipboardOfSeveralFormatsAndItemsComesBackWhole)
{
    const PasteboardSnapshot rich{{{{QStringLiteral("image/png"), QByteArray("\x89PNG\0\xff", 6)},
                                    {QStringLiteral("text/uri-list"), "file:///a%20b\r\n"}},
                                   {},
                                   {{QStringLiteral("text"), "second"}}}};
    pasteboard.content = rich;
    run();
    EXPECT_TRUE(result.replaced);
    EXPECT_EQ(pasteboard.content, rich);
}

TEST_F(SelectionFlow, anEmptyClipboardStaysEmpty)
{
    pasteboard.content = {};
    run();
    EXPECT_TRUE(result.replaced);
    EXPECT_EQ(clipboardText(), QStringLiteral("(empty)"));
}

TEST_F(SelectionFlow, whatIsCopiedDuringALongTranslationGivesWayToTheSavedClipboard)
{
    translator.answer.reset();
    start();
    clock.advance(180ms);
    pasteboard.put(QStringLiteral("copied meanwhile"));
    translator.pending.succeed(QStringLiteral("Hallo"));
    clock.advance(200ms);
    ASSERT_TRUE(ended);
    EXPECT_EQ(clipboardText(), QStringLiteral("the user's own"));
}

TEST_F(SelectionFlow, anUnreadableClipboardStopsTheRunBeforeItIsReplaced)
{
    pasteboard.ownerIsFrozen = true;
    run();
    EXPECT_EQ(failure, QStringLiteral("The clipboard could not be saved: the program that owns it "
                                      "does not answer."));
    EXPECT_THAT(log, ElementsAre(QStringLiteral("snapshot")));
    EXPECT_EQ(clipboardText(), QStringLiteral("the user's own"));
    EXPECT_TRUE(
        timeline(trace.report()).last().startsWith(QStringLiteral("error · The clipboard")));
}

TEST_F(SelectionFlow, aWindowThatIsGoneAtThePasteGetsThePopupInstead)
{
    keystrokes.pasteResult = PostResult::targetGone;
    run();
    EXPECT_FALSE(result.replaced);
    EXPECT_TRUE(result.showWindow);
    EXPECT_EQ(result.translated, QStringLiteral("Hallo Welt"));
    EXPECT_EQ(clipboardText(), QStringLiteral("the user's own"));
    EXPECT_TRUE(result.diagnostics.contains(QStringLiteral("replaced: false")));
    EXPECT_TRUE(result.diagnostics.contains(QStringLiteral("showWindow: true")));
    EXPECT_TRUE(timeline(result.diagnostics).contains(QStringLiteral("paste target gone")));
}

TEST_F(SelectionFlow, aFailedWaitAfterTheCopyEndsWithNothingRestoredAndNothingMarked)
{
    std::stop_source stop;
    start(Mode::automatic, true, stop.get_token());
    clock.advance(100ms);
    stop.request_stop();
    ASSERT_TRUE(ended);
    EXPECT_EQ(log.last(), QStringLiteral("post copy"));
    EXPECT_EQ(timeline(trace.report()).last(), QStringLiteral("Cmd+C posted"));
}

TEST_F(SelectionFlow, aFailedWaitBeforeThePastePutsTheClipboardBack)
{
    std::stop_source stop;
    start(Mode::automatic, true, stop.get_token());
    clock.advance(200ms);
    ASSERT_EQ(log.last(), QStringLiteral("set string Hallo Welt"));
    stop.request_stop();
    ASSERT_TRUE(ended);
    EXPECT_EQ(failure, QStringLiteral("Cancelled."));
    EXPECT_EQ(log.last(), QStringLiteral("restore"));
    EXPECT_FALSE(log.contains(QStringLiteral("post paste")));
    EXPECT_EQ(timeline(trace.report()).last(), QStringLiteral("error · Cancelled."));
}

TEST_F(SelectionFlow, aFailedWaitAfterThePastePutsTheClipboardBack)
{
    std::stop_source stop;
    start(Mode::automatic, true, stop.get_token());
    clock.advance(270ms);
    ASSERT_EQ(log.last(), QStringLiteral("post paste"));
    stop.request_stop();
    ASSERT_TRUE(ended);
    EXPECT_EQ(log.last(), QStringLiteral("restore"));
    EXPECT_EQ(timeline(trace.report()).last(), QStringLiteral("error · Cancelled."));
}

TEST_F(SelectionFlow, theTranslationIsPastedAsTheEngineReturnedIt)
{
    translator.answer = QStringLiteral("  Hallo\n");
    run();
    EXPECT_TRUE(log.contains(QStringLiteral("set string   Hallo\n")));
    EXPECT_EQ(result.translated, QStringLiteral("  Hallo\n"));
}

} // namespace
} // namespace zelvane::test
