#include "cli/CommandLine.h"
#include "main/DesktopProgram.h"
#include "main/ScriptingProgram.h"
#include "main/UserStore.h"

#include <QStringList>

#include <cstdio>

namespace {

using namespace zelvane;

QStringList argumentsBehindTheName(int argc, char** argv)
{
    QStringList arguments;
    for (int i = 1; i < argc; ++i) {
        arguments << QString::fromLocal8Bit(argv[i]);
    }
    return arguments;
}

void print(const QString& text)
{
    std::fputs(text.toUtf8().constData(), stdout);
}

int misused(const QString& sentence)
{
    complain(sentence + QStringLiteral(" (see zelvane-desk --help)"));
    return int(ExitStatus::wrongUsage);
}

int printHelp(const CommandLine& line)
{
    const auto topic = parseCommandLine(line.arguments);
    if (!topic) {
        return misused(topic.error());
    }
    print(helpText(topic->command));
    return int(ExitStatus::success);
}

} // namespace

int main(int argc, char** argv)
{
    // Before there is a thread that could read the environment meanwhile, and before any library
    // starts a child: a bus that is started for want of one keeps what it inherits.
    const QString key = takeKeyFromEnvironment();
    const auto line = parseCommandLine(argumentsBehindTheName(argc, argv));
    if (!line) {
        return misused(line.error());
    }
    switch (line->command) {
    case CommandLine::Command::desktop:
        return runDesktopProgram(*line, key, argc, argv);
    case CommandLine::Command::translate:
    case CommandLine::Command::models:
    case CommandLine::Command::engine:
    case CommandLine::Command::glossary:
    case CommandLine::Command::defaults:
    case CommandLine::Command::service:
    case CommandLine::Command::trigger:
    case CommandLine::Command::show:
    case CommandLine::Command::status:
        return runScriptingProgram(*line, key, argc, argv);
    case CommandLine::Command::help:
        return printHelp(*line);
    case CommandLine::Command::version:
        print(QStringLiteral("zelvane-desk " ZELVANE_VERSION "\n"));
        return int(ExitStatus::success);
    }
    Q_UNREACHABLE();
}
