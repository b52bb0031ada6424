#include "ui/languages/LanguagePickerModel.h"

#include "foundation/Text.h"
#include "settings/LanguageNames.h"

#include <algorithm>
#include <utility>

namespace zelvane {

namespace {

/// What a user may type who wants the language to be found out.
const QStringList& automaticWords()
{
    static const QStringList words{
        QStringLiteral("any language"), QStringLiteral("any"),        QStringLiteral("auto"),
        QStringLiteral("auto-detect"),  QStringLiteral("autodetect"), QStringLiteral("detect"),
    };
    return words;
}

} // namespace

LanguagePickerModel::LanguagePickerModel(QStringList options, LanguageNameStyle nameStyle,
                                         CustomLanguages custom)
    : m_options(std::move(options))
    , m_nameStyle(nameStyle)
    , m_custom(custom)
{
}

QList<LanguagePickerRow> LanguagePickerModel::rows() const
{
    const QString trimmed = text::trimmed(query());
    QList<LanguagePickerRow> rows;
    for (const QString& option : m_options) {
        if (trimmed.isEmpty() || matches(option, trimmed)) {
            rows.append({option, labelOf(option), option == selection(), false});
        }
    }
    if (offersCustom(trimmed)) {
        rows.append({trimmed, trimmed, false, true});
    }
    return rows;
}

void LanguagePickerModel::choose(const QString& language)
{
    m_selection = language;
    m_query = QString();
    Q_EMIT chosen(language);
}

bool LanguagePickerModel::chooseQuery()
{
    const QString trimmed = text::trimmed(query());
    if (offersCustom(trimmed)) {
        choose(trimmed);
        return true;
    }
    const QList<LanguagePickerRow> left = rows();
    if (trimmed.isEmpty() || left.isEmpty()) {
        return false;
    }
    // A language that was typed in full goes before one that merely contains what was typed.
    const auto exact = std::ranges::find_if(left, [&trimmed](const LanguagePickerRow& row) {
        return row.language.compare(trimmed, Qt::CaseInsensitive) == 0 ||
               row.label.compare(trimmed, Qt::CaseInsensitive) == 0;
    });
    choose(exact == left.end() ? left.first().language : exact->language);
    return true;
}

QString LanguagePickerModel::labelOf(const QString& language) const
{
    return m_nameStyle == LanguageNameStyle::localized ? localizedLanguageName(language) : language;
}

bool LanguagePickerModel::matches(const QString& option, const QString& query) const
{
    if (option.contains(query, Qt::CaseInsensitive) ||
        labelOf(option).contains(query, Qt::CaseInsensitive)) {
        return true;
    }
    return isAutoSource(option) &&
           std::ranges::any_of(automaticWords(), [&query](const QString& word) {
               return word.contains(query, Qt::CaseInsensitive);
           });
}

bool LanguagePickerModel::offersCustom(const QString& trimmedQuery) const
{
    return m_custom == CustomLanguages::allowed && !trimmedQuery.isEmpty() &&
           std::ranges::none_of(m_options, [&](const QString& option) {
               return option.compare(trimmedQuery, Qt::CaseInsensitive) == 0 ||
                      labelOf(option).compare(trimmedQuery, Qt::CaseInsensitive) == 0;
           });
}

} // namespace zelvane
