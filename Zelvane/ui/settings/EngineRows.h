#pragma once

#include "ui/components/Form.h"
#include "ui/settings/SettingsServices.h"

#include <QWidget>

namespace zelvane {

/// What the settings show of an engine on this machine, by its status.
struct EngineHeadline
{
    QString headline;
    QString detail;

    friend bool operator==(const EngineHeadline&, const EngineHeadline&) = default;
};

/// In the interface language. `sizeBytes` is the size on the disk, or to be downloaded.
[[nodiscard]] EngineHeadline engineHeadline(const EngineStatus& status, qint64 sizeBytes);

/// An engine that runs on this machine: its state, its installation, and what can be done to it.
class EngineRows final : public QWidget
{
    Q_OBJECT

public:
    /// `theme` must outlive the rows.
    EngineRows(const Theme& theme, EngineControls controls);

    [[nodiscard]] TextButton& installButton() const { return *m_install; }
    [[nodiscard]] TextButton& deleteButton() const { return *m_delete; }
    [[nodiscard]] ProgressRow& progress() const { return *m_progress; }

protected:
    bool event(QEvent* event) override;

private:
    void watch();
    void update();
    void showProgress();

    EngineControls m_controls;
    // All owned by Qt's tree.
    FormRow* m_headline;
    TextButton* m_install;
    TextButton* m_delete;
    ProgressRow* m_progress;
    ThemedLabel* m_failure;
};

} // namespace zelvane
