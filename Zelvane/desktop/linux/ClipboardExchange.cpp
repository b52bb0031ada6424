#include "desktop/linux/ClipboardExchange.h"

#include <utility>

namespace zelvane {

namespace {

// A server that takes longer than this would not take the keys either.
constexpr std::chrono::milliseconds longestChange{500};

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
    if (m_changes == 0) {
        co_return;
    }
    const Completion<void> done;
    m_waiters.push_back(done);
    const auto limit = clock.callLater(longestChange, [done] { done.succeed(); });
    co_await done.result();
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
