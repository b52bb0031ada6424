#pragma once

#include "settings/AIProvider.h"
#include "settings/UserDefaults.h"

#include <optional>

namespace zelvane {

/// The engine that a name means: any stored spelling, its case not mattering.
[[nodiscard]] std::optional<AIProvider> engineFromName(const QString& name);

/// Makes it the engine of the settings that are loaded from `overlay`.
void chooseEngine(AIProvider provider, UserDefaults& overlay);

} // namespace zelvane
