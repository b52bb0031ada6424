#pragma once

#include "desktop/AlertPresenter.h"
#include "ui/components/Buttons.h"
#include "ui/components/ThemedLabel.h"
#include "ui/panel/TranslatorKeyablePanel.h"

#include <QList>

class QHBoxLayout;

namespace zelvane {

/// A warning with its buttons. Return presses the first one, Esc the last.
class AlertWindow final : public TranslatorKeyablePanel
{
    Q_OBJECT

public:
    /// Theme and windows must outlive the alert, which needs at least one button.
    AlertWindow(const Alert& alert, const Theme& theme, WindowSystem& windows);

    [[nodiscard]] const QList<TextButton*>& buttons() const { return m_buttons; }

Q_SIGNALS:
    /// A button was pressed, or the alert is to close otherwise, which counts as the last button.
    /// The window stays until its owner removes it.
    void answered(int button);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    [[nodiscard]] QWidget* makeInformation(const Alert& alert);
    void arrangeMessage();
    void addButtons(const QStringList& titles);
    void arrangeButtons();
    void restyle();

    const Theme& m_theme;
    // All widgets are owned by Qt's tree.
    QVBoxLayout* m_layout = nullptr;
    QHBoxLayout* m_row = nullptr;
    QVBoxLayout* m_words = nullptr;
    QLabel* m_symbol;
    ThemedLabel* m_message;
    QWidget* m_information;
    QWidget* m_buttonArea;
    QList<TextButton*> m_buttons;
};

} // namespace zelvane
