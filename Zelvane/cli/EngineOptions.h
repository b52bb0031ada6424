#pragma once

#include "Services/SmartOfflineVariant.h"

#include <QString>
#include <QStringList>

#include <expected>

namespace zelvane {

/// What `zelvane-desk engine` was asked to do.
struct EngineOptions
{
    enum class Verb { list, install, cancel, remove, status };

    Verb verb = Verb::list;
    SmartOfflineVariant engine = SmartOfflineVariant::hyMT2_7b; ///< of all verbs but `list`
    bool json = false;
    bool help = false;
};

/// The short name of an engine on this machine, which every command understands.
[[nodiscard]] QString shortName(SmartOfflineVariant engine);

/// Reads the arguments behind the word "engine". The error is a sentence about what is wrong.
[[nodiscard]] std::expected<EngineOptions, QString>
parseEngineOptions(const QStringList& arguments);

} // namespace zelvane
