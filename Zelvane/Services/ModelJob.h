#pragma once

#include "Services/SmartOfflineVariant.h"

#include <QMap>
#include <QString>
#include <QStringList>

namespace zelvane {

/// What a local model is asked for in one request.
struct ModelJob
{
    SmartOfflineVariant variant = SmartOfflineVariant::hyMT2_7b;
    /// In order, none of them blank.
    QStringList lines;
    /// As the request has them: "English (US)", "Any Language".
    QString sourceLanguage;
    QString targetLanguage;
    /// The prompt with the languages already put in.
    QString systemPrompt;
    /// Term to candidate translations, the best first.
    QMap<QString, QStringList> glossaryHints;

    friend bool operator==(const ModelJob&, const ModelJob&) = default;
};

} // namespace zelvane
