#pragma once

#include "glossary/GlossaryDictionary.h"
#include "pipeline/Engines.h"
#include "settings/GlossaryLanguage.h"

#include <memory>
#include <string>
#include <vector>

namespace zelvane {

/// The dictionaries that one text is looked up in. The first one wins between equals.
using GlossaryDictionaries = std::vector<std::shared_ptr<const GlossaryDictionary>>;

/// Looks up lines in dictionaries into one language. For one thread at a time.
class GlossaryMatcher
{
public:
    GlossaryMatcher(GlossaryDictionaries dictionaries, const GlossaryLanguage& target);

    /// What the dictionaries know of the line; none if they know nothing but the term itself.
    [[nodiscard]] std::optional<GlossaryMatch> match(const QString& line);

    /// From this score on a term is replaced; below it, its translations are hints only.
    static constexpr double replacingScore = 20.0;

private:
    [[nodiscard]] std::optional<GlossaryEntry> bestEntry(const QString& term);
    [[nodiscard]] QString replacementOf(const QString& term, const QStringList& hints) const;

    GlossaryDictionaries m_dictionaries;
    bool m_keepsCapitals;
    std::string m_key;
};

} // namespace zelvane
