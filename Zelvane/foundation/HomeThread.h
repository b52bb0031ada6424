#pragma once

#include <functional>
#include <memory>

namespace zelvane {

/// The thread that made this object, for other threads that want something done there.
///
/// `post` and `isCurrent` may be called from any thread at any time, also while another thread ends
/// this object's life by `close`; all else belongs to the thread itself, which must run an event
/// loop.
class HomeThread
{
public:
    HomeThread();
    ~HomeThread();
    HomeThread(const HomeThread&) = delete;
    HomeThread& operator=(const HomeThread&) = delete;

    [[nodiscard]] bool isCurrent() const;

    /// Has `call` run from the thread's event loop. A call that can't run any more is destroyed.
    void post(std::function<void()> call);

    /// Destroys the calls that wait, and all that come.
    void close();

private:
    struct Mailbox;
    std::shared_ptr<Mailbox> m_mailbox;
};

} // namespace zelvane
