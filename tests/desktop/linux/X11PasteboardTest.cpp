#include "desktop/linux/X11Pasteboard.h"

#include "ForeignClipboard.h"
#include "foundation/SystemClock.h"
#include "support/Await.h"
#include "support/DesktopSession.h"
#include "support/QtPrinters.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QThread>

namespace zelvane::test {
namespace {

using namespace std::chrono_literals;
using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::Ge;
using ::testing::Lt;
using Delivery = ForeignValue::Delivery;

/// Bytes without a pattern that a damaged transfer could reproduce.
QByteArray noise(qsizetype size)
{
    QByteArray bytes(size, '\0');
    quint32 state = 12345;
    for (char& byte : bytes) {
        state = state * 1664525 + 1013904223;
        byte = char(state >> 24);
    }
    return bytes;
}

QByteArray words(const QList<quint32>& values)
{
    return QByteArray(reinterpret_cast<const char*>(values.constData()), values.size() * 4);
}

ForeignValue plain(const QByteArray& target, const QByteArray& bytes,
                   Delivery delivery = Delivery::atOnce)
{
    return {target, 8, bytes, delivery};
}

ForeignOwner::Content textOnly(const QByteArray& text)
{
    return {{"UTF8_STRING", plain("UTF8_STRING", text)}};
}

/// One X server for all tests of the file; starting one takes longer than most of them.
class X11PasteboardTest : public ::testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        session = std::make_unique<DesktopSession>(DesktopSession::Options{.windowManager = false});
    }
    static void TearDownTestSuite() { session.reset(); }

    void SetUp() override
    {
        auto opened = X11Pasteboard::open(exchange, session->display());
        ASSERT_TRUE(opened) << opened.error().toStdString();
        pasteboard = std::move(*opened);
        reader = std::make_unique<ForeignProgram>(session->display());
    }

    /// Waits until everything asked of the pasteboard has reached the server.
    void settle() { await(exchange.settled(clock)); }

    /// Puts a text there as for a paste into `target`, up to the moment before the restoration.
    void pasteInto(const ForeignProgram& target, const QString& text)
    {
        pasteboard->clear();
        pasteboard->setString(text);
        settle();
        exchange.pastePosted(target.window());
    }

    QByteArray textAt(std::chrono::milliseconds delay) const
    {
        QThread::msleep(quint64(delay.count()));
        return reader->fetchText();
    }

    static std::unique_ptr<DesktopSession> session;
    SystemClock clock;
    ClipboardExchange exchange;
    std::unique_ptr<X11Pasteboard> pasteboard;
    std::unique_ptr<ForeignProgram> reader;
};

std::unique_ptr<DesktopSession> X11PasteboardTest::session;

TEST_F(X11PasteboardTest, everyFormatComesBackByteForByteAfterItsSourceHasClosed)
{
    const ForeignOwner::Content content{
        {"UTF8_STRING", plain("UTF8_STRING", "žluťoučký\n")},
        {"STRING", plain("STRING", "\xe9t\xe9")},
        {"TEXT", {"COMPOUND_TEXT", 8, "\x1b%G\xc3\xa9"}},
        {"text/html", plain("text/html", QByteArray("<b>one</b>\0two", 15))},
        {"text/uri-list", plain("text/uri-list", "file:///tmp/a%20b\r\n")},
        {"image/png", plain("image/png", noise(3'000'000), Delivery::inPieces)},
        {"application/x-own;variant=2", plain("application/x-own;variant=2", noise(70'000))},
        {"application/x-empty", plain("application/x-empty", "")},
        {"numbers32", {"INTEGER", 32, words({1, 0, 0xfffffffe})}},
        {"numbers16", {"INTEGER", 16, QByteArray("\x01\x02\x03\x04", 4)}},
        {"atoms", {"ATOM", 32, words({4, 5})}},
    };
    auto source = std::make_unique<ForeignOwner>(session->display(), content);

    const PasteboardSnapshot saved = await(pasteboard->snapshot());
    pasteboard->clear();
    source.reset();
    pasteboard->restore(saved);
    settle();

    for (auto value = content.cbegin(); value != content.cend(); ++value) {
        EXPECT_TRUE(reader->fetch(value.key()) == *value) << value.key().constData();
    }
    EXPECT_EQ(reader->fetchTargets().size(), content.size() + 4);
    EXPECT_EQ(await(pasteboard->snapshot()), saved);
}

TEST_F(X11PasteboardTest, theNamesOfASnapshotAreTheTargets)
{
    const ForeignOwner source(session->display(), {{"text/html", plain("text/html", "<i>")},
                                                   {"n", {"INTEGER", 32, words({7})}}});
    const PasteboardSnapshot saved = await(pasteboard->snapshot());
    ASSERT_EQ(saved.items.size(), 1);
    EXPECT_EQ(saved.items[0].value(QStringLiteral("text/html")), "<i>");
    EXPECT_EQ(saved.items[0].value(QStringLiteral("n\x1fINTEGER\x1f") + QStringLiteral("32")),
              words({7}));
}

TEST_F(X11PasteboardTest, questionsCommandsAndServerResourcesAreNotAskedFor)
{
    const ForeignOwner source(session->display(), {{"MULTIPLE", plain("MULTIPLE", "x")},
                                                   {"TIMESTAMP", plain("INTEGER", "x")},
                                                   {"SAVE_TARGETS", plain("NULL", "x")},
                                                   {"DELETE", plain("NULL", "x")},
                                                   {"INSERT_SELECTION", plain("NULL", "x")},
                                                   {"INSERT_PROPERTY", plain("NULL", "x")},
                                                   {"PIXMAP", plain("PIXMAP", "x")},
                                                   {"UTF8_STRING", plain("UTF8_STRING", "kept")}});
    const PasteboardSnapshot saved = await(pasteboard->snapshot());
    EXPECT_THAT(source.requests(), ElementsAre("TARGETS", "UTF8_STRING"));
    EXPECT_THAT(saved.items[0].keys(), ElementsAre(QStringLiteral("UTF8_STRING")));
}

TEST_F(X11PasteboardTest, anOwnerlessClipboardIsAnEmptySnapshotAndStaysEmptyAfterRestoring)
{
    {
        const ForeignOwner closed(session->display(), textOnly("gone"));
    }
    const PasteboardSnapshot saved = await(pasteboard->snapshot());
    EXPECT_TRUE(saved.items.isEmpty());
    pasteboard->clear();
    settle();
    EXPECT_NE(reader->clipboardOwner(), xcb_window_t(XCB_WINDOW_NONE));
    pasteboard->restore(saved);
    settle();
    EXPECT_EQ(reader->clipboardOwner(), xcb_window_t(XCB_WINDOW_NONE));
}

TEST_F(X11PasteboardTest, aFrozenOwnerIsAFailureAndKeepsItsClipboard)
{
    const ForeignOwner frozen(session->display(), textOnly("precious"), true);
    const xcb_window_t owner = reader->clipboardOwner();
    QElapsedTimer time;
    time.start();
    EXPECT_THROW(await(pasteboard->snapshot()), PasteboardError);
    EXPECT_THAT(time.elapsed(), Lt(2000));
    EXPECT_EQ(reader->clipboardOwner(), owner);
}

TEST_F(X11PasteboardTest, anOwnerThatFreezesOnTheWayIsAFailureToo)
{
    ForeignOwner owner(session->display(), {{"a/first", plain("a/first", "1")},
                                            {"b/second", plain("b/second", "2")},
                                            {"c/third", plain("c/third", "3")}});
    owner.freezeAfter("a/first");
    EXPECT_THROW(await(pasteboard->snapshot()), PasteboardError);
}

TEST_F(X11PasteboardTest, aPromisedFormatThatNeverComesIsLeftOutAndHoldsUpNothing)
{
    const ForeignOwner source(
        session->display(), {{"a/never", plain("a/never", "", Delivery::never)},
                             {"b/never", plain("b/never", "", Delivery::never)},
                             {"c/half", plain("c/half", noise(250'000), Delivery::firstPieceOnly)},
                             {"d/there", plain("d/there", "here")}});
    QElapsedTimer time;
    time.start();
    const PasteboardSnapshot saved = await(pasteboard->snapshot());
    EXPECT_THAT(saved.items[0].keys(), ElementsAre(QStringLiteral("d/there")));
    EXPECT_THAT(time.elapsed(), AllOf(Ge(500), Lt(1500)));
}

TEST_F(X11PasteboardTest, manyPromisesThatNeverComeAreBoundedAsAWhole)
{
    ForeignOwner::Content content{{"z/there", plain("z/there", "here")}};
    for (char name = 'a'; name <= 'y'; ++name) {
        content.insert(QByteArray(1, name) + "/never", plain("x", "", Delivery::never));
    }
    const ForeignOwner source(session->display(), content);
    QElapsedTimer time;
    time.start();
    const PasteboardSnapshot saved = await(pasteboard->snapshot());
    EXPECT_THAT(saved.items[0].keys(), ElementsAre(QStringLiteral("z/there")));
    EXPECT_THAT(time.elapsed(), Lt(2200));
}

TEST_F(X11PasteboardTest, aSnapshotKeepsTheMainThreadFree)
{
    const ForeignOwner frozen(session->display(), {}, true);
    const auto task = pasteboard->snapshot();
    QElapsedTimer sinceLast;
    qint64 longestPause = 0;
    sinceLast.start();
    EXPECT_FALSE(waitUntil(
        [&] {
            longestPause = std::max(longestPause, sinceLast.restart());
            return false;
        },
        600ms));
    EXPECT_THAT(longestPause, Lt(100));
}

TEST_F(X11PasteboardTest, callsThatWaitEndWithThePasteboard)
{
    const ForeignOwner frozen(session->display(), {}, true);
    bool failed = false;
    const auto saving = [](QCoro::Task<PasteboardSnapshot> task, bool* flag) -> QCoro::Task<void> {
        try {
            co_await task;
        } catch (const PasteboardError&) {
            *flag = true;
        }
    }(pasteboard->snapshot(), &failed);
    std::optional<QString> text = QStringLiteral("unset");
    const auto reading = [](QCoro::Task<std::optional<QString>> task,
                            std::optional<QString>* into) -> QCoro::Task<void> {
        *into = co_await task;
    }(pasteboard->string(), &text);
    pasteboard.reset();
    EXPECT_TRUE(failed);
    EXPECT_EQ(text, std::nullopt);
}

TEST_F(X11PasteboardTest, aClearedClipboardHasNoText)
{
    const ForeignOwner source(session->display(), textOnly("old"));
    pasteboard->clear();
    EXPECT_EQ(await(pasteboard->string()), std::nullopt);
    settle();
    EXPECT_EQ(reader->fetch("UTF8_STRING"), std::nullopt);
    // What is there tells clipboard managers not to put something old in its place.
    EXPECT_EQ(reader->fetch("x-kde-passwordManagerHint")->bytes, "secret");
}

TEST_F(X11PasteboardTest, textIsReadFromTheBestFormatThereIs)
{
    const struct
    {
        ForeignOwner::Content content;
        std::optional<QString> expected;
    } table[] = {
        {{{"UTF8_STRING", plain("UTF8_STRING", "žluť")}, {"STRING", plain("STRING", "?lu?")}},
         QStringLiteral("žluť")},
        {{{"text/plain;charset=utf-8", plain("text/plain;charset=utf-8", "日本")},
          {"STRING", plain("STRING", "??")}},
         QStringLiteral("日本")},
        {{{"STRING", plain("STRING", "\xe9t\xe9")}}, QStringLiteral("été")},
        {{{"UTF8_STRING", plain("UTF8_STRING", "a\r\nb\nc\rd\r\n")}},
         QStringLiteral("a\nb\nc\rd\n")},
        {{{"UTF8_STRING", plain("UTF8_STRING", "a\xff"
                                               "b\xc3")}},
         QStringLiteral("a\uFFFDb\uFFFD")},
        {{{"UTF8_STRING", plain("UTF8_STRING", QByteArray("end\0", 4))}}, QStringLiteral("end")},
        {{{"UTF8_STRING", plain("UTF8_STRING", "")}}, QString()},
        {{{"image/png", plain("image/png", "x")}}, std::nullopt},
        {{{"UTF8_STRING", plain("UTF8_STRING", "", Delivery::never)},
          {"STRING", plain("STRING", "late")}},
         QStringLiteral("late")},
        {{{"UTF8_STRING", plain("UTF8_STRING", QByteArray(400'000, 'x'), Delivery::inPieces)}},
         QString(400'000, u'x')},
    };
    for (const auto& row : table) {
        const ForeignOwner source(session->display(), row.content);
        EXPECT_EQ(await(pasteboard->string()), row.expected);
    }
}

TEST_F(X11PasteboardTest, textThatDoesNotComeInTimeCountsAsNone)
{
    const ForeignOwner frozen(session->display(), textOnly("stuck"), true);
    QElapsedTimer time;
    time.start();
    EXPECT_EQ(await(pasteboard->string()), std::nullopt);
    EXPECT_THAT(time.elapsed(), Lt(1700));
}

TEST_F(X11PasteboardTest, textThatAnotherProgramPutThereBeforeTheCopyKeysIsNotTheSelection)
{
    pasteboard->clear();
    settle();
    // A clipboard manager that fills every emptied clipboard with the last thing it knows.
    auto manager = std::make_unique<ForeignOwner>(session->display(), textOnly("stale"));
    await(clock.sleep(20ms));
    exchange.copyPosted();
    EXPECT_EQ(await(pasteboard->string()), std::nullopt);

    const ForeignOwner editor(session->display(), textOnly("selected"));
    EXPECT_EQ(await(pasteboard->string()), QStringLiteral("selected"));
}

TEST_F(X11PasteboardTest, aTextIsServedInAllPlainFormatsAndMarkedAsSecret)
{
    pasteboard->clear();
    pasteboard->setString(QStringLiteral("Grüße 日本"));
    settle();
    EXPECT_EQ(*reader->fetch("UTF8_STRING"), plain("UTF8_STRING", "Grüße 日本"));
    EXPECT_EQ(*reader->fetch("text/plain"), plain("text/plain", "Grüße 日本"));
    EXPECT_EQ(*reader->fetch("text/plain;charset=utf-8"),
              plain("text/plain;charset=utf-8", "Grüße 日本"));
    EXPECT_EQ(*reader->fetch("TEXT"), plain("UTF8_STRING", "Grüße 日本"));
    EXPECT_EQ(*reader->fetch("STRING"), plain("STRING", "Gr\xfc\xdf"
                                                        "e ??"));
    EXPECT_EQ(reader->fetch("x-kde-passwordManagerHint")->bytes, "secret");
    EXPECT_EQ(reader->fetch("TIMESTAMP")->type, "INTEGER");
    EXPECT_THAT(reader->fetchTargets(),
                ElementsAre("MULTIPLE", "SAVE_TARGETS", "STRING", "TARGETS", "TEXT", "TIMESTAMP",
                            "UTF8_STRING", "text/plain", "text/plain;charset=utf-8",
                            "x-kde-passwordManagerHint"));
    EXPECT_EQ(await(pasteboard->string()), QStringLiteral("Grüße 日本"));
}

TEST_F(X11PasteboardTest, severalFormatsAreServedInOneRequest)
{
    pasteboard->setString(QStringLiteral("text"));
    settle();
    const auto values = reader->fetchTogether({"UTF8_STRING", "image/png", "TEXT"});
    EXPECT_EQ(values["UTF8_STRING"], plain("UTF8_STRING", "text"));
    EXPECT_EQ(values["image/png"], std::nullopt);
    EXPECT_EQ(values["TEXT"], plain("UTF8_STRING", "text"));
}

TEST_F(X11PasteboardTest, aLargeTextIsServedInPiecesWhileTheMainThreadIsBusy)
{
    const QByteArray large(5'000'000, 'y');
    pasteboard->setString(QString::fromLatin1(large));
    settle();
    EXPECT_EQ(reader->fetch("UTF8_STRING")->bytes, large); // this thread runs no event loop here
}

TEST_F(X11PasteboardTest, restoringWithoutAPasteTakesEffectAtOnce)
{
    const ForeignOwner source(session->display(), textOnly("mine"));
    const PasteboardSnapshot saved = await(pasteboard->snapshot());
    pasteboard->clear();
    pasteboard->setString(QStringLiteral("translation"));
    pasteboard->restore(saved);
    settle();
    EXPECT_EQ(reader->fetchText(), "mine");
}

TEST_F(X11PasteboardTest, theClipboardComesBackThoughTheUserCopiedSomethingInBetween)
{
    const ForeignOwner source(session->display(), textOnly("first"));
    const PasteboardSnapshot saved = await(pasteboard->snapshot());
    pasteboard->clear();
    settle();
    const ForeignOwner other(session->display(), textOnly("copied during the translation"));
    pasteboard->restore(saved);
    settle();
    EXPECT_EQ(reader->fetchText(), "first");
}

TEST_F(X11PasteboardTest, aSlowPasteTargetStillGetsTheTranslationAndThenTheClipboardComesBack)
{
    const ForeignOwner source(session->display(), textOnly("mine"));
    const PasteboardSnapshot saved = await(pasteboard->snapshot());
    pasteInto(*reader, QStringLiteral("translation"));
    pasteboard->restore(saved);
    EXPECT_EQ(textAt(1000ms), "translation");
    EXPECT_EQ(textAt(200ms), "mine");
}

TEST_F(X11PasteboardTest, aTargetThatNeverFetchesHoldsUpTheClipboardForOneAndAHalfSecondsOnly)
{
    const ForeignOwner source(session->display(), textOnly("mine"));
    const PasteboardSnapshot saved = await(pasteboard->snapshot());
    const ForeignProgram target(session->display());
    pasteInto(target, QStringLiteral("translation"));
    pasteboard->restore(saved);
    EXPECT_EQ(textAt(1200ms), "translation");
    EXPECT_EQ(textAt(500ms), "mine");
}

TEST_F(X11PasteboardTest, aClipboardManagerThatFetchesFirstIsNotTheTarget)
{
    const ForeignOwner source(session->display(), textOnly("mine"));
    const PasteboardSnapshot saved = await(pasteboard->snapshot());
    const ForeignProgram target(session->display());
    pasteInto(target, QStringLiteral("translation"));
    EXPECT_EQ(reader->fetchText(), "translation"); // the manager
    pasteboard->restore(saved);
    QThread::msleep(300);
    EXPECT_EQ(target.fetchText(), "translation");
    QThread::msleep(200);
    EXPECT_EQ(target.fetchText(), "mine");
}

TEST_F(X11PasteboardTest, aTargetThatPrefetchesBeforeThePasteKeysHasNotPastedYet)
{
    const ForeignOwner source(session->display(), textOnly("mine"));
    const PasteboardSnapshot saved = await(pasteboard->snapshot());
    pasteboard->setString(QStringLiteral("translation"));
    settle();
    EXPECT_EQ(reader->fetchText(), "translation");
    exchange.pastePosted(reader->window());
    pasteboard->restore(saved);
    EXPECT_EQ(textAt(300ms), "translation");
}

TEST_F(X11PasteboardTest, anyFetchCountsIfTheTargetIsUnknown)
{
    const ForeignOwner source(session->display(), textOnly("mine"));
    const PasteboardSnapshot saved = await(pasteboard->snapshot());
    pasteboard->setString(QStringLiteral("translation"));
    settle();
    exchange.pastePosted(std::nullopt);
    EXPECT_EQ(reader->fetchText(), "translation");
    pasteboard->restore(saved);
    EXPECT_EQ(textAt(200ms), "mine");
}

TEST_F(X11PasteboardTest, readingTheListOfFormatsIsNotAPaste)
{
    const ForeignOwner source(session->display(), textOnly("mine"));
    const PasteboardSnapshot saved = await(pasteboard->snapshot());
    pasteInto(*reader, QStringLiteral("translation"));
    EXPECT_THAT(reader->fetchTargets(), Contains("UTF8_STRING"));
    pasteboard->restore(saved);
    EXPECT_EQ(textAt(300ms), "translation");
}

TEST_F(X11PasteboardTest, whatTheUserCopiesWhileTheTargetIsWaitedForStays)
{
    const ForeignOwner source(session->display(), textOnly("mine"));
    const PasteboardSnapshot saved = await(pasteboard->snapshot());
    const ForeignProgram target(session->display());
    pasteInto(target, QStringLiteral("translation"));
    pasteboard->restore(saved);
    settle();
    const ForeignOwner other(session->display(), textOnly("newer"));
    EXPECT_EQ(textAt(1700ms), "newer");
}

TEST_F(X11PasteboardTest, aClipboardManagerThatTakesTheTranslationOverServesItForAMoment)
{
    const ForeignOwner source(session->display(), textOnly("mine"));
    const PasteboardSnapshot saved = await(pasteboard->snapshot());
    const ForeignProgram target(session->display());
    pasteInto(target, QStringLiteral("translation"));
    const ForeignOwner manager(session->display(), textOnly("translation"));
    pasteboard->restore(saved);
    EXPECT_EQ(textAt(200ms), "translation");
    EXPECT_EQ(textAt(400ms), "mine");
}

TEST_F(X11PasteboardTest, aSecondRunSavesTheUsersClipboardAndNotTheTranslationStillServed)
{
    const ForeignOwner source(session->display(), textOnly("mine"));
    const PasteboardSnapshot saved = await(pasteboard->snapshot());
    const ForeignProgram target(session->display());
    pasteInto(target, QStringLiteral("translation"));
    pasteboard->restore(saved);
    EXPECT_EQ(await(pasteboard->snapshot()), saved);
}

TEST_F(X11PasteboardTest, programsThatWatchTheClipboardAreToldOfTheRestoredContent)
{
    const ForeignOwner source(session->display(), textOnly("mine"));
    const PasteboardSnapshot saved = await(pasteboard->snapshot());
    pasteInto(*reader, QStringLiteral("translation"));
    const auto stampOfText = reader->fetch("TIMESTAMP")->bytes;
    QThread::msleep(5);
    pasteboard->restore(saved);
    EXPECT_EQ(reader->fetchText(), "translation");
    QThread::msleep(200);
    EXPECT_NE(reader->fetch("TIMESTAMP")->bytes, stampOfText);
}

TEST_F(X11PasteboardTest, worksWithAnOrdinaryClipboardTool)
{
    session->start(QStringLiteral("xclip"),
                   {QStringLiteral("-quiet"), QStringLiteral("-selection"),
                    QStringLiteral("clipboard"), QStringLiteral("-t"), QStringLiteral("text/html"),
                    QStringLiteral("-i"),
                    session->writeFile(QStringLiteral("a.html"), "<p>é</p>")});
    ASSERT_TRUE(waitUntil([&] { return reader->fetchTargets().contains("text/html"); }));
    const PasteboardSnapshot saved = await(pasteboard->snapshot());
    EXPECT_EQ(saved.items[0].value(QStringLiteral("text/html")), "<p>é</p>");
    pasteboard->clear();
    pasteboard->restore(saved);
    settle();
    const auto pasted =
        session->run(QStringLiteral("xclip"),
                     {QStringLiteral("-selection"), QStringLiteral("clipboard"),
                      QStringLiteral("-t"), QStringLiteral("text/html"), QStringLiteral("-o")});
    EXPECT_EQ(pasted.output, "<p>é</p>");
}

TEST_F(X11PasteboardTest, theClipboardIsHandedToAClipboardManagerAtTheEnd)
{
    const ForeignOwner source(session->display(), textOnly("mine"));
    const PasteboardSnapshot saved = await(pasteboard->snapshot());
    pasteboard->clear();
    pasteboard->restore(saved);
    settle();

    QByteArray kept;
    std::jthread manager([&kept, display = session->display()] {
        const ForeignProgram program(display);
        xcb_set_selection_owner(program.connection(), program.window(),
                                program.atom("CLIPBOARD_MANAGER"), XCB_CURRENT_TIME);
        while (const auto event = program.nextEvent(3000ms)) {
            if ((event->response_type & 0x7f) != XCB_SELECTION_REQUEST) {
                continue;
            }
            const auto* request =
                reinterpret_cast<const xcb_selection_request_event_t*>(event.get());
            kept = program.fetchText();
            union {
                xcb_selection_notify_event_t notify;
                char wire[32];
            } answer{};
            answer.notify.response_type = XCB_SELECTION_NOTIFY;
            answer.notify.requestor = request->requestor;
            answer.notify.selection = request->selection;
            answer.notify.target = request->target;
            answer.notify.property = request->property;
            xcb_send_event(program.connection(), 0, request->requestor, 0, answer.wire);
            xcb_flush(program.connection());
            return;
        }
    });
    const xcb_atom_t managers = reader->atom("CLIPBOARD_MANAGER");
    ASSERT_TRUE(waitUntil([&] {
        const auto cookie = xcb_get_selection_owner(reader->connection(), managers);
        auto* reply = xcb_get_selection_owner_reply(reader->connection(), cookie, nullptr);
        const bool isThere = reply && reply->owner != XCB_WINDOW_NONE;
        std::free(reply);
        return isThere;
    }));
    pasteboard.reset();
    manager.join();
    EXPECT_EQ(kept, "mine");
}

TEST_F(X11PasteboardTest, aClipboardManagerThatDoesNotAnswerHoldsUpTheEndForASecondOnly)
{
    pasteboard->restore({{{{QStringLiteral("UTF8_STRING"), "mine"}}}});
    settle();
    const ForeignProgram manager(session->display());
    xcb_set_selection_owner(manager.connection(), manager.window(),
                            manager.atom("CLIPBOARD_MANAGER"), XCB_CURRENT_TIME);
    (void)manager.clipboardOwner();
    QElapsedTimer time;
    time.start();
    pasteboard.reset();
    EXPECT_THAT(time.elapsed(), AllOf(Ge(900), Lt(1500)));
}

TEST(X11PasteboardWithoutServer, sayWhatIsMissingAndWhatStillWorks)
{
    ClipboardExchange exchange;
    const auto opened = X11Pasteboard::open(exchange, ":59999");
    ASSERT_FALSE(opened);
    EXPECT_EQ(opened.error(),
              QStringLiteral("No X display can be opened, so hotkeys and replacing text in place "
                             "don't work here. The command line still does."));
}

TEST(X11PasteboardWithoutServer, saysThatTheClipboardExtensionIsMissing)
{
    const DesktopSession session(
        {.windowManager = false,
         .serverArguments = {QStringLiteral("-extension"), QStringLiteral("XFIXES")}});
    ClipboardExchange exchange;
    const auto opened = X11Pasteboard::open(exchange, session.display());
    ASSERT_FALSE(opened);
    EXPECT_TRUE(
        opened.error().startsWith(QStringLiteral("The X server lacks the extension XFixes")));
}

TEST(X11PasteboardWithoutServer, aServerThatEndsIsAFailureAndNotACrash)
{
    DesktopSession session({.windowManager = false});
    ClipboardExchange exchange;
    SystemClock clock;
    auto opened = X11Pasteboard::open(exchange, session.display());
    ASSERT_TRUE(opened);
    const auto pasteboard = std::move(*opened);
    pasteboard->setString(QStringLiteral("text"));
    await(exchange.settled(clock));

    session.killServer();
    EXPECT_THROW(await(pasteboard->snapshot()), PasteboardError);
    EXPECT_EQ(await(pasteboard->string()), std::nullopt);
    pasteboard->clear();
    pasteboard->setString(QStringLiteral("more"));
    pasteboard->restore({});
    await(exchange.settled(clock));
}

} // namespace
} // namespace zelvane::test
