#include "Services/OfflineTranslator.h"

#include "Services/ModelOutput.h"
#include "Services/PromptGlossary.h"
#include "Services/StructuredDocument.h"
#include "Services/TextChunks.h"
#include "foundation/Concurrently.h"
#include "foundation/Text.h"
#include "pipeline/TranslationError.h"

#include <QLocale>

#include <algorithm>

namespace zelvane {

namespace {

constexpr int installedRevision = 1;
constexpr std::size_t maximalInFlight = 4; // the server works on as many at once
constexpr int maximalDepth = 4;

qsizetype linesPerChunk(SmartOfflineVariant variant)
{
    return variant == SmartOfflineVariant::lmt60_4b ? 6 : 25;
}

QList<qsizetype> filledPositions(const QStringList& lines)
{
    QList<qsizetype> positions;
    for (qsizetype i = 0; i < lines.size(); ++i) {
        if (!isBlankLine(lines[i])) {
            positions += i;
        }
    }
    return positions;
}

/// The text inside a code fence, which models and web pages like to put around JSON.
QString withoutFence(const QString& text)
{
    QStringView inner = text;
    if (inner.startsWith(u"```")) {
        inner = inner.sliced(3);
        if (inner.startsWith(u"json") || inner.startsWith(u"JSON")) {
            inner = inner.sliced(4);
        }
        if (inner.endsWith(u"```")) {
            inner.chop(3);
        }
    }
    return text::trimmed(inner.toString());
}

/// What identifiers and codes don't contain.
bool isOfProse(char32_t codePoint)
{
    return text::isWhiteSpace(codePoint) || (codePoint > 0x7f && QChar::isLetter(codePoint));
}

std::vector<DocumentString> translatableStrings(const StructuredDocument& document)
{
    std::vector<DocumentString> strings = document.strings();
    std::erase_if(strings,
                  [](const DocumentString& leaf) { return !isTranslatableLeaf(leaf.value); });
    return strings;
}

} // namespace

bool isTranslatableLeaf(const QString& value)
{
    const QString trimmed = text::trimmed(value);
    return text::characterCount(trimmed) >= 2 && std::ranges::any_of(trimmed.toUcs4(), isOfProse);
}

OfflineTranslator::OfflineTranslator(CompletionSource& source)
    : m_source(source)
{
}

QCoro::Task<QString> OfflineTranslator::translate(TranslationRequest request, std::stop_token stop)
{
    return translateOffline(request.text, request.sourceLanguage, request.targetLanguage,
                            request.systemPrompt, request.glossaryHints, stop);
}

QCoro::Task<QString> OfflineTranslator::translateOffline(QString text, QString sourceLanguage,
                                                         QString targetLanguage,
                                                         QString systemPrompt,
                                                         QMap<QString, QStringList> glossaryHints,
                                                         std::stop_token stop)
{
    co_await requireInstallation(stop);
    co_await m_source.ensureServer(GpuLayers::all, stop);
    const ModelJob job{m_source.variant(), {},           sourceLanguage,
                       targetLanguage,     systemPrompt, glossaryHints};
    const auto document = co_await translateStructured(text, job, stop);
    if (document) {
        co_return *document;
    }
    co_return co_await translatePlain(text, job, stop);
}

/// A status may be stale, "failed" for instance: the record on the disk has the last word.
QCoro::Task<void> OfflineTranslator::requireInstallation(std::stop_token stop)
{
    if (m_source.status() == EngineStatus(engine_status::Ready{})) {
        co_return;
    }
    const auto revision = co_await m_source.recordedRevision(stop);
    if (revision != installedRevision) {
        throw TranslationError(TranslationError::Code::offlineEngineMissing);
    }
}

QCoro::Task<QString> OfflineTranslator::translatePlain(QString text, ModelJob job,
                                                       std::stop_token stop)
{
    const QList<QStringList> chunks = chunkLines(text.split(u'\n'), linesPerChunk(job.variant));
    const std::vector<QStringList> translated = co_await runConcurrently<QStringList>(
        std::size_t(chunks.size()), maximalInFlight,
        [this, chunks, job](std::size_t index, std::stop_token groupStop) {
            return translateLines(chunks[qsizetype(index)], job, 0, groupStop);
        },
        stop);
    QStringList lines;
    for (const QStringList& chunk : translated) {
        lines += chunk;
    }
    const QString translation = lines.join(u'\n');
    if (text::isBlank(translation)) {
        throw TranslationError(TranslationError::Code::badResponse);
    }
    co_return translation;
}

QCoro::Task<std::optional<QString>>
OfflineTranslator::translateStructured(QString text, ModelJob job, std::stop_token stop)
{
    auto document = StructuredDocument::parse(withoutFence(text::trimmed(text)));
    if (!document) {
        co_return std::nullopt;
    }
    const std::vector<DocumentString> leaves = translatableStrings(*document);
    const std::vector<QString> translations = co_await runConcurrently<QString>(
        leaves.size(), maximalInFlight,
        [this, leaves, job](std::size_t index, std::stop_token groupStop) {
            return translateLeaf(leaves[index].value, job, groupStop);
        },
        stop);
    QHash<QString, QString> byPath;
    for (std::size_t i = 0; i < leaves.size(); ++i) {
        byPath.insert(leaves[i].path, translations[i]);
    }
    document->replaceStrings(byPath);
    co_return document->written(text.contains(u'\n') ? StructuredDocument::Layout::indented
                                                     : StructuredDocument::Layout::compact);
}

QCoro::Task<QString> OfflineTranslator::translateLeaf(QString value, ModelJob job,
                                                      std::stop_token stop)
{
    job.glossaryHints = matchingHints(job.glossaryHints, {value}, QLocale::system());
    const QStringList lines = co_await translateLines({value}, job, 0, stop);
    const QString translation = text::trimmed(lines.first());
    co_return translation.isEmpty() ? value : translation;
}

QCoro::Task<QStringList> OfflineTranslator::translateLines(QStringList chunk, ModelJob job,
                                                           int depth, std::stop_token stop)
{
    const QList<qsizetype> positions = filledPositions(chunk);
    if (positions.isEmpty()) {
        co_return std::as_const(chunk);
    }
    job.lines.clear();
    for (const qsizetype position : positions) {
        job.lines += chunk[position];
    }
    std::exception_ptr failure;
    for (const Attempt attempt : {Attempt::first, Attempt::retry}) {
        if (stop.stop_requested()) {
            throw CancellationError();
        }
        try {
            const QString answer = co_await m_source.requestCompletion(job, attempt, stop);
            if (auto translated = mergeModelOutput(answer, chunk, positions)) {
                co_return std::move(*translated);
            }
        } catch (const CancellationError&) {
            throw;
        } catch (...) {
            failure = std::current_exception();
        }
    }
    if (positions.size() >= 2 && depth < maximalDepth) {
        const qsizetype half = chunk.size() / 2;
        const QStringList firstHalf =
            co_await translateLines(chunk.first(half), job, depth + 1, stop);
        const QStringList secondHalf =
            co_await translateLines(chunk.sliced(half), job, depth + 1, stop);
        co_return firstHalf + secondHalf;
    }
    if (failure) {
        std::rethrow_exception(failure);
    }
    throw TranslationError(TranslationError::Code::badResponse);
}

} // namespace zelvane
