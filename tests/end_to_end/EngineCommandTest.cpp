// The program's own binary, laid out as packaging does, with a file host on loopback.

#include "end_to_end/CommandFixture.h"
#include "end_to_end/InstalledProgram.h"

#include <gmock/gmock.h>

#include <csignal>

namespace zelvane::test {
namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::StartsWith;

class EngineCommand : public Commands
{
protected:
    EngineCommand()
    {
        program = layOutProgram(home.filePath(QStringLiteral("prefix")));
        provider.setHandler([](const RecordedRequest&) { return beginningOfModel(); });
        run({"defaults", "write", "zv.endpoint.modelFiles",
             provider.url().toString().toUtf8().constData()});
    }

    [[nodiscard]] QString engine(const char* inside = "") const { return files.path(inside); }
    [[nodiscard]] QStringList engines() const { return files.engines(); }
    void putModel() const { files.putModel(); }
    [[nodiscard]] bool waitForPartial() const
    {
        return waitUntil([&] { return files.partialSize() == 300'000; });
    }

    FastEngineFiles files{home.filePath(QStringLiteral("profile"))};
};

TEST_F(EngineCommand, installsListsAndDeletes)
{
    putModel();
    const Ended install = run({"engine", "install", "fast"});
    EXPECT_EQ(install.status, 0) << install.errors;
    EXPECT_EQ(install.errors, "Unpacking llama.cpp…\n");
    EXPECT_THAT(install.output, StartsWith("fast\tFast Offline\tinstalled\t2716068"));
    EXPECT_THAT(run({"engine", "list"}).output, EndsWith(install.output));
    EXPECT_EQ(run({"engine", "status", "Fast Offline"}).status, 0);
    EXPECT_TRUE(QFileInfo(engine("runtime/llama-b10437/link")).isSymLink());
    EXPECT_EQ(QFileInfo(engine("runtime/llama-b10437/llama-server")).permissions() &
                  QFile::ExeOther,
              QFile::ExeOther);
    EXPECT_TRUE(provider.requests().empty());

    EXPECT_EQ(run({"engine", "delete", "fast"}).status, 0);
    EXPECT_EQ(engines(), QStringList());
    EXPECT_EQ(run({"engine", "status", "fast"}).status, 1);
}

TEST_F(EngineCommand, anInterruptionLeavesNothing)
{
    const auto process = start({"engine", "install", "fast"});
    ASSERT_TRUE(waitForPartial());
    ::kill(pid_t(process->processId()), SIGINT);
    const Ended ended = end(*process);
    EXPECT_EQ(ended.status, 130);
    EXPECT_EQ(ended.output, "");
    EXPECT_EQ(ended.errors, "Unpacking llama.cpp…\nDownloading LMT-60 model…\n");
    EXPECT_EQ(engines(), QStringList());
    EXPECT_TRUE(waitUntil([&] { return provider.openConnections() == 0; }));
}

TEST_F(EngineCommand, cancelsAnInstallationInAnotherProcess)
{
    const auto process = start({"engine", "install", "fast"});
    ASSERT_TRUE(waitForPartial());
    EXPECT_THAT(run({"engine", "status", "fast"}).output, HasSubstr("state\tinstalling\n"));
    EXPECT_EQ(run({"engine", "cancel", "fast"}).status, 0);
    EXPECT_EQ(end(*process).status, 130);
    EXPECT_EQ(engines(), QStringList());
    const Ended again = run({"engine", "cancel", "fast"});
    EXPECT_EQ(again.status, 1);
    EXPECT_EQ(again.errors, "zelvane-desk: the engine fast is not being installed\n");
}

TEST_F(EngineCommand, deletesWhatAnotherProcessInstalls)
{
    const auto process = start({"engine", "install", "fast"});
    ASSERT_TRUE(waitForPartial());
    EXPECT_EQ(run({"engine", "delete", "fast"}).status, 0);
    EXPECT_EQ(end(*process).status, 130);
    EXPECT_EQ(engines(), QStringList());
}

TEST_F(EngineCommand, goesOnAfterAKillInTheMiddleOfADownload)
{
    const auto process = start({"engine", "install", "fast"});
    ASSERT_TRUE(waitForPartial());
    process->kill();
    end(*process);
    EXPECT_THAT(run({"engine", "status", "fast"}).output, HasSubstr("state\tincomplete\n"));
    putModel();
    EXPECT_EQ(run({"engine", "install", "fast"}).status, 0);
    EXPECT_EQ(run({"engine", "status", "fast"}).status, 0);
}

TEST_F(EngineCommand, leavesTheInstallationOfAnotherProcessAlone)
{
    const auto process = start({"engine", "install", "fast"});
    ASSERT_TRUE(waitForPartial());
    const Ended second = run({"engine", "install", "fast"});
    EXPECT_EQ(second.status, 1);
    EXPECT_THAT(second.errors,
                EndsWith("zelvane-desk: This engine is being installed by another process.\n"));
    EXPECT_EQ(process->state(), QProcess::Running);
    EXPECT_TRUE(waitForPartial());
    process->kill();
    end(*process);
}

TEST_F(EngineCommand, aRefusalIsASentence)
{
    provider.enqueue(Answer::json(404, "Entry not found"));
    const Ended ended = run({"engine", "install", "fast"});
    EXPECT_EQ(ended.status, 1);
    EXPECT_EQ(ended.errors, "Unpacking llama.cpp…\nDownloading LMT-60 model…\n"
                            "zelvane-desk: API error 404: Entry not found\n");
}

TEST_F(EngineCommand, tellsWhatIsWrongWithTheCall)
{
    const Ended ended = run({"engine", "install"});
    EXPECT_EQ(ended.status, 2);
    EXPECT_EQ(ended.errors, "zelvane-desk: engine install needs one of smart, balanced and fast "
                            "(see zelvane-desk help engine)\n");
    EXPECT_THAT(run({"help", "engine"}).output, HasSubstr("install NAME"));
    EXPECT_EQ(run({"engine", "--help"}).output, run({"help", "engine"}).output);
}

} // namespace
} // namespace zelvane::test
