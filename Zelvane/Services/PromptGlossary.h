#pragma once

#include <QLocale>
#include <QMap>
#include <QString>
#include <QStringList>

namespace zelvane {

/// Term to candidate translations, the best first; in the order of the terms.
using GlossaryHints = QMap<QString, QStringList>;

/// The hints whose term occurs in a line, case ignored by the rules of `locale`.
[[nodiscard]] GlossaryHints matchingHints(const GlossaryHints& hints, const QStringList& lines,
                                          const QLocale& locale);

/// At most 20 sentences, each telling the best translation of a term.
[[nodiscard]] QStringList referenceLines(const GlossaryHints& hints, const QStringList& lines,
                                         const QLocale& locale);

/// At most 40 terms with up to three translations each, as a paragraph of a prompt. Empty if no
/// term occurs.
[[nodiscard]] QString dictionaryBlock(const GlossaryHints& hints, const QStringList& lines,
                                      const QLocale& locale);

} // namespace zelvane
