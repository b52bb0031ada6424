#pragma once

#include "cli/CommandLine.h"

namespace zelvane {

/// Runs the program in the desktop session until it is asked to quit; yields the exit status. Says
/// in one sentence on standard error what it misses there, and what works all the same.
[[nodiscard]] int runDesktopProgram(const CommandLine& line, int argc, char** argv);

} // namespace zelvane
