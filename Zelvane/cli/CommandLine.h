#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <expected>
#include <optional>

namespace zelvane {

/// The exit statuses of every command.
enum class ExitStatus : int {
    success = 0,
    failure = 1,
    wrongUsage = 2,
    interrupted = 130, ///< 128 and the number of SIGINT, as shells report it
};

/// What the program was asked to do.
struct CommandLine
{
    enum class Command {
        desktop,
        translate,
        models,
        engine,
        glossary,
        defaults,
        service,
        trigger,
        show,
        status,
        help,
        version,
    };

    Command command = Command::desktop;
    /// The folder that holds this call's settings and data, absolute; empty means the user's own.
    QString profile;
    /// On the desktop: print "ready" once the shortcuts work, and the timing report of each run.
    bool report = false;
    /// On the desktop: open no window that nobody asked for.
    bool quiet = false;
    /// What follows the command's name.
    QStringList arguments;
};

/// Reads the arguments behind the program's name. The error is a sentence about what is wrong.
[[nodiscard]] std::expected<CommandLine, QString> parseCommandLine(const QStringList& arguments);

/// The text of `--help`, for a command or for the program. Ends with a newline.
[[nodiscard]] QString helpText(CommandLine::Command command);

} // namespace zelvane
