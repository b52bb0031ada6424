#include "cli/GlossaryOptions.h"

#include "settings/LanguageNames.h"

namespace zelvane {

namespace {

using Verb = GlossaryOptions::Verb;
template <typename T>
using Read = std::expected<T, QString>;

std::optional<Verb> verbNamed(const QString& name)
{
    static const QList<std::pair<QString, Verb>> verbs{
        {QStringLiteral("list"), Verb::list},       {QStringLiteral("languages"), Verb::languages},
        {QStringLiteral("install"), Verb::install}, {QStringLiteral("delete"), Verb::remove},
        {QStringLiteral("lookup"), Verb::lookup},
    };
    for (const auto& [known, verb] : verbs) {
        if (name == known) {
            return verb;
        }
    }
    return std::nullopt;
}

Read<GlossaryLanguage> languageNamed(const QString& name)
{
    const auto language = resolveGlossaryLanguage(name);
    if (!language) {
        return std::unexpected(QStringLiteral("there is no language \"%1\"").arg(name));
    }
    return *language;
}

Read<GlossaryPackage> packageBetween(const QStringList& names)
{
    const auto source = languageNamed(names.first());
    const auto target = languageNamed(names.last());
    if (!source || !target) {
        return std::unexpected(source ? target.error() : source.error());
    }
    if (languageBase(source->code) == languageBase(target->code)) {
        return std::unexpected(QStringLiteral("a glossary needs two different languages"));
    }
    return GlossaryPackage{*source, *target};
}

/// The arguments behind the verb, told apart.
struct Words
{
    QStringList plain;
    QString from;
    QString to;
    bool json = false;
    bool help = false;
};

Read<Words> tellApart(const QStringList& arguments)
{
    Words words;
    bool optionsEnded = false;
    for (qsizetype i = 0; i < arguments.size(); ++i) {
        const QString& argument = arguments[i];
        const QString name = argument.section(u'=', 0, 0);
        if (optionsEnded || !argument.startsWith(u'-') || argument == QStringLiteral("-")) {
            words.plain << argument;
        } else if (argument == QStringLiteral("--")) {
            optionsEnded = true;
        } else if (argument == QStringLiteral("--json")) {
            words.json = true;
        } else if (argument == QStringLiteral("--help") || argument == QStringLiteral("-h")) {
            words.help = true;
        } else if (name == QStringLiteral("--from") || name == QStringLiteral("--to")) {
            const bool isJoined = argument.size() > name.size();
            if (!isJoined && i + 1 == arguments.size()) {
                return std::unexpected(QStringLiteral("%1 needs a value").arg(name));
            }
            const QString value = isJoined ? argument.sliced(name.size() + 1) : arguments[++i];
            (name == QStringLiteral("--to") ? words.to : words.from) = value;
        } else {
            return std::unexpected(QStringLiteral("unknown option \"%1\"").arg(argument));
        }
    }
    return words;
}

std::optional<QString> takeLookup(GlossaryOptions& options, const Words& words)
{
    if (words.to.isEmpty()) {
        return QStringLiteral("glossary lookup needs --to LANGUAGE");
    }
    if (const auto target = languageNamed(words.to); !target) {
        return target.error();
    }
    options.target = words.to;
    if (!words.from.isEmpty()) {
        const auto source = languageNamed(words.from);
        if (!source && !isAutoSource(words.from)) {
            return source.error();
        }
        options.source = words.from;
    }
    if (words.plain.size() > 1) {
        return QStringLiteral("more than one text: put it into quotation marks");
    }
    if (words.plain.size() == 1 && words.plain.first() != QStringLiteral("-")) {
        options.text = words.plain.first();
    }
    return std::nullopt;
}

std::optional<QString> takePackage(GlossaryOptions& options, const QString& verb,
                                   const Words& words)
{
    if (words.plain.size() != 2) {
        return QStringLiteral("glossary %1 needs two languages").arg(verb);
    }
    const auto package = packageBetween(words.plain);
    if (!package) {
        return package.error();
    }
    options.package = *package;
    return std::nullopt;
}

/// Fills in what the verb needs; a sentence if that isn't there.
std::optional<QString> take(GlossaryOptions& options, const QString& verb, const Words& words)
{
    if (options.verb == Verb::lookup) {
        return takeLookup(options, words);
    }
    if (!words.from.isEmpty() || !words.to.isEmpty()) {
        return QStringLiteral("only glossary lookup takes --from and --to");
    }
    if (options.verb == Verb::install || options.verb == Verb::remove) {
        return takePackage(options, verb, words);
    }
    return words.plain.isEmpty() ? std::nullopt
                                 : std::optional(QStringLiteral("glossary %1 takes no argument "
                                                                "\"%2\"")
                                                     .arg(verb, words.plain.first()));
}

} // namespace

std::expected<GlossaryOptions, QString> parseGlossaryOptions(const QStringList& arguments)
{
    GlossaryOptions options;
    const QString verb = arguments.value(0);
    if (verb == QStringLiteral("--help") || verb == QStringLiteral("-h")) {
        options.help = true;
        return options;
    }
    const auto known = verbNamed(verb);
    if (!known) {
        return std::unexpected(
            verb.isEmpty()
                ? QStringLiteral(
                      "glossary needs one of list, languages, install, delete and lookup")
                : QStringLiteral("unknown command \"glossary %1\"").arg(verb));
    }
    const auto words = tellApart(arguments.sliced(1));
    if (!words) {
        return std::unexpected(words.error());
    }
    options.verb = *known;
    options.json = words->json;
    options.help = words->help;
    if (options.help) {
        return options;
    }
    if (const auto complaint = take(options, verb, *words)) {
        return std::unexpected(*complaint);
    }
    return options;
}

} // namespace zelvane
