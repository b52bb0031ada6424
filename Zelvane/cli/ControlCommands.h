#pragma once

#include "cli/CommandLine.h"
#include "cli/CommandStreams.h"
#include "cli/RunningProgram.h"

#include <expected>

namespace zelvane {

/// What `zelvane-desk trigger`, `show` and `status` were asked for.
struct ControlOptions
{
    enum class Action {
        triggerPair,
        showTranslationWindow,
        showSettings,
        status,
        help,
    };

    Action action = Action::help;
    /// For `triggerPair`: a place in the list, from 1, or an identifier.
    QString pair;
    /// For `status`.
    bool json = false;
};

/// Reads the arguments behind the command's name. The error is a sentence about what is wrong.
[[nodiscard]] std::expected<ControlOptions, QString>
parseControlOptions(CommandLine::Command command, const QStringList& arguments);

/// Has the running program do it. Never throws.
[[nodiscard]] QCoro::Task<ExitStatus> runControlCommand(ControlOptions options,
                                                        RunningProgram& program,
                                                        CommandStreams streams,
                                                        std::stop_token stop);

} // namespace zelvane
