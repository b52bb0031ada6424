#pragma once

#include <QMargins>
#include <QPointer>
#include <QRect>
#include <QWindow>

namespace zelvane {

/// What the desktop must know of a panel before it shows.
struct PanelHints
{
    /// The part of the window that is shadow, not panel.
    QMargins shadow;
    bool skipsTaskbar = true;

    friend bool operator==(const PanelHints&, const PanelHints&) = default;
};

/// What panels need of the desktop beyond what Qt offers. Main thread; all calls return at once.
class WindowSystem
{
public:
    /// A window of any program. 0 is none.
    using Window = quint64;

    WindowSystem() = default;
    virtual ~WindowSystem() = default;
    Q_DISABLE_COPY_MOVE(WindowSystem)

    /// Describes `window` to the desktop. May be called again when something has changed.
    virtual void describe(QWindow& window, const PanelHints& hints) = 0;

    /// Whether `window` stays out of the taskbar and of the switcher of Alt+Tab, shown or not yet.
    virtual void setSkipsTaskbar(QWindow& window, bool skips) = 0;

    /// Brings a shown window in front of all programs and gives it the keyboard, although another
    /// program has it: the user has asked for the window.
    virtual void activate(QWindow& window) = 0;

    /// The window that has the keyboard, if it belongs to another program; else 0.
    [[nodiscard]] virtual Window foreignActiveWindow() const = 0;

    /// Gives the keyboard back to a window that had it. One that has gone is left alone.
    virtual void activateForeign(Window window) = 0;
};

/// Only what Qt offers, for platforms without an adapter.
class PlainWindowSystem final : public WindowSystem
{
public:
    void describe(QWindow& window, const PanelHints& hints) override;
    void setSkipsTaskbar(QWindow& window, bool skips) override;
    void activate(QWindow& window) override;
    [[nodiscard]] Window foreignActiveWindow() const override;
    void activateForeign(Window window) override;
};

/// The keyboard, borrowed from the window that the user works in, of this program or another. What
/// is lent is given back when the loan ends: not every window manager finds the way by itself.
class FocusLoan
{
public:
    /// `windows` must outlive the loan.
    explicit FocusLoan(WindowSystem& windows);

    /// Gives the keyboard back, once. Not to be called if the user has gone on to another window.
    void giveBack();

private:
    WindowSystem* m_windows;
    WindowSystem::Window m_lender;
    QPointer<QWindow> m_ownLender; ///< if it is this program
};

} // namespace zelvane
