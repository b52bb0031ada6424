#include "desktop/linux/SelectionServer.h"

#include <algorithm>

namespace zelvane {

/// A large value on its way to one program.
struct SelectionServer::Transfer
{
    xcb_window_t requestor = XCB_WINDOW_NONE;
    QByteArray target;
    xcb_atom_t property = XCB_ATOM_NONE;
    xcb_atom_t type = XCB_ATOM_NONE;
    SelectionValue value;
    qsizetype sent = 0;
    /// The empty piece that marks the end has been sent.
    bool isComplete = false;
    std::unique_ptr<Timer> limit;
};

SelectionServer::SelectionServer(XcbConnection& connection, Clock& clock, xcb_window_t window,
                                 xcb_atom_t selection, Delivered onDelivered)
    : m_connection(connection)
    , m_clock(clock)
    , m_window(window)
    , m_selection(selection)
    , m_onDelivered(std::move(onDelivered))
{
}

SelectionServer::~SelectionServer() = default;

void SelectionServer::setContent(SelectionContent content, xcb_timestamp_t since)
{
    m_content = std::move(content);
    m_since = since;
}

QList<quint32> SelectionServer::dataTargets()
{
    QList<quint32> atoms;
    for (const QByteArray& target : m_content.keys()) {
        atoms.append(m_connection.atom(target));
    }
    return atoms;
}

qsizetype SelectionServer::pieceSize() const
{
    constexpr qsizetype usual = qsizetype(256) << 10;
    constexpr qsizetype requestHeader = 64;
    const auto largestRequest =
        qsizetype(xcb_get_maximum_request_length(m_connection.get())) * 4 - requestHeader;
    return std::min(usual, largestRequest / 4 * 4);
}

void SelectionServer::handle(const xcb_generic_event_t& event)
{
    switch (eventKind(event)) {
    case XCB_SELECTION_REQUEST: {
        const auto& request = eventAs<xcb_selection_request_event_t>(event);
        if (request.owner == m_window && request.selection == m_selection) {
            answer(request);
        }
        break;
    }
    case XCB_PROPERTY_NOTIFY: {
        const auto& change = eventAs<xcb_property_notify_event_t>(event);
        if (change.state != XCB_PROPERTY_DELETE) {
            break;
        }
        const auto transfer = std::ranges::find_if(m_transfers, [&](const auto& candidate) {
            return candidate->requestor == change.window && candidate->property == change.atom;
        });
        if (transfer != m_transfers.end()) {
            sendPiece(**transfer);
        }
        break;
    }
    case XCB_DESTROY_NOTIFY: {
        const xcb_window_t gone = eventAs<xcb_destroy_notify_event_t>(event).window;
        endTransfers([=](const Transfer& transfer) { return transfer.requestor == gone; });
        break;
    }
    default:
        break;
    }
}

void SelectionServer::answer(const xcb_selection_request_event_t& request)
{
    // Programs of the oldest kind leave the property open.
    const xcb_atom_t property =
        request.property != XCB_ATOM_NONE ? request.property : request.target;
    const bool done = request.target == m_connection.atom("MULTIPLE")
                          ? convertMultiple(request.requestor, property)
                          : convert(request.requestor, request.target, property);

    // An event is 32 bytes on the wire, whatever its kind.
    union {
        xcb_selection_notify_event_t notify;
        char wire[32];
    } event{};
    event.notify.response_type = XCB_SELECTION_NOTIFY;
    event.notify.time = request.time;
    event.notify.requestor = request.requestor;
    event.notify.selection = request.selection;
    event.notify.target = request.target;
    event.notify.property = done ? property : XCB_ATOM_NONE;
    xcb_send_event(m_connection.get(), 0, request.requestor, XCB_EVENT_MASK_NO_EVENT, event.wire);
    m_connection.flush();
}

bool SelectionServer::convert(xcb_window_t requestor, xcb_atom_t target, xcb_atom_t property)
{
    const QByteArray name = m_connection.atomName(target);
    if (name == "TARGETS") {
        QList<quint32> targets = dataTargets();
        for (const char* other : {"TARGETS", "MULTIPLE", "TIMESTAMP", "SAVE_TARGETS"}) {
            targets.append(m_connection.atom(other));
        }
        return put(requestor, property, "ATOM", targets);
    }
    if (name == "TIMESTAMP") {
        return put(requestor, property, "INTEGER", {m_since});
    }
    const auto value = m_content.constFind(name);
    if (value == m_content.constEnd()) {
        return false;
    }
    deliver(requestor, name, property, *value);
    return true;
}

bool SelectionServer::convertMultiple(xcb_window_t requestor, xcb_atom_t property)
{
    const xcb_atom_t pairType = m_connection.atom("ATOM_PAIR");
    QList<quint32> pairs = m_connection.property(requestor, property, pairType);
    if (pairs.isEmpty()) {
        return false;
    }
    for (qsizetype i = 0; i + 1 < pairs.size(); i += 2) {
        if (pairs[i + 1] != XCB_ATOM_NONE && !convert(requestor, pairs[i], pairs[i + 1])) {
            pairs[i + 1] = XCB_ATOM_NONE;
        }
    }
    return put(requestor, property, "ATOM_PAIR", pairs);
}

bool SelectionServer::put(xcb_window_t requestor, xcb_atom_t property, const QByteArray& type,
                          const QList<quint32>& values)
{
    xcb_change_property(m_connection.get(), XCB_PROP_MODE_REPLACE, requestor, property,
                        m_connection.atom(type), 32, quint32(values.size()), values.constData());
    return true;
}

void SelectionServer::deliver(xcb_window_t requestor, const QByteArray& target, xcb_atom_t property,
                              const SelectionValue& value)
{
    if (value.bytes.size() > pieceSize()) {
        beginTransfer(requestor, target, property, value);
        return;
    }
    xcb_change_property(m_connection.get(), XCB_PROP_MODE_REPLACE, requestor, property,
                        m_connection.atom(value.type), value.unit,
                        quint32(value.bytes.size() / (value.unit / 8)), value.bytes.constData());
    m_onDelivered(requestor, target);
}

void SelectionServer::beginTransfer(xcb_window_t requestor, const QByteArray& target,
                                    xcb_atom_t property, const SelectionValue& value)
{
    endTransfers([=](const Transfer& old) {
        return old.requestor == requestor && old.property == property;
    });
    // Watched before the first piece is announced: its removal asks for the next one.
    const quint32 events = XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    xcb_change_window_attributes(m_connection.get(), requestor, XCB_CW_EVENT_MASK, &events);

    auto transfer = std::make_unique<Transfer>();
    transfer->requestor = requestor;
    transfer->target = target;
    transfer->property = property;
    transfer->type = m_connection.atom(value.type);
    transfer->value = value;
    const auto size = quint32(value.bytes.size());
    xcb_change_property(m_connection.get(), XCB_PROP_MODE_REPLACE, requestor, property,
                        m_connection.atom("INCR"), 32, 1, &size);
    waitForRequestor(*transfer);
    m_transfers.push_back(std::move(transfer));
}

void SelectionServer::sendPiece(Transfer& transfer)
{
    if (transfer.isComplete) {
        const xcb_window_t requestor = transfer.requestor;
        const QByteArray target = transfer.target;
        endTransfers([&](const Transfer& candidate) { return &candidate == &transfer; });
        m_onDelivered(requestor, target);
        return;
    }
    const qsizetype left = transfer.value.bytes.size() - transfer.sent;
    const qsizetype length = std::min(pieceSize(), left);
    xcb_change_property(m_connection.get(), XCB_PROP_MODE_REPLACE, transfer.requestor,
                        transfer.property, transfer.type, transfer.value.unit,
                        quint32(length / (transfer.value.unit / 8)),
                        transfer.value.bytes.constData() + transfer.sent);
    transfer.sent += length;
    transfer.isComplete = length == 0;
    m_connection.flush();
    waitForRequestor(transfer);
}

void SelectionServer::waitForRequestor(Transfer& transfer)
{
    transfer.limit = m_clock.callLater(pieceLimit, [this, late = &transfer] {
        endTransfers([=](const Transfer& candidate) { return &candidate == late; });
    });
}

void SelectionServer::endTransfers(const std::function<bool(const Transfer&)>& concerns)
{
    for (const auto& transfer : m_transfers) {
        const bool isLastOfItsWindow = std::ranges::count_if(m_transfers, [&](const auto& other) {
                                           return other->requestor == transfer->requestor;
                                       }) == 1;
        if (concerns(*transfer) && isLastOfItsWindow) {
            const quint32 none = XCB_EVENT_MASK_NO_EVENT;
            xcb_change_window_attributes(m_connection.get(), transfer->requestor, XCB_CW_EVENT_MASK,
                                         &none);
        }
    }
    std::erase_if(m_transfers, [&](const auto& transfer) { return concerns(*transfer); });
    m_connection.flush();
}

} // namespace zelvane
