// An engine of this machine in the settings of the program itself, with a file host on loopback.

#include "end_to_end/InstalledProgram.h"
#include "end_to_end/ZelvaneSession.h"
#include "support/Await.h"

#include <gmock/gmock.h>

namespace zelvane::test {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

const QString install = QStringLiteral("Install Offline Engine…");
const QString notInstalled = QStringLiteral("Offline engine not installed");
const QString installing = QStringLiteral("Installing offline engine…");
const QString failed = QStringLiteral("Offline install failed");
const QString ready = QStringLiteral("Offline engine ready");

class EngineWindow : public ::testing::Test
{
protected:
    EngineWindow()
    {
        session.program = layOutProgram(session.desktop.home() + QStringLiteral("/prefix"));
        host.setHandler([](const RecordedRequest&) { return beginningOfModel(); });
        write("zv.endpoint.modelFiles", host.url().toString());
        write("zv.provider", QStringLiteral("Fast Offline"));
    }

    void write(const char* key, const QString& value)
    {
        session.zelvane(
            {QStringLiteral("defaults"), QStringLiteral("write"), QString::fromUtf8(key), value});
    }

    void startWithSettings()
    {
        session.start();
        session.openSettings();
    }

    void closeSettings()
    {
        session.key("Escape");
        session.waitUntilGone(QStringLiteral("^Settings$"));
    }

    /// All that the window says, as soon as it says this too.
    std::string wordsWith(const QString& awaited)
    {
        QString words;
        EXPECT_TRUE(waitUntil([&] {
            words = session.elements().join(u'\n');
            return words.contains(awaited);
        })) << words.toStdString();
        return words.toStdString();
    }

    bool waitForPartial()
    {
        return waitUntil([&] { return files.partialSize() == 300'000; });
    }

    ZelvaneSession session;
    LoopbackHttpServer host;
    FastEngineFiles files{session.desktop.home() + QStringLiteral("/profile")};
};

TEST_F(EngineWindow, showsTheEngineOfThePlatformThatIsPicked)
{
    write("zv.provider", QStringLiteral("Zelvane"));
    startWithSettings();
    session.press(QStringLiteral("Platform"));
    session.press(QStringLiteral("Fast Offline"));
    EXPECT_THAT(wordsWith(notInstalled), HasSubstr("push button\tInstall Offline Engine…"));
    EXPECT_TRUE(host.requests().empty());
}

TEST_F(EngineWindow, anInstallationGoesOnWhileTheWindowIsClosedAndIsCancelledInTheNext)
{
    startWithSettings();
    session.press(install);
    ASSERT_TRUE(waitForPartial());
    const std::string progress = wordsWith(QStringLiteral("300.0 kB of 2.7 GB downloaded"));
    EXPECT_THAT(progress, HasSubstr(installing.toStdString()));
    EXPECT_THAT(progress, HasSubstr("label\tDownloading LMT-60 model…\n"));
    EXPECT_THAT(progress, HasSubstr("label\t0%\n"));
    EXPECT_THAT(progress, HasSubstr("kB/s\n"));
    EXPECT_THAT(progress, HasSubstr("label\t2.7 GB remaining\n"));
    EXPECT_THAT(progress, HasSubstr("label\tElapsed: 0:0"));
    EXPECT_THAT(progress, Not(HasSubstr(install.toStdString())));

    closeSettings();
    EXPECT_EQ(host.heldAnswers(), 1);
    session.openSettings();
    EXPECT_TRUE(session.shows(QStringLiteral("300.0 kB of 2.7 GB downloaded")));
    EXPECT_EQ(host.requests().size(), 1);
    session.press(QStringLiteral("Cancel"));
    EXPECT_TRUE(session.shows(notInstalled));
    EXPECT_TRUE(waitUntil([&] { return files.engines().isEmpty(); }));
    EXPECT_TRUE(waitUntil([&] { return host.openConnections() == 0; }));
}

TEST_F(EngineWindow, saysWhyAnInstallationFailedAndBeginsAnother)
{
    host.enqueue(Answer::json(404, "Entry not found"));
    startWithSettings();
    session.press(install);
    EXPECT_THAT(wordsWith(failed), HasSubstr("label\tAPI error 404: Entry not found\n"));
    session.press(install);
    EXPECT_THAT(wordsWith(installing), Not(HasSubstr("404")));
    EXPECT_TRUE(waitForPartial());
}

TEST_F(EngineWindow, installsReinstallsAndDeletes)
{
    files.putModel();
    startWithSettings();
    session.press(install);
    EXPECT_TRUE(session.shows(ready));
    QFile record(files.path("READY"));
    ASSERT_TRUE(record.open(QIODevice::WriteOnly));
    record.write(R"({"engine_revision": 1})");
    record.close();

    session.press(QStringLiteral("Reinstall"));
    EXPECT_TRUE(waitUntil([&] {
        QFile written(files.path("READY"));
        return written.open(QIODevice::ReadOnly) && written.readAll().contains("Apache-2.0");
    }));
    EXPECT_TRUE(session.shows(ready));
    EXPECT_TRUE(host.requests().empty());

    session.press(QStringLiteral("Delete Offline Engine"));
    EXPECT_TRUE(session.shows(notInstalled));
    EXPECT_TRUE(waitUntil([&] { return files.engines().isEmpty(); }));
}

TEST_F(EngineWindow, showsWhatACommandDoesToTheEngine)
{
    files.putModel();
    startWithSettings();
    EXPECT_TRUE(session.shows(notInstalled));
    closeSettings();
    session.zelvane({QStringLiteral("engine"), QStringLiteral("install"), QStringLiteral("fast")});
    session.openSettings();
    EXPECT_TRUE(session.shows(ready));
    closeSettings();
    session.zelvane({QStringLiteral("engine"), QStringLiteral("delete"), QStringLiteral("fast")});
    session.openSettings();
    EXPECT_TRUE(session.shows(notInstalled));
}

TEST_F(EngineWindow, aCommandCancelsItsInstallation)
{
    startWithSettings();
    session.press(install);
    ASSERT_TRUE(waitForPartial());
    session.zelvane({QStringLiteral("engine"), QStringLiteral("cancel"), QStringLiteral("fast")});
    EXPECT_TRUE(session.shows(notInstalled));
    EXPECT_TRUE(files.engines().isEmpty());
}

} // namespace
} // namespace zelvane::test
