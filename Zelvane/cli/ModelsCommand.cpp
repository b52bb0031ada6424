#include "cli/ModelsCommand.h"

#include "cli/EngineChoice.h"
#include "cli/EngineFailure.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace zelvane {

namespace {

void printLines(const QList<RemoteModel>& models, const CommandStreams& streams)
{
    for (const RemoteModel& model : models) {
        streams.output.write(onOneLine(model.apiID.toUtf8()) + '\n');
    }
}

void printJson(AIProvider provider, const QList<RemoteModel>& models, const CommandStreams& streams)
{
    QJsonArray entries;
    for (const RemoteModel& model : models) {
        entries.append(QJsonObject{{QStringLiteral("apiID"), model.apiID},
                                   {QStringLiteral("label"), model.label}});
    }
    const QJsonObject object{{QStringLiteral("engine"), rawValue(provider)},
                             {QStringLiteral("models"), entries}};
    streams.output.write(QJsonDocument(object).toJson(QJsonDocument::Compact) + '\n');
}

} // namespace

std::expected<ModelsOptions, QString> parseModelsOptions(const QStringList& arguments)
{
    const QString engineOption = QStringLiteral("--engine");
    ModelsOptions options;
    for (qsizetype i = 0; i < arguments.size(); ++i) {
        const QString& argument = arguments[i];
        QString engine;
        if (argument == QStringLiteral("--json")) {
            options.json = true;
            continue;
        }
        if (argument == QStringLiteral("--help") || argument == QStringLiteral("-h")) {
            options.help = true;
            continue;
        }
        if (argument == engineOption && i + 1 < arguments.size()) {
            engine = arguments[++i];
        } else if (argument.startsWith(engineOption + u'=')) {
            engine = argument.sliced(engineOption.size() + 1);
        } else if (argument == engineOption) {
            return std::unexpected(QStringLiteral("--engine needs a value"));
        } else {
            return std::unexpected(
                argument.startsWith(u'-')
                    ? QStringLiteral("unknown option \"%1\"").arg(argument)
                    : QStringLiteral("models takes no argument \"%1\"").arg(argument));
        }
        options.engine = engineFromName(engine);
        if (!options.engine) {
            return std::unexpected(QStringLiteral("there is no engine \"%1\"").arg(engine));
        }
    }
    return options;
}

QCoro::Task<ExitStatus> runModelsCommand(ModelsOptions options, const AppSettings& settings,
                                         RemoteModels& models, CommandStreams streams,
                                         std::stop_token stop)
{
    const AIProvider provider = settings.provider();
    ExitStatus status = ExitStatus::failure;
    try {
        const QList<RemoteModel> found =
            co_await models.fetchRemoteModels(provider, settings.apiKey(), stop);
        if (options.json) {
            printJson(provider, found, streams);
        } else {
            printLines(found, streams);
        }
        status = ExitStatus::success;
    } catch (const CancellationError&) {
        status = ExitStatus::interrupted;
    } catch (...) {
        streams.complain(complaintAbout(std::current_exception(), provider));
    }
    co_return status;
}

} // namespace zelvane
