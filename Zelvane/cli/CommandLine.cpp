#include "cli/CommandLine.h"

#include <QDir>

#include <algorithm>

namespace zelvane {

namespace {

const char* const programHelp = R"(Usage: zelvane-desk [--profile DIR] [COMMAND ...]

Translates the selected text of any program in place. Without a command it starts
in the desktop session and waits for its keyboard shortcuts.

Commands:
  translate   translate a text and print the translation
  models      print the models that the engine offers
  engine      install and delete the engines that run on this machine
  glossary    install, delete and look into dictionaries
  defaults    read and change settings by key
  service     have the running program translate a text with one of your pairs
  trigger     do what a press of a pair's shortcut does
  show        open the translation window or the settings
  status      say what the running program is doing, and list your pairs
  help        show this text, or that of a command: help translate

Options:
  --profile DIR   keep settings and data in DIR instead of the user's folders
  --report        on the desktop, print "ready" once the shortcuts work, and where
                  the time of each translation went
  --quiet         on the desktop, open no window at the start: for starting with the
                  session
  --help          show this text
  --version       show the version

The first five commands need no display, no session bus and no desktop. The next
four reach the running program over the session bus.
)";

const char* const translateHelp =
    R"(Usage: zelvane-desk [--profile DIR] translate --to LANGUAGE [OPTIONS] [TEXT | -]

Translates TEXT, or standard input if TEXT is "-" or missing, and prints the
translation alone on standard output. All else goes to standard error.

Options:
  --from LANGUAGE     the language of the text (default: "Any Language")
  --to LANGUAGE       the language to translate into
  --engine NAME       the engine, for this call: "ChatGPT", "Gemini", ...
  --model ID          the engine's model, for this call
  --prompt TEMPLATE   the prompt, for this call; {{source}} and {{target}} stand
                      for the languages
  --trace             report on standard error where the time went
  --json              print one JSON object instead of the bare translation
  --help              show this text

Environment:
  ZELVANE_API_KEY     the engine's key, for this call. A key is never an argument.

Exit status: 0 translated, 1 failed, 2 wrong usage, 130 interrupted.
)";

const char* const modelsHelp =
    R"(Usage: zelvane-desk [--profile DIR] models [OPTIONS]

Asks the engine which models your key can reach, and prints the identifier of each
that can translate on a line of its own. DeepL and the engines on this machine
have none to choose from.

Options:
  --engine NAME   the engine, for this call: "ChatGPT", "Gemini", ...
  --json          print one JSON object instead, with the models' names
  --help          show this text

Environment:
  ZELVANE_API_KEY     the engine's key, for this call. A key is never an argument.

Exit status: 0 listed, 1 failed, 2 wrong usage, 130 interrupted.
)";

const char* const engineHelp =
    R"(Usage: zelvane-desk [--profile DIR] engine COMMAND [OPTIONS]

The engines that run on this machine, without the internet. NAME is smart, balanced
or fast.

Commands:
  list           print name, engine, state and bytes of each engine
  install NAME   unpack the runtime and download the model, several gigabytes; what
                 is there already is kept
  cancel NAME    end an installation in another process, and remove what it has done
  delete NAME    remove an engine
  status NAME    print what is known of an engine; status 1 unless it is installed

Control+C cancels an installation, which leaves nothing.

Options:
  --json   print one JSON object instead of lines with tabs
  --help   show this text

Exit status: 0 done, 1 failed, 2 wrong usage, 130 interrupted or cancelled.
)";

const char* const glossaryHelp =
    R"(Usage: zelvane-desk [--profile DIR] glossary COMMAND [OPTIONS]

Dictionaries for the engines on this machine, made by WikDict from Wiktionary. A
glossary is the pair of dictionaries between two languages. LANGUAGE is an English
name or a code: "German", de.

Commands:
  list                        print key, languages, state and bytes of each glossary
  languages                   print code and name of each language that has one
  install LANGUAGE LANGUAGE   download what is missing of a glossary
  delete LANGUAGE LANGUAGE    remove a glossary
  lookup --to LANGUAGE [--from LANGUAGE] [TEXT | -]
                              print term, replacement and translations of each line
                              that is a term; status 1 if none is

Options:
  --json   print one JSON object instead of lines with tabs
  --help   show this text

Exit status: 0 done, 1 failed, 2 wrong usage, 130 interrupted.
)";

const char* const defaultsHelp = R"(Usage: zelvane-desk [--profile DIR] defaults COMMAND

Reads and changes settings by key.

Commands:
  read KEY              print the bare value; status 1 if there is none
  write KEY VALUE       store a text
  write KEY --bool B    store true or false
  write KEY --int N     store a whole number
  write KEY --double N  store a number
  write KEY --data V    store bytes; "-" takes them from standard input
  delete KEY            remove the key; status 1 if there is none
  list [PREFIX]         print key, type and value of each setting, tab-separated

Exit status: 0 done, 1 no such key or not stored, 2 wrong usage.
)";

const char* const serviceHelp =
    R"(Usage: zelvane-desk [--profile DIR] service NAME [TEXT | -]

Has the running program translate TEXT, or standard input if TEXT is "-" or
missing, and prints the translation alone on standard output. Engine, languages
and prompt are those of the settings. It takes 60 seconds at most.

Names:
  translatePair1, translatePair2, translatePair3
                  with the first, second or third pair of the settings
  translatePair1UI, translatePair2UI, translatePair3UI
                  the same, and the program shows the translation in its popup

Exit status: 0 translated, 1 failed, 2 wrong usage, 130 interrupted.
)";

const char* const triggerHelp = R"(Usage: zelvane-desk [--profile DIR] trigger PAIR

Has the running program do what a press of the pair's shortcut does: translate the
selection of the program in front. Bind this command to a key in the settings of
your desktop where the program can't take shortcuts itself.

PAIR is the pair's place in the settings, from 1, or its identifier, which stays
when the order changes. "zelvane-desk status" lists both.

Exit status: 0 done, 1 failed, 2 wrong usage, 130 interrupted.
)";

const char* const showHelp = R"(Usage: zelvane-desk [--profile DIR] show WINDOW

Has the running program open a window: "translation" or "settings".

Exit status: 0 done, 1 failed, 2 wrong usage, 130 interrupted.
)";

const char* const statusHelp = R"(Usage: zelvane-desk [--profile DIR] status [--json]

Prints the running program's status line, and below it each pair: its place, its
identifier and its languages, tab-separated. With --json it is one JSON object.

Exit status: 0 it is running, 1 it is not, 2 wrong usage, 130 interrupted.
)";

struct CommandName
{
    const char* name;
    CommandLine::Command command;
};

constexpr CommandName commandNames[] = {
    {"translate", CommandLine::Command::translate}, {"models", CommandLine::Command::models},
    {"engine", CommandLine::Command::engine},       {"glossary", CommandLine::Command::glossary},
    {"defaults", CommandLine::Command::defaults},   {"service", CommandLine::Command::service},
    {"trigger", CommandLine::Command::trigger},     {"show", CommandLine::Command::show},
    {"status", CommandLine::Command::status},       {"help", CommandLine::Command::help},
};

std::optional<CommandLine::Command> commandOf(const QString& name)
{
    const auto found = std::ranges::find_if(
        commandNames, [&](const CommandName& entry) { return name == QLatin1String(entry.name); });
    return found == std::end(commandNames) ? std::nullopt : std::optional(found->command);
}

} // namespace

std::expected<CommandLine, QString> parseCommandLine(const QStringList& arguments)
{
    CommandLine line;
    qsizetype i = 0;
    for (; i < arguments.size() && arguments[i].startsWith(u'-'); ++i) {
        const QString& option = arguments[i];
        if (option == QStringLiteral("--help") || option == QStringLiteral("-h")) {
            line.command = CommandLine::Command::help;
            return line;
        }
        if (option == QStringLiteral("--version")) {
            line.command = CommandLine::Command::version;
            return line;
        }
        if (option == QStringLiteral("--report")) {
            line.report = true;
            continue;
        }
        if (option == QStringLiteral("--quiet")) {
            line.quiet = true;
            continue;
        }
        QString profile;
        if (option == QStringLiteral("--profile") && i + 1 < arguments.size()) {
            profile = arguments[++i];
        } else if (option.startsWith(QStringLiteral("--profile="))) {
            profile = option.sliced(10);
        } else if (option == QStringLiteral("--profile")) {
            return std::unexpected(QStringLiteral("--profile needs a folder"));
        } else {
            return std::unexpected(QStringLiteral("unknown option \"%1\"").arg(option));
        }
        if (profile.isEmpty()) {
            return std::unexpected(QStringLiteral("--profile needs a folder"));
        }
        line.profile = QDir::current().absoluteFilePath(profile);
    }
    if (i == arguments.size()) {
        return line;
    }
    const QString& name = arguments[i];
    line.arguments = arguments.sliced(i + 1);
    const auto command = commandOf(name);
    if (!command) {
        return std::unexpected(QStringLiteral("unknown command \"%1\"").arg(name));
    }
    line.command = *command;
    return line;
}

QString helpText(CommandLine::Command command)
{
    switch (command) {
    case CommandLine::Command::translate:
        return QString::fromUtf8(translateHelp);
    case CommandLine::Command::models:
        return QString::fromUtf8(modelsHelp);
    case CommandLine::Command::engine:
        return QString::fromUtf8(engineHelp);
    case CommandLine::Command::glossary:
        return QString::fromUtf8(glossaryHelp);
    case CommandLine::Command::defaults:
        return QString::fromUtf8(defaultsHelp);
    case CommandLine::Command::service:
        return QString::fromUtf8(serviceHelp);
    case CommandLine::Command::trigger:
        return QString::fromUtf8(triggerHelp);
    case CommandLine::Command::show:
        return QString::fromUtf8(showHelp);
    case CommandLine::Command::status:
        return QString::fromUtf8(statusHelp);
    case CommandLine::Command::desktop:
    case CommandLine::Command::help:
    case CommandLine::Command::version:
        return QString::fromUtf8(programHelp);
    }
    Q_UNREACHABLE();
}

} // namespace zelvane
