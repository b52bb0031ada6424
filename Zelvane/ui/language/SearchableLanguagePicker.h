#pragma once

#include "ui/components/OptionList.h"
#include "ui/components/Picker.h"
#include "ui/components/Popover.h"
#include "ui/components/TextField.h"
#include "ui/components/ThemedLabel.h"
#include "ui/language/LanguagePickerModel.h"

#include <QPointer>

namespace zelvane {

/// A choice of a language: closed it shows the selected one; a click opens a list that narrows down
/// while the user types.
class SearchableLanguagePicker final : public PickerButton
{
    Q_OBJECT

public:
    /// `theme` must outlive the picker.
    SearchableLanguagePicker(const Theme& theme, LanguagePickerChoice choice, int width,
                             QWidget* parent = nullptr);
    ~SearchableLanguagePicker() override;
    Q_DISABLE_COPY_MOVE(SearchableLanguagePicker)

    /// The language text as it is stored, be it an option or not.
    [[nodiscard]] QString selection() const { return m_selection; }
    void setSelection(const QString& language);
    void setChoice(const LanguagePickerChoice& choice);

    [[nodiscard]] QString valueText() const override;
    void togglePopup() override;
    [[nodiscard]] QWidget* popup() const override { return m_popover; }
    [[nodiscard]] bool isOpen() const;

    // The parts of the open list; null while it is closed.
    [[nodiscard]] Popover* popover() const { return m_popover; }
    [[nodiscard]] SearchField* searchField() const { return m_search; }
    [[nodiscard]] OptionList* list() const { return m_list; }

    bool eventFilter(QObject* watched, QEvent* event) override;

Q_SIGNALS:
    /// The user has chosen another language.
    void selectionChosen(const QString& language);

protected:
    [[nodiscard]] int widestText() const override;

private:
    void open();
    void closePopup();
    [[nodiscard]] QWidget* makeContent();
    void showRows();
    void choose(const QString& value);
    void chooseByReturn();
    void moveCurrent(int rows);

    LanguagePickerChoice m_choice;
    QString m_selection;
    QList<LanguagePickerRow> m_rows;
    /// Whether the user has gone to a row with the arrow keys.
    bool m_walked = false;
    // All exist only while the list is open.
    QPointer<Popover> m_popover;
    QPointer<SearchField> m_search;
    QPointer<OptionList> m_list;
    QPointer<ThemedLabel> m_nothing;
};

} // namespace zelvane
