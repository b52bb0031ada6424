#pragma once

#include "desktop/linux/SelectionContent.h"
#include "desktop/linux/XcbConnection.h"
#include "desktop/linux/XcbEvents.h"
#include "foundation/Clock.h"

#include <functional>
#include <memory>
#include <vector>

namespace zelvane {

/// Hands the content of a selection that this program owns to whoever asks, large values in pieces.
///
/// Lives on one thread with an event loop and gets the connection's events through `handle`.
class SelectionServer
{
public:
    /// Called when a program has got a value: the window that asked, and the target.
    using Delivered = std::function<void(xcb_window_t, const QByteArray&)>;

    /// A program that takes longer to fetch the next piece isn't waited for.
    static constexpr std::chrono::milliseconds pieceLimit{10000};

    /// `window` is the owner in the server's eyes. All must outlive this object.
    SelectionServer(XcbConnection& connection, Clock& clock, xcb_window_t window,
                    xcb_atom_t selection, Delivered onDelivered);
    ~SelectionServer();
    Q_DISABLE_COPY_MOVE(SelectionServer)

    /// What is served from now on. Transfers that have begun go on with what they began with.
    /// `since` is the server's time at which the selection was taken.
    void setContent(SelectionContent content, xcb_timestamp_t since);
    [[nodiscard]] const SelectionContent& content() const { return m_content; }

    void handle(const xcb_generic_event_t& event);

    /// The atoms of all targets that are data.
    [[nodiscard]] QList<quint32> dataTargets();

private:
    struct Transfer;

    void answer(const xcb_selection_request_event_t& request);
    [[nodiscard]] bool convert(xcb_window_t requestor, xcb_atom_t target, xcb_atom_t property);
    [[nodiscard]] bool convertMultiple(xcb_window_t requestor, xcb_atom_t property);
    [[nodiscard]] bool put(xcb_window_t requestor, xcb_atom_t property, const QByteArray& type,
                           const QList<quint32>& values);
    void deliver(xcb_window_t requestor, const QByteArray& target, xcb_atom_t property,
                 const SelectionValue& value);
    void beginTransfer(xcb_window_t requestor, const QByteArray& target, xcb_atom_t property,
                       const SelectionValue& value);
    void sendPiece(Transfer& transfer);
    void waitForRequestor(Transfer& transfer);
    void endTransfers(const std::function<bool(const Transfer&)>& concerns);
    [[nodiscard]] qsizetype pieceSize() const;

    XcbConnection& m_connection;
    Clock& m_clock;
    const xcb_window_t m_window;
    const xcb_atom_t m_selection;
    Delivered m_onDelivered;
    SelectionContent m_content;
    xcb_timestamp_t m_since = XCB_CURRENT_TIME;
    std::vector<std::unique_ptr<Transfer>> m_transfers;
};

} // namespace zelvane
