#include "cli/ServiceCommand.h"

namespace zelvane {

namespace {

const QStringList& entries()
{
    static const QStringList names{
        QStringLiteral("translatePair1"),   QStringLiteral("translatePair2"),
        QStringLiteral("translatePair3"),   QStringLiteral("translatePair1UI"),
        QStringLiteral("translatePair2UI"), QStringLiteral("translatePair3UI"),
    };
    return names;
}

} // namespace

std::expected<ServiceOptions, QString> parseServiceOptions(const QStringList& arguments)
{
    ServiceOptions options;
    QStringList words;
    bool optionsEnded = false;
    for (const QString& argument : arguments) {
        if (!optionsEnded && argument == QStringLiteral("--")) {
            optionsEnded = true;
        } else if (!optionsEnded &&
                   (argument == QStringLiteral("--help") || argument == QStringLiteral("-h"))) {
            options.help = true;
            return options;
        } else if (!optionsEnded && argument.startsWith(u'-') && argument.size() > 1) {
            return std::unexpected(QStringLiteral("unknown option \"%1\"").arg(argument));
        } else {
            words << argument;
        }
    }
    if (words.isEmpty()) {
        return std::unexpected(QStringLiteral("service needs the name of a service"));
    }
    if (!entries().contains(words.first())) {
        return std::unexpected(QStringLiteral("there is no service \"%1\"").arg(words.first()));
    }
    if (words.size() > 2) {
        return std::unexpected(QStringLiteral("more than one text: put it into quotation marks"));
    }
    options.entry = words.first();
    if (words.size() == 2 && words.last() != QStringLiteral("-")) {
        options.text = words.last();
    }
    return options;
}

QCoro::Task<ExitStatus> runServiceCommand(ServiceOptions options, QString text,
                                          RunningProgram& program, CommandStreams streams,
                                          std::stop_token stop)
{
    ExitStatus status = ExitStatus::failure;
    try {
        const QString translation = co_await program.translate(options.entry, text, stop);
        streams.print(translation + u'\n');
        status = ExitStatus::success;
    } catch (const CancellationError&) {
        status = ExitStatus::interrupted;
    } catch (...) {
        streams.complain(describe(std::current_exception()));
    }
    co_return status;
}

} // namespace zelvane
