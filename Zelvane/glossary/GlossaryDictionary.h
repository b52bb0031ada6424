#pragma once

#include "foundation/DescribedError.h"
#include "glossary/KeyedHash.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <optional>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

namespace zelvane {

/// What a dictionary holds under a term, read from its bytes when it is asked for. Valid as long as
/// the dictionary.
class GlossaryEntry
{
public:
    GlossaryEntry(std::string_view candidates, std::string_view score);

    /// The dictionary's own measure of quality; 0 if it is no number.
    [[nodiscard]] double score() const { return m_score; }
    /// The translations in the order of the file, each trimmed, at least one, none empty.
    [[nodiscard]] QStringList candidates() const;

private:
    std::string_view m_candidates;
    double m_score;
};

/// A dictionary in memory: the bytes of its file, and an index of them. Needs little more room than
/// the file.
class GlossaryDictionary
{
public:
    /// Reads one record from each line: term, translations with '|' between them, and score, with a
    /// tab between each. Lines of any other form, or longer than `longestRecord` bytes, are
    /// skipped; of several records for a term the last one counts.
    ///
    /// Throws `TranslationError` (`badResponse`) if the content isn't UTF-8 or exceeds
    /// `largestContent`, and `CancellationError` when `stop` is asked for.
    explicit GlossaryDictionary(QByteArray content, const std::stop_token& stop = {});

    static constexpr qsizetype largestContent = qsizetype(256) * 1024 * 1024;
    static constexpr qsizetype longestRecord = qsizetype(1024) * 1024;

    /// By the key of a term, as `writeGlossaryKey` makes it.
    [[nodiscard]] std::optional<GlossaryEntry> find(std::string_view key) const;

    /// The number of terms.
    [[nodiscard]] qsizetype size() const { return m_size; }

private:
    /// Where a record lies, and some bits of its key's hash. Records that grew in the making lie
    /// behind the content, in `m_grown`.
    struct Slot
    {
        quint32 record = empty;
        quint32 hash = 0;
    };
    static constexpr quint32 empty = 0xffff'ffff;

    void readRecords(const std::stop_token& stop);
    void readRecord(char* begin, char* end, std::string& key);
    void store(std::string_view key, quint32 record);
    [[nodiscard]] size_t slotFor(std::string_view key, quint64 hash) const;
    /// From the key of a record to the end of all records of its kind.
    [[nodiscard]] std::string_view textFrom(quint32 record) const;

    QByteArray m_content;
    std::string m_grown;
    std::vector<Slot> m_slots;
    qsizetype m_size = 0;
    KeyedHash m_hash;
};

/// A file that could not be read; the description is the system's.
class GlossaryFileError final : public DescribedError
{
public:
    explicit GlossaryFileError(QString description);
    [[nodiscard]] QString description() const override { return m_description; }

private:
    QString m_description;
};

/// The dictionary in a file. Throws `GlossaryFileError`, and what the dictionary throws.
[[nodiscard]] GlossaryDictionary loadGlossary(const QString& path, const std::stop_token& stop);

} // namespace zelvane
