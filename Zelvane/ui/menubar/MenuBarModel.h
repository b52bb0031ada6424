#pragma once

#include "settings/AppSettings.h"

#include <QBindable>
#include <QList>
#include <QString>

namespace zelvane {

/// A language pair as the tray shows it, in the interface language.
struct MenuBarRow
{
    /// "English (US) → German"
    QString direction;
    /// "⌃⌥D", or a dash for a pair without a shortcut.
    QString shortcut;
    bool hasShortcut = false;

    friend bool operator==(const MenuBarRow&, const MenuBarRow&) = default;
};

/// What the tray shows. Needs no display.
class MenuBarModel
{
public:
    /// All must outlive this object. `status` and `isBusy` are the controller's.
    MenuBarModel(const AppSettings& settings, QBindable<QString> status, QBindable<bool> isBusy);

    [[nodiscard]] QString title() const;

    [[nodiscard]] QString status() const { return m_status.value(); }
    [[nodiscard]] QBindable<QString> bindableStatus() const { return m_status; }

    [[nodiscard]] bool isBusy() const { return m_isBusy.value(); }
    [[nodiscard]] QBindable<bool> bindableIsBusy() const { return m_isBusy; }

    /// The enabled pairs in the user's order.
    [[nodiscard]] QList<MenuBarRow> rows() const;
    /// Changes whenever `rows` may have changed.
    [[nodiscard]] QBindable<QList<LanguagePair>> bindablePairs() const;

private:
    const AppSettings& m_settings;
    QBindable<QString> m_status;
    QBindable<bool> m_isBusy;
};

} // namespace zelvane
