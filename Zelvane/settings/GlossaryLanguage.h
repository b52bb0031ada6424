#pragma once

#include <QList>
#include <QString>

#include <optional>

namespace zelvane {

/// A language that dictionaries and the system's own choice are matched against.
struct GlossaryLanguage
{
    QString code; ///< such as "de" or "en-GB"
    QString name; ///< the English name, such as "German"

    friend bool operator==(const GlossaryLanguage&, const GlossaryLanguage&) = default;
};

/// All languages, in the order in which they are searched.
[[nodiscard]] const QList<GlossaryLanguage>& glossaryLanguages();

/// The language part of a code, in lower case: "en" for "en-GB".
[[nodiscard]] QString languageBase(const QString& code);

/// The language that a text means: an English name, one of a few other spellings, or a code.
[[nodiscard]] std::optional<GlossaryLanguage> resolveGlossaryLanguage(const QString& text);

} // namespace zelvane
