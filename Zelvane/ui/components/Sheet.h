#pragma once

#include "ui/components/Buttons.h"
#include "ui/components/ThemedLabel.h"

#include <QPointer>
#include <QWidget>

class QHBoxLayout;
class QVBoxLayout;

namespace zelvane {

/// A question or a small task over a window, which waits below it: a panel in the middle, the rest
/// dimmed. The keyboard stays in the sheet. Return presses the default button, Esc the one that
/// cancels.
///
/// It is shown with `present` and deletes itself when it closes, as it does when its window closes.
class Sheet : public QWidget
{
    Q_OBJECT

public:
    /// Over the window of `over`. `theme` must outlive the sheet.
    Sheet(const Theme& theme, QWidget& over);
    ~Sheet() override;
    Q_DISABLE_COPY_MOVE(Sheet)

    void setTitle(const QString& title);
    /// A second line; none if it is empty.
    void setSubtitle(const QString& subtitle);
    /// Fills the room between title and buttons, and takes `content` over.
    void setContent(QWidget* content);
    /// The least size of the content; the tokens have one for all sheets.
    void setMinimumContentSize(QSize size);

    /// Adds a button at the end of the row, the default one last. It belongs to the sheet.
    TextButton* addButton(ControlKind kind = ControlKind::bordered);
    /// Adds a button at the beginning of the row, apart from the others.
    TextButton* addLeadingButton(ControlKind kind = ControlKind::bordered);
    /// The buttons for Return and Esc.
    void setDefaultButton(TextButton* button) { m_default = button; }
    void setCancelButton(TextButton* button) { m_cancel = button; }

    /// Covers the window and takes the keyboard.
    void present();
    /// Gives the keyboard back to the control that had it.
    void dismiss();

    /// The panel itself, in the sheet's coordinates.
    [[nodiscard]] QRect panelRect() const;

    bool eventFilter(QObject* watched, QEvent* event) override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    bool focusNextPrevChild(bool next) override;
    bool event(QEvent* event) override;

private:
    void restyle();
    void place();

    const Theme& m_theme;
    // All owned by Qt's tree.
    QWidget* m_panel;
    QVBoxLayout* m_layout;
    ThemedLabel* m_title;
    ThemedLabel* m_subtitle;
    QVBoxLayout* m_content;
    QHBoxLayout* m_buttons;
    QPointer<TextButton> m_default;
    QPointer<TextButton> m_cancel;
    /// What had the keyboard before.
    QPointer<QWidget> m_before;
    QSize m_minimumContent;
};

} // namespace zelvane
