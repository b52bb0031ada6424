#include "support/PublishedDictionary.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>

#include <sqlite3.h>

namespace zelvane::test {

void makeDatabase(const QString& path, const QByteArray& sql)
{
    sqlite3* database = nullptr;
    ASSERT_EQ(sqlite3_open(path.toUtf8().constData(), &database), SQLITE_OK);
    const int result = sqlite3_exec(database, sql.constData(), nullptr, nullptr, nullptr);
    EXPECT_EQ(result, SQLITE_OK) << sqlite3_errmsg(database);
    sqlite3_close(database);
}

void makeDictionary(const QString& path, const QByteArray& rows)
{
    makeDatabase(path, QByteArrayLiteral("pragma synchronous=off;") + publishedTable +
                           QByteArrayLiteral("insert into simple_translation values ") + rows);
}

void makeLargeDictionary(const QString& path, int count)
{
    makeDatabase(path, QByteArrayLiteral("pragma journal_mode=off; pragma synchronous=off;") +
                           publishedTable +
                           "insert into simple_translation "
                           "with recursive numbers(i) as "
                           "(select 1 union all select i + 1 from numbers where i < " +
                           QByteArray::number(count) +
                           ") select 'Wort' || i, 'word ' || i || ' | words ' || i,"
                           " iif(i % 2, 1.5, 20.25), 0.1 from numbers");
}

void inTheMiddleOfAChange(const QString& path, const QByteArray& sql,
                          const std::function<void()>& look)
{
    sqlite3* database = nullptr;
    ASSERT_EQ(sqlite3_open(path.toUtf8().constData(), &database), SQLITE_OK);
    const int result = sqlite3_exec(database, ("pragma cache_size=1; begin;" + sql).constData(),
                                    nullptr, nullptr, nullptr);
    EXPECT_EQ(result, SQLITE_OK) << sqlite3_errmsg(database);
    look();
    sqlite3_close(database);
}

QByteArray contentsOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void writeFile(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly)) << path.toStdString();
    ASSERT_EQ(file.write(bytes), bytes.size());
}

QStringList namesIn(const QString& folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot,
                                  QDir::Name);
}

} // namespace zelvane::test
