#pragma once

#include <QList>
#include <QString>
#include <QStringList>

namespace zelvane {

/// A row in the list of a language picker.
struct LanguagePickerRow
{
    /// What is stored when the row is chosen.
    QString value;
    /// What the row shows.
    QString text;
    /// Offers the query itself, which is no language of the list.
    bool isCustom = false;

    friend bool operator==(const LanguagePickerRow&, const LanguagePickerRow&) = default;
};

/// What a language picker offers. Needs no display.
struct LanguagePickerChoice
{
    QStringList options;
    /// Whether rows show the names in the interface language.
    bool localizesLanguageNames = true;
    /// Whether any text may be chosen.
    bool allowsCustom = false;

    /// What stands for the stored text `language`.
    [[nodiscard]] QString displayText(const QString& language) const;
    /// The options that match, and the query itself where it may be chosen and is no option.
    [[nodiscard]] QList<LanguagePickerRow> rows(const QString& query) const;
    /// The option that `name` spells out, in whatever case or as the rows show it; empty for none.
    [[nodiscard]] QString optionNamed(const QString& name) const;
    /// What Return chooses: the query as a custom language if there is one, else the only option
    /// left. Empty for nothing.
    [[nodiscard]] QString valueForReturn(const QString& query) const;
};

} // namespace zelvane
