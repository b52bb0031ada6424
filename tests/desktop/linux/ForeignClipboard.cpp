#include "ForeignClipboard.h"

#include <algorithm>
#include <cstdlib>
#include <stdexcept>

#include <poll.h>

namespace zelvane::test {

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr qsizetype pieceSize = 100'000;

template <typename T>
std::unique_ptr<T, void (*)(void*)> owned(T* reply)
{
    return {reply, std::free};
}

} // namespace

ForeignProgram::ForeignProgram(const QByteArray& display)
    : m_connection(xcb_connect(display.constData(), nullptr))
{
    if (xcb_connection_has_error(m_connection) != 0) {
        throw std::runtime_error("the foreign program cannot connect");
    }
    m_root = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data->root;
    m_window = xcb_generate_id(m_connection);
    const quint32 events = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_create_window(m_connection, XCB_COPY_FROM_PARENT, m_window, m_root, 10, 10, 100, 100, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK,
                      &events);
    xcb_flush(m_connection);
}

ForeignProgram::~ForeignProgram()
{
    xcb_disconnect(m_connection);
}

xcb_atom_t ForeignProgram::atom(const QByteArray& name) const
{
    const auto cookie = xcb_intern_atom(m_connection, 0, quint16(name.size()), name.constData());
    const auto reply = owned(xcb_intern_atom_reply(m_connection, cookie, nullptr));
    return reply ? reply->atom : xcb_atom_t(XCB_ATOM_NONE);
}

QByteArray ForeignProgram::atomName(xcb_atom_t atom) const
{
    const auto reply = owned(
        xcb_get_atom_name_reply(m_connection, xcb_get_atom_name(m_connection, atom), nullptr));
    return reply ? QByteArray(xcb_get_atom_name_name(reply.get()),
                              xcb_get_atom_name_name_length(reply.get()))
                 : QByteArray();
}

std::unique_ptr<xcb_generic_event_t, void (*)(void*)>
ForeignProgram::nextEvent(std::chrono::milliseconds limit) const
{
    const auto end = Clock::now() + limit;
    xcb_flush(m_connection);
    while (xcb_connection_has_error(m_connection) == 0) {
        if (auto* event = xcb_poll_for_event(m_connection)) {
            return owned(event);
        }
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now());
        if (left <= 0ms) {
            break;
        }
        pollfd descriptor{xcb_get_file_descriptor(m_connection), POLLIN, 0};
        ::poll(&descriptor, 1, int(left.count()));
    }
    return owned<xcb_generic_event_t>(nullptr);
}

xcb_window_t ForeignProgram::clipboardOwner() const
{
    const auto cookie = xcb_get_selection_owner(m_connection, atom("CLIPBOARD"));
    const auto reply = owned(xcb_get_selection_owner_reply(m_connection, cookie, nullptr));
    return reply ? reply->owner : xcb_window_t(XCB_WINDOW_NONE);
}

void ForeignProgram::takeClipboard() const
{
    xcb_set_selection_owner(m_connection, m_window, atom("CLIPBOARD"), XCB_CURRENT_TIME);
    if (clipboardOwner() != m_window) {
        throw std::runtime_error("the foreign program did not get the clipboard");
    }
}

std::optional<ForeignValue> ForeignProgram::takeProperty(xcb_atom_t property) const
{
    const auto cookie = xcb_get_property(m_connection, 1, m_window, property,
                                         XCB_GET_PROPERTY_TYPE_ANY, 0, 1U << 28);
    const auto reply = owned(xcb_get_property_reply(m_connection, cookie, nullptr));
    if (!reply || reply->type == XCB_ATOM_NONE) {
        return std::nullopt;
    }
    return ForeignValue{atomName(reply->type), reply->format,
                        QByteArray(static_cast<const char*>(xcb_get_property_value(reply.get())),
                                   xcb_get_property_value_length(reply.get()))};
}

std::optional<ForeignValue> ForeignProgram::fetch(const QByteArray& target,
                                                  std::chrono::milliseconds limit) const
{
    const xcb_atom_t property = atom("FOREIGN_PROPERTY");
    const auto end = Clock::now() + limit;
    while (nextEvent(0ms)) {
        // Left over from earlier questions.
    }
    xcb_convert_selection(m_connection, m_window, atom("CLIPBOARD"), atom(target), property,
                          XCB_CURRENT_TIME);
    std::optional<ForeignValue> pieces;
    while (Clock::now() < end) {
        const auto event =
            nextEvent(std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()));
        if (!event) {
            return std::nullopt;
        }
        const int kind = event->response_type & 0x7f;
        if (kind == XCB_SELECTION_NOTIFY) {
            const auto* notify = reinterpret_cast<const xcb_selection_notify_event_t*>(event.get());
            if (notify->property == XCB_ATOM_NONE) {
                return std::nullopt;
            }
            auto value = takeProperty(property);
            if (!value || value->type != "INCR") {
                return value;
            }
            pieces = ForeignValue();
        } else if (kind == XCB_PROPERTY_NOTIFY && pieces) {
            const auto* change = reinterpret_cast<const xcb_property_notify_event_t*>(event.get());
            if (change->state != XCB_PROPERTY_NEW_VALUE || change->atom != property) {
                continue;
            }
            const auto piece = takeProperty(property);
            if (!piece) {
                continue;
            }
            if (piece->bytes.isEmpty()) {
                return pieces;
            }
            pieces->type = piece->type;
            pieces->unit = piece->unit;
            pieces->bytes += piece->bytes;
        }
    }
    return std::nullopt;
}

QByteArray ForeignProgram::fetchText() const
{
    const auto value = fetch("UTF8_STRING");
    return value ? value->bytes : QByteArray("<none>");
}

QList<QByteArray> ForeignProgram::fetchTargets() const
{
    const auto value = fetch("TARGETS");
    QList<QByteArray> names;
    if (value) {
        const auto* atoms = reinterpret_cast<const quint32*>(value->bytes.constData());
        for (qsizetype i = 0; i < value->bytes.size() / 4; ++i) {
            names.append(atomName(atoms[i]));
        }
    }
    std::ranges::sort(names);
    return names;
}

QMap<QByteArray, std::optional<ForeignValue>>
ForeignProgram::fetchTogether(const QList<QByteArray>& targets) const
{
    QList<quint32> pairs;
    for (const QByteArray& target : targets) {
        pairs << atom(target) << atom("FOREIGN_" + target);
    }
    const xcb_atom_t list = atom("FOREIGN_LIST");
    xcb_change_property(m_connection, XCB_PROP_MODE_REPLACE, m_window, list, atom("ATOM_PAIR"), 32,
                        quint32(pairs.size()), pairs.constData());
    xcb_convert_selection(m_connection, m_window, atom("CLIPBOARD"), atom("MULTIPLE"), list,
                          XCB_CURRENT_TIME);
    while (const auto event = nextEvent(2000ms)) {
        if ((event->response_type & 0x7f) == XCB_SELECTION_NOTIFY) {
            break;
        }
    }
    QMap<QByteArray, std::optional<ForeignValue>> values;
    const auto answer = takeProperty(list);
    const auto* answered =
        answer ? reinterpret_cast<const quint32*>(answer->bytes.constData()) : pairs.constData();
    for (qsizetype i = 0; i < targets.size(); ++i) {
        const xcb_atom_t property = answered[2 * i + 1];
        values[targets[i]] = property == XCB_ATOM_NONE ? std::nullopt : takeProperty(property);
    }
    return values;
}

ForeignOwner::ForeignOwner(const QByteArray& display, Content content, bool frozen)
    : m_program(display)
    , m_content(std::move(content))
    , m_frozen(frozen)
{
    m_program.takeClipboard();
    m_thread = std::jthread([this](const std::stop_token& stop) { serve(stop); });
}

ForeignOwner::~ForeignOwner()
{
    m_thread.request_stop();
    m_thread.join();
}

QList<QByteArray> ForeignOwner::requests() const
{
    const std::scoped_lock lock(m_lock);
    return m_requests;
}

void ForeignOwner::freezeAfter(const QByteArray& target)
{
    const std::scoped_lock lock(m_lock);
    m_freezeAfter = target;
}

void ForeignOwner::serve(const std::stop_token& stop)
{
    while (!stop.stop_requested()) {
        if (m_frozen) {
            std::this_thread::sleep_for(5ms);
            continue;
        }
        const auto event = m_program.nextEvent(10ms);
        if (!event) {
            continue;
        }
        while (m_frozen && !stop.stop_requested()) {
            std::this_thread::sleep_for(5ms);
        }
        const int kind = event->response_type & 0x7f;
        if (kind == XCB_SELECTION_REQUEST) {
            answer(*reinterpret_cast<const xcb_selection_request_event_t*>(event.get()));
        } else if (kind == XCB_PROPERTY_NOTIFY) {
            const auto* change = reinterpret_cast<const xcb_property_notify_event_t*>(event.get());
            for (Transfer& transfer : m_transfers) {
                if (change->state == XCB_PROPERTY_DELETE && change->window == transfer.requestor &&
                    change->atom == transfer.property) {
                    sendPiece(transfer);
                }
            }
            std::erase_if(m_transfers, [](const Transfer& transfer) { return transfer.isOver; });
        }
    }
}

void ForeignOwner::answer(const xcb_selection_request_event_t& request)
{
    const QByteArray target = m_program.atomName(request.target);
    {
        const std::scoped_lock lock(m_lock);
        m_requests.append(target);
        m_frozen = target == m_freezeAfter;
    }
    xcb_atom_t property = request.property;
    if (target == "TARGETS") {
        QList<quint32> atoms{request.target};
        for (const QByteArray& offered : m_content.keys()) {
            atoms.append(m_program.atom(offered));
        }
        put(request.requestor, property,
            {"ATOM", 32,
             QByteArray(reinterpret_cast<const char*>(atoms.constData()), atoms.size() * 4)});
    } else if (!m_content.contains(target)) {
        property = XCB_ATOM_NONE;
    } else {
        const ForeignValue value = m_content.value(target);
        switch (value.delivery) {
        case ForeignValue::Delivery::never:
            return;
        case ForeignValue::Delivery::atOnce:
            put(request.requestor, property, value);
            break;
        case ForeignValue::Delivery::inPieces:
        case ForeignValue::Delivery::firstPieceOnly: {
            const quint32 events = XCB_EVENT_MASK_PROPERTY_CHANGE;
            xcb_change_window_attributes(m_program.connection(), request.requestor,
                                         XCB_CW_EVENT_MASK, &events);
            const quint32 size = 1;
            put(request.requestor, property,
                {"INCR", 32, QByteArray(reinterpret_cast<const char*>(&size), 4)});
            m_transfers.push_back({request.requestor, property, value});
            break;
        }
        }
    }
    union {
        xcb_selection_notify_event_t notify;
        char wire[32];
    } event{};
    event.notify.response_type = XCB_SELECTION_NOTIFY;
    event.notify.requestor = request.requestor;
    event.notify.selection = request.selection;
    event.notify.target = request.target;
    event.notify.property = property;
    xcb_send_event(m_program.connection(), 0, request.requestor, 0, event.wire);
    xcb_flush(m_program.connection());
}

void ForeignOwner::sendPiece(Transfer& transfer)
{
    const bool stops = transfer.value.delivery == ForeignValue::Delivery::firstPieceOnly;
    if (stops && transfer.sent > 0) {
        return;
    }
    ForeignValue piece = transfer.value;
    piece.bytes = transfer.value.bytes.mid(transfer.sent, pieceSize);
    transfer.sent += piece.bytes.size();
    transfer.isOver = piece.bytes.isEmpty();
    put(transfer.requestor, transfer.property, piece);
    xcb_flush(m_program.connection());
}

void ForeignOwner::put(xcb_window_t requestor, xcb_atom_t property, const ForeignValue& value) const
{
    xcb_change_property(m_program.connection(), XCB_PROP_MODE_REPLACE, requestor, property,
                        m_program.atom(value.type), quint8(value.unit),
                        quint32(value.bytes.size() / (value.unit / 8)), value.bytes.constData());
}

} // namespace zelvane::test
