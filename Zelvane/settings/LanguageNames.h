#pragma once

#include "settings/LanguagePair.h"

#include <QList>
#include <QString>
#include <QStringList>

namespace zelvane {

/// The languages that the pickers offer, in their order. The first means automatic detection.
[[nodiscard]] const QStringList& offeredLanguages();

/// `offeredLanguages` without the automatic entries.
[[nodiscard]] QStringList targetLanguages();

/// Whether a language text asks for automatic detection. Blanks around it and case don't matter.
[[nodiscard]] bool isAutoSource(const QString& language);

/// The spelling under which a stored language is kept; unknown texts stay as they are, untrimmed.
[[nodiscard]] QString canonicalSpelling(const QString& language);

/// The name of a language text in the interface language; the text itself if nothing knows it.
/// Callable from any thread.
[[nodiscard]] QString localizedLanguageName(const QString& language);

/// A label such as "EN-US" for menus and status lines. Never empty: "?" for an empty text.
[[nodiscard]] QString shortCode(const QString& language);

} // namespace zelvane
