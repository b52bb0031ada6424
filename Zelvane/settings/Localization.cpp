#include "settings/Localization.h"

#include "settings/AppLanguage.h"
#include "settings/TranslationCatalogue.h"
#include "settings/UserDefaults.h"

#include <QFile>

#include <array>
#include <memory>
#include <mutex>

namespace zelvane {

namespace {

/// The catalogues that have been read. They stay for as long as the process.
class Catalogues
{
public:
    /// Empty for English, whose texts are the keys. Callable from any thread.
    const TranslationCatalogue& of(AppLanguage language)
    {
        const std::scoped_lock lock(m_lock);
        auto& catalogue = m_catalogues.at(static_cast<size_t>(language));
        if (!catalogue) {
            catalogue = std::make_unique<const TranslationCatalogue>(read(language));
        }
        return *catalogue;
    }

private:
    static TranslationCatalogue read(AppLanguage language)
    {
        QFile file(QStringLiteral(":/translations/%1.po").arg(rawValue(language)));
        if (!file.open(QFile::ReadOnly)) {
            return {};
        }
        return parseCatalogue(file.readAll()).value_or(TranslationCatalogue());
    }

    std::mutex m_lock;
    std::array<std::unique_ptr<const TranslationCatalogue>, allAppLanguages.size()> m_catalogues;
};

struct Localization
{
    const UserDefaults* defaults = nullptr;
    AppLanguage systemLanguage = AppLanguage::english;
    Catalogues catalogues;
};

Localization& localization()
{
    static Localization one;
    return one;
}

/// Readers of traditional characters are better served with their next language than with
/// simplified ones.
bool isTraditionalChinese(const QString& tag)
{
    const QStringList parts = tag.split(u'-');
    return parts.contains(u"Hant") ||
           (!parts.contains(u"Hans") &&
            (parts.contains(u"TW") || parts.contains(u"HK") || parts.contains(u"MO")));
}

/// The first of the user's languages that the interface speaks.
AppLanguage interfaceLanguageAmong(const QStringList& tags)
{
    for (const QString& tag : tags) {
        const QString base = tag.section(u'-', 0, 0);
        for (const AppLanguage language : allAppLanguages) {
            const bool speaks = rawValue(language).section(u'-', 0, 0) == base;
            if (speaks && !isTraditionalChinese(tag)) {
                return language;
            }
        }
    }
    return AppLanguage::english;
}

/// The user's choice at this moment.
AppLanguage chosenLanguage()
{
    const UserDefaults* defaults = localization().defaults;
    if (defaults == nullptr) {
        return AppLanguage::english;
    }
    return appLanguageFromStoredName(
        defaults->string(QStringLiteral("zv.appLanguage")).value_or(QString()));
}

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

void installLocalization(const UserDefaults* defaults, const QStringList& systemLanguages)
{
    localization().defaults = defaults;
    localization().systemLanguage = interfaceLanguageAmong(systemLanguages);
}

QString localizedText(const QString& key)
{
    const AppLanguage chosen = chosenLanguage();
    const AppLanguage language =
        chosen == AppLanguage::system ? localization().systemLanguage : chosen;
    return localization().catalogues.of(language).value(key, key);
}

QLocale interfaceLocale()
{
    const AppLanguage chosen = chosenLanguage();
    if (chosen == AppLanguage::system) {
        return QLocale::system();
    }
    return QLocale(rawValue(chosen));
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
