#pragma once

#include <QByteArray>
#include <QHash>
#include <QString>

#include <optional>

namespace zelvane {

/// The translations of one language by their English keys.
using TranslationCatalogue = QHash<QString, QString>;

/// Reads a gettext catalogue (.po). Entries that are empty, fuzzy or obsolete are left out, for the
/// English text is better than a doubtful one. None if the text is no catalogue, or uses contexts
/// or plural forms, which the lookup doesn't know.
[[nodiscard]] std::optional<TranslationCatalogue> parseCatalogue(const QByteArray& text);

} // namespace zelvane
