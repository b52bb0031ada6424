#include "ui/menubar/MenuBarController.h"

#include "settings/Localization.h"
#include "ui/components/Observe.h"

#include <QCursor>
#include <QGuiApplication>
#include <QScreen>

#include <utility>

namespace zelvane {

namespace {

using namespace std::chrono_literals;

/// A click on the icon that closes the panel, by being a click elsewhere, may still arrive as a
/// click on the icon. One that comes so soon is the same one.
constexpr auto oneClick = 300ms;
/// About the size of an icon in a tray, around the pointer that clicked it.
constexpr QSize assumedIcon(24, 24);

QString withoutMnemonics(QString text)
{
    return text.replace(u'&', QStringLiteral("&&"));
}

QRect aroundPointer()
{
    QRect icon({}, assumedIcon);
    icon.moveCenter(QCursor::pos());
    return icon;
}

QRect frameAround(const std::optional<QRect>& place)
{
    const QScreen* screen = QGuiApplication::screenAt(place ? place->center() : QCursor::pos());
    if (!screen) {
        screen = QGuiApplication::primaryScreen();
    }
    return screen ? screen->availableGeometry() : QRect();
}

} // namespace

MenuBarController::MenuBarController(MenuBarModel& model, const Theme& theme, Clock& clock,
                                     QBindable<bool> trayAvailable, MenuBarActions actions)
    : m_model(model)
    , m_theme(theme)
    , m_clock(clock)
    , m_actions(std::move(actions))
    , m_icon(model, theme, clock)
{
    connect(&m_menu, &QMenu::aboutToShow, this, [this] {
        fillMenu();
        m_actions.appeared();
    });
    connect(&m_icon, &MenuBarStatusIcon::changed, this, [this] {
        if (m_trayIcon) {
            m_trayIcon->setIcon(m_icon.icon());
        }
    });
    observe(this, model.bindableStatus(), [this](const QString&) { followStatus(); });
    observe(this, model.bindablePairs(), [this](const QList<LanguagePair>&) { fillMenu(); });
    observe(this, trayAvailable, [this](bool available) {
        if (available && !m_trayIcon) {
            showIcon();
        }
    });
}

MenuBarController::~MenuBarController()
{
    if (m_panel) {
        m_panel->disconnect(this);
    }
}

void MenuBarController::togglePanel()
{
    if (m_panel) {
        m_panel->close();
    } else {
        openPanel(iconPlace());
    }
}

void MenuBarController::clicked()
{
    if (m_panel) {
        m_panel->close();
        return;
    }
    if (m_closedByPressAt && m_clock.monotonicNow() - *m_closedByPressAt < oneClick) {
        return;
    }
    // Trays on the bus don't tell where they show the icon, but the pointer is on it.
    const std::optional<QRect> place = iconPlace();
    openPanel(place ? place : aroundPointer());
}

void MenuBarController::openPanel(std::optional<QRect> place)
{
    m_panel = new MenuBarPanel(m_model, m_theme, m_actions);
    m_panels.add(m_panel);
    connect(m_panel, &Popover::closed, this, [this] {
        m_panel.clear();
        if (QGuiApplication::mouseButtons() != Qt::NoButton) {
            m_closedByPressAt = m_clock.monotonicNow();
        }
    });
    m_actions.appeared();
    m_panel->present({place, frameAround(place), QGuiApplication::layoutDirection()});
}

void MenuBarController::showIcon()
{
    m_trayIcon = std::make_unique<QSystemTrayIcon>();
    m_trayIcon->setContextMenu(&m_menu);
    connect(m_trayIcon.get(), &QSystemTrayIcon::activated, this,
            [this](QSystemTrayIcon::ActivationReason reason) {
                // The second of two quick clicks is a click as well.
                if (reason == QSystemTrayIcon::Trigger || reason == QSystemTrayIcon::DoubleClick) {
                    clicked();
                }
            });
    m_trayIcon->setIcon(m_icon.icon());
    followStatus();
    m_trayIcon->show();
}

void MenuBarController::fillMenu()
{
    m_menu.clear();
    m_menu.setAccessibleName(m_model.title());
    m_statusEntry = addNote({});
    followStatus();
    m_menu.addSeparator();
    const QList<MenuBarRow> rows = m_model.rows();
    for (const MenuBarRow& row : rows) {
        // What follows the tab stands in a column of its own.
        addNote(row.direction + u'\t' + row.shortcut);
    }
    if (rows.isEmpty()) {
        addNote(localizedText(QStringLiteral("No language pairs enabled")));
    }
    m_menu.addSeparator();
    addCommand(localizedText(QStringLiteral("Translation Window")), m_actions.manualTranslation);
    addCommand(localizedText(QStringLiteral("Settings")), m_actions.settings);
    m_menu.addSeparator();
    addCommand(localizedText(QStringLiteral("Quit")), m_actions.quit);
}

void MenuBarController::followStatus()
{
    const QString status = m_model.status();
    if (m_statusEntry) {
        m_statusEntry->setText(withoutMnemonics(status));
    }
    if (m_trayIcon) {
        m_trayIcon->setToolTip(m_model.title() + u'\n' + status);
    }
}

std::optional<QRect> MenuBarController::iconPlace() const
{
    const QRect icon = m_trayIcon ? m_trayIcon->geometry() : QRect();
    return icon.isValid() ? std::optional(icon) : std::nullopt;
}

void MenuBarController::addCommand(const QString& text, const std::function<void()>& command)
{
    QAction* action = m_menu.addAction(withoutMnemonics(text));
    connect(action, &QAction::triggered, this, command);
}

QAction* MenuBarController::addNote(const QString& text)
{
    QAction* note = m_menu.addAction(withoutMnemonics(text));
    note->setEnabled(false);
    return note;
}

} // namespace zelvane
