#include "ui/panel/WindowSystem.h"

#include <utility>

namespace zelvane {

void PlainWindowSystem::describe(QWindow&, const PanelHints&)
{
}

void PlainWindowSystem::setSkipsTaskbar(QWindow&, bool)
{
}

void PlainWindowSystem::activate(QWindow& window)
{
    window.raise();
    window.requestActivate();
}

WindowSystem::Window PlainWindowSystem::foreignActiveWindow() const
{
    return 0;
}

void PlainWindowSystem::activateForeign(Window)
{
}

FocusLoan::FocusLoan(WindowSystem& windows)
    : m_windows(&windows)
    , m_lender(windows.foreignActiveWindow())
{
}

void FocusLoan::giveBack()
{
    if (const auto lender = std::exchange(m_lender, 0)) {
        m_windows->activateForeign(lender);
    }
}

} // namespace zelvane
