#include "ui/language/LanguagePickerModel.h"

#include "foundation/Text.h"
#include "settings/LanguageNames.h"
#include "settings/Localization.h"

namespace zelvane {

namespace {

/// What users type who look for the automatic choice.
const QStringList& autoWords()
{
    static const QStringList words{QStringLiteral("any language"), QStringLiteral("any"),
                                   QStringLiteral("auto"),         QStringLiteral("auto-detect"),
                                   QStringLiteral("autodetect"),   QStringLiteral("detect")};
    return words;
}

QString folded(const QString& text)
{
    return text::caseFolded(text, interfaceLocale());
}

bool contains(const QString& text, const QString& query)
{
    return text::containsCharacters(folded(text), folded(query));
}

bool matches(const QString& option, const QString& query)
{
    if (contains(option, query) || contains(localizedLanguageName(option), query)) {
        return true;
    }
    return isAutoSource(option) && std::ranges::any_of(autoWords(), [&](const QString& word) {
               return contains(word, query);
           });
}

} // namespace

QString LanguagePickerChoice::displayText(const QString& language) const
{
    if (!localizesLanguageNames) {
        return language;
    }
    // Two kinds of English shall not read the same in a list.
    const QString name = localizedLanguageName(language);
    const bool losesItsKind = language.startsWith(name + QStringLiteral(" ("));
    return losesItsKind ? language : name;
}

QString LanguagePickerChoice::optionNamed(const QString& name) const
{
    const auto option = std::ranges::find_if(options, [&](const QString& text) {
        return folded(text) == folded(name) || folded(displayText(text)) == folded(name) ||
               (localizesLanguageNames && folded(localizedLanguageName(text)) == folded(name));
    });
    return option == options.end() ? QString() : *option;
}

QList<LanguagePickerRow> LanguagePickerChoice::rows(const QString& query) const
{
    const QString wanted = text::trimmed(query);
    QList<LanguagePickerRow> rows;
    for (const QString& option : options) {
        if (wanted.isEmpty() || matches(option, wanted)) {
            rows.append({option, displayText(option), false});
        }
    }
    if (allowsCustom && !wanted.isEmpty() && optionNamed(wanted).isEmpty()) {
        rows.append({wanted, wanted, true});
    }
    return rows;
}

QString LanguagePickerChoice::valueForReturn(const QString& query) const
{
    const QString wanted = text::trimmed(query);
    if (wanted.isEmpty()) {
        return {};
    }
    if (const QString option = optionNamed(wanted); !option.isEmpty()) {
        return option;
    }
    if (allowsCustom) {
        return wanted;
    }
    const QList<LanguagePickerRow> left = rows(query);
    return left.size() == 1 ? left.first().value : QString();
}

} // namespace zelvane
