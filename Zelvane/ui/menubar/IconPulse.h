#pragma once

#include "foundation/Clock.h"

#include <chrono>
#include <functional>
#include <memory>

namespace zelvane {

/// How opaque the tray icon is, `elapsed` after a translation began: it sinks to a quarter and
/// comes back, again and again.
[[nodiscard]] double pulseOpacity(std::chrono::nanoseconds elapsed);

/// The pulse of the tray icon while the program is busy. Runs no timer otherwise.
class IconPulse
{
public:
    /// `onOpacity` gets each new opacity, 0.25 to 1, in few steps, so that the icons can be kept.
    /// `clock` must outlive this object.
    IconPulse(Clock& clock, std::function<void(double)> onOpacity);

    void setBusy(bool busy);
    /// Whether the icon dims steadily instead of pulsing.
    void setReducedMotion(bool reduced);

    [[nodiscard]] double opacity() const { return m_opacity; }

private:
    void restart();
    void tick();
    void apply(double opacity);

    Clock& m_clock;
    std::function<void(double)> m_onOpacity;
    bool m_busy = false;
    bool m_reducedMotion = false;
    double m_opacity = 1;
    /// When the present movement began, and where.
    std::chrono::nanoseconds m_start{0};
    double m_startOpacity = 1;
    std::unique_ptr<Timer> m_timer;
};

} // namespace zelvane
