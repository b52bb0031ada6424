#include "cli/EngineCommand.h"

#include "Services/EngineFiles.h"
#include "Services/FakeProcessTable.h"
#include "Services/InstallLock.h"
#include "Services/RuntimeArchive.h"
#include "support/Await.h"
#include "support/FakeChildProcesses.h"
#include "support/FakeHttpTransport.h"
#include "support/VirtualClock.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

namespace zelvane::test {
namespace {

using namespace std::chrono_literals;
using ::testing::HasSubstr;

/// The engine "fast", with a model of six bytes.
class EngineRun : public ::testing::Test
{
protected:
    EngineRun()
    {
        for (QBuffer* buffer : {&input, &output, &error}) {
            buffer->open(QIODevice::ReadWrite);
        }
        transport.holdDownloads();
    }

    static SmartOfflineVariantFacts facts(SmartOfflineVariant variant)
    {
        SmartOfflineVariantFacts result = factsOf(variant);
        result.expectedModelBytes = 6;
        return result;
    }

    QCoro::Task<ExitStatus> start(std::initializer_list<const char*> words,
                                  const std::stop_token& stop = {})
    {
        QStringList arguments;
        for (const char* word : words) {
            arguments << QString::fromUtf8(word);
        }
        return runEngineCommand(parseEngineOptions(arguments).value(),
                                {root,
                                 transport,
                                 children,
                                 processes,
                                 clock,
                                 defaults,
                                 {folder.filePath(QStringLiteral("resources"))},
                                 facts},
                                {input, output, error}, style, stop);
    }
    ExitStatus run(std::initializer_list<const char*> words) { return await(start(words)); }

    static void write(const QString& path, const QByteArray& bytes, bool isProgram = false)
    {
        QDir().mkpath(QFileInfo(path).path());
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
        if (isProgram) {
            file.setPermissions(file.permissions() | QFile::ExeOwner);
        }
    }
    void install() const
    {
        write(files.server(), "#!/bin/sh\n", true);
        write(files.model(), "GGUF:)");
        ASSERT_TRUE(files.writeReadyRecord());
    }
    HeldDownload download() const
    {
        EXPECT_TRUE(waitUntil([&] { return !transport.heldDownloads().empty(); }));
        return transport.heldDownloads().front();
    }

    QTemporaryDir folder;
    QString root = folder.filePath(QStringLiteral("data"));
    EngineFiles files{root, facts(SmartOfflineVariant::lmt60_4b)};
    EngineProgress::Style style = EngineProgress::Style::plainLines;
    FakeHttpTransport transport;
    FakeChildProcesses children;
    FakeProcessTable processes;
    VirtualClock clock;
    OverlayUserDefaults defaults;
    QBuffer input;
    QBuffer output;
    QBuffer error;
};

TEST_F(EngineRun, listsWhatIsOnTheDisk)
{
    install();
    write(root + QStringLiteral("/eurollm-9b/model/x.partial"), "123");
    EXPECT_EQ(run({"list"}), ExitStatus::success);
    EXPECT_EQ(output.data(), "smart\tSmart Offline\tnot installed\t0\n"
                             "balanced\tBalanced Offline\tincomplete\t3\n"
                             "fast\tFast Offline\tinstalled\t" +
                                 QByteArray::number(folderSize(files.folder())) + '\n');
    EXPECT_EQ(error.data(), "");
}

TEST_F(EngineRun, listsAsJson)
{
    EXPECT_EQ(run({"list", "--json"}), ExitStatus::success);
    EXPECT_THAT(output.data().toStdString(),
                HasSubstr(R"({"engines":[{"bytes":0,"engine":"Smart Offline","folder":")"));
    EXPECT_TRUE(output.data().endsWith("}]}\n"));
}

TEST_F(EngineRun, tellsTheStatusOfAnEngine)
{
    EXPECT_EQ(run({"status", "fast"}), ExitStatus::failure);
    EXPECT_EQ(output.data(), "name\tfast\nengine\tFast Offline\nstate\tnot installed\nbytes\t0\n"
                             "model\tLMT-60-4B.Q4_K_M.gguf\nmodelBytes\t6\nfolder\t" +
                                 files.folder().toUtf8() + '\n');
    install();
    EXPECT_EQ(run({"status", "fast"}), ExitStatus::success);
    EXPECT_THAT(output.data().toStdString(), HasSubstr("state\tinstalled\n"));
}

TEST_F(EngineRun, installsAndTellsEachStepOnALine)
{
    write(folder.filePath(QStringLiteral("resources/")) + runtimeArchiveName(), "archive");
    auto task = start({"install", "fast"});
    ASSERT_TRUE(waitUntil([&] { return children.children.size() == 1; }));
    write(files.server(), "#!/bin/sh\n");
    children.children.front()->end();
    const HeldDownload held = download();
    clock.advance(2s);
    for (const qint64 written : {0, 1, 2, 3, 3, 6}) {
        held.progress({written, 6});
    }
    write(held.destination, "GGUF:)");
    held.outcome.succeed(HttpResponse{200, {}, {}});
    EXPECT_EQ(await(std::move(task)), ExitStatus::success);
    EXPECT_EQ(error.data(),
              "Unpacking llama.cpp…\n"
              "Downloading LMT-60 model…\n"
              "Downloading LMT-60 model… 1 bytes of 6 bytes (16 %), 0 bytes/s\n"
              "Downloading LMT-60 model… 2 bytes of 6 bytes (33 %), 1 bytes/s, 0:04 left\n"
              "Downloading LMT-60 model… 3 bytes of 6 bytes (50 %), 1 bytes/s, 0:03 left\n"
              "Downloading LMT-60 model… 6 bytes of 6 bytes (100 %), 3 bytes/s, 0:00 left\n");
    EXPECT_TRUE(output.data().startsWith("fast\tFast Offline\tinstalled\t"));
    EXPECT_TRUE(files.isComplete());
}

TEST_F(EngineRun, tellsTheProgressOnOneLineOfATerminal)
{
    style = EngineProgress::Style::oneLine;
    install();
    QFile::remove(files.model());
    auto task = start({"install", "fast"});
    const HeldDownload held = download();
    clock.advance(1s);
    held.progress({2, 6});
    held.outcome.fail(TransportError(TransportError::Kind::storage, QStringLiteral("full")));
    EXPECT_EQ(await(std::move(task)), ExitStatus::failure);
    EXPECT_EQ(error.data(),
              "\r\x1b[KUnpacking llama.cpp…"
              "\r\x1b[KDownloading LMT-60 model…"
              "\r\x1b[KDownloading LMT-60 model… 2 bytes of 6 bytes (33 %), 2 bytes/s, 0:02 left"
              "\r\x1b[KDownloading LMT-60 model…"
              "\r\x1b[Kzelvane-desk: full\n");
    EXPECT_EQ(output.data(), "");
}

TEST_F(EngineRun, anInterruptionLeavesNothing)
{
    install();
    QFile::remove(files.model());
    std::stop_source stop;
    auto task = start({"install", "fast"}, stop.get_token());
    download();
    stop.request_stop();
    EXPECT_EQ(await(std::move(task)), ExitStatus::interrupted);
    EXPECT_FALSE(QFileInfo::exists(files.folder()));
    EXPECT_EQ(output.data(), "");
}

TEST_F(EngineRun, cancelsWhatAnotherCallInstalls)
{
    install();
    QFile::remove(files.model());
    auto installation = start({"install", "fast"});
    download();
    EXPECT_EQ(run({"status", "fast"}), ExitStatus::failure);
    EXPECT_THAT(output.data().toStdString(), HasSubstr("state\tinstalling\n"));
    auto cancellation = start({"cancel", "fast"});
    // The installation clears up in real time, which the patience of the other call must not race.
    EXPECT_EQ(await(std::move(installation)), ExitStatus::interrupted);
    clock.advance(1s);
    EXPECT_EQ(await(std::move(cancellation)), ExitStatus::success);
    EXPECT_FALSE(QFileInfo::exists(files.folder()));
}

TEST_F(EngineRun, cancelsNothingThatIsNotInstalled)
{
    EXPECT_EQ(run({"cancel", "fast"}), ExitStatus::failure);
    EXPECT_EQ(error.data(), "zelvane-desk: the engine fast is not being installed\n");
}

TEST_F(EngineRun, givesUpOnAnInstallationThatDoesNotEnd)
{
    QDir().mkpath(root);
    const auto lock = InstallLock::acquire(InstallLock::path(root, QStringLiteral("lmt60-4b")));
    ASSERT_TRUE(lock);
    auto task = start({"cancel", "fast"});
    clock.advance(15s);
    EXPECT_EQ(await(std::move(task)), ExitStatus::failure);
    EXPECT_EQ(error.data(), "zelvane-desk: the installation does not end\n");
}

TEST_F(EngineRun, deletesAnEngine)
{
    install();
    processes.table = "  42 " + files.server().toUtf8() + " -m model\n43 /usr/bin/llama-server\n";
    EXPECT_EQ(run({"delete", "fast"}), ExitStatus::success);
    EXPECT_EQ(processes.calls, QStringList{QStringLiteral("terminate 42")});
    EXPECT_FALSE(QFileInfo::exists(files.folder()));
    EXPECT_TRUE(QDir(root).entryList(QDir::Dirs | QDir::Hidden | QDir::NoDotAndDotDot).isEmpty());
    EXPECT_EQ(run({"delete", "fast"}), ExitStatus::failure);
    EXPECT_EQ(error.data(), "zelvane-desk: the engine fast is not installed\n");
}

TEST(DownloadText, tellsSpeedAndTimeLeft)
{
    const auto text = [](const EngineDownloadProgress& progress) {
        return shownDownload(progress).toStdString();
    };
    EXPECT_EQ(text({1'200'000'000, 2'716'068'544, 12'300'000, 1'516'068'544, 123, 97, 0}),
              "1.2 GB of 2.7 GB (44 %), 12.3 MB/s, 2:03 left");
    EXPECT_EQ(text({1'200'000'000, 2'716'068'544, 0, 1'516'068'544, std::nullopt, 97, 0}),
              "1.2 GB of 2.7 GB (44 %), 0 bytes/s");
    EXPECT_EQ(text({500'000, std::nullopt, 500'000, std::nullopt, 7384, 1, 0}),
              "500.0 kB, 500.0 kB/s, 2:03:04 left");
}

} // namespace
} // namespace zelvane::test
