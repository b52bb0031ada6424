#pragma once

#include "ui/linux/XcbSession.h"
#include "ui/panel/WindowSystem.h"

#include <memory>

namespace zelvane {

/// Panels on X11, by the conventions that its window managers share.
class X11WindowSystem final : public WindowSystem
{
public:
    explicit X11WindowSystem(const XcbSession& session);

    void describe(QWindow& window, const PanelHints& hints) override;
    void setSkipsTaskbar(QWindow& window, bool skips) override;
    void activate(QWindow& window) override;
    [[nodiscard]] Window foreignActiveWindow() const override;
    void activateForeign(Window window) override;

private:
    void skipTaskbar(const QWindow& window, bool skips);
    void setShadow(const QWindow& window, const QMargins& shadow);
    void requestActivation(xcb_window_t window);
    void askRoot(xcb_window_t window, xcb_atom_t message, const std::array<uint32_t, 5>& data);

    XcbSession m_session;
    xcb_atom_t m_activeWindow;
    xcb_atom_t m_frameExtents;
    xcb_atom_t m_state;
    std::array<xcb_atom_t, 2> m_skipStates;
};

/// The window system of this session: the one above on X11, else what Qt offers.
[[nodiscard]] std::unique_ptr<WindowSystem> sessionWindowSystem();

} // namespace zelvane
