#pragma once

#include "settings/GlossaryLanguage.h"

#include <QString>
#include <QStringList>

namespace zelvane {

/// What the platform says about the user's languages.
struct SystemLocale
{
    QStringList preferredLanguages; ///< language tags such as "de-AT", the favourite first
    QString identifier;             ///< of the current locale, such as "de_AT"
    QString region;                 ///< two letters, such as "GB"
};

/// The platform's present answer.
[[nodiscard]] SystemLocale currentSystemLocale();

/// The user's language: American English if no language of the table fits.
[[nodiscard]] GlossaryLanguage systemLanguage(const SystemLocale& locale);

} // namespace zelvane
