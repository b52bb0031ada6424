#pragma once

#include "glossary/GlossaryPackage.h"

#include <QString>
#include <QStringList>

#include <expected>
#include <optional>

namespace zelvane {

/// What `zelvane-desk glossary` was asked to do.
struct GlossaryOptions
{
    enum class Verb { list, languages, install, remove, lookup };

    Verb verb = Verb::list;
    /// Of `install` and `remove`.
    GlossaryPackage package;
    /// Of `lookup`, as a request has them.
    QString source = QStringLiteral("Any Language");
    QString target;
    std::optional<QString> text;
    bool json = false;
    bool help = false;
};

/// Reads the arguments behind the word "glossary". The error is a sentence about what is wrong.
[[nodiscard]] std::expected<GlossaryOptions, QString>
parseGlossaryOptions(const QStringList& arguments);

} // namespace zelvane
