#pragma once

#include "cli/CommandLine.h"
#include "cli/CommandStreams.h"
#include "cli/GlossaryOptions.h"
#include "cli/GlossaryProgress.h"
#include "glossary/GlossaryManager.h"
#include "pipeline/Engines.h"

namespace zelvane {

/// Prints the languages that dictionaries are published for.
[[nodiscard]] ExitStatus runGlossaryLanguages(const GlossaryOptions& options,
                                              const CommandStreams& streams);

/// Lists, installs or deletes. A stop leaves no package half installed, but may leave one direction
/// of it. Never throws.
[[nodiscard]] QCoro::Task<ExitStatus>
runGlossaryPackages(GlossaryOptions options, GlossaryManager& manager, CommandStreams streams,
                    GlossaryProgress::Style style, std::stop_token stop);

/// Prints what the installed dictionaries know of each line of `text`. Never throws.
[[nodiscard]] QCoro::Task<ExitStatus> runGlossaryLookup(GlossaryOptions options, QString text,
                                                        GlossaryLookup& glossary,
                                                        CommandStreams streams,
                                                        std::stop_token stop);

} // namespace zelvane
