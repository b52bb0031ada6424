#pragma once

#include "ui/components/ScrollArea.h"
#include "ui/permission/PermissionModel.h"
#include "ui/style/Theme.h"

#include <QWidget>

namespace zelvane {

/// The settings window of a program whose one page is that of the permission.
class PermissionWindow final : public QWidget
{
    Q_OBJECT

public:
    /// Both must outlive the window.
    PermissionWindow(PermissionModel& model, const Theme& theme);

Q_SIGNALS:
    /// The window has gone from the screen.
    void disappeared();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void fit();
    void followContent();

    const Theme& m_theme;
    // All owned by Qt's tree.
    QWidget* m_page;
    ScrollArea* m_area;
    /// The height that the content asked for last.
    int m_fittedHeight = 0;
};

} // namespace zelvane
