#pragma once

#include <QByteArray>
#include <QList>
#include <QMap>

#include <atomic>
#include <chrono>
#include <memory>
#include <mutex>
#include <optional>
#include <stop_token>
#include <thread>

#include <xcb/xcb.h>

namespace zelvane::test {

/// One format as it goes over X, and how a foreign owner hands it out.
struct ForeignValue
{
    enum class Delivery {
        atOnce,
        /// In pieces of 100 kB, by the protocol for large values.
        inPieces,
        /// As above, but the owner stops after the first piece.
        firstPieceOnly,
        never,
    };

    QByteArray type;
    int unit = 8;
    QByteArray bytes;
    Delivery delivery = Delivery::atOnce;

    friend bool operator==(const ForeignValue& a, const ForeignValue& b)
    {
        return a.type == b.type && a.unit == b.unit && a.bytes == b.bytes;
    }
};

/// A connection to the X server with one window, as another program has them. One thread.
class ForeignProgram
{
public:
    explicit ForeignProgram(const QByteArray& display);
    ~ForeignProgram();
    ForeignProgram(const ForeignProgram&) = delete;
    ForeignProgram& operator=(const ForeignProgram&) = delete;

    [[nodiscard]] xcb_connection_t* connection() const { return m_connection; }
    [[nodiscard]] xcb_window_t window() const { return m_window; }
    [[nodiscard]] xcb_window_t root() const { return m_root; }
    [[nodiscard]] xcb_atom_t atom(const QByteArray& name) const;
    [[nodiscard]] QByteArray atomName(xcb_atom_t atom) const;

    /// The next event, null if none comes in time.
    [[nodiscard]] std::unique_ptr<xcb_generic_event_t, void (*)(void*)>
    nextEvent(std::chrono::milliseconds limit) const;

    /// The owner of the clipboard.
    [[nodiscard]] xcb_window_t clipboardOwner() const;
    void takeClipboard() const;

    /// Asks for a format of the clipboard. None if it is refused or doesn't come in time.
    [[nodiscard]] std::optional<ForeignValue>
    fetch(const QByteArray& target,
          std::chrono::milliseconds limit = std::chrono::milliseconds(3000)) const;
    /// The text that a paste into this program would get.
    [[nodiscard]] QByteArray fetchText() const;
    /// The names that the owner lists, sorted.
    [[nodiscard]] QList<QByteArray> fetchTargets() const;
    /// Asks for several formats in one request.
    [[nodiscard]] QMap<QByteArray, std::optional<ForeignValue>>
    fetchTogether(const QList<QByteArray>& targets) const;

private:
    [[nodiscard]] std::optional<ForeignValue> takeProperty(xcb_atom_t property) const;

    xcb_connection_t* m_connection;
    xcb_window_t m_root = XCB_WINDOW_NONE;
    xcb_window_t m_window = XCB_WINDOW_NONE;
};

/// A program that owns the clipboard and answers on a thread of its own.
class ForeignOwner
{
public:
    using Content = QMap<QByteArray, ForeignValue>;

    /// Owns the clipboard when the constructor returns. A frozen one answers nothing.
    ForeignOwner(const QByteArray& display, Content content, bool frozen = false);
    /// Ends the program, and with it its clipboard.
    ~ForeignOwner();
    ForeignOwner(const ForeignOwner&) = delete;
    ForeignOwner& operator=(const ForeignOwner&) = delete;

    /// What it was asked for so far.
    [[nodiscard]] QList<QByteArray> requests() const;
    /// From now on it answers nothing; after `thaw` it answers what has come in the meantime.
    void freeze() { m_frozen = true; }
    void thaw() { m_frozen = false; }
    /// Freezes as soon as this target has been handed out.
    void freezeAfter(const QByteArray& target);

private:
    struct Transfer
    {
        xcb_window_t requestor = XCB_WINDOW_NONE;
        xcb_atom_t property = XCB_ATOM_NONE;
        ForeignValue value;
        qsizetype sent = 0;
        bool isOver = false;
    };

    void serve(const std::stop_token& stop);
    void answer(const xcb_selection_request_event_t& request);
    void sendPiece(Transfer& transfer);
    void put(xcb_window_t requestor, xcb_atom_t property, const ForeignValue& value) const;

    ForeignProgram m_program;
    Content m_content;
    std::atomic<bool> m_frozen;
    mutable std::mutex m_lock;
    QList<QByteArray> m_requests;
    QByteArray m_freezeAfter;
    std::vector<Transfer> m_transfers;
    std::jthread m_thread;
};

} // namespace zelvane::test
