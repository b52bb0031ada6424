#include "ui/alert/AlertWindowPresenter.h"

#include "foundation/DescribedError.h"

#include <utility>

namespace zelvane {

AlertWindowPresenter::AlertWindowPresenter(const Theme& theme, WindowSystem& windows,
                                           const WindowOrigins& origins)
    : m_theme(theme)
    , m_windows(windows)
    , m_origins(origins)
{
}

AlertWindowPresenter::~AlertWindowPresenter()
{
    const auto open = std::exchange(m_open, {});
    for (const auto& [id, alert] : open) {
        alert.answer.fail(CancellationError());
    }
}

void AlertWindowPresenter::activateApplication()
{
    // Windows come to the front one by one on the desktops served here: `present` does it.
}

QCoro::Task<int> AlertWindowPresenter::present(Alert alert)
{
    const Completion<int> answer;
    show(alert, answer);
    const int button = co_await answer.result();
    co_return button;
}

QList<AlertWindow*> AlertWindowPresenter::openAlerts() const
{
    QList<AlertWindow*> windows;
    for (const auto& [id, alert] : m_open) {
        windows.append(alert.window.get());
    }
    return windows;
}

void AlertWindowPresenter::show(const Alert& alert, const Completion<int>& answer)
{
    const quint64 id = m_nextId++;
    FocusLoan loan(m_windows);
    auto window = std::make_unique<AlertWindow>(alert, m_theme, m_windows);
    QObject::connect(window.get(), &AlertWindow::answered, window.get(),
                     [this, id](int button) { close(id, button); });
    const QSize size = window->panelFrame().size();
    window->setPanelOrigin(m_origins.centre(size.width(), size.height()).toPoint());
    AlertWindow& shown = *window;
    m_open.emplace(id, Open{std::move(window), loan, answer});
    shown.presentInFront();
}

void AlertWindowPresenter::close(quint64 id, int button)
{
    auto node = m_open.extract(id);
    if (node.empty()) {
        return;
    }
    Open& alert = node.mapped();
    const bool hadKeyboard = alert.window->isActiveWindow();
    alert.window->hide();
    if (hadKeyboard) {
        alert.loan.giveBack();
    }
    // The window is in the middle of its own key press or click.
    alert.window.release()->deleteLater();
    // Last, since the one who waits goes on inside the call and may end this object.
    const Completion<int> answer = alert.answer;
    answer.succeed(button);
}

} // namespace zelvane
