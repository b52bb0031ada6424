#include "settings/FileUserDefaults.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <csignal>
#include <thread>

#include <sys/resource.h>
#include <sys/stat.h>

namespace zelvane::test {
namespace {

using namespace std::chrono_literals;
using Kind = DefaultsNotice::Kind;

const QString key = QStringLiteral("zv.prompt");

/// Collects the notices of the writing thread.
class Notices
{
public:
    FileUserDefaults::NoticeHandler handler()
    {
        return [this](const DefaultsNotice& notice) {
            const std::scoped_lock lock(m_lock);
            m_notices.push_back(notice);
        };
    }
    [[nodiscard]] std::vector<DefaultsNotice> all() const
    {
        const std::scoped_lock lock(m_lock);
        return m_notices;
    }

private:
    mutable std::mutex m_lock;
    std::vector<DefaultsNotice> m_notices;
};

class FileUserDefaultsTest : public ::testing::Test
{
protected:
    [[nodiscard]] QString path(const char* name = "defaults.json") const
    {
        return directory + u'/' + QString::fromUtf8(name);
    }
    [[nodiscard]] QByteArray contents(const char* name = "defaults.json") const
    {
        QFile file(path(name));
        return file.open(QFile::ReadOnly) ? file.readAll() : QByteArray("(missing)");
    }
    void write(const QByteArray& bytes) const
    {
        QDir().mkpath(directory);
        QFile file(path());
        ASSERT_TRUE(file.open(QFile::WriteOnly));
        file.write(bytes);
    }
    [[nodiscard]] static uint mode(const QString& path)
    {
        struct stat status = {};
        EXPECT_EQ(::stat(QFile::encodeName(path).constData(), &status), 0);
        return status.st_mode & 07777U;
    }
    [[nodiscard]] QStringList files() const
    {
        return QDir(directory).entryList(QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot |
                                         QDir::Hidden);
    }

    QTemporaryDir root;
    QString directory = root.path() + QStringLiteral("/config/org.zelvane.desk");
    Notices notices;
};

TEST_F(FileUserDefaultsTest, beginsEmptyAndMakesNoFile)
{
    {
        FileUserDefaults defaults(directory, notices.handler());
        EXPECT_EQ(defaults.value(key), std::nullopt);
        EXPECT_EQ(defaults.keys(), QStringList());
        EXPECT_TRUE(defaults.flush());
    }
    EXPECT_FALSE(QFileInfo::exists(directory));
    EXPECT_EQ(notices.all().size(), 0U);
}

TEST_F(FileUserDefaultsTest, readsAtOnceWhatWasSet)
{
    FileUserDefaults defaults(directory);
    defaults.setValue(key, QStringLiteral("P"));
    defaults.setValue(QStringLiteral("a"), qint64(7));
    EXPECT_EQ(defaults.string(key), QStringLiteral("P"));
    EXPECT_EQ(defaults.keys(), (QStringList{QStringLiteral("a"), key}));
    defaults.remove(key);
    EXPECT_EQ(defaults.value(key), std::nullopt);
    EXPECT_EQ(defaults.keys(), QStringList{QStringLiteral("a")});
}

TEST_F(FileUserDefaultsTest, storesEachTypeForTheNextStart)
{
    const DefaultsContents values{{QStringLiteral("b"), DefaultsValue(false)},
                                  {QStringLiteral("i"), DefaultsValue(qint64(1))},
                                  {QStringLiteral("d"), DefaultsValue(1.0)},
                                  {QStringLiteral("s"), DefaultsValue(QStringLiteral("ä"))},
                                  {QStringLiteral("x"), DefaultsValue(QByteArray("\xff", 1))}};
    {
        FileUserDefaults defaults(directory);
        for (auto value = values.cbegin(); value != values.cend(); ++value) {
            defaults.setValue(value.key(), std::get<DefaultsValue>(*value));
        }
    }
    const FileUserDefaults defaults(directory);
    EXPECT_EQ(defaults.keys().size(), 5);
    for (auto value = values.cbegin(); value != values.cend(); ++value) {
        EXPECT_EQ(defaults.value(value.key()), std::get<DefaultsValue>(*value));
    }
}

TEST_F(FileUserDefaultsTest, hasWrittenWhenFlushReturns)
{
    FileUserDefaults defaults(directory);
    defaults.setValue(key, QStringLiteral("P"));
    EXPECT_TRUE(defaults.flush());
    EXPECT_EQ(contents(), QByteArray("{\n  \"zv.prompt\": \"P\"\n}\n"));
    defaults.remove(key);
    EXPECT_TRUE(defaults.flush());
    EXPECT_EQ(contents(), QByteArray("{\n}\n"));
    EXPECT_TRUE(defaults.flush());
}

TEST_F(FileUserDefaultsTest, writesByItself)
{
    FileUserDefaults defaults(directory);
    defaults.setValue(key, QStringLiteral("P"));
    const auto deadline = std::chrono::steady_clock::now() + 5s;
    while (!QFileInfo::exists(path()) && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::sleep_for(1ms);
    }
    EXPECT_EQ(contents(), QByteArray("{\n  \"zv.prompt\": \"P\"\n}\n"));
}

TEST_F(FileUserDefaultsTest, keepsTheFileToItsOwner)
{
    write("{}");
    QFile::setPermissions(path(), QFile::ReadOwner | QFile::WriteOwner | QFile::ReadOther);
    {
        FileUserDefaults defaults(directory);
        defaults.setValue(key, true);
    }
    EXPECT_EQ(mode(path()), 0600U);
    EXPECT_EQ(mode(path("defaults.json.lock")), 0600U);
}

TEST_F(FileUserDefaultsTest, makesDirectoriesForTheOwnerOnly)
{
    {
        FileUserDefaults defaults(directory);
        defaults.setValue(key, true);
    }
    EXPECT_EQ(mode(directory), 0700U);
    EXPECT_EQ(mode(root.path() + QStringLiteral("/config")), 0700U);
}

TEST_F(FileUserDefaultsTest, leavesNothingElseBehind)
{
    {
        FileUserDefaults defaults(directory);
        defaults.setValue(key, true);
    }
    EXPECT_EQ(files(),
              (QStringList{QStringLiteral("defaults.json"), QStringLiteral("defaults.json.lock")}));
}

TEST_F(FileUserDefaultsTest, keepsValuesOfTheFutureAsTheyAre)
{
    write(
        R"({"zv.future":{"nested":[1,2.50,{"data":"AA=="}]},"zv.huge":123456789012345678901234})");
    {
        FileUserDefaults defaults(directory, notices.handler());
        EXPECT_EQ(defaults.value(QStringLiteral("zv.future")), std::nullopt);
        EXPECT_EQ(defaults.keys(),
                  (QStringList{QStringLiteral("zv.future"), QStringLiteral("zv.huge")}));
        defaults.setValue(key, QStringLiteral("P"));
    }
    EXPECT_EQ(contents(), QByteArray("{\n"
                                     "  \"zv.future\": {\"nested\":[1,2.50,{\"data\":\"AA==\"}]},\n"
                                     "  \"zv.huge\": 123456789012345678901234,\n"
                                     "  \"zv.prompt\": \"P\"\n"
                                     "}\n"));
    EXPECT_EQ(notices.all().size(), 0U);
}

TEST_F(FileUserDefaultsTest, canReplaceAndRemoveValuesOfTheFuture)
{
    write(R"({"a":[1],"b":null})");
    FileUserDefaults defaults(directory);
    defaults.setValue(QStringLiteral("a"), true);
    defaults.remove(QStringLiteral("b"));
    EXPECT_TRUE(defaults.flush());
    EXPECT_EQ(contents(), QByteArray("{\n  \"a\": true\n}\n"));
}

TEST_F(FileUserDefaultsTest, takesNoDoubleThatHasNoWrittenForm)
{
    FileUserDefaults defaults(directory);
    defaults.setValue(key, 2.5);
    defaults.setValue(key, std::nan(""));
    defaults.setValue(key, INFINITY);
    EXPECT_EQ(defaults.number(key), 2.5);
}

class DamagedFile : public FileUserDefaultsTest, public ::testing::WithParamInterface<QByteArray>
{
};

TEST_P(DamagedFile, isSetAsideWithANotice)
{
    write(GetParam());
    {
        FileUserDefaults defaults(directory, notices.handler());
        EXPECT_EQ(defaults.keys(), QStringList());
        EXPECT_TRUE(defaults.flush());
        ASSERT_EQ(notices.all().size(), 1U);
        EXPECT_EQ(notices.all()[0].kind, Kind::damagedFileSetAside);
        EXPECT_EQ(notices.all()[0].path, path("defaults.json.damaged"));
        EXPECT_EQ(contents(), QByteArray("(missing)"));
        defaults.setValue(key, QStringLiteral("P"));
    }
    EXPECT_EQ(contents("defaults.json.damaged"), GetParam());
    EXPECT_EQ(contents(), QByteArray("{\n  \"zv.prompt\": \"P\"\n}\n"));
    EXPECT_EQ(notices.all().size(), 1U);
}

INSTANTIATE_TEST_SUITE_P(Kinds, DamagedFile,
                         ::testing::Values(QByteArray(), QByteArray("{\n  \"zv.prompt\": \"P"),
                                           QByteArray(4096, '\0'), QByteArray("[]"),
                                           QByteArray("{\"\xff\xfe\": 1}")));

TEST_F(FileUserDefaultsTest, neverOverwritesAFileThatWasSetAsideBefore)
{
    write("first");
    EXPECT_TRUE(FileUserDefaults(directory).flush());
    write("second");
    EXPECT_TRUE(FileUserDefaults(directory).flush());
    EXPECT_EQ(contents("defaults.json.damaged"), QByteArray("first"));
    EXPECT_EQ(contents("defaults.json.damaged-2"), QByteArray("second"));
}

TEST_F(FileUserDefaultsTest, writesAllItKnowsAfterTheFileWasDamagedOrLost)
{
    FileUserDefaults defaults(directory, notices.handler());
    defaults.setValue(key, QStringLiteral("P"));
    EXPECT_TRUE(defaults.flush());

    write("{ \"zv.pro");
    defaults.setValue(QStringLiteral("a"), true);
    EXPECT_TRUE(defaults.flush());
    EXPECT_EQ(contents("defaults.json.damaged"), QByteArray("{ \"zv.pro"));
    EXPECT_EQ(contents(), QByteArray("{\n  \"a\": true,\n  \"zv.prompt\": \"P\"\n}\n"));

    QFile::remove(path());
    defaults.setValue(QStringLiteral("b"), true);
    EXPECT_TRUE(defaults.flush());
    EXPECT_EQ(contents(),
              QByteArray("{\n  \"a\": true,\n  \"b\": true,\n  \"zv.prompt\": \"P\"\n}\n"));
}

TEST_F(FileUserDefaultsTest, tellsOnceThatItCannotWriteAndLosesNothing)
{
    QDir().mkpath(path("defaults.json.new"));
    FileUserDefaults defaults(directory, notices.handler());
    defaults.setValue(key, QStringLiteral("P"));
    EXPECT_FALSE(defaults.flush());
    defaults.setValue(QStringLiteral("a"), true);
    EXPECT_FALSE(defaults.flush());
    ASSERT_EQ(notices.all().size(), 1U);
    EXPECT_EQ(notices.all()[0].kind, Kind::notStored);
    EXPECT_EQ(notices.all()[0].path, path("defaults.json.new"));
    EXPECT_EQ(defaults.string(key), QStringLiteral("P"));

    QDir().rmdir(path("defaults.json.new"));
    EXPECT_TRUE(defaults.flush());
    EXPECT_EQ(contents(), QByteArray("{\n  \"a\": true,\n  \"zv.prompt\": \"P\"\n}\n"));

    QDir().mkpath(path("defaults.json.new"));
    defaults.remove(key);
    EXPECT_FALSE(defaults.flush());
    EXPECT_EQ(notices.all().size(), 2U) << "a new trouble is told again";
}

TEST_F(FileUserDefaultsTest, triesAgainByItself)
{
    QDir().mkpath(path("defaults.json.new"));
    FileUserDefaults defaults(directory, notices.handler(), {.retryInterval = 5ms});
    defaults.setValue(key, QStringLiteral("P"));
    EXPECT_FALSE(defaults.flush());
    QDir().rmdir(path("defaults.json.new"));
    const auto deadline = std::chrono::steady_clock::now() + 5s;
    while (!QFileInfo::exists(path()) && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::sleep_for(1ms);
    }
    EXPECT_EQ(contents(), QByteArray("{\n  \"zv.prompt\": \"P\"\n}\n"));
}

/// Makes every write beyond `bytes` of a file fail, as on a full disk.
class FullDisk
{
public:
    explicit FullDisk(rlim_t bytes)
        : m_handler(std::signal(SIGXFSZ, SIG_IGN))
    {
        ::getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit limit{bytes, m_before.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FullDisk()
    {
        ::setrlimit(RLIMIT_FSIZE, &m_before);
        std::signal(SIGXFSZ, m_handler);
    }
    Q_DISABLE_COPY_MOVE(FullDisk)

private:
    void (*m_handler)(int);
    rlimit m_before = {};
};

TEST_F(FileUserDefaultsTest, keepsTheLastFileWhenTheDiskIsFull)
{
    FileUserDefaults defaults(directory, notices.handler());
    defaults.setValue(key, QStringLiteral("P"));
    EXPECT_TRUE(defaults.flush());
    const QByteArray before = contents();
    {
        const FullDisk full(1000);
        defaults.setValue(key, QString(5000, u'x'));
        EXPECT_FALSE(defaults.flush());
        EXPECT_EQ(contents(), before);
        EXPECT_FALSE(QFileInfo::exists(path("defaults.json.new")));
    }
    EXPECT_TRUE(defaults.flush());
    EXPECT_EQ(FileUserDefaults(directory).string(key), QString(5000, u'x'));
    EXPECT_EQ(notices.all().size(), 1U);
}

TEST_F(FileUserDefaultsTest, worksInMemoryWhereItHasNoDirectory)
{
    QFile blocker(root.path() + QStringLiteral("/config"));
    ASSERT_TRUE(blocker.open(QFile::WriteOnly));
    FileUserDefaults defaults(directory, notices.handler());
    defaults.setValue(key, QStringLiteral("P"));
    EXPECT_FALSE(defaults.flush());
    EXPECT_EQ(defaults.string(key), QStringLiteral("P"));
    EXPECT_EQ(notices.all().size(), 1U);
}

TEST_F(FileUserDefaultsTest, neverReplacesWhatItCouldNotRead)
{
    QDir().mkpath(path());
    {
        FileUserDefaults defaults(directory, notices.handler());
        EXPECT_EQ(defaults.keys(), QStringList());
        defaults.setValue(key, QStringLiteral("P"));
        EXPECT_FALSE(defaults.flush());
    }
    EXPECT_TRUE(QFileInfo(path()).isDir());
    EXPECT_EQ(notices.all().size(), 1U);
    EXPECT_EQ(notices.all()[0].kind, Kind::notStored);
}

TEST_F(FileUserDefaultsTest, givesUpOnALockThatIsNotGivenFree)
{
    QDir().mkpath(directory);
    FileUserDefaults defaults(directory, notices.handler(), {.lockLimit = 20ms});
    {
        const auto held = FileLock::acquire(path("defaults.json.lock"), 1s);
        ASSERT_TRUE(held);
        defaults.setValue(key, QStringLiteral("P"));
        EXPECT_FALSE(defaults.flush());
    }
    EXPECT_TRUE(defaults.flush());
}

TEST_F(FileUserDefaultsTest, keepsNobodyWaitingWhileTheDiskIsBusy)
{
    QDir().mkpath(directory);
    FileUserDefaults defaults(directory, {}, {.lockLimit = 500ms});
    const auto held = FileLock::acquire(path("defaults.json.lock"), 1s);
    ASSERT_TRUE(held);
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < 100; ++i) {
        defaults.setValue(key, qint64(i));
        EXPECT_EQ(defaults.value(key), DefaultsValue(qint64(i)));
    }
    EXPECT_LT(std::chrono::steady_clock::now() - start, 250ms);
}

TEST_F(FileUserDefaultsTest, ignoresTheRemainsOfAProcessThatWasKilled)
{
    write("{\"a\":1}");
    QFile remains(path("defaults.json.new"));
    ASSERT_TRUE(remains.open(QFile::WriteOnly));
    remains.write("{\"a");
    remains.close();
    FileUserDefaults defaults(directory, notices.handler());
    defaults.setValue(key, true);
    EXPECT_TRUE(defaults.flush());
    EXPECT_EQ(contents(), QByteArray("{\n  \"a\": 1,\n  \"zv.prompt\": true\n}\n"));
}

TEST_F(FileUserDefaultsTest, writesThroughASymbolicLink)
{
    const QString target = root.path() + QStringLiteral("/dotfiles.json");
    QDir().mkpath(directory);
    QFile file(target);
    ASSERT_TRUE(file.open(QFile::WriteOnly));
    file.write("{\"a\":1}");
    file.close();
    ASSERT_TRUE(QFile::link(target, path()));
    {
        FileUserDefaults defaults(directory);
        defaults.setValue(key, true);
    }
    EXPECT_TRUE(QFileInfo(path()).isSymLink());
    ASSERT_TRUE(file.open(QFile::ReadOnly));
    EXPECT_EQ(file.readAll(), QByteArray("{\n  \"a\": 1,\n  \"zv.prompt\": true\n}\n"));
}

TEST_F(FileUserDefaultsTest, mergesWithWhatAnotherHasStored)
{
    FileUserDefaults one(directory);
    FileUserDefaults other(directory);
    one.setValue(QStringLiteral("one"), qint64(1));
    one.setValue(QStringLiteral("both"), qint64(1));
    EXPECT_TRUE(one.flush());
    other.setValue(QStringLiteral("other"), qint64(2));
    other.setValue(QStringLiteral("both"), qint64(2));
    EXPECT_TRUE(other.flush());
    EXPECT_EQ(contents(), QByteArray("{\n  \"both\": 2,\n  \"one\": 1,\n  \"other\": 2\n}\n"));
    EXPECT_EQ(other.value(QStringLiteral("one")), DefaultsValue(qint64(1)));

    one.remove(QStringLiteral("other"));
    EXPECT_TRUE(one.flush());
    EXPECT_EQ(contents(), QByteArray("{\n  \"both\": 2,\n  \"one\": 1\n}\n"));
}

TEST_F(FileUserDefaultsTest, losesNoKeyWhenManyWriteAtOnce)
{
    constexpr int writers = 4;
    constexpr int keysEach = 40;
    std::vector<std::jthread> threads;
    for (int writer = 0; writer < writers; ++writer) {
        threads.emplace_back([this, writer] {
            FileUserDefaults defaults(directory);
            for (int i = 0; i < keysEach; ++i) {
                defaults.setValue(QStringLiteral("%1.%2").arg(writer).arg(i), qint64(i));
                if (i % 8 == 0) {
                    EXPECT_TRUE(defaults.flush());
                }
            }
        });
    }
    threads.clear();
    EXPECT_EQ(FileUserDefaults(directory).keys().size(), writers * keysEach);
}

TEST_F(FileUserDefaultsTest, canBeUsedFromAnyThread)
{
    FileUserDefaults defaults(directory);
    std::vector<std::jthread> threads;
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([&defaults, thread] {
            for (int i = 0; i < 100; ++i) {
                const QString own = QStringLiteral("%1.%2").arg(thread).arg(i);
                defaults.setValue(own, qint64(i));
                EXPECT_EQ(defaults.value(own), DefaultsValue(qint64(i)));
            }
        });
    }
    threads.clear();
    EXPECT_TRUE(defaults.flush());
    EXPECT_EQ(FileUserDefaults(directory).keys().size(), 400);
}

TEST_F(FileUserDefaultsTest, describesItsNotices)
{
    EXPECT_EQ(
        (DefaultsNotice{Kind::damagedFileSetAside, QStringLiteral("/a.damaged"), {}}).description(),
        QStringLiteral("The settings file was damaged. It was set aside as /a.damaged."));
    EXPECT_EQ((DefaultsNotice{Kind::notStored, QStringLiteral("/a"), QStringLiteral("Disk full")})
                  .description(),
              QStringLiteral("The settings can't be saved (/a): Disk full"));
}

/// Adds a letter to a text, once.
DefaultsUpdate adding(QChar letter)
{
    return [letter](const std::optional<DefaultsValue>& present) -> std::optional<DefaultsValue> {
        const QString text = present ? std::get<QString>(*present) : QString();
        return text.contains(letter) ? text : text + letter;
    };
}

TEST_F(FileUserDefaultsTest, changesAValueWhereverItStandsByThen)
{
    FileUserDefaults first(directory);
    FileUserDefaults second(directory);
    first.update(key, adding(u'a'));
    EXPECT_EQ(first.string(key), QStringLiteral("a"));
    EXPECT_TRUE(first.flush());
    second.update(key, adding(u'b')); // has not read what the first has stored
    EXPECT_TRUE(second.flush());
    EXPECT_EQ(second.string(key), QStringLiteral("ab"));
    EXPECT_EQ(contents(), QByteArray("{\n  \"zv.prompt\": \"ab\"\n}\n"));
}

TEST_F(FileUserDefaultsTest, keepsTheOrderOfChangesThatTheDiskDoesNotHaveYet)
{
    write(R"({"zv.prompt": "x"})");
    auto lock = FileLock::tryAcquire(path("defaults.json.lock"));
    ASSERT_TRUE(lock && *lock);
    FileUserDefaults defaults(directory, notices.handler(), {.lockLimit = 10s});
    defaults.update(key, adding(u'a'));
    defaults.update(key, adding(u'b'));
    EXPECT_EQ(defaults.string(key), QStringLiteral("xab"));
    lock->reset();
    EXPECT_TRUE(defaults.flush());
    EXPECT_EQ(contents(), QByteArray("{\n  \"zv.prompt\": \"xab\"\n}\n"));

    defaults.setValue(key, QStringLiteral("y"));
    defaults.update(key, adding(u'c'));
    defaults.remove(key);
    defaults.update(key, adding(u'd'));
    EXPECT_TRUE(defaults.flush());
    EXPECT_EQ(contents(), QByteArray("{\n  \"zv.prompt\": \"d\"\n}\n"));
}

TEST_F(FileUserDefaultsTest, anUpdateTakesNoNumberThatIsNone)
{
    FileUserDefaults defaults(directory);
    defaults.setValue(key, 2.5);
    defaults.update(key, [](const auto&) { return std::nan(""); });
    EXPECT_EQ(defaults.number(key), 2.5);
    EXPECT_TRUE(defaults.flush());
    EXPECT_EQ(contents(), QByteArray("{\n  \"zv.prompt\": 2.5\n}\n"));
}

TEST_F(FileUserDefaultsTest, rereadTakesOverWhatOthersHaveStored)
{
    FileUserDefaults defaults(directory);
    defaults.setValue(key, QStringLiteral("P"));
    EXPECT_TRUE(defaults.flush());
    write(R"({"zv.prompt": "Q", "zv.model": "M"})");
    EXPECT_EQ(defaults.string(key), QStringLiteral("P"));
    defaults.reread();
    EXPECT_EQ(defaults.string(key), QStringLiteral("Q"));
    EXPECT_EQ(defaults.string(QStringLiteral("zv.model")), QStringLiteral("M"));
    EXPECT_EQ(contents(), QByteArray(R"({"zv.prompt": "Q", "zv.model": "M"})"));
}

TEST_F(FileUserDefaultsTest, rereadKeepsWhatTheDiskDoesNotHaveYet)
{
    write(R"({"zv.prompt": "P", "zv.model": "M"})");
    auto lock = FileLock::tryAcquire(path("defaults.json.lock"));
    ASSERT_TRUE(lock && *lock);
    FileUserDefaults defaults(directory, notices.handler(), {.lockLimit = 10s});
    defaults.setValue(key, QStringLiteral("Q"));
    defaults.reread();
    EXPECT_EQ(defaults.string(key), QStringLiteral("Q"));
    EXPECT_EQ(defaults.string(QStringLiteral("zv.model")), QStringLiteral("M"));
    lock->reset();
    EXPECT_TRUE(defaults.flush());
    EXPECT_EQ(defaults.string(key), QStringLiteral("Q"));
}

TEST_F(FileUserDefaultsTest, rereadLeavesADamagedOrMissingFileAlone)
{
    FileUserDefaults defaults(directory, notices.handler());
    defaults.reread();
    EXPECT_FALSE(QFileInfo::exists(directory));
    defaults.setValue(key, QStringLiteral("P"));
    EXPECT_TRUE(defaults.flush());
    write("{");
    defaults.reread();
    EXPECT_EQ(defaults.string(key), QStringLiteral("P"));
    EXPECT_EQ(contents(), QByteArray("{"));
    EXPECT_EQ(notices.all().size(), 0U);
}

} // namespace
} // namespace zelvane::test
