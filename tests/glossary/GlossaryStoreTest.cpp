#include "glossary/GlossaryStore.h"

#include "support/Await.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QThread>

#include <atomic>
#include <future>

namespace zelvane::test {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

const QString english = QStringLiteral("English (US)");
const QString german = QStringLiteral("German");
const QString anyLanguage = QStringLiteral("Any Language");

class GlossaryStoreTest : public ::testing::Test
{
protected:
    void write(const QString& name, const QByteArray& content) const
    {
        QFile file(folder.filePath(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(content);
    }
    void remove(const QString& name) const { ASSERT_TRUE(QFile::remove(folder.filePath(name))); }

    static GlossaryStore::Matches matches(GlossaryStore& store, const QStringList& lines,
                                          const QString& source, const QString& target)
    {
        return await(store.matches(lines, source, target, {}));
    }
    /// The first hint for one line; empty if there is no match.
    static QString hint(GlossaryStore& store, const QString& line, const QString& source,
                        const QString& target)
    {
        const auto found = matches(store, {line}, source, target);
        return found.at(0) ? found[0]->hints.value(0) : QString();
    }
    QString hint(const QString& line, const QString& source, const QString& target)
    {
        return hint(store, line, source, target);
    }

    QTemporaryDir folder;
    GlossaryStore store{folder.path()};
};

TEST_F(GlossaryStoreTest, answersOnceForEachLineInOrder)
{
    write(QStringLiteral("de-en.tsv"), "Haus\thouse\t30.0\nBaum\ttree\t10.0\n");
    const auto found = matches(store,
                               {QStringLiteral("1. Haus"), QString(), QStringLiteral("Fluss"),
                                QStringLiteral("baum"), QStringLiteral("1. Haus")},
                               german, english);
    const std::optional<GlossaryMatch> house = GlossaryMatch{QStringLiteral("1. "),
                                                             QStringLiteral("Haus"),
                                                             QStringLiteral("house"),
                                                             {QStringLiteral("house")}};
    const std::optional<GlossaryMatch> tree =
        GlossaryMatch{QString(), QStringLiteral("baum"), std::nullopt, {QStringLiteral("tree")}};
    EXPECT_THAT(found, ElementsAre(house, std::nullopt, std::nullopt, tree, house));
}

TEST_F(GlossaryStoreTest, takesLanguagesByNameSpellingOrCode)
{
    write(QStringLiteral("en-de.tsv"), "house\tHaus\t30.0\n");
    for (const char* source : {"English (UK)", "english", "en_GB", "EN"}) {
        for (const char* target : {"German", " german ", "de-AT"}) {
            EXPECT_EQ(
                hint(QStringLiteral("house"), QString::fromUtf8(source), QString::fromUtf8(target)),
                QStringLiteral("Haus"))
                << source << target;
        }
    }
}

TEST_F(GlossaryStoreTest, hasNoMatchesForUnknownLanguages)
{
    write(QStringLiteral("de-en.tsv"), "Haus\thouse\t30.0\n");
    const QStringList lines{QStringLiteral("Haus"), QStringLiteral("Haus")};
    EXPECT_THAT(matches(store, lines, german, QStringLiteral("Klingon")),
                ElementsAre(std::nullopt, std::nullopt));
    EXPECT_THAT(matches(store, lines, QStringLiteral("Klingon"), english),
                ElementsAre(std::nullopt, std::nullopt));
    EXPECT_THAT(matches(store, lines, german, anyLanguage),
                ElementsAre(std::nullopt, std::nullopt));
    EXPECT_THAT(matches(store, {}, german, english), IsEmpty());
}

TEST_F(GlossaryStoreTest, hasNoDictionaryOfALanguageIntoItself)
{
    write(QStringLiteral("en-en.tsv"), "lift\televator\t30.0\n");
    EXPECT_EQ(hint(QStringLiteral("lift"), QStringLiteral("en-GB"), QStringLiteral("en-US")),
              QString());
    EXPECT_EQ(hint(QStringLiteral("lift"), anyLanguage, QStringLiteral("en-US")), QString());
}

TEST_F(GlossaryStoreTest, looksIntoAllDictionariesOfTheTargetForASourceToBeDetected)
{
    write(QStringLiteral("de-en.tsv"), "mal\ttimes\t30.0\nmais\tmaize\t12.0\nrot\tred\t21.0\n");
    write(QStringLiteral("fr-en.tsv"), "mal\tbadly\t30.0\nmais\tbut\t30.0\n");
    write(QStringLiteral("en-de.tsv"), "rot\tFäulnis\t99.0\n");
    write(QStringLiteral("-en.tsv"), "rot\tempty\t99.0\n");
    write(QStringLiteral("it-en.tsv.tmp"), "rot\tunfinished\t99.0\n");
    write(QStringLiteral("es-en.txt"), "rot\tother\t99.0\n");
    ASSERT_TRUE(QDir(folder.path()).mkdir(QStringLiteral("pt-en.tsv")));
    for (const char* source : {"Any Language", "auto", " Detect "}) {
        const QString any = QString::fromUtf8(source);
        const QString target = QStringLiteral("English (UK)");
        EXPECT_EQ(hint(QStringLiteral("mais"), any, target), QStringLiteral("but"));
        EXPECT_EQ(hint(QStringLiteral("mal"), any, target), QStringLiteral("times"));
        EXPECT_EQ(hint(QStringLiteral("rot"), any, target), QStringLiteral("red"));
    }
}

TEST_F(GlossaryStoreTest, skipsDictionariesThatCannotBeReadAmongOthers)
{
    write(QStringLiteral("cs-en.tsv"), "rot\t\xff\t99.0\n");
    write(QStringLiteral("de-en.tsv"), "rot\tred\t21.0\n");
    EXPECT_EQ(hint(QStringLiteral("rot"), anyLanguage, english), QStringLiteral("red"));
}

TEST_F(GlossaryStoreTest, hasNoMatchesWithoutTheFileOrTheFolder)
{
    EXPECT_EQ(hint(QStringLiteral("Haus"), german, english), QString());
    GlossaryStore nowhere(folder.filePath(QStringLiteral("none")));
    EXPECT_EQ(hint(nowhere, QStringLiteral("Haus"), german, english), QString());
    EXPECT_EQ(hint(nowhere, QStringLiteral("Haus"), anyLanguage, english), QString());
}

TEST_F(GlossaryStoreTest, readsAFileAgainThatCouldNotBeRead)
{
    write(QStringLiteral("de-en.tsv"), "Haus\thouse\xff\t30.0\n");
    EXPECT_EQ(hint(QStringLiteral("Haus"), german, english), QString());
    write(QStringLiteral("de-en.tsv"), "Haus\thouse\t30.0\n");
    EXPECT_EQ(hint(QStringLiteral("Haus"), german, english), QStringLiteral("house"));
}

TEST_F(GlossaryStoreTest, keepsADictionaryUntilItIsInvalidated)
{
    write(QStringLiteral("de-en.tsv"), "Haus\thouse\t30.0\n");
    EXPECT_EQ(hint(QStringLiteral("Haus"), german, english), QStringLiteral("house"));
    write(QStringLiteral("de-en.tsv"), "Haus\thome\t30.0\n");
    EXPECT_EQ(hint(QStringLiteral("Haus"), german, english), QStringLiteral("house"));
    await(store.invalidate(QStringLiteral("fr-en")));
    EXPECT_EQ(hint(QStringLiteral("Haus"), german, english), QStringLiteral("house"));

    // Nobody has to wait for the end of it.
    store.invalidate(QStringLiteral("de-en"));
    EXPECT_EQ(hint(QStringLiteral("Haus"), german, english), QStringLiteral("home"));

    remove(QStringLiteral("de-en.tsv"));
    await(store.invalidate(QStringLiteral("de-en")));
    EXPECT_EQ(hint(QStringLiteral("Haus"), german, english), QString());
}

TEST_F(GlossaryStoreTest, forgetsADictionaryThatAnotherProcessHasDeleted)
{
    write(QStringLiteral("de-en.tsv"), "Haus\thouse\t30.0\n");
    EXPECT_EQ(hint(QStringLiteral("Haus"), german, english), QStringLiteral("house"));
    remove(QStringLiteral("de-en.tsv"));
    EXPECT_EQ(hint(QStringLiteral("Haus"), german, english), QString());
    write(QStringLiteral("de-en.tsv"), "Haus\thome\t30.0\n");
    EXPECT_EQ(hint(QStringLiteral("Haus"), german, english), QStringLiteral("home"));
}

/// Loads that wait until they are let go, and are counted.
class GlossaryLoads : public GlossaryStoreTest
{
protected:
    GlossaryLoads() { write(QStringLiteral("de-en.tsv"), "Haus\thouse\t30.0\n"); }
    ~GlossaryLoads() override { letGo(); }

    void letGo()
    {
        if (!isOpen) {
            isOpen = true;
            gate.set_value();
        }
    }

    QCoro::Task<GlossaryStore::Matches> look(std::stop_token stop = {})
    {
        return slow->matches({QStringLiteral("Haus")}, german, english, stop);
    }

    std::atomic<int> loads = 0;
    std::atomic<bool> isElsewhere = false;
    bool isOpen = false;
    std::promise<void> gate;
    std::shared_future<void> opened{gate.get_future()};
    std::unique_ptr<GlossaryStore> slow = std::make_unique<GlossaryStore>(
        folder.path(),
        [this, here = QThread::currentThread()](const QString& path, const std::stop_token& stop) {
            ++loads;
            isElsewhere = QThread::currentThread() != here;
            while (!stop.stop_requested() &&
                   opened.wait_for(std::chrono::milliseconds(1)) != std::future_status::ready) {
            }
            return loadGlossary(path, stop);
        });
};

TEST_F(GlossaryLoads, happenOnceForAllWhoAskMeanwhile)
{
    auto first = look();
    auto second = look();
    // This thread goes on while the file is read.
    ASSERT_TRUE(waitUntil([this] { return loads == 1; }));
    EXPECT_FALSE(first.isReady());
    letGo();
    EXPECT_TRUE(await(std::move(first)).at(0));
    EXPECT_TRUE(await(std::move(second)).at(0));
    EXPECT_TRUE(await(look()).at(0));
    EXPECT_EQ(loads, 1);
    EXPECT_TRUE(isElsewhere);
}

TEST_F(GlossaryLoads, areNotCutShortByOneWhoStopsWaiting)
{
    std::stop_source stop;
    auto stopped = look(stop.get_token());
    auto other = look();
    ASSERT_TRUE(waitUntil([this] { return loads == 1; }));
    stop.request_stop();
    EXPECT_THROW(await(std::move(stopped)), CancellationError);
    letGo();
    EXPECT_TRUE(await(std::move(other)).at(0));
    EXPECT_EQ(loads, 1);
}

TEST_F(GlossaryLoads, endWithTheStore)
{
    auto waiting = look();
    ASSERT_TRUE(waitUntil([this] { return loads == 1; }));
    slow.reset(); // the gate is still closed
    EXPECT_THROW(await(std::move(waiting)), CancellationError);
}

TEST_F(GlossaryLoads, thatFailForWantOfMemoryMeanNoMatches)
{
    GlossaryStore poor(folder.path(),
                       [](const QString&, const std::stop_token&) -> GlossaryDictionary {
                           throw std::bad_alloc();
                       });
    EXPECT_EQ(hint(poor, QStringLiteral("Haus"), german, english), QString());
}

TEST_F(GlossaryStoreTest, lookUpsStopWhenAsked)
{
    write(QStringLiteral("de-en.tsv"), "Haus\thouse\t30.0\n");
    std::stop_source stop;
    stop.request_stop();
    EXPECT_THROW(await(store.matches({QStringLiteral("Haus")}, german, english, stop.get_token())),
                 CancellationError);
}

TEST_F(GlossaryStoreTest, looksUpManyLines)
{
    write(QStringLiteral("de-en.tsv"), "Haus\thouse\t30.0\n");
    const QStringList lines(10'000, QStringLiteral("Haus"));
    const auto found = matches(store, lines, german, english);
    EXPECT_THAT(found, SizeIs(10'000));
    EXPECT_THAT(found, Each(found.front()));
}

} // namespace
} // namespace zelvane::test
