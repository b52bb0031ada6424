#pragma once

#include "desktop/linux/atspi/AccessibleTree.h"
#include "desktop/linux/atspi/AtSpiElement.h"
#include "desktop/linux/atspi/AtSpiWatcher.h"
#include "desktop/linux/atspi/BusConnection.h"
#include "desktop/linux/atspi/FocusFinder.h"
#include "desktop/linux/atspi/GLibLoop.h"

#include <chrono>
#include <memory>
#include <optional>
#include <string>

namespace zelvane {

/// The way from the session bus to the accessibility bus, and to the focus of the programs there.
///
/// Both buses may be missing, hang, end and come back. Lives on the loop's thread.
class AtSpiSession
{
public:
    using Moment = GLibLoop::Moment;
    using Status = AtSpiWatcher::Status;

    /// `loop` must outlive this object.
    AtSpiSession(GLibLoop& loop, std::string sessionBusAddress);

    /// Connects what isn't connected, which takes up to some seconds.
    Status connect();

    /// Notices what has gone or come since the last call, and connects anew where that may help.
    /// To be called whenever the loop has delivered something.
    Status maintain();

    /// Lets `maintain` try as often as at the start.
    void encourage() { m_attempts = 0; }

    [[nodiscard]] std::optional<AtSpiElement> inspect(Moment deadline);

private:
    /// Everything that needs the accessibility bus, and goes with it.
    struct Accessibility
    {
        explicit Accessibility(std::unique_ptr<BusConnection> connection);

        std::unique_ptr<BusConnection> bus;
        AccessibleTree tree;
        FocusFinder finder;
        Moment since = std::chrono::steady_clock::now();
    };

    Status reach();
    bool openSession();
    bool openAccessibility(const std::string& address, Moment deadline);
    void noteLauncher(GVariant& arguments);
    void dropClosed();

    GLibLoop& m_loop;
    const std::string m_address;
    std::unique_ptr<BusConnection> m_session;
    std::unique_ptr<Accessibility> m_accessibility;
    Status m_status = Status::connecting;
    /// Something has changed that may help where a connection is missing.
    bool m_isWorthTrying = false;
    /// Programs that start from now on are on another bus than the one that is connected.
    bool m_isOutdated = false;
    /// Made without being asked, since the last connection that held.
    int m_attempts = 0;
};

} // namespace zelvane
