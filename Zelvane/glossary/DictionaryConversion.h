#pragma once

#include <QString>

#include <stop_token>

namespace zelvane {

/// Makes the file of a direction, `tsv`, from a published dictionary.
///
/// One line for each usable row, in the database's order: term, translations and score, separated
/// by tabs, as UTF-8. Rows that can't be such a line (NULL, a tab, a line break, a NUL byte or
/// anything but UTF-8 in a text) are left out. The file appears whole or not at all; one that
/// stands there stays if anything fails. Only one call may make the same file at a time.
///
/// Throws `GlossaryError` if the database isn't a dictionary, `FileError` if the file can't be
/// written, `CancellationError` once `stop` is asked for. Blocks: for a worker's thread.
void convertDictionary(const QString& database, const QString& tsv, const std::stop_token& stop);

/// The name under which `tsv` is written until it is complete. It begins with a point and doesn't
/// end like that of a dictionary.
[[nodiscard]] QString unfinishedFile(const QString& tsv);

} // namespace zelvane
