#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <stop_token>

#include <gio/gio.h>

namespace zelvane {

struct GLibRelease
{
    void operator()(GMainContext* context) const { g_main_context_unref(context); }
    void operator()(GSource* source) const
    {
        g_source_destroy(source);
        g_source_unref(source);
    }
    void operator()(GVariant* variant) const { g_variant_unref(variant); }
    void operator()(GDBusConnection* connection) const { g_object_unref(connection); }
    void operator()(GCancellable* cancellable) const { g_object_unref(cancellable); }
    void operator()(GError* error) const { g_error_free(error); }
};

/// Owns one reference to an object of GLib.
template <typename T>
using GLibOwned = std::unique_ptr<T, GLibRelease>;

/// A thread's own main context. GLib delivers there, and only while one of the functions below
/// runs. Made, used and destroyed on one thread, but for `wake`.
class GLibLoop
{
public:
    using Moment = std::chrono::steady_clock::time_point;

    /// All waits end as soon as `stop` is asked for, from any thread.
    explicit GLibLoop(std::stop_token stop);
    ~GLibLoop();
    GLibLoop(const GLibLoop&) = delete;
    GLibLoop& operator=(const GLibLoop&) = delete;

    [[nodiscard]] bool isStopping() const { return m_stop.stop_requested(); }

    /// Delivers until `done` holds. False if it doesn't by `deadline`, or the end came first.
    bool runUntil(const std::function<bool()>& done, Moment deadline);

    /// Delivers until there is something to do: an event, a `wake`, or the end.
    void waitForWork();

    /// Delivers what is already there.
    void drain();

    /// Ends `waitForWork`, even if that is only called later. Any thread.
    void wake();

private:
    std::stop_token m_stop;
    GLibOwned<GMainContext> m_context;
    std::stop_callback<std::function<void()>> m_onStop;
};

} // namespace zelvane
