#include "Services/PromptGlossary.h"

#include "foundation/Text.h"

#include <algorithm>

namespace zelvane {

namespace {

constexpr qsizetype maximalReferences = 20;
constexpr qsizetype maximalEntries = 40;
constexpr qsizetype maximalCandidates = 3;

/// The first `count` entries.
GlossaryHints first(const GlossaryHints& hints, qsizetype count)
{
    const auto end = std::next(hints.begin(), std::min(count, hints.size()));
    GlossaryHints result;
    for (auto entry = hints.begin(); entry != end; ++entry) {
        result.insert(entry.key(), entry.value());
    }
    return result;
}

} // namespace

GlossaryHints matchingHints(const GlossaryHints& hints, const QStringList& lines,
                            const QLocale& locale)
{
    if (hints.isEmpty()) {
        return {};
    }
    QStringList foldedLines;
    for (const QString& line : lines) {
        foldedLines += text::caseFolded(line, locale);
    }
    GlossaryHints matching;
    for (const auto& [term, candidates] : hints.asKeyValueRange()) {
        const QString foldedTerm = text::caseFolded(term, locale);
        const auto hasTerm = [&](const QString& line) {
            return text::containsCharacters(line, foldedTerm);
        };
        if (std::ranges::any_of(foldedLines, hasTerm)) {
            matching.insert(term, candidates);
        }
    }
    return matching;
}

QStringList referenceLines(const GlossaryHints& hints, const QStringList& lines,
                           const QLocale& locale)
{
    const GlossaryHints told = first(matchingHints(hints, lines, locale), maximalReferences);
    QStringList references;
    for (const auto& [term, candidates] : told.asKeyValueRange()) {
        if (!candidates.isEmpty()) {
            references += term + QStringLiteral(" translates to ") + candidates.first();
        }
    }
    return references;
}

QString dictionaryBlock(const GlossaryHints& hints, const QStringList& lines, const QLocale& locale)
{
    const GlossaryHints told = first(matchingHints(hints, lines, locale), maximalEntries);
    QStringList entries;
    for (const auto& [term, candidates] : told.asKeyValueRange()) {
        entries += term + QStringLiteral(" = ") +
                   candidates.mid(0, maximalCandidates).join(QStringLiteral(" / "));
    }
    if (entries.isEmpty()) {
        return {};
    }
    return QStringLiteral("\nDictionary for terms in this input. Pick one of the listed options "
                          "for each,\ndo not invent another word:\n") +
           entries.join(u'\n') + u'\n';
}

} // namespace zelvane
