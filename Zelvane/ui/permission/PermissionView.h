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
    /// A capability with the word that says whether it is there.
    struct Row
    {
        FormRow* form;
        Badge* badge;
    };

    void makeRows();
    void makeCommand();
    void update();
    void updateState();
    void updateRows();
    void updateCommand();

    PermissionModel& m_model;
    const Theme& m_theme;
    // All owned by Qt's tree.
    QVBoxLayout* m_layout;
    Card* m_grantedCard;
    FormRow* m_granted;
    Banner* m_banner; ///< in its place while the permission is missing
    TextButton* m_request;
    TextButton* m_relaunch;
    Section* m_capabilities;
    QList<Row> m_rows;
    Section* m_commandSection;
    FormRow* m_command;
    TextButton* m_copy;
};

} // namespace zelvane
