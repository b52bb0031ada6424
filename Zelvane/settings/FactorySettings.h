#pragma once

#include "settings/LanguagePair.h"

#include <QList>
#include <QString>

namespace zelvane {

/// The prompt template of a new installation, and of a pair whose own prompt is left blank.
[[nodiscard]] const QString& defaultPromptTemplate();

/// Whether `prompt` is exactly what an earlier version came with, so that the user never chose it.
[[nodiscard]] bool isEarlierFactoryPrompt(const QString& prompt);

/// Whether the pairs have the languages of a list that an earlier version came with, compared
/// without regard to case.
[[nodiscard]] bool isEarlierFactoryPairSet(const QList<LanguagePair>& pairs);

} // namespace zelvane
