#pragma once

#include <QCoroTask>
#include <QString>
#include <QStringList>

namespace zelvane {

/// A message that waits for an answer. All texts are already in the interface language.
struct Alert
{
    QString messageText;
    QString informativeText;
    /// The first one is the default.
    QStringList buttons;

    friend bool operator==(const Alert&, const Alert&) = default;
};

/// Shows alerts in front of all programs.
class AlertPresenter
{
public:
    AlertPresenter() = default;
    virtual ~AlertPresenter() = default;
    Q_DISABLE_COPY_MOVE(AlertPresenter)

    /// Brings this program to the front, whatever other program has the focus.
    virtual void activateApplication() = 0;

    /// Shows a warning and waits, without blocking the thread, until it is closed. Yields the index
    /// of the button pressed; closing it otherwise counts as the last button. Main thread.
    [[nodiscard]] virtual QCoro::Task<int> present(Alert alert) = 0;
};

} // namespace zelvane
