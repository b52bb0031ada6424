#pragma once

#include "ui/components/Buttons.h"
#include "ui/components/Form.h"
#include "ui/components/Indicators.h"
#include "ui/components/ThemedLabel.h"
#include "ui/menubar/MenuBarModel.h"

#include <QWidget>

class QVBoxLayout;

namespace zelvane {

/// What the panel at the tray icon shows: the status, the enabled pairs with their shortcuts, and
/// the three commands.
class MenuBarTrayContent final : public QWidget
{
    Q_OBJECT

public:
    /// Both must outlive the view.
    MenuBarTrayContent(MenuBarModel& model, const Theme& theme, QWidget* parent = nullptr);

    /// As wide as the tokens say, as high as that takes.
    [[nodiscard]] QSize fittingSize() const;

    [[nodiscard]] TextButton& translationButton() { return *m_translation; }
    [[nodiscard]] TextButton& settingsButton() { return *m_settings; }
    [[nodiscard]] TextButton& quitButton() { return *m_quit; }

Q_SIGNALS:
    void manualTranslationRequested();
    void settingsRequested();
    void quitRequested();
    /// The content needs another height now.
    void fittingSizeChanged();

protected:
    bool event(QEvent* event) override;

private:
    [[nodiscard]] QLayout* makeHeader();
    [[nodiscard]] QLayout* makeFooter();
    [[nodiscard]] QWidget* makeRow(const MenuBarRow& row);
    void fillPairs();
    void restyle();
    void retranslate();
    void showStatus();

    MenuBarModel& m_model;
    const Theme& m_theme;
    // All owned by Qt's tree.
    QVBoxLayout* m_layout;
    ThemedLabel* m_title;
    ThemedLabel* m_status;
    Spinner* m_spinner;
    QWidget* m_pairs;
    TextButton* m_translation;
    TextButton* m_settings;
    TextButton* m_quit;
};

} // namespace zelvane
