#pragma once

#include "ui/style/Theme.h"

#include <QObject>

class QMenu;

namespace zelvane {

/// Gives a menu a soft shadow where the desktop composes windows. The shadow is part of the menu's
/// window; what the user points at stays where it was, and a click on the shadow is one elsewhere.
class MenuShadow final : public QObject
{
    Q_OBJECT

public:
    /// Lives and goes with `menu`. `theme` must outlive both.
    MenuShadow(QMenu& menu, const Theme& theme);

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void fit();
    void place();

    QMenu& m_menu;
    const Theme& m_theme;
};

} // namespace zelvane
