#pragma once

#include "desktop/Pasteboard.h"
#include "desktop/linux/ClipboardExchange.h"
#include "desktop/linux/XcbConnection.h"

#include <QHash>
#include <QObject>
#include <QThread>

#include <expected>
#include <functional>
#include <memory>

namespace zelvane {

class ClipboardWorker;

/// The CLIPBOARD selection of an X server, over a connection and on a thread of its own.
///
/// The name of a format in its snapshots is described at `snapshotOf` in SelectionContent.h.
class X11Pasteboard final : public Pasteboard
{
public:
    /// Connects to `display`, or to $DISPLAY if it is empty. The error is a sentence for the user.
    /// `exchange` must outlive the pasteboard.
    [[nodiscard]] static std::expected<std::unique_ptr<X11Pasteboard>, QString>
    open(ClipboardExchange& exchange, const QByteArray& display = {});

    /// Ends waiting calls as if the clipboard's owner didn't answer. Hands what it holds for the
    /// user to a clipboard manager if one is there, which takes at most about a second.
    ~X11Pasteboard() override;

    [[nodiscard]] QCoro::Task<PasteboardSnapshot> snapshot() override;
    void clear() override;
    [[nodiscard]] QCoro::Task<std::optional<QString>> string() override;
    void setString(const QString& text) override;
    void restore(const PasteboardSnapshot& snapshot) override;

private:
    X11Pasteboard(std::unique_ptr<XcbConnection> connection, ClipboardExchange& exchange);

    /// Runs `task` on the worker's thread.
    void onWorker(std::function<void(ClipboardWorker&)> task);
    /// The same for a change of the content, which the keys wait for.
    void change(std::function<void(ClipboardWorker&)> task);
    /// Runs `task` on the main thread, unless this object has gone by then.
    void onMain(std::function<void()> task);
    /// Has the worker read something, and waits for it. None as well if this object goes before.
    template <typename T>
    [[nodiscard]] QCoro::Task<std::optional<T>>
    read(std::function<void(ClipboardWorker&, std::function<void(std::optional<T>)>)> task);

    ClipboardExchange& m_exchange;
    std::unique_ptr<XcbConnection> m_connection;
    QThread m_thread;
    /// Lives on the worker's thread and owns the worker.
    std::unique_ptr<QObject> m_workerSide;
    /// Receives what the worker reports.
    QObject m_mainSide;
    quint64 m_lastCall = 0;
    /// What ends the calls that wait, by number.
    QHash<quint64, std::function<void()>> m_waiting;
    /// Touched on the worker's thread alone.
    std::unique_ptr<ClipboardWorker> m_worker;
};

} // namespace zelvane
