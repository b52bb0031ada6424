#pragma once

#include "ui/menubar/IconPulse.h"
#include "ui/menubar/MenuBarModel.h"
#include "ui/style/Theme.h"

#include <QHash>
#include <QIcon>
#include <QMenu>
#include <QObject>
#include <QPointer>
#include <QSystemTrayIcon>

#include <functional>
#include <memory>

namespace zelvane {

/// The program's item in the system tray: the icon, which pulses while a translation runs, and the
/// menu behind it.
///
/// Main thread only.
class MenuBarController final : public QObject
{
    Q_OBJECT

public:
    /// What the menu causes elsewhere.
    struct Actions
    {
        /// The menu is about to show.
        std::function<void()> opened;
        std::function<void()> quit;
    };

    /// The icon appears as soon as `trayAvailable` is true: Qt decides for good which kind of tray
    /// to serve when it first makes an icon, so none may be made before there is a tray. All must
    /// outlive this object.
    MenuBarController(MenuBarModel& model, const Theme& theme, Clock& clock,
                      QBindable<bool> trayAvailable, Actions actions);
    ~MenuBarController() override;
    Q_DISABLE_COPY_MOVE(MenuBarController)

    /// Opens the menu at the icon, or at the pointer where no icon can be seen, or closes it. This
    /// is also the way to the program on a desktop without a tray.
    void togglePanel();

    [[nodiscard]] QMenu& menu() { return m_menu; }
    /// Null while there is no tray.
    [[nodiscard]] QSystemTrayIcon* trayIcon() const { return m_trayIcon.get(); }

private:
    void showIcon();
    void drawIcon(double opacity);
    void fillMenu();
    void followStatus();
    [[nodiscard]] QPoint menuPosition() const;
    /// An entry that only tells something.
    QAction* addNote(const QString& text);

    MenuBarModel& m_model;
    const Theme& m_theme;
    Actions m_actions;
    QMenu m_menu;
    QPointer<QAction> m_statusEntry;
    std::unique_ptr<QSystemTrayIcon> m_trayIcon;
    IconPulse m_pulse;
    /// By opacity in percent. The pulse comes by the same ones again and again.
    QHash<int, QIcon> m_icons;
};

} // namespace zelvane
