#pragma once

#include <QList>
#include <QString>

#include <functional>
#include <optional>

namespace zelvane {

/// One of the program's own windows, as it is at the moment of asking.
struct ApplicationWindow
{
    using Id = quint64;

    /// Windows of this level and above float over ordinary ones.
    static constexpr int floatingLevel = 3;

    Id id = 0;
    /// A name that the program gave it; empty for most windows.
    QString identifier = {}; // NOLINT(readability-redundant-member-init)
    QString title = {};      // NOLINT(readability-redundant-member-init)
    /// The name of the type that fills the window.
    QString contentTypeName = {}; // NOLINT(readability-redundant-member-init)
    bool isVisible = false;
    /// Whether it has a title bar.
    bool isTitled = false;
    int level = 0;
    bool canBecomeMain = false;
    /// Of a `TranslatorKeyablePanel` only.
    std::optional<bool> promotesDockIcon = std::nullopt;

    friend bool operator==(const ApplicationWindow&, const ApplicationWindow&) = default;
};

/// The program's own windows. Main thread.
class ApplicationWindows
{
public:
    using Id = ApplicationWindow::Id;

    /// What is told of the windows as it happens, from within the event loop.
    struct Observer
    {
        /// A window has got the keyboard, or has become the program's main one.
        std::function<void()> becameKeyOrMain;
        /// A window is about to go; none if it isn't known which.
        std::function<void(std::optional<Id>)> willClose;
    };

    ApplicationWindows() = default;
    virtual ~ApplicationWindows() = default;
    Q_DISABLE_COPY_MOVE(ApplicationWindows)

    /// All of them, visible or not, in an order that stays.
    [[nodiscard]] virtual QList<ApplicationWindow> windows() const = 0;

    /// Has `observer` told of what happens from now on, after the observers added before it. What
    /// it uses must outlive this object.
    virtual void addObserver(Observer observer) = 0;

    /// Brings the program to the front of all programs.
    virtual void activateApplication() = 0;

    // A window that has gone is left alone by all three.

    /// Shows the window in front of the program's others and gives it the keyboard.
    virtual void makeKeyAndOrderFront(Id window) = 0;
    /// Shows the window in front of the windows of all programs.
    virtual void orderFrontRegardless(Id window) = 0;
    /// Takes the window off the screen.
    virtual void orderOut(Id window) = 0;
};

} // namespace zelvane
