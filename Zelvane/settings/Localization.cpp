#include "settings/Localization.h"

namespace zelvane {

namespace {

/// One "%@", "%lld" or "%1$@" of a format; `length` 0 if there is none at the position.
struct Placeholder
{
    qsizetype length = 0;
    std::optional<qsizetype> argument; ///< counted from 0; none means the next one in order
};

Placeholder placeholderAt(QStringView format, qsizetype position)
{
    QStringView rest = format.sliced(position + 1);
    Placeholder found;
    qsizetype digits = 0;
    while (digits < rest.size() && rest[digits].isDigit()) {
        ++digits;
    }
    qsizetype consumed = 1;
    if (digits > 0 && digits < rest.size() && rest[digits] == u'$') {
        found.argument = rest.first(digits).toLongLong() - 1;
        rest = rest.sliced(digits + 1);
        consumed += digits + 1;
    }
    for (const QStringView conversion :
         {QStringView(u"@"), QStringView(u"lld"), QStringView(u"d")}) {
        if (rest.startsWith(conversion)) {
            found.length = consumed + conversion.size();
            return found;
        }
    }
    return {};
}

QString written(const QVariant& argument, const QLocale& locale)
{
    if (argument.typeId() == QMetaType::QString) {
        return argument.toString();
    }
    // Whole numbers have no group separators in messages: they are codes and counts.
    QLocale plain(locale);
    plain.setNumberOptions(QLocale::OmitGroupSeparator);
    return plain.toString(argument.toLongLong());
}

} // namespace

QString localizedText(const QString& key)
{
    return key;
}

QLocale interfaceLocale()
{
    return QLocale();
}

QString localizedFormat(const QString& format, const QVariantList& arguments)
{
    const QString text = localizedText(format);
    const QLocale locale = interfaceLocale();
    QString result;
    qsizetype next = 0;
    for (qsizetype i = 0; i < text.size();) {
        if (text[i] != u'%') {
            result += text[i++];
            continue;
        }
        if (i + 1 < text.size() && text[i + 1] == u'%') {
            result += u'%';
            i += 2;
            continue;
        }
        const Placeholder placeholder = placeholderAt(text, i);
        const qsizetype argument = placeholder.argument.value_or(next);
        if (placeholder.length == 0 || argument < 0 || argument >= arguments.size()) {
            result += text[i++];
            continue;
        }
        if (!placeholder.argument) {
            ++next;
        }
        result += written(arguments[argument], locale);
        i += placeholder.length;
    }
    return result;
}

} // namespace zelvane
