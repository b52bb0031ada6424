#include "desktop/linux/atspi/AtSpiWatcher.h"

#include "desktop/linux/atspi/AccessibleTree.h"
#include "desktop/linux/atspi/BusConnection.h"
#include "desktop/linux/atspi/FocusFinder.h"
#include "desktop/linux/atspi/GLibLoop.h"

#include <atomic>
#include <deque>
#include <mutex>
#include <thread>
#include <utility>

namespace zelvane {

namespace {

using std::chrono::steady_clock;

/// A bus may have to be started first.
constexpr std::chrono::seconds connectLimit{5};
/// A connection that held for so long was a good one.
constexpr std::chrono::seconds steadyTime{1};

constexpr char launcherName[] = "org.a11y.Bus";
constexpr char launcherPath[] = "/org/a11y/bus";
constexpr char registryName[] = "org.a11y.atspi.Registry";

BusCall enableAccessibility()
{
    return {{launcherName, launcherPath},
            "org.freedesktop.DBus.Properties",
            "Set",
            "()",
            busArguments(g_variant_new("(ssv)", "org.a11y.Status", "IsEnabled",
                                       g_variant_new_boolean(TRUE)))};
}

BusCall accessibilityBusAddress()
{
    return {{launcherName, launcherPath}, launcherName, "GetAddress", "(s)", nullptr};
}

/// Programs send only what somebody has registered for.
BusCall announceFocus()
{
    return {{registryName, "/org/a11y/atspi/registry"},
            registryName,
            "RegisterEvent",
            "()",
            busArguments(g_variant_new("(sass)", "object:state-changed:focused", nullptr, ""))};
}

/// Everything that needs the accessibility bus, and goes with it.
struct Accessibility
{
    explicit Accessibility(std::unique_ptr<BusConnection> connection)
        : bus(std::move(connection))
        , tree(*bus)
        , finder(tree)
    {
    }

    std::unique_ptr<BusConnection> bus;
    AccessibleTree tree;
    FocusFinder finder;
};

/// The signal carries what changed ("focused"), and 1 or 0.
void noteFocus(FocusFinder& finder, const BusObject& sender, GVariant& arguments)
{
    if (g_variant_n_children(&arguments) < 2) {
        return;
    }
    const GLibOwned<GVariant> state(g_variant_get_child_value(&arguments, 1));
    if (g_variant_is_of_type(state.get(), G_VARIANT_TYPE_INT32)) {
        finder.noteFocus(sender, g_variant_get_int32(state.get()) != 0);
    }
}

} // namespace

class AtSpiWatcher::Worker
{
public:
    explicit Worker(std::string sessionBusAddress)
        : m_address(std::move(sessionBusAddress))
        , m_thread([this](const std::stop_token& stop) { run(stop); })
    {
    }

    [[nodiscard]] Status status() const { return m_status; }

    void post(steady_clock::time_point deadline, Answer onAnswer)
    {
        const std::scoped_lock lock(m_lock);
        m_inspections.push_back({deadline, std::move(onAnswer)});
        wake();
    }

    void requestConnection()
    {
        const std::scoped_lock lock(m_lock);
        m_wantsConnection = true;
        wake();
    }

private:
    struct Inspection
    {
        steady_clock::time_point deadline;
        Answer onAnswer;
    };

    void wake()
    {
        if (m_loop) {
            m_loop->wake();
        }
    }

    void setLoop(GLibLoop* loop)
    {
        const std::scoped_lock lock(m_lock);
        m_loop = loop;
    }

    void run(const std::stop_token& stop)
    {
        GLibLoop loop(stop);
        setLoop(&loop);
        while (!loop.isStopping()) {
            dropClosed();
            if (takeConnectionRequest()) {
                m_status = connect(loop);
            } else if (auto inspection = takeInspection()) {
                inspection->onAnswer(inspect(loop, inspection->deadline));
            } else {
                loop.waitForWork();
            }
        }
        setLoop(nullptr);
        m_accessibility.reset();
        m_session.reset();
    }

    bool takeConnectionRequest()
    {
        const std::scoped_lock lock(m_lock);
        return std::exchange(m_wantsConnection, false) && !m_accessibility;
    }

    std::optional<Inspection> takeInspection()
    {
        const std::scoped_lock lock(m_lock);
        if (m_inspections.empty()) {
            return std::nullopt;
        }
        auto inspection = std::move(m_inspections.front());
        m_inspections.pop_front();
        return inspection;
    }

    void dropClosed()
    {
        if (m_session && m_session->isClosed()) {
            m_session.reset();
        }
        if (m_accessibility && m_accessibility->bus->isClosed()) {
            m_accessibility.reset();
            m_status = m_session ? Status::noAccessibilityBus : Status::noSessionBus;
            // A bus that keeps ending is left alone until somebody asks for it.
            if (steady_clock::now() - m_connectedAt > steadyTime) {
                requestConnection();
            }
        }
    }

    std::optional<AtSpiElement> inspect(GLibLoop& loop, steady_clock::time_point deadline)
    {
        if (!m_accessibility || steady_clock::now() >= deadline) {
            return std::nullopt;
        }
        loop.drain(); // announcements that have come but weren't looked at
        return m_accessibility->finder.inspect(deadline);
    }

    Status connect(GLibLoop& loop)
    {
        if (!m_session && !openSession(loop)) {
            return Status::noSessionBus;
        }
        const auto deadline = steady_clock::now() + connectLimit;
        (void)m_session->call(enableAccessibility(), deadline);
        const auto reply = m_session->call(accessibilityBusAddress(), deadline);
        if (!reply) {
            return Status::noAccessibilityBus;
        }
        const char* address = nullptr;
        g_variant_get(reply.get(), "(&s)", &address);
        return openAccessibility(loop, address, deadline) ? Status::ready
                                                          : Status::noAccessibilityBus;
    }

    bool openSession(GLibLoop& loop)
    {
        m_session = BusConnection::open(loop, m_address, steady_clock::now() + connectLimit);
        return m_session != nullptr;
    }

    bool openAccessibility(GLibLoop& loop, const std::string& address,
                           steady_clock::time_point deadline)
    {
        auto bus = BusConnection::open(loop, address, deadline);
        if (!bus) {
            return false;
        }
        auto accessibility = std::make_unique<Accessibility>(std::move(bus));
        accessibility->bus->subscribe(
            "org.a11y.atspi.Event.Object", "StateChanged", "focused",
            [&finder = accessibility->finder](const BusObject& sender, GVariant& arguments) {
                noteFocus(finder, sender, arguments);
            });
        if (!accessibility->bus->call(announceFocus(), deadline)) {
            return false;
        }
        m_accessibility = std::move(accessibility);
        m_connectedAt = steady_clock::now();
        return true;
    }

    const std::string m_address;
    std::atomic<Status> m_status = Status::connecting;

    std::mutex m_lock;
    GLibLoop* m_loop = nullptr;
    std::deque<Inspection> m_inspections;
    bool m_wantsConnection = true;

    // Of the thread alone.
    std::unique_ptr<BusConnection> m_session;
    std::unique_ptr<Accessibility> m_accessibility;
    steady_clock::time_point m_connectedAt;

    std::jthread m_thread; // the last, so that it ends first
};

AtSpiWatcher::AtSpiWatcher(std::string sessionBusAddress)
    : m_worker(std::make_unique<Worker>(std::move(sessionBusAddress)))
{
}

AtSpiWatcher::~AtSpiWatcher() = default;

AtSpiWatcher::Status AtSpiWatcher::status() const
{
    return m_worker->status();
}

void AtSpiWatcher::inspect(steady_clock::time_point deadline, Answer onAnswer)
{
    m_worker->post(deadline, std::move(onAnswer));
}

void AtSpiWatcher::reconnect()
{
    m_worker->requestConnection();
}

} // namespace zelvane
