#pragma once

#include "cli/CommandLine.h"

#include <QString>

namespace zelvane {

/// Runs a command, which needs no display, and no session bus unless it is for the running program;
/// yields the exit status. `key` is the engine's key for this call; empty if there is none but the
/// stored one.
[[nodiscard]] int runScriptingProgram(const CommandLine& line, const QString& key, int argc,
                                      char** argv);

} // namespace zelvane
