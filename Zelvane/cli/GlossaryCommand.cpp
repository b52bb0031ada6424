#include "cli/GlossaryCommand.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace zelvane {

namespace {

void printJson(const CommandStreams& streams, const QJsonObject& object)
{
    streams.output.write(QJsonDocument(object).toJson(QJsonDocument::Compact) + '\n');
}

void printColumns(const CommandStreams& streams, const QStringList& columns)
{
    QByteArrayList cells;
    for (const QString& column : columns) {
        cells += onOneLine(column.toUtf8());
    }
    streams.output.write(cells.join('\t') + '\n');
}

QList<GlossaryLanguage> publishedLanguages()
{
    QList<GlossaryLanguage> languages;
    for (const GlossaryLanguage& language : glossaryLanguages()) {
        if (hasGlossaryData(language)) {
            languages += language;
        }
    }
    return languages;
}

void printPackage(const GlossaryPackage& package, const GlossaryManager& manager,
                  const CommandStreams& streams)
{
    printColumns(streams, {package.key(), package.source.name, package.target.name,
                           manager.isInstalled(package) ? QStringLiteral("installed")
                                                        : QStringLiteral("incomplete"),
                           QString::number(manager.installedSize(package))});
}

QJsonObject asJson(const GlossaryPackage& package, const GlossaryManager& manager)
{
    return {{QStringLiteral("key"), package.key()},
            {QStringLiteral("source"), package.source.name},
            {QStringLiteral("target"), package.target.name},
            {QStringLiteral("installed"), manager.isInstalled(package)},
            {QStringLiteral("bytes"), manager.installedSize(package)}};
}

ExitStatus list(const GlossaryOptions& options, const GlossaryManager& manager,
                const CommandStreams& streams)
{
    QJsonArray entries;
    for (const GlossaryPackage& package : manager.installedPackages()) {
        if (options.json) {
            entries.append(asJson(package, manager));
        } else {
            printPackage(package, manager, streams);
        }
    }
    if (options.json) {
        printJson(streams, {{QStringLiteral("packages"), entries}});
    }
    return ExitStatus::success;
}

/// What the manager ended with.
ExitStatus outcome(const GlossaryOptions& options, const GlossaryManager& manager,
                   const CommandStreams& streams, const std::stop_token& stop)
{
    const auto activity = manager.activities().value(options.package.key());
    if (const auto* failed = std::get_if<GlossaryManager::Failed>(&activity)) {
        streams.complain(failed->message.trimmed());
        return ExitStatus::failure;
    }
    if (!manager.isInstalled(options.package)) {
        return stop.stop_requested() ? ExitStatus::interrupted : ExitStatus::failure;
    }
    if (options.json) {
        printJson(streams, asJson(options.package, manager));
    } else {
        printPackage(options.package, manager, streams);
    }
    return ExitStatus::success;
}

QCoro::Task<ExitStatus> install(GlossaryOptions options, GlossaryManager& manager,
                                CommandStreams streams, GlossaryProgress::Style style,
                                std::stop_token stop)
{
    {
        const GlossaryProgress progress(manager, options.package, streams, style);
        co_await manager.install(options.package, stop);
    }
    co_return outcome(options, manager, streams, stop);
}

QCoro::Task<ExitStatus> remove(GlossaryOptions options, GlossaryManager& manager,
                               CommandStreams streams)
{
    const bool isThere = manager.installedPackages().contains(options.package) ||
                         manager.installedSize(options.package) > 0;
    if (!isThere) {
        streams.complain(QStringLiteral("the glossary of %1 and %2 is not installed")
                             .arg(options.package.source.name, options.package.target.name));
        co_return ExitStatus::failure;
    }
    co_await manager.deletePackage(options.package);
    if (manager.installedSize(options.package) > 0) {
        streams.complain(QStringLiteral("a file of the glossary could not be removed"));
        co_return ExitStatus::failure;
    }
    co_return ExitStatus::success;
}

QJsonObject asJson(qsizetype line, const GlossaryMatch& match)
{
    return {{QStringLiteral("line"), line + 1},
            {QStringLiteral("term"), match.term},
            {QStringLiteral("replacement"),
             match.replacement ? QJsonValue(*match.replacement) : QJsonValue()},
            {QStringLiteral("hints"), QJsonArray::fromStringList(match.hints)}};
}

/// Whether there was a match to print.
bool print(const std::vector<std::optional<GlossaryMatch>>& matches, bool json,
           const CommandStreams& streams)
{
    QJsonArray entries;
    bool isAny = false;
    for (size_t line = 0; line < matches.size(); ++line) {
        const auto& match = matches[line];
        if (!match) {
            continue;
        }
        isAny = true;
        if (json) {
            entries.append(asJson(qsizetype(line), *match));
        } else {
            printColumns(streams, {match->term, match->replacement.value_or(QString()),
                                   match->hints.join(QStringLiteral(" | "))});
        }
    }
    if (json) {
        printJson(streams, {{QStringLiteral("matches"), entries}});
    }
    return isAny;
}

} // namespace

ExitStatus runGlossaryLanguages(const GlossaryOptions& options, const CommandStreams& streams)
{
    QJsonArray entries;
    for (const GlossaryLanguage& language : publishedLanguages()) {
        if (options.json) {
            entries.append(QJsonObject{{QStringLiteral("code"), language.code},
                                       {QStringLiteral("name"), language.name}});
        } else {
            printColumns(streams, {language.code, language.name});
        }
    }
    if (options.json) {
        printJson(streams, {{QStringLiteral("languages"), entries}});
    }
    return ExitStatus::success;
}

QCoro::Task<ExitStatus> runGlossaryPackages(GlossaryOptions options, GlossaryManager& manager,
                                            CommandStreams streams, GlossaryProgress::Style style,
                                            std::stop_token stop)
{
    co_await manager.refreshInstalledDirections();
    ExitStatus status = ExitStatus::success;
    if (options.verb == GlossaryOptions::Verb::install) {
        status = co_await install(options, manager, streams, style, stop);
    } else if (options.verb == GlossaryOptions::Verb::remove) {
        status = co_await remove(options, manager, streams);
    } else {
        status = list(options, manager, streams);
    }
    co_return ExitStatus(status);
}

QCoro::Task<ExitStatus> runGlossaryLookup(GlossaryOptions options, QString text,
                                          GlossaryLookup& glossary, CommandStreams streams,
                                          std::stop_token stop)
{
    try {
        const auto matches =
            co_await glossary.matches(text.split(u'\n'), options.source, options.target, stop);
        co_return print(matches, options.json, streams) ? ExitStatus::success : ExitStatus::failure;
    } catch (const CancellationError&) {
        co_return ExitStatus::interrupted;
    }
}

} // namespace zelvane
