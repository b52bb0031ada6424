#include "glossary/DictionaryConversion.h"

#include "foundation/DescribedError.h"
#include "glossary/DictionaryReader.h"
#include "glossary/GlossaryError.h"
#include "settings/DurableFile.h"

#include <QByteArrayView>
#include <QFileInfo>

#include <algorithm>
#include <charconv>
#include <limits>
#include <memory>
#include <optional>

namespace zelvane {

namespace {

/// As "%.1f" prints it, whatever the user's decimal point; yields the end of the digits.
char* printScore(char* to, char* end, double score)
{
    return std::to_chars(to, end, score, std::chars_format::fixed, 1).ptr;
}

/// The lines of a dictionary on their way to the file.
class LineWriter
{
public:
    /// `limit` is the size that the file can't have by right.
    LineWriter(QString path, qint64 limit)
        : m_path(std::move(path))
        , m_left(limit)
        , m_buffer(std::make_unique_for_overwrite<char[]>(bufferSize))
    {
    }

    void append(const DictionaryRow& row)
    {
        if (bufferSize - m_used < row.term.size() + row.translations.size() + longestRest) {
            flush();
        }
        char* end = std::ranges::copy(row.term, m_buffer.get() + m_used).out;
        *end++ = '\t';
        end = std::ranges::copy(row.translations, end).out;
        *end++ = '\t';
        end = printScore(end, m_buffer.get() + bufferSize, row.score);
        *end++ = '\n';
        m_used = end - m_buffer.get();
        m_isEmpty = false;
    }

    [[nodiscard]] bool isEmpty() const { return m_isEmpty; }

    /// Puts the file in its place.
    void finish()
    {
        flush();
        check(m_file->commit());
    }

private:
    static constexpr qsizetype bufferSize = 0x400000;
    /// Of a line: the largest number with a digit after its point, two tabs and the line break.
    static constexpr qsizetype longestRest = std::numeric_limits<double>::max_exponent10 + 8;
    static_assert(bufferSize >= qsizetype(2) * DictionaryReader::longestValue + longestRest);

    static void check(const std::expected<void, FileFailure>& result)
    {
        if (!result) {
            throw FileError(result.error());
        }
    }

    void flush()
    {
        if (!m_file) {
            auto file = DurableFileWriter::create(m_path, unfinishedFile(m_path));
            if (!file) {
                throw FileError(file.error());
            }
            m_file.emplace(std::move(*file));
        }
        m_left -= m_used;
        if (m_left < 0) {
            throw GlossaryError::preparationFailed(QStringLiteral("more text than its size"));
        }
        check(m_file->append({m_buffer.get(), m_used}));
        m_used = 0;
    }

    QString m_path;
    qint64 m_left;
    std::unique_ptr<char[]> m_buffer;
    qsizetype m_used = 0;
    bool m_isEmpty = true;
    std::optional<DurableFileWriter> m_file;
};

bool fitsInLine(QByteArrayView text)
{
    bool isBroken = text.isNull();
    bool isAscii = true;
    for (const char c : text) {
        isBroken |= c == '\t' || c == '\n' || c == '\0';
        isAscii &= uchar(c) < 0x80;
    }
    return !isBroken && (isAscii || text.isValidUtf8());
}

/// What a dictionary of this size can say: texts in UTF-16 grow by half. A damaged or hostile one
/// may seem to say it again and again.
qint64 mostText(qint64 databaseSize)
{
    constexpr qint64 least = 0x100000;
    return least + 2 * databaseSize;
}

void copyRows(DictionaryReader& reader, LineWriter& lines)
{
    while (const auto row = reader.next()) {
        if (fitsInLine(row->term) && fitsInLine(row->translations)) {
            lines.append(*row);
        }
    }
}

} // namespace

void convertDictionary(const QString& database, const QString& tsv, const std::stop_token& stop)
{
    DictionaryReader reader(database, stop);
    LineWriter lines(tsv, mostText(QFileInfo(database).size()));
    try {
        copyRows(reader, lines);
    } catch (const GlossaryError&) {
        if (!lines.isEmpty()) {
            throw;
        }
    }
    if (lines.isEmpty()) {
        throw GlossaryError::preparationFailed(QStringLiteral("empty dictionary"));
    }
    if (stop.stop_requested()) {
        throw CancellationError();
    }
    lines.finish();
}

QString unfinishedFile(const QString& tsv)
{
    const QFileInfo file(tsv);
    return file.path() + QStringLiteral("/.") + file.fileName() + QStringLiteral(".tmp");
}

} // namespace zelvane
