#pragma once

#include "foundation/Clock.h"

namespace zelvane {

/// The machine's own time and Qt's timers.
class SystemClock final : public Clock
{
public:
    [[nodiscard]] std::chrono::nanoseconds monotonicNow() const override;
    [[nodiscard]] QDateTime now() const override;
    [[nodiscard]] std::unique_ptr<Timer> callLater(std::chrono::milliseconds delay,
                                                   std::function<void()> callback) override;
    [[nodiscard]] std::unique_ptr<Timer> callEvery(std::chrono::milliseconds interval,
                                                   std::chrono::milliseconds tolerance,
                                                   std::function<void()> callback) override;
};

} // namespace zelvane
