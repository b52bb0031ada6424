#include "ui/menubar/IconPulse.h"

#include <QEasingCurve>

#include <cmath>

namespace zelvane {

namespace {

using namespace std::chrono_literals;
using Seconds = std::chrono::duration<double>;

constexpr double lowOpacity = 0.25;
constexpr double steadyOpacity = 0.55;
constexpr Seconds sinking = 700ms;
constexpr Seconds recovering = 200ms;
/// Smooth enough for a slow fade, and rare enough to cost next to nothing.
constexpr auto sinkingFrame = 80ms;
/// A part of `recovering`, so that the last frame isn't late.
constexpr auto recoveringFrame = 40ms;
/// The opacities that occur are multiples of one part of this.
constexpr double steps = 20;

double eased(double progress)
{
    static const QEasingCurve curve(QEasingCurve::InOutQuad);
    return curve.valueForProgress(progress);
}

} // namespace

double pulseOpacity(std::chrono::nanoseconds elapsed)
{
    const double turns = std::fmod(Seconds(elapsed) / sinking, 2.0);
    const double depth = turns <= 1 ? turns : 2 - turns;
    return 1 - (1 - lowOpacity) * eased(depth);
}

IconPulse::IconPulse(Clock& clock, std::function<void(double)> onOpacity)
    : m_clock(clock)
    , m_onOpacity(std::move(onOpacity))
{
}

void IconPulse::setBusy(bool busy)
{
    if (m_busy != busy) {
        m_busy = busy;
        restart();
    }
}

void IconPulse::setReducedMotion(bool reduced)
{
    if (m_reducedMotion != reduced) {
        m_reducedMotion = reduced;
        restart();
    }
}

void IconPulse::restart()
{
    m_start = m_clock.monotonicNow();
    m_startOpacity = m_opacity;
    m_timer.reset();
    if (m_reducedMotion) {
        apply(m_busy ? steadyOpacity : 1);
    } else if (m_busy || m_opacity < 1) {
        m_timer =
            m_clock.callEvery(m_busy ? sinkingFrame : recoveringFrame, 0ms, [this] { tick(); });
    }
}

void IconPulse::tick()
{
    const auto elapsed = m_clock.monotonicNow() - m_start;
    if (m_busy) {
        apply(pulseOpacity(elapsed));
        return;
    }
    const double progress = std::min(1.0, Seconds(elapsed) / recovering);
    if (progress >= 1) {
        m_timer.reset();
    }
    apply(m_startOpacity + (1 - m_startOpacity) * eased(progress));
}

void IconPulse::apply(double opacity)
{
    const double step = std::round(opacity * steps) / steps;
    if (step != m_opacity) {
        m_opacity = step;
        m_onOpacity(step);
    }
}

} // namespace zelvane
