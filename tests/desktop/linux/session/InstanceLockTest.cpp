#include "desktop/linux/session/InstanceLock.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <csignal>

#include <sys/wait.h>
#include <unistd.h>

namespace zelvane::test {
namespace {

class InstanceLockTest : public ::testing::Test
{
protected:
    [[nodiscard]] InstanceLock lock(const char* name = "one") const
    {
        return {folder.path(), QString::fromLatin1(name)};
    }

    QTemporaryDir folder;
};

TEST_F(InstanceLockTest, hasOneHolder)
{
    InstanceLock first = lock();
    InstanceLock second = lock();
    EXPECT_FALSE(first.isHeldByAnother());
    EXPECT_TRUE(first.claim());
    EXPECT_TRUE(first.claim());
    EXPECT_FALSE(second.claim());
    EXPECT_TRUE(second.isHeldByAnother());
    EXPECT_FALSE(first.isHeldByAnother());
    EXPECT_EQ(second.holder(), QCoreApplication::applicationPid());
    first.release();
    EXPECT_FALSE(second.isHeldByAnother());
    EXPECT_TRUE(second.claim());
    EXPECT_FALSE(first.claim());
}

TEST_F(InstanceLockTest, namesAreApart)
{
    InstanceLock first = lock();
    InstanceLock other = lock("two");
    EXPECT_TRUE(first.claim());
    EXPECT_TRUE(other.claim());
}

TEST_F(InstanceLockTest, goesWithItsProcess)
{
    int ready[2];
    ASSERT_EQ(::pipe(ready), 0);
    const pid_t child = ::fork();
    if (child == 0) {
        InstanceLock held = lock();
        const char answer = held.claim() ? 'y' : 'n';
        [[maybe_unused]] const auto written = ::write(ready[1], &answer, 1);
        ::pause();
        ::_exit(0);
    }
    char answer = 'n';
    ASSERT_EQ(::read(ready[0], &answer, 1), 1);
    ASSERT_EQ(answer, 'y');
    InstanceLock later = lock();
    EXPECT_FALSE(later.claim());
    EXPECT_EQ(later.holder(), child);
    ::kill(child, SIGKILL);
    ::waitpid(child, nullptr, 0);
    EXPECT_FALSE(later.isHeldByAnother());
    EXPECT_TRUE(later.claim());
    EXPECT_EQ(later.holder(), QCoreApplication::applicationPid());
    ::close(ready[0]);
    ::close(ready[1]);
}

TEST_F(InstanceLockTest, childrenDoNotKeepIt)
{
    QProcess child;
    {
        InstanceLock held = lock();
        ASSERT_TRUE(held.claim());
        child.start(QStringLiteral("sleep"), {QStringLiteral("60")});
        ASSERT_TRUE(child.waitForStarted());
    }
    InstanceLock later = lock();
    EXPECT_TRUE(later.claim());
    child.kill();
    child.waitForFinished();
}

TEST_F(InstanceLockTest, isForTheUserAlone)
{
    InstanceLock held = lock();
    ASSERT_TRUE(held.claim());
    EXPECT_EQ(QFile::permissions(folder.filePath(QStringLiteral("one.lock"))) &
                  (QFile::ReadGroup | QFile::WriteGroup | QFile::ReadOther | QFile::WriteOther),
              QFile::Permissions());
}

TEST_F(InstanceLockTest, followsNoLink)
{
    const QString target = folder.filePath(QStringLiteral("target"));
    ASSERT_TRUE(QFile::link(target, folder.filePath(QStringLiteral("one.lock"))));
    InstanceLock held = lock();
    EXPECT_TRUE(held.claim()); // without a lock: two programs rather than none
    EXPECT_FALSE(QFile::exists(target));
}

TEST_F(InstanceLockTest, aFolderThatOthersCanWriteToIsNotUsed)
{
    QFile::setPermissions(folder.path(), QFile::Permissions(0x7777));
    InstanceLock held = lock();
    EXPECT_TRUE(held.claim());
    EXPECT_FALSE(QFile::exists(folder.filePath(QStringLiteral("one.lock"))));
}

TEST_F(InstanceLockTest, aFolderThatIsMissingIsNoReasonNotToStart)
{
    InstanceLock held(folder.filePath(QStringLiteral("missing")), QStringLiteral("one"));
    EXPECT_FALSE(held.isHeldByAnother());
    EXPECT_TRUE(held.claim());
    EXPECT_EQ(held.holder(), std::nullopt);
}

TEST_F(InstanceLockTest, liesInTheRuntimeFolder)
{
    const QByteArray before = qgetenv("XDG_RUNTIME_DIR");
    qputenv("XDG_RUNTIME_DIR", folder.path().toUtf8());
    EXPECT_EQ(InstanceLock::usualFolder(), folder.path());
    qputenv("XDG_RUNTIME_DIR", "relative");
    const QString other = InstanceLock::usualFolder();
    EXPECT_TRUE(other.endsWith(QStringLiteral("/zelvane-desk-%1").arg(::geteuid())));
    EXPECT_TRUE(QFile::exists(other));
    qputenv("XDG_RUNTIME_DIR", before);
}

} // namespace
} // namespace zelvane::test
