// Whole lives of installations: real HTTP, to a model of the service that keeps state.

#include "http/NetworkHttpTransport.h"
#include "online/HostedStartUp.h"
#include "online/hosted/HostedFixture.h"
#include "pipeline/TranslationDispatch.h"
#include "support/VirtualClock.h"
#include "support/provider/HostedModel.h"

#include <gmock/gmock.h>

#include <QTimer>

namespace zelvane::test {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using Code = CloudflareKeyError::Code;
using Kind = TransportError::Kind;

/// One run of the program, from its start to its end.
struct Program
{
    Program(Install& install, Clock& clock)
        : transport(clock)
        , settings(install.defaults, install.secrets, QStringLiteral("English (US)"))
        , trace(clock)
        , service(transport, install.defaults, install.secrets, install.machine,
                  {QStringLiteral("1.2.3"), QString()})
        , startUp(service, settings)
        , dispatch(settings, install.defaults, trace, {nullptr, &service, {}, nullptr})
    {
        trace.begin({});
    }

    void sync()
    {
        startUp.start();
        EXPECT_TRUE(waitUntil([&] { return !startUp.isRunning(); }));
    }
    QCoro::Task<QString> call(const QString& text = QStringLiteral("Hello"),
                              std::stop_token stop = {})
    {
        LanguagePair pair;
        pair.source = QStringLiteral("Any Language");
        pair.target = QStringLiteral("German");
        return dispatch.translateText(text, pair, std::move(stop));
    }
    /// The translation, or the text of the failure.
    QString translate(const QString& text = QStringLiteral("Hello"))
    {
        const auto outcome = outcomeOf(call(text));
        return outcome.value.value_or(outcome.text);
    }

    NetworkHttpTransport transport;
    AppSettings settings;
    TranslationTrace trace;
    HostedService service;
    HostedStartUp startUp;
    TranslationDispatch dispatch;
};

class HostedLife : public ::testing::Test
{
protected:
    HostedLife()
    {
        model.translator = [](const QString& text) { return QStringLiteral("de:") + text; };
        goOnline();
        for (Install* install : {&first, &second}) {
            install->defaults.setValue(QStringLiteral("zv.provider"), QStringLiteral("Zelvane"));
            install->defaults.setValue(QStringLiteral("zv.endpoint.Zelvane"),
                                       server->url().toString());
        }
        second.machine.id = "machine-2";
    }

    void goOffline()
    {
        port = server->port();
        server.reset();
    }
    void goOnline()
    {
        server.emplace(LoopbackHttpServer::Security::plain, port);
        ASSERT_TRUE(server->isListening());
        server->setHandler(
            [this](const RecordedRequest& request) { return model.answerTo(request); });
    }

    /// The operations that the server was asked for, such as "register".
    [[nodiscard]] QStringList asked() const
    {
        QStringList operations;
        for (const RecordedRequest& request : server->requests()) {
            operations += QString::fromLatin1(request.target().split('?').first().sliced(4));
        }
        return operations;
    }

    VirtualClock clock;
    HostedModel model{clock};
    quint16 port = 0;
    std::optional<LoopbackHttpServer> server;
    Install first;
    Install second;
};

const QString registering = QStringLiteral("register");
const QString bootstrapping = QStringLiteral("bootstrap");
const QString quotaAsking = QStringLiteral("quota");
const QString translating = QStringLiteral("translate");
const QString missingConfig =
    QStringLiteral("Cloudflare config is not loaded yet. Restart the app or refresh in Settings.");

TEST_F(HostedLife, aFirstStart)
{
    model.rules.model = QStringLiteral("m-2");
    Program program(first, clock);
    program.sync();
    EXPECT_EQ(program.settings.model(), QStringLiteral("m-2"));
    EXPECT_EQ(program.service.cachedQuota()->dayLimit, 200);
    EXPECT_EQ(program.translate(), QStringLiteral("de:Hello"));
    EXPECT_THAT(asked(), ElementsAre(registering, bootstrapping, quotaAsking, translating));
    EXPECT_EQ(program.service.cachedQuota()->dayUsed, 1);
    EXPECT_EQ(server->acceptedConnections(), 1);
    const RecordedRequest& request = server->requests().back();
    EXPECT_EQ(request.header("Authorization"), "Bearer " + first.token());
    EXPECT_THAT(request.body.toStdString(), ::testing::HasSubstr(R"("model":"m-2")"));
}

TEST_F(HostedLife, aLaterStartKeepsTheInstallation)
{
    Program(first, clock).sync();
    const QByteArray token = first.token();
    const QString id = first.id();
    Program program(first, clock);
    program.sync();
    EXPECT_EQ(program.translate(), QStringLiteral("de:Hello"));
    EXPECT_EQ(asked().count(registering), 1);
    EXPECT_EQ(first.token(), token);
    EXPECT_EQ(first.id(), id);
    EXPECT_EQ(model.installations().size(), 1);
}

TEST_F(HostedLife, aFirstStartOfflineThenOnline)
{
    goOffline();
    Program program(first, clock);
    program.sync();
    EXPECT_EQ(program.service.currentConfig().version, 0);
    EXPECT_EQ(program.settings.model(), QStringLiteral("gemini-3.1-flash-lite"));
    EXPECT_EQ(program.translate(), missingConfig);
    EXPECT_EQ(first.token(), "");

    goOnline();
    EXPECT_EQ(program.translate(), QStringLiteral("de:Hello"));
    EXPECT_THAT(asked(), ElementsAre(registering, bootstrapping, translating));
    EXPECT_EQ(program.service.currentConfig().version, 1);
}

TEST_F(HostedLife, aLaterStartOfflineThenOnline)
{
    model.rules.version = 4;
    Program(first, clock).sync();
    goOffline();
    Program program(first, clock);
    program.sync();
    EXPECT_EQ(program.service.currentConfig().version, 4);
    EXPECT_EQ(program.translate(), QStringLiteral("127.0.0.1 refuses the connection."));

    goOnline();
    EXPECT_EQ(program.translate(), QStringLiteral("de:Hello"));
    EXPECT_THAT(asked(), ElementsAre(translating));
}

TEST_F(HostedLife, aTokenThatIsRevokedInMidUse)
{
    Program program(first, clock);
    EXPECT_EQ(program.translate(), QStringLiteral("de:Hello"));
    const QString id = first.id();
    const QByteArray token = first.token();
    ASSERT_TRUE(model.revokeToken(id));
    EXPECT_EQ(program.translate(), QStringLiteral("de:Hello"));
    EXPECT_NE(first.id(), id);
    EXPECT_NE(first.token(), token);
    EXPECT_EQ(model.installations().size(), 2);
    EXPECT_THAT(asked(), ElementsAre(registering, bootstrapping, translating, translating,
                                     registering, translating));
    EXPECT_EQ(program.translate(), QStringLiteral("de:Hello"));
    EXPECT_EQ(asked().size(), 7);
}

TEST_F(HostedLife, aTokenThatIsRevokedUnderManyTranslations)
{
    Program program(first, clock);
    EXPECT_EQ(program.translate(), QStringLiteral("de:Hello"));
    ASSERT_TRUE(model.revokeToken(first.id()));
    std::vector<QCoro::Task<QString>> calls;
    for (int i = 0; i < 12; ++i) {
        calls.push_back(program.call(QString::number(i)));
    }
    for (int i = 0; i < 12; ++i) {
        EXPECT_EQ(await(std::move(calls[size_t(i)])), QStringLiteral("de:%1").arg(i));
    }
    EXPECT_EQ(asked().count(registering), 2);
    EXPECT_EQ(model.installations().size(), 2);
}

TEST_F(HostedLife, aServiceThatForgetsEverything)
{
    Program program(first, clock);
    EXPECT_EQ(program.translate(), QStringLiteral("de:Hello"));
    const QString id = first.id();
    ASSERT_TRUE(model.forget(id));
    EXPECT_EQ(program.translate(), QStringLiteral("de:Hello"));
    EXPECT_NE(first.id(), id);
    EXPECT_THAT(model.installations().keys(), ElementsAre(first.id()));
}

TEST_F(HostedLife, settingsThatAreCopiedWithoutTheKeyring)
{
    Program(first, clock).sync();
    second.defaults.setValue(QStringLiteral("zv.installId"), first.id());
    Program program(second, clock);
    EXPECT_EQ(program.translate(), QStringLiteral("de:Hello"));
    EXPECT_NE(second.id(), first.id());
    EXPECT_EQ(asked().count(registering), 3); // the second one met an id that was taken
    EXPECT_EQ(Program(first, clock).translate(), QStringLiteral("de:Hello"));
    EXPECT_EQ(model.installations().size(), 2);
}

TEST_F(HostedLife, aKeyringThatIsLockedAtOneStart)
{
    Program(first, clock).sync();
    first.backend.findStatus = SecretStatus::otherFailure;
    first.backend.addStatus = SecretStatus::otherFailure;
    Program program(first, clock);
    EXPECT_EQ(program.translate(), QStringLiteral("de:Hello"));
    EXPECT_EQ(program.translate(), QStringLiteral("de:Hello"));
    EXPECT_EQ(asked().count(registering), 3);
}

TEST_F(HostedLife, twoInstallationsWithQuotasOfTheirOwn)
{
    model.rules.dayLimit = 2;
    Program one(first, clock);
    Program two(second, clock);
    EXPECT_EQ(one.translate(), QStringLiteral("de:Hello"));
    EXPECT_EQ(two.translate(), QStringLiteral("de:Hello"));
    EXPECT_EQ(one.translate(), QStringLiteral("de:Hello"));
    EXPECT_EQ(one.service.cachedQuota()->dayRemaining, 0);
    EXPECT_EQ(two.service.cachedQuota()->dayRemaining, 1);
    // 03:04:05 by UTC
    EXPECT_EQ(one.translate(), QStringLiteral("Too many requests. Try again in 20 hour(s)."));
    EXPECT_EQ(two.translate(), QStringLiteral("de:Hello"));
    EXPECT_NE(first.id(), second.id());
    EXPECT_NE(model.installations().value(first.id()).device,
              model.installations().value(second.id()).device);
}

TEST_F(HostedLife, aBanOfOneInstallation)
{
    Program one(first, clock);
    Program two(second, clock);
    EXPECT_EQ(one.translate(), QStringLiteral("de:Hello"));
    EXPECT_EQ(two.translate(), QStringLiteral("de:Hello"));
    const QString id = first.id();
    ASSERT_TRUE(model.ban(id, QStringLiteral("too much of it")));
    EXPECT_EQ(one.translate(), QStringLiteral("This install is blocked: too much of it"));
    EXPECT_EQ(two.translate(), QStringLiteral("de:Hello"));

    Program later(first, clock);
    later.sync();
    EXPECT_EQ(later.translate(), QStringLiteral("This install is blocked: too much of it"));
    EXPECT_EQ(first.id(), id);
    EXPECT_EQ(asked().count(registering), 2);
    ASSERT_TRUE(model.unban(id));
    EXPECT_EQ(later.translate(), QStringLiteral("de:Hello"));
}

TEST_F(HostedLife, aMachineThatIsBlockedFromRegistering)
{
    Program program(first, clock);
    EXPECT_EQ(program.translate(), QStringLiteral("de:Hello"));
    const QString id = first.id();
    ASSERT_TRUE(model.banDevice(id, QString()));
    ASSERT_TRUE(model.revokeToken(id));
    EXPECT_EQ(program.translate(),
              QStringLiteral("This install is blocked from Cloudflare translations."));
    ASSERT_TRUE(model.unban(id));
    EXPECT_EQ(program.translate(), QStringLiteral("de:Hello"));
}

TEST_F(HostedLife, aLimitThatPasses)
{
    model.rules.minuteLimit = 1;
    using Hint = HostedRules::RetryHint;
    Program program(first, clock);
    EXPECT_EQ(program.translate(), QStringLiteral("de:Hello"));
    for (const auto& [hint, text] :
         {std::pair(Hint::camelCase, "Too many requests. Try again in 55 second(s)."),
          std::pair(Hint::snakeCase, "Too many requests. Try again in 55 second(s)."),
          std::pair(Hint::text, "Too many requests. Try again in 55 second(s)."),
          std::pair(Hint::header, "Too many requests. Try again in 55 second(s)."),
          std::pair(Hint::none, "Too many requests. Try again in 1 minute(s).")}) {
        model.rules.retryHint = hint;
        EXPECT_EQ(program.translate(), QString::fromLatin1(text));
    }
    EXPECT_EQ(asked().count(translating), 6); // nothing was repeated by itself
    clock.advance(55s);
    EXPECT_EQ(program.translate(), QStringLiteral("de:Hello"));
}

TEST_F(HostedLife, clocksThatJump)
{
    model.rules.minuteLimit = 1;
    Program program(first, clock);
    EXPECT_EQ(program.translate(), QStringLiteral("de:Hello"));
    EXPECT_EQ(program.service.cachedQuota()->dayBucket, QStringLiteral("2026-01-02"));
    clock.setStart(QDateTime(QDate(2031, 7, 1), QTime(0, 0), Qt::UTC));
    EXPECT_EQ(program.translate(), QStringLiteral("de:Hello"));
    EXPECT_EQ(program.service.cachedQuota()->dayBucket, QStringLiteral("2031-07-01"));
    clock.setStart(QDateTime(QDate(1999, 12, 31), QTime(23, 59), Qt::UTC));
    EXPECT_EQ(program.translate(), QStringLiteral("de:Hello"));
    EXPECT_EQ(program.service.cachedQuota()->dayBucket, QStringLiteral("1999-12-31"));
    EXPECT_EQ(program.service.cachedQuota()->dayUsed, 1);
    EXPECT_EQ(asked().count(registering), 1);
}

TEST_F(HostedLife, aConfigurationThatChanges)
{
    Program(first, clock).sync();
    model.rules.model = QStringLiteral("m-2");
    model.rules.version = 2;
    Program program(first, clock);
    EXPECT_EQ(program.translate(), QStringLiteral("de:Hello"));
    EXPECT_THAT(server->requests().back().body.toStdString(),
                ::testing::HasSubstr(R"("model":"gemini-3.1-flash-lite")"));
    program.sync();
    EXPECT_EQ(program.translate(), QStringLiteral("de:Hello"));
    EXPECT_THAT(server->requests().back().body.toStdString(),
                ::testing::HasSubstr(R"("model":"m-2")"));
    EXPECT_EQ(first.defaults.string(QStringLiteral("zv.model.Zelvane")), QStringLiteral("m-2"));
}

TEST_F(HostedLife, anAddressOfTheUsersOwn)
{
    LoopbackHttpServer own;
    HostedModel ownModel(clock, "own");
    own.setHandler([&](const RecordedRequest& request) { return ownModel.answerTo(request); });
    first.defaults.setValue(QStringLiteral("zv.cloudflareWorkerURL"),
                            QStringLiteral(" http://127.0.0.1:%1/ ").arg(own.port()));
    Program program(first, clock);
    program.sync();
    EXPECT_EQ(program.translate(), QStringLiteral("Hello"));
    EXPECT_THAT(asked(), ::testing::IsEmpty());
    EXPECT_EQ(own.requests().size(), 4U);
}

TEST_F(HostedLife, theTraceTellsTheConfigurationAndNoSecret)
{
    Program program(first, clock);
    EXPECT_EQ(program.translate(QStringLiteral("a private text")),
              QStringLiteral("de:a private text"));
    EXPECT_EQ(program.trace.report(),
              QStringLiteral("Zelvane · translation timing\n"
                             "generated: 2026-01-02T03:04:05Z\n"
                             "model: gemini-3.1-flash-lite\n"
                             "provider: Zelvane\n"
                             "source: Any Language\n"
                             "target: German\n"
                             "\n"
                             "timeline (ms from start):\n"
                             "       0  start\n"
                             "       0  request ready · Zelvane / gemini-3.1-flash-lite\n"
                             "       0  cloudflare config · v1 · gemini-3.1-flash-lite · proxy\n"
                             "\n"
                             "durations:\n"
                             "  app before API: 0 ms\n"
                             "  API / model: 0 ms\n"
                             "  app after API: 0 ms\n"
                             "  total: 0 ms\n"
                             "\n"
                             "verdict: time is split between the app and the AI request"));
}

// A network that misbehaves.

class HostedOnTheWire : public HostedLife
{
protected:
    HostedOnTheWire() { EXPECT_EQ(program.translate(), QStringLiteral("de:Hello")); }

    HostedOutcome<QString> outcome() { return outcomeOf(program.call()); }

    Program program{first, clock};
};

TEST_F(HostedOnTheWire, theTokenGoesToNoOtherHost)
{
    for (const int status : {301, 302, 303, 307, 308}) {
        LoopbackHttpServer other;
        server->enqueue(Answer().send(
            httpMessage(status, "", {{"Location", other.url(QStringLiteral("/x")).toEncoded()}})));
        EXPECT_EQ(program.translate(), QStringLiteral("Cloudflare error %1: ").arg(status));
        EXPECT_EQ(other.acceptedConnections(), 0);
    }
    EXPECT_EQ(asked().count(registering), 1);
}

TEST_F(HostedOnTheWire, aProxysPageIsNoTranslation)
{
    server->enqueue(Answer().send(
        httpMessage(200, "<html>Please log in</html>", {{"Content-Type", "text/html"}})));
    EXPECT_EQ(program.translate(),
              QStringLiteral("The answer is not JSON: illegal value at byte 1."));
    server->enqueue(Answer().send(
        httpMessage(502, "<html>" + QByteArray(300, 'x'), {{"Content-Type", "text/html"}})));
    EXPECT_EQ(program.translate(),
              QStringLiteral("Cloudflare error 502: <html>") + QString(194, u'x') + u'…');
}

TEST_F(HostedOnTheWire, answersThatBreakOffAreFailures)
{
    server->enqueue(Answer().send(httpMessage(200, R"({"text":"Hallo"})").chopped(5)).close());
    EXPECT_EQ(outcome().transport, Kind::truncated);
    server->setHandler([](const RecordedRequest&) { return Answer().close(); });
    EXPECT_EQ(outcome().transport, Kind::connection);
}

TEST_F(HostedOnTheWire, emptyPackedAndEndlessAnswersAreFailures)
{
    server->enqueue(Answer::json(200, ""));
    EXPECT_TRUE(outcome().json);
    server->enqueue(Answer().send(
        httpMessage(200, gzipped(R"({"text":"Hallo"})"), {{"Content-Encoding", "gzip"}})));
    EXPECT_EQ(program.translate(),
              QStringLiteral("The answer of 127.0.0.1 is packed and can't be read."));
    server->enqueue(Answer().send("HTTP/1.1 200 OK\r\n\r\n").flood(hugeBody).close());
    EXPECT_EQ(outcome().transport, Kind::tooLarge);
    EXPECT_LT(server->floodedBytes(), hugeBody / 2);
}

/// Ends with the kind of the transport's failure.
QCoro::Task<void> note(QCoro::Task<QString> call, std::optional<Kind>* kind)
{
    try {
        co_await call;
    } catch (const TransportError& error) {
        *kind = error.kind();
    }
}

TEST_F(HostedOnTheWire, aTranslationMaySilentlyTakeThreeMinutes)
{
    server->enqueue(Answer().hold());
    std::optional<Kind> kind;
    note(program.call(), &kind);
    ASSERT_TRUE(waitUntil([&] { return server->heldAnswers() == 1; }));
    clock.advance(179'999ms);
    EXPECT_EQ(kind, std::nullopt);
    clock.advance(1ms);
    EXPECT_EQ(kind, Kind::timeout);
    EXPECT_EQ(clock.pendingTimers(), 0);
}

TEST_F(HostedOnTheWire, everyOtherCallHalfAMinute)
{
    ASSERT_TRUE(model.revokeToken(first.id()));
    int number = 0;
    server->setHandler([&](const RecordedRequest& request) {
        return ++number == 2 ? Answer().hold() : model.answerTo(request);
    });
    std::optional<Kind> kind;
    note(program.call(), &kind);
    ASSERT_TRUE(waitUntil([&] { return server->heldAnswers() == 1; }));
    EXPECT_EQ(asked().last(), registering);
    clock.advance(29'999ms);
    EXPECT_EQ(kind, std::nullopt);
    clock.advance(1ms);
    EXPECT_EQ(kind, Kind::timeout);
    EXPECT_EQ(clock.pendingTimers(), 0);
}

TEST_F(HostedOnTheWire, aCancelledTranslationEndsOnTheWire)
{
    server->enqueue(Answer().hold());
    std::stop_source stop;
    auto call = program.call(QStringLiteral("Hello"), stop.get_token());
    ASSERT_TRUE(waitUntil([&] { return server->heldAnswers() == 1; }));
    stop.request_stop();
    EXPECT_TRUE(outcomeOf(std::move(call)).cancelled);
    EXPECT_TRUE(waitUntil([&] { return server->openConnections() == 0; }));
    EXPECT_EQ(clock.pendingTimers(), 0);
    EXPECT_EQ(program.translate(), QStringLiteral("de:Hello"));
}

TEST_F(HostedLife, aCancelledRegistrationEndsOnTheWireAndIsMadeUpForLater)
{
    server->enqueue(Answer().hold());
    Program program(first, clock);
    std::stop_source stop;
    auto call = program.call(QStringLiteral("Hello"), stop.get_token());
    ASSERT_TRUE(waitUntil([&] { return server->heldAnswers() == 1; }));
    stop.request_stop();
    EXPECT_TRUE(outcomeOf(std::move(call)).cancelled);
    EXPECT_TRUE(waitUntil([&] { return server->openConnections() == 0; }));
    EXPECT_EQ(program.translate(), QStringLiteral("de:Hello"));
    EXPECT_EQ(asked().count(registering), 2);
}

TEST_F(HostedLife, aCancelledTranslationLeavesTheOthersTheirRegistration)
{
    server->enqueue(
        Answer().hold().send(httpMessage(200, R"({"installToken":"from the first answer"})")));
    Program program(first, clock);
    std::stop_source stop;
    auto cancelled = program.call(QStringLiteral("one"), stop.get_token());
    auto other = program.call(QStringLiteral("two"));
    ASSERT_TRUE(waitUntil([&] { return server->heldAnswers() == 1; }));
    stop.request_stop();
    EXPECT_TRUE(outcomeOf(std::move(cancelled)).cancelled);
    server->release();
    // The model never gave that token, and so it wants a new registration.
    EXPECT_EQ(await(std::move(other)), QStringLiteral("de:two"));
    EXPECT_EQ(server->requests()[1].header("Authorization"), "Bearer from the first answer");
    EXPECT_EQ(asked().count(registering), 2);
}

TEST_F(HostedLife, twoHundredTranslationsAtOnceAtTheFirstUse)
{
    model.rules.minuteLimit = 1000;
    model.rules.dayLimit = 1000;
    Program program(first, clock);
    std::vector<qint64> lags; // in microseconds, beyond the tick
    QElapsedTimer sinceTick;
    QTimer tick;
    tick.setTimerType(Qt::PreciseTimer);
    QObject::connect(&tick, &QTimer::timeout, &tick, [&] {
        lags.push_back(sinceTick.nsecsElapsed() / 1000 - 1000);
        sinceTick.start();
    });
    sinceTick.start();
    tick.start(1ms);
    std::vector<QCoro::Task<QString>> calls;
    for (int i = 0; i < 200; ++i) {
        calls.push_back(program.call(QString::number(i)));
    }
    for (int i = 0; i < 200; ++i) {
        EXPECT_EQ(await(std::move(calls[size_t(i)])), QStringLiteral("de:%1").arg(i));
    }
    tick.stop();
    EXPECT_EQ(asked().count(registering), 1);
    EXPECT_EQ(asked().count(bootstrapping), 1);
    EXPECT_EQ(asked().count(translating), 200);
    EXPECT_EQ(program.service.cachedQuota()->dayUsed, 200);
    EXPECT_EQ(clock.pendingTimers(), 0);
    ASSERT_FALSE(lags.empty());
    std::ranges::nth_element(lags, lags.begin() + std::ssize(lags) / 2);
    EXPECT_LT(lags[lags.size() / 2], 20'000);
}

} // namespace
} // namespace zelvane::test
