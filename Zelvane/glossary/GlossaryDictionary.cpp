#include "glossary/GlossaryDictionary.h"

#include "foundation/Text.h"
#include "glossary/GlossaryTerm.h"
#include "pipeline/TranslationError.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>

namespace zelvane {

namespace {

constexpr char fieldEnd = '\t';
constexpr char recordEnd = '\n';
constexpr char candidateEnd = '|';

constexpr std::string_view byteOrderMark = "\xef\xbb\xbf";

QString fromUtf8(std::string_view bytes)
{
    QString text = QString::fromUtf8(bytes.data(), static_cast<qsizetype>(bytes.size()));
    if (bytes.starts_with(byteOrderMark)) {
        text.prepend(QChar(QChar::ByteOrderMark)); // Qt takes it for the start of a file
    }
    return text;
}

/// Takes the text up to `mark` off the front of `rest`, and the mark with it.
std::string_view takeUpTo(char mark, std::string_view& rest)
{
    const std::string_view piece = rest.substr(0, rest.find(mark));
    rest.remove_prefix(std::min(piece.size() + 1, rest.size()));
    return piece;
}

/// Most blanks are such, and cheaper to drop before anything is made of the rest.
std::string_view withoutBlanks(std::string_view text)
{
    while (text.starts_with(' ')) {
        text.remove_prefix(1);
    }
    while (text.ends_with(' ')) {
        text.remove_suffix(1);
    }
    return text;
}

/// Makes no copy where there is nothing to trim.
QString trimmed(QString text)
{
    const auto isPlain = [](QChar unit) { return unit > u' ' && unit < QChar(0x7f); };
    const bool isTrimmed = isPlain(text.front()) && isPlain(text.back());
    return isTrimmed ? text : text::trimmedWithinLine(text);
}

/// Calls `use` for each candidate until it returns false.
template <typename Use>
void forEachCandidate(std::string_view candidates, const Use& use)
{
    while (!candidates.empty()) {
        const std::string_view piece = withoutBlanks(takeUpTo(candidateEnd, candidates));
        if (piece.empty()) {
            continue;
        }
        const QString candidate = trimmed(fromUtf8(piece));
        if (!candidate.isEmpty() && !use(candidate)) {
            return;
        }
    }
}

bool hasCandidate(std::string_view candidates)
{
    const auto isPlain = [](char c) { return c > ' ' && c < 0x7f && c != candidateEnd; };
    if (std::ranges::any_of(candidates.substr(0, 16), isPlain)) {
        return true;
    }
    bool found = false;
    forEachCandidate(candidates, [&](const QString&) {
        found = true;
        return false;
    });
    return found;
}

double parsedScore(std::string_view text)
{
    if (text.starts_with('+')) {
        text.remove_prefix(1);
    }
    double score = 0;
    const char* const end = text.data() + text.size();
    const auto [read, error] = std::from_chars(text.data(), end, score);
    return error == std::errc() && read == end ? score : 0;
}

/// No record is shorter than this, with the end of its line.
constexpr size_t shortestRecord = std::string_view("t\tc\t\n").size();

std::string_view viewOf(const QByteArray& bytes)
{
    return {bytes.constData(), static_cast<size_t>(bytes.size())};
}

} // namespace

GlossaryEntry::GlossaryEntry(std::string_view candidates, std::string_view score)
    : m_candidates(candidates)
    , m_score(parsedScore(score))
{
}

QStringList GlossaryEntry::candidates() const
{
    QStringList all;
    all.reserve(std::ranges::count(m_candidates.substr(0, 1024), candidateEnd) + 1);
    forEachCandidate(m_candidates, [&](const QString& candidate) {
        all += candidate;
        return true;
    });
    return all;
}

GlossaryDictionary::GlossaryDictionary(QByteArray content, const std::stop_token& stop)
    : m_content(std::move(content))
{
    if (m_content.size() > largestContent || !m_content.isValidUtf8()) {
        throw TranslationError(TranslationError::Code::badResponse);
    }
    readRecords(stop);
}

void GlossaryDictionary::readRecords(const std::stop_token& stop)
{
    const std::string_view all = viewOf(m_content);
    const auto lines = static_cast<size_t>(std::ranges::count(all, recordEnd)) + 1;
    const size_t mostRecords = std::min(lines, all.size() / shortestRecord + 1);
    m_slots.resize(mostRecords + mostRecords / 3 + 1);

    char* next = m_content.data();
    char* const end = next + m_content.size();
    if (all.starts_with(byteOrderMark)) {
        next += byteOrderMark.size();
    }
    constexpr qsizetype bytesBetweenLooks = 64 * 1024;
    const char* look = next;
    std::string key;
    while (next < end) {
        if (next >= look) {
            if (stop.stop_requested()) {
                throw CancellationError();
            }
            look = next + std::min<std::ptrdiff_t>(bytesBetweenLooks, end - next);
        }
        auto* lineEnd = static_cast<char*>(std::memchr(next, recordEnd, size_t(end - next)));
        if (!lineEnd) {
            lineEnd = end;
        }
        if (lineEnd - next <= longestRecord) {
            readRecord(next, lineEnd, key);
        }
        next = lineEnd + 1;
    }
    m_grown.shrink_to_fit();
}

/// Puts the key in the place of the term, so that no other room is needed for it.
void GlossaryDictionary::readRecord(char* begin, char* end, std::string& key)
{
    std::string_view rest(begin, size_t(end - begin));
    const std::string_view term = takeUpTo(fieldEnd, rest);
    const size_t candidatesEnd = rest.find(fieldEnd);
    const bool hasThreeFields = candidatesEnd != std::string_view::npos &&
                                rest.find(fieldEnd, candidatesEnd + 1) == std::string_view::npos;
    if (!hasThreeFields || !hasCandidate(rest.substr(0, candidatesEnd))) {
        return;
    }
    writeGlossaryKey(term, key);
    if (key.size() <= term.size()) {
        char* const place = begin + (term.size() - key.size());
        std::ranges::copy(key, place);
        store(key, quint32(place - m_content.constData()));
        return;
    }
    // Some letters take more bytes in lower case.
    const auto place = quint32(size_t(m_content.size()) + m_grown.size());
    (m_grown += key) += fieldEnd;
    (m_grown += rest) += recordEnd;
    store(key, place);
}

void GlossaryDictionary::store(std::string_view key, quint32 record)
{
    const quint64 hash = m_hash(key);
    Slot& slot = m_slots[slotFor(key, hash)];
    if (slot.record == empty) {
        ++m_size;
    }
    slot = {record, quint32(hash)};
}

std::optional<GlossaryEntry> GlossaryDictionary::find(std::string_view key) const
{
    const Slot& slot = m_slots[slotFor(key, m_hash(key))];
    if (slot.record == empty) {
        return std::nullopt;
    }
    std::string_view rest = textFrom(slot.record).substr(key.size() + 1);
    const std::string_view candidates = takeUpTo(fieldEnd, rest);
    return GlossaryEntry(candidates, takeUpTo(recordEnd, rest));
}

/// The slot that holds the key, or the one that is free for it.
size_t GlossaryDictionary::slotFor(std::string_view key, quint64 hash) const
{
    // There are always free slots, so that this ends.
    size_t index = size_t((hash >> 32) * m_slots.size() >> 32);
    while (true) {
        const Slot& slot = m_slots[index];
        if (slot.record == empty) {
            return index;
        }
        if (slot.hash == quint32(hash)) {
            const std::string_view there = textFrom(slot.record);
            if (there.starts_with(key) && there[key.size()] == fieldEnd) {
                return index;
            }
        }
        index = index + 1 == m_slots.size() ? 0 : index + 1;
    }
}

std::string_view GlossaryDictionary::textFrom(quint32 record) const
{
    const auto contentSize = static_cast<size_t>(m_content.size());
    return record < contentSize ? viewOf(m_content).substr(record)
                                : std::string_view(m_grown).substr(record - contentSize);
}

GlossaryFileError::GlossaryFileError(QString description)
    : m_description(std::move(description))
{
}

GlossaryDictionary loadGlossary(const QString& path, const std::stop_token& stop)
{
    // A pipe, for instance, could keep its reader waiting for ever.
    if (const QFileInfo there(path); there.exists() && !there.isFile()) {
        throw GlossaryFileError(qt_error_string(ENOTSUP));
    }
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        throw GlossaryFileError(file.errorString());
    }
    if (file.size() > GlossaryDictionary::largestContent) {
        throw TranslationError(TranslationError::Code::badResponse);
    }
    QByteArray content = file.read(file.size());
    if (file.error() != QFileDevice::NoError) {
        throw GlossaryFileError(file.errorString());
    }
    return GlossaryDictionary(std::move(content), stop);
}

} // namespace zelvane
