#include "cli/DefaultsCommand.h"

#include <QLocale>

#include <cmath>

namespace zelvane {

namespace {

/// The largest value that is taken from standard input.
constexpr qint64 maximalInput = qint64(16) * 1024 * 1024;

template <typename... Cases>
struct Overloaded : Cases...
{
    using Cases::operator()...;
};

QByteArray bareValue(const DefaultsValue& value)
{
    return std::visit(Overloaded{
                          [](bool flag) { return flag ? QByteArray("true") : QByteArray("false"); },
                          [](qint64 whole) { return QByteArray::number(whole); },
                          [](double number) {
                              return QByteArray::number(number, 'g',
                                                        QLocale::FloatingPointShortest);
                          },
                          [](const QString& text) { return text.toUtf8(); },
                          [](const QByteArray& data) { return data; },
                      },
                      value);
}

QByteArray typeName(const DefaultsValue& value)
{
    return std::visit(Overloaded{
                          [](bool) { return QByteArray("bool"); },
                          [](qint64) { return QByteArray("int"); },
                          [](double) { return QByteArray("double"); },
                          [](const QString&) { return QByteArray("string"); },
                          [](const QByteArray&) { return QByteArray("data"); },
                      },
                      value);
}

std::optional<bool> parseBool(const QString& text)
{
    const QString lower = text.toLower();
    if (lower == QStringLiteral("true") || lower == QStringLiteral("yes") ||
        lower == QStringLiteral("1")) {
        return true;
    }
    if (lower == QStringLiteral("false") || lower == QStringLiteral("no") ||
        lower == QStringLiteral("0")) {
        return false;
    }
    return std::nullopt;
}

class Defaults
{
public:
    Defaults(UserDefaults& defaults, const CommandStreams& streams)
        : m_defaults(defaults)
        , m_streams(streams)
    {
    }

    ExitStatus run(const QStringList& arguments)
    {
        if (arguments.isEmpty()) {
            return misused(QStringLiteral("defaults needs one of read, write, delete and list"));
        }
        const QString verb = arguments.first();
        const QStringList rest = arguments.sliced(1);
        if (verb == QStringLiteral("--help") || verb == QStringLiteral("-h")) {
            m_streams.print(helpText(CommandLine::Command::defaults));
            return ExitStatus::success;
        }
        if (verb == QStringLiteral("read")) {
            return rest.size() == 1 ? read(rest.first())
                                    : misused(QStringLiteral("defaults read needs one key"));
        }
        if (verb == QStringLiteral("delete")) {
            return rest.size() == 1 ? remove(rest.first())
                                    : misused(QStringLiteral("defaults delete needs one key"));
        }
        if (verb == QStringLiteral("list")) {
            return rest.size() <= 1 ? list(rest.value(0))
                                    : misused(QStringLiteral("defaults list takes one prefix"));
        }
        if (verb == QStringLiteral("write")) {
            return write(rest);
        }
        return misused(QStringLiteral("unknown command \"defaults %1\"").arg(verb));
    }

private:
    ExitStatus misused(const QString& sentence)
    {
        m_streams.complain(sentence + QStringLiteral(" (see zelvane-desk help defaults)"));
        return ExitStatus::wrongUsage;
    }

    ExitStatus missing(const QString& key)
    {
        m_streams.complain(QStringLiteral("there is no setting \"%1\"").arg(key));
        return ExitStatus::failure;
    }

    ExitStatus read(const QString& key)
    {
        const std::optional<DefaultsValue> value = m_defaults.value(key);
        if (!value) {
            return missing(key);
        }
        m_streams.output.write(bareValue(*value) + '\n');
        return ExitStatus::success;
    }

    ExitStatus remove(const QString& key)
    {
        if (!m_defaults.value(key)) {
            return missing(key);
        }
        m_defaults.remove(key);
        return ExitStatus::success;
    }

    ExitStatus list(const QString& prefix)
    {
        QStringList keys = m_defaults.keys();
        keys.sort();
        for (const QString& key : std::as_const(keys)) {
            const std::optional<DefaultsValue> value = m_defaults.value(key);
            if (value && key.startsWith(prefix)) {
                m_streams.output.write(onOneLine(key.toUtf8()) + '\t' + typeName(*value) + '\t' +
                                       onOneLine(bareValue(*value)) + '\n');
            }
        }
        return ExitStatus::success;
    }

    ExitStatus write(const QStringList& arguments)
    {
        static const QStringList types{QStringLiteral("--bool"), QStringLiteral("--int"),
                                       QStringLiteral("--double"), QStringLiteral("--data")};
        QString type;
        QStringList rest;
        for (const QString& argument : arguments) {
            // The first two words of that form name the type; a value may look like an option.
            if (type.isEmpty() && rest.size() < 2 && types.contains(argument)) {
                type = argument;
            } else {
                rest << argument;
            }
        }
        if (rest.size() != 2 || rest.first().isEmpty()) {
            return misused(QStringLiteral("defaults write needs a key and one value"));
        }
        const std::optional<DefaultsValue> value = parsed(type, rest[1]);
        if (!value) {
            return ExitStatus::wrongUsage;
        }
        m_defaults.setValue(rest.first(), *value);
        return ExitStatus::success;
    }

    /// The value, or none after a complaint.
    std::optional<DefaultsValue> parsed(const QString& type, const QString& text)
    {
        bool ok = true;
        std::optional<DefaultsValue> value;
        if (type.isEmpty()) {
            value = text;
        } else if (type == QStringLiteral("--bool")) {
            if (const auto flag = parseBool(text)) {
                value = *flag;
            }
        } else if (type == QStringLiteral("--int")) {
            const qint64 whole = text.toLongLong(&ok);
            if (ok) {
                value = whole;
            }
        } else if (type == QStringLiteral("--double")) {
            const double number = text.toDouble(&ok);
            if (ok && std::isfinite(number)) {
                value = number;
            }
        } else {
            value = bytes(text);
        }
        if (!value) {
            misused(QStringLiteral("\"%1\" is no value for %2").arg(text, type));
        }
        return value;
    }

    std::optional<DefaultsValue> bytes(const QString& text)
    {
        if (text != QStringLiteral("-")) {
            return text.toUtf8();
        }
        QByteArray data = m_streams.input.read(maximalInput + 1);
        if (data.size() > maximalInput) {
            return std::nullopt;
        }
        return data;
    }

    UserDefaults& m_defaults;
    const CommandStreams& m_streams;
};

} // namespace

ExitStatus runDefaultsCommand(const QStringList& arguments, UserDefaults& defaults,
                              const CommandStreams& streams)
{
    return Defaults(defaults, streams).run(arguments);
}

} // namespace zelvane
