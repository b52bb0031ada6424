#pragma once

#include "cli/CommandLine.h"
#include "cli/CommandStreams.h"
#include "cli/RunningProgram.h"

#include <expected>
#include <optional>

namespace zelvane {

/// The arguments of `zelvane-desk service`.
struct ServiceOptions
{
    /// The name of a service: "translatePair1", "translatePair3UI".
    QString entry;
    /// None means standard input.
    std::optional<QString> text;
    bool help = false;
};

/// Reads the arguments behind the word "service". The error is a sentence about what is wrong.
[[nodiscard]] std::expected<ServiceOptions, QString>
parseServiceOptions(const QStringList& arguments);

/// Has the running program translate `text` and prints the translation. Never throws.
[[nodiscard]] QCoro::Task<ExitStatus> runServiceCommand(ServiceOptions options, QString text,
                                                        RunningProgram& program,
                                                        CommandStreams streams,
                                                        std::stop_token stop);

} // namespace zelvane
