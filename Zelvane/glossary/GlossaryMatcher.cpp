#include "glossary/GlossaryMatcher.h"

#include "foundation/Text.h"
#include "glossary/GlossaryTerm.h"

#include <algorithm>

namespace zelvane {

GlossaryMatcher::GlossaryMatcher(GlossaryDictionaries dictionaries, const GlossaryLanguage& target)
    : m_dictionaries(std::move(dictionaries))
    , m_keepsCapitals(languageBase(target.code) == u"de") // German writes nouns with a capital
{
}

std::optional<GlossaryMatch> GlossaryMatcher::match(const QString& line)
{
    GlossaryLine split = splitGlossaryLine(line);
    if (split.term.isEmpty()) {
        return std::nullopt;
    }
    const std::optional<GlossaryEntry> entry = bestEntry(split.term);
    if (!entry) {
        return std::nullopt;
    }
    QStringList hints = entry->candidates();
    hints.removeIf([&](const QString& hint) { return text::equalIgnoringCase(hint, split.term); });
    if (hints.isEmpty()) {
        return std::nullopt;
    }
    std::optional<QString> replacement;
    if (entry->score() >= replacingScore) {
        replacement = replacementOf(split.term, hints);
    }
    return GlossaryMatch{std::move(split.prefix), std::move(split.term), std::move(replacement),
                         std::move(hints)};
}

std::optional<GlossaryEntry> GlossaryMatcher::bestEntry(const QString& term)
{
    writeGlossaryKey(QStringView(term), m_key);
    std::optional<GlossaryEntry> best;
    for (const auto& dictionary : m_dictionaries) {
        const std::optional<GlossaryEntry> found = dictionary->find(m_key);
        if (found && (!best || found->score() > best->score())) {
            best = found;
        }
    }
    return best;
}

QString GlossaryMatcher::replacementOf(const QString& term, const QStringList& hints) const
{
    if (m_keepsCapitals || !text::startsLowercase(term)) {
        return hints.first();
    }
    const auto lowercase = std::ranges::find_if(hints, text::startsLowercase);
    return lowercase != hints.end() ? *lowercase : hints.first();
}

} // namespace zelvane
