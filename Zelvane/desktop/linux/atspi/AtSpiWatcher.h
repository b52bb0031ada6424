#pragma once

#include "desktop/linux/atspi/AtSpiElement.h"

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace zelvane {

/// Watches, on a thread of its own, where the programs of the session have the keyboard focus.
///
/// It speaks the protocol of AT-SPI over two private connections, to the session bus and to the
/// accessibility bus, and listens to nothing but moves of the focus: an idle desktop doesn't wake
/// it. Neither a program nor a bus that hangs can hold it: every question has an end of its own,
/// and the destructor cuts all of them short.
class AtSpiWatcher
{
public:
    enum class Status {
        connecting,
        ready,
        noSessionBus,
        noAccessibilityBus,
    };

    using Answer = std::function<void(std::optional<AtSpiElement>)>;

    /// Begins to connect. An empty address stands for a session without a bus.
    explicit AtSpiWatcher(std::string sessionBusAddress);
    /// Drops the answers that are still due.
    ~AtSpiWatcher();
    AtSpiWatcher(const AtSpiWatcher&) = delete;
    AtSpiWatcher& operator=(const AtSpiWatcher&) = delete;

    /// Any thread.
    [[nodiscard]] Status status() const;

    /// Looks at the focused object, and calls `onAnswer` on the watcher's thread by `deadline` or
    /// little later. Any thread.
    void inspect(std::chrono::steady_clock::time_point deadline, Answer onAnswer);

    /// Tries again to reach what was missing or has gone. Any thread.
    void reconnect();

private:
    class Worker;
    std::unique_ptr<Worker> m_worker;
};

} // namespace zelvane
