#pragma once

#include <QList>
#include <QObject>
#include <QProperty>
#include <QString>
#include <QStringList>

namespace zelvane {

/// Whether the names of languages are shown in the interface language or as they stand.
enum class LanguageNameStyle { localized, asStored };

/// Whether the user may choose a language that isn't offered.
enum class CustomLanguages { allowed, refused };

/// A row of the list that a language picker opens.
struct LanguagePickerRow
{
    /// What is written when the row is chosen.
    QString language;
    QString label;
    bool isSelected = false;
    /// Offers what the user typed.
    bool isCustom = false;

    friend bool operator==(const LanguagePickerRow&, const LanguagePickerRow&) = default;
};

/// A choice among many languages, with a search. Needs no display.
class LanguagePickerModel final : public QObject
{
    Q_OBJECT

public:
    LanguagePickerModel(QStringList options, LanguageNameStyle nameStyle, CustomLanguages custom);

    [[nodiscard]] QString selection() const { return m_selection; }
    void setSelection(const QString& language) { m_selection = language; }
    [[nodiscard]] QBindable<QString> bindableSelection() const { return &m_selection; }
    /// How the closed control shows the selection.
    [[nodiscard]] QString selectionLabel() const { return labelOf(selection()); }

    [[nodiscard]] QString query() const { return m_query; }
    void setQuery(const QString& query) { m_query = query; }
    [[nodiscard]] QBindable<QString> bindableQuery() const { return &m_query; }

    /// The languages that the query leaves, in their order, and then the query itself if it may be
    /// chosen. In the interface language of this moment.
    [[nodiscard]] QList<LanguagePickerRow> rows() const;

    /// Writes the selection and forgets the query.
    void choose(const QString& language);

    /// What Return in the search field chooses: the query, if it may be chosen, or else the first
    /// row that is left. False if there is none.
    bool chooseQuery();

Q_SIGNALS:
    /// The user has chosen, even if it is what was selected before.
    void chosen(const QString& language);

private:
    [[nodiscard]] QString labelOf(const QString& language) const;
    [[nodiscard]] bool matches(const QString& option, const QString& query) const;
    [[nodiscard]] bool offersCustom(const QString& trimmedQuery) const;

    QStringList m_options;
    LanguageNameStyle m_nameStyle;
    CustomLanguages m_custom;
    Q_OBJECT_BINDABLE_PROPERTY(LanguagePickerModel, QString, m_selection)
    Q_OBJECT_BINDABLE_PROPERTY(LanguagePickerModel, QString, m_query)
};

} // namespace zelvane
