#include "desktop/linux/SelectionReader.h"

#include <algorithm>

namespace zelvane {

namespace {

using std::chrono::milliseconds;

// Programs that answer at all do so within a few milliseconds. The next format isn't held up for
// longer by one that may never come, and hardly at all where several don't.
constexpr milliseconds patience{50};
constexpr milliseconds littlePatience{5};
constexpr qsizetype fewSilent = 3;
// Even a format whose turn comes late is asked for.
constexpr milliseconds leastLimit{100};
constexpr milliseconds targetsLimit{1000};

QList<quint32> numbersOf(const QByteArray& bytes)
{
    const auto* values = reinterpret_cast<const quint32*>(bytes.constData());
    return QList<quint32>(values, values + bytes.size() / qsizetype(sizeof(quint32)));
}

} // namespace

/// One question to the owner.
struct SelectionReader::Conversion
{
    enum class State {
        asked,
        incremental,
        /// Nobody waits any more; what still comes is taken off the owner's hands unseen.
        abandoned,
    };

    xcb_window_t window = XCB_WINDOW_NONE;
    State state = State::asked;
    bool isIncremental = false;
    SelectionValue value;
    Completion<Result> done;
    std::unique_ptr<Timer> limit;
    Deadline endBy{0};
};

/// What `readAll` has so far.
struct SelectionReader::Collection
{
    SelectionContent content;
    qsizetype running = 0;
    bool somethingIsMissing = false;
    Completion<void> allEnded;
};

SelectionReader::SelectionReader(XcbConnection& connection, Clock& clock, xcb_atom_t selection,
                                 qsizetype largest)
    : m_connection(connection)
    , m_clock(clock)
    , m_selection(selection)
    , m_property(connection.atom("ZELVANE_SELECTION"))
    , m_incremental(connection.atom("INCR"))
    , m_largest(largest)
{
}

SelectionReader::~SelectionReader() = default;

milliseconds SelectionReader::until(Deadline deadline) const
{
    const auto left = std::chrono::duration_cast<milliseconds>(deadline - m_clock.monotonicNow());
    return std::max(left, milliseconds(0));
}

QCoro::Task<std::expected<SelectionContent, SelectionReader::Failure>> SelectionReader::readAll()
{
    const Deadline deadline = m_clock.monotonicNow() + wholeLimit;
    const auto targets = co_await readTargets();
    if (!targets) {
        co_return std::unexpected(targets.error());
    }
    const auto collection = std::make_shared<Collection>();
    for (const QByteArray& target : *targets) {
        const Completion<void> ended;
        ++collection->running;
        const milliseconds limit = std::clamp(until(deadline), leastLimit, formatLimit);
        m_tasks.start([this, target, limit, collection, ended](const std::stop_token&) {
            return collect(target, limit, collection, ended);
        });
        const auto timer =
            m_clock.callLater(collection->running <= fewSilent ? patience : littlePatience,
                              [ended] { ended.succeed(); });
        co_await ended.result();
    }
    if (collection->running > 0) {
        co_await collection->allEnded.result();
    }
    if (collection->somethingIsMissing) {
        // Either the owner never delivers these formats, or it has stopped answering altogether:
        // then the rest is missing for no fault of its own.
        const auto answer = co_await readTargets();
        if (!answer) {
            co_return std::unexpected(answer.error());
        }
    }
    co_return collection->content;
}

QCoro::Task<void> SelectionReader::collect(QByteArray target, milliseconds limit,
                                           std::shared_ptr<Collection> into, Completion<void> ended)
{
    const Result result = co_await read(target, limit);
    if (result) {
        into->content.insert(target, *result);
    } else if (result.error() == Failure::silent) {
        into->somethingIsMissing = true;
    }
    --into->running;
    ended.succeed();
    if (into->running == 0) {
        into->allEnded.succeed();
    }
}

QCoro::Task<std::expected<QList<QByteArray>, SelectionReader::Failure>>
SelectionReader::readTargets()
{
    const Result answer = co_await read("TARGETS", targetsLimit);
    if (!answer && answer.error() == Failure::refused) {
        co_return textTargets(); // an owner of the simplest kind has just these
    }
    if (!answer) {
        co_return std::unexpected(answer.error());
    }
    QList<QByteArray> targets;
    if (answer->unit == 32) {
        const QList<quint32> atoms = numbersOf(answer->bytes);
        for (const xcb_atom_t atom : atoms) {
            const QByteArray target = m_connection.atomName(atom);
            if (isData(target) && !targets.contains(target)) {
                targets.append(target);
            }
        }
    }
    co_return targets;
}

QCoro::Task<std::optional<QString>> SelectionReader::readText()
{
    const Deadline deadline = m_clock.monotonicNow() + wholeLimit;
    for (const QByteArray& target : textTargets()) {
        const Result result = co_await read(target, std::min(formatLimit, until(deadline)));
        if (result) {
            co_return textOf(target, result->bytes);
        }
    }
    co_return std::nullopt;
}

QCoro::Task<SelectionReader::Result> SelectionReader::read(QByteArray target, milliseconds limit)
{
    const auto conversion = std::make_shared<Conversion>();
    conversion->window = takeWindow();
    conversion->endBy = m_clock.monotonicNow() + transferLimit;
    m_conversions.push_back(conversion);
    xcb_delete_property(m_connection.get(), conversion->window, m_property);
    xcb_convert_selection(m_connection.get(), conversion->window, m_selection,
                          m_connection.atom(target), m_property, XCB_CURRENT_TIME);
    m_connection.flush();
    if (m_isClosed || m_connection.isLost()) {
        abandon(conversion, Failure::silent);
    } else {
        waitForMore(conversion, limit);
    }
    co_return co_await conversion->done.result();
}

void SelectionReader::handle(const xcb_generic_event_t& event)
{
    if (eventKind(event) == XCB_SELECTION_NOTIFY) {
        handleNotify(eventAs<xcb_selection_notify_event_t>(event));
    } else if (eventKind(event) == XCB_PROPERTY_NOTIFY) {
        handleProperty(eventAs<xcb_property_notify_event_t>(event));
    }
}

void SelectionReader::handleNotify(const xcb_selection_notify_event_t& event)
{
    const auto conversion = conversionAt(event.requestor);
    if (!conversion || event.selection != m_selection || conversion->isIncremental) {
        return;
    }
    if (event.property == XCB_ATOM_NONE) {
        finish(conversion, std::unexpected(Failure::refused));
    } else {
        takePiece(conversion);
    }
}

void SelectionReader::handleProperty(const xcb_property_notify_event_t& event)
{
    const auto conversion = conversionAt(event.window);
    if (conversion && conversion->isIncremental && event.atom == m_property &&
        event.state == XCB_PROPERTY_NEW_VALUE) {
        takePiece(conversion);
    }
}

void SelectionReader::takePiece(const std::shared_ptr<Conversion>& conversion)
{
    const auto cookie = xcb_get_property(m_connection.get(), 1, conversion->window, m_property,
                                         XCB_GET_PROPERTY_TYPE_ANY, 0, quint32(m_largest / 4));
    const XcbOwned<xcb_get_property_reply_t> reply(
        xcb_get_property_reply(m_connection.get(), cookie, nullptr));
    if (!reply || reply->type == XCB_ATOM_NONE) {
        finish(conversion, std::unexpected(Failure::refused));
        return;
    }
    if (reply->bytes_after > 0) {
        xcb_delete_property(m_connection.get(), conversion->window, m_property);
        abandon(conversion, Failure::tooLarge);
        return;
    }
    if (reply->type == m_incremental && !conversion->isIncremental) {
        conversion->isIncremental = true;
        waitForMore(conversion, formatLimit);
        return;
    }

    const auto length = qsizetype(xcb_get_property_value_length(reply.get()));
    SelectionValue& value = conversion->value;
    const bool isLast = length == 0 || !conversion->isIncremental;
    if (conversion->state == Conversion::State::abandoned) {
        if (isLast) {
            forget(conversion);
        }
        return;
    }
    if (value.type.isEmpty()) {
        value.type = m_connection.atomName(reply->type);
        value.unit = reply->format;
    }
    if (value.bytes.size() + length > m_largest) {
        abandon(conversion, Failure::tooLarge);
        return;
    }
    value.bytes.append(static_cast<const char*>(xcb_get_property_value(reply.get())), length);
    if (isLast) {
        finish(conversion, std::move(value));
    } else {
        waitForMore(conversion, std::min(formatLimit, until(conversion->endBy)));
    }
}

void SelectionReader::waitForMore(const std::shared_ptr<Conversion>& conversion, milliseconds limit)
{
    if (conversion->state == Conversion::State::abandoned) {
        return;
    }
    const std::weak_ptr<Conversion> weak = conversion;
    conversion->limit = m_clock.callLater(limit, [this, weak] {
        if (const auto late = weak.lock()) {
            abandon(late, Failure::silent);
        }
    });
}

void SelectionReader::finish(const std::shared_ptr<Conversion>& conversion, Result result)
{
    forget(conversion);
    conversion->limit.reset();
    conversion->done.succeed(std::move(result));
}

void SelectionReader::abandon(const std::shared_ptr<Conversion>& conversion, Failure failure)
{
    conversion->state = Conversion::State::abandoned;
    conversion->value = {};
    conversion->limit.reset();
    conversion->done.succeed(std::unexpected(failure));
}

void SelectionReader::forget(const std::shared_ptr<Conversion>& conversion)
{
    if (std::erase(m_conversions, conversion) > 0) {
        m_idleWindows.push_back(conversion->window);
    }
}

void SelectionReader::abandonAll()
{
    m_isClosed = true;
    const auto conversions = m_conversions;
    for (const auto& conversion : conversions) {
        abandon(conversion, Failure::silent);
    }
}

xcb_window_t SelectionReader::takeWindow()
{
    if (!m_idleWindows.empty()) {
        const xcb_window_t window = m_idleWindows.back();
        m_idleWindows.pop_back();
        return window;
    }
    const xcb_window_t window = xcb_generate_id(m_connection.get());
    const quint32 events = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_create_window(m_connection.get(), 0, window, m_connection.root(), -10, -10, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK,
                      &events);
    return window;
}

std::shared_ptr<SelectionReader::Conversion>
SelectionReader::conversionAt(xcb_window_t window) const
{
    const auto found = std::ranges::find_if(
        m_conversions, [=](const auto& conversion) { return conversion->window == window; });
    return found == m_conversions.end() ? nullptr : *found;
}

} // namespace zelvane
