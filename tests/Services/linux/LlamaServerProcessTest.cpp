#include "Services/LlamaServer.h"

#include "Services/EngineError.h"
#include "Services/linux/LinuxChildProcesses.h"
#include "Services/linux/PsProcessTable.h"
#include "foundation/SystemClock.h"
#include "http/NetworkHttpTransport.h"
#include "pipeline/TranslationError.h"
#include "support/Await.h"
#include "support/LoopbackHttpServer.h"
#include "support/llama/EngineFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QJsonArray>
#include <QJsonDocument>
#include <QTemporaryDir>

#include <csignal>

namespace zelvane::test {
namespace {

using namespace std::chrono_literals;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::SizeIs;
using Code = TranslationError::Code;

bool isAlive(qint32 pid)
{
    return ::kill(pid, 0) == 0;
}

/// A request for the translation of `text`.
QJsonObject requestFor(const QString& text)
{
    const QJsonObject message{{QStringLiteral("role"), QStringLiteral("user")},
                              {QStringLiteral("content"), text}};
    return {{QStringLiteral("messages"), QJsonArray{message}}};
}

/// The code of a failure for the user.
std::optional<Code> codeOf(QCoro::Task<QByteArray> task)
{
    try {
        (void)await(std::move(task));
    } catch (const TranslationError& error) {
        return error.code();
    }
    return std::nullopt;
}

/// The server as a process, with real sockets and signals.
class LlamaServerProcess : public ::testing::Test
{
protected:
    void ensure() { await(server->ensure(GpuLayers::all, {})); }
    QString translate(const QString& text)
    {
        const QByteArray body = await(server->completion(requestFor(text), {}));
        return QJsonDocument::fromJson(body)
            .object()[u"choices"][0][u"message"][u"content"]
            .toString();
    }
    /// How a start fails.
    QString failure()
    {
        try {
            ensure();
        } catch (const EngineError& error) {
            return QStringLiteral("%1: %2").arg(error.code()).arg(error.description());
        }
        return QStringLiteral("none");
    }
    qsizetype starts() const { return engine.recorded("start").size(); }

    QTemporaryDir root;
    EngineFolder engine{root.path(), QStringLiteral("lmt60-4b"), QStringLiteral("m.gguf"), 100};
    SystemClock clock;
    NetworkHttpTransport transport{clock};
    LinuxChildProcesses launcher;
    PsProcessTable table{launcher, clock};
    StraySweep sweep{table, clock};
    std::optional<quint16> port;
    std::unique_ptr<LlamaServer> server = std::make_unique<LlamaServer>(
        LlamaServerFiles{engine.server(), engine.runtime(), engine.model()},
        LlamaServer::Parts{launcher, transport, clock, sweep, [this] {
                               ServerAccess access = randomServerAccess();
                               access.port = port.value_or(access.port);
                               return access;
                           }});
};

TEST_F(LlamaServerProcess, StartsAnswersAndEnds)
{
    ensure();
    EXPECT_EQ(translate(QStringLiteral("Hello")), QStringLiteral("Hello"));
    const qint32 pid = server->pid().value();
    const QJsonObject start = QJsonDocument::fromJson(engine.recorded("start").at(0)).object();
    EXPECT_EQ(start.value(u"pid").toInt(), pid);
    EXPECT_EQ(start.value(u"folder").toString(), engine.runtime());
    EXPECT_EQ(start.value(u"libraryPath").toString(), engine.runtime());
    EXPECT_THAT(engine.recorded("request").last().toStdString(),
                HasSubstr("Bearer " + server->access()->key.toStdString()));
    server->stop();
    EXPECT_TRUE(waitUntil([&] { return !isAlive(pid); }));
    EXPECT_THAT(engine.recorded("end"), SizeIs(1)); // in order, not by force
}

TEST_F(LlamaServerProcess, WaitsWhileItLoads)
{
    engine.script(R"({"loadMs":600})");
    ensure();
    EXPECT_EQ(translate(QStringLiteral("Hello")), QStringLiteral("Hello"));
    EXPECT_EQ(starts(), 1);
}

TEST_F(LlamaServerProcess, LoadsOnTheProcessorWhatTheGraphicsCardCannotHold)
{
    engine.script(R"({"diesWithGpu":true})");
    ensure();
    ASSERT_EQ(starts(), 2);
    EXPECT_THAT(engine.recorded("start").at(0).toStdString(), HasSubstr(R"("-ngl","99")"));
    EXPECT_THAT(engine.recorded("start").at(1).toStdString(), HasSubstr(R"("-ngl","0")"));
    EXPECT_EQ(translate(QStringLiteral("Hello")), QStringLiteral("Hello"));
}

TEST_F(LlamaServerProcess, ABrokenModelFailsWithWhatTheServerSaid)
{
    ASSERT_TRUE(QFile::resize(engine.model(), 2));
    EXPECT_THAT(failure().toStdString(), ::testing::AllOf(::testing::StartsWith("20: "),
                                                          HasSubstr("failed to load model, '"),
                                                          EndsWith("model loading error")));
    EXPECT_EQ(starts(), 2);
}

TEST_F(LlamaServerProcess, ASomebodyElsesHealthOnThePortIsNotOurs)
{
    LoopbackHttpServer other;
    other.setHandler(
        [](const RecordedRequest&) { return Answer::json(200, R"({"status":"ok"})"); });
    port = other.port();
    EXPECT_THAT(failure().toStdString(), HasSubstr("couldn't bind HTTP server socket"));
    EXPECT_FALSE(server->isRunning());
}

TEST_F(LlamaServerProcess, AKilledServerIsReplaced)
{
    ensure();
    const auto access = server->access();
    ::kill(server->pid().value(), SIGKILL);
    EXPECT_TRUE(waitUntil([&] { return !server->isRunning(); }));
    EXPECT_THROW((void)translate(QStringLiteral("Hello")), TransportError);
    ensure();
    EXPECT_NE(server->access(), access);
    EXPECT_EQ(translate(QStringLiteral("Hello")), QStringLiteral("Hello"));
}

TEST_F(LlamaServerProcess, AServerThatDiesInMidAnswerFailsThatAnswer)
{
    engine.script(R"({"moods":["die"]})");
    ensure();
    EXPECT_THROW((void)translate(QStringLiteral("Hello")), TransportError);
    EXPECT_TRUE(waitUntil([&] { return !server->isRunning(); }));
}

TEST_F(LlamaServerProcess, AFloodOfLogDoesNotStallIt)
{
    engine.script(R"({"logFlood":300000})");
    ensure();
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(translate(QStringLiteral("Hello")), QStringLiteral("Hello"));
    }
    EXPECT_TRUE(waitUntil([&] { return server->log().size() == 20000; }));
}

TEST_F(LlamaServerProcess, StopsInTheMiddleOfARequest)
{
    engine.script(R"({"moods":["silence"]})");
    ensure();
    auto call = server->completion(requestFor(QStringLiteral("Hello")), {});
    ASSERT_TRUE(waitUntil([&] { return engine.recorded("request").last().contains("Hello"); }));
    const qint32 pid = server->pid().value();
    server->stop();
    EXPECT_EQ(codeOf(std::move(call)), Code::offlineEngineBusy);
    // The closed connection lets it end by itself.
    EXPECT_TRUE(waitUntil([&] { return !isAlive(pid); }));
    EXPECT_THAT(engine.recorded("end"), SizeIs(1));
}

TEST_F(LlamaServerProcess, KillsAServerThatDoesNotEnd)
{
    engine.script(R"({"ignoresTerminate":true})");
    ensure();
    const qint32 pid = server->pid().value();
    QElapsedTimer timer;
    timer.start();
    server->stop();
    EXPECT_TRUE(waitUntil([&] { return !isAlive(pid); }));
    EXPECT_GE(timer.elapsed(), 1990);
    EXPECT_THAT(engine.recorded("end"), SizeIs(0));
}

TEST_F(LlamaServerProcess, StopsWhileItLoads)
{
    engine.script(R"({"neverReady":true})");
    auto start = server->ensure(GpuLayers::all, {});
    ASSERT_TRUE(waitUntil([&] { return starts() == 1 && server->isRunning(); }));
    const qint32 pid = server->pid().value();
    server->stop();
    EXPECT_THROW(await(std::move(start)), TranslationError);
    EXPECT_TRUE(waitUntil([&] { return !isAlive(pid); }));
    EXPECT_EQ(starts(), 1);
}

TEST_F(LlamaServerProcess, GoesWithItsObjectAtOnce)
{
    engine.script(R"({"ignoresTerminate":true})");
    ensure();
    const qint32 pid = server->pid().value();
    QElapsedTimer timer;
    timer.start();
    server.reset();
    EXPECT_TRUE(waitUntil([&] { return !isAlive(pid); }));
    EXPECT_LT(timer.elapsed(), 1500);
}

TEST_F(LlamaServerProcess, EndsWhatAnEarlierRunLeft)
{
    LlamaServer earlier(LlamaServerFiles{engine.server(), engine.runtime(), engine.model()},
                        {launcher, transport, clock, sweep});
    await(earlier.ensure(GpuLayers::all, {}));
    const qint32 pid = earlier.pid().value();
    ensure();
    EXPECT_TRUE(waitUntil([&] { return !isAlive(pid); }));
    EXPECT_TRUE(server->isRunning());
}

} // namespace
} // namespace zelvane::test
