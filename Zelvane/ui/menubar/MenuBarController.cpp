#include "ui/menubar/MenuBarController.h"

#include "settings/Localization.h"
#include "ui/components/Observe.h"
#include "ui/style/Symbols.h"

#include <QCursor>
#include <QGuiApplication>
#include <QScreen>

#include <utility>

namespace zelvane {

namespace {

/// The sizes in which trays show icons, in pixels.
constexpr std::array iconSizes{16, 18, 22, 24, 32, 44, 48, 64};

QIcon trayIconPicture(double opacity)
{
    QIcon icon;
    for (const int size : iconSizes) {
        icon.addPixmap(picturePixmap(QStringLiteral("MenuBarIcon"), size, 1, opacity));
    }
    return icon;
}

QString withoutMnemonics(QString text)
{
    return text.replace(u'&', QStringLiteral("&&"));
}

} // namespace

MenuBarController::MenuBarController(MenuBarModel& model, const Theme& theme, Clock& clock,
                                     QBindable<bool> trayAvailable, Actions actions)
    : m_model(model)
    , m_theme(theme)
    , m_actions(std::move(actions))
    , m_pulse(clock, [this](double opacity) { drawIcon(opacity); })
{
    connect(&m_menu, &QMenu::aboutToShow, this, [this] {
        fillMenu();
        m_actions.opened();
    });
    fillMenu();

    observe(this, model.bindableStatus(), [this](const QString&) { followStatus(); });
    observe(this, model.bindablePairs(), [this](const QList<LanguagePair>&) { fillMenu(); });
    observe(this, model.bindableIsBusy(), [this](bool busy) { m_pulse.setBusy(busy); });
    const auto followMotion = [this] {
        m_pulse.setReducedMotion(m_theme.appearance().reducedMotion());
    };
    connect(&theme, &Theme::changed, this, followMotion);
    followMotion();
    observe(this, trayAvailable, [this](bool available) {
        if (available && !m_trayIcon) {
            showIcon();
        }
    });
}

MenuBarController::~MenuBarController() = default;

void MenuBarController::togglePanel()
{
    if (m_menu.isVisible()) {
        m_menu.close();
    } else {
        m_menu.popup(menuPosition());
    }
}

void MenuBarController::showIcon()
{
    m_trayIcon = std::make_unique<QSystemTrayIcon>();
    m_trayIcon->setContextMenu(&m_menu);
    connect(m_trayIcon.get(), &QSystemTrayIcon::activated, this,
            [this](QSystemTrayIcon::ActivationReason reason) {
                if (reason == QSystemTrayIcon::Trigger) {
                    togglePanel();
                }
            });
    drawIcon(m_pulse.opacity());
    followStatus();
    m_trayIcon->show();
}

void MenuBarController::drawIcon(double opacity)
{
    if (!m_trayIcon) {
        return;
    }
    QIcon& icon = m_icons[qRound(opacity * 100)];
    if (icon.isNull()) {
        icon = trayIconPicture(opacity);
    }
    m_trayIcon->setIcon(icon);
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
    QAction* quit = m_menu.addAction(withoutMnemonics(localizedText(QStringLiteral("Quit"))));
    connect(quit, &QAction::triggered, this, [this] { m_actions.quit(); });
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

QPoint MenuBarController::menuPosition() const
{
    const QRect icon = m_trayIcon ? m_trayIcon->geometry() : QRect();
    if (!icon.isValid()) {
        return QCursor::pos();
    }
    const QScreen* screen = QGuiApplication::screenAt(icon.center());
    const bool inLowerHalf = screen && icon.center().y() > screen->geometry().center().y();
    return inLowerHalf ? icon.topLeft() - QPoint(0, m_menu.sizeHint().height())
                       : icon.bottomLeft() + QPoint(0, 1);
}

QAction* MenuBarController::addNote(const QString& text)
{
    QAction* note = m_menu.addAction(withoutMnemonics(text));
    note->setEnabled(false);
    return note;
}

} // namespace zelvane
