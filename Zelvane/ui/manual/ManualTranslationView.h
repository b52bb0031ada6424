#pragma once

#include "ui/components/Buttons.h"
#include "ui/components/Indicators.h"
#include "ui/components/TextWell.h"
#include "ui/components/ThemedLabel.h"
#include "ui/language/SearchableLanguagePicker.h"
#include "ui/manual/ManualTranslationModel.h"
#include "ui/style/Theme.h"

#include <QWidget>

class QVBoxLayout;

namespace zelvane {

/// The content of the translation window: two languages, a text to type or paste, its translation.
class ManualTranslationView final : public QWidget
{
    Q_OBJECT

public:
    /// Model and theme must outlive the view.
    ManualTranslationView(ManualTranslationModel& model, const Theme& theme);
    ~ManualTranslationView() override;

    /// Puts the keyboard where the user types.
    void focusEditor();

    [[nodiscard]] QPlainTextEdit& sourceEditor() const { return m_source->editor(); }
    [[nodiscard]] QPlainTextEdit& translationArea() const { return m_translation->editor(); }
    [[nodiscard]] TextButton& translateButton() const { return *m_translate; }
    [[nodiscard]] TextButton& copyButton() const { return *m_copy; }
    [[nodiscard]] IconButton& pinButton() const { return *m_pin; }
    [[nodiscard]] SearchableLanguagePicker& sourcePicker() const { return *m_sourcePicker; }
    [[nodiscard]] SearchableLanguagePicker& targetPicker() const { return *m_targetPicker; }

    bool eventFilter(QObject* watched, QEvent* event) override;

Q_SIGNALS:
    void closeRequested();

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    [[nodiscard]] QWidget* makeHeader();
    [[nodiscard]] QWidget* makeLanguageRow();
    [[nodiscard]] QWidget* makeErrorLine();
    [[nodiscard]] QWidget* makeFooter();
    void connectPickers();
    void connectModel();
    void restyle();
    void retranslate();
    void showPin();
    void showError();
    void showProgress();
    /// The keys behind the buttons' texts give way where they would cut the status.
    void fitKeyHints();
    void showKeyHints(bool shown);
    /// What the footer needs for its widest status.
    [[nodiscard]] int footerWidth() const;
    void translate();
    [[nodiscard]] bool handleKey(const QKeyEvent& event);

    ManualTranslationModel& m_model;
    const Theme& m_theme;
    // All widgets are owned by Qt's tree.
    QVBoxLayout* m_layout;
    ThemedLabel* m_title;
    IconButton* m_pin;
    IconButton* m_close;
    ThemedLabel* m_sourceLanguageLabel;
    SearchableLanguagePicker* m_sourcePicker;
    QLabel* m_arrow;
    ThemedLabel* m_targetLanguageLabel;
    SearchableLanguagePicker* m_targetPicker;
    ThemedLabel* m_sourceLabel;
    TextWell* m_source;
    ThemedLabel* m_translationLabel;
    TextWell* m_translation;
    QLabel* m_errorSymbol;
    ThemedLabel* m_error;
    Spinner* m_spinner;
    ThemedLabel* m_status;
    TextButton* m_copy;
    TextButton* m_translate;
};

} // namespace zelvane
