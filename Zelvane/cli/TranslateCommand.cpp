#include "cli/TranslateCommand.h"

#include "cli/EngineChoice.h"
#include "cli/EngineFailure.h"
#include "foundation/Text.h"
#include "pipeline/Prompts.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QStringDecoder>

namespace zelvane {

namespace {

constexpr qint64 maximalInput = qint64(16) * 1024 * 1024;

using Parsed = std::expected<TranslateOptions, QString>;

/// Stores the value of one option; a sentence if the value is no good.
std::optional<QString> storeOption(TranslateOptions& options, const QString& name,
                                   const QString& value)
{
    if (name == QStringLiteral("--from")) {
        options.source = value;
    } else if (name == QStringLiteral("--to")) {
        options.target = value;
    } else if (name == QStringLiteral("--model")) {
        options.model = value;
    } else if (name == QStringLiteral("--prompt")) {
        options.prompt = value;
    } else {
        options.engine = engineFromName(value);
        if (!options.engine) {
            return QStringLiteral("there is no engine \"%1\"").arg(value);
        }
    }
    return std::nullopt;
}

bool storeFlag(TranslateOptions& options, const QString& argument)
{
    if (argument == QStringLiteral("--trace")) {
        options.trace = true;
    } else if (argument == QStringLiteral("--json")) {
        options.json = true;
    } else if (argument == QStringLiteral("--help") || argument == QStringLiteral("-h")) {
        options.help = true;
    } else {
        return false;
    }
    return true;
}

QString asJson(const QJsonObject& object)
{
    return QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact)) + u'\n';
}

} // namespace

Parsed parseTranslateOptions(const QStringList& arguments)
{
    static const QStringList valued{QStringLiteral("--from"), QStringLiteral("--to"),
                                    QStringLiteral("--engine"), QStringLiteral("--model"),
                                    QStringLiteral("--prompt")};
    TranslateOptions options;
    QStringList texts;
    bool optionsEnded = false;
    for (qsizetype i = 0; i < arguments.size(); ++i) {
        const QString& argument = arguments[i];
        if (optionsEnded || !argument.startsWith(u'-') || argument == QStringLiteral("-")) {
            texts << argument;
            continue;
        }
        if (argument == QStringLiteral("--")) {
            optionsEnded = true;
            continue;
        }
        if (storeFlag(options, argument)) {
            continue;
        }
        const qsizetype equals = argument.indexOf(u'=');
        const QString name = argument.first(equals < 0 ? argument.size() : equals);
        if (!valued.contains(name)) {
            return std::unexpected(QStringLiteral("unknown option \"%1\"").arg(name));
        }
        if (equals < 0 && i + 1 == arguments.size()) {
            return std::unexpected(QStringLiteral("%1 needs a value").arg(name));
        }
        const QString value = equals < 0 ? arguments[++i] : argument.sliced(equals + 1);
        if (const auto complaint = storeOption(options, name, value)) {
            return std::unexpected(*complaint);
        }
    }
    if (options.help) {
        return options;
    }
    if (text::isBlank(options.target)) {
        return std::unexpected(QStringLiteral("translate needs --to LANGUAGE"));
    }
    if (texts.size() > 1) {
        return std::unexpected(QStringLiteral("more than one text: put it into quotation marks"));
    }
    if (texts.size() == 1 && texts.first() != QStringLiteral("-")) {
        options.text = texts.first();
    }
    return options;
}

void applyOptions(const TranslateOptions& options, UserDefaults& overlay)
{
    if (options.engine) {
        chooseEngine(*options.engine, overlay);
    }
    if (!options.model.isEmpty()) {
        const QString stored = overlay.string(QStringLiteral("zv.provider")).value_or(QString());
        const AIProvider provider =
            providerFromStoredName(stored).value_or(AIProvider::smartOffline);
        overlay.setValue(QStringLiteral("zv.model.") + rawValue(provider), options.model);
    }
    if (options.prompt) {
        overlay.setValue(QStringLiteral("zv.prompt"), *options.prompt);
    }
}

std::expected<QString, QString> readText(QIODevice& input)
{
    QByteArray bytes;
    while (bytes.size() <= maximalInput) {
        const QByteArray chunk = input.read(maximalInput + 1 - bytes.size());
        if (chunk.isEmpty()) {
            break;
        }
        bytes += chunk;
    }
    if (bytes.size() > maximalInput) {
        return std::unexpected(QStringLiteral("the text is larger than 16 MiB"));
    }
    QStringDecoder decoder(QStringDecoder::Utf8);
    QString text = decoder.decode(bytes);
    if (decoder.hasError()) {
        return std::unexpected(QStringLiteral("the text on standard input is not UTF-8"));
    }
    return text;
}

QCoro::Task<ExitStatus> runTranslateCommand(TranslateOptions options, QString text,
                                            const AppSettings& settings,
                                            TranslationDispatch& dispatch, TranslationTrace& trace,
                                            const Clock& clock, CommandStreams streams,
                                            std::stop_token stop)
{
    const auto started = clock.monotonicNow();
    trace.begin({{QStringLiteral("provider"), rawValue(settings.provider())},
                 {QStringLiteral("model"), settings.model()},
                 {QStringLiteral("source"), options.source},
                 {QStringLiteral("target"), options.target},
                 {QStringLiteral("chars"), QString::number(text::characterCount(text))},
                 {QStringLiteral("mode"), QStringLiteral("command")}});
    ExitStatus status = ExitStatus::failure;
    try {
        const QString prompt =
            renderPrompt(settings.promptTemplate(), options.source, options.target);
        trace.mark(QStringLiteral("API begin"));
        const TranslationRequest request =
            dispatch.makeTranslationRequest(text, options.source, options.target, prompt);
        const QString translation = co_await dispatch.runRequest(request, stop);
        trace.mark(QStringLiteral("API end"),
                   QStringLiteral("%1 chars").arg(text::characterCount(translation)));
        const auto elapsed =
            std::chrono::duration_cast<std::chrono::milliseconds>(clock.monotonicNow() - started);
        if (options.json) {
            streams.print(asJson({{QStringLiteral("translation"), translation},
                                  {QStringLiteral("engine"), rawValue(request.provider)},
                                  {QStringLiteral("model"), request.model},
                                  {QStringLiteral("source"), options.source},
                                  {QStringLiteral("target"), options.target},
                                  {QStringLiteral("milliseconds"), qint64(elapsed.count())}}));
        } else {
            streams.print(translation + u'\n');
        }
        status = ExitStatus::success;
    } catch (const CancellationError&) {
        trace.mark(QStringLiteral("cancelled"));
        status = ExitStatus::interrupted;
    } catch (...) {
        const std::exception_ptr error = std::current_exception();
        trace.mark(QStringLiteral("error"), describe(error));
        streams.complain(complaintAbout(error, settings.provider()));
    }
    if (options.trace) {
        streams.error.write(trace.report().toUtf8() + '\n');
    }
    co_return status;
}

} // namespace zelvane
