#pragma once

#include "ui/components/Form.h"
#include "ui/permission/PermissionModel.h"

#include <QWidget>

class QVBoxLayout;

namespace zelvane {

/// What this session lets the program do, and what to do about the rest. May stand in a window of
/// its own or on a page of another one.
class PermissionView final : public QWidget
{
    Q_OBJECT

public:
    /// Both must outlive the view.
    PermissionView(PermissionModel& model, const Theme& theme, QWidget* parent = nullptr);

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    /// A capability with the light that says whether it is there.
    struct Row
    {
        FormRow* form;
        StatusLight* light;
    };

    [[nodiscard]] QWidget* makeHeader();
    void makeRows();
    void makeCommand();
    void update();
    void updateCommand();

    PermissionModel& m_model;
    const Theme& m_theme;
    // All owned by Qt's tree.
    QVBoxLayout* m_layout;
    FormRow* m_state;
    TextButton* m_relaunch;
    Section* m_capabilities;
    QList<Row> m_rows;
    Section* m_commandSection;
    FormRow* m_command;
    TextButton* m_copy;
};

} // namespace zelvane
