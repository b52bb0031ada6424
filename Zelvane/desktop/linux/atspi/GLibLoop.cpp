#include "desktop/linux/atspi/GLibLoop.h"

#include <algorithm>
#include <utility>

namespace zelvane {

namespace {

using std::chrono::milliseconds;

gboolean wakeOnly(gpointer)
{
    return G_SOURCE_REMOVE;
}

} // namespace

GLibLoop::GLibLoop(std::stop_token stop)
    : m_stop(std::move(stop))
    , m_context(g_main_context_new())
    , m_onStop(m_stop, [this] { wake(); })
{
    g_main_context_push_thread_default(m_context.get());
}

GLibLoop::~GLibLoop()
{
    g_main_context_pop_thread_default(m_context.get());
}

bool GLibLoop::runUntil(const std::function<bool()>& done, Moment deadline)
{
    const auto left =
        std::chrono::ceil<milliseconds>(deadline - std::chrono::steady_clock::now()).count();
    const GLibOwned<GSource> alarm(
        g_timeout_source_new(static_cast<guint>(std::clamp<long long>(left, 0, G_MAXINT))));
    g_source_set_callback(alarm.get(), wakeOnly, nullptr, nullptr);
    g_source_attach(alarm.get(), m_context.get());
    while (!done()) {
        if (isStopping() || std::chrono::steady_clock::now() >= deadline) {
            return false;
        }
        g_main_context_iteration(m_context.get(), TRUE);
    }
    return true;
}

void GLibLoop::waitForWork()
{
    if (!isStopping()) {
        g_main_context_iteration(m_context.get(), TRUE);
    }
}

void GLibLoop::drain()
{
    // Bounded: a program that floods the bus must not hold an inspection up.
    constexpr int most = 1000;
    for (int i = 0; i < most && g_main_context_iteration(m_context.get(), FALSE); ++i) {
    }
}

void GLibLoop::wake()
{
    g_main_context_wakeup(m_context.get());
}

} // namespace zelvane
