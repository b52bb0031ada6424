#pragma once

#include "cli/CommandLine.h"
#include "cli/CommandStreams.h"
#include "pipeline/TranslationDispatch.h"
#include "pipeline/TranslationTrace.h"

#include <expected>
#include <optional>

namespace zelvane {

/// The options of `zelvane-desk translate`.
struct TranslateOptions
{
    QString source = QStringLiteral("Any Language");
    QString target;
    std::optional<AIProvider> engine;
    QString model;
    std::optional<QString> prompt;
    bool trace = false;
    bool json = false;
    bool help = false;
    /// None means standard input.
    std::optional<QString> text;
};

/// Reads the arguments behind the word "translate". The error is a sentence about what is wrong.
[[nodiscard]] std::expected<TranslateOptions, QString>
parseTranslateOptions(const QStringList& arguments);

/// Puts the choices of one call over the stored settings, before these are loaded.
void applyOptions(const TranslateOptions& options, UserDefaults& overlay);

/// Runs one translation and prints its outcome. `text` is what is to be translated. Never throws.
[[nodiscard]] QCoro::Task<ExitStatus>
runTranslateCommand(TranslateOptions options, QString text, const AppSettings& settings,
                    TranslationDispatch& dispatch, TranslationTrace& trace, const Clock& clock,
                    CommandStreams streams, std::stop_token stop);

/// The text on `input`, or a sentence about what is wrong with it: too large, or not UTF-8.
[[nodiscard]] std::expected<QString, QString> readText(QIODevice& input);

} // namespace zelvane
