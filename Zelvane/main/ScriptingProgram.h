#pragma once

#include "cli/CommandLine.h"

namespace zelvane {

/// Runs the commands `translate` and `defaults`, which need neither a display nor a session bus;
/// yields the exit status.
[[nodiscard]] int runScriptingProgram(const CommandLine& line, int argc, char** argv);

} // namespace zelvane
