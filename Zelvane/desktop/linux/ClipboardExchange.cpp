#include "desktop/linux/ClipboardExchange.h"

#include <utility>

namespace zelvane {

namespace {

// A server that takes longer than this would not take the keys either.
constexpr std::chrono::milliseconds longestChange{500};

/// Keeps the timer until the wait has ended.
QCoro::Task<void> ended(Completion<void> done, [[maybe_unused]] std::unique_ptr<Timer> limit)
{
    co_await done.result();
}

} // namespace

void ClipboardExchange::changeDone()
{
    if (--m_changes > 0) {
        return;
    }
    for (const auto& waiter : std::exchange(m_waiters, {})) {
        waiter.succeed();
    }
}

QCoro::Task<void> ClipboardExchange::settled(Clock& clock)
{
    const Completion<void> done;
    if (m_changes == 0) {
        done.succeed();
    } else {
        m_waiters.push_back(done);
    }
    return ended(done, clock.callLater(longestChange, [done] { done.succeed(); }));
}

void ClipboardExchange::pastePosted(std::optional<xcb_window_t> target)
{
    m_paste = Paste{target, std::chrono::steady_clock::now()};
}

void ClipboardExchange::contentReplaced()
{
    m_copyAt.reset();
    m_paste.reset();
}

} // namespace zelvane
