#include "Services/EngineRefresh.h"

#include "EngineFixture.h"

namespace zelvane::test {
namespace {

using engine_status::Failed;
using engine_status::Installing;
using engine_status::NotInstalled;
using engine_status::Ready;

class EngineStateTest : public ::testing::Test
{
protected:
    void completeOnDisk()
    {
        writeEngine(files);
        ASSERT_TRUE(files.writeReadyRecord());
    }

    QTemporaryDir root;
    EngineFiles files{root.path(), tinyModel()};
    EngineState state;
};

TEST_F(EngineStateTest, beginsWithNothingInstalled)
{
    EXPECT_EQ(state.status.value(), EngineStatus(NotInstalled{}));
    EXPECT_EQ(state.diskUsageBytes.value(), 0);
    EXPECT_EQ(state.downloadProgress.value(), std::nullopt);
    EXPECT_EQ(state.installLog.value(), QString());
}

TEST_F(EngineStateTest, tellsItsObserversOfChangesOnly)
{
    int changes = 0;
    const auto notifier = state.status.addNotifier([&] { ++changes; });
    state.status = NotInstalled{};
    EXPECT_EQ(changes, 0);
    state.status = Installing{QStringLiteral("x"), 0.5};
    state.status = Installing{QStringLiteral("x"), 0.5};
    EXPECT_EQ(changes, 1);
    state.status = Installing{QStringLiteral("x"), 0.6};
    EXPECT_EQ(changes, 2);
}

TEST_F(EngineStateTest, becomesReadyWithACompleteFolder)
{
    refreshStatus(state, files);
    EXPECT_EQ(state.status.value(), EngineStatus(NotInstalled{}));
    completeOnDisk();
    refreshStatus(state, files);
    EXPECT_EQ(state.status.value(), EngineStatus(Ready{}));
    EXPECT_EQ(state.diskUsageBytes.value(), 6 + 10 + readAll(files.record()).size());
}

TEST_F(EngineStateTest, recoversFromAFailureWithACompleteFolder)
{
    state.status = Failed{QStringLiteral("why")};
    refreshStatus(state, files);
    EXPECT_EQ(state.status.value(), EngineStatus(Failed{QStringLiteral("why")}));
    completeOnDisk();
    refreshStatus(state, files);
    EXPECT_EQ(state.status.value(), EngineStatus(Ready{}));
}

TEST_F(EngineStateTest, leavesAnInstallationAlone)
{
    const EngineStatus installing = Installing{QStringLiteral("x"), 0.5};
    state.status = installing;
    refreshStatus(state, files);
    EXPECT_EQ(state.status.value(), installing);
    completeOnDisk();
    refreshStatus(state, files);
    EXPECT_EQ(state.status.value(), installing);
}

TEST_F(EngineStateTest, noticesThatFilesHaveGone)
{
    completeOnDisk();
    refreshStatus(state, files);
    writeFile(files.model(), "12345");
    refreshStatus(state, files);
    EXPECT_EQ(state.status.value(), EngineStatus(NotInstalled{}));
}

TEST_F(EngineStateTest, logsTrimmedLines)
{
    state.appendInstallLog(QStringLiteral("  one\n"));
    state.appendInstallLog(QStringLiteral(" \n\t "));
    state.appendInstallLog(QStringLiteral("two\nlines"));
    EXPECT_EQ(state.installLog.value(), QStringLiteral("one\ntwo\nlines\n"));
}

} // namespace
} // namespace zelvane::test
