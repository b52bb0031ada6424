#include "Services/TextChunks.h"

#include "foundation/Text.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace zelvane {

namespace {

// In user-perceived characters.
constexpr qsizetype shortLine = 80;
constexpr qsizetype longLine = 280;
constexpr qsizetype fullChunk = 1200;

struct MeasuredLine
{
    bool isBlank;
    qsizetype length; ///< 0 for a blank line

    [[nodiscard]] bool isLong() const { return length >= longLine; }
};

std::vector<MeasuredLine> measured(const QStringList& lines)
{
    std::vector<MeasuredLine> result;
    result.reserve(size_t(lines.size()));
    for (const QString& line : lines) {
        const bool isBlank = isBlankLine(line);
        result.push_back({isBlank, isBlank ? 0 : text::characterCount(line)});
    }
    return result;
}

/// Many short items, such as the entries of a menu or the rows of a table, lose their context and
/// some of their number when they are sent in bulk.
bool isListOfShortItems(const std::vector<MeasuredLine>& lines)
{
    const auto filled = std::ranges::count(lines, false, &MeasuredLine::isBlank);
    return filled >= 8 && std::ranges::all_of(lines, [](const MeasuredLine& line) {
               return line.length <= shortLine;
           });
}

class Chunker
{
public:
    explicit Chunker(qsizetype maxLines)
        : m_maxLines(maxLines)
    {
    }

    void add(const QString& line, MeasuredLine measure)
    {
        if (mustCloseBefore(measure)) {
            close();
        }
        m_chunk += line;
        m_filled += measure.isBlank ? 0 : 1;
        m_length += measure.length;
        m_holdsLong = m_holdsLong || measure.isLong();
        if (measure.isLong() && m_length >= fullChunk) {
            close();
        }
    }

    [[nodiscard]] QList<QStringList> finish()
    {
        close();
        return std::move(m_chunks);
    }

private:
    [[nodiscard]] bool mustCloseBefore(MeasuredLine line) const
    {
        if (line.isBlank) {
            return false;
        }
        if (m_holdsLong) {
            return true;
        }
        const bool isFull = m_filled >= m_maxLines || m_length >= fullChunk;
        return isFull || (line.isLong() && m_filled >= 1);
    }

    void close()
    {
        if (!m_chunk.isEmpty()) {
            m_chunks += std::exchange(m_chunk, {});
        }
        m_filled = 0;
        m_length = 0;
        m_holdsLong = false;
    }

    qsizetype m_maxLines;
    QList<QStringList> m_chunks;
    QStringList m_chunk;
    qsizetype m_filled = 0; ///< lines of the chunk that aren't blank
    qsizetype m_length = 0; ///< their characters
    bool m_holdsLong = false;
};

} // namespace

bool isBlankLine(const QString& line)
{
    return text::trimmedWithinLine(line).isEmpty();
}

QList<QStringList> chunkLines(const QStringList& lines, qsizetype maxLines)
{
    if (lines.isEmpty()) {
        return {lines};
    }
    const std::vector<MeasuredLine> measures = measured(lines);
    const bool isList = maxLines >= 4 && isListOfShortItems(measures);
    Chunker chunker(isList ? 3 : maxLines);
    for (qsizetype i = 0; i < lines.size(); ++i) {
        chunker.add(lines[i], measures[size_t(i)]);
    }
    return chunker.finish();
}

} // namespace zelvane
