#pragma once

#include "ui/panel/WindowSystem.h"
#include "ui/style/Theme.h"

#include <QWidget>

class QVBoxLayout;

namespace zelvane {

/// What a panel is to the window manager.
enum class PanelRole {
    /// Floats above ordinary windows, also while another program is in front.
    floating,
    /// A question: floats, and the desktop may treat it as a dialog.
    alert,
    /// One of the windows that the user works in, until it is made to float.
    window,
};

/// A window without a title bar: a rounded, floating surface with a soft shadow where the desktop
/// composes windows, and a plain rectangle with a hairline border where it doesn't.
///
/// The shadow is part of the window, so the window is larger than its panel; all sizes and places
/// here are those of the panel alone.
class TranslatorKeyablePanel : public QWidget
{
    Q_OBJECT

public:
    /// Both must outlive the panel.
    TranslatorKeyablePanel(const Theme& theme, WindowSystem& windows, PanelRole role);
    ~TranslatorKeyablePanel() override;
    Q_DISABLE_COPY_MOVE(TranslatorKeyablePanel)

    [[nodiscard]] PanelRole role() const { return m_role; }

    /// Whether the program shows in the desktop's list of running programs while this panel is up.
    [[nodiscard]] bool promotesDockIcon() const { return m_promotesDockIcon; }
    void setPromotesDockIcon(bool promotes);

    /// Whether the panel stays above the windows of all programs; may change while it is shown.
    [[nodiscard]] bool isFloating() const;
    void setFloating(bool floating);

    /// Fills the panel with `content` and takes it over.
    void setContent(QWidget* content);

    [[nodiscard]] QRect panelFrame() const;
    void setContentSize(QSize size);
    void setPanelOrigin(QPoint origin);

    /// Shows the panel in front of all programs, with the keyboard.
    void presentInFront();

Q_SIGNALS:
    /// The window manager asks the panel to close. The panel's owner decides.
    void closeRequested();

protected:
    void closeEvent(QCloseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    /// Follows the desktop: a shadow's margin appears and goes with its ability to show one.
    void adoptMargins();
    void describe();
    /// The panel in the window's coordinates.
    [[nodiscard]] QRect panelRect() const;

    const Theme& m_theme;
    WindowSystem& m_windows;
    PanelRole m_role;
    QVBoxLayout* m_layout; ///< owned by Qt's tree
    bool m_promotesDockIcon = false;
};

} // namespace zelvane
