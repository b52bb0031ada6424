#pragma once

#include "desktop/SessionInspector.h"

#include <QBindable>
#include <QDBusConnection>

#include <functional>

namespace zelvane {

/// Looks at the session through its bus and its environment.
class LinuxSessionInspector final : public SessionInspector
{
public:
    struct Known
    {
        /// What the X server lets the program do.
        std::function<bool()> pressesKeys;
        std::function<bool()> watchesKeys;
        QBindable<bool> trayAvailable;
    };

    LinuxSessionInspector(const QDBusConnection& bus, Known known);

    [[nodiscard]] QCoro::Task<SessionCapabilities> inspect() override;

private:
    QDBusConnection m_bus;
    Known m_known;
};

/// The kind of session that the environment tells of.
[[nodiscard]] SessionKind sessionKind();

} // namespace zelvane
