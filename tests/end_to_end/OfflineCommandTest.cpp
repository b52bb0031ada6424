// The program's own binary with an engine in its profile whose server is the stand-in.

#include "end_to_end/CommandFixture.h"
#include "support/Processes.h"
#include "support/llama/EngineFolder.h"

#include <gmock/gmock.h>

#include <QJsonDocument>
#include <QJsonObject>

#include <csignal>

namespace zelvane::test {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;

class OfflineCommand : public Commands
{
protected:
    OfflineCommand() { engine.script(R"({"prefix":"de: "})"); }

    /// The process identifiers of all servers that were started.
    QList<int> servers() const
    {
        QList<int> pids;
        for (const QByteArray& line : engine.recorded("start")) {
            pids += QJsonDocument::fromJson(line).object().value(u"pid").toInt();
        }
        return pids;
    }
    bool allServersAreGone() const
    {
        return waitUntil([this] {
            const QList<int> pids = servers();
            return std::ranges::none_of(pids, [](int pid) { return isProcessRunning(pid); });
        });
    }

    EngineFolder engine{home.filePath(QStringLiteral("profile/data/org.zelvane.desk")),
                        QStringLiteral("lmt60-4b"), QStringLiteral("LMT-60-4B.Q4_K_M.gguf"),
                        2'716'068'544};
};

TEST_F(OfflineCommand, translatesWithAnInstalledEngine)
{
    engine.writeReady();
    const Ended ended =
        run({"translate", "--engine", "FastOffline", "--to", "German", "Good morning"});
    EXPECT_EQ(ended.errors, "");
    EXPECT_EQ(ended.output, "de: Good morning\n");
    EXPECT_EQ(ended.status, 0);
    EXPECT_THAT(servers(), SizeIs(1));
    EXPECT_TRUE(allServersAreGone());
    EXPECT_THAT(provider.requests(), IsEmpty());
}

TEST_F(OfflineCommand, translatesTheStringsOfADocumentAndLeavesTheRest)
{
    engine.writeReady();
    const Ended ended =
        run({"translate", "--engine", "FastOffline", "--to", "German"},
            R"({"title":"Good morning","id":"abc","size":1.0,"list":["See you later",1e400]})");
    EXPECT_EQ(ended.output, R"({"title":"de: Good morning","id":"abc","size":1.0,)"
                            R"("list":["de: See you later",1e400]})"
                            "\n");
}

TEST_F(OfflineCommand, keepsTheLinesOfALongText)
{
    engine.writeReady();
    QByteArray text;
    std::string expected;
    for (int i = 1; i <= 40; ++i) {
        const QByteArray line =
            "line number " + QByteArray::number(i) + (i % 7 == 0 ? "\n\n" : "\n");
        text += line;
        expected += "de: " + line.toStdString();
    }
    const Ended ended = run({"translate", "--engine", "FastOffline", "--to", "German"}, text);
    EXPECT_EQ(ended.output, expected);
    EXPECT_THAT(servers(), SizeIs(1));
}

TEST_F(OfflineCommand, saysThatAnEngineIsNotInstalled)
{
    const Ended ended = run({"translate", "--engine", "FastOffline", "--to", "German", "Hello"});
    EXPECT_EQ(ended.status, 1);
    EXPECT_EQ(ended.errors, "zelvane-desk: the engine Fast Offline is not installed; choose "
                            "another one with --engine NAME\n");
    EXPECT_THAT(servers(), IsEmpty());
}

TEST_F(OfflineCommand, saysWhatTheServerSaidIfTheModelCannotBeLoaded)
{
    engine.writeReady();
    engine.script(R"({"diesLoading":true})");
    const Ended ended = run({"translate", "--engine", "FastOffline", "--to", "German", "Hello"});
    EXPECT_EQ(ended.status, 1);
    EXPECT_THAT(ended.errors, HasSubstr("out of memory"));
    EXPECT_THAT(servers(), SizeIs(2)); // the second without the graphics card
}

TEST_F(OfflineCommand, anInterruptionTakesTheServerAlong)
{
    engine.writeReady();
    engine.script(R"({"moods":["silence"]})");
    const auto process =
        start({"translate", "--engine", "FastOffline", "--to", "German", "Hello there"});
    ASSERT_TRUE(waitUntil([&] {
        return !engine.recorded("request").isEmpty() &&
               engine.recorded("request").last().contains("Hello");
    }));
    ::kill(pid_t(process->processId()), SIGINT);
    EXPECT_EQ(end(*process).status, 130);
    EXPECT_TRUE(allServersAreGone());
}

TEST_F(OfflineCommand, aKilledProgramTakesTheServerAlong)
{
    engine.writeReady();
    engine.script(R"({"moods":["silence"],"ignoresTerminate":true})");
    const auto process =
        start({"translate", "--engine", "FastOffline", "--to", "German", "Hello there"});
    ASSERT_TRUE(waitUntil([&] {
        return !engine.recorded("request").isEmpty() &&
               engine.recorded("request").last().contains("Hello");
    }));
    process->kill();
    end(*process);
    EXPECT_TRUE(allServersAreGone());
}

} // namespace
} // namespace zelvane::test
