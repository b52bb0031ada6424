#pragma once

#include <QDBusConnection>
#include <QObject>

#include <functional>

namespace zelvane {

/// Tells when the desktop session ends, or the machine: by the session manager, by the system's
/// login service, or by the bus that goes with the session. Main thread.
class SessionEnd final : public QObject
{
    Q_OBJECT

public:
    /// `onEnd` may be called more than once. The application must exist; from now on nobody but
    /// `onEnd` ends its event loop when the session manager asks for that.
    SessionEnd(const QDBusConnection& sessionBus, const QDBusConnection& systemBus,
               std::function<void()> onEnd);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private Q_SLOTS:
    // Qt finds slots for the messages of a bus by their names.
    void busLost();
    void prepareForShutdown(bool begins);

private:
    std::function<void()> m_onEnd;
};

} // namespace zelvane
