#pragma once

#include "cli/CommandLine.h"
#include "cli/CommandStreams.h"
#include "online/RemoteModels.h"
#include "settings/AppSettings.h"

#include <expected>
#include <optional>

namespace zelvane {

/// The options of `zelvane-desk models`.
struct ModelsOptions
{
    std::optional<AIProvider> engine;
    bool json = false;
    bool help = false;
};

/// Reads the arguments behind the word "models". The error is a sentence about what is wrong.
[[nodiscard]] std::expected<ModelsOptions, QString>
parseModelsOptions(const QStringList& arguments);

/// Prints the models that the settings' engine offers for the settings' key. Never throws.
[[nodiscard]] QCoro::Task<ExitStatus> runModelsCommand(ModelsOptions options,
                                                       const AppSettings& settings,
                                                       RemoteModels& models, CommandStreams streams,
                                                       std::stop_token stop);

} // namespace zelvane
