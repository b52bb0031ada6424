#pragma once

#include <QCoroTask>

namespace zelvane {

enum class SessionKind {
    x11,
    /// Programs are kept apart; those that run through an X server within it are not.
    wayland,
};

enum class Availability {
    unknown, ///< it could not be found out yet
    available,
    missing,
};

/// What the desktop session offers of that which the program can use.
struct SessionCapabilities
{
    SessionKind kind = SessionKind::x11;
    Availability pressingKeys = Availability::unknown;
    Availability watchingKeys = Availability::unknown;
    /// Where programs tell what their focused element is.
    Availability accessibilityBus = Availability::unknown;
    Availability trayHost = Availability::unknown;
    Availability secretStore = Availability::unknown;

    friend bool operator==(const SessionCapabilities&, const SessionCapabilities&) = default;
};

/// Looks at the session. Main thread.
class SessionInspector
{
public:
    SessionInspector() = default;
    virtual ~SessionInspector() = default;
    Q_DISABLE_COPY_MOVE(SessionInspector)

    /// What there is at this moment. Raises no dialog, never fails, and ends within seconds.
    [[nodiscard]] virtual QCoro::Task<SessionCapabilities> inspect() = 0;
};

} // namespace zelvane
