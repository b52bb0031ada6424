#pragma once

#include <QJsonObject>
#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

namespace zelvane {

// Small models think aloud, repeat themselves, fence their answers and lose count of the lines.
// What they answer becomes one translation for each line that was sent, or is refused; a refusal
// means that it is worth asking again.

/// The text of the first message of an answer (`choices[0].message`), as it was found: never blank,
/// not trimmed. Servers put it in several places.
[[nodiscard]] std::optional<QString> extractMessageText(const QJsonObject& message);

/// `text` without what the model thought before it answered. Trimmed.
[[nodiscard]] QString stripReasoning(const QString& text);

/// Whether the model has fallen into a loop; also if there are no lines at all.
[[nodiscard]] bool looksDegenerate(const QStringList& lines);

/// Whether `candidate` can be all of the translation of `source`: a long text doesn't shrink to
/// less than a third.
[[nodiscard]] bool isPlausibleSingleLine(const QString& source, const QString& candidate);

/// Whether none of the lines at `positions` is blank.
[[nodiscard]] bool allTargetsFilled(const QStringList& lines, const QList<qsizetype>& positions);

/// `lines` with the translations of `answer` at `positions`, which are those of the lines that were
/// sent, ascending, at least one. None if the answer is refused.
[[nodiscard]] std::optional<QStringList> mergeModelOutput(const QString& answer,
                                                          const QStringList& lines,
                                                          const QList<qsizetype>& positions);

} // namespace zelvane
