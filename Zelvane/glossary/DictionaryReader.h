#pragma once

#include <QByteArrayView>
#include <QString>

#include <memory>
#include <optional>
#include <stop_token>

struct sqlite3;
struct sqlite3_stmt;

namespace zelvane {

/// A row of a published dictionary, as the database holds it: any bytes. It is valid until the next
/// row is read.
struct DictionaryRow
{
    /// Null if the database has none; an empty text is not null.
    QByteArrayView term;
    QByteArrayView translations;
    double score = 0;
};

/// Reads a published dictionary, an SQLite database, row by row, without trusting it in anything.
///
/// Nothing that the database defines is run: no view, trigger, virtual table, generated column or
/// function. Only the one table is read. The file is never written to, no file beside it is made or
/// read, and the work is limited by the file's size, so that a damaged or hostile one can't hang.
///
/// Blocks: for a worker's thread. Used on one thread.
class DictionaryReader
{
public:
    /// Rows below this score are left out.
    static constexpr double minimumScore = 2.0;
    /// A longer text, in bytes, makes reading fail.
    static constexpr int longestValue = 1024 * 1024;

    /// Throws `GlossaryError` if the file can't be read as a dictionary, or `CancellationError`
    /// once `stop` is asked for.
    DictionaryReader(const QString& path, std::stop_token stop);
    ~DictionaryReader();
    Q_DISABLE_COPY_MOVE(DictionaryReader)

    /// The next row in the database's order; none at the end. Throws like the constructor.
    [[nodiscard]] std::optional<DictionaryRow> next();

private:
    struct Close
    {
        void operator()(sqlite3* database) const;
        void operator()(sqlite3_stmt* statement) const;
    };
    using Statement = std::unique_ptr<sqlite3_stmt, Close>;

    void open(const QString& path);
    void limit();
    void forbidAllButReading();
    [[nodiscard]] Statement prepare(const QByteArray& sql);
    void refuseComputedColumns();
    void refuseMissingEnd(qint64 fileSize);
    [[nodiscard]] DictionaryRow currentRow();
    [[noreturn]] void fail();
    /// Called by the database every now and then; other than 0 ends its work.
    static int pause(void* reader);

    std::stop_token m_stop;
    /// How many more pauses the database may take.
    qint64 m_pausesLeft;
    std::unique_ptr<sqlite3, Close> m_database;
    Statement m_rows;
};

} // namespace zelvane
