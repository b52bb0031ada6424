#pragma once

#include "cli/CommandLine.h"

#include <QString>

namespace zelvane {

/// Runs the program in the desktop session until it is asked to quit; yields the exit status. Says
/// in one sentence on standard error what it misses there, and what works all the same. `key` is
/// the engine's key for this run; empty if there is none but the stored one.
[[nodiscard]] int runDesktopProgram(const CommandLine& line, const QString& key, int argc,
                                    char** argv);

} // namespace zelvane
