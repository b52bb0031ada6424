#pragma once

#include <QSocketNotifier>

#include <functional>
#include <memory>

namespace zelvane {

/// Turns SIGINT, SIGTERM and SIGHUP into a call on the main thread's event loop, so that the
/// program ends in order. One object at a time; a second signal ends the program at once.
class UnixSignals
{
public:
    /// `onSignal` runs on the calling thread, which must run an event loop. `atArrival` runs in the
    /// signal handler, whatever that thread does; it may do no more than handlers may.
    explicit UnixSignals(std::function<void(int)> onSignal, void (*atArrival)() = nullptr);
    ~UnixSignals();
    Q_DISABLE_COPY_MOVE(UnixSignals)

private:
    std::unique_ptr<QSocketNotifier> m_notifier;
};

} // namespace zelvane
