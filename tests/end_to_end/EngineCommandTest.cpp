// The program's own binary, laid out as packaging does, with a file host on loopback.

#include "end_to_end/CommandFixture.h"

#include <gmock/gmock.h>

#include <QDir>
#include <QDirIterator>

#include <csignal>
#include <filesystem>

namespace zelvane::test {
namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::StartsWith;

/// The size of the model of the engine "fast". Tests serve none of it, or a beginning.
constexpr qint64 modelSize = 2'716'068'544;

class EngineCommand : public Commands
{
protected:
    EngineCommand()
    {
        layOut();
        provider.setHandler([](const RecordedRequest&) { return beginning(); });
        run({"defaults", "write", "zv.endpoint.modelFiles",
             provider.url().toString().toUtf8().constData()});
    }

    /// 300,000 bytes of the model, and then silence.
    static Answer beginning()
    {
        return Answer()
            .send("HTTP/1.1 200 OK\r\nContent-Length: " + QByteArray::number(modelSize) +
                  "\r\n\r\n")
            .flood(300'000)
            .hold();
    }

    /// The program with an archive beside it whose server prints a word.
    void layOut()
    {
        namespace fs = std::filesystem;
        const fs::path prefix = home.filePath(QStringLiteral("prefix")).toStdString();
        const fs::path resources = prefix / "share/zelvane-desk/llama";
        fs::create_directories(prefix / "bin");
        fs::create_directories(resources);
        program = QString::fromStdString((prefix / "bin/zelvane-desk").string());
        std::error_code differentDisk;
        fs::create_hard_link(ZELVANE_PROGRAM, program.toStdString(), differentDisk);
        if (differentDisk) {
            fs::copy_file(ZELVANE_PROGRAM, program.toStdString());
        }
        const fs::path runtime = prefix / "llama-b10437";
        fs::create_directories(runtime);
        QFile server(QString::fromStdString((runtime / "llama-server").string()));
        ASSERT_TRUE(server.open(QIODevice::WriteOnly));
        server.write("#!/bin/sh\necho served\n");
        server.close();
        fs::create_symlink("llama-server", runtime / "link");
#ifdef Q_PROCESSOR_ARM_64
        const char* const archive = "llama-b10437-bin-linux-arm64.tar.gz";
#else
        const char* const archive = "llama-b10437-bin-linux-x64.tar.gz";
#endif
        const QStringList arguments{QStringLiteral("-czf"),
                                    QString::fromStdString((resources / archive).string()),
                                    QStringLiteral("-C"), QString::fromStdString(prefix.string()),
                                    QStringLiteral("llama-b10437")};
        ASSERT_EQ(QProcess::execute(QStringLiteral("/usr/bin/tar"), arguments), 0);
    }

    [[nodiscard]] QString root() const
    {
        return home.filePath(QStringLiteral("profile/data/org.zelvane.desk"));
    }
    [[nodiscard]] QString engine(const char* inside = "") const
    {
        return root() + QStringLiteral("/lmt60-4b/") + QString::fromUtf8(inside);
    }
    /// What there is of engines, whole or in parts.
    [[nodiscard]] QStringList engines() const
    {
        return QDir(root()).entryList(QDir::Dirs | QDir::Hidden | QDir::NoDotAndDotDot);
    }
    /// A model of the right size that takes no room on the disk.
    void putModel() const
    {
        QDir().mkpath(engine("model"));
        QFile model(engine("model/LMT-60-4B.Q4_K_M.gguf"));
        ASSERT_TRUE(model.open(QIODevice::WriteOnly));
        ASSERT_TRUE(model.resize(modelSize));
    }
    [[nodiscard]] bool waitForPartial() const
    {
        return waitUntil([&] {
            return QFileInfo(engine("model/LMT-60-4B.Q4_K_M.gguf.partial")).size() == 300'000;
        });
    }
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
