#include "foundation/Clock.h"

#include "foundation/Completion.h"
#include "foundation/DescribedError.h"

namespace zelvane {

QCoro::Task<void> Clock::sleep(std::chrono::milliseconds duration, std::stop_token stop)
{
    if (stop.stop_requested()) {
        throw CancellationError();
    }
    const Completion<void> done;
    const std::stop_callback onStop(stop, [done] { done.fail(CancellationError()); });
    const auto timer = callLater(duration, [done] { done.succeed(); });
    co_await done.result();
}

} // namespace zelvane
