#include "glossary/DictionaryReader.h"

#include "foundation/DescribedError.h"
#include "glossary/GlossaryError.h"

#include <QFileInfo>
#include <QUrl>

#include <sqlite3.h>

namespace zelvane {

namespace {

constexpr const char* table = "simple_translation";

/// The steps of the database's machine between two pauses: a fraction of a millisecond.
constexpr int stepsPerPause = 1000;

/// Enough to read the definitions of two thousand tables and indexes; a dictionary has dozens. The
/// time that SQLite takes for them grows with the square of their number.
constexpr qint64 pausesForSchema = 20;

/// The smallest row takes some 8 bytes of the file and some 8 steps. A file whose pages lead back
/// to one another may seem to hold any number of rows.
qint64 mostPauses(qint64 fileSize)
{
    constexpr qint64 stepsPerByte = 4;
    constexpr qint64 leastSteps = 1'000'000;
    return (leastSteps + fileSize * stepsPerByte) / stepsPerPause;
}

/// What a statement may do: read the table itself, and look at its columns.
int authorize(void* /*context*/, int action, const char* first, const char* /*second*/,
              const char* /*database*/, const char* viewOrTrigger)
{
    if (viewOrTrigger) {
        return SQLITE_DENY;
    }
    switch (action) {
    case SQLITE_SELECT:
        return SQLITE_OK;
    case SQLITE_READ:
        return first && sqlite3_stricmp(first, table) == 0 ? SQLITE_OK : SQLITE_DENY;
    case SQLITE_PRAGMA:
        return sqlite3_stricmp(first, "table_xinfo") == 0 ||
                       sqlite3_stricmp(first, "page_size") == 0
                   ? SQLITE_OK
                   : SQLITE_DENY;
    default:
        return SQLITE_DENY;
    }
}

/// Null for a NULL, else the bytes of the value as a text.
QByteArrayView textOf(sqlite3_stmt* statement, int column)
{
    const void* bytes = sqlite3_column_text(statement, column); // before the size, which it changes
    if (!bytes) {
        const bool isNull = sqlite3_column_type(statement, column) == SQLITE_NULL;
        return isNull ? QByteArrayView() : QByteArrayView("", qsizetype(0));
    }
    return {static_cast<const char*>(bytes), sqlite3_column_bytes(statement, column)};
}

} // namespace

void DictionaryReader::Close::operator()(sqlite3* database) const
{
    sqlite3_close(database);
}

void DictionaryReader::Close::operator()(sqlite3_stmt* statement) const
{
    sqlite3_finalize(statement);
}

DictionaryReader::DictionaryReader(const QString& path, std::stop_token stop)
    : m_stop(std::move(stop))
    , m_pausesLeft(pausesForSchema)
{
    open(path);
    limit();
    forbidAllButReading();
    m_rows = prepare("select written_rep, trans_list, max_score from simple_translation\n"
                     "where max_score >= " +
                     QByteArray::number(minimumScore, 'f', 1));
    const qint64 size = QFileInfo(path).size();
    m_pausesLeft = mostPauses(size);
    refuseComputedColumns();
    refuseMissingEnd(size);
}

DictionaryReader::~DictionaryReader() = default;

/// Immutable: no locks are taken, and a journal beside the file is not looked at.
void DictionaryReader::open(const QString& path)
{
    const QByteArray address =
        QUrl::fromLocalFile(path).toEncoded() + QByteArrayLiteral("?mode=ro&immutable=1");
    sqlite3* database = nullptr;
    const int result = sqlite3_open_v2(address.constData(), &database,
                                       SQLITE_OPEN_READONLY | SQLITE_OPEN_URI |
                                           SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_PRIVATECACHE,
                                       nullptr);
    m_database.reset(database); // there is one to be closed even after a failure
    if (result != SQLITE_OK) {
        throw GlossaryError::preparationFailed(QStringLiteral("sqlite open failed"));
    }
}

/// Far above what a dictionary needs, and low enough that no single step takes long.
void DictionaryReader::limit()
{
    sqlite3* const database = m_database.get();
    sqlite3_limit(database, SQLITE_LIMIT_LENGTH, longestValue);
    sqlite3_limit(database, SQLITE_LIMIT_SQL_LENGTH, 100'000);
    sqlite3_limit(database, SQLITE_LIMIT_COLUMN, 200);
    sqlite3_limit(database, SQLITE_LIMIT_EXPR_DEPTH, 100);
    sqlite3_limit(database, SQLITE_LIMIT_COMPOUND_SELECT, 50);
    sqlite3_limit(database, SQLITE_LIMIT_VDBE_OP, 25'000);
    sqlite3_limit(database, SQLITE_LIMIT_FUNCTION_ARG, 32);
    sqlite3_limit(database, SQLITE_LIMIT_ATTACHED, 0);
    sqlite3_limit(database, SQLITE_LIMIT_LIKE_PATTERN_LENGTH, 100);
    sqlite3_limit(database, SQLITE_LIMIT_VARIABLE_NUMBER, 10);
    sqlite3_limit(database, SQLITE_LIMIT_TRIGGER_DEPTH, 1);
    sqlite3_limit(database, SQLITE_LIMIT_WORKER_THREADS, 0);
    sqlite3_progress_handler(database, stepsPerPause, &DictionaryReader::pause, this);
}

void DictionaryReader::forbidAllButReading()
{
    sqlite3* const database = m_database.get();
    const auto set = [database](int option, int value) {
        sqlite3_db_config(database, option, value, nullptr);
    };
    set(SQLITE_DBCONFIG_DEFENSIVE, 1);
    set(SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0);
    set(SQLITE_DBCONFIG_WRITABLE_SCHEMA, 0);
    set(SQLITE_DBCONFIG_ENABLE_TRIGGER, 0);
    set(SQLITE_DBCONFIG_ENABLE_VIEW, 0);
    set(SQLITE_DBCONFIG_ENABLE_LOAD_EXTENSION, 0);
    set(SQLITE_DBCONFIG_ENABLE_FTS3_TOKENIZER, 0);
    sqlite3_drop_modules(database, nullptr);
    // A mapped file that somebody shortens ends the process; a page that lies about its cells is
    // found out when it is read.
    sqlite3_exec(database,
                 "pragma mmap_size=0; pragma cell_size_check=on; pragma temp_store=memory", nullptr,
                 nullptr, nullptr);
    sqlite3_set_authorizer(database, authorize, nullptr);
}

DictionaryReader::Statement DictionaryReader::prepare(const QByteArray& sql)
{
    sqlite3_stmt* statement = nullptr;
    if (sqlite3_prepare_v2(m_database.get(), sql.constData(), int(sql.size()), &statement,
                           nullptr) != SQLITE_OK) {
        fail();
    }
    return Statement(statement);
}

/// What a generated column computes is the database's choice, and nothing can interrupt a single
/// function. The authorizer isn't asked about it.
void DictionaryReader::refuseComputedColumns()
{
    constexpr int hidden = 6;
    const Statement columns = prepare(QByteArrayLiteral("pragma table_xinfo(simple_translation)"));
    int result = SQLITE_OK;
    while ((result = sqlite3_step(columns.get())) == SQLITE_ROW) {
        if (sqlite3_column_int(columns.get(), hidden) != 0) {
            throw GlossaryError::preparationFailed(QStringLiteral("computed columns"));
        }
    }
    if (result != SQLITE_DONE) {
        fail();
    }
}

/// The database notices missing pages, but takes zeros for what is missing of the last one.
void DictionaryReader::refuseMissingEnd(qint64 fileSize)
{
    const Statement pageSize = prepare(QByteArrayLiteral("pragma page_size"));
    if (sqlite3_step(pageSize.get()) != SQLITE_ROW) {
        fail();
    }
    if (fileSize % sqlite3_column_int(pageSize.get(), 0) != 0) {
        throw GlossaryError::preparationFailed(QStringLiteral("incomplete file"));
    }
}

std::optional<DictionaryRow> DictionaryReader::next()
{
    switch (sqlite3_step(m_rows.get())) {
    case SQLITE_ROW:
        return DictionaryRow{textOf(m_rows.get(), 0), textOf(m_rows.get(), 1),
                             sqlite3_column_double(m_rows.get(), 2)};
    case SQLITE_DONE:
        return std::nullopt;
    default:
        fail();
    }
}

void DictionaryReader::fail()
{
    if (m_stop.stop_requested()) {
        throw CancellationError();
    }
    if (m_pausesLeft < 0) {
        throw GlossaryError::preparationFailed(m_rows ? QStringLiteral("more rows than its size")
                                                      : QStringLiteral("too many tables"));
    }
    throw GlossaryError::preparationFailed(QString::fromUtf8(sqlite3_errmsg(m_database.get())));
}

int DictionaryReader::pause(void* reader)
{
    auto* const self = static_cast<DictionaryReader*>(reader);
    --self->m_pausesLeft;
    return self->m_stop.stop_requested() || self->m_pausesLeft < 0 ? 1 : 0;
}

} // namespace zelvane
