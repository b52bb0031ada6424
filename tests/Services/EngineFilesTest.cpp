#include "Services/EngineFiles.h"

#include "EngineFixture.h"

namespace zelvane::test {
namespace {

class EngineFilesTest : public ::testing::Test
{
protected:
    QTemporaryDir root;
    EngineFiles files{root.path(), tinyModel()};
};

TEST_F(EngineFilesTest, lieInTheFolderOfTheirEngine)
{
    const EngineFiles smart(QStringLiteral("/data/org.zelvane.desk"),
                            factsOf(SmartOfflineVariant::hyMT2_7b));
    EXPECT_EQ(smart.folder(), QStringLiteral("/data/org.zelvane.desk/hymt2-7b"));
    EXPECT_EQ(smart.record(), QStringLiteral("/data/org.zelvane.desk/hymt2-7b/READY"));
    EXPECT_EQ(smart.model(),
              QStringLiteral("/data/org.zelvane.desk/hymt2-7b/model/Hy-MT2-7B-Q4_K_M.gguf"));
    EXPECT_EQ(
        smart.partialModel(),
        QStringLiteral("/data/org.zelvane.desk/hymt2-7b/model/Hy-MT2-7B-Q4_K_M.gguf.partial"));
    EXPECT_EQ(smart.runtime(), QStringLiteral("/data/org.zelvane.desk/hymt2-7b/runtime"));
    EXPECT_EQ(smart.serverFolder(),
              QStringLiteral("/data/org.zelvane.desk/hymt2-7b/runtime/llama-b10437"));
    EXPECT_EQ(smart.server(),
              QStringLiteral("/data/org.zelvane.desk/hymt2-7b/runtime/llama-b10437/llama-server"));
}

TEST_F(EngineFilesTest, areBelowTheDataOfTheProgram)
{
    const ProfileLocations locations(root.filePath(QStringLiteral("profile")));
    EXPECT_EQ(engineRootDirectory(locations),
              root.filePath(QStringLiteral("profile/data/org.zelvane.desk")));
}

TEST_F(EngineFilesTest, comeAlongFromTheFolderOfAnEarlierVersion)
{
    writeFile(root.filePath(QStringLiteral("data/org.zelvane.legacy/hymt2-7b/READY")), "{}");
    const ProfileLocations locations(root.path());
    EXPECT_EQ(readAll(engineRootDirectory(locations) + QStringLiteral("/hymt2-7b/READY")), "{}");
    EXPECT_FALSE(QFileInfo::exists(root.filePath(QStringLiteral("data/org.zelvane.legacy"))));
}

TEST_F(EngineFilesTest, areCompleteWithServerModelAndRecord)
{
    EXPECT_FALSE(files.isComplete());
    writeEngine(files);
    EXPECT_FALSE(files.isComplete());
    ASSERT_TRUE(files.writeReadyRecord());
    EXPECT_TRUE(files.isComplete());
}

TEST_F(EngineFilesTest, areIncompleteWithAModelOneByteShortOrLong)
{
    writeEngine(files);
    ASSERT_TRUE(files.writeReadyRecord());
    writeFile(files.model(), "12345");
    EXPECT_FALSE(files.isComplete());
    writeFile(files.model(), "1234567");
    EXPECT_FALSE(files.isComplete());
}

TEST_F(EngineFilesTest, areIncompleteWithAServerThatCannotRun)
{
    writeEngine(files);
    ASSERT_TRUE(files.writeReadyRecord());
    ASSERT_TRUE(QFile::setPermissions(files.server(), QFile::ReadOwner));
    EXPECT_FALSE(files.isComplete());
    QFile::remove(files.server());
    QDir().mkpath(files.server());
    EXPECT_FALSE(files.isComplete());
}

TEST_F(EngineFilesTest, areIncompleteWhileTheRuntimeIsUnpacked)
{
    writeEngine(files);
    ASSERT_TRUE(files.writeReadyRecord());
    writeFile(files.unpackingMark(), "");
    EXPECT_FALSE(files.isComplete());
}

TEST_F(EngineFilesTest, areIncompleteWithARecordOfAnotherRevision)
{
    writeEngine(files);
    for (const char* record : {R"({"engine_revision":2})", R"({"engine_revision":0})", "{", ""}) {
        writeFile(files.record(), record);
        EXPECT_FALSE(files.isComplete()) << record;
    }
}

TEST_F(EngineFilesTest, haveTheSizeOfTheirRegularFiles)
{
    EXPECT_EQ(folderSize(files.folder()), 0);
    writeFile(files.model(), "123456");
    writeFile(files.folder() + QStringLiteral("/a/b/.hidden"), "1234");
    ASSERT_TRUE(QFile::link(files.model(), files.folder() + QStringLiteral("/link")));
    ASSERT_TRUE(QFile::link(root.path(), files.folder() + QStringLiteral("/loop")));
    EXPECT_EQ(folderSize(files.folder()), 10);
}

TEST_F(EngineFilesTest, saveNoRecordWhereThereIsNoFolder)
{
    EXPECT_FALSE(files.writeReadyRecord());
}

} // namespace
} // namespace zelvane::test
