#include "desktop/linux/atspi/AtSpiSession.h"

#include <utility>

namespace zelvane {

namespace {

using std::chrono::steady_clock;

/// A bus may have to be started first.
constexpr std::chrono::seconds connectLimit{5};
/// A connection that held for so long was a good one.
constexpr std::chrono::seconds steadyTime{1};
/// A bus that keeps ending is then left alone until somebody asks for it.
constexpr int mostAttempts = 3;

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

AtSpiSession::Accessibility::Accessibility(std::unique_ptr<BusConnection> connection)
    : bus(std::move(connection))
    , tree(*bus)
    , finder(tree)
{
}

AtSpiSession::AtSpiSession(GLibLoop& loop, std::string sessionBusAddress)
    : m_loop(loop)
    , m_address(std::move(sessionBusAddress))
{
}

AtSpiSession::Status AtSpiSession::connect()
{
    dropClosed();
    if (!m_accessibility || m_isOutdated) {
        m_status = reach();
        // Asking starts the launcher where it can be started: its coming is no news then.
        m_isOutdated = false;
        m_isWorthTrying = false;
    }
    return m_status;
}

AtSpiSession::Status AtSpiSession::maintain()
{
    dropClosed();
    const bool isWorthTrying = std::exchange(m_isWorthTrying, false);
    if (isWorthTrying && m_attempts < mostAttempts) {
        ++m_attempts;
        return connect();
    }
    return m_status;
}

std::optional<AtSpiElement> AtSpiSession::inspect(Moment deadline)
{
    if (!m_accessibility || steady_clock::now() >= deadline) {
        return std::nullopt;
    }
    m_loop.drain(); // announcements that have come but weren't looked at
    return m_accessibility->finder.inspect(deadline);
}

void AtSpiSession::dropClosed()
{
    if (m_session && m_session->isClosed()) {
        m_session.reset();
    }
    if (m_accessibility && m_accessibility->bus->isClosed()) {
        if (steady_clock::now() - m_accessibility->since > steadyTime) {
            m_attempts = 0;
        }
        m_accessibility.reset();
        m_isWorthTrying = true;
    }
    if (m_status == Status::ready && !m_accessibility) {
        m_status = Status::noAccessibilityBus;
    }
    if (m_status == Status::noAccessibilityBus && !m_session) {
        m_status = Status::noSessionBus;
    }
}

AtSpiSession::Status AtSpiSession::reach()
{
    if (!m_session && !openSession()) {
        return m_accessibility ? Status::ready : Status::noSessionBus;
    }
    const auto deadline = steady_clock::now() + connectLimit;
    // A launcher that refuses may still tell the address.
    (void)m_session->call(enableAccessibility(), deadline);
    if (const auto reply = m_session->call(accessibilityBusAddress(), deadline)) {
        const char* address = nullptr;
        g_variant_get(reply.get(), "(&s)", &address);
        openAccessibility(address, deadline);
    }
    return m_accessibility ? Status::ready : Status::noAccessibilityBus;
}

bool AtSpiSession::openSession()
{
    m_session = BusConnection::open(m_loop, m_address, steady_clock::now() + connectLimit);
    if (!m_session) {
        return false;
    }
    m_session->subscribe(
        "org.freedesktop.DBus", "NameOwnerChanged", launcherName,
        [this](const BusObject&, GVariant& arguments) { noteLauncher(arguments); });
    return true;
}

void AtSpiSession::noteLauncher(GVariant& arguments)
{
    if (!g_variant_is_of_type(&arguments, G_VARIANT_TYPE("(sss)"))) {
        return;
    }
    const char* newOwner = nullptr;
    g_variant_get_child(&arguments, 2, "&s", &newOwner);
    const bool hasCome = *newOwner != '\0';
    // One that has crashed leaves its bus behind, with the programs that are on it.
    if (hasCome || !m_accessibility) {
        m_isWorthTrying = true;
        m_isOutdated = hasCome;
    }
}

bool AtSpiSession::openAccessibility(const std::string& address, Moment deadline)
{
    auto bus = BusConnection::open(m_loop, address, deadline);
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
    return true;
}

} // namespace zelvane
