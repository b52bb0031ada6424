#pragma once

#include <QLoggingCategory>

namespace zelvane {

/// The program's only log lines: the states of the permission, at information level. Nothing is
/// ever logged about a translation.
Q_DECLARE_LOGGING_CATEGORY(accessibilityLog)

} // namespace zelvane
