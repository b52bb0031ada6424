#include "cli/EngineOptions.h"

#include "cli/EngineChoice.h"

#include <optional>
#include <utility>

namespace zelvane {

namespace {

using Verb = EngineOptions::Verb;

std::optional<Verb> verbNamed(const QString& name)
{
    static const QList<std::pair<QString, Verb>> verbs{
        {QStringLiteral("list"), Verb::list},     {QStringLiteral("install"), Verb::install},
        {QStringLiteral("cancel"), Verb::cancel}, {QStringLiteral("delete"), Verb::remove},
        {QStringLiteral("status"), Verb::status},
    };
    for (const auto& [known, verb] : verbs) {
        if (name == known) {
            return verb;
        }
    }
    return std::nullopt;
}

/// By its short name, its folder, or any name of its provider.
std::optional<SmartOfflineVariant> engineNamed(const QString& name)
{
    for (const SmartOfflineVariant engine : smartOfflineVariants()) {
        const QString lower = name.toLower();
        if (lower == shortName(engine) || lower == factsOf(engine).folder) {
            return engine;
        }
    }
    const auto provider = engineFromName(name);
    return provider ? smartOfflineVariantOf(*provider) : std::nullopt;
}

/// The words behind the verb; a sentence if there is an option that doesn't exist.
std::optional<QString> take(EngineOptions& options, QStringList& names,
                            const QStringList& arguments)
{
    for (const QString& argument : arguments) {
        if (argument == QStringLiteral("--json")) {
            options.json = true;
        } else if (argument == QStringLiteral("--help") || argument == QStringLiteral("-h")) {
            options.help = true;
        } else if (argument.startsWith(u'-')) {
            return QStringLiteral("unknown option \"%1\"").arg(argument);
        } else {
            names += argument;
        }
    }
    return std::nullopt;
}

} // namespace

QString shortName(SmartOfflineVariant engine)
{
    switch (engine) {
    case SmartOfflineVariant::hyMT2_7b:
        return QStringLiteral("smart");
    case SmartOfflineVariant::euroLLM_9b:
        return QStringLiteral("balanced");
    case SmartOfflineVariant::lmt60_4b:
        return QStringLiteral("fast");
    }
    Q_UNREACHABLE();
}

std::expected<EngineOptions, QString> parseEngineOptions(const QStringList& arguments)
{
    EngineOptions options;
    const QString verb = arguments.value(0);
    if (verb == QStringLiteral("--help") || verb == QStringLiteral("-h")) {
        options.help = true;
        return options;
    }
    const auto known = verbNamed(verb);
    if (!known) {
        return std::unexpected(
            verb.isEmpty()
                ? QStringLiteral("engine needs one of list, install, cancel, delete and status")
                : QStringLiteral("unknown command \"engine %1\"").arg(verb));
    }
    options.verb = *known;
    QStringList names;
    if (const auto complaint = take(options, names, arguments.sliced(1))) {
        return std::unexpected(*complaint);
    }
    if (options.help) {
        return options;
    }
    if (options.verb == Verb::list) {
        return names.isEmpty()
                   ? std::expected<EngineOptions, QString>(options)
                   : std::unexpected(
                         QStringLiteral("engine list takes no argument \"%1\"").arg(names.first()));
    }
    if (names.size() != 1) {
        return std::unexpected(
            QStringLiteral("engine %1 needs one of smart, balanced and fast").arg(verb));
    }
    const auto engine = engineNamed(names.first());
    if (!engine) {
        return std::unexpected(
            QStringLiteral("there is no engine \"%1\" on this machine").arg(names.first()));
    }
    options.engine = *engine;
    return options;
}

} // namespace zelvane
