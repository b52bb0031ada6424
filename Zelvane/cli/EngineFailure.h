#pragma once

#include "settings/AIProvider.h"

#include <exception>

namespace zelvane {

/// A failure of `engine` for one who works in a terminal, where there is no selection and no
/// settings window.
[[nodiscard]] QString complaintAbout(const std::exception_ptr& error, AIProvider engine);

} // namespace zelvane
