#include "desktop/ServicesProvider.h"

#include "desktop/FakeDesktop.h"
#include "desktop/HeldEngine.h"
#include "pipeline/TranslationError.h"
#include "support/Await.h"
#include "support/FakeSecretBackend.h"
#include "support/VirtualClock.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace zelvane::test {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class TestPasteboard final : public ServicePasteboard
{
public:
    [[nodiscard]] std::optional<QString> string() const override { return content; }
    void clearContents() override { log << QStringLiteral("clear"); }
    void setString(const QString& text) override
    {
        content = text;
        log << QStringLiteral("set");
    }

    std::optional<QString> content;
    QStringList log;
};

class Services : public ::testing::Test
{
protected:
    Services() { settings.setPairs({pair("Any Language", "German"), pair("German", "French")}); }

    static OverlayUserDefaults& seeded(OverlayUserDefaults& empty)
    {
        empty.setValue(QStringLiteral("zv.provider"), QStringLiteral("Smart Offline"));
        return empty;
    }
    static LanguagePair pair(const char* source, const char* target)
    {
        LanguagePair made;
        made.id = QUuid::createUuid();
        made.source = QString::fromUtf8(source);
        made.target = QString::fromUtf8(target);
        return made;
    }
    [[nodiscard]] TranslationDispatch::Engines engines()
    {
        return {nullptr,
                nullptr,
                {{AIProvider::smartOffline, &engine}, {AIProvider::deepL, &engine}},
                nullptr};
    }

    /// Calls an entry on a thread of its own, while the main thread's event loop runs.
    ServicesProvider::Failure call(ServicesProvider::Entry entry, const char* text)
    {
        pasteboard.content = QString::fromUtf8(text);
        return call(entry);
    }
    ServicesProvider::Failure call(ServicesProvider::Entry entry)
    {
        ServicesProvider::Failure failure;
        std::atomic<bool> ended = false;
        const std::jthread caller([&] {
            failure = (provider.*entry)(pasteboard);
            ended = true;
        });
        EXPECT_TRUE(waitUntil([&] { return ended.load(); }));
        QCoreApplication::sendPostedEvents();
        return failure;
    }

    void expectUntouched() { EXPECT_THAT(pasteboard.log, IsEmpty()); }

    QStringList log;
    VirtualClock clock;
    OverlayUserDefaults defaults;
    FakeSecretBackend backend;
    SecretStore secrets{seeded(defaults), backend};
    AppSettings settings{defaults, secrets, QStringLiteral("English (US)")};
    TranslationTrace trace{clock};
    HeldEngine engine;
    TranslationDispatch dispatch{settings, defaults, trace, engines()};
    FakeWindows windows{log};
    QList<std::chrono::milliseconds> limits;
    /// Whether the wait for a translation ends without one.
    std::atomic<bool> outOfTime = false;
    ServicesProvider provider{{settings, dispatch, trace, windows},
                              [this](std::binary_semaphore& end, std::chrono::milliseconds limit) {
                                  limits << limit;
                                  const bool waitsForTheTranslation = limits.size() % 3 == 0;
                                  return !(outOfTime && waitsForTheTranslation) &&
                                         end.try_acquire_for(5s);
                              }};
    TestPasteboard pasteboard;
};

TEST_F(Services, thePlainFormPutsTheTranslationOnThePasteboardAndOpensNothing)
{
    EXPECT_EQ(call(&ServicesProvider::translatePair1, "hello world"), std::nullopt);
    EXPECT_EQ(pasteboard.content, QStringLiteral("Hallo Welt"));
    EXPECT_THAT(pasteboard.log, ElementsAre(QStringLiteral("clear"), QStringLiteral("set")));
    EXPECT_THAT(log, IsEmpty());
    ASSERT_EQ(engine.requests.size(), 1);
    EXPECT_EQ(engine.requests.first().text, QStringLiteral("hello world"));
    EXPECT_EQ(engine.requests.first().targetLanguage, QStringLiteral("German"));
}

TEST_F(Services, eachEntryHasItsSlotAndItsForm)
{
    settings.setPairs({pair("Any Language", "German"), pair("Any Language", "French"),
                       pair("Any Language", "Spanish")});
    const std::pair<ServicesProvider::Entry, const char*> table[] = {
        {&ServicesProvider::translatePair1, "German"},
        {&ServicesProvider::translatePair2, "French"},
        {&ServicesProvider::translatePair3, "Spanish"},
        {&ServicesProvider::translatePair1UI, "German"},
        {&ServicesProvider::translatePair2UI, "French"},
        {&ServicesProvider::translatePair3UI, "Spanish"},
    };
    int popups = 0;
    for (const auto& [entry, target] : table) {
        EXPECT_EQ(call(entry, "hello"), std::nullopt);
        EXPECT_EQ(engine.requests.last().targetLanguage, QString::fromUtf8(target));
        popups += engine.requests.size() > 3 ? 1 : 0;
        EXPECT_EQ(log.size(), popups);
    }
}

TEST_F(Services, thePopupGetsTheTextAsItCameAndTheReport)
{
    EXPECT_EQ(call(&ServicesProvider::translatePair1UI, "  hello world\n"), std::nullopt);
    EXPECT_EQ(engine.requests.first().text, QStringLiteral("hello world"));
    EXPECT_THAT(log, ElementsAre(QStringLiteral("popup   hello world\n | Hallo Welt")));
    const std::string report = windows.lastDiagnostics.toStdString();
    for (const char* fact : {"mode: services", "provider: Smart Offline", "source: Any Language",
                             "target: German", "chars: 14", "API begin", "API end · 10 chars"}) {
        EXPECT_THAT(report, HasSubstr(fact));
    }
}

TEST_F(Services, aThirdSlotBehindTwoPairsIsNotConfigured)
{
    EXPECT_EQ(call(&ServicesProvider::translatePair3, "hello"),
              QStringLiteral("Language pair slot 3 is not configured."));
    EXPECT_EQ(call(&ServicesProvider::translatePair3UI, "hello"),
              QStringLiteral("Language pair slot 3 is not configured."));
    expectUntouched();
    EXPECT_THAT(log, IsEmpty());
    EXPECT_TRUE(engine.requests.isEmpty());
}

TEST_F(Services, aDisabledPairKeepsItsSlot)
{
    LanguagePair off = pair("English (US)", "Hindi");
    off.enabled = false;
    settings.setPairs({off, pair("German", "French")});
    EXPECT_EQ(call(&ServicesProvider::translatePair1, "hello"),
              QStringLiteral("Language pair English (US) → Hindi is disabled in Settings."));
    expectUntouched();
    EXPECT_EQ(call(&ServicesProvider::translatePair2, "hello"), std::nullopt);
    EXPECT_EQ(engine.requests.last().targetLanguage, QStringLiteral("French"));
}

TEST_F(Services, aBlankTextFailsAndTouchesNothing)
{
    for (const char* blank : {"", " \n\t "}) {
        EXPECT_EQ(call(&ServicesProvider::translatePair1, blank),
                  QStringLiteral("No text selected."));
    }
    pasteboard.content.reset();
    EXPECT_EQ(call(&ServicesProvider::translatePair1), QStringLiteral("No text selected."));
    expectUntouched();
}

TEST_F(Services, aMissingKeyIsTheFailureOfTheRequest)
{
    settings.setProvider(AIProvider::deepL);
    EXPECT_EQ(call(&ServicesProvider::translatePair1, "hello"),
              TranslationError(TranslationError::Code::missingAPIKey).description());
    expectUntouched();
}

TEST_F(Services, theEnginesFailureIsTold)
{
    engine.failure =
        std::make_exception_ptr(TranslationError(TranslationError::Code::offlineEngineBusy));
    EXPECT_EQ(call(&ServicesProvider::translatePair1UI, "hello"),
              TranslationError(TranslationError::Code::offlineEngineBusy).description());
    expectUntouched();
    EXPECT_THAT(log, IsEmpty());
    EXPECT_THAT(trace.report().toStdString(), HasSubstr("error · "));
}

TEST_F(Services, waitsSixtySecondsForTheTranslation)
{
    EXPECT_EQ(call(&ServicesProvider::translatePair1, "hello"), std::nullopt);
    EXPECT_THAT(limits, ElementsAre(60s, 60s, 60s));
}

TEST_F(Services, aTranslationThatTakesLongerFailsAndItsResultChangesNothing)
{
    engine.answer.reset();
    outOfTime = true;
    EXPECT_EQ(call(&ServicesProvider::translatePair1UI, "hello"),
              QStringLiteral("Translation timed out after 60 seconds."));
    engine.finishAll(QStringLiteral("late"));
    QCoreApplication::sendPostedEvents();
    expectUntouched();
    EXPECT_EQ(pasteboard.content, QStringLiteral("hello"));
    EXPECT_THAT(log, IsEmpty());
    EXPECT_THAT(trace.report().toStdString(), HasSubstr("API end · 4 chars"));
}

TEST_F(Services, theInterfaceStaysFreeDuringTheWait)
{
    engine.answer.reset();
    int turns = 0;
    QTimer heartbeat;
    QObject::connect(&heartbeat, &QTimer::timeout, &heartbeat, [&] {
        if (++turns == 3) {
            engine.finishAll(QStringLiteral("Hallo Welt"));
        }
    });
    heartbeat.start(5);
    EXPECT_EQ(call(&ServicesProvider::translatePair1, "hello"), std::nullopt);
    EXPECT_GE(turns, 3);
}

TEST_F(Services, manyCallsAtOnceEachGetTheirOwn)
{
    constexpr int calls = 8;
    std::atomic<int> done = 0;
    std::atomic<int> failures = 0;
    std::vector<std::jthread> callers;
    ServicesProvider own({settings, dispatch, trace, windows});
    for (int i = 0; i < calls; ++i) {
        callers.emplace_back([&] {
            TestPasteboard board;
            board.content = QStringLiteral("hello");
            failures += own.translatePair1(board) ? 1 : 0;
            failures += board.content == QStringLiteral("Hallo Welt") ? 0 : 1;
            ++done;
        });
    }
    EXPECT_TRUE(waitUntil([&] { return done == calls; }));
    EXPECT_EQ(failures, 0);
}

TEST_F(Services, onTheMainThreadItWorksForAnEngineThatNeedsNoTurnOfItsOwn)
{
    pasteboard.content = QStringLiteral("hello");
    EXPECT_EQ(provider.translatePair1(pasteboard), std::nullopt);
    EXPECT_EQ(pasteboard.content, QStringLiteral("Hallo Welt"));
}

TEST_F(Services, onTheMainThreadAnEngineThatNeedsItRunsIntoTheTimeLimit)
{
    engine.answer.reset();
    QMetaObject::invokeMethod(
        qApp, [this] { engine.finishAll(QStringLiteral("late")); }, Qt::QueuedConnection);
    ServicesProvider own({settings, dispatch, trace, windows},
                         [](std::binary_semaphore& end, std::chrono::milliseconds) {
                             return end.try_acquire_for(50ms);
                         });
    pasteboard.content = QStringLiteral("hello");
    EXPECT_EQ(own.translatePair1(pasteboard),
              QStringLiteral("Translation timed out after 60 seconds."));
    QCoreApplication::sendPostedEvents();
    expectUntouched();
}

TEST_F(Services, closingEndsACallUnderWay)
{
    engine.answer.reset();
    ServicesProvider::Failure failure;
    std::atomic<bool> ended = false;
    ServicesProvider own({settings, dispatch, trace, windows});
    pasteboard.content = QStringLiteral("hello");
    const std::jthread caller([&] {
        failure = own.translatePair1(pasteboard);
        ended = true;
    });
    ASSERT_TRUE(waitUntil([&] { return !engine.requests.isEmpty(); }));
    own.close();
    EXPECT_TRUE(waitUntil([&] { return ended.load(); }));
    EXPECT_EQ(failure, CancellationError().description());
    expectUntouched();
}

TEST_F(Services, closingEndsACallThatTheMainThreadHasNotHeardOfYet)
{
    ServicesProvider::Failure failure;
    ServicesProvider own({settings, dispatch, trace, windows});
    pasteboard.content = QStringLiteral("hello");
    std::jthread caller([&] { failure = own.translatePair1(pasteboard); });
    own.close(); // without a turn of the event loop
    caller.join();
    EXPECT_EQ(failure, CancellationError().description());
    EXPECT_TRUE(engine.requests.isEmpty());
}

} // namespace
} // namespace zelvane::test
