#include "desktop/linux/ClipboardWorker.h"

#include <algorithm>
#include <utility>

#include <xcb/xfixes.h>

namespace zelvane {

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr milliseconds timeLimit{500};

} // namespace

ClipboardWorker::ClipboardWorker(XcbConnection& connection)
    : m_connection(connection)
    , m_selection(connection.atom("CLIPBOARD"))
    , m_timeProperty(connection.atom("ZELVANE_TIME"))
    , m_window(makeWindow())
    , m_events(
          connection, [this](const xcb_generic_event_t& event) { handle(event); },
          [this] { m_reader.abandonAll(); })
    , m_reader(connection, m_clock, m_selection)
    , m_server(connection, m_clock, m_window, m_selection,
               [this](xcb_window_t requestor, const QByteArray& target) {
                   noteDelivery(requestor, target);
               })
{
    xcb_xfixes_select_selection_input(m_connection.get(), m_window, m_selection,
                                      XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER);
    m_connection.flush();
}

ClipboardWorker::~ClipboardWorker()
{
    m_reader.abandonAll();
}

xcb_window_t ClipboardWorker::makeWindow()
{
    const xcb_window_t window = xcb_generate_id(m_connection.get());
    const quint32 events = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_create_window(m_connection.get(), 0, window, m_connection.root(), -10, -10, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK,
                      &events);
    return window;
}

void ClipboardWorker::handle(const xcb_generic_event_t& event)
{
    const quint8 ownerChange =
        m_connection.firstEvent(XExtension::xfixes) + XCB_XFIXES_SELECTION_NOTIFY;
    if (eventKind(event) == ownerChange) {
        const auto& change = eventAs<xcb_xfixes_selection_notify_event_t>(event);
        if (change.selection == m_selection) {
            handleOwnerChange(change.owner);
        }
        return;
    }
    if (eventKind(event) == XCB_SELECTION_NOTIFY && m_onHandedOver &&
        eventAs<xcb_selection_notify_event_t>(event).requestor == m_window) {
        std::exchange(m_onHandedOver, nullptr)();
        return;
    }
    m_reader.handle(event);
    m_server.handle(event);
}

void ClipboardWorker::handleOwnerChange(xcb_window_t newOwner)
{
    if (newOwner == m_window || newOwner == XCB_WINDOW_NONE) {
        return;
    }
    m_takenAt = steady_clock::now();
    const xcb_window_t present = owner();
    if (present == m_window) {
        return; // the event is older than our own last change
    }
    m_server.setContent({}, XCB_CURRENT_TIME);
    // Since `restore` was called the clipboard counts as the user's again, and this is its newest
    // content.
    if (m_restoration && m_restoration->owner != present) {
        m_restoration.reset();
        m_restorationTimer.reset();
    }
}

void ClipboardWorker::noteDelivery(xcb_window_t requestor, const QByteArray& target)
{
    if (emptiedContent().contains(target)) {
        return; // only the mark was read
    }
    m_deliveries.insert(m_connection.clientOf(requestor), steady_clock::now());
    if (m_restoration) {
        restoreWhenFetched();
    }
}

void ClipboardWorker::snapshot(std::function<void(std::optional<SelectionContent>)> onRead)
{
    // A text that still waits for its target isn't what the user has on the clipboard.
    finishRestoration();
    m_tasks.start([this, onRead = std::move(onRead)](const std::stop_token&) {
        return readSnapshot(onRead);
    });
}

QCoro::Task<void>
ClipboardWorker::readSnapshot(std::function<void(std::optional<SelectionContent>)> onRead)
{
    constexpr int attempts = 2;
    SelectionContent content;
    for (int attempt = 0; attempt < attempts; ++attempt) {
        const xcb_window_t before = owner();
        if (before == m_window) {
            content = m_server.content();
            break;
        }
        if (m_connection.isLost()) {
            onRead(std::nullopt);
            co_return;
        }
        if (before == XCB_WINDOW_NONE) {
            content.clear();
            break;
        }
        const auto read = co_await m_reader.readAll();
        if (!read) {
            onRead(std::nullopt);
            co_return;
        }
        content = *read;
        // A new owner in the meantime would mix two contents. One that has ended left this one.
        const xcb_window_t after = owner();
        if (after == before || after == XCB_WINDOW_NONE) {
            break;
        }
    }
    onRead(content);
}

void ClipboardWorker::text(std::optional<Moment> since,
                           std::function<void(std::optional<QString>)> onRead)
{
    const xcb_window_t present = owner();
    m_events.drain(); // what led to this owner is known then
    if (present == m_window) {
        onRead(textOf(m_server.content()));
    } else if (present == XCB_WINDOW_NONE || (since && m_takenAt < since)) {
        onRead(std::nullopt);
    } else {
        m_tasks.start([this, onRead = std::move(onRead)](const std::stop_token&) {
            return readText(onRead);
        });
    }
}

QCoro::Task<void> ClipboardWorker::readText(std::function<void(std::optional<QString>)> onRead)
{
    const std::optional<QString> text = co_await m_reader.readText();
    onRead(text);
}

void ClipboardWorker::put(const SelectionContent& content)
{
    m_restoration.reset();
    m_restorationTimer.reset();
    takeSelection(content);
}

void ClipboardWorker::restore(const SelectionContent& content,
                              const std::optional<ClipboardExchange::Paste>& paste)
{
    m_restoration = Restoration{content, paste.value_or(ClipboardExchange::Paste()), owner()};
    if (paste) {
        restoreWhenFetched();
    } else {
        finishRestoration();
    }
}

std::optional<ClipboardWorker::Moment> ClipboardWorker::fetchedByTarget() const
{
    const ClipboardExchange::Paste& paste = m_restoration->paste;
    std::optional<Moment> last;
    for (auto delivery = m_deliveries.cbegin(); delivery != m_deliveries.cend(); ++delivery) {
        // Clipboard managers fetch what appears, the target what it is told to.
        const bool isTarget =
            !paste.target || delivery.key() == m_connection.clientOf(*paste.target);
        if (isTarget && *delivery >= paste.at) {
            last = std::max(last.value_or(*delivery), *delivery);
        }
    }
    return last;
}

ClipboardWorker::Moment ClipboardWorker::restorationDue() const
{
    const Moment pasted = m_restoration->paste.at;
    if (m_restoration->owner != m_window) {
        return pasted + unseenPasteLimit;
    }
    const std::optional<Moment> fetched = fetchedByTarget();
    return fetched ? *fetched + settleTime : pasted + pasteLimit;
}

void ClipboardWorker::restoreWhenFetched()
{
    const auto left = std::chrono::ceil<milliseconds>(restorationDue() - steady_clock::now());
    if (left.count() <= 0) {
        finishRestoration();
    } else {
        m_restorationTimer = m_clock.callLater(left, [this] { finishRestoration(); });
    }
}

void ClipboardWorker::finishRestoration()
{
    if (!m_restoration) {
        return;
    }
    const Restoration restoration = *std::exchange(m_restoration, std::nullopt);
    m_restorationTimer.reset();
    if (owner() != restoration.owner) {
        return;
    }
    if (restoration.content.isEmpty()) {
        giveUpSelection();
    } else {
        takeSelection(restoration.content);
    }
}

void ClipboardWorker::takeSelection(const SelectionContent& content)
{
    const xcb_timestamp_t now = serverTime();
    m_deliveries.clear();
    m_server.setContent(content, now);
    // Taken anew even if it is ours: programs that keep what they read drop it then.
    xcb_set_selection_owner(m_connection.get(), m_window, m_selection, now);
    m_connection.sync();
}

void ClipboardWorker::giveUpSelection()
{
    m_deliveries.clear();
    m_server.setContent({}, XCB_CURRENT_TIME);
    xcb_set_selection_owner(m_connection.get(), XCB_WINDOW_NONE, m_selection, serverTime());
    m_connection.sync();
}

xcb_window_t ClipboardWorker::owner()
{
    const XcbOwned<xcb_get_selection_owner_reply_t> reply(xcb_get_selection_owner_reply(
        m_connection.get(), xcb_get_selection_owner(m_connection.get(), m_selection), nullptr));
    return reply ? reply->owner : XCB_WINDOW_NONE;
}

xcb_timestamp_t ClipboardWorker::serverTime()
{
    // Adding nothing to a property of our own makes the server tell its time.
    xcb_change_property(m_connection.get(), XCB_PROP_MODE_APPEND, m_window, m_timeProperty,
                        XCB_ATOM_INTEGER, 32, 0, nullptr);
    const auto event = m_events.waitFor(
        [this](const xcb_generic_event_t& candidate) {
            const auto& change = eventAs<xcb_property_notify_event_t>(candidate);
            return eventKind(candidate) == XCB_PROPERTY_NOTIFY && change.window == m_window &&
                   change.atom == m_timeProperty;
        },
        timeLimit);
    return event ? eventAs<xcb_property_notify_event_t>(*event).time : XCB_CURRENT_TIME;
}

void ClipboardWorker::handOver(std::function<void()> onDone)
{
    finishRestoration();
    const xcb_atom_t managerSelection = m_connection.atom("CLIPBOARD_MANAGER");
    const XcbOwned<xcb_get_selection_owner_reply_t> manager(xcb_get_selection_owner_reply(
        m_connection.get(), xcb_get_selection_owner(m_connection.get(), managerSelection),
        nullptr));
    // What is marked as secret is ours, not the user's.
    const bool isUsers = !m_server.content().contains(emptiedContent().firstKey());
    if (!manager || manager->owner == XCB_WINDOW_NONE || !isUsers || !isOwner()) {
        onDone();
        return;
    }
    const QList<quint32> targets = m_server.dataTargets();
    const xcb_atom_t property = m_connection.atom("ZELVANE_SELECTION");
    xcb_change_property(m_connection.get(), XCB_PROP_MODE_REPLACE, m_window, property,
                        XCB_ATOM_ATOM, 32, quint32(targets.size()), targets.constData());
    xcb_convert_selection(m_connection.get(), m_window, managerSelection,
                          m_connection.atom("SAVE_TARGETS"), property, serverTime());
    m_connection.flush();
    m_onHandedOver = std::move(onDone);
    m_handOverTimer = m_clock.callLater(handOverLimit, [this] {
        if (m_onHandedOver) {
            std::exchange(m_onHandedOver, nullptr)();
        }
    });
}

} // namespace zelvane
