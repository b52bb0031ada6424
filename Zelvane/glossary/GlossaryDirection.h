#pragma once

#include "settings/GlossaryLanguage.h"

#include <QString>

namespace zelvane {

/// The published state of the dictionaries that this program reads, as its folder is named.
[[nodiscard]] QString glossaryEdition();

/// A dictionary leads one way: from the language of its terms to that of their translations.
struct GlossaryDirection
{
    GlossaryLanguage from;
    GlossaryLanguage to;

    /// The base codes of both, such as "de-en": the name of the dictionary's file.
    [[nodiscard]] QString key() const;

    friend bool operator==(const GlossaryDirection&, const GlossaryDirection&) = default;
};

/// The folder of this edition's dictionaries, below the application-support folder.
[[nodiscard]] QString glossaryFolder(const QString& applicationSupport);

/// The file of a direction, which holds one term on each line.
[[nodiscard]] QString glossaryFile(const QString& applicationSupport, const QString& directionKey);

} // namespace zelvane
