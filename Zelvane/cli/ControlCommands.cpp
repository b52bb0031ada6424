#include "cli/ControlCommands.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace zelvane {

namespace {

using Action = ControlOptions::Action;

std::expected<ControlOptions, QString> parseTrigger(const QStringList& words)
{
    if (words.size() != 1) {
        return std::unexpected(
            QStringLiteral("trigger needs a pair: its place in the list, or its identifier"));
    }
    return ControlOptions{Action::triggerPair, words.first(), false};
}

std::expected<ControlOptions, QString> parseShow(const QStringList& words)
{
    if (words == QStringList{QStringLiteral("translation")}) {
        return ControlOptions{Action::showTranslationWindow, {}, false};
    }
    if (words == QStringList{QStringLiteral("settings")}) {
        return ControlOptions{Action::showSettings, {}, false};
    }
    return std::unexpected(QStringLiteral("show needs \"translation\" or \"settings\""));
}

std::expected<ControlOptions, QString> parseStatus(const QStringList& words)
{
    if (words.isEmpty()) {
        return ControlOptions{Action::status, {}, false};
    }
    if (words == QStringList{QStringLiteral("--json")}) {
        return ControlOptions{Action::status, {}, true};
    }
    return std::unexpected(QStringLiteral("status takes no argument but --json"));
}

void printJson(const RunningProgram::Status& status, const CommandStreams& streams)
{
    QJsonArray pairs;
    for (qsizetype i = 0; i < status.pairs.size(); ++i) {
        pairs.append(QJsonObject{{QStringLiteral("pair"), status.pairs[i]},
                                 {QStringLiteral("id"), status.pairIDs.value(i)}});
    }
    const QJsonObject object{{QStringLiteral("status"), status.status},
                             {QStringLiteral("busy"), status.isBusy},
                             {QStringLiteral("lastError"), status.lastError},
                             {QStringLiteral("version"), status.version},
                             {QStringLiteral("pairs"), pairs}};
    streams.output.write(QJsonDocument(object).toJson(QJsonDocument::Compact) + '\n');
}

/// The status, then a line for each pair: its place, its identifier, its languages.
void printLines(const RunningProgram::Status& status, const CommandStreams& streams)
{
    streams.output.write(onOneLine(status.status.toUtf8()) + '\n');
    for (qsizetype i = 0; i < status.pairs.size(); ++i) {
        streams.output.write(QByteArray::number(i + 1) + '\t' +
                             onOneLine(status.pairIDs.value(i).toUtf8()) + '\t' +
                             onOneLine(status.pairs[i].toUtf8()) + '\n');
    }
}

QCoro::Task<void> perform(ControlOptions options, RunningProgram& program, CommandStreams streams,
                          std::stop_token stop)
{
    switch (options.action) {
    case Action::triggerPair:
        co_await program.triggerPair(options.pair, stop);
        break;
    case Action::showTranslationWindow:
        co_await program.showTranslationWindow(stop);
        break;
    case Action::showSettings:
        co_await program.showSettings(stop);
        break;
    case Action::status: {
        const RunningProgram::Status status = co_await program.status(stop);
        if (options.json) {
            printJson(status, streams);
        } else {
            printLines(status, streams);
        }
        break;
    }
    case Action::help:
        break;
    }
}

} // namespace

std::expected<ControlOptions, QString> parseControlOptions(CommandLine::Command command,
                                                           const QStringList& arguments)
{
    if (arguments.contains(QStringLiteral("--help")) || arguments.contains(QStringLiteral("-h"))) {
        return ControlOptions{Action::help, {}, false};
    }
    switch (command) {
    case CommandLine::Command::trigger:
        return parseTrigger(arguments);
    case CommandLine::Command::show:
        return parseShow(arguments);
    default:
        return parseStatus(arguments);
    }
}

QCoro::Task<ExitStatus> runControlCommand(ControlOptions options, RunningProgram& program,
                                          CommandStreams streams, std::stop_token stop)
{
    ExitStatus status = ExitStatus::success;
    try {
        co_await perform(options, program, streams, stop);
    } catch (const CancellationError&) {
        status = ExitStatus::interrupted;
    } catch (...) {
        streams.complain(describe(std::current_exception()));
        status = ExitStatus::failure;
    }
    co_return status;
}

} // namespace zelvane
