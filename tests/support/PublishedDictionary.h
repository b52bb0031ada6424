#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <functional>

namespace zelvane::test {

/// The table of a published dictionary.
inline constexpr const char* publishedTable =
    "create table simple_translation(written_rep text, trans_list, max_score, rel_importance);";

/// Makes an SQLite database at `path` with SQLite itself, by running `sql`; one that is there is
/// changed. Fails the test if SQLite doesn't take it.
void makeDatabase(const QString& path, const QByteArray& sql);

/// A published dictionary with these rows, such as "('Haus', 'house | home', 20.5, 0.1)".
void makeDictionary(const QString& path, const QByteArray& rows);

/// A published dictionary with `count` rows, half of them below the minimum score.
void makeLargeDictionary(const QString& path, int count);

/// Calls `look` while the database at `path` is being changed by `sql`, with a part of the change
/// written to the file and the rest not. The change is given up then.
void inTheMiddleOfAChange(const QString& path, const QByteArray& sql,
                          const std::function<void()>& look);

/// The bytes of a file; null if there is none.
[[nodiscard]] QByteArray contentsOf(const QString& path);
/// Replaces the bytes of a file.
void writeFile(const QString& path, const QByteArray& bytes);
/// The names in a folder, hidden ones too, in ascending order.
[[nodiscard]] QStringList namesIn(const QString& folder);

} // namespace zelvane::test
