#pragma once

#include <QString>

namespace zelvane {

/// The name under which the local models know a language. A label that asks for automatic
/// detection, and one that they don't know, comes back as it is.
[[nodiscard]] QString localModelLanguageName(const QString& language);

} // namespace zelvane
