#include "ui/panel/WindowSystem.h"

#include <QGuiApplication>

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
    , m_ownLender(m_lender == 0 ? QGuiApplication::focusWindow() : nullptr)
{
}

void FocusLoan::giveBack()
{
    if (const auto lender = std::exchange(m_lender, 0)) {
        m_windows->activateForeign(lender);
    }
    QWindow* own = std::exchange(m_ownLender, nullptr);
    if (own && own->isVisible()) {
        m_windows->activate(*own);
    }
}

} // namespace zelvane
