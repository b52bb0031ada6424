#pragma once

#include "settings/AIProvider.h"

#include <QMap>
#include <QString>
#include <QStringList>

namespace zelvane {

/// One translation: built once, copied where it is rewritten.
struct TranslationRequest
{
    /// Without leading and trailing white space and newlines. Never empty.
    QString text;
    AIProvider provider = AIProvider::zelvane;
    /// The user's key, trimmed. Empty for engines that need none.
    QString apiKey;
    QString model;
    /// The prompt with the languages already put in.
    QString systemPrompt;
    /// As the pair or the window holds it, not normalised: "English (US)", "Any Language".
    QString sourceLanguage;
    QString targetLanguage;
    /// Source term to target hints. Only the offline engines read it.
    QMap<QString, QStringList> glossaryHints;

    friend bool operator==(const TranslationRequest&, const TranslationRequest&) = default;
};

} // namespace zelvane
