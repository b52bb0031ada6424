// What the stand-in for the server can be told to do.

#include "LlamaServerFixture.h"
#include "Services/EngineError.h"
#include "pipeline/TranslationError.h"
#include "support/llama/EngineFolder.h"

#include <gmock/gmock.h>

#include <QElapsedTimer>
#include <QTemporaryDir>

namespace zelvane::test {
namespace {

using namespace std::chrono_literals;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::SizeIs;

class LlamaServerProcess : public LlamaServerFixture
{
protected:
    void ensure() { await(server->ensure(GpuLayers::all, {})); }
    QString translate(const QString& text)
    {
        const QByteArray body = await(server->completion(requestFor(text), {}));
        return messageIn(body)[u"content"].toString();
    }
    qsizetype starts() const { return engine.recorded("start").size(); }

    QTemporaryDir root;
    EngineFolder engine{root.path(), QStringLiteral("lmt60-4b"), QStringLiteral("m.gguf"), 100};
    std::unique_ptr<LlamaServer> server =
        makeServer({engine.server(), engine.runtime(), engine.model()});
};

TEST_F(LlamaServerProcess, StartsInItsFolderAndEndsInOrder)
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
    EXPECT_THAT(engine.recorded("end"), SizeIs(1)); // not by force
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

TEST_F(LlamaServerProcess, ARequestThatIsCutLetsItEndByItself)
{
    engine.script(R"({"moods":["silence"]})");
    ensure();
    auto call = server->completion(requestFor(QStringLiteral("Hello")), {});
    ASSERT_TRUE(waitUntil([&] { return engine.recorded("request").last().contains("Hello"); }));
    const qint32 pid = server->pid().value();
    server->stop();
    EXPECT_THROW((void)await(std::move(call)), TranslationError);
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

TEST_F(LlamaServerProcess, AStubbornServerGoesWithItsObjectAtOnce)
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

} // namespace
} // namespace zelvane::test
