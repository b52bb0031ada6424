#include "Services/LocalEngineManager.h"

#include "EngineFixture.h"
#include "pipeline/TranslationError.h"
#include "support/Await.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace zelvane::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Variant = LocalEngineManager::Variant;

class RecordedChild final : public LocalEngineChild
{
public:
    RecordedChild(QStringList& calls, bool isRunning)
        : m_calls(calls)
        , m_isRunning(isRunning)
    {
    }
    [[nodiscard]] bool isRunning() const override { return m_isRunning; }
    void write(const QByteArray& bytes) override { m_calls += QString::fromUtf8(bytes); }
    void terminate() override { m_calls += QStringLiteral("terminate"); }

private:
    QStringList& m_calls;
    bool m_isRunning;
};

class LocalEngineManagerTest : public ::testing::Test
{
protected:
    void install(const QString& folder, const QByteArray& record)
    {
        const QString path = root.filePath(folder);
        writeFile(path + QStringLiteral("/READY"), record);
        writeFile(path + QStringLiteral("/model/weights"), "12345");
        writeFile(path + QStringLiteral("/python/bin/python3"), "#!");
    }
    bool isReady(Variant variant)
    {
        const LocalEngineManager manager(variant, root.path());
        return manager.state().is<engine_status::Ready>();
    }

    QTemporaryDir root;
    QStringList calls;
};

TEST_F(LocalEngineManagerTest, KnowsALeftoverInstallationByItsRevision)
{
    install(QStringLiteral("nllb"), R"({"engine_revision": 2})");
    EXPECT_FALSE(isReady(Variant::standard));
    install(QStringLiteral("nllb"), R"({"engine_revision": 3})");
    EXPECT_TRUE(isReady(Variant::standard));
    EXPECT_FALSE(isReady(Variant::large));
    install(QStringLiteral("madlad-7b"), R"({"engine_revision": 2})");
    EXPECT_TRUE(isReady(Variant::large));
}

TEST_F(LocalEngineManagerTest, NeedsTheModelAndThePython)
{
    install(QStringLiteral("nllb"), R"({"engine_revision": 3})");
    QFile::remove(root.filePath(QStringLiteral("nllb/python/bin/python3")));
    EXPECT_FALSE(isReady(Variant::standard));
    install(QStringLiteral("nllb"), R"({"engine_revision": 3})");
    QDir(root.filePath(QStringLiteral("nllb/model"))).removeRecursively();
    EXPECT_FALSE(isReady(Variant::standard));
}

TEST_F(LocalEngineManagerTest, FollowsTheDisk)
{
    LocalEngineManager manager(Variant::large, root.path());
    EXPECT_EQ(manager.variant(), Variant::large);
    EXPECT_TRUE(manager.state().is<engine_status::NotInstalled>());
    EXPECT_EQ(manager.state().diskUsageBytes.value(), 0);
    install(QStringLiteral("madlad-7b"), R"({"engine_revision": 2})");
    manager.refreshStatus();
    EXPECT_TRUE(manager.state().is<engine_status::Ready>());
    EXPECT_EQ(manager.state().diskUsageBytes.value(), 22 + 5 + 2);
    QDir(root.filePath(QStringLiteral("madlad-7b"))).removeRecursively();
    manager.refreshStatus();
    EXPECT_TRUE(manager.state().is<engine_status::NotInstalled>());
    EXPECT_EQ(manager.state().installLog.value(), QString());
}

TEST_F(LocalEngineManagerTest, StopWithNothingHeldDoesNothing)
{
    LocalEngineManager manager(Variant::standard, root.path());
    manager.stop();
    EXPECT_TRUE(manager.state().is<engine_status::NotInstalled>());
}

TEST_F(LocalEngineManagerTest, TellsAChildToUnloadBeforeItAsksItToEnd)
{
    LocalEngineManager manager(Variant::standard, root.path());
    manager.hold(std::make_unique<RecordedChild>(calls, true));
    manager.stop();
    EXPECT_THAT(calls, ElementsAre(QStringLiteral("{\"id\":\"unload\",\"cmd\":\"unload\"}\n"),
                                   QStringLiteral("terminate")));
    manager.stop();
    EXPECT_EQ(calls.size(), 2);
}

TEST_F(LocalEngineManagerTest, LeavesAChildAloneThatHasEnded)
{
    LocalEngineManager manager(Variant::standard, root.path());
    manager.hold(std::make_unique<RecordedChild>(calls, false));
    manager.stop();
    EXPECT_THAT(calls, IsEmpty());
}

TEST_F(LocalEngineManagerTest, AStopEndsEveryWait)
{
    LocalEngineManager manager(Variant::standard, root.path());
    const Completion<QString> first;
    const Completion<QString> second;
    manager.await(QStringLiteral("1"), first);
    manager.await(QStringLiteral("2"), second);
    manager.stop();
    for (const auto& reply : {first, second}) {
        try {
            (void)await(reply.result());
            ADD_FAILURE() << "nothing was thrown";
        } catch (const TranslationError& error) {
            EXPECT_EQ(error.code(), TranslationError::Code::offlineEngineBusy);
        }
    }
}

} // namespace
} // namespace zelvane::test
