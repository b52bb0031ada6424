#pragma once

#include "desktop/AlertPresenter.h"
#include "foundation/Completion.h"
#include "ui/alert/AlertWindow.h"
#include "ui/panel/WindowOrigins.h"

#include <map>
#include <optional>

namespace zelvane {

/// Shows alerts as windows of the program's own look.
class AlertWindowPresenter final : public AlertPresenter
{
public:
    /// All must outlive this object. Alerts that are open when it goes end with
    /// `CancellationError`.
    AlertWindowPresenter(const Theme& theme, WindowSystem& windows, const WindowOrigins& origins);
    ~AlertWindowPresenter() override;
    Q_DISABLE_COPY_MOVE(AlertWindowPresenter)

    void activateApplication() override;
    [[nodiscard]] QCoro::Task<int> present(Alert alert) override;

    /// The alerts that are open, the oldest first.
    [[nodiscard]] QList<AlertWindow*> openAlerts() const;

private:
    struct Open
    {
        std::unique_ptr<AlertWindow> window;
        FocusLoan loan;
        Completion<int> answer;
    };

    void show(const Alert& alert, const Completion<int>& answer);
    void close(quint64 id, int button);

    const Theme& m_theme;
    WindowSystem& m_windows;
    const WindowOrigins& m_origins;
    quint64 m_nextId = 0;
    std::map<quint64, Open> m_open;
};

} // namespace zelvane
