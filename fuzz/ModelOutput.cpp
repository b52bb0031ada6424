// Whatever a small model answers, each line that was sent gets something, and every other line
// stays; or the answer is refused. The input is the text and, behind a null character, the answer.

#include "Services/ModelOutput.h"
#include "Services/TextChunks.h"
#include "Survive.h"
#include "foundation/Text.h"

#include <cstdint>

using namespace zelvane;
using zelvane::fuzz::require;

namespace {

void checkCleanUp(const QString& answer)
{
    const QString cleaned = stripReasoning(answer);
    require(text::trimmed(cleaned) == cleaned && cleaned.size() <= answer.size());
}

void checkMerging(const QString& answer, const QStringList& lines)
{
    QList<qsizetype> positions;
    for (qsizetype i = 0; i < lines.size(); ++i) {
        if (!isBlankLine(lines[i])) {
            positions += i;
        }
    }
    const auto merged =
        positions.isEmpty() ? std::nullopt : mergeModelOutput(answer, lines, positions);
    if (!merged) {
        return;
    }
    require(merged->size() == lines.size() && allTargetsFilled(*merged, positions));
    for (qsizetype i = 0; i < lines.size(); ++i) {
        require(positions.contains(i) || (*merged)[i] == lines[i]);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    const QString input = QString::fromUtf8(bytes);
    const QString answer = input.section(QChar(u'\0'), 1);
    checkCleanUp(answer);
    const QStringList lines = input.section(QChar(u'\0'), 0, 0).split(u'\n');
    for (const QStringList& chunk : chunkLines(lines, 6)) {
        checkMerging(answer, chunk);
    }
    return 0;
}
