#include "glossary/DictionaryConversion.h"

#include "foundation/DescribedError.h"
#include "glossary/DictionaryReader.h"
#include "glossary/GlossaryError.h"
#include "settings/DurableFile.h"

#include <QByteArray>
#include <QFileInfo>

#include <array>
#include <charconv>
#include <limits>

namespace zelvane {

namespace {

/// The lines of a dictionary on their way to the file.
class LineWriter
{
public:
    /// `limit` is the size that the file can't have by right.
    LineWriter(QString path, qint64 limit)
        : m_path(std::move(path))
        , m_left(limit)
    {
        m_buffer.reserve(bufferSize);
    }

    void append(const DictionaryRow& row)
    {
        m_buffer.append(row.term);
        m_buffer.append('\t');
        m_buffer.append(row.translations);
        m_buffer.append('\t');
        appendScore(row.score);
        m_buffer.append('\n');
        m_isEmpty = false;
        if (m_buffer.size() >= bufferSize - reserve) {
            flush();
        }
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
    /// Room for an ordinary line, so that the buffer doesn't grow by the last one.
    static constexpr qsizetype reserve = 0x10000;

    static void check(const std::expected<void, FileFailure>& result)
    {
        if (!result) {
            throw FileError(result.error());
        }
    }

    /// As "%.1f" prints it, whatever the user's decimal point.
    void appendScore(double score)
    {
        std::array<char, std::numeric_limits<double>::max_exponent10 + 8> digits{};
        const auto end =
            std::to_chars(digits.begin(), digits.end(), score, std::chars_format::fixed, 1);
        m_buffer.append(digits.data(), end.ptr - digits.data());
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
        m_left -= m_buffer.size();
        if (m_left < 0) {
            throw GlossaryError::preparationFailed(QStringLiteral("more text than its size"));
        }
        check(m_file->append(m_buffer));
        m_buffer.resize(0); // keeps its memory
    }

    QString m_path;
    qint64 m_left;
    QByteArray m_buffer;
    bool m_isEmpty = true;
    std::optional<DurableFileWriter> m_file;
};

bool fitsInLine(QByteArrayView text)
{
    return !text.isNull() && !text.contains('\t') && !text.contains('\n') && !text.contains('\0') &&
           text.isValidUtf8();
}

/// What a dictionary of this size can say: texts in UTF-16 grow by half. A damaged or hostile one
/// may seem to say it again and again.
qint64 mostText(qint64 databaseSize)
{
    constexpr qint64 least = 1024 * 1024;
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
