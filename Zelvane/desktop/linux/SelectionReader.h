#pragma once

#include "desktop/linux/SelectionContent.h"
#include "desktop/linux/XcbConnection.h"
#include "desktop/linux/XcbEvents.h"
#include "foundation/Clock.h"
#include "foundation/Completion.h"
#include "foundation/TaskScope.h"

#include <QCoroTask>

#include <chrono>
#include <expected>
#include <memory>
#include <vector>

namespace zelvane {

/// Reads a selection that another program owns. Every wait for that program is bounded.
///
/// Lives on one thread with an event loop and gets the connection's events through `handle`.
class SelectionReader
{
public:
    enum class Failure {
        refused,  ///< the owner answers that it has no such format
        silent,   ///< no answer in time
        tooLarge, ///< more than the reader takes
    };
    using Result = std::expected<SelectionValue, Failure>;

    /// Beyond this a format is left alone rather than filling the memory.
    static constexpr qsizetype largestValue = qsizetype(256) << 20;
    /// How long an owner may take for one format, or between two pieces of a large one.
    static constexpr std::chrono::milliseconds formatLimit{500};
    /// How long the start of all formats together may take.
    static constexpr std::chrono::milliseconds wholeLimit{1500};
    /// How long a large format may take that keeps coming.
    static constexpr std::chrono::milliseconds transferLimit{5000};

    /// All must outlive this object.
    SelectionReader(XcbConnection& connection, Clock& clock, xcb_atom_t selection,
                    qsizetype largest = largestValue);
    ~SelectionReader();
    Q_DISABLE_COPY_MOVE(SelectionReader)

    /// All formats that are data. An error if the owner doesn't answer; a format that it offers but
    /// never delivers is left out.
    [[nodiscard]] QCoro::Task<std::expected<SelectionContent, Failure>> readAll();

    /// The plain text, none if there is none or it doesn't come in time.
    [[nodiscard]] QCoro::Task<std::optional<QString>> readText();

    /// One format. `limit` bounds the wait for the owner's first answer.
    [[nodiscard]] QCoro::Task<Result> read(QByteArray target, std::chrono::milliseconds limit);

    void handle(const xcb_generic_event_t& event);

    /// Ends all waits with `silent`, now and later.
    void abandonAll();

private:
    struct Conversion;
    struct Collection;
    using Deadline = std::chrono::nanoseconds;

    [[nodiscard]] QCoro::Task<std::expected<QList<QByteArray>, Failure>> readTargets();
    [[nodiscard]] QCoro::Task<void> collect(QByteArray target, std::chrono::milliseconds limit,
                                            std::shared_ptr<Collection> into,
                                            Completion<void> ended);
    [[nodiscard]] std::chrono::milliseconds until(Deadline deadline) const;

    [[nodiscard]] xcb_window_t takeWindow();
    [[nodiscard]] std::shared_ptr<Conversion> conversionAt(xcb_window_t window) const;
    void handleNotify(const xcb_selection_notify_event_t& event);
    void handleProperty(const xcb_property_notify_event_t& event);
    void takePiece(const std::shared_ptr<Conversion>& conversion);
    void waitForMore(const std::shared_ptr<Conversion>& conversion,
                     std::chrono::milliseconds limit);
    void finish(const std::shared_ptr<Conversion>& conversion, Result result);
    void abandon(const std::shared_ptr<Conversion>& conversion, Failure failure);
    void forget(const std::shared_ptr<Conversion>& conversion);

    XcbConnection& m_connection;
    Clock& m_clock;
    const xcb_atom_t m_selection;
    const xcb_atom_t m_property;
    const xcb_atom_t m_incremental;
    const qsizetype m_largest;
    std::vector<std::shared_ptr<Conversion>> m_conversions;
    /// Windows of finished conversions. One window serves one conversion at a time, so that a late
    /// answer can't be taken for that to a later question.
    std::vector<xcb_window_t> m_idleWindows;
    bool m_isClosed = false;
    TaskScope m_tasks;
};

} // namespace zelvane
