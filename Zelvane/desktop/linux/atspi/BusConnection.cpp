#include "desktop/linux/atspi/BusConnection.h"

#include <algorithm>
#include <utility>

namespace zelvane {

namespace {

using std::chrono::milliseconds;

constexpr int clientOfABus =
    G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT | G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION;

/// A connection under way. Whoever comes last, the opener or the connection, clears it away.
struct Opening
{
    bool ended = false;
    GLibOwned<GDBusConnection> connection;
};

void finishOpening(GObject*, GAsyncResult* result, gpointer data)
{
    const std::unique_ptr<std::shared_ptr<Opening>> opening(
        static_cast<std::shared_ptr<Opening>*>(data));
    (*opening)->connection.reset(g_dbus_connection_new_for_address_finish(result, nullptr));
    (*opening)->ended = true;
}

/// What a program is asked can't be taken back: one that is slow must not find thousands of
/// questions when nobody waits for the answers any more.
constexpr std::size_t mostOutstanding = 64;

} // namespace

/// What `callAll` and the answers to its calls share; the answers may come after it.
struct BusConnection::Batch
{
    std::vector<GLibOwned<GVariant>> replies;
    std::size_t outstanding = 0;
    bool enough = false;
    std::function<bool(GVariant&)> isEnough;
};

struct BusConnection::PendingCall
{
    std::shared_ptr<Batch> batch;
    std::size_t index;
};

namespace {

void deliverSignal(GDBusConnection*, const gchar* sender, const gchar* path, const gchar*,
                   const gchar*, GVariant* arguments, gpointer data)
{
    (*static_cast<BusConnection::OnSignal*>(data))({sender ? sender : "", path}, *arguments);
}

void forgetSignal(gpointer data)
{
    const std::unique_ptr<BusConnection::OnSignal> owned(
        static_cast<BusConnection::OnSignal*>(data));
}

int millisecondsUntil(BusConnection::Moment deadline)
{
    const auto left = std::chrono::ceil<milliseconds>(deadline - std::chrono::steady_clock::now());
    return static_cast<int>(std::clamp<long long>(left.count(), 1, G_MAXINT));
}

} // namespace

std::shared_ptr<GVariant> busArguments(GVariant* floating)
{
    return {g_variant_ref_sink(floating), GLibRelease{}};
}

std::unique_ptr<BusConnection> BusConnection::open(GLibLoop& loop, const std::string& address,
                                                   Moment deadline)
{
    if (!g_dbus_is_supported_address(address.c_str(), nullptr)) {
        return nullptr;
    }
    const auto opening = std::make_shared<Opening>();
    // NOLINTNEXTLINE(clang-analyzer-optin.core.EnumCastOutOfRange): a set of GLib's flags
    const auto flags = static_cast<GDBusConnectionFlags>(clientOfABus);
    // Not the synchronous form: a bus that accepts and then says nothing holds that one for good.
    g_dbus_connection_new_for_address(
        address.c_str(), flags, nullptr, nullptr, finishOpening,
        std::make_unique<std::shared_ptr<Opening>>(opening).release());
    loop.runUntil([&] { return opening->ended; }, deadline);
    if (!opening->connection) {
        return nullptr;
    }
    return std::unique_ptr<BusConnection>(new BusConnection(loop, std::move(opening->connection)));
}

BusConnection::BusConnection(GLibLoop& loop, GLibOwned<GDBusConnection> connection)
    : m_loop(loop)
    , m_connection(std::move(connection))
    , m_cancellable(g_cancellable_new())
{
}

BusConnection::~BusConnection()
{
    for (const guint subscription : m_subscriptions) {
        g_dbus_connection_signal_unsubscribe(m_connection.get(), subscription);
    }
    g_cancellable_cancel(m_cancellable.get());
    m_loop.drain(); // what was cancelled is cleared away there
}

bool BusConnection::isClosed() const
{
    return g_dbus_connection_is_closed(m_connection.get());
}

void BusConnection::subscribe(const char* interface, const char* member, const char* firstArgument,
                              OnSignal onSignal)
{
    m_subscriptions.push_back(g_dbus_connection_signal_subscribe(
        m_connection.get(), nullptr, interface, member, nullptr, firstArgument,
        G_DBUS_SIGNAL_FLAGS_NONE, deliverSignal,
        std::make_unique<OnSignal>(std::move(onSignal)).release(), forgetSignal));
}

GLibOwned<GVariant> BusConnection::call(const BusCall& call, Moment deadline)
{
    return std::move(callAll({call}, deadline).front());
}

void BusConnection::finishCall(GObject* source, GAsyncResult* result, gpointer data)
{
    const std::unique_ptr<PendingCall> pending(static_cast<PendingCall*>(data));
    Batch& batch = *pending->batch;
    --batch.outstanding;
    GLibOwned<GVariant> reply(
        g_dbus_connection_call_finish(G_DBUS_CONNECTION(source), result, nullptr));
    if (reply && batch.isEnough && batch.isEnough(*reply)) {
        batch.enough = true;
    }
    batch.replies[pending->index] = std::move(reply);
}

std::vector<GLibOwned<GVariant>>
BusConnection::callAll(const std::vector<BusCall>& calls, Moment deadline,
                       const std::function<bool(GVariant&)>& isEnough)
{
    const auto batch = std::make_shared<Batch>();
    batch->replies.resize(calls.size());
    batch->isEnough = isEnough;
    std::size_t sent = 0;
    m_loop.runUntil(
        [&] {
            while (!batch->enough && batch->outstanding < mostOutstanding && sent < calls.size()) {
                send(calls[sent], std::make_unique<PendingCall>(batch, sent), deadline);
                ++sent;
            }
            return batch->enough || batch->outstanding == 0;
        },
        deadline);
    batch->isEnough = nullptr; // what it refers to ends here
    return std::exchange(batch->replies, std::vector<GLibOwned<GVariant>>(calls.size()));
}

void BusConnection::send(const BusCall& call, std::unique_ptr<PendingCall> pending, Moment deadline)
{
    ++pending->batch->outstanding;
    g_dbus_connection_call(
        m_connection.get(), call.object.owner.c_str(), call.object.path.c_str(), call.interface,
        call.method, call.arguments.get(), G_VARIANT_TYPE(call.replyType), G_DBUS_CALL_FLAGS_NONE,
        millisecondsUntil(deadline), m_cancellable.get(), finishCall, pending.release());
}

} // namespace zelvane
