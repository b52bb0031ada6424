#pragma once

#include <QList>
#include <QStringList>

namespace zelvane {

/// Whether a line holds nothing but blanks and tabs, so that no model needs to see it.
[[nodiscard]] bool isBlankLine(const QString& line);

/// Cuts the lines of a text into lists that a model can hold, in order and none left out: up to
/// `maxLines` lines that aren't blank, fewer if they are long. At least one list, if only an empty
/// one.
[[nodiscard]] QList<QStringList> chunkLines(const QStringList& lines, qsizetype maxLines);

} // namespace zelvane
