#pragma once

#include "desktop/linux/ClipboardExchange.h"
#include "desktop/linux/SelectionContent.h"
#include "desktop/linux/SelectionReader.h"
#include "desktop/linux/SelectionServer.h"
#include "desktop/linux/XcbConnection.h"
#include "desktop/linux/XcbEvents.h"
#include "foundation/SystemClock.h"
#include "foundation/TaskScope.h"

#include <QCoroTask>
#include <QHash>
#include <QObject>

#include <expected>
#include <functional>
#include <memory>
#include <optional>

namespace zelvane {

/// The clipboard of an X server, as its owner and as a reader of other owners. Lives on a thread of
/// its own with an event loop, so that it goes on serving while the main thread is busy; made, used
/// and destroyed there.
class ClipboardWorker final : public QObject
{
    Q_OBJECT

public:
    using Moment = ClipboardExchange::Moment;

    /// How long a pasted text is kept for its target.
    static constexpr std::chrono::milliseconds pasteLimit{1500};
    /// The same if a clipboard manager took the text over, so that nobody here sees it fetched.
    static constexpr std::chrono::milliseconds unseenPasteLimit{400};
    /// Programs that fetch a text twice do so within this time.
    static constexpr std::chrono::milliseconds settleTime{40};
    /// How long a clipboard manager may take to save the content when this program ends.
    static constexpr std::chrono::milliseconds handOverLimit{1000};

    explicit ClipboardWorker(XcbConnection& connection);
    ~ClipboardWorker() override;

    /// The content of the clipboard; an error if its owner doesn't answer.
    void snapshot(std::function<void(std::optional<SelectionContent>)> onRead);

    /// The plain text that another program put there after `since`, or at any time if that is none;
    /// or this program's own.
    void text(std::optional<Moment> since, std::function<void(std::optional<QString>)> onRead);

    /// Takes the clipboard with this content.
    void put(const SelectionContent& content);

    /// Puts `content` back. After a paste of what is there now, its target gets that first.
    void restore(const SelectionContent& content,
                 const std::optional<ClipboardExchange::Paste>& paste);

    /// Asks a clipboard manager to keep what is there beyond the end of this program.
    void handOver(std::function<void()> onDone);

private:
    struct Restoration
    {
        SelectionContent content;
        ClipboardExchange::Paste paste;
        /// Who owned the pasted text. The clipboard of anybody else is newer and stays.
        xcb_window_t owner = XCB_WINDOW_NONE;
    };

    void handle(const xcb_generic_event_t& event);
    void handleOwnerChange(xcb_window_t newOwner);
    void noteDelivery(xcb_window_t requestor, const QByteArray& target);

    [[nodiscard]] QCoro::Task<void>
    readSnapshot(std::function<void(std::optional<SelectionContent>)> onRead);
    [[nodiscard]] QCoro::Task<void> readText(std::function<void(std::optional<QString>)> onRead);

    void takeSelection(const SelectionContent& content);
    void giveUpSelection();
    void restoreWhenFetched();
    void finishRestoration();
    [[nodiscard]] std::optional<Moment> fetchedByTarget() const;
    [[nodiscard]] Moment restorationDue() const;

    [[nodiscard]] xcb_window_t owner();
    [[nodiscard]] bool isOwner() { return owner() == m_window; }
    [[nodiscard]] xcb_timestamp_t serverTime();
    [[nodiscard]] xcb_window_t makeWindow();

    XcbConnection& m_connection;
    SystemClock m_clock;
    const xcb_atom_t m_selection;
    const xcb_atom_t m_timeProperty;
    const xcb_window_t m_window;
    XcbEvents m_events;
    SelectionReader m_reader;
    SelectionServer m_server;
    TaskScope m_tasks;

    /// When each program last got the text that is there now.
    QHash<quint32, Moment> m_deliveries;
    std::optional<Restoration> m_restoration;
    std::unique_ptr<Timer> m_restorationTimer;
    /// When another program last took the clipboard.
    std::optional<Moment> m_takenAt;
    std::function<void()> m_onHandedOver;
    std::unique_ptr<Timer> m_handOverTimer;
};

} // namespace zelvane
