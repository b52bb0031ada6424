#pragma once

#include "ui/components/Buttons.h"
#include "ui/components/TextWell.h"
#include "ui/components/ThemedLabel.h"
#include "ui/result/TranslationResultModel.h"
#include "ui/style/Theme.h"

#include <QWidget>

class QVBoxLayout;

namespace zelvane {

/// The content of the result popup: both texts, a button to copy and one to close.
class TranslationResultView final : public QWidget
{
    Q_OBJECT

public:
    /// Model and theme must outlive the view.
    TranslationResultView(TranslationResultModel& model, const Theme& theme);

    /// The height beyond which each text scrolls, in device-independent pixels.
    void setSectionHeight(int height);

    /// Puts the keyboard where the arrow keys scroll the translation.
    void focusTranslation();

    bool eventFilter(QObject* watched, QEvent* event) override;

Q_SIGNALS:
    void closeRequested();

protected:
    void changeEvent(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    [[nodiscard]] QWidget* makeHeader();
    [[nodiscard]] QWidget* makeFooter();
    void restyle();
    void retranslate();
    void showCopied();

    TranslationResultModel& m_model;
    const Theme& m_theme;
    // All widgets are owned by Qt's tree.
    QVBoxLayout* m_layout;
    ThemedLabel* m_title;
    ThemedLabel* m_hint;
    IconButton* m_close;
    ThemedLabel* m_originalLabel;
    TextWell* m_original;
    ThemedLabel* m_translatedLabel;
    TextWell* m_translated;
    QLabel* m_statusSymbol;
    ThemedLabel* m_status;
    TextButton* m_copy;
};

} // namespace zelvane
