#include "glossary/DictionaryConversion.h"

#include "foundation/DescribedError.h"
#include "glossary/DictionaryReader.h"
#include "glossary/GlossaryError.h"
#include "settings/DurableFile.h"
#include "support/PublishedDictionary.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>
#include <QtEndian>

#include <csignal>

#include <sys/resource.h>
#include <sys/stat.h>

namespace zelvane::test {
namespace {

class DictionaryConversion : public ::testing::Test
{
protected:
    QString path(const char* name) const { return folder.filePath(QString::fromUtf8(name)); }

    /// What comes of a database with these rows.
    QByteArray converted(const QByteArray& rows)
    {
        makeDictionary(database, rows);
        convert();
        return contentsOf(tsv);
    }

    void convert(const std::stop_token& stop = {}) { convertDictionary(database, tsv, stop); }

    /// The reason why the database can't be made use of; empty if it can.
    std::string refusal()
    {
        try {
            convert();
        } catch (const GlossaryError& error) {
            EXPECT_EQ(error.code(), GlossaryError::Code::preparationFailed);
            return error.payload().toStdString();
        }
        return {};
    }

    QTemporaryDir folder;
    QString database = path("published.sqlite3");
    QString tsv = path("de-en.tsv");
};

TEST_F(DictionaryConversion, writesOneLineForEachRowInTheOrderOfTheDatabase)
{
    EXPECT_EQ(converted("('Haus', 'house | home', 20.5, 0.3), ('ähnlich', 'similar', 4, 0.1),"
                        "('Baum', 'tree', 2.0, null)"),
              "Haus\thouse | home\t20.5\nähnlich\tsimilar\t4.0\nBaum\ttree\t2.0\n");
    EXPECT_EQ(namesIn(folder.path()),
              (QStringList{QStringLiteral("de-en.tsv"), QStringLiteral("published.sqlite3")}));
}

TEST_F(DictionaryConversion, leavesOutLowScores)
{
    EXPECT_EQ(converted("('a', 'b', 1.99, 0), ('c', 'd', null, 0), ('e', 'f', 2, 0),"
                        "('g', 'h', -30, 0)"),
              "e\tf\t2.0\n");
}

TEST_F(DictionaryConversion, roundsScoresToOneDigit)
{
    EXPECT_EQ(converted("('a', 'b', 19.96, 0), ('c', 'd', 19.949, 0), ('e', 'f', 2.25, 0),"
                        "('g', 'h', 123456, 0), ('i', 'j', 9e999, 0)"),
              "a\tb\t20.0\nc\td\t19.9\ne\tf\t2.2\ng\th\t123456.0\ni\tj\tinf\n");
}

TEST_F(DictionaryConversion, writesTheLongestScoreThatThereIs)
{
    const QByteArray line = converted("('a', 'b', 1.7976931348623157e308, 0)");
    EXPECT_TRUE(line.startsWith("a\tb\t17976931348623157"));
    EXPECT_EQ(line.size(), 316);
}

TEST_F(DictionaryConversion, leavesOutRowsThatCanNotBeALine)
{
    EXPECT_EQ(converted("('first', '1', 5, 0),"
                        "(null, 'x', 5, 0), ('x', null, 5, 0),"
                        "('x' || char(9), 'x', 5, 0), ('x', 'y' || char(9) || 'z', 5, 0),"
                        "(char(10) || 'x', 'x', 5, 0), ('x', 'y' || char(10), 5, 0),"
                        "('x' || char(0) || 'y', 'x', 5, 0), ('x', 'y' || char(0), 5, 0),"
                        "('last', '2', 5, 0)"),
              "first\t1\t5.0\nlast\t2\t5.0\n");
}

TEST_F(DictionaryConversion, leavesOutTextsThatAreNotUtf8)
{
    EXPECT_EQ(converted("(cast(x'ff41' as text), 'x', 5, 0), ('x', cast(x'41c3' as text), 5, 0),"
                        "('x', x'eda080', 5, 0), (x'c3a4', cast(x'f09f8cb3' as text), 5, 0)"),
              "ä\t🌳\t5.0\n");
}

TEST_F(DictionaryConversion, keepsEmptyTextsCarriageReturnsAndBlanks)
{
    EXPECT_EQ(converted("('', '', 5, 0), (x'', zeroblob(0), 5, 0), ('a' || char(13), ' b ', 5, 0),"
                        "(12, 3.5, 5, 0)"),
              "\t\t5.0\n\t\t5.0\na\r\t b \t5.0\n12\t3.5\t5.0\n");
}

TEST_F(DictionaryConversion, readsADatabaseInUtf16)
{
    makeDatabase(database, QByteArrayLiteral("pragma encoding='UTF-16';") + publishedTable +
                               "insert into simple_translation values ('狗', '🐕 | dog', 21.5, 0)");
    convert();
    EXPECT_EQ(contentsOf(tsv), "狗\t🐕 | dog\t21.5\n");
}

TEST_F(DictionaryConversion, readsWhateverElseThePublishedDatabaseHolds)
{
    makeDatabase(
        database,
        publishedTable +
            QByteArrayLiteral(
                "create table translation(lexentry, sense_num, sense, written_rep text, trans_list,"
                " score, is_good, importance);"
                "create index i on simple_translation(written_rep);"
                "create index j on simple_translation(max_score) where max_score > 1;"
                "create view translation_grouped as select lexentry, written_rep,"
                " group_concat(trans_list) from translation group by 1, 2;"
                "create virtual table search using fts5(written_rep);"
                "create trigger t after insert on translation begin select 1; end;"
                "pragma journal_mode=wal;"
                "insert into simple_translation values ('Haus', 'house', 20, 0.5)"));
    convert();
    EXPECT_EQ(contentsOf(tsv), "Haus\thouse\t20.0\n");
}

TEST_F(DictionaryConversion, takesAPathOfAnyCharacters)
{
    const QString odd = path("50% ?mode=rwc#x ü'\".sqlite3");
    makeDictionary(odd, "('a', 'b', 3, 0)");
    convertDictionary(odd, tsv, {});
    EXPECT_EQ(contentsOf(tsv), "a\tb\t3.0\n");
}

TEST_F(DictionaryConversion, replacesAnEarlierFile)
{
    writeFile(tsv, "earlier\n");
    writeFile(path(".de-en.tsv.tmp"), "of a run that was killed");
    EXPECT_EQ(converted("('a', 'b', 3, 0)"), "a\tb\t3.0\n");
    EXPECT_EQ(namesIn(folder.path()).size(), 2);
}

TEST_F(DictionaryConversion, writesMoreThanTheBufferHolds)
{
    makeDatabase(database,
                 publishedTable +
                     QByteArrayLiteral("insert into simple_translation with recursive n(i) as"
                                       " (select 1 union all select i + 1 from n where i < 3000)"
                                       " select i, printf('%.*c', 3000 + i, 'x'), 2.5, 0 from n"));
    convert();
    const QByteArray lines = contentsOf(tsv);
    EXPECT_GT(lines.size(), 3 * 0x400000);
    const QByteArrayList each = lines.split('\n');
    ASSERT_EQ(each.size(), 3001);
    for (qsizetype i = 1; i <= 3000; ++i) {
        ASSERT_TRUE(each[i - 1] ==
                    QByteArray::number(i) + '\t' + QByteArray(3000 + i, 'x') + "\t2.5")
            << i;
    }
}

TEST_F(DictionaryConversion, takesTextsUpToAMebibyte)
{
    const QByteArray longest(1024 * 1024 - 100, 'x');
    EXPECT_TRUE(converted("('a', '" + longest + "', 5, 0), ('" + longest + "', 'b', 5, 0)") ==
                "a\t" + longest + "\t5.0\n" + longest + "\tb\t5.0\n");
}

TEST_F(DictionaryConversion, refusesADictionaryWithoutAUsableRowAndKeepsTheEarlierFile)
{
    writeFile(tsv, "earlier\n");
    makeDictionary(database, "('a', 'b', 1.9, 0), (null, 'b', 5, 0), ('a', 'x' || char(9), 5, 0)");
    EXPECT_EQ(refusal(), "empty dictionary");
    EXPECT_EQ(contentsOf(tsv), "earlier\n");
    makeDatabase(path("none.sqlite3"), publishedTable);
    database = path("none.sqlite3");
    EXPECT_EQ(refusal(), "empty dictionary");
    EXPECT_EQ(contentsOf(tsv), "earlier\n");
}

TEST_F(DictionaryConversion, saysWhatIsWrongWithTheFile)
{
    EXPECT_EQ(refusal(), "sqlite open failed");
    writeFile(database, "");
    EXPECT_EQ(refusal(), "no such table: simple_translation");
    makeDatabase(database, "create table simple_translation(written_rep, trans_list)");
    EXPECT_EQ(refusal(), "no such column: max_score");
    writeFile(database, QByteArray(8192, '\x5a')); // encrypted ones look like this
    EXPECT_EQ(refusal(), "file is not a database");
    writeFile(database, "<html>Not found</html>");
    EXPECT_EQ(refusal(), "file is not a database");
    EXPECT_EQ(namesIn(folder.path()), QStringList{QStringLiteral("published.sqlite3")});
}

TEST_F(DictionaryConversion, refusesATruncatedDatabaseWholly)
{
    makeLargeDictionary(database, 20'000);
    const QByteArray whole = contentsOf(database);
    writeFile(tsv, "earlier\n");
    writeFile(database, whole.first(whole.size() / 2));
    EXPECT_EQ(refusal(), "database disk image is malformed");
    writeFile(database, whole.chopped(1));
    EXPECT_EQ(refusal(), "incomplete file");
    writeFile(database, whole.first(50));
    EXPECT_EQ(refusal(), "database disk image is malformed");
    EXPECT_TRUE(contentsOf(tsv) == "earlier\n");
    EXPECT_EQ(namesIn(folder.path()).size(), 2);
}

TEST_F(DictionaryConversion, refusesADatabaseThatIsDamagedInTheMiddle)
{
    makeLargeDictionary(database, 20'000);
    QByteArray damaged = contentsOf(database);
    damaged.replace(damaged.size() / 2 / 4096 * 4096, 4096, QByteArray(4096, '\xff'));
    writeFile(database, damaged);
    EXPECT_EQ(refusal(), "database disk image is malformed");
    EXPECT_EQ(namesIn(folder.path()), QStringList{QStringLiteral("published.sqlite3")});
}

TEST_F(DictionaryConversion, refusesAViewInPlaceOfTheTable)
{
    makeDatabase(database, "create table t(a, b, c); insert into t values ('a', 'b', 5);"
                           "create view simple_translation(written_rep, trans_list, max_score) as"
                           " select a, b, c from t");
    EXPECT_NE(refusal(), "");
    database = path("endless.sqlite3");
    makeDatabase(database, "create view simple_translation(written_rep, trans_list, max_score) as"
                           " with recursive n(i) as (select 1 union all select i + 1 from n)"
                           " select hex(randomblob(1000000)), 'x', 5 from n");
    EXPECT_NE(refusal(), "");
}

TEST_F(DictionaryConversion, refusesAVirtualTableInPlaceOfTheTable)
{
    makeDatabase(database, "create virtual table simple_translation using"
                           " fts5(written_rep, trans_list, max_score);"
                           "insert into simple_translation values ('a', 'b', 5)");
    EXPECT_EQ(refusal(), "no such module: fts5");
}

TEST_F(DictionaryConversion, refusesComputedColumns)
{
    // A single call of this function would take hours, even for the program that makes the file.
    makeDatabase(
        database,
        "create table simple_translation(written_rep, max_score);"
        "insert into simple_translation values ('a', 5);"
        "pragma writable_schema=on;"
        "update sqlite_schema set sql = 'create table simple_translation(written_rep, max_score,"
        " trans_list generated always as"
        " (instr(zeroblob(500000000), zeroblob(250000000) || 1)) virtual)'");
    EXPECT_EQ(refusal(), "computed columns");
}

/// A dictionary with this number of other definitions, which SQLite reads before anything else.
QByteArray dictionaryWithDefinitions(int count)
{
    return publishedTable +
           QByteArrayLiteral("insert into simple_translation values ('a', 'b', 5, 0);"
                             "pragma writable_schema=on;"
                             "insert into sqlite_schema with recursive n(i) as"
                             " (select 1 union all select i + 1 from n where i < ") +
           QByteArray::number(count) +
           ") select 'view', 'v' || i, 'v' || i, 0, 'create view v' || i || ' as select 1' from n";
}

TEST_F(DictionaryConversion, refusesMoreDefinitionsThanADictionaryCanHave)
{
    makeDatabase(database, dictionaryWithDefinitions(1000));
    EXPECT_EQ(refusal(), "");
    database = path("many.sqlite3");
    makeDatabase(database, dictionaryWithDefinitions(5000));
    EXPECT_EQ(refusal(), "too many tables");
}

TEST_F(DictionaryConversion, refusesViewsThatMultiply)
{
    QByteArray sql = "pragma synchronous=off; create table v0(written_rep, trans_list, max_score);";
    for (int i = 1; i <= 40; ++i) {
        const QByteArray name = i == 40 ? "simple_translation" : "v" + QByteArray::number(i);
        const QByteArray before = "v" + QByteArray::number(i - 1);
        sql += "create view " + name + " as select a.* from " + before + " a, " + before + " b;";
    }
    makeDatabase(database, sql);
    EXPECT_NE(refusal(), "");
}

TEST_F(DictionaryConversion, refusesHugeValues)
{
    writeFile(tsv, "earlier\n");
    makeDictionary(database, "('a', 'b', 5, 0), ('b', hex(zeroblob(3000000)), 5, 0)");
    EXPECT_EQ(refusal(), "string or blob too big");
    EXPECT_EQ(contentsOf(tsv), "earlier\n");
}

/// The inner pages of the tables of a database with one table, the root first.
QList<qsizetype> innerPages(const QByteArray& database, qsizetype pageSize)
{
    constexpr char innerPageOfTable = 5;
    QList<qsizetype> pages;
    for (qsizetype page = pageSize; page < database.size(); page += pageSize) {
        if (database[page] == innerPageOfTable) {
            pages += page;
        }
    }
    return pages;
}

/// Makes every way through the table's inner pages lead through a line of them and to one leaf, so
/// that the same rows come up again and again, an astronomical number of times.
QByteArray withRepeatedPages(QByteArray database, qsizetype pageSize)
{
    const auto number = [&](qsizetype at) {
        return uchar(database[at]) * 256 + uchar(database[at + 1]);
    };
    const auto pageNumber = [&](qsizetype page) {
        const quint32 value = qToBigEndian(quint32(page / pageSize + 1));
        return QByteArray(reinterpret_cast<const char*>(&value), sizeof value);
    };
    const QList<qsizetype> pages = innerPages(database, pageSize);
    const QByteArray leaf = database.sliced(pages.last() + 8, 4);
    for (qsizetype i = 0; i < pages.size(); ++i) {
        const bool isLast = i + 1 == pages.size();
        const QByteArray next = isLast ? leaf : pageNumber(pages[i + 1]);
        database.replace(pages[i] + 8, 4, next);
        const int cells = number(pages[i] + 3);
        for (int cell = 0; cell < cells; ++cell) {
            database.replace(pages[i] + number(pages[i] + 12 + qsizetype(2) * cell), 4, next);
        }
    }
    return database;
}

TEST_F(DictionaryConversion, givesUpOnADatabaseThatRepeatsItsRowsForever)
{
    constexpr qsizetype pageSize = 512;
    makeDatabase(database, "pragma page_size=512; vacuum");
    makeLargeDictionary(database, 4'000);
    ASSERT_GT(innerPages(contentsOf(database), pageSize).size(), 5);
    writeFile(database, withRepeatedPages(contentsOf(database), pageSize));
    EXPECT_EQ(refusal(), "more text than its size");

    makeDatabase(path("low.sqlite3"), "pragma page_size=512; vacuum");
    database = path("low.sqlite3");
    makeLargeDictionary(database, 4'000);
    makeDatabase(database, "update simple_translation set max_score = 1");
    writeFile(database, withRepeatedPages(contentsOf(database), pageSize));
    EXPECT_EQ(refusal(), "empty dictionary");
    EXPECT_EQ(namesIn(folder.path()).filter(QStringLiteral("tsv")), QStringList());
}

TEST_F(DictionaryConversion, neverWritesToTheDatabaseNorBesideIt)
{
    // The state of the files in the middle of a change: opened as usual, SQLite would play the
    // journal back into the database.
    const QString changing = path("changing.sqlite3");
    makeLargeDictionary(changing, 2'000);
    inTheMiddleOfAChange(changing, "update simple_translation set trans_list = 'changed'", [&] {
        ASSERT_TRUE(QFile::copy(changing, database));
        ASSERT_TRUE(QFile::copy(changing + QStringLiteral("-journal"),
                                database + QStringLiteral("-journal")));
    });
    const QByteArray before = contentsOf(database);
    const QByteArray journal = contentsOf(database + QStringLiteral("-journal"));
    ASSERT_GT(journal.size(), 4096);
    writeFile(database + QStringLiteral("-wal"), QByteArray(100, 'w'));
    const QStringList names = namesIn(folder.path());

    convert();

    EXPECT_TRUE(contentsOf(database) == before);
    EXPECT_TRUE(contentsOf(database + QStringLiteral("-journal")) == journal);
    EXPECT_EQ(namesIn(folder.path()).filter(QStringLiteral("sqlite3")), names);
}

TEST_F(DictionaryConversion, readsADatabaseThatItMayNotWriteTo)
{
    makeDictionary(database, "('a', 'b', 5, 0)");
    const QString locked = path("locked");
    ASSERT_TRUE(QDir().mkdir(locked));
    ASSERT_TRUE(QFile::rename(database, locked + QStringLiteral("/x.sqlite3")));
    ::chmod(locked.toUtf8().constData(), 0500);
    convertDictionary(locked + QStringLiteral("/x.sqlite3"), tsv, {});
    ::chmod(locked.toUtf8().constData(), 0700);
    EXPECT_EQ(contentsOf(tsv), "a\tb\t5.0\n");
}

TEST_F(DictionaryConversion, stopsAtOnce)
{
    makeLargeDictionary(database, 20'000);
    writeFile(tsv, "earlier\n");
    std::stop_source stop;
    stop.request_stop();
    EXPECT_THROW(convert(stop.get_token()), CancellationError);
    EXPECT_EQ(contentsOf(tsv), "earlier\n");
    EXPECT_EQ(namesIn(folder.path()).size(), 2);
}

TEST_F(DictionaryConversion, stopsInTheMiddle)
{
    makeLargeDictionary(database, 10'000);
    std::stop_source stop;
    DictionaryReader reader(database, stop.get_token());
    ASSERT_TRUE(reader.next());
    stop.request_stop();
    int rows = 0;
    const auto readOn = [&] {
        while (reader.next()) {
            ++rows;
        }
    };
    EXPECT_THROW(readOn(), CancellationError);
    EXPECT_LT(rows, 500);
}

/// Until destroyed, no file of the process grows beyond a size.
class FileSizeLimit
{
public:
    explicit FileSizeLimit(rlim_t bytes)
    {
        ::getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit limit{bytes, m_before.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &limit);
        m_handler = std::signal(SIGXFSZ, SIG_IGN);
    }
    ~FileSizeLimit()
    {
        ::setrlimit(RLIMIT_FSIZE, &m_before);
        std::signal(SIGXFSZ, m_handler);
    }
    Q_DISABLE_COPY_MOVE(FileSizeLimit)

private:
    rlimit m_before{};
    void (*m_handler)(int) = nullptr;
};

TEST_F(DictionaryConversion, leavesNothingBehindOnAFullDisk)
{
    makeLargeDictionary(database, 20'000);
    writeFile(tsv, "earlier\n");
    const FileSizeLimit limit(100'000);
    try {
        convert();
        FAIL() << "nothing failed";
    } catch (const FileError& error) {
        EXPECT_EQ(error.description(), path(".de-en.tsv.tmp") + QStringLiteral(": File too large"));
    }
    EXPECT_EQ(contentsOf(tsv), "earlier\n");
    EXPECT_EQ(namesIn(folder.path()).size(), 2);
}

TEST_F(DictionaryConversion, failsIfTheFolderIsMissing)
{
    makeDictionary(database, "('a', 'b', 5, 0)");
    tsv = path("missing/de-en.tsv");
    EXPECT_THROW(convert(), FileError);
}

TEST_F(DictionaryConversion, failsIfSomethingElseHasTheName)
{
    makeDictionary(database, "('a', 'b', 5, 0)");
    ASSERT_TRUE(QDir().mkpath(tsv + QStringLiteral("/inside")));
    EXPECT_THROW(convert(), FileError);
    EXPECT_EQ(namesIn(folder.path()).size(), 2);
}

} // namespace
} // namespace zelvane::test
