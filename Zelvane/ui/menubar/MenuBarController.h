#pragma once

#include "ui/menubar/MenuBarActions.h"
#include "ui/menubar/MenuBarPanel.h"
#include "ui/menubar/MenuBarStatusIcon.h"

#include <QMenu>
#include <QObject>
#include <QObjectCleanupHandler>
#include <QPointer>
#include <QSystemTrayIcon>

#include <chrono>
#include <memory>
#include <optional>

namespace zelvane {

/// The program's item in the system tray: the icon, the panel that a click opens, and a plain menu
/// for the other mouse button and for trays that offer nothing but menus.
///
/// Main thread only.
class MenuBarController final : public QObject
{
    Q_OBJECT

public:
    /// The icon appears as soon as `trayAvailable` is true: Qt decides for good which kind of tray
    /// to serve when it first makes an icon, so none may be made before there is a tray. All must
    /// outlive this object.
    MenuBarController(MenuBarModel& model, const Theme& theme, Clock& clock,
                      QBindable<bool> trayAvailable, MenuBarActions actions);
    ~MenuBarController() override;
    Q_DISABLE_COPY_MOVE(MenuBarController)

    /// Opens the panel at the icon, or closes it. Where no icon can be seen it opens in a corner of
    /// the screen: this is also the way to the program on a desktop without a tray.
    void togglePanel();

    /// The panel that is open; null if there is none.
    [[nodiscard]] MenuBarPanel* panel() const { return m_panel; }
    [[nodiscard]] QMenu& menu() { return m_menu; }
    /// Null while there is no tray.
    [[nodiscard]] QSystemTrayIcon* trayIcon() const { return m_trayIcon.get(); }

private:
    void showIcon();
    void clicked();
    void openPanel(std::optional<QRect> place);
    void fillMenu();
    void followStatus();
    [[nodiscard]] std::optional<QRect> iconPlace() const;
    void addCommand(const QString& text, const std::function<void()>& command);
    /// An entry that only tells something.
    QAction* addNote(const QString& text);

    MenuBarModel& m_model;
    const Theme& m_theme;
    Clock& m_clock;
    MenuBarActions m_actions;
    MenuBarStatusIcon m_icon;
    QMenu m_menu;
    QPointer<QAction> m_statusEntry;
    std::unique_ptr<QSystemTrayIcon> m_trayIcon;
    QPointer<MenuBarPanel> m_panel;
    /// Every panel that exists: a closed one stays until the event loop takes it away.
    QObjectCleanupHandler m_panels;
    /// When a press of a mouse button last closed the panel.
    std::optional<std::chrono::nanoseconds> m_closedByPressAt;
};

} // namespace zelvane
