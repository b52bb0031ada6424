#pragma once

#include "desktop/linux/atspi/GLibLoop.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace zelvane {

/// An object of a program on a message bus.
struct BusObject
{
    std::string owner;
    std::string path;

    friend bool operator==(const BusObject&, const BusObject&) = default;
};

struct BusCall
{
    BusObject object;
    const char* interface = nullptr;
    const char* method = nullptr;
    /// What the answer must look like, as a type of D-Bus: "(au)".
    const char* replyType = nullptr;
    /// None for a method without arguments.
    std::shared_ptr<GVariant> arguments;
};

/// A private connection to a message bus. No call waits longer than it is told to, whatever the
/// other side does. Lives on the loop's thread.
class BusConnection
{
public:
    using Moment = GLibLoop::Moment;
    using OnSignal = std::function<void(const BusObject& sender, GVariant& arguments)>;

    /// None if the bus can't be reached by `deadline`. `loop` must outlive the connection.
    [[nodiscard]] static std::unique_ptr<BusConnection>
    open(GLibLoop& loop, const std::string& address, Moment deadline);
    ~BusConnection();
    BusConnection(const BusConnection&) = delete;
    BusConnection& operator=(const BusConnection&) = delete;

    /// Whether the bus has gone. The loop wakes up when it goes.
    [[nodiscard]] bool isClosed() const;

    /// Subscribes for as long as the connection lives to a signal whose first argument is
    /// `firstArgument`, whoever sends it. `onSignal` runs while the loop delivers.
    void subscribe(const char* interface, const char* member, const char* firstArgument,
                   OnSignal onSignal);

    /// The answer; none for an error, an answer of another type, or silence until `deadline`.
    [[nodiscard]] GLibOwned<GVariant> call(const BusCall& call, Moment deadline);

    /// Makes many calls at a time, and yields the answers in the order of the calls. Leaves the
    /// rest once `isEnough` says so of an answer.
    [[nodiscard]] std::vector<GLibOwned<GVariant>>
    callAll(const std::vector<BusCall>& calls, Moment deadline,
            const std::function<bool(GVariant&)>& isEnough = {});

private:
    struct Batch;
    struct PendingCall;

    static void finishCall(GObject* source, GAsyncResult* result, gpointer data);
    void send(const BusCall& call, std::unique_ptr<PendingCall> pending, Moment deadline);

    BusConnection(GLibLoop& loop, GLibOwned<GDBusConnection> connection);

    GLibLoop& m_loop;
    GLibOwned<GDBusConnection> m_connection;
    GLibOwned<GCancellable> m_cancellable;
    std::vector<guint> m_subscriptions;
};

/// Wraps the floating reference that GLib's constructors return.
[[nodiscard]] std::shared_ptr<GVariant> busArguments(GVariant* floating);

} // namespace zelvane
